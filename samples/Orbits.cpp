#include "samples/Orbits.h"

#include <cmath>

#include "samples/Ephemerides.h"

namespace {

constexpr double kSemicircle = 0x1p-31 * kPi;      // rad, of angles
constexpr double kSemicircleRate = 0x1p-43 * kPi;  // rad/s
constexpr int kHalfWeek = 302400;

double Scaled(std::int64_t number, double unit) { return static_cast<double>(number) * unit; }

// E - e sin E = M. Each round gains at least the digits of one more power of the eccentricity.
S_Turn EccentricAnomaly(double meanAnomaly, double eccentricity) {
  S_Turn turn = TurnOf(meanAnomaly);
  for (int round = 0; round < 12; ++round) turn = TurnOf(meanAnomaly + eccentricity * turn.sine);
  return turn;
}

// A satellite in its orbit at `age` seconds from the reference time `toe`. The algorithm is that of IS-GPS-200,
// 20.3.3.4.3; Galileo and BeiDou have the same one with constants of their own.
struct S_InOrbit {
  const S_KeplerNumbers& numbers;
  const S_SystemScales& scales;
  double toe;
  double age;
  double root;  // of the semi-major axis, sqrt(m)
  double eccentricity;
  S_Turn anomaly;  // eccentric
};

S_InOrbit InOrbit(const S_KeplerNumbers& numbers, const S_SystemScales& scales, double time) {
  const double toe = Scaled(numbers.toe, scales.timeStep);
  const double age = time - scales.behindGps - (toe > kHalfWeek ? toe - 2 * kHalfWeek : toe);
  const double root = Scaled(numbers.sqrtA, 0x1p-19);
  const double eccentricity = Scaled(numbers.eccentricity, 0x1p-33);
  const double motion = std::sqrt(scales.gravity) / (root * root * root) + Scaled(numbers.deltaN, kSemicircleRate);
  const S_Turn anomaly = EccentricAnomaly(Scaled(numbers.m0, kSemicircle) + motion * age, eccentricity);
  return {numbers, scales, toe, age, root, eccentricity, anomaly};
}

S_Vector KeplerPosition(const S_InOrbit& at) {
  const S_KeplerNumbers& n = at.numbers;
  const double share = 1 - at.eccentricity * at.anomaly.cosine;
  const S_Turn fromPerigee{(at.anomaly.cosine - at.eccentricity) / share,
                           std::sqrt(1 - at.eccentricity * at.eccentricity) * at.anomaly.sine / share};
  const S_Turn uncorrected = fromPerigee * TurnOf(Scaled(n.omega, kSemicircle));
  const S_Turn twice = uncorrected * uncorrected;
  const auto wave = [&twice](std::int64_t ofSine, std::int64_t ofCosine, double unit) {
    return Scaled(ofSine, unit) * twice.sine + Scaled(ofCosine, unit) * twice.cosine;
  };
  const S_Turn latitude = uncorrected * TurnOf(wave(n.cus, n.cuc, 0x1p-29));
  const double radius = at.root * at.root * share + wave(n.crs, n.crc, 0x1p-5);
  const S_Turn inclination =
      TurnOf(Scaled(n.i0, kSemicircle) + Scaled(n.iDot, kSemicircleRate) * at.age + wave(n.cis, n.cic, 0x1p-29));
  const S_Turn node = TurnOf(Scaled(n.omega0, kSemicircle) - at.scales.turnRate * at.toe +
                             (Scaled(n.omegaDot, kSemicircleRate) - at.scales.turnRate) * at.age);
  return FromPlane(radius * latitude.cosine, radius * latitude.sine, inclination, node);
}

// With the effect of relativity; both reference times are the same.
double KeplerClock(const S_InOrbit& at) {
  const double relativity = -2 * std::sqrt(at.scales.gravity) / (kLight * kLight) * at.eccentricity * at.root;
  return Scaled(at.numbers.af0, 0x1p-31) + Scaled(at.numbers.af1, 0x1p-43) * at.age + relativity * at.anomaly.sine;
}

struct S_Motion {
  S_Vector position;
  S_Vector velocity;
};

// GLONASS ICD, appendix 3.1.2, with the constants of PZ-90.
S_Motion RateOf(const S_Motion& motion, const S_Vector& sunAndMoon) {
  constexpr double kGravity = 398600.44e9;
  constexpr double kEquator = 6378136;
  constexpr double kFlattening = 1082.6257e-6;  // J2
  constexpr double kRate = 7.292115e-5;
  const auto& [position, velocity] = motion;
  const double square = Product(position, position);
  const double pull = kGravity / (square * std::sqrt(square));
  const double flat = 1.5 * kFlattening * pull * kEquator * kEquator / square;
  const double polar = 5 * position.z * position.z / square;
  const double flatPull = pull + flat * (1 - polar);
  const S_Vector turning{kRate * kRate * position.x + 2 * kRate * velocity.y,
                         kRate * kRate * position.y - 2 * kRate * velocity.x, -2 * flat * position.z};
  return {velocity, sunAndMoon + turning + -flatPull * position};
}

S_Motion Moved(const S_Motion& from, double seconds, const S_Motion& rate) {
  return {from.position + seconds * rate.position, from.velocity + seconds * rate.velocity};
}

// Runge and Kutta's method. The session is within three minutes of the reference time: the error is below 1 mm.
S_Motion Integrated(const S_Motion& start, const S_Vector& sunAndMoon, double seconds) {
  constexpr int kSteps = 4;
  const double step = seconds / kSteps;
  S_Motion motion = start;
  for (int done = 0; done < kSteps; ++done) {
    const S_Motion first = RateOf(motion, sunAndMoon);
    const S_Motion second = RateOf(Moved(motion, step / 2, first), sunAndMoon);
    const S_Motion third = RateOf(Moved(motion, step / 2, second), sunAndMoon);
    const S_Motion fourth = RateOf(Moved(motion, step, third), sunAndMoon);
    motion = Moved(Moved(motion, step / 6, first), step / 3, second);
    motion = Moved(Moved(motion, step / 3, third), step / 6, fourth);
  }
  return motion;
}

S_Vector Scaled(const std::int64_t (&numbers)[3], double unit) {
  return {Scaled(numbers[0], unit), Scaled(numbers[1], unit), Scaled(numbers[2], unit)};
}

S_State GlonassState(const S_GlonassNumbers& numbers, double time) {
  const double age = time - static_cast<double>(numbers.tb * 900 - kMoscowAhead + kLeapSeconds);
  const S_Motion start{Scaled(numbers.position, kGlonassPosition), Scaled(numbers.velocity, kGlonassVelocity)};
  const S_Vector sunAndMoon = Scaled(numbers.acceleration, kGlonassAcceleration);
  return {Integrated(start, sunAndMoon, age).position,
          Scaled(numbers.gammaN, 0x1p-40) * age - Scaled(numbers.tauN, 0x1p-30)};
}

}  // namespace

S_Turn TurnOf(double radians) {
  const double angle = std::remainder(radians, 2 * kPi);  // exact
  S_Turn turn{1, 0};
  double term = 1;
  for (int power = 1; power <= 30; ++power) {
    term *= angle / power;
    double& sum = power % 2 == 0 ? turn.cosine : turn.sine;
    sum += power % 4 < 2 ? term : -term;
  }
  return turn;
}

S_Vector FromPlane(double x, double y, const S_Turn& inclination, const S_Turn& node) {
  return Turned({x, y * inclination.cosine, y * inclination.sine}, node);
}

double TimeOf(const S_Moment& now) { return (now.gpsWeek - kStartWeek - 1) * 2.0 * kHalfWeek + now.gpsSecond; }

S_State StateOf(const S_Satellite& satellite, double time) {
  const S_Moment start = MomentAt(0);  // ephemerides are the same throughout the session
  if (satellite.system == eGlonass) return GlonassState(GlonassNumbersOf(satellite, start), time);
  const S_KeplerNumbers numbers = KeplerNumbersOf(satellite, start);
  const S_InOrbit at = InOrbit(numbers, ScalesOf(satellite.system), time);
  return {KeplerPosition(at), KeplerClock(at)};
}
