#include "rtcm3/LockTimes.h"

#include <array>
#include <cstddef>
#include <iterator>

namespace velagnss::rtcm3 {
namespace {

// From the indicator `first` on, each counts `step` seconds (RTCM 10403, table of DF013).
struct LegacyRow {
  unsigned int first;
  std::uint32_t least;
  std::uint32_t step;
};
constexpr LegacyRow kLegacyRows[] = {{0, 0, 1}, {24, 24, 2}, {48, 72, 4}, {72, 168, 8}, {96, 360, 16}, {120, 744, 32}};
constexpr std::uint32_t kLegacyLongest = 937;  // of indicator 127

consteval bool EachRowGoesOnWhereTheLastOneEnds() {
  for (std::size_t i = 1; i < std::size(kLegacyRows); ++i)
    if (kLegacyRows[i].least !=
        kLegacyRows[i - 1].least + (kLegacyRows[i].first - kLegacyRows[i - 1].first) * kLegacyRows[i - 1].step)
      return false;
  return true;
}
static_assert(EachRowGoesOnWhereTheLastOneEnds());

constexpr std::uint32_t LeastOfLegacy(unsigned int indicator) {
  constexpr unsigned int kLast = 127;
  if (indicator == kLast) return kLegacyLongest * 1000;
  const LegacyRow* row = std::end(kLegacyRows) - 1;
  while (row->first > indicator) --row;
  return (row->least + (indicator - row->first) * row->step) * 1000;
}

// DF402 doubles from 32 ms on.
constexpr std::uint32_t LeastOfMsm(unsigned int indicator) { return indicator == 0 ? 0 : 32U << (indicator - 1); }

// DF407 counts milliseconds up to 63; from there on the step doubles every 32 indicators.
constexpr std::uint32_t LeastOfMsmHigh(unsigned int indicator) {
  if (indicator < 64) return indicator;
  const unsigned int doublings = indicator / 32 - 1;
  return (indicator - 32 * doublings) << doublings;
}
static_assert(LeastOfMsmHigh(95) == 126 && LeastOfMsmHigh(384) == 65536 && LeastOfMsmHigh(704) == 67108864);

// The least times of all indicators; the last one has no end.
template <unsigned int Count>
consteval std::array<std::uint32_t, Count + 1> TableOf(std::uint32_t (*leastOf)(unsigned int)) {
  std::array<std::uint32_t, Count + 1> table{};
  for (unsigned int indicator = 0; indicator < Count; ++indicator) table[indicator] = leastOf(indicator);
  table[Count] = LockTime::kEndless;
  return table;
}
constexpr auto kLegacyTable = TableOf<128>(LeastOfLegacy);
constexpr auto kMsmTable = TableOf<16>(LeastOfMsm);
constexpr auto kMsmHighTable = TableOf<705>(LeastOfMsmHigh);  // higher ones are reserved

template <std::size_t N>
LockTime TimeOf(const std::array<std::uint32_t, N>& table, unsigned int indicator) {
  if (indicator + 1 >= N) return {};
  return {table[indicator], table[indicator + 1], true};
}

}  // namespace

LockTime LockTimeOfLegacy(unsigned int indicator) { return TimeOf(kLegacyTable, indicator); }
LockTime LockTimeOfMsm(unsigned int indicator) { return TimeOf(kMsmTable, indicator); }
LockTime LockTimeOfMsmHigh(unsigned int indicator) { return TimeOf(kMsmHighTable, indicator); }

Rtcm3Lock LockHistory::Note(const Observation& now, const LockTime& lock) {
  Entry& entry = m_entries[(now.group * kSatellites + now.satellite) * kSignals + now.signal];
  const Entry before = entry;
  if (!lock.isKnown) {
    entry = {};
    return Rtcm3Lock::Unknown;
  }
  entry = {now.time, lock.least, now.station};
  if (before.station != now.station) return Rtcm3Lock::Unknown;
  const std::uint32_t elapsed = (now.time + now.period - before.time) % now.period;
  if (elapsed > now.period / 2) return Rtcm3Lock::Unknown;  // time went back, or the gap is too long to be measured
  if (lock.least < before.least || lock.end <= elapsed) return Rtcm3Lock::Lost;
  return lock.least >= elapsed ? Rtcm3Lock::Kept : Rtcm3Lock::MaybeLost;
}

}  // namespace velagnss::rtcm3
