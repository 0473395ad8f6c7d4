// Units of time and angle that conversions share.
#ifndef VELAGNSS_APPS_UNITS_H
#define VELAGNSS_APPS_UNITS_H

#include <numbers>

#include "geo/GnssTime.h"

namespace Host {

using ALGO::kLastMjd;
using ALGO::kMjdOfGpsEpoch;
using ALGO::kSecondsPerDay;
using ALGO::kSecondsPerWeek;

// Of the mathematical pi, not the truncated one of navigation messages.
inline constexpr double kRadiansPerDegree = std::numbers::pi / 180;
inline constexpr double kDegreesPerRadian = 180 / std::numbers::pi;

}  // namespace Host

#endif  // VELAGNSS_APPS_UNITS_H
