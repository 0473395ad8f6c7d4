// The screens of the monitor: what a source knows, drawn into a grid.
#ifndef VELAGNSS_APPS_PAGES_H
#define VELAGNSS_APPS_PAGES_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/monitor/Grid.h"
#include "apps/velagnss/monitor/SourceView.h"

namespace Host {

enum class ePage : unsigned char { Overview, Satellites, Messages, Raw, Log, Help };

struct S_Tab {
  std::string name;  // of the source, in UTF-8
  eSourceState state = eSourceState::Waiting;
};

// A message of the program itself.
struct S_LogLine {
  C_TimeText when;
  eStyle style = eStyle::Normal;  // Warning, Bad
  std::string text;               // with "warning: " before it where it is one
};

struct S_ScreenState {
  ePage page = ePage::Overview;
  std::string filter;       // of the raw objects, as typed; empty for none
  bool isPaused = false;    // the view is kept as it was
  int scroll = 0;           // rows of the page above the first that is shown
  std::vector<S_Tab> tabs;  // one for each source
  std::size_t tab = 0;      // that is shown
  std::string message;      // a line at the bottom: a message, or what is being typed; empty for the keys
  eStyle messageStyle = eStyle::Normal;
  std::vector<S_LogLine> log;  // the oldest first
};

// Below this size the screen only says that the terminal is too small.
inline constexpr int kLeastRows = 10;
inline constexpr int kLeastColumns = 40;

// Draws the whole screen and gives back the greatest `scroll` that shows something else; a greater one counts as that.
int DrawScreen(C_Grid& grid, const S_SourceView& view, const S_ScreenState& state);

// A page of the monitor.
struct S_Page {
  ePage page;
  char key;  // that selects it
  std::string_view title;
  int (*draw)(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state);  // gives back as DrawScreen
};
std::span<const S_Page> Pages();

}  // namespace Host

#endif  // VELAGNSS_APPS_PAGES_H
