// Broadcast ephemerides as the numbers of a RINEX navigation file, whatever protocol they came by.
#ifndef VELAGNSS_APPS_NAV_RECORD_H
#define VELAGNSS_APPS_NAV_RECORD_H

#include <array>
#include <cstddef>
#include <limits>
#include <span>
#include <string_view>
#include <tuple>

#include "stream/FrameReader.h"
#include "stream/Record.h"

namespace Host {

inline constexpr std::size_t kFieldsBesideEpoch = 3;
inline constexpr std::size_t kFieldsPerLine = 4;
inline constexpr std::size_t kMaxNavValues = kFieldsBesideEpoch + 7 * kFieldsPerLine;

// A number that is not known. Unlike NaN it has a place in an order.
inline constexpr double kNoNumber = std::numeric_limits<double>::infinity();

// One ephemeris: its place in the file, and what distinguishes it from another one. Plain bytes, so that it can be put
// aside into a file.
struct S_NavRecord {
  double epoch = 0;        // s since 6 January 1980, in the time scale of the file
  std::size_t system = 0;  // row of NavSystems()
  int satellite = 0;       // its number in RINEX
  std::array<double, kMaxNavValues> values;

  // What only some messages carry, which does not make it another ephemeris.
  double transmission = kNoNumber;   // s, as it is printed
  double almanacHealth = kNoNumber;  // the low two of the health flags of GLONASS

  S_NavRecord() { values.fill(kNoNumber); }

  friend bool operator<(const S_NavRecord& a, const S_NavRecord& b) {
    return std::tie(a.epoch, a.system, a.satellite, a.values) < std::tie(b.epoch, b.system, b.satellite, b.values);
  }
};

// Completes what `record` lacks by what another message of the same ephemeris has.
void Complete(S_NavRecord& record, const S_NavRecord& other);

struct S_NavSystem {
  std::string_view name;  // for --system
  char letter;
  ALGO::eGNSSSystem gnss;
  std::string_view title;    // in the header
  int satelliteOffset;       // number that a satellite 0 of RINEX would have in the records
  std::size_t numValues;     // after the epoch, spare fields at the end left out
  std::size_t transmission;  // index of the transmission time
  bool fillsLines;           // with blanks up to column 80, without which readers fail on records of few fields
};

inline constexpr std::size_t kNumNavSystems = 7;

// In the order of the file where epochs are equal.
std::span<const S_NavSystem, kNumNavSystems> NavSystems();

// Rows of NavSystems(); kNumNavSystems when there is none.
std::size_t NavSystemNamed(std::string_view name);
std::size_t NavSystemOf(const velagnss::Frame& frame);
std::size_t NavSystemOf(ALGO::eGNSSSystem gnss);
std::size_t NavSystemWith(char letter);

// The record of an ephemeris of a system, its satellite numbered as in RINEX.
S_NavRecord NavRecordOf(std::size_t system, const velagnss::Record& ephemeris);

// What is printed at `index`; kNoNumber for a blank.
double PrintedValue(const S_NavRecord& record, std::size_t index);

// The name of the message that RINEX 4 has in the line before a record: "LNAV".
std::string_view NavMessageName(const S_NavRecord& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_NAV_RECORD_H
