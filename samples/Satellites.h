// The satellites of the session.
#ifndef VELAGNSS_SAMPLES_SATELLITES_H
#define VELAGNSS_SAMPLES_SATELLITES_H

#include <vector>

enum eSystem { eGps, eGlonass, eGalileo, eBeidou, eQzss };

// What the receivers do with a satellite: use its ranges; measure them only; know of it, but receive nothing.
enum eUse { eUsed, eUnhealthy, eNotTracked };

struct S_Satellite {
  eSystem system;
  int number;  // GLONASS: slot
  eUse use;
  int node;     // longitude of the ascending node, degrees
  int anomaly;  // mean anomaly, degrees; both at the reference time of the ephemeris
  int channel;  // of GLONASS: multiple of the step between carriers
};

// In the order in which the receivers list them.
std::vector<S_Satellite> SatellitesInView(eSystem system);
// Without those that are not tracked: the satellites whose ranges and ephemerides are sent.
std::vector<S_Satellite> TrackedSatellites(eSystem system);
// One of these after the other.
S_Satellite SatelliteOfRound(eSystem system, unsigned int round);

#endif  // VELAGNSS_SAMPLES_SATELLITES_H
