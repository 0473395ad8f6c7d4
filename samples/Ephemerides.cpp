#include "samples/Ephemerides.h"

#include <cmath>

#include "samples/Orbits.h"

namespace {

// By `eSystem`; the rows of GPS and QZSS are those of IS-GPS-200, the others of the systems' interface documents.
constexpr S_SystemScales kScales[] = {
    {0, 0, 1024, 16, 0x1p-31, 3.986005e14, 7.2921151467e-5},
    {},  // GLONASS has no Keplerian elements
    {0, 1024, 4096, 60, 0x1p-31, 3.986004418e14, 7.2921151467e-5},
    {14, 1356, 8192, 8, 1e-10, 3.986004418e14, 7.292115e-5},
    {0, 0, 1024, 16, 0x1p-31, 3.986005e14, 7.2921151467e-5},
};

// Least and greatest value of each number that only has to be plausible, drawn once for each satellite. Node and
// anomaly are within half a degree of their place.
struct S_Range {
  std::int64_t S_KeplerNumbers::*value;
  std::int64_t least;
  std::int64_t most;
};

// clang-format off
constexpr S_Range kRanges[] = {
    {&S_KeplerNumbers::ura,                  0,          2},
    {&S_KeplerNumbers::iodc,                 1,        239},
    {&S_KeplerNumbers::tgd,                -24,         11},  // 2^-31 s: within 12 ns
    {&S_KeplerNumbers::af1,               -120,        120},  // 2^-43 s/s
    {&S_KeplerNumbers::af0,           -1300000,    1300000},  // 2^-31 s: within 0.6 ms
    {&S_KeplerNumbers::crs,              -3200,       3200},  // 2^-5 m
    {&S_KeplerNumbers::deltaN,           11200,      14500},  // 2^-43 semicircles/s
    {&S_KeplerNumbers::m0,            -5900000,    5900000},  // 2^-31 semicircles
    {&S_KeplerNumbers::cuc,              -2600,       2600},  // 2^-29 rad
    {&S_KeplerNumbers::eccentricity,   8000000,  170000000},  // 2^-33: 0.001 to 0.02
    {&S_KeplerNumbers::cus,               1500,       6200},
    {&S_KeplerNumbers::sqrtA,       2701860000, 2702080000},  // 2^-19 sqrt(m): 5153.4 to 5153.9
    {&S_KeplerNumbers::cic,               -120,        120},
    {&S_KeplerNumbers::omega0,        -5900000,    5900000},
    {&S_KeplerNumbers::cis,               -120,        120},
    {&S_KeplerNumbers::i0,           645000000,  668000000},  // 54 to 56 degrees
    {&S_KeplerNumbers::crc,               5500,      10500},
    {&S_KeplerNumbers::omega,      -1000000000, 1000000000},
    {&S_KeplerNumbers::omegaDot,        -23800,     -21400},  // 2^-43 semicircles/s
    {&S_KeplerNumbers::iDot,             -1500,       1500},
};
// clang-format on

// The height that gives QZSS one revolution a day, Galileo 17 in 10 days, and BeiDou 13 in 7 days.
void MakeHigher(S_KeplerNumbers& numbers, eSystem system) {
  if (system == eGalileo) numbers.sqrtA += 150470000;
  if (system == eBeidou) numbers.sqrtA += 67630000;
  if (system == eQzss) numbers.sqrtA = 3404200000 + numbers.satellite;
}

// QZSS: inclined, and slightly eccentric.
void MakeGeosynchronous(S_KeplerNumbers& numbers) {
  numbers.eccentricity = 644000000 + 1000 * numbers.satellite;
  numbers.i0 = 477200000 + 100 * numbers.satellite;
  numbers.fitFlag = 1;
}

void SetWeek(S_KeplerNumbers& numbers, const S_SystemScales& scales, const S_Moment& now) {
  constexpr int kSubframesPerWeek = 604800 / 6;
  const std::int64_t second = std::int64_t{now.gpsWeek - scales.firstWeek} * 604800 + now.gpsSecond - scales.behindGps;
  const std::int64_t nextSubframe = second / 6 + 1;  // the count of a subframe is the time at which the next one begins
  numbers.sixSecondCount = nextSubframe % kSubframesPerWeek;
  numbers.week = nextSubframe / kSubframesPerWeek % scales.weekPeriod;
}

// Position and velocity on a circle of 25508.2 km with an inclination of 64.8 degrees.
void PutOnCircle(S_GlonassNumbers& numbers, const S_Satellite& satellite) {
  constexpr double kRadius = 25508200;  // m
  constexpr double kSpeed = 3953;       // m/s
  const S_Turn inclination = TurnOf(64.8 * kPi / 180);
  const S_Turn node = TurnOf(satellite.node * kPi / 180);
  const S_Turn along = TurnOf(satellite.anomaly * kPi / 180);
  const S_Vector position = FromPlane(kRadius * along.cosine, kRadius * along.sine, inclination, node);
  const S_Vector velocity = FromPlane(-kSpeed * along.sine, kSpeed * along.cosine, inclination, node) +
                            kTurnRate * S_Vector{position.y, -position.x, 0};
  const double positions[] = {position.x, position.y, position.z};
  const double velocities[] = {velocity.x, velocity.y, velocity.z};
  for (int axis = 0; axis < 3; ++axis) {
    numbers.position[axis] = std::llround(positions[axis] / kGlonassPosition);
    numbers.velocity[axis] = std::llround(velocities[axis] / kGlonassVelocity);
  }
}

struct S_KeplerName {
  const char* name;
  std::int64_t S_KeplerNumbers::*value;
};

constexpr S_KeplerName kKeplerNames[] = {
    {"satellite", &S_KeplerNumbers::satellite},
    {"sixSecondCount", &S_KeplerNumbers::sixSecondCount},
    {"week", &S_KeplerNumbers::week},
    {"codeOnL2", &S_KeplerNumbers::codeOnL2},
    {"ura", &S_KeplerNumbers::ura},
    {"health", &S_KeplerNumbers::health},
    {"iodc", &S_KeplerNumbers::iodc},
    {"l2Flag", &S_KeplerNumbers::l2Flag},
    {"tgd", &S_KeplerNumbers::tgd},
    {"toc", &S_KeplerNumbers::toc},
    {"af2", &S_KeplerNumbers::af2},
    {"af1", &S_KeplerNumbers::af1},
    {"af0", &S_KeplerNumbers::af0},
    {"iode", &S_KeplerNumbers::iode},
    {"crs", &S_KeplerNumbers::crs},
    {"deltaN", &S_KeplerNumbers::deltaN},
    {"m0", &S_KeplerNumbers::m0},
    {"cuc", &S_KeplerNumbers::cuc},
    {"eccentricity", &S_KeplerNumbers::eccentricity},
    {"cus", &S_KeplerNumbers::cus},
    {"sqrtA", &S_KeplerNumbers::sqrtA},
    {"toe", &S_KeplerNumbers::toe},
    {"fitFlag", &S_KeplerNumbers::fitFlag},
    {"cic", &S_KeplerNumbers::cic},
    {"omega0", &S_KeplerNumbers::omega0},
    {"cis", &S_KeplerNumbers::cis},
    {"i0", &S_KeplerNumbers::i0},
    {"crc", &S_KeplerNumbers::crc},
    {"omega", &S_KeplerNumbers::omega},
    {"omegaDot", &S_KeplerNumbers::omegaDot},
    {"iDot", &S_KeplerNumbers::iDot},
};

struct S_GlonassName {
  const char* name;
  std::int64_t S_GlonassNumbers::*value;
};

constexpr S_GlonassName kGlonassNames[] = {
    {"slot", &S_GlonassNumbers::slot},
    {"channel", &S_GlonassNumbers::channel},
    {"p1", &S_GlonassNumbers::p1},
    {"tk", &S_GlonassNumbers::tk},
    {"bn", &S_GlonassNumbers::bn},
    {"p2", &S_GlonassNumbers::p2},
    {"tb", &S_GlonassNumbers::tb},
    {"p3", &S_GlonassNumbers::p3},
    {"gammaN", &S_GlonassNumbers::gammaN},
    {"p", &S_GlonassNumbers::p},
    {"ln", &S_GlonassNumbers::ln},
    {"tauN", &S_GlonassNumbers::tauN},
    {"deltaTauN", &S_GlonassNumbers::deltaTauN},
    {"en", &S_GlonassNumbers::en},
    {"p4", &S_GlonassNumbers::p4},
    {"ft", &S_GlonassNumbers::ft},
    {"nt", &S_GlonassNumbers::nt},
    {"m", &S_GlonassNumbers::m},
    {"tauC", &S_GlonassNumbers::tauC},
    {"n4", &S_GlonassNumbers::n4},
    {"tauGps", &S_GlonassNumbers::tauGps},
};

template <class Numbers, class Names>
std::string NamedFacts(const Numbers& numbers, const Names& names) {
  std::string facts;
  for (const auto& [name, value] : names)
    facts += (facts.empty() ? "\"" : ", \"") + std::string(name) + "\": " + std::to_string(numbers.*value);
  return facts;
}

std::string VectorFact(const char* name, const std::int64_t (&vector)[3]) {
  return ", \"" + std::string(name) + "\": [" + std::to_string(vector[0]) + ", " + std::to_string(vector[1]) + ", " +
         std::to_string(vector[2]) + ']';
}

}  // namespace

