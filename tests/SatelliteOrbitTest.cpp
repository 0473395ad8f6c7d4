#include "positioning/SatelliteOrbit.h"

#include <cmath>
#include <functional>

#include "Cases.h"
#include "Constellation.h"
#include "geo/NotAvailable.h"

namespace {

using namespace velagnss;
using namespace constellation;

C_GnssTime After(double seconds) { return C_GnssTime(kWeek, kToe + seconds, ALGO::GNSS_GPS); }

template <class... Leap>
SatelliteState State(const auto& ephemeris, double seconds, Leap... leap) {
  SatelliteState state;
  EXPECT_EQ(StateAt(ephemeris, After(seconds), leap..., state), OrbitResult::Ok);
  return state;
}

S_IFKeplerEphRec Undisturbed(ALGO::eGNSSSystem system) {
  S_IFKeplerEphRec e = Kepler(system, 7).ephemeris;
  e.DeltaN = e.OmegaDot = e.IDot = e.Cuc = e.Cus = e.Crc = e.Crs = e.Cic = e.Cis = 0;
  e.Af0 = e.Af1 = 0;
  return e;
}

struct SystemCase {
  const char* name;
  ALGO::eGNSSSystem system;
  double gravity;
  double rotation;
};
const SystemCase kSystems[] = {
    {"Gps", ALGO::GNSS_GPS, 3.986005e14, 7.2921151467e-5},
    {"Qzss", ALGO::GNSS_QZSS, 3.986005e14, 7.2921151467e-5},
    {"Navic", kNavic, 3.986005e14, 7.2921151467e-5},
    {"Galileo", ALGO::GNSS_GALILEO, 3.986004418e14, 7.2921151467e-5},
    {"Beidou", ALGO::GNSS_BEIDOU, 3.986004418e14, 7.2921150e-5},
};

// The ellipse by its principal vectors, a (cos E - e) P + b sin E Q, with Kepler's equation solved by bisection, and
// the rotation of the Earth since the start of the week.
TEST_ROWS(KeplerEllipse, ByItsPrincipalVectors, kSystems, row) {
  const S_IFKeplerEphRec e = Undisturbed(row.system);
  const double seconds = 5000;
  const double a = e.SqrtA * e.SqrtA;
  const double mean = std::fmod(e.M0 + std::sqrt(row.gravity / (a * a * a)) * seconds, 2 * kPi);
  double low = mean - 1, high = mean + 1;
  for (int i = 0; i < 60; ++i) {
    const double middle = (low + high) / 2;
    (middle - e.Ecc * std::sin(middle) < mean ? low : high) = middle;
  }
  const double p = a * (std::cos(low) - e.Ecc);
  const double q = a * std::sqrt(1 - e.Ecc * e.Ecc) * std::sin(low);
  const double node = e.Omega0 - row.rotation * (e.Toe + seconds);
  const double cn = std::cos(node), sn = std::sin(node), cw = std::cos(e.Omega), sw = std::sin(e.Omega);
  const double ci = std::cos(e.I0), si = std::sin(e.I0);
  const SatelliteState state = State(e, seconds);
  EXPECT_NEAR(state.position.X(), p * (cn * cw - sn * sw * ci) - q * (cn * sw + sn * cw * ci), 1e-5);
  EXPECT_NEAR(state.position.Y(), p * (sn * cw + cn * sw * ci) - q * (sn * sw - cn * cw * ci), 1e-5);
  EXPECT_NEAR(state.position.Z(), p * sw * si + q * cw * si, 1e-5);
  // The clock without polynomial is relativity: -2 r v / c^2 (IS-GPS-200, 20.3.3.3.3.1).
  EXPECT_NEAR(state.clockOffset, -2 * state.position.Dot(state.velocity) / (kC * kC), 1e-17);
}

// Rates are those of the positions, also with all corrections and for a geostationary satellite.
TEST_ROWS(KeplerRates, VelocityIsTheRateOfThePosition, kSystems, row) {
  for (const unsigned char svId : std::initializer_list<unsigned char>{2, 7}) {
    const S_IFKeplerEphRec e = Kepler(row.system, svId).ephemeris;
    const SatelliteState before = State(e, 999.5), at = State(e, 1000), after = State(e, 1000.5);
    C_Vector3 off = after.position - before.position - at.velocity;
    EXPECT_LT(off.Norm(), 1e-4);
    EXPECT_NEAR(after.clockOffset - before.clockOffset, at.clockDrift, 1e-18);
  }
}

struct WaveCase {
  const char* name;
  double S_IFKeplerEphRec::*member;
  double amount;
  double argument;  // of latitude, where the correction is greatest: the sine ones at 45 degrees, the others at 0
  int axis;         // 0 radial, 1 along the orbit, 2 across it
  double scale;     // of the amount
};
const WaveCase kWaves[] = {
    {"Crs", &S_IFKeplerEphRec::Crs, 100, kPi / 4, 0, 1},
    {"Crc", &S_IFKeplerEphRec::Crc, 100, 0, 0, 1},
    {"Cus", &S_IFKeplerEphRec::Cus, 1e-6, kPi / 4, 1, 5153.7 * 5153.7},
    {"Cuc", &S_IFKeplerEphRec::Cuc, 1e-6, 0, 1, 5153.7 * 5153.7},
    {"Cis", &S_IFKeplerEphRec::Cis, 1e-6, kPi / 4, 2, 5153.7 * 5153.7 * std::sin(kPi / 4)},
};
TEST_ROWS(KeplerWaves, ActInTheirDirection, kWaves, row) {
  S_IFKeplerEphRec e = Undisturbed(ALGO::GNSS_GPS);
  e.Ecc = 0;
  e.Omega = 0;
  e.M0 = row.argument;
  e.Toe = kToe - 1e-9;  // at the reference time
  const SatelliteState plain = State(e, 0);
  e.*row.member = row.amount;
  const C_Vector3 moved = State(e, 0).position - plain.position;
  const C_Vector3 radial = plain.position.UnitVec();
  C_Vector3 inertial = plain.velocity;
  inertial += C_Vector3(-kOmega * plain.position.Y(), kOmega * plain.position.X(), 0);
  const C_Vector3 across = radial.Cross(inertial).UnitVec();
  const C_Vector3 axes[] = {radial, across.Cross(radial), across};
  for (int axis = 0; axis < 3; ++axis)
    EXPECT_NEAR(moved.Dot(axes[axis]), axis == row.axis ? row.amount * row.scale : 0, 1e-3) << axis;
}

// Elements that put it over the equator, turning with the Earth: it does not move.
TEST(KeplerOrbit, GeostationarySatelliteOfBeidouStaysOverItsPlace) {
  S_IFKeplerEphRec e = Undisturbed(ALGO::GNSS_BEIDOU);
  e.SvId = 59;
  e.Ecc = 0;
  e.SqrtA = std::sqrt(std::cbrt(3.986004418e14 / (7.2921150e-5 * 7.2921150e-5)));
  e.I0 = 5 * kPi / 180;
  e.Omega0 = kPi + 7.2921150e-5 * e.Toe;
  const SatelliteState first = State(e, -3000), last = State(e, 3000);
  EXPECT_NEAR(first.position.Z(), 0, 1e-5);
  EXPECT_LT((last.position - first.position).Norm(), 1e-4);
  EXPECT_LT(last.velocity.Norm(), 1e-6);
}

// Without Sun and Moon the energy in the rotating frame is constant: v^2 / 2 - U - (omega rho)^2 / 2, U the potential
// of a flattened Earth.
TEST(GlonassOrbit, KeepsItsEnergyAndComesBack) {
  S_IFPvaEphRec e = Glonass(3);
  e.AccX = e.AccY = e.AccZ = 0;
  const auto energy = [](const SatelliteState& s) {
    const double r = s.position.Norm();
    const double sine = s.position.Z() / r;
    const double flat = 1082.6257e-6 * (6378136 / r) * (6378136 / r) * (3 * sine * sine - 1) / 2;
    const double turning = 7.292115e-5 * s.position.Norm2();
    return s.velocity.Dot(s.velocity) / 2 - 398600.44e9 / r * (1 - flat) - turning * turning / 2;
  };
  const SatelliteState start = State(e, 0, kLeap), end = State(e, 1500, kLeap);
  EXPECT_NEAR(energy(end) / energy(start), 1, 1e-11);
  EXPECT_GT((end.position - start.position).Norm(), 3e6);
  e.RefTime += 1500;
  e.PosX = end.position.X(), e.PosY = end.position.Y(), e.PosZ = end.position.Z();
  e.VelX = end.velocity.X(), e.VelY = end.velocity.Y(), e.VelZ = end.velocity.Z();
  EXPECT_LT((State(e, 0, kLeap).position - start.position).Norm(), 1e-3);
}

TEST(GlonassOrbit, SunAndMoonAndClock) {
  S_IFPvaEphRec e = Glonass(3);
  const SatelliteState with = State(e, 300, kLeap);
  EXPECT_DOUBLE_EQ(with.clockOffset, 3e-5 + 1e-12 * 300);
  e.AccX = e.AccY = e.AccZ = 0;
  const C_Vector3 moved = with.position - State(e, 300, kLeap).position;
  EXPECT_NEAR(moved.X(), 1e-6 * 300 * 300 / 2, 2e-3);  // the changed path feels other forces
  EXPECT_NEAR(moved.Y(), -2e-6 * 300 * 300 / 2, 2e-3);
}

TEST(SbasOrbit, IsThePolynomial) {
  S_IFPvaEphRec e = Glonass(3);
  e.System = ALGO::GNSS_SBAS;
  e.RefTime = kToe;
  e.PosX = 42164e3, e.PosY = e.PosZ = 0;
  e.VelX = 1, e.AccX = 0.02, e.TauN = 2e-8, e.GammaN = 1e-11;
  const SatelliteState state = State(e, 100, kLeap);
  EXPECT_DOUBLE_EQ(state.position.X(), 42164e3 + 100 + 0.01 * 1e4);
  EXPECT_DOUBLE_EQ(state.velocity.X(), 3);
  EXPECT_DOUBLE_EQ(state.clockOffset, 2.1e-8);
}

struct RefusedCase {
  const char* name;
  std::function<void(S_IFKeplerEphRec&)> change;
  double seconds;
  OrbitResult result;
};
const RefusedCase kRefused[] = {
    {"WithinTwoHours", [](auto&) {}, 7199, OrbitResult::Ok},
    {"AfterTwoHours", [](auto&) {}, 7201, OrbitResult::Outdated},
    {"BeforeTwoHours", [](auto&) {}, -7201, OrbitResult::Outdated},
    {"LongFitInterval", [](auto& e) { e.FitInterval = 8; }, 14000, OrbitResult::Ok},
    {"OtherWeek", [](auto& e) { ++e.ToeWeek; }, 0, OrbitResult::Outdated},
    {"Galileo", [](auto& e) { e.System = ALGO::GNSS_GALILEO; }, 14000, OrbitResult::Ok},
    {"PatternOfBits", [](auto& e) { e.SqrtA = 2730.6; }, 0, OrbitResult::Implausible},
    {"IntervalOfNoSatellite", [](auto& e) { e.FitInterval = 200; }, 7201, OrbitResult::Outdated},
    {"ShortInterval", [](auto& e) { e.FitInterval = 2; }, 7199, OrbitResult::Ok},
    {"TooHigh", [](auto& e) { e.SqrtA = 7100; }, 0, OrbitResult::Implausible},
    {"NegativeEccentricity", [](auto& e) { e.Ecc = -0.01; }, 0, OrbitResult::Implausible},
    {"Parabola", [](auto& e) { e.Ecc = 1; }, 0, OrbitResult::Implausible},
    {"NoClock", [](auto& e) { e.Af0 = NA_DOUBLE; }, 0, OrbitResult::Implausible},
    {"NotFinite", [](auto& e) { e.M0 = std::nan(""); }, 0, OrbitResult::Implausible},
    {"FarAwayByItsCorrections", [](auto& e) { e.Crs = -3e7; }, 0, OrbitResult::Implausible},
    {"ClockOfMinutes", [](auto& e) { e.Af0 = 100; }, 0, OrbitResult::Implausible},
    {"Glonass", [](auto& e) { e.System = ALGO::GNSS_GLONASS; }, 0, OrbitResult::Implausible},
};
TEST_ROWS(KeplerLimits, IsRefused, kRefused, row) {
  S_IFKeplerEphRec e = Kepler(ALGO::GNSS_GPS, 7).ephemeris;
  row.change(e);
  SatelliteState state;
  EXPECT_EQ(StateAt(e, After(row.seconds), state), row.result);
}

TEST(GlonassOrbit, IsRefused) {
  SatelliteState state;
  S_IFPvaEphRec e = Glonass(3);
  EXPECT_EQ(StateAt(e, After(1801), kLeap, state), OrbitResult::Outdated);
  for (const double x : {NA_DOUBLE, std::nan(""), 0.0, 1e8}) {
    e.PosX = x;
    if (x == 0) e.PosY = e.PosZ = 0;  // in the center of the Earth
    EXPECT_EQ(StateAt(e, After(0), kLeap, state), OrbitResult::Implausible) << x;
  }
  e = Glonass(3);
  e.VelX = 3e4;  // in half an hour it is beyond all satellites
  EXPECT_EQ(StateAt(e, After(1800), kLeap, state), OrbitResult::Implausible);
  e = Glonass(3);
  e.System = ALGO::GNSS_GPS;
  EXPECT_EQ(StateAt(e, After(0), kLeap, state), OrbitResult::Implausible);
}

TEST(SatelliteHealth, ByTheWordOfEachSystem) {
  const auto isHealthy = [](ALGO::eGNSSSystem system, unsigned int health, double ura) {
    S_IFKeplerEphRec e = Kepler(system, 7).ephemeris;
    e.SvHealth = health;
    e.Ura = ura;
    return IsHealthy(e);
  };
  EXPECT_TRUE(isHealthy(ALGO::GNSS_GPS, 0, 2));
  EXPECT_FALSE(isHealthy(ALGO::GNSS_GPS, 1, 2));
  EXPECT_FALSE(isHealthy(ALGO::GNSS_GPS, 0, 1e99));
  EXPECT_TRUE(isHealthy(ALGO::GNSS_GALILEO, 0, 1e99));
  EXPECT_TRUE(isHealthy(ALGO::GNSS_QZSS, 1, 2));
  EXPECT_FALSE(isHealthy(ALGO::GNSS_QZSS, 32, 2));
  S_IFPvaEphRec glonass = Glonass(3);
  EXPECT_TRUE(IsHealthy(glonass));
  glonass.Ln = 1;
  EXPECT_FALSE(IsHealthy(glonass));
  glonass.Ln = 0, glonass.Health = 1;
  EXPECT_FALSE(IsHealthy(glonass));
  glonass.System = ALGO::GNSS_SBAS;
  EXPECT_TRUE(IsHealthy(glonass));
  EXPECT_FALSE(isHealthy(ALGO::GNSS_GLONASS, 0, 2)) << "has no Keplerian elements";
}

// In ns, for group delays of 7 and -14 ns. The ionosphere-free combination of the two signals that a clock belongs to
// has none.
struct DelayCase {
  const char* name;
  ALGO::eGNSSSystem system;
  unsigned short source;
  char band;
  double frequency;
  double nanoseconds;
};
const DelayCase kDelays[] = {
    {"L1", ALGO::GNSS_GPS, 0, '1', 1575.42e6, 7},
    {"L2", ALGO::GNSS_GPS, 0, '2', 1227.60e6, 7 * 1.6469444},
    {"NavicL5", kNavic, 0, '5', 1176.45e6, 7 * 4.4870},
    {"B1", ALGO::GNSS_BEIDOU, 0, '2', 1561.098e6, 7},
    {"B2", ALGO::GNSS_BEIDOU, 0, '7', 1207.14e6, -14},
    {"B3", ALGO::GNSS_BEIDOU, 0, '6', 1268.52e6, 0},
    {"OfNoSystem", ALGO::GNSS_GLONASS, 0, '1', 1602e6, 0},
    {"ClockNotKnown", ALGO::GNSS_GALILEO, NA_U16, '1', 1575.42e6, 7},
    {"FnavE1", ALGO::GNSS_GALILEO, 258, '1', 1575.42e6, 7},
    {"FnavE5a", ALGO::GNSS_GALILEO, 258, '5', 1176.45e6, 7 * 1.7932703},
    {"InavE1", ALGO::GNSS_GALILEO, 517, '1', 1575.42e6, -14},
    {"InavE5b", ALGO::GNSS_GALILEO, 517, '7', 1207.14e6, -14 * 1.7032474},
    {"InavE5a", ALGO::GNSS_GALILEO, 517, '5', 1176.45e6, -14 + 7 * 0.7932703},
};
TEST_ROWS(GroupDelayOf, SignalAndClock, kDelays, row) {
  Rtcm3KeplerEphemeris e = Kepler(row.system, 7);
  e.dataSource = row.source;
  EXPECT_NEAR(GroupDelay(e, row.band, row.frequency) * 1e9, row.nanoseconds, 1e-3);
}

}  // namespace
