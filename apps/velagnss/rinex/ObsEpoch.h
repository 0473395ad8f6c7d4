// Observations of one epoch as RINEX has them: satellites by letter and number, signals by their codes.
#ifndef VELAGNSS_APPS_OBS_EPOCH_H
#define VELAGNSS_APPS_OBS_EPOCH_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <vector>

#include "apps/velagnss/rinex/NavRecord.h"

namespace Host {

// The kinds of observation, in the order of the columns of a signal.
enum eObsKind : unsigned char { ePseudorange, ePhase, eDoppler, eStrength };
inline constexpr std::size_t kNumObsKinds = 4;
inline constexpr std::string_view kObsKindLetters = "CLDS";

// A band and the attribute of its tracking: "1C".
using t_SignalCode = std::array<char, 2>;

// The signals of a satellite at an epoch. Plain bytes, so that it can be put aside into a file.
struct S_ObsSignal {
  enum eFlags : unsigned char {
    eLockLost = 1 << 0,   // as the loss of lock indicator of RINEX has it, like the next one
    eHalfCycle = 1 << 1,  // ambiguity not resolved
    eInMeters = 1 << 6,   // phase and Doppler are range and range rate: the frequency was not known then
    eIsLegacy = 1 << 7,   // from 1001 to 1012, whose phases are another series than those of MSM
  };

  unsigned char system = 0;  // row of NavSystems()
  unsigned char number = 0;  // of the satellite in RINEX
  t_SignalCode code{};
  unsigned char flags = 0;
  unsigned char rank = 0;  // of two observations of a signal, that of the higher rank counts
  std::array<unsigned char, 2> spare{};
  std::array<double, kNumObsKinds> values{kNoNumber, kNoNumber, kNoNumber, kNoNumber};  // m, cycles, Hz, dB-Hz

  auto Key() const { return std::tie(system, number, code); }
};

struct S_ObsEpoch {
  enum class eDate : std::uint32_t {
    None,
    Assumed,  // by the user; counts only if the input carries none
    Known,
  };

  std::int64_t time = 0;  // ms since 6 January 1980, GPS time; only within its week as long as it has no date
  eDate date = eDate::None;
  std::uint32_t input = 0;           // that it came from, from 0
  std::vector<S_ObsSignal> signals;  // by their keys
};

inline constexpr std::int64_t kMsPerSecond = 1000;
inline constexpr std::int64_t kMsPerWeek = std::int64_t{7} * 86400 * kMsPerSecond;

// Whether RINEX 3.05 knows the tracking, and whether the phases of its band are aligned to it.
bool IsSignal(char system, t_SignalCode code);
bool IsReferenceSignal(char system, t_SignalCode code);

}  // namespace Host

#endif  // VELAGNSS_APPS_OBS_EPOCH_H
