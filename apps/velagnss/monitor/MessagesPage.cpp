// Which messages come, how often, and what was wrong.
#include <fmt/format.h>

#include <algorithm>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// A column of a list, shown if the pane has at least so many columns.
template <class Row>
struct S_Column {
  std::string_view title;
  int width;
  int leastColumns;
  bool isRight;  // numbers
  std::string (*text)(const Row& row);
};

template <class Row, std::size_t N>
void PutRow(const C_Pane& pane, int row, const S_Column<Row> (&columns)[N], const Row* values, eStyle style) {
  int at = 0;
  for (const S_Column<Row>& column : columns) {
    if (pane.Columns() < column.leastColumns) continue;
    const std::string text = values == nullptr ? std::string(column.title) : column.text(*values);
    const bool isLast = &column == &columns[N - 1];
    const int width = isLast ? pane.Columns() - at : column.width;
    const C_Pane cell = pane.Part(row, at, 1, width);
    const std::string shown = FittingParts(text, width);
    column.isRight ? cell.PutRight(0, width, shown, style) : static_cast<void>(cell.Put(0, 0, shown, style));
    at += width + 1;
  }
}

std::string CountText(std::uint64_t count) { return fmt::format("{}", count); }

constexpr S_Column<S_MessageView> kMessageColumns[] = {
    {"Protocol", 8, 48, false, [](const S_MessageView& m) { return m.protocol; }},
    {"Message", 10, 0, false, [](const S_MessageView& m) { return m.name.empty() ? m.protocol : m.name; }},
    {"Per s", 6, 0, true, [](const S_MessageView& m) { return DecimalText(m.rate, 1); }},
    {"Count", 9, 0, true, [](const S_MessageView& m) { return CountText(m.count); }},
    {"Size", 7, 60, true, [](const S_MessageView& m) { return SizeText(static_cast<double>(m.bytes)); }},
    {"Faults", 6, 56, true, [](const S_MessageView& m) { return m.faults > 0 ? CountText(m.faults) : "-"; }},
    {"Last", 8, 0, false, [](const S_MessageView& m) { return IsKnown(m.age) ? AgeText(m.age) + " ago" : "-"; }},
};

constexpr S_Column<S_FaultView> kFaultColumns[] = {
    {"When", 20, 60, false,
     [](const S_FaultView& f) { return std::string(f.when.IsEmpty() ? "-" : f.when.Text().substr(0, 19)); }},
    {"Offset", 11, 0, true, [](const S_FaultView& f) { return CountText(f.offset); }},
    {"Bytes", 7, 0, true, [](const S_FaultView& f) { return f.length > 0 ? CountText(f.length) : "..."; }},
    {"What", 9, 48, false, [](const S_FaultView& f) { return f.what; }},
    {"Why", 0, 0, false, [](const S_FaultView& f) { return f.why; }},
};

template <class Row, std::size_t N>
int DrawList(const C_Pane& pane, const S_Column<Row> (&columns)[N], const std::vector<Row>& rows, int scroll,
             eStyle (*styleOf)(const Row& row)) {
  PutRow<Row>(pane, 0, columns, nullptr, eStyle::Title);
  const S_ListPart part(rows.size(), pane.Rows() - 1, scroll);
  for (int i = 0; i < pane.Rows() - 1 && part.first + i < static_cast<int>(rows.size()); ++i) {
    const Row& row = rows[static_cast<std::size_t>(part.first + i)];
    PutRow(pane, i + 1, columns, &row, styleOf(row));
  }
  return part.most;
}

eStyle StyleOf(const S_MessageView& message) {
  if (message.isStale) return eStyle::Dim;
  return message.faults > 0 ? eStyle::Warning : eStyle::Normal;
}

eStyle StyleOf(const S_FaultView&) { return eStyle::Normal; }

}  // namespace

int DrawMessageList(const C_Pane& pane, const S_SourceView& view, int scroll) {
  std::string title = "Messages";
  if (view.messagesLeftOut > 0) title += fmt::format(", {} of others", view.messagesLeftOut);
  pane.Rule(0, title);
  if (view.messages.empty()) {
    PutNothing(pane.Below(1), "No frame has come yet.");
    return 0;
  }
  return DrawList<S_MessageView>(pane.Below(1), kMessageColumns, view.messages, scroll, &StyleOf);
}

int DrawFaultList(const C_Pane& pane, const S_SourceView& view, int scroll) {
  pane.Rule(0, fmt::format("Faults: {}", view.faultCount));
  if (view.faults.empty()) {
    PutNothing(pane.Below(1), "None.");
    return 0;
  }
  return DrawList<S_FaultView>(pane.Below(1), kFaultColumns, view.faults, scroll, &StyleOf);
}

// Side by side where both have room, else one above the other. Both scroll at once, each as far as it can.
int DrawMessages(const C_Pane& pane, const S_SourceView& view, const S_ScreenState& state) {
  constexpr int kSideBySide = 130;
  constexpr int kTitles = 2;
  if (pane.Columns() >= kSideBySide) {
    const int left = pane.Columns() / 2;
    return std::max(DrawMessageList(pane.LeftOf(left - 1), view, state.scroll),
                    DrawFaultList(pane.RightOf(left), view, state.scroll));
  }
  const int wanted = static_cast<int>(std::min<std::size_t>(view.messages.size(), 1000)) + kTitles;
  const int upper = std::clamp(wanted, pane.Rows() / 3, std::max(pane.Rows() * 2 / 3, pane.Rows() / 3));
  return std::max(DrawMessageList(pane.Above(upper), view, state.scroll),
                  DrawFaultList(pane.Below(upper), view, state.scroll));
}

}  // namespace Host
