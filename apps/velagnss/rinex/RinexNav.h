// Broadcast ephemerides as a RINEX 3.05 navigation file.
#ifndef VELAGNSS_APPS_RINEX_NAV_H
#define VELAGNSS_APPS_RINEX_NAV_H

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/pipeline/Converter.h"

namespace CLI {
class App;
}

namespace Host {

inline constexpr std::string_view kRinexNavGroup = "Options of rinex-nav";

struct S_RinexNavOptions {
  std::vector<std::string> systems;  // lists with commas; none: all of them
  std::string marker;
  std::string runBy;
  std::string agency;
  std::string runDate = "stream";  // or "now"
};
// What --system understands, separated by blanks.
std::string SystemNames();

void DeclareRinexNavOptions(CLI::App& app, S_RinexNavOptions& options);

// Takes the ephemerides of GPS, QZSS, GLONASS and SBAS (messages 95, 25, 65 and 93) and writes them at the end, in the
// order of their reference times and each one once. What an ephemeris carries in fractions of its own units is exact to
// the 13 digits that a field has.
//
// Left out, each with its reason reported, are ephemerides whose week or date is not known, those that the decoder
// refuses, and satellites that RINEX has no number for. Without a single ephemeris nothing is written.
std::unique_ptr<C_Converter> MakeRinexNav(const S_RinexNavOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_RINEX_NAV_H
