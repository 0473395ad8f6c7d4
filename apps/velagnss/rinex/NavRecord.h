// Broadcast ephemerides as the numbers of a RINEX 3.05 navigation file.
#ifndef VELAGNSS_APPS_NAV_RECORD_H
#define VELAGNSS_APPS_NAV_RECORD_H

#include <cstddef>
#include <optional>
#include <span>
#include <string_view>
#include <tuple>
#include <vector>

#include "stream/FrameReader.h"
#include "stream/Record.h"

namespace Host {

inline constexpr std::size_t kFieldsBesideEpoch = 3;
inline constexpr std::size_t kFieldsPerLine = 4;

// One ephemeris: its place in the file, and what distinguishes it from another one.
struct S_NavRecord {
  double epoch;        // s since 6 January 1980, in the time scale of the file
  std::size_t system;  // row of NavSystems()
  int satellite;       // its number in RINEX
  std::vector<std::optional<double>> values;
  double transmission;  // s, as it is printed

  friend bool operator<(const S_NavRecord& a, const S_NavRecord& b) {
    return std::tie(a.epoch, a.system, a.satellite, a.values) < std::tie(b.epoch, b.system, b.satellite, b.values);
  }
};

struct S_NavSystem {
  std::string_view name;  // for --system
  char letter;
  std::string_view title;    // in the header
  unsigned int message;      // of the binary protocol
  int satelliteOffset;       // PRN of the satellite that would have the number 0
  std::size_t transmission;  // index of the transmission time

  // The record of an ephemeris of this system, with the PRN as its satellite.
  S_NavRecord (*recordOf)(std::size_t system, const velagnss::Record& ephemeris);
};

inline constexpr std::size_t kNumNavSystems = 4;

// In the order of the file where epochs are equal.
std::span<const S_NavSystem, kNumNavSystems> NavSystems();

// Rows of NavSystems(); kNumNavSystems when there is none.
std::size_t NavSystemNamed(std::string_view name);
std::size_t NavSystemOf(const velagnss::Frame& frame);

}  // namespace Host

#endif  // VELAGNSS_APPS_NAV_RECORD_H
