// The options of `convert --to rinex-nav`.
#ifndef VELAGNSS_APPS_NAV_OPTIONS_H
#define VELAGNSS_APPS_NAV_OPTIONS_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/rinex/NavRecord.h"

namespace CLI {
class App;
}

namespace Host {

inline constexpr std::string_view kRinexNavGroup = "Options of rinex-nav";

// RINEX 3.05 has header lines for marker and agency in observation files only: here they are comments.
inline constexpr std::string_view kMarkerComment = "MARKER NAME: ";
inline constexpr std::string_view kAgencyComment = "AGENCY: ";

struct S_RinexNavOptions {
  std::vector<std::string> systems;  // lists with commas; none: all of them
  std::string marker;
  std::string runBy;
  std::string agency;
  std::string runDate = "stream";  // or "now"
};

void DeclareRinexNavOptions(CLI::App& app, S_RinexNavOptions& options);

// The systems that `lists`, which have been checked, name; all of them without a list.
std::array<bool, kNumNavSystems> SelectNavSystems(const std::vector<std::string>& lists);

// The names that --system takes, separated by spaces.
std::string NavSystemNames();

}  // namespace Host

#endif  // VELAGNSS_APPS_NAV_OPTIONS_H
