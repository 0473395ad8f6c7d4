// Position of an antenna from the pseudoranges of one epoch and broadcast ephemerides.
//
//   velagnss::PointSolver solver;
//   const velagnss::PointSolution& solution = solver.Solve(epoch, store);
//   if (solution.result == velagnss::PointResult::Ok) Use(solution.position);
//
// Expect an error of one to three meters with two frequencies, and of up to some ten meters with one.
#ifndef VELAGNSS_POSITIONING_POINT_SOLVER_H
#define VELAGNSS_POSITIONING_POINT_SOLVER_H

#include <cstddef>
#include <memory>

#include "geo/Vector3.h"
#include "positioning/EphemerisStore.h"
#include "positioning/PointEpochs.h"
#include "velagnss_export.h"

namespace velagnss {

// Whether an epoch has a position.
enum class PointResult : unsigned char {
  Ok,             // the epoch has a position
  TooFew,         // satellites: three are needed, and one more per system for its clock
  PoorGeometry,   // PDOP above 50
  Contradictory,  // a range is wrong, and too few are left to tell which
  Diverged,       // no position within 20 steps
};

// What a satellite did in a solution.
enum class PointUse : unsigned char {
  Used,          // in the solution
  NoEphemeris,   // none is known
  Outdated,      // the nearest ephemeris is too old or too new
  Unhealthy,     // by its ephemeris
  Implausible,   // its ephemeris does not describe an orbit
  NoRange,       // it lacks a signal that the solution uses of this system
  BelowMask,     // lower than the elevation mask
  Outlier,       // its range contradicts the others
  OnlyOfSystem,  // all others of the system are unused: it would only determine the clock
};

// A satellite of an epoch. Angles are available if the epoch has a position and the satellite a state.
struct PointSatellite {
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // as in the epoch
  unsigned char svId = NA_U8;                     // likewise
  PointUse use = PointUse::NoEphemeris;           // in this solution
  double azimuth = NA_DOUBLE;                     // rad, from north through east
  double elevation = NA_DOUBLE;                   // rad
  double residual = NA_DOUBLE;                    // m, measured - computed range; if used
};

// How the ranges of a system were used.
struct PointSystem {
  unsigned char numUsed = 0;       // satellites
  char secondBand = '\0';          // digit of the RINEX band that the ranges were combined with; 0: one frequency
  double clockOffset = NA_DOUBLE;  // s, receiver clock - system time as the ranges show it
};

// The solution for an epoch.
struct PointSolution {
  PointResult result = PointResult::TooFew;  // unless Ok, only `satellites` are meaningful
  C_Vector3 position;                        // m, ECEF: the phase center of the antenna, roughly
  double pdop = NA_DOUBLE;                   // dilution of precision: in space
  double hdop = NA_DOUBLE;                   // horizontal
  double vdop = NA_DOUBLE;                   // vertical
  double tdop = NA_DOUBLE;                   // of the clock of the first system that is used
  double residualRms = NA_DOUBLE;            // m, root mean square of the residuals of the used satellites
  unsigned char numUsed = 0;                 // satellites
  PointSystem systems[7];                    // by `ALGO::eGNSSSystem`
  std::size_t numSatellites = 0;             // set in `satellites`
  PointSatellite satellites[PointEpochs::kMaxSatellites];  // in the order of the epoch
};

// Iterated least squares for the position and one receiver clock per system. Allocates memory in its constructor only
// and throws nothing later.
//
// - Time of transmission: receiver time minus pseudorange / c minus the satellite's clock offset. The Earth turns
//   during the flight: positions are rotated by the travel time, which the iteration improves.
// - Two frequencies: the ionosphere-free combination (IS-GPS-200, 20.3.3.3.3.3) with the second band that most
//   satellites of the system have, if four or half of them have it. The others of the system are then unused, as the
//   receiver delays each band differently. One frequency: no correction of the ionosphere, as the messages carry no
//   model of it.
// - Group delays as `GroupDelay` says. Troposphere: Saastamoinen's zenith delay for a standard atmosphere, with the
//   mapping function of Black and Eisner.
// - Elevation mask 10 degrees. Variance of a range: e^2 + (k a)^2 (1 + 1 / sin^2 elevation), a = 0.3 m of code noise
//   and multipath, k the noise factor of the combination, e the errors of orbits, clocks and codes: 1 m, 1.5 m for
//   BeiDou, 4 m for GLONASS; with one frequency 4 m / sin(elevation) more for the ionosphere.
// - Outliers: Baarda's data snooping (A testing procedure for use in geodetic networks, 1968). The range with the
//   greatest residual in units of that residual's standard deviation is removed if this exceeds 4; then the rest is
//   solved again.
class VELAGNSS_API PointSolver {
 public:
  PointSolver();
  ~PointSolver();
  PointSolver(const PointSolver&) = delete;
  PointSolver& operator=(const PointSolver&) = delete;

  // The answer is valid until the next call. It starts at the last position, or the center of the Earth; the result
  // does not depend on it.
  const PointSolution& Solve(const PointEpoch& epoch, const EphemerisStore& ephemerides);

 private:
  class VELAGNSS_NO_EXPORT Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace velagnss

#endif  // VELAGNSS_POSITIONING_POINT_SOLVER_H
