// What the keys of the monitor do.
#ifndef VELAGNSS_APPS_CONTROLS_H
#define VELAGNSS_APPS_CONTROLS_H

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/monitor/Key.h"
#include "apps/velagnss/monitor/Pages.h"

namespace Host {

// Keeps what the user has chosen. It knows nothing of terminals and sources.
class C_Controls {
 public:
  // Makes a text the filter. Returns an error text for the user, or nothing.
  using t_SetFilter = std::function<std::optional<std::string>(std::string_view text)>;

  C_Controls(std::string filter, t_SetFilter setFilter);

  void Press(const S_Key& key);

  // The page, the source, what is typed. Tabs, messages and log are left empty.
  const S_ScreenState& State() const { return m_state; }
  bool WantsEnd() const { return m_wantsEnd; }

  // What there is to choose from: sources, rows of the screen, and rows of the page below its beginning.
  void SetTabs(std::size_t count) { m_tabs = count; }
  void SetExtent(int rows, int mostScroll);

 private:
  struct S_Binding;
  static const S_Binding kBindings[];

  void Edit(const S_Key& key);
  void TakeFilter();
  void EndEdit();
  void ShowEdited();
  void Turn(int pages);
  void Select(ePage page);
  void ChangeTab(int by);
  void Scroll(int rows);
  void GoToTop();
  void BeginEdit();
  void ToggleHelp();
  void TogglePause() { m_state.isPaused = !m_state.isPaused; }

  S_ScreenState m_state;
  t_SetFilter m_setFilter;
  std::optional<std::string> m_edited;  // the filter while it is typed
  ePage m_pageBeforeHelp = ePage::Overview;
  std::size_t m_tabs = 0;
  int m_rows = 0;
  int m_mostScroll = 0;
  bool m_wantsEnd = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_CONTROLS_H
