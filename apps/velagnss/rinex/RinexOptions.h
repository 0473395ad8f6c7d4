// The options of `convert --to rinex-nav` and `--to rinex-obs`.
#ifndef VELAGNSS_APPS_RINEX_OPTIONS_H
#define VELAGNSS_APPS_RINEX_OPTIONS_H

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/rinex/NavRecord.h"

namespace CLI {
class App;
}

namespace Host {

// Headings in the help.
inline constexpr std::string_view kRinexGroup = "Options of rinex-nav and rinex-obs";
inline constexpr std::string_view kRinexNavGroup = "Options of rinex-nav";

// RINEX has header lines for marker and agency in observation files only: in navigation files they are comments.
inline constexpr std::string_view kMarkerComment = "MARKER NAME: ";
inline constexpr std::string_view kAgencyComment = "AGENCY: ";

inline constexpr std::string_view kRinex3 = "3.05";
inline constexpr std::string_view kRinex4 = "4.00";

struct S_RinexOptions {
  std::vector<std::string> systems;  // lists with commas; none: all of them
  std::string marker;
  std::string runBy;
  std::string agency;
  std::string runDate = "stream";      // or "now"
  std::string version{kRinex3};  // of navigation files
};

void DeclareRinexOptions(CLI::App& app, S_RinexOptions& options);

// The systems that `lists`, which have been checked, name; all of them without a list.
std::array<bool, kNumNavSystems> SelectNavSystems(const std::vector<std::string>& lists);

// The names that --system takes, separated by spaces.
std::string NavSystemNames();

}  // namespace Host

#endif  // VELAGNSS_APPS_RINEX_OPTIONS_H
