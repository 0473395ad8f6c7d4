#include "samples/Sky.h"

#include <cmath>

#include "samples/Ephemerides.h"

namespace {

constexpr S_Vector kStation{kAntenna[0] * 1e-4, kAntenna[1] * 1e-4, kAntenna[2] * 1e-4};

// The station's clock, against GPS time and against that of each system (by `eSystem`), which its circuits delay.
constexpr double kClock = 42e-6;        // s, at midnight
constexpr double kClockDrift = 1.5e-9;  // s/s
constexpr double kSystemDelays[] = {0, 180e-9, 12e-9, 55e-9, 0};

constexpr double kZenithTroposphere = 2.39;  // m, of a standard atmosphere at the station's height
constexpr double kElectrons = 8e16;          // 1/m^2, above the station: a quiet night

// By `eSystem`. QZSS is below the horizon.
// clang-format off
constexpr S_Signal kSignals[][2] = {
    {{2, 1575.420e6, 0},       {23, 1176.45e6, 0}},        // L1 C/A, L5 Q
    {{2, 1602.000e6, 562.5e3}, { 8, 1246.00e6, 437.5e3}},  // G1 C/A, G2 C/A
    {{2, 1575.420e6, 0},       {15, 1207.14e6, 0}},        // E1 C, E5b Q
    {{2, 1561.098e6, 0},       { 8, 1268.52e6, 0}},        // B1I, B3I
};
// clang-format on

constexpr double kMillisecond = 1000 / kLight;  // 1 m as the time of light, ms

double Square(double value) { return value * value; }

double FrequencyOf(const S_Satellite& satellite, int index) {
  const S_Signal& signal = SignalsOf(satellite.system)[index];
  return signal.frequency + satellite.channel * signal.channelStep;
}

// Black and Eisner's mapping of the zenith delay, m.
double Troposphere(const S_Sight& sight) {
  return kZenithTroposphere * 1.001 / std::sqrt(0.002001 + Square(sight.heading.z));
}

// Delay of the code, advance of the phase, in m: a thin layer 400 km up, first order.
double Ionosphere(const S_Sight& sight, double frequency) {
  constexpr double kEarth = 6371.0 / (6371 + 400);
  const double slant = 1 / std::sqrt(1 - Square(kEarth) * (1 - Square(sight.heading.z)));
  return 40.3 * kElectrons / Square(frequency) * slant;
}

// Delay in the satellite, s. Clocks are those of the combination of both signals that is free of the ionosphere, so
// that this delay grows with the wavelength as that of the ionosphere does. Those of BeiDou are of B3I.
double GroupDelay(const S_Satellite& satellite, int index) {
  const S_Moment start = MomentAt(0);
  const double ratio = Square(FrequencyOf(satellite, 0) / FrequencyOf(satellite, index));
  if (satellite.system == eBeidou && index == 1) return 0;
  if (satellite.system != eGlonass)
    return ratio * ScalesOf(satellite.system).groupDelay * static_cast<double>(KeplerNumbersOf(satellite, start).tgd);
  const auto difference = static_cast<double>(GlonassNumbersOf(satellite, start).deltaTauN);  // between both signals
  return ratio * difference * 0x1p-30 / (Square(9.0 / 7) - 1);
}

// East, north and up at the station.
S_Vector LocalFrame(const S_Vector& v) {
  const S_Turn latitude = TurnOf(kLatitude * kPi / 180);
  const S_Vector fromMeridian = Turned(v, TurnOf(-kLongitude * kPi / 180));
  return {fromMeridian.y, fromMeridian.z * latitude.cosine - fromMeridian.x * latitude.sine,
          fromMeridian.x * latitude.cosine + fromMeridian.z * latitude.sine};
}

double ClockOf(eSystem system, double time) { return kClock + kClockDrift * time + kSystemDelays[system]; }

S_Sight SightOfReception(const S_Satellite& satellite, double time) {
  return SightOf(satellite, time - ClockOf(satellite.system, time));
}

// m, what code and phase have in common.
double PathOf(const S_Satellite& satellite, double time) {
  const S_Sight sight = SightOfReception(satellite, time);
  return sight.distance + kLight * (ClockOf(satellite.system, time) - sight.clock) + Troposphere(sight);
}

// Cycles by which a phase is off, the same throughout the session.
int AmbiguityOf(const S_Satellite& satellite, int index) { return (37 * satellite.number + 91 * index) % 200 - 100; }

}  // namespace

const S_Signal (&SignalsOf(eSystem system))[2] { return kSignals[system]; }

S_Sight SightOf(const S_Satellite& satellite, double time) {
  double flight = 0.07;
  for (int round = 0;; ++round) {  // the satellite moves by 4 km/s: each round gains five digits
    const S_State sent = StateOf(satellite, time - flight);
    const S_Vector line = Turned(sent.position, TurnOf(-kTurnRate * flight)) + -1 * kStation;
    const double distance = std::sqrt(Product(line, line));
    if (round == 5) return {distance, sent.clock, LocalFrame(1 / distance * line)};
    flight = distance / kLight;
  }
}

// Arcs come from the C library: in whole degrees the last bit of its result does not show.
int ElevationOf(const S_Sight& sight) { return static_cast<int>(std::lround(std::asin(sight.heading.z) * 180 / kPi)); }

int AzimuthOf(const S_Sight& sight) {
  return static_cast<int>(std::lround(std::atan2(sight.heading.x, sight.heading.y) * 180 / kPi) + 360) % 360;
}

double StrengthOf(const S_Sight& sight) { return 31 + 19 * sight.heading.z; }

S_Measurement Measure(const S_Satellite& satellite, int index, double time, C_Random& random) {
  const double frequency = FrequencyOf(satellite, index);
  const S_Sight sight = SightOfReception(satellite, time);
  const double path = PathOf(satellite, time);
  const double ionosphere = Ionosphere(sight, frequency);
  const double range = path + ionosphere + kLight * GroupDelay(satellite, index);
  const double phase = path - ionosphere + AmbiguityOf(satellite, index) * kLight / frequency;
  const double rate = PathOf(satellite, time + 0.5) - PathOf(satellite, time - 0.5);

  S_Measurement measured{};
  measured.range = std::llround(range * kMillisecond * 0x1p29) + random.Between(-600, 600);
  measured.phase = std::llround(phase * kMillisecond * 0x1p31) + random.Between(-14, 14);
  measured.rate = std::llround(rate * 1e4) + random.Between(-200, 200);
  measured.strength = std::llround(StrengthOf(sight) * 16) - 40 * index + random.Between(-8, 8);
  return measured;
}
