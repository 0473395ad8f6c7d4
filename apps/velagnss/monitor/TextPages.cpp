// The messages of the program, and help.
#include <fmt/core.h>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"

namespace Host {
namespace {

// A line of text with a style.
struct S_TextLine {
  std::string text;
  eStyle style = eStyle::Normal;
};

int DrawText(const C_Pane& pane, const std::vector<S_TextLine>& lines, int scroll) {
  const S_ListPart part(lines.size(), pane.Rows(), scroll);
  for (int row = 0; row < pane.Rows() && part.At(row) < lines.size(); ++row) {
    const S_TextLine& line = lines[part.At(row)];
    pane.Put(row, 0, line.text, line.style);
  }
  return part.most;
}

// Lines after the first of a paragraph are indented by as much as `head` is wide.
void AddParagraph(std::vector<S_TextLine>& lines, const std::string& head, std::string_view text, int width,
                  eStyle style) {
  const std::string indent(head.size(), ' ');
  bool isFirst = true;
  for (const std::string_view line : Wrapped(text, width - WidthOf(head))) {
    lines.push_back({(isFirst ? head : indent) + std::string(line), style});
    isFirst = false;
  }
}

// What Controls.cpp obeys.
struct S_KeyHelp {
  std::string_view keys;
  std::string_view what;
};
constexpr S_KeyHelp kKeys[] = {
    {"1 to 5, ?", "pages; Left, Right: the one before, the next; Esc: back from this one"},
    {"Tab", "next source; Shift-Tab: the one before"},
    {"Up, Down", "scroll by a line; Page Up, Page Down: by a third of the screen; Home, End: to the top, to the end"},
    {"p, Space", "pause: the screen stays as it is, the sources are read all the same"},
    {"f, /",
     "filter of the raw objects: protocols and messages, as in nmea,1077 or GGA:10; empty for all. Enter takes it, Esc "
     "does not"},
    {"q", "quit"},
};

constexpr std::string_view kNotes[] = {
    "An old value says how old it is. Ages and rates of a live source are by this machine's clock, those of a file by "
    "the time in it. Rates are those of the last 10 seconds.",
    "* after the name of a satellite: it is used in the position. In the sky plot, names in lower case are those of "
    "satellites that are not.",
    "The raw page begins with the newest object and moves on with each one: pause to read.",
    "A run of bytes that belong to no frame is one fault, and so is a frame with the right checksum and wrong "
    "contents.",
};

}  // namespace

// The newest first.
int DrawLog(const C_Pane& pane, const S_SourceView&, const S_ScreenState& state) {
  constexpr int kWithDate = 80;
  if (state.log.empty()) {
    PutNothing(pane, "The program has nothing to say yet.");
    return 0;
  }
  std::vector<S_TextLine> lines;
  for (auto message = state.log.rbegin(); message != state.log.rend(); ++message) {
    const std::string when = ClockText(message->when, pane.Columns() >= kWithDate);
    AddParagraph(lines, when + "  ", message->text, pane.Columns(), message->style);
  }
  return DrawText(pane, lines, state.scroll);
}

int DrawHelp(const C_Pane& pane, const S_SourceView&, const S_ScreenState& state) {
  std::vector<S_TextLine> lines;
  for (const S_KeyHelp& key : kKeys)
    AddParagraph(lines, fmt::format("{:<11}", key.keys), key.what, pane.Columns(), eStyle::Normal);
  for (const std::string_view note : kNotes) {
    lines.emplace_back();
    AddParagraph(lines, "", note, pane.Columns(), eStyle::Normal);
  }
  return DrawText(pane, lines, state.scroll);
}

}  // namespace Host
