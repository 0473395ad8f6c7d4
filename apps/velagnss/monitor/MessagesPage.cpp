// Which messages come, how often, and what was wrong.
#include <fmt/core.h>

#include <algorithm>

#include "apps/velagnss/monitor/PageParts.h"
#include "apps/velagnss/monitor/ViewText.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// A column of a list, shown in panes of at least and at most so many columns.
template <class Row>
struct S_Column {
  std::string_view title;
  int width;  // 0: the rest of the pane
  int leastColumns;
  bool isRight;  // numbers
  std::string (*text)(const Row& row);
  int mostColumns = 1000;
};

template <class Row, std::size_t N>
void PutRow(const C_Pane& pane, int row, const S_Column<Row> (&columns)[N], const Row* values, eStyle style) {
  int at = 0;
  for (const S_Column<Row>& column : columns) {
    if (pane.Columns() < column.leastColumns || pane.Columns() > column.mostColumns) continue;
    const std::string text = values == nullptr ? std::string(column.title) : column.text(*values);
    const int width = column.width > 0 ? column.width : pane.Columns() - at;
    const C_Pane cell = pane.Part(row, at, 1, width);
    const std::string shown = FittingText(text, width);
    column.isRight ? cell.PutRight(0, width, shown, style) : static_cast<void>(cell.Put(0, 0, shown, style));
    at += width + 1;
  }
}

std::string CountText(std::uint64_t count) { return fmt::format("{}", count); }

constexpr S_Column<S_MessageView> kMessageColumns[] = {
    {"Protocol", 8, 48, false, [](const S_MessageView& m) { return m.protocol; }},
    {"Message", 10, 0, false, [](const S_MessageView& m) { return m.name.empty() ? m.protocol : m.name; }},
    {"Per s", 6, 0, true, [](const S_MessageView& m) { return RateText(m.rate); }},
    {"Count", 9, 0, true, [](const S_MessageView& m) { return CountText(m.count); }},
    {"Size", 7, 60, true, [](const S_MessageView& m) { return SizeText(static_cast<double>(m.bytes)); }},
    {"Faults", 6, 56, true, [](const S_MessageView& m) { return m.faults > 0 ? CountText(m.faults) : "-"; }},
    {"Age", 8, 0, true, [](const S_MessageView& m) { return AgeText(m.age); }},
};

constexpr S_Column<S_MessageView> kProtocolColumns[] = {
    {"Protocol", 8, 0, false, [](const S_MessageView& m) { return m.protocol; }},
    {"Per s", 6, 0, true, [](const S_MessageView& m) { return RateText(m.rate); }},
    {"Count", 9, 0, true, [](const S_MessageView& m) { return CountText(m.count); }},
    {"Age", 8, 0, true, [](const S_MessageView& m) { return AgeText(m.age); }},
    {"Size", 7, 42, true, [](const S_MessageView& m) { return SizeText(static_cast<double>(m.bytes)); }},
    {"Faults", 6, 50, true, [](const S_MessageView& m) { return m.faults > 0 ? CountText(m.faults) : "-"; }},
};

constexpr std::string_view kNoFrames = "No frame has come yet.";

constexpr S_Column<S_FaultView> kFaultColumns[] = {
    {"When", 8, 0, false, [](const S_FaultView& f) { return f.when.IsEmpty() ? "-" : ClockText(f.when, false); }, 75},
    {"When", 19, 76, false, [](const S_FaultView& f) { return f.when.IsEmpty() ? "-" : ClockText(f.when, true); }},
    {"Offset", 11, 48, true, [](const S_FaultView& f) { return CountText(f.offset); }},
    {"Bytes", 7, 0, true, [](const S_FaultView& f) { return f.length > 0 ? CountText(f.length) : "..."; }},
    {"What", 9, 56, false, [](const S_FaultView& f) { return f.what; }},
    {"Why", 0, 0, false, [](const S_FaultView& f) { return f.why; }},
};

template <class Row, std::size_t N>
int DrawList(const C_Pane& pane, const S_Column<Row> (&columns)[N], const std::vector<Row>& rows, int scroll,
             eStyle (*styleOf)(const Row& row)) {
  PutRow<Row>(pane, 0, columns, nullptr, eStyle::Title);
  const S_ListPart part(rows.size(), pane.Rows() - 1, scroll);
  for (int i = 0; i < pane.Rows() - 1 && part.At(i) < rows.size(); ++i) {
    const Row& row = rows[part.At(i)];
    PutRow(pane, i + 1, columns, &row, styleOf(row));
  }
  return part.most;
}

// The last message of a protocol makes its age.
void Add(S_MessageView& sum, const S_MessageView& message) {
  sum.count += message.count;
  sum.bytes += message.bytes;
  sum.faults += message.faults;
  sum.isStale = sum.isStale && message.isStale;
  if (!(message.age > sum.age)) sum.age = message.age;
  if (IsKnown(message.rate)) sum.rate = message.rate + (IsKnown(sum.rate) ? sum.rate : 0);
}

std::vector<S_MessageView> ProtocolsOf(const std::vector<S_MessageView>& messages) {
  std::vector<S_MessageView> protocols;
  for (const S_MessageView& message : messages) {
    if (!protocols.empty() && protocols.back().protocol == message.protocol)
      Add(protocols.back(), message);
    else
      protocols.push_back(message);
  }
  return protocols;
}

eStyle StyleOf(const S_MessageView& message) {
  if (message.isStale) return eStyle::Dim;
  return message.faults > 0 ? eStyle::Warning : eStyle::Normal;
}

eStyle StyleOf(const S_FaultView&) { return eStyle::Normal; }

}  // namespace

int DrawProtocolList(const C_Pane& pane, const S_SourceView& view) {
  pane.Rule(0, "Protocols");
  if (view.messages.empty()) PutNothing(pane.Below(1), kNoFrames);
  if (view.messages.empty()) return 0;
  return DrawList<S_MessageView>(pane.Below(1), kProtocolColumns, ProtocolsOf(view.messages), 0, &StyleOf);
}

int DrawMessageList(const C_Pane& pane, const S_SourceView& view, int scroll) {
  std::string title = "Messages";
  if (view.messagesLeftOut > 0) title += fmt::format(", {} of others", view.messagesLeftOut);
  pane.Rule(0, title);
  if (view.messages.empty()) {
    PutNothing(pane.Below(1), kNoFrames);
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
