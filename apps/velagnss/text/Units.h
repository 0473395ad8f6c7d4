// Units of time and angle that conversions share.
#ifndef VELAGNSS_APPS_UNITS_H
#define VELAGNSS_APPS_UNITS_H

#include <numbers>

namespace Host {

inline constexpr double kSecondsPerDay = 86400;
inline constexpr double kSecondsPerWeek = 7 * kSecondsPerDay;

// 6 January 1980, the first day of GPS time, as a Modified Julian Date (IS-GPS-200, 3.3.4).
inline constexpr unsigned int kMjdOfGpsEpoch = 44244;

// 31 December 2100: the last day for which C_GnssTime gives the right date.
inline constexpr unsigned int kLastMjd = 88433;

// Of the mathematical pi, not the truncated one of navigation messages.
inline constexpr double kRadiansPerDegree = std::numbers::pi / 180;
inline constexpr double kDegreesPerRadian = 180 / std::numbers::pi;

}  // namespace Host

#endif  // VELAGNSS_APPS_UNITS_H
