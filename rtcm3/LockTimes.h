// Lock time indicators, and loss of lock between two observations.
//
// Internal.
#ifndef VELAGNSS_RTCM3_LOCK_TIMES_H
#define VELAGNSS_RTCM3_LOCK_TIMES_H

#include <cstdint>
#include <vector>

#include "rtcm3/Rtcm3Records.h"
#include "rtcm3/Signals.h"

namespace velagnss::rtcm3 {

// The true lock time is in [least, end) ms.
struct LockTime {
  static constexpr std::uint32_t kEndless = 0xFFFFFFFF;

  std::uint32_t least = 0;
  std::uint32_t end = kEndless;
  bool isKnown = false;  // false: a reserved indicator
};

using t_LockTime = LockTime (*)(unsigned int indicator);
LockTime LockTimeOfLegacy(unsigned int indicator);   // DF013, 7 bits
LockTime LockTimeOfMsm(unsigned int indicator);      // DF402, 4 bits
LockTime LockTimeOfMsmHigh(unsigned int indicator);  // DF407, 10 bits

// What was last seen of every signal.
class LockHistory {
 public:
  // 1001 to 1004 and 1009 to 1012 have indicators of their own, so their signals are kept apart from those of MSM.
  static constexpr unsigned int kLegacyGps = kSystems, kLegacyGlonass = kSystems + 1;

  // A signal of a station at a time, which is in ms and repeats after a period.
  struct Observation {
    unsigned int group;      // system of an MSM, or one of the constants above
    unsigned int satellite;  // 0 to 63
    unsigned int signal;     // 0 to 31
    unsigned short station;
    std::uint32_t time;
    std::uint32_t period;
  };

  LockHistory() : m_entries(std::size_t{kSystems + 2} * kSatellites * kSignals) {}

  void Clear() { std::fill(m_entries.begin(), m_entries.end(), Entry{}); }

  // Compares an observation with the previous one and replaces it.
  Rtcm3Lock Note(const Observation& observation, const LockTime& lock);

 private:
  static constexpr unsigned int kSatellites = 64, kSignals = 32;

  struct Entry {
    std::uint32_t time = 0;
    std::uint32_t least = 0;
    unsigned short station = NA_U16;  // no observation yet
  };

  std::vector<Entry> m_entries;
};

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_LOCK_TIMES_H
