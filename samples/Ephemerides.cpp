#include "samples/Ephemerides.h"

#include <algorithm>

namespace {

// Least and greatest value of each number that only has to be plausible, drawn once for each satellite.
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
    {&S_KeplerNumbers::m0,         -1000000000, 1000000000},  // 2^-31 semicircles
    {&S_KeplerNumbers::cuc,              -2600,       2600},  // 2^-29 rad
    {&S_KeplerNumbers::eccentricity,   8000000,  170000000},  // 2^-33: 0.001 to 0.02
    {&S_KeplerNumbers::cus,               1500,       6200},
    {&S_KeplerNumbers::sqrtA,       2701860000, 2702080000},  // 2^-19 sqrt(m): 5153.4 to 5153.9
    {&S_KeplerNumbers::cic,               -120,        120},
    {&S_KeplerNumbers::omega0,     -1000000000, 1000000000},
    {&S_KeplerNumbers::cis,               -120,        120},
    {&S_KeplerNumbers::i0,           645000000,  668000000},  // 54 to 56 degrees
    {&S_KeplerNumbers::crc,               5500,      10500},
    {&S_KeplerNumbers::omega,      -1000000000, 1000000000},
    {&S_KeplerNumbers::omegaDot,        -23800,     -21400},  // 2^-43 semicircles/s
    {&S_KeplerNumbers::iDot,             -1500,       1500},
};
// clang-format on

constexpr int kFirstQzss = 193;

// QZSS: inclined, slightly eccentric, and at the height of one revolution a day.
void MakeGeosynchronous(S_KeplerNumbers& numbers) {
  numbers.sqrtA = 3404200000 + numbers.satellite;
  numbers.eccentricity = 644000000 + 1000 * numbers.satellite;
  numbers.i0 = 477200000 + 100 * numbers.satellite;
  numbers.fitFlag = 1;
}

// States of six satellites, of orbits with 64.8 degrees of inclination and a radius of 25508.2 km.
struct S_GlonassState {
  int slot;
  int channel;
  std::int64_t position[3];
  std::int64_t velocity[3];
};

constexpr S_GlonassState kGlonassStates[kGlonassSatellites] = {
    {3, 5, {32715290, 27122533, 30383853}, {-1953464, -862281, 2873085}},
    {4, 6, {-3300121, 22379338, 47089011}, {-3097306, -1144539, 326882}},
    {13, -2, {-27122533, -4526630, 44418221}, {2426788, -1953464, 1282762}},
    {14, -7, {3954677, -29634136, 42840157}, {2250812, -1991032, -1585049}},
    {19, 3, {-5129917, -51336251, 8208155}, {-80027, 598561, 3693567}},
    {24, 2, {-23147591, -5129917, -46550763}, {-598561, -3209041, 651275}},
};

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

S_KeplerNumbers KeplerNumbersOf(int satellite, const S_Moment& now) {
  S_KeplerNumbers numbers{};
  C_Random random(static_cast<std::uint64_t>(satellite) + 1000);  // the same at each call
  random.Next();
  numbers.satellite = satellite;
  for (const S_Range& range : kRanges) numbers.*range.value = random.Between(range.least, range.most);
  numbers.iode = numbers.iodc & 0xFF;
  numbers.codeOnL2 = 1;
  if (satellite >= kFirstQzss) MakeGeosynchronous(numbers);
  if (satellite == kGpsSatellites[2]) numbers.health = 0x3F;

  constexpr int kSubframesPerWeek = 604800 / 6;
  const int nextSubframe = now.gpsSecond / 6 + 1;  // the count of a subframe is the time at which the next one begins
  numbers.sixSecondCount = nextSubframe % kSubframesPerWeek;
  numbers.week = (now.gpsWeek + nextSubframe / kSubframesPerWeek) % 1024;
  numbers.toe = satellite % 2 != 0 ? 0 : 597600 / 16;  // in 16 s: the week's start, or two hours before its end
  numbers.toc = numbers.toe;
  return numbers;
}

S_GlonassNumbers GlonassNumbersOf(unsigned int index, const S_Moment& now) {
  const S_GlonassState& state = kGlonassStates[index % kGlonassSatellites];
  S_GlonassNumbers numbers{};
  numbers.slot = state.slot;
  numbers.channel = state.channel;
  std::copy_n(state.position, 3, numbers.position);
  std::copy_n(state.velocity, 3, numbers.velocity);
  for (int axis = 0; axis < 3; ++axis) numbers.acceleration[axis] = (state.slot + axis) % 5 - 2;

  // Moscow time is three hours ahead of UTC; the whole session falls on 19 May there, the 140th day of a leap year.
  const int moscow = (now.secondOfDay + 3 * 3600) % 86400;
  numbers.tk = moscow / 3600 << 7 | moscow / 60 % 60 << 1 | (moscow % 60 >= 30 ? 1 : 0);
  numbers.tb = (moscow + 900) / 1800 * 2;  // quarters of an hour: the middle of a half hour of validity
  numbers.nt = 31 + 29 + 31 + 30 + 19;
  numbers.n4 = (2024 - 1996) / 4 + 1;
  numbers.p1 = 1;
  numbers.p2 = numbers.tb / 2 % 2;
  numbers.p3 = 1;
  numbers.p4 = 1;
  numbers.bn = state.slot == 14 ? 4 : 0;  // one satellite is ill
  numbers.p = 3;
  numbers.gammaN = 2 * state.channel - 3;
  numbers.tauN = -71234 * state.channel + 5000 * state.slot;
  numbers.deltaTauN = state.channel;
  numbers.en = state.slot % 3;
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
