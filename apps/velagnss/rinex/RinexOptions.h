// The options of `convert --to rinex-nav` and `--to rinex-obs`.
#ifndef VELAGNSS_APPS_RINEX_OPTIONS_H
#define VELAGNSS_APPS_RINEX_OPTIONS_H

#include <array>
#include <optional>
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
inline constexpr std::string_view kRinexObsGroup = "Options of rinex-obs";

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
  std::string runDate = "stream";  // or "now"
  std::string version{kRinex3};    // of navigation files

  // Of observation files. What is empty comes from the stream.
  std::string observer;
  std::string receiver;               // number, type, version, separated by commas
  std::string antenna;                // number, type
  std::string position;               // X, Y, Z in m
  std::vector<std::string> obsTypes;  // "G:C1C,L1C"; systems that are not named: all types that come
  std::string station;                // number of the reference station; empty: the first one that comes
  double interval = 0;                // s between epochs; 0: all
  std::string split;                  // "1h", "1d": a file for each
  bool hasAutoNames = false;          // the files name themselves

  bool isCompressed = false;  // gzip
};

void DeclareRinexOptions(CLI::App& app, S_RinexOptions& options);

// The systems that `lists`, which have been checked, name; all of them without a list.
std::array<bool, kNumNavSystems> SelectNavSystems(const std::vector<std::string>& lists);

// Observation types of each system, rows of NavSystems(), from lists that have been checked.
using t_ObsTypes = std::array<std::vector<std::string>, kNumNavSystems>;
t_ObsTypes ReadObsTypes(const std::vector<std::string>& lists);

// Three numbers separated by commas.
std::optional<std::array<double, 3>> ReadPosition(std::string_view list);

// Why the options do not suit an observation file; empty when they do.
std::string ObjectionForObs(const S_RinexOptions& options);

// The names that --system takes, separated by spaces.
std::string NavSystemNames();

}  // namespace Host

#endif  // VELAGNSS_APPS_RINEX_OPTIONS_H
