#include "rtcm3/LockTimes.h"

#include <algorithm>
#include <iterator>

namespace velagnss::rtcm3 {
namespace {

// From the indicator `first` on, each counts `step` seconds (RTCM 10403, table of DF013).
struct LegacyRow {
  unsigned int first;
  std::uint32_t least;
  std::uint32_t step;
};
constexpr LegacyRow kLegacy[] = {{0, 0, 1}, {24, 24, 2}, {48, 72, 4}, {72, 168, 8}, {96, 360, 16}, {120, 744, 32}};
constexpr unsigned int kLegacyLast = 127;  // 937 s and more
constexpr std::uint32_t kLegacyLongest = 937;

consteval bool EachRowGoesOnWhereTheLastOneEnds() {
  for (std::size_t i = 1; i < std::size(kLegacy); ++i)
    if (kLegacy[i].least != kLegacy[i - 1].least + (kLegacy[i].first - kLegacy[i - 1].first) * kLegacy[i - 1].step)
      return false;
  return true;
}
static_assert(EachRowGoesOnWhereTheLastOneEnds());

constexpr unsigned int kMsmLast = 15;
constexpr unsigned int kMsmHighLast = 704;  // higher ones are reserved

// DF407 counts milliseconds up to 63; from there on the step doubles every 32 indicators.
constexpr std::uint32_t LeastOfMsmHigh(unsigned int indicator) {
  if (indicator < 64) return indicator;
  const unsigned int doublings = indicator / 32 - 1;
  return (indicator - 32 * doublings) << doublings;
}
static_assert(LeastOfMsmHigh(95) == 126 && LeastOfMsmHigh(384) == 65536 && LeastOfMsmHigh(704) == 67108864);

}  // namespace

LockTime LockTimeOfLegacy(unsigned int indicator) {
  if (indicator == kLegacyLast) return {kLegacyLongest * 1000, LockTime::kEndless, true};
  const LegacyRow& row = *(std::upper_bound(std::begin(kLegacy), std::end(kLegacy), indicator,
                                            [](unsigned int i, const LegacyRow& r) { return i < r.first; }) -
                           1);
  const std::uint32_t least = row.least + (indicator - row.first) * row.step;
  const std::uint32_t end = indicator + 1 == kLegacyLast ? kLegacyLongest : least + row.step;
  return {least * 1000, end * 1000, true};
}

LockTime LockTimeOfMsm(unsigned int indicator) {
  constexpr std::uint32_t kShortest = 32;  // ms
  if (indicator == 0) return {0, kShortest, true};
  const std::uint32_t least = kShortest << (indicator - 1);
  return {least, indicator == kMsmLast ? LockTime::kEndless : 2 * least, true};
}

LockTime LockTimeOfMsmHigh(unsigned int indicator) {
  if (indicator > kMsmHighLast) return {};
  const bool isLast = indicator == kMsmHighLast;
  return {LeastOfMsmHigh(indicator), isLast ? LockTime::kEndless : LeastOfMsmHigh(indicator + 1), true};
}

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
