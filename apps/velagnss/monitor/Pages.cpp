#include "apps/velagnss/monitor/Pages.h"

#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"

namespace Host {
namespace {

constexpr S_Page kPages[] = {
    {ePage::Overview, '1', "Overview", &DrawOverview},
    {ePage::Satellites, '2', "Satellites", &DrawSatellites},
    {ePage::Messages, '3', "Messages", &DrawMessages},
    {ePage::Raw, '4', "Raw", &DrawRaw},
    {ePage::Log, '5', "Log", &DrawLog},
    {ePage::Help, '?', "Help", &DrawHelp},
};

const S_Page& PageOf(ePage page) {
  const auto* const found =
      std::find_if(std::begin(kPages), std::end(kPages), [page](const S_Page& p) { return p.page == page; });
  return found == std::end(kPages) ? kPages[0] : *found;
}

// A choice of several, in a row: brackets are around the one that is chosen.
struct S_Choice {
  std::string text;
  eStyle style;
  bool isChosen;

  int Width() const { return WidthOf(text) + 2; }
};

void PutChoice(const C_Pane& pane, int row, int& column, const S_Choice& choice) {
  const eStyle style = choice.isChosen ? eStyle::Selected : choice.style;
  column = pane.Put(row, column, choice.isChosen ? "[" : " ", style);
  column = pane.Put(row, column, choice.text, style);
  column = pane.Put(row, column, choice.isChosen ? "]" : " ", style);
}

S_Choice TabChoice(const S_Tab& tab, bool isChosen, int columns) {
  const std::string_view state = StateText(tab.state);
  const int room = std::max(columns / 2, 8) - WidthOf(state) - 2;
  return {fmt::format("{}: {}", FittingName(tab.name, room), state), StyleOf(tab.state), isChosen};
}

// From the first tab on with which the chosen one fits.
void DrawTabs(const C_Pane& pane, const S_ScreenState& state) {
  std::vector<S_Choice> choices;
  for (std::size_t i = 0; i < state.tabs.size(); ++i)
    choices.push_back(TabChoice(state.tabs[i], i == state.tab, pane.Columns()));
  if (choices.empty()) return;
  const std::size_t chosen = std::min(state.tab, choices.size() - 1);
  std::size_t first = chosen;
  for (int width = choices[chosen].Width(); first > 0; --first) {
    width += choices[first - 1].Width();
    if (width > pane.Columns()) break;
  }
  int column = 0;
  for (std::size_t i = first; i < choices.size(); ++i) PutChoice(pane, 0, column, choices[i]);
}

std::vector<S_Choice> PageChoices(const S_Page& shown, bool hasTitles) {
  std::vector<S_Choice> choices;
  for (const S_Page& page : kPages) {
    const bool isChosen = &page == &shown;
    const std::string_view title = hasTitles || isChosen ? page.title : "";
    choices.push_back({fmt::format("{}{}{}", page.key, title.empty() ? "" : " ", title), eStyle::Dim, isChosen});
  }
  return choices;
}

// Titles are left out where they do not fit, but that of the page that is shown.
void DrawPageNames(const C_Pane& pane, const S_ScreenState& state) {
  constexpr std::string_view kPaused = " PAUSED";
  const S_Page& shown = PageOf(state.page);
  std::vector<S_Choice> choices = PageChoices(shown, true);
  int width = state.isPaused ? WidthOf(kPaused) : 0;
  for (const S_Choice& choice : choices) width += choice.Width();
  if (width > pane.Columns()) choices = PageChoices(shown, false);
  int column = 0;
  for (const S_Choice& choice : choices) PutChoice(pane, 0, column, choice);
  if (state.isPaused) pane.PutRight(0, pane.Columns(), kPaused, eStyle::Warning);
}

void DrawBottom(const C_Pane& pane, const S_ScreenState& state) {
  if (!state.message.empty()) {
    pane.Put(0, 0, FittingParts(state.message, pane.Columns()), state.messageStyle);
    return;
  }
  std::string keys = "q quit  ? help  p pause  / filter";
  if (state.tabs.size() > 1) keys += "  Tab next source";
  pane.Put(0, 0, FittingParts(keys, pane.Columns()), eStyle::Dim);
}

}  // namespace

std::span<const S_Page> Pages() { return kPages; }

S_ListPart::S_ListPart(std::size_t count, int rows, int scroll)
    : most(std::max(static_cast<int>(count) - std::max(rows, 1), 0)), first(std::clamp(scroll, 0, most)) {}

void PutNothing(const C_Pane& pane, std::string_view why) {
  int row = 0;
  for (const std::string_view line : Wrapped(why, pane.Columns())) pane.Put(row++, 0, line, eStyle::Dim);
}

// Sources, pages, the page, and a line at the bottom.
int DrawScreen(C_Grid& grid, const S_SourceView& view, const S_ScreenState& state) {
  constexpr int kTop = 2;
  const C_Pane pane(grid);
  if (grid.Rows() < kLeastRows || grid.Columns() < kLeastColumns) {
    PutNothing(pane, fmt::format("Too small: {} x {} at least", kLeastColumns, kLeastRows));
    return 0;
  }
  DrawTabs(pane.Above(1), state);
  DrawPageNames(pane.Part(1, 0, 1, pane.Columns()), state);
  DrawBottom(pane.Below(pane.Rows() - 1), state);
  return PageOf(state.page).draw(pane.Part(kTop, 0, pane.Rows() - kTop - 1, pane.Columns()), view, state);
}

}  // namespace Host
