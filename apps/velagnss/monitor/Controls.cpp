#include "apps/velagnss/monitor/Controls.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace Host {
namespace {

constexpr int kEndOfPage = std::numeric_limits<int>::max() / 2;
constexpr std::size_t kLongestFilter = 200;
constexpr int kListsOnPage = 3;  // at most, one below the other: what scrolls takes as much of the screen at least

}  // namespace

// The digits of the pages are in their own table (Pages.h).
struct C_Controls::S_Binding {
  S_Key key;
  void (*act)(C_Controls& controls);
};

const C_Controls::S_Binding C_Controls::kBindings[] = {
    {{eKey::Character, 'q'}, [](C_Controls& c) { c.m_wantsEnd = true; }},
    {{eKey::Tab}, [](C_Controls& c) { c.ChangeTab(1); }},
    {{eKey::Right}, [](C_Controls& c) { c.Turn(1); }},
    {{eKey::BackTab}, [](C_Controls& c) { c.ChangeTab(-1); }},
    {{eKey::Left}, [](C_Controls& c) { c.Turn(-1); }},
    {{eKey::Character, ' '}, [](C_Controls& c) { c.TogglePause(); }},
    {{eKey::Character, 'p'}, [](C_Controls& c) { c.TogglePause(); }},
    {{eKey::Character, '/'}, [](C_Controls& c) { c.BeginEdit(); }},
    {{eKey::Character, 'f'}, [](C_Controls& c) { c.BeginEdit(); }},
    {{eKey::Up}, [](C_Controls& c) { c.Scroll(-1); }},
    {{eKey::Character, 'k'}, [](C_Controls& c) { c.Scroll(-1); }},
    {{eKey::Down}, [](C_Controls& c) { c.Scroll(1); }},
    {{eKey::Character, 'j'}, [](C_Controls& c) { c.Scroll(1); }},
    {{eKey::PageUp}, [](C_Controls& c) { c.Scroll(-c.m_rows / kListsOnPage); }},
    {{eKey::PageDown}, [](C_Controls& c) { c.Scroll(c.m_rows / kListsOnPage); }},
    {{eKey::Home}, [](C_Controls& c) { c.Scroll(-kEndOfPage); }},
    {{eKey::End}, [](C_Controls& c) { c.Scroll(kEndOfPage); }},
    {{eKey::Character, '?'}, [](C_Controls& c) { c.ToggleHelp(); }},
    {{eKey::Character, 'h'}, [](C_Controls& c) { c.ToggleHelp(); }},
    {{eKey::Escape},
     [](C_Controls& c) { c.Select(c.m_state.page == ePage::Help ? c.m_pageBeforeHelp : c.m_state.page); }},
};

C_Controls::C_Controls(std::string filter, t_SetFilter setFilter) : m_setFilter(std::move(setFilter)) {
  m_state.filter = std::move(filter);
}

void C_Controls::Press(const S_Key& key) {
  if (m_edited) return Edit(key);
  for (const S_Page& page : Pages())
    if (key == S_Key{eKey::Character, page.key}) return Select(page.page);
  const auto* const found = std::find_if(std::begin(kBindings), std::end(kBindings),
                                         [&key](const S_Binding& binding) { return binding.key == key; });
  if (found != std::end(kBindings)) found->act(*this);
}

void C_Controls::SetExtent(int rows, int mostScroll) {
  m_rows = rows;
  m_mostScroll = mostScroll;
  Scroll(0);
}

void C_Controls::Select(ePage page) {
  if (page == m_state.page) return;
  if (page == ePage::Help) m_pageBeforeHelp = m_state.page;
  m_state.page = page;
  GoToTop();
}

// How long the page is will be known when it has been drawn.
void C_Controls::GoToTop() {
  m_state.scroll = 0;
  m_mostScroll = kEndOfPage;
}

void C_Controls::Turn(int pages) {
  const auto all = Pages();
  const auto count = static_cast<int>(all.size());
  const auto at = std::find_if(all.begin(), all.end(), [this](const S_Page& p) { return p.page == m_state.page; });
  Select(all[static_cast<std::size_t>((static_cast<int>(at - all.begin()) + pages + count) % count)].page);
}

void C_Controls::ToggleHelp() { Select(m_state.page == ePage::Help ? m_pageBeforeHelp : ePage::Help); }

void C_Controls::ChangeTab(int by) {
  if (m_tabs < 2) return;
  const auto count = static_cast<int>(m_tabs);
  m_state.tab = static_cast<std::size_t>((static_cast<int>(m_state.tab) + by + count) % count);
  GoToTop();
}

void C_Controls::Scroll(int rows) { m_state.scroll = std::clamp(m_state.scroll + rows, 0, m_mostScroll); }

void C_Controls::BeginEdit() {
  m_edited = m_state.filter;
  ShowEdited();
}

// The underscore is the cursor: that of the terminal is off.
void C_Controls::ShowEdited() {
  m_state.message = "filter: " + *m_edited + "_";
  m_state.messageStyle = eStyle::Normal;
}

void C_Controls::Edit(const S_Key& key) {
  if (key.key == eKey::Escape) return EndEdit();
  if (key.key == eKey::Enter) return TakeFilter();
  if (key.key == eKey::Character && m_edited->size() < kLongestFilter) *m_edited += key.character;
  if (key.key == eKey::Backspace && !m_edited->empty()) m_edited->pop_back();
  if (key.key == eKey::EraseLine) m_edited->clear();
  ShowEdited();
}

void C_Controls::EndEdit() {
  m_edited.reset();
  m_state.message.clear();
}

// A wrong filter stays to be corrected.
void C_Controls::TakeFilter() {
  ShowEdited();
  if (const std::optional<std::string> error = m_setFilter(*m_edited)) {
    m_state.message += " - " + *error;
    m_state.messageStyle = eStyle::Bad;
    return;
  }
  m_state.filter = *m_edited;
  EndEdit();
}

}  // namespace Host
