#include "samples/Orbits.h"

#include <cmath>

#include "samples/Ephemerides.h"

namespace {

constexpr double kSemicircle = 0x1p-31 * kPi;      // rad, of angles
constexpr double kSemicircleRate = 0x1p-43 * kPi;  // rad/s
constexpr int kHalfWeek = 302400;

// E - e sin E = M. Each round gains at least the digits of one more power of the eccentricity.
S_Turn EccentricAnomaly(double meanAnomaly, double eccentricity) {
  S_Turn turn = TurnOf(meanAnomaly);
  for (int round = 0; round < 12; ++round) turn = TurnOf(meanAnomaly + eccentricity * turn.sine);
  return turn;
}

// IS-GPS-200, 20.3.3.4.3; Galileo and BeiDou have the same algorithm with constants of their own.
S_State KeplerState(const S_KeplerNumbers& numbers, const S_SystemScales& scales, double time) {
  const auto toe = static_cast<double>(numbers.toe * scales.timeStep);
  const double age = time - scales.behindGps - (toe > kHalfWeek ? toe - 2 * kHalfWeek : toe);
  const double root = static_cast<double>(numbers.sqrtA) * 0x1p-19;
  const double eccentricity = static_cast<double>(numbers.eccentricity) * 0x1p-33;
  const double motion =
      std::sqrt(scales.gravity) / (root * root * root) + static_cast<double>(numbers.deltaN) * kSemicircleRate;
  const S_Turn anomaly = EccentricAnomaly(static_cast<double>(numbers.m0) * kSemicircle + motion * age, eccentricity);
  const double share = 1 - eccentricity * anomaly.cosine;

  const S_Turn fromPerigee{(anomaly.cosine - eccentricity) / share,
                           std::sqrt(1 - eccentricity * eccentricity) * anomaly.sine / share};
  const S_Turn uncorrected = fromPerigee * TurnOf(static_cast<double>(numbers.omega) * kSemicircle);
  const S_Turn twice = uncorrected * uncorrected;
  const auto wave = [&twice](std::int64_t ofSine, std::int64_t ofCosine) {
    return static_cast<double>(ofSine) * twice.sine + static_cast<double>(ofCosine) * twice.cosine;
  };
  const S_Turn latitude = uncorrected * TurnOf(wave(numbers.cus, numbers.cuc) * 0x1p-29);
  const double radius = root * root * share + wave(numbers.crs, numbers.crc) * 0x1p-5;
  const S_Turn inclination =
      TurnOf(static_cast<double>(numbers.i0) * kSemicircle + static_cast<double>(numbers.iDot) * kSemicircleRate * age +
             wave(numbers.cis, numbers.cic) * 0x1p-29);
  const S_Turn node = TurnOf(static_cast<double>(numbers.omega0) * kSemicircle - scales.turnRate * toe +
                             (static_cast<double>(numbers.omegaDot) * kSemicircleRate - scales.turnRate) * age);
  const double relativity = -2 * std::sqrt(scales.gravity) / (kLight * kLight) * eccentricity * root * anomaly.sine;
  return {FromPlane(radius * latitude.cosine, radius * latitude.sine, inclination, node),
          static_cast<double>(numbers.af0) * 0x1p-31 + static_cast<double>(numbers.af1) * 0x1p-43 * age + relativity};
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

// One step of Runge and Kutta. The session is within three minutes of the reference time: the error is below 1 mm.
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
  return {static_cast<double>(numbers[0]) * unit, static_cast<double>(numbers[1]) * unit,
          static_cast<double>(numbers[2]) * unit};
}

S_State GlonassState(const S_GlonassNumbers& numbers, double time) {
  const double age = time - static_cast<double>(numbers.tb * 900 - kMoscowAhead + kLeapSeconds);
  const S_Motion start{Scaled(numbers.position, kGlonassPosition), Scaled(numbers.velocity, kGlonassVelocity)};
  const S_Vector sunAndMoon = Scaled(numbers.acceleration, kGlonassAcceleration);
  return {Integrated(start, sunAndMoon, age).position,
          static_cast<double>(numbers.gammaN) * 0x1p-40 * age - static_cast<double>(numbers.tauN) * 0x1p-30};
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
  const double flat = y * inclination.cosine;
  return {x * node.cosine - flat * node.sine, x * node.sine + flat * node.cosine, y * inclination.sine};
}

double TimeOf(const S_Moment& now) { return (now.gpsWeek - kStartWeek - 1) * 2.0 * kHalfWeek + now.gpsSecond; }

S_State StateOf(const S_Satellite& satellite, double time) {
  const S_Moment start = MomentAt(0);  // ephemerides are the same throughout the session
  if (satellite.system == eGlonass) return GlonassState(GlonassNumbersOf(satellite, start), time);
  return KeplerState(KeplerNumbersOf(satellite, start), ScalesOf(satellite.system), time);
}
