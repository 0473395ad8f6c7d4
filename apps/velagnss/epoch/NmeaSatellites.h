// The satellites and signals that the numbers of NMEA 0183 mean.
#ifndef VELAGNSS_APPS_NMEA_SATELLITES_H
#define VELAGNSS_APPS_NMEA_SATELLITES_H

#include <string_view>

#include "geo/GnssEnums.h"

namespace Host {

// The system of a talker, or of a system id (NMEA 0183 4.11) where there is one; unknown for "GN" without an id.
ALGO::eGNSSSystem SystemOfSentence(std::string_view talker, unsigned char systemId);

struct S_SatelliteName {
  ALGO::eGNSSSystem system;
  unsigned int number;  // PRN or slot
};

// The satellite of a number in a sentence of a system. Numbers of sentences of GPS, or of no known system, can be those
// of other systems: 33 to 64 are SBAS, 65 to 99 GLONASS, 193 and up QZSS.
S_SatelliteName SatelliteOf(ALGO::eGNSSSystem system, unsigned char id);

// The id of a signal (NMEA 0183 4.11) by its RINEX band and attribute, "1C". Not available where there is none, and for
// two components tracked together, which have an id each.
unsigned char SignalIdOf(ALGO::eGNSSSystem system, std::string_view code);

// Whether the id is that of the signal, or of one of its components.
bool CanBeSignal(ALGO::eGNSSSystem system, std::string_view code, unsigned char signalId);

// The name of a signal by its id (NMEA 0183 4.11); empty for 0, "all signals", and for every id that is not in use.
std::string_view NameOfSignal(ALGO::eGNSSSystem system, unsigned char signalId);

}  // namespace Host

#endif  // VELAGNSS_APPS_NMEA_SATELLITES_H
