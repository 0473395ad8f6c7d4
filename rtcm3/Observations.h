// What the two kinds of observation messages have in common.
//
// Internal. Ranges are assembled in integers or exact doubles and rounded once, when they are converted to meters or
// cycles.
#ifndef VELAGNSS_RTCM3_OBSERVATIONS_H
#define VELAGNSS_RTCM3_OBSERVATIONS_H

#include "rtcm3/Rtcm3Records.h"
#include "rtcm3/Signals.h"
#include "rtcm3/State.h"

namespace velagnss::rtcm3 {

// Distance that light travels in a millisecond, m (RTCM 10403). It is not representable as a double; its parts are, and
// the first two have no more than 14 bits.
inline constexpr double kMetersPerMs = 299792.458;
inline constexpr double kMetersPerMsParts[] = {299776, 16.45703125, 0.00096875};

// Meters of a range in light-milliseconds of at most 39 bits, rounded once: the products with the first two parts are
// exact, and so is the rounding error of their sum.
inline double MetersOf(double ms) {
  const double coarse = ms * kMetersPerMsParts[0];
  const double middle = ms * kMetersPerMsParts[1];
  const double sum = coarse + middle;
  const double lost = middle - (sum - coarse);
  return sum + (lost + ms * kMetersPerMsParts[2]);
}

// The carrier of a signal of a satellite, in kHz; 0 if it is not known.
inline double KilohertzOf(const Signal& signal, signed char channel) {
  if (signal.kilohertzPerChannel == 0) return signal.kilohertz;
  return IsNotAvailable(channel) ? 0 : signal.kilohertz + signal.kilohertzPerChannel * channel;
}

// Names a signal of satellite `index`, all values not available.
inline void BeginSignal(const Signal& signal, unsigned int index, Rtcm3Signal& out) {
  SetEmpty_IFGnssObsData(out.data, 1);
  out.data.Frequency = signal.frequency;
  out.data.TrackType = signal.trackType;
  out.satellite = static_cast<unsigned char>(index);
  std::copy(std::begin(signal.code), std::end(signal.code), out.code);
}

// Resolves the time of an epoch, which becomes the known one.
inline void NoteEpoch(State& state, TimeField field, Rtcm3Time& time) {
  const auto resolved = state.clock.Resolve(field, time.sent, time.dayOfWeek);
  if (!resolved) return;
  state.clock.Describe(*resolved, time);
  state.clock.Advance(*resolved);
}

// Notes the lock of a signal.
inline void NoteLock(State& state, const LockHistory::Observation& observation, const LockTime& lock,
                     Rtcm3Signal& out) {
  if (lock.isKnown) out.lockTime = SecondsOf(lock.least);
  out.lock = state.locks.Note(observation, lock);
}

// The second step of each kind.
void FollowLegacyObservations(State& state, Rtcm3Observations& out);
void FollowMsm(State& state, Rtcm3Observations& out);

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_OBSERVATIONS_H