const S_SystemScales& ScalesOf(eSystem system) { return kScales[system]; }

S_KeplerNumbers KeplerNumbersOf(const S_Satellite& satellite, const S_Moment& now) {
  constexpr std::int64_t kPerTurn = 1LL << 32;
  S_KeplerNumbers numbers{};
  C_Random random(static_cast<std::uint64_t>(satellite.number) +
                  1000 * (1 + satellite.system));  // the same at each call
  random.Next();
  numbers.satellite = satellite.number;
  for (const S_Range& range : kRanges) numbers.*range.value = random.Between(range.least, range.most);
  numbers.m0 += satellite.anomaly * kPerTurn / 360;
  numbers.omega0 += satellite.node * kPerTurn / 360;
  numbers.iode = numbers.iodc & 0xFF;
  numbers.codeOnL2 = 1;
  MakeHigher(numbers, satellite.system);
  if (satellite.system == eQzss) MakeGeosynchronous(numbers);
  if (satellite.use == eUnhealthy) numbers.health = 0x3F;

  SetWeek(numbers, ScalesOf(satellite.system), now);
  // The week's start, or an hour before its end.
  numbers.toe = satellite.number % 2 != 0 ? 0 : 601200 / ScalesOf(satellite.system).timeStep;
  numbers.toc = numbers.toe;
  return numbers;
}

