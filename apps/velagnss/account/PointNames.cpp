#include "apps/velagnss/account/PointNames.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

namespace Host {
namespace {

struct S_SystemRow {
  char letter;
  unsigned int offset;  // of the satellite number of RINEX
};
constexpr S_SystemRow kSystems[] = {{'G', 0}, {'R', 0}, {'C', 0}, {'E', 0}, {'S', 100}, {'J', 192}, {'I', 0}};

constexpr std::array<std::string_view, 9> kUses = {
    "",           "no ephemeris", "ephemeris outdated", "unhealthy", "ephemeris implausible", "signal missing",
    "below mask", "outlier",      "only one of system"};  // by `velagnss::PointUse`

}  // namespace

std::string PointSatelliteName(unsigned int system, unsigned int svId) {
  const S_SystemRow& row = kSystems[system];
  return fmt::format("{}{:02}", row.letter, svId < row.offset ? svId : svId - row.offset);
}

std::string_view WhyUnused(const S_PointSatellite& satellite) {
  const auto* const most = std::max_element(satellite.uses.begin() + 1, satellite.uses.end());
  return *most == 0 ? std::string_view() : kUses[static_cast<std::size_t>(most - satellite.uses.begin())];
}

}  // namespace Host
