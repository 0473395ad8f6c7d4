// Names of satellites, and of the reasons why one was not used.
#ifndef VELAGNSS_APPS_POINT_NAMES_H
#define VELAGNSS_APPS_POINT_NAMES_H

#include <string>
#include <string_view>

#include "apps/velagnss/account/PointReport.h"

namespace Host {

// As RINEX names it: "G05", "J02" for QZSS 194. A number that the system does not have stays as it is.
std::string PointSatelliteName(unsigned int system, unsigned int svId);

// The most frequent reason, in words; empty if there is none.
std::string_view WhyUnused(const S_PointSatellite& satellite);

}  // namespace Host

#endif  // VELAGNSS_APPS_POINT_NAMES_H