S_GlonassNumbers GlonassNumbersOf(const S_Satellite& satellite, const S_Moment& now) {
  S_GlonassNumbers numbers{};
  numbers.slot = satellite.number;
  numbers.channel = satellite.channel;
  PutOnCircle(numbers, satellite);
  for (int axis = 0; axis < 3; ++axis) numbers.acceleration[axis] = (satellite.number + axis) % 5 - 2;

  // Moscow time is three hours ahead of UTC; the whole session falls on 19 May there, the 140th day of a leap year.
  const int moscow = (now.secondOfDay + kMoscowAhead) % 86400;
  numbers.tk = moscow / 3600 << 7 | moscow / 60 % 60 << 1 | (moscow % 60 >= 30 ? 1 : 0);
  numbers.tb = (moscow + 900) / 1800 * 2;  // quarters of an hour: the middle of a half hour of validity
  numbers.nt = 31 + 29 + 31 + 30 + 19;
  numbers.n4 = (2024 - 1996) / 4 + 1;
  numbers.p1 = 1;
  numbers.p2 = numbers.tb / 2 % 2;
  numbers.p3 = 1;
  numbers.p4 = 1;
  numbers.bn = satellite.use == eUnhealthy ? 4 : 0;
  numbers.p = 3;
  numbers.gammaN = 2 * satellite.channel - 3;
  numbers.tauN = -71234 * satellite.channel + 5000 * satellite.number;
  numbers.deltaTauN = satellite.channel;
  numbers.en = satellite.number % 3;
  numbers.ft = 2;
  numbers.m = 1;
  numbers.na = numbers.nt - 1;
  numbers.tauC = -21;
  numbers.tauGps = 11;
  return numbers;
}

std::string FactsOf(const S_KeplerNumbers& numbers) { return NamedFacts(numbers, kKeplerNames); }

std::string FactsOf(const S_GlonassNumbers& numbers) {
  return NamedFacts(numbers, kGlonassNames) + VectorFact("position", numbers.position) +
         VectorFact("velocity", numbers.velocity) + VectorFact("acceleration", numbers.acceleration);
}
