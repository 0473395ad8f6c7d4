#include <algorithm>
#include <cmath>
#include <utility>

#include "geo/Angle.h"
#include "geo/NotAvailable.h"
#include "positioning/Constants.h"
#include "positioning/SatelliteOrbit.h"

namespace velagnss {
namespace {

using namespace positioning;
using K = S_IFKeplerEphRec;

struct SystemRow {
  ALGO::eGNSSSystem system;
  double gravity;          // m^3/s^2, of the Earth
  double earthRotation;    // rad/s
  double validity;         // s, before and after the reference time
  double behindGps;        // s
  unsigned int badHealth;  // bits that forbid the use
  double firstFrequency;   // Hz, of the signal that the group delay belongs to
};
// clang-format off
constexpr SystemRow kSystemRows[] = {
    {ALGO::GNSS_GPS,     3.986005e14,    7.2921151467e-5,  7200, 0,             ~0U, 1575.42e6},
    // The lowest bit is that of a signal outside of L1, L2 and L5.
    {ALGO::GNSS_QZSS,    3.986005e14,    7.2921151467e-5,  7200, 0,             ~1U, 1575.42e6},
    {kNavic,             3.986005e14,    7.2921151467e-5,  7200, 0,             ~0U, 2492.028e6},
    {ALGO::GNSS_GALILEO, 3.986004418e14, 7.2921151467e-5, 14400, 0,             ~0U, 1575.42e6},
    {ALGO::GNSS_BEIDOU,  3.986004418e14, 7.2921150e-5,     7200, ALGO::kBeidouBehind, ~0U, 1561.098e6},
};
// clang-format on

const SystemRow* RowOf(unsigned int system) {
  const auto* const row = std::find_if(std::begin(kSystemRows), std::end(kSystemRows),
                                       [system](const SystemRow& candidate) { return candidate.system == system; });
  return row == std::end(kSystemRows) ? nullptr : row;
}

// Whether all elements are there and describe an orbit. A marker used as a number would give a state as well.
bool IsComplete(const K& eph) {
  constexpr double K::*kMembers[] = {&K::Af0, &K::Af1, &K::Af2,  &K::M0,       &K::DeltaN, &K::Omega0, &K::I0,
                                     &K::Cuc, &K::Cus, &K::Crc,  &K::Crs,      &K::Cic,    &K::Cis,    &K::Omega,
                                     &K::Ecc, &K::Toe, &K::IDot, &K::OmegaDot, &K::SqrtA,  &K::Toc};
  const bool isSet =
      std::all_of(std::begin(kMembers), std::end(kMembers), [&eph](auto member) { return IsNumber(eph.*member); });
  constexpr double kGreatestEccentricity = 0.5;  // of satellites in use: 0.17
  const double a = eph.SqrtA * eph.SqrtA;
  return isSet && eph.Ecc >= 0 && eph.Ecc < kGreatestEccentricity && a > kLeastRadius && a < kGreatestRadius;
}

double ValidityOf(const SystemRow& row, const K& eph) {
  constexpr double kHalfHour = 1800;
  const bool hasInterval = row.system == ALGO::GNSS_GPS && eph.FitInterval >= 4 && eph.FitInterval <= 168;
  return hasInterval ? eph.FitInterval * kHalfHour : row.validity;
}

// A quantity and its rate.
struct Moving {
  double value;
  double rate;
};

// Eccentric anomaly by Newton's method: for such small eccentricities the fourth step is below the last bit.
double EccentricAnomaly(double meanAnomaly, double eccentricity) {
  const double m = std::remainder(meanAnomaly, 2 * geo::kPi);
  double e = m;
  for (int i = 0; i < 10; ++i) {
    const double step = (e - eccentricity * std::sin(e) - m) / (1 - eccentricity * std::cos(e));
    e -= step;
    if (std::fabs(step) < 1e-15) break;
  }
  return e;
}

// The orbit in its plane.
struct Plane {
  Moving latitude;     // argument of latitude, rad
  Moving radius;       // m
  Moving inclination;  // rad
  Moving anomaly;      // eccentric, rad
};

Plane PlaneAt(const K& eph, const SystemRow& row, double tk) {
  const double a = eph.SqrtA * eph.SqrtA;
  const double n = std::sqrt(row.gravity) / (a * eph.SqrtA) + eph.DeltaN;
  const double anomaly = EccentricAnomaly(eph.M0 + n * tk, eph.Ecc);
  const double sine = std::sin(anomaly);
  const double cosine = std::cos(anomaly);
  const double share = 1 - eph.Ecc * cosine;
  const double minor = std::sqrt(1 - eph.Ecc * eph.Ecc);
  const double anomalyRate = n / share;
  const double phi = std::atan2(minor * sine, cosine - eph.Ecc) + eph.Omega;
  const double phiRate = anomalyRate * minor / share;
  const double s = std::sin(2 * phi);
  const double c = std::cos(2 * phi);
  const auto wave = [=](double ofSine, double ofCosine) {
    return Moving{ofSine * s + ofCosine * c, 2 * phiRate * (ofSine * c - ofCosine * s)};
  };
  const Moving du = wave(eph.Cus, eph.Cuc);
  const Moving dr = wave(eph.Crs, eph.Crc);
  const Moving di = wave(eph.Cis, eph.Cic);
  return {{phi + du.value, phiRate + du.rate},
          {a * share + dr.value, a * eph.Ecc * sine * anomalyRate + dr.rate},
          {eph.I0 + eph.IDot * tk + di.value, eph.IDot + di.rate},
          {anomaly, anomalyRate}};
}

// From the orbital plane into the frame in which the ascending node has the longitude `node`.
void TurnFromPlane(const Plane& plane, const Moving& node, SatelliteState& state) {
  const auto [u, uRate] = plane.latitude;
  const auto [r, rRate] = plane.radius;
  const double x = r * std::cos(u);
  const double y = r * std::sin(u);
  const double xRate = rRate * std::cos(u) - y * uRate;
  const double yRate = rRate * std::sin(u) + x * uRate;
  const double ci = std::cos(plane.inclination.value);
  const double si = std::sin(plane.inclination.value);
  const double yFlat = y * ci;  // on the equator
  const double yFlatRate = yRate * ci - y * si * plane.inclination.rate;
  const double c = std::cos(node.value);
  const double s = std::sin(node.value);
  state.position.Set(x * c - yFlat * s, x * s + yFlat * c, y * si);
  state.velocity.Set(xRate * c - yFlatRate * s - state.position.Y() * node.rate,
                     xRate * s + yFlatRate * c + state.position.X() * node.rate,
                     yRate * si + y * ci * plane.inclination.rate);
}

// Rz(`angle`) Rx(-5 degrees) of BDS-SIS-ICD, 5.2.4.12: the elements of a geostationary satellite refer to a plane that
// is tilted, as an inclination of 0 would leave the node undefined.
C_Vector3 TurnGeostationary(const C_Vector3& v, double angle) {
  constexpr double kTilt = -5 * geo::kRadiansPerDegree;
  const double y = v.Y() * std::cos(kTilt) + v.Z() * std::sin(kTilt);
  const double z = v.Z() * std::cos(kTilt) - v.Y() * std::sin(kTilt);
  const double c = std::cos(angle);
  const double s = std::sin(angle);
  return {v.X() * c + y * s, y * c - v.X() * s, z};
}

bool IsGeostationary(const K& eph) { return eph.System == ALGO::GNSS_BEIDOU && (eph.SvId <= 5 || eph.SvId >= 59); }

void SetOrbit(const K& eph, const SystemRow& row, double tk, const Plane& plane, SatelliteState& state) {
  const bool isGeostationary = IsGeostationary(eph);
  const double rate = eph.OmegaDot - (isGeostationary ? 0 : row.earthRotation);
  TurnFromPlane(plane, {eph.Omega0 + rate * tk - row.earthRotation * eph.Toe, rate}, state);
  if (!isGeostationary) return;
  const double angle = row.earthRotation * tk;
  state.position = TurnGeostationary(state.position, angle);
  state.velocity = TurnGeostationary(state.velocity, angle);
  state.velocity += {row.earthRotation * state.position.Y(), -row.earthRotation * state.position.X(), 0};
}

// Both reference times are less than half a week apart.
void SetClock(const K& eph, const SystemRow& row, double tk, const Moving& anomaly, SatelliteState& state) {
  const double tc = tk + std::remainder(eph.Toe - eph.Toc, ALGO::kSecondsPerWeek);
  const double relativity = -2 * std::sqrt(row.gravity) / (kSpeedOfLight * kSpeedOfLight) * eph.Ecc * eph.SqrtA;
  state.clockOffset = eph.Af0 + tc * (eph.Af1 + tc * eph.Af2) + relativity * std::sin(anomaly.value);
  state.clockDrift = eph.Af1 + 2 * eph.Af2 * tc + relativity * std::cos(anomaly.value) * anomaly.rate;
}

double OrZero(double value) { return IsNotAvailable(value) ? 0 : value; }

// Delays against E1 from both group delays, and that of E1 against the clock: BGD(E1, Ex) = (t1 - tx) / (1 -
// (f1/fx)^2).
double GalileoDelay(const Rtcm3KeplerEphemeris& eph, char band, double ratio) {
  constexpr unsigned short kClockOfE5b = 1 << 9;  // RINEX, data sources
  const double a = OrZero(eph.ephemeris.Tgd);
  const bool hasB = !IsNotAvailable(eph.groupDelay2);
  const double b = hasB ? eph.groupDelay2 : a;
  const bool isClockOfE5b = !IsNotAvailable(eph.dataSource) && (eph.dataSource & kClockOfE5b) != 0;
  return (isClockOfE5b ? b : a) + (ratio - 1) * (band == '5' ? a : b);
}

double BeidouDelay(const Rtcm3KeplerEphemeris& eph, char band) {
  if (band == '2') return OrZero(eph.ephemeris.Tgd);
  return band == '7' ? OrZero(eph.groupDelay2) : 0;
}

}  // namespace

C_GnssTime ReferenceTime(const S_IFKeplerEphRec& ephemeris) {
  const SystemRow* const row = RowOf(ephemeris.System);
  return C_GnssTime(ephemeris.ToeWeek, ephemeris.Toe, ALGO::GNSS_GPS) + (row == nullptr ? 0 : row->behindGps);
}

// Galileo sends "no accuracy prediction" for healthy satellites, too.
bool IsHealthy(const S_IFKeplerEphRec& ephemeris) {
  constexpr double kNoPrediction = 1e9;  // m
  const SystemRow* const row = RowOf(ephemeris.System);
  if (row == nullptr || (ephemeris.SvHealth & row->badHealth) != 0) return false;
  return row->system == ALGO::GNSS_GALILEO || ephemeris.Ura < kNoPrediction;
}

OrbitResult StateAt(const S_IFKeplerEphRec& ephemeris, const C_GnssTime& time, SatelliteState& state) {
  const SystemRow* const row = RowOf(ephemeris.System);
  if (row == nullptr || !IsComplete(ephemeris)) return OrbitResult::Implausible;
  const double tk = time - ReferenceTime(ephemeris);
  if (!(std::fabs(tk) <= ValidityOf(*row, ephemeris))) return OrbitResult::Outdated;
  const Plane plane = PlaneAt(ephemeris, *row, tk);
  SetOrbit(ephemeris, *row, tk, plane, state);
  SetClock(ephemeris, *row, tk, plane.anomaly, state);
  return IsPlausible(state) ? OrbitResult::Ok : OrbitResult::Implausible;
}

double GroupDelay(const Rtcm3KeplerEphemeris& ephemeris, char band, double frequency) {
  const SystemRow* const row = RowOf(ephemeris.ephemeris.System);
  if (row == nullptr) return 0;
  if (row->system == ALGO::GNSS_BEIDOU) return BeidouDelay(ephemeris, band);
  const double ratio = row->firstFrequency / frequency * (row->firstFrequency / frequency);
  if (row->system == ALGO::GNSS_GALILEO) return GalileoDelay(ephemeris, band, ratio);
  return ratio * OrZero(ephemeris.ephemeris.Tgd);
}

}  // namespace velagnss
