#include "apps/velagnss/rinex/FileName.h"

#include <fmt/core.h>

#include "apps/velagnss/rinex/RinexText.h"

namespace Host {
namespace {

// ms. Two digits are all there is for a number of them.
struct S_Unit {
  char letter;
  std::int64_t ms;
};
constexpr S_Unit kUnits[] = {{'D', 86'400'000}, {'H', 3'600'000}, {'M', 60'000}, {'S', 1000}};
constexpr std::int64_t kMostUnits = 99;
constexpr const char* kUnknown = "00U";

// "01H", "30S": in the largest unit of which it is a multiple.
std::string Multiple(std::int64_t ms) {
  for (const S_Unit& unit : kUnits)
    if (ms > 0 && ms % unit.ms == 0 && ms / unit.ms <= kMostUnits)
      return fmt::format("{:02}{}", ms / unit.ms, unit.letter);
  return kUnknown;
}

// Rounded up to minutes, or to what is needed so that it fits.
std::string Period(std::int64_t ms) {
  for (std::size_t i = 3; i-- > 0;) {
    const std::int64_t unit = kUnits[i].ms;
    if (ms <= kMostUnits * unit) return Multiple((ms + unit - 1) / unit * unit);
  }
  return kUnknown;
}

// "05Z" for 5 Hz.
std::string Interval(std::int64_t ms) {
  if (ms > 0 && ms < 1000 && 1000 % ms == 0 && 1000 / ms <= kMostUnits) return fmt::format("{:02}Z", 1000 / ms);
  return Multiple(ms);
}

bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsDigit(char c) { return c >= '0' && c <= '9'; }

std::string Station(const std::string& marker) {
  constexpr std::size_t kNine = 9, kFour = 4;
  std::string name;
  for (const char c : marker) {
    const char upper = c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
    if (IsUpper(upper) || IsDigit(upper)) name += upper;
  }
  const bool isWhole = marker.size() == kNine && name.size() == kNine && IsDigit(name[4]) && IsDigit(name[5]) &&
                       IsUpper(name[6]) && IsUpper(name[7]) && IsUpper(name[8]);
  if (isWhole) return name;
  name.resize(kFour, '0');
  return name + "00XXX";
}

}  // namespace

std::string RinexFileName(const S_ObsFile& file) {
  const S_RinexTime start = RinexTime(file.start);
  return fmt::format("{}_S_{:04}{:03}{:02}{:02}_{}_{}_{}O.rnx", Station(file.marker), start.year, start.dayOfYear,
                     start.hour, start.minute, Period(file.duration), Interval(file.interval), file.system);
}

}  // namespace Host
