#include "apps/velagnss/account/AccountTable.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "apps/velagnss/account/ObservationReport.h"
#include "apps/velagnss/account/TableLine.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Units.h"
#include "stream/Names.h"

namespace Host {
namespace {

// Rows of gaps and of skipped ranges without -v.
constexpr std::size_t kShortList = 10;

void AppendRest(std::string& table, std::uint64_t count, std::size_t shown) {
  if (count > shown) Line(table, "  and {} more", count - shown);
}

// A message that has a decoder is shown as a decoded one, although all of its frames may be faulty.
bool HasDecoder(const S_MessageCount& entry) { return entry.decoded > 0 || entry.faults > 0; }

void AppendMessages(std::string& table, const C_StreamAccount& account, bool areDecoded) {
  const auto faults = [areDecoded](const auto& text) {
    return areDecoded ? fmt::format("{:>10}", text) : std::string();
  };
  bool isFirst = true;
  for (const S_MessageCount& entry : account.Messages()) {
    if (HasDecoder(entry) != areDecoded) continue;
    if (isFirst) {
      Line(table, "{}", areDecoded ? "" : "\n  checked, but not decoded");
      Line(table, "  {:<10}{:<16}{:>8}{:>12}{}", "protocol", "message", "count", "per second", faults("faults"));
    }
    isFirst = false;
    const double rate = account.RateOf(entry.count);
    Line(table, "  {:<10}{:<16}{:>8}{:>12}{}", velagnss::ProtocolName(entry.key.protocol), entry.name, entry.count,
         std::isnan(rate) ? "-" : fmt::format("{:.3f}", rate), faults(entry.faults));
  }
}

void AppendTime(std::string& table, const C_StreamAccount& account, std::size_t maxRows) {
  if (!account.Epochs().First()) return;
  Line(table, "\n  first time  {}", account.TimeText(*account.Epochs().First()).Text());
  Line(table, "  last time   {}", account.TimeText(*account.Epochs().Last()).Text());
  Line(table, "  interval    {} s, gaps {}", account.Epochs().Interval(), account.Epochs().GapCount());
  AppendGaps(table, account, account.Epochs(), maxRows);
}

void AppendWhyNoPosition(std::string& table, eNoPosition why) {
  if (why == eNoPosition::NoAltitude)
    Line(table, "\n  mean position  none: no fix has an altitude, which only GGA and GNS carry");
  if (why == eNoPosition::NoFix)
    Line(table, "\n  mean position  none: all positions are marked as invalid, estimated, manual or simulated");
}

void AppendPosition(std::string& table, const C_StreamAccount& account) {
  const std::optional<S_PositionSummary> position = account.Position();
  if (!position) return AppendWhyNoPosition(table, account.WhyNoPosition());
  Line(table, "\n  fixes          {}", position->fixes);
  Line(table, "  mean position  {} {} deg", NumberText(position->latitude * kDegreesPerRadian, 9),
       NumberText(position->longitude * kDegreesPerRadian, 9));
  Line(table, "  mean height    {} m above the ellipsoid, {} m above sea level", NumberText(position->height, 4),
       NumberText(position->altitude, 4));
  Line(table, "  spread         {} m north, {} m east, {} m up", NumberText(position->spreadNorth, 4),
       NumberText(position->spreadEast, 4), NumberText(position->spreadUp, 4));
  Line(table, "  horizontally   50 % of fixes within {} m, 95 % within {} m", NumberText(position->radius50, 4),
       NumberText(position->radius95, 4));
}

void AppendIntegrity(std::string& table, const C_StreamAccount& account, std::size_t maxRows) {
  if (account.Skipped().Count() == 0) return;
  Line(table, "\n  {:>14}  {}", "offset", "skipped bytes and reason");
  // Both lists are sorted by offset, so one pass assigns every false start to the range that contains it.
  auto start = account.FalseStarts().Entries().begin();
  std::size_t shown = 0;
  for (const S_SkippedBytes& range : account.Skipped().Entries()) {
    if (shown++ == maxRows) break;
    Line(table, "  {:>14}  {}", range.offset, Counted(range.length, "byte"));
    for (; start != account.FalseStarts().Entries().end() && start->offset < range.offset + range.length; ++start)
      Line(table, "  {:>14}    {}", start->offset, velagnss::ReasonText(start->reason));
  }
  AppendRest(table, account.Skipped().Count(), std::min<std::size_t>(maxRows, account.Skipped().Entries().size()));
}

void AppendCounts(std::string& table, const C_StreamAccount& account) {
  Line(table, "  {:<16}{:>14}", "bytes", account.Bytes());
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "accepted", account.AtEnd().bytesAccepted,
       Percent(account.AtEnd().bytesAccepted, account.Bytes()));
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "discarded", account.AtEnd().bytesDiscarded,
       Percent(account.AtEnd().bytesDiscarded, account.Bytes()));
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "still queued", account.Queued(),
       Percent(account.Queued(), account.Bytes()));
  Line(table, "  {:<16}{:>14}", "frames good", account.FramesGood());
  Line(table, "  {:<16}{:>14}", "decoded", account.FramesDecoded());
  Line(table, "  {:<16}{:>14}", "not decoded", account.FramesGood() - account.FramesDecoded());
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "frames damaged", account.FramesBad(), account.BadPercent());
  Line(table, "  {:<16}{:>14}  {:6.2f} %", "bytes damaged", account.BytesDamaged(),
       Percent(account.BytesDamaged(), account.Bytes()));
  Line(table, "  {:<16}{:>14}", "checksum errors", account.ChecksumErrors());
  Line(table, "  {:<16}{:>14}", "rejected starts", account.RejectedStarts());
  Line(table, "  {:<16}{:>14}", "skipped ranges", account.Skipped().Count());
  AppendMessages(table, account, true);
  AppendMessages(table, account, false);
}

}  // namespace

std::string TotalTable(const C_StreamAccount& total, std::size_t inputs) {
  std::string table = fmt::format("total of {} inputs\n", inputs);
  AppendCounts(table, total);
  return table;
}

std::string AccountTable(const C_StreamAccount& account, bool isLong) {
  const std::size_t maxRows = isLong ? account.Skipped().kCapacity : kShortList;
  std::string table;
  Line(table, "{}", Printable(account.Input()));
  AppendCounts(table, account);
  AppendTime(table, account, maxRows);
  AppendPosition(table, account);
  AppendObservations(table, account, maxRows);
  AppendIntegrity(table, account, maxRows);
  return table;
}

}  // namespace Host
