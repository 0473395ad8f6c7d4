// Constants of the satellite systems, each as its own interface document prints it, and tests of values.
//
// Internal.
#ifndef VELAGNSS_POSITIONING_CONSTANTS_H
#define VELAGNSS_POSITIONING_CONSTANTS_H

#include <cmath>

#include "geo/GnssEnums.h"
#include "geo/NotAvailable.h"
#include "positioning/SatelliteOrbit.h"

namespace velagnss::positioning {

inline constexpr double kSpeedOfLight = 299792458.0;  // m/s
inline constexpr unsigned int kSystems = 7;           // `ALGO::eGNSSSystem` 0 to 6, NavIC being 6

// WGS-84; in the rotation of the Earth during the flight of a signal the systems differ by less than a micrometer.
inline constexpr double kEarthRotation = 7.2921151467e-5;  // rad/s

// No navigation satellite in use has an orbit radius outside these limits, but test patterns in ephemerides do.
inline constexpr double kLeastRadius = 20e6;     // m
inline constexpr double kGreatestRadius = 50e6;  // m

// Whether a computed state is one of a navigation satellite: values that are complete, and each for itself possible,
// can still lead far away.
inline bool IsPlausible(const SatelliteState& state) {
  constexpr double kGreatestSpeed = 10e3;  // m/s, relative to the Earth; in use up to 4 km/s
  constexpr double kGreatestOffset = 1;    // s; fields hold up to 62.5 ms
  constexpr double kGreatestDrift = 1;     // s/s; the widest field, that of Galileo, holds 15 ns/s
  const double radius = state.position.Norm();
  return radius > kLeastRadius && radius < kGreatestRadius && state.velocity.Norm() < kGreatestSpeed &&
         std::fabs(state.clockOffset) < kGreatestOffset && std::fabs(state.clockDrift) < kGreatestDrift;
}

inline bool IsNumber(double value) { return std::isfinite(value) && !IsNotAvailable(value); }

}  // namespace velagnss::positioning

#endif  // VELAGNSS_POSITIONING_CONSTANTS_H
