#include <algorithm>
#include <cmath>

#include "geo/NotAvailable.h"
#include "positioning/Constants.h"
#include "positioning/SatelliteOrbit.h"

namespace velagnss {
namespace {

using namespace positioning;
using P = S_IFPvaEphRec;

// PZ-90 (GLONASS ICD, table 3.2).
constexpr double kGravity = 398600.44e9;      // m^3/s^2
constexpr double kEquator = 6378136;          // m
constexpr double kFlattening = 1082.6257e-6;  // second zonal harmonic, J2
constexpr double kRotation = 7.292115e-5;     // rad/s

constexpr double kGlonassValidity = 1800;  // s
constexpr double kSbasValidity = 360;      // s
constexpr double kStep = 60;               // s; the error of a step is a fraction of a millimeter

// Whether all values are there and the satellite is at a plausible height.
bool IsComplete(const P& eph) {
  constexpr double P::*kMembers[] = {&P::TauN, &P::GammaN, &P::PosX, &P::PosY, &P::PosZ, &P::VelX,
                                     &P::VelY, &P::VelZ,   &P::AccX, &P::AccY, &P::AccZ};
  const bool isSet =
      std::all_of(std::begin(kMembers), std::end(kMembers), [&eph](auto member) { return IsNumber(eph.*member); });
  const double radius = C_Vector3(eph.PosX, eph.PosY, eph.PosZ).Norm();
  return isSet && radius > kLeastRadius && radius < kGreatestRadius;
}

// Position and velocity, or their rates.
struct Motion {
  C_Vector3 position;
  C_Vector3 velocity;
};

C_Vector3 Scaled(C_Vector3 v, double s) {
  v.Scale(s);
  return v;
}

Motion Moved(const Motion& from, const Motion& rate, double seconds) {
  return {from.position + Scaled(rate.position, seconds), from.velocity + Scaled(rate.velocity, seconds)};
}

// GLONASS ICD, appendix 3.1.2: gravity, the forces of a frame that rotates, and the acceleration by Sun and Moon, which
// is constant over the time of an ephemeris.
Motion RateOf(const Motion& m, const C_Vector3& sunAndMoon) {
  const auto& [p, v] = m;
  const double r2 = p.Dot(p);
  const double main = kGravity / (r2 * std::sqrt(r2));
  const double flat = 1.5 * kFlattening * main * kEquator * kEquator / r2;
  const double polar = 5 * p.Z() * p.Z() / r2;
  const double flatXY = flat * (1 - polar);
  const double flatZ = flat * (3 - polar);
  const double centrifugal = kRotation * kRotation;
  return {v, sunAndMoon + C_Vector3((centrifugal - main - flatXY) * p.X() + 2 * kRotation * v.Y(),
                                    (centrifugal - main - flatXY) * p.Y() - 2 * kRotation * v.X(),
                                    (-main - flatZ) * p.Z())};
}

Motion Stepped(const Motion& m, const C_Vector3& sunAndMoon, double h) {
  const Motion k1 = RateOf(m, sunAndMoon);
  const Motion k2 = RateOf(Moved(m, k1, h / 2), sunAndMoon);
  const Motion k3 = RateOf(Moved(m, k2, h / 2), sunAndMoon);
  const Motion k4 = RateOf(Moved(m, k3, h), sunAndMoon);
  return Moved(Moved(Moved(Moved(m, k1, h / 6), k2, h / 3), k3, h / 3), k4, h / 6);
}

Motion Integrated(Motion m, const C_Vector3& sunAndMoon, double seconds) {
  const int steps = static_cast<int>(std::ceil(std::fabs(seconds) / kStep));
  for (int i = 0; i < steps; ++i) m = Stepped(m, sunAndMoon, seconds / steps);
  return m;
}

Motion Extrapolated(const Motion& m, const C_Vector3& acceleration, double seconds) {
  return Moved(m, {m.velocity + Scaled(acceleration, seconds / 2), acceleration}, seconds);
}

}  // namespace

C_GnssTime ReferenceTime(const S_IFPvaEphRec& ephemeris, unsigned char leapSeconds) {
  const C_GnssTime time(ephemeris.RefWeek, ephemeris.RefTime, ALGO::GNSS_GPS);
  return ephemeris.System == ALGO::GNSS_GLONASS ? time + (leapSeconds - ALGO::kGlonassAhead) : time;
}

// The third string carries ln, which follows a failure sooner than Bn does (GLONASS ICD, 4.4).
bool IsHealthy(const S_IFPvaEphRec& ephemeris) {
  return ephemeris.System != ALGO::GNSS_GLONASS || (ephemeris.Health == 0 && ephemeris.Ln == 0);
}

OrbitResult StateAt(const S_IFPvaEphRec& ephemeris, const C_GnssTime& time, unsigned char leapSeconds,
                    SatelliteState& state) {
  const bool isGlonass = ephemeris.System == ALGO::GNSS_GLONASS;
  if ((!isGlonass && ephemeris.System != ALGO::GNSS_SBAS) || !IsComplete(ephemeris)) return OrbitResult::Implausible;
  const double t = time - ReferenceTime(ephemeris, leapSeconds);
  if (!(std::fabs(t) <= (isGlonass ? kGlonassValidity : kSbasValidity))) return OrbitResult::Outdated;
  const Motion start = {{ephemeris.PosX, ephemeris.PosY, ephemeris.PosZ},
                        {ephemeris.VelX, ephemeris.VelY, ephemeris.VelZ}};
  const C_Vector3 acceleration(ephemeris.AccX, ephemeris.AccY, ephemeris.AccZ);
  const Motion motion = isGlonass ? Integrated(start, acceleration, t) : Extrapolated(start, acceleration, t);
  state.position = motion.position;
  state.velocity = motion.velocity;
  // GLONASS sends system time - satellite time (GLONASS ICD, 4.4), SBAS the opposite (RTCA DO-229, A.4.4.11).
  state.clockOffset = (isGlonass ? -ephemeris.TauN : ephemeris.TauN) + ephemeris.GammaN * t;
  state.clockDrift = ephemeris.GammaN;
  return IsPlausible(state) ? OrbitResult::Ok : OrbitResult::Implausible;
}

}  // namespace velagnss
