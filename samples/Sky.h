// The satellites as the session's receivers see them, and what the reference station measures of them.
#ifndef VELAGNSS_SAMPLES_SKY_H
#define VELAGNSS_SAMPLES_SKY_H

#include <cstdint>

#include "samples/Orbits.h"
#include "samples/Packing.h"

// Antenna reference point of the station, 0.1 mm: 51.4772 degrees north, 0.0125 degrees east, 92 m above the ellipsoid.
// The vehicle is never farther than 2 km away and sees the same sky, to the whole degree.
constexpr std::int64_t kAntenna[] = {39806906432, 8684520, 49668549230};
constexpr double kLatitude = 51.4772;
constexpr double kLongitude = 0.0125;

// A satellite whose signal arrives at the station.
struct S_Sight {
  double distance;   // m, along the signal
  double clock;      // s, of the satellite when it sent the signal
  S_Vector heading;  // of the satellite: unit vector east, north, up
};

S_Sight SightOf(const S_Satellite& satellite, double time);
int ElevationOf(const S_Sight& sight);    // degrees
int AzimuthOf(const S_Sight& sight);      // degrees, 0 to 359
double StrengthOf(const S_Sight& sight);  // dB-Hz, of the first signal

// A signal of a system.
struct S_Signal {
  int mask;            // its number in the mask of a multiple signal message
  double frequency;    // Hz
  double channelStep;  // Hz
};

// Both signals of the system that the station observes.
const S_Signal (&SignalsOf(eSystem system))[2];

// In the units of message type 7.
struct S_Measurement {
  std::int64_t range;     // 2^-29 ms
  std::int64_t phase;     // 2^-31 ms
  std::int64_t rate;      // 0.1 mm/s
  std::int64_t strength;  // 2^-4 dB-Hz
};

// What the station measures of a signal, `index` 0 or 1, when its clock shows `time`.
S_Measurement Measure(const S_Satellite& satellite, int index, double time, C_Random& random);

#endif  // VELAGNSS_SAMPLES_SKY_H
