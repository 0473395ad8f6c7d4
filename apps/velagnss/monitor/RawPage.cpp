// The objects of a stream as they are, the newest first.
#include <fmt/format.h>

#include <algorithm>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"

namespace Host {
namespace {

std::string TitleOf(const S_SourceView& view, const S_ScreenState& state) {
  const std::string what = state.filter.empty() ? "all objects" : "filter: " + state.filter;
  return fmt::format("Objects, the newest first; {}; {} kept", what, view.raw.size());
}

// The whole of an object, as far as the pane has room.
void DrawObject(const C_Pane& pane, const S_RawObject& object) {
  pane.Rule(0, fmt::format("Object {}", object.number));
  const std::vector<std::string_view> lines = Wrapped(object.json, pane.Columns());
  for (int row = 1; row < pane.Rows() && row <= static_cast<int>(lines.size()); ++row)
    pane.Put(row, 0, lines[static_cast<std::size_t>(row - 1)]);
  if (static_cast<int>(lines.size()) >= pane.Rows()) pane.PutRight(pane.Rows() - 1, pane.Columns(), " >", eStyle::Dim);
}

}  // namespace

// The first row is the one that is shown whole below, where there is room for it.
int DrawRaw(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state) {
  constexpr int kLeastForDetail = 12;
  pane.Rule(0, TitleOf(view, state));
  if (view.raw.empty()) {
    PutNothing(pane.Below(1), state.filter.empty() ? "No object has come yet." : "None has passed the filter yet.");
    return 0;
  }
  const int detail = pane.Rows() >= kLeastForDetail ? pane.Rows() / 2 : 0;
  const C_Pane list = pane.Above(pane.Rows() - detail).Below(1);
  const S_ListPart part(view.raw.size(), 1, state.scroll);
  for (int row = 0; row < list.Rows() && part.first + row < static_cast<int>(view.raw.size()); ++row) {
    const S_RawObject& object = *view.raw[static_cast<std::size_t>(part.first + row)];
    const bool isShown = row == 0 && detail > 0;
    list.Put(row, 0, isShown ? ">" : " ", eStyle::Selected);
    list.RightOf(1).Put(row, 0, FittingParts(object.json, list.Columns() - 1),
                        isShown ? eStyle::Selected : eStyle::Normal);
  }
  if (detail > 0) DrawObject(pane.Below(pane.Rows() - detail), *view.raw[static_cast<std::size_t>(part.first)]);
  return part.most;
}

}  // namespace Host
