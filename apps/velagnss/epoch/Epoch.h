// What a receiver said of one epoch: position, quality, and the sky.
//
// Nothing here depends on where the values came from: sentences and observations of RTCM 3 both fill it.
#ifndef VELAGNSS_APPS_EPOCH_H
#define VELAGNSS_APPS_EPOCH_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/epoch/BestPosition.h"
#include "geo/GnssEnums.h"
#include "geo/NotAvailable.h"
#include "textproto/NmeaMoreRecords.h"

namespace Host {

// A signal of a satellite as it was received.
struct S_EpochSignal {
  std::string name;              // "L1 C/A"; empty when it is not known
  unsigned char nmeaId = NA_U8;  // NMEA signal id
  double cn0 = NA_DOUBLE;        // dB-Hz
  std::string code;              // RINEX band and attribute; empty when only sentences have the signal
};

struct S_EpochSatellite {
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;
  unsigned int number = 0;          // of its system: PRN (SBAS 120 to 158, QZSS from 193 on), GLONASS slot
  unsigned char nmeaId = NA_U8;     // as a sentence numbers it
  unsigned char elevation = NA_U8;  // degrees
  unsigned short azimuth = NA_U16;  // degrees
  std::optional<bool> isUsed;       // in the position; nothing when no sentence of the epoch says so
  std::vector<S_EpochSignal> signals;
};

// The reference station whose observations are in an epoch.
struct S_EpochStation {
  unsigned short number = 0;
  double latitude = NA_DOUBLE;        // degrees, of the antenna reference point, as are the next two
  double longitude = NA_DOUBLE;       // degrees, -180 to 180
  double height = NA_DOUBLE;          // m above the ellipsoid
  std::vector<std::string> messages;  // names of those with its observations, in their order
};

struct S_Epoch {
  std::uint64_t offset = 0;         // of its first frame
  double timeOfDay = NA_DOUBLE;     // s of the UTC day
  std::optional<unsigned int> mjd;  // the day; nothing when the date is not known

  bool hasSentences = false;           // otherwise all of it is from observations
  bool hasPosition = false;            // a sentence with a position was there, with a fix or without one
  std::optional<S_Position> position;  // with a fix
  char fixType = '\0';                 // of GSA: '1' none, '2' 2D, '3' 3D
  double pdop = NA_DOUBLE;
  double hdop = NA_DOUBLE;
  double vdop = NA_DOUBLE;
  std::optional<velagnss::GstRecord> accuracy;

  std::optional<S_EpochStation> station;     // nothing without observations
  std::vector<S_EpochSatellite> satellites;  // by system and number
};

// A satellite of an epoch, added if it is new; null when there are more than any receiver tracks, so that no stream
// takes memory without end.
S_EpochSatellite* SatelliteOf(S_Epoch& epoch, ALGO::eGNSSSystem system, unsigned int number);

// Adds a signal, within the same limit.
void AddSignal(S_EpochSatellite& satellite, const S_EpochSignal& signal);

void SortSatellites(S_Epoch& epoch);

// Adds what a receiver observed to the epoch of its sentences. C/N0 is that of the observations, which have fractions
// where GSV has whole numbers; angles are those of the sentences.
void AddObservations(S_Epoch& epoch, const S_Epoch& observed);

}  // namespace Host

#endif  // VELAGNSS_APPS_EPOCH_H
