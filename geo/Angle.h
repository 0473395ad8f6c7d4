// Pi and the factors between units of angle.
//
// Internal. The numbers of the documents are not all the same: IS-GPS-200 (20.3.3.4.3) and the documents that follow it
// print a pi of 14 digits for their formulas. Each has one home here.
#ifndef VELAGNSS_GEO_ANGLE_H
#define VELAGNSS_GEO_ANGLE_H

#include <numbers>

namespace velagnss::geo {

// The double nearest to pi: geometry.
inline constexpr double kPi = std::numbers::pi;

inline constexpr double kDegreesPerRadian = 180 / kPi;
inline constexpr double kRadiansPerDegree = kPi / 180;

// Broadcast angles are sent in semicircles. IS-GPS-200 asks for its own pi, 3.1415926535898, in the conversion; the
// records hold the product with the nearest double instead, which differs from it by 2e-15 of the value, far below the
// resolution of any field that is sent.
inline constexpr double kRadiansPerSemicircle = kPi;

}  // namespace velagnss::geo

#endif  // VELAGNSS_GEO_ANGLE_H
