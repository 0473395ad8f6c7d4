// What makes an epoch of RTCM 3 observations.
//
// An epoch ends when the time changes. The flag "more messages follow" is not relied on: many stations clear it in each
// message, and streams put together from several sources have it wrong.
#ifndef VELAGNSS_APPS_OBSERVATIONS_H
#define VELAGNSS_APPS_OBSERVATIONS_H

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "apps/velagnss/text/Units.h"
#include "rtcm3/Rtcm3Records.h"

namespace Host {

// Messages of an epoch differ in time by less than this, ms: the clocks of the systems are converted in whole ones.
inline constexpr std::int64_t kSameEpoch = 5;

// From one second of a week to another, in ms: the shorter way around the week.
inline std::int64_t MillisecondsFrom(double from, double to) {
  constexpr double kMs = 1000;
  return std::llround(std::remainder(to - from, kSecondsPerWeek) * kMs);
}

// As long as the stream's date is unknown, so are the leap seconds, and the decoder takes those of today or of the date
// that the user gave. Then GLONASS needs another system that has the same time: `epoch` is the second of the week of
// the epoch that has begun.
inline bool MayHaveWrongLeapSeconds(const velagnss::Rtcm3Observations& message, const std::optional<double>& epoch) {
  const bool isDateKnown = !IsNotAvailable(message.time.week) && !message.time.isWeekAssumed;
  if (message.system != ALGO::GNSS_GLONASS || isDateKnown) return false;
  return !epoch || std::abs(MillisecondsFrom(*epoch, message.time.seconds)) >= kSameEpoch;
}

// A cell of a message may be there without a measurement.
inline bool IsObserved(const velagnss::Rtcm3Signal& signal) {
  return !IsNotAvailable(signal.data.Pseudorange) || !IsNotAvailable(signal.phaseRange);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_OBSERVATIONS_H
