// The objects of a stream as they are, the newest first.
#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"

namespace Host {
namespace {

std::string TitleOf(const S_SourceView& view, const S_ScreenState& state) {
  const std::string what = state.filter.empty() ? "all objects" : "filter: " + state.filter;
  return fmt::format("Objects, the newest first; {}; {} kept", what, view.raw.size());
}

// What differs from one object to the next: the message and its fields. The whole is shown below the list.
std::string LineOf(const S_RawObject& object) {
  const std::string_view json = object.json;
  const std::size_t fields = json.find("\"fields\":");
  if (object.name.empty()) return std::string(json.substr(std::min(json.find("\"event\":"), json.size())));
  if (fields == std::string_view::npos) return object.name;
  return fmt::format("{:<8} {}", object.name, json.substr(fields + std::string_view("\"fields\":").size()));
}

// The whole of an object, as far as the pane has room.
void DrawObject(const C_Pane& pane, const S_RawObject& object) {
  pane.Rule(0, fmt::format("Object {}", object.number));
  const std::vector<std::string_view> lines = Wrapped(object.json, pane.Columns());
  for (int row = 1; row < pane.Rows() && row <= static_cast<int>(lines.size()); ++row)
    pane.Put(row, 0, lines[static_cast<std::size_t>(row - 1)]);
  if (static_cast<int>(lines.size()) >= pane.Rows()) pane.PutRight(pane.Rows() - 1, pane.Columns(), " >", eStyle::Dim);
}

void DrawObjectList(const C_Pane& pane, const S_SourceView& view, const S_ListPart& part) {
  for (int row = 0; row < pane.Rows() && part.At(row) < view.raw.size(); ++row) {
    const S_RawObject& object = *view.raw[part.At(row)];
    const eStyle style = row == 0 ? eStyle::Selected : eStyle::Normal;
    pane.Put(row, 0, row == 0 ? ">" : " ", style);
    pane.RightOf(1).Put(row, 0, FittingText(LineOf(object), pane.Columns() - 1), style);
  }
}

}  // namespace

// The first row is the object that is shown whole below.
int DrawRaw(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state) {
  pane.Rule(0, TitleOf(view, state));
  if (view.raw.empty()) {
    PutNothing(pane.Below(1), state.filter.empty() ? "No object has come yet." : "None has passed the filter yet.");
    return 0;
  }
  const S_ListPart part(view.raw.size(), 1, state.scroll);
  constexpr int kMostDetail = 16;
  const int list = std::max(pane.Rows() / 2, pane.Rows() - kMostDetail);
  DrawObjectList(pane.Above(list).Below(1), view, part);
  DrawObject(pane.Below(list), *view.raw[static_cast<std::size_t>(part.first)]);
  return part.most;
}

}  // namespace Host
