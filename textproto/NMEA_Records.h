// The records of eight NMEA 0183 sentences, and the enumerations of their one-character fields.
//
// A value that a sentence leaves empty holds its marker: NA_DOUBLE, 255 (8 bits), 65535 (16 bits), the "Empty"
// enumerator, or what the member's comment says (see geo/NotAvailable.h). `C_NMEA_EncodeDecode::Reset_GGA` and its
// sisters set a whole record so. `talker` is not NUL-terminated: "GP", "GL", "GA", "GB", "GN" and others; NULs after a
// reset. Times are seconds of the UTC day, positions degrees (north and east positive), speeds and courses as named.
// Nothing checks ranges while decoding: a sentence that says 99 hours is stored as such.
#ifndef VELAGNSS_TEXTPROTO_NMEA_RECORDS_H
#define VELAGNSS_TEXTPROTO_NMEA_RECORDS_H

#include "geo/GnssEnums.h"

// How a position was found; the letter of NMEA 0183 behind each.
enum eNmeaModeIndicator : unsigned int {
  eNmeaModeNotValid = 0,  // N, and every letter that is not known
  eNmeaModeAutonomous,    // A
  eNmeaModeDifferential,  // D
  eNmeaModePrecise,       // P
  eNmeaModeRtk,           // R, integer ambiguities
  eNmeaModeRtkFloat,      // F
  eNmeaModeEstimated,     // E, dead reckoning
  eNmeaModeManual,        // M
  eNmeaModeSimulator,     // S
  eNmeaModeReserved9,     // written as N, never read
  eNmeaModeEmpty,         // an empty field
};

// Navigational status (NMEA 0183 from 4.1 on).
enum eNmeaNavStatus : unsigned int {
  eNmeaNavSafe = 0,   // S
  eNmeaNavCaution,    // C
  eNmeaNavUnsafe,     // U
  eNmeaNavNotValid,   // V, and every letter that is not known
  eNmeaNavNotValid4,  // written as V, never read
  eNmeaNavEmpty,      // an empty field
};

// Status of GLL.
enum eNmeaGllStatus : unsigned int {
  eNmeaGllValid = 0,     // A
  eNmeaGllDifferential,  // D
  eNmeaGllNotValid,      // V, and every letter that is not known
  eNmeaGllNotValid3,     // written as V, never read
  eNmeaGllEmpty,         // an empty field
};

// Status of RMC.
enum eNmeaRmcStatus : unsigned int {
  eNmeaRmcValid = 0,     // A
  eNmeaRmcDifferential,  // D
  eNmeaRmcRtkFloat,      // F
  eNmeaRmcPrecise,       // P
  eNmeaRmcRtk,           // R
  eNmeaRmcNotValid,      // V, and every letter that is not known
  eNmeaRmcNotValid6,     // written as V, never read
  eNmeaRmcEmpty,         // an empty field
};

// GGA: position, fix and its quality.
struct S_GGA_Data {
  char talker[2];
  double timeOfDay;
  double latitude;
  double longitude;
  unsigned int quality;             // as sent, 0 (no fix) to 9; 10: empty
  unsigned char satellites;         // in use
  double hdop;                      // horizontal dilution of precision
  double altitude;                  // m above mean sea level
  double geoidSeparation;           // m, geoid above the ellipsoid
  double differentialAge;           // s
  unsigned short referenceStation;  // of the differential corrections; the encoder writes an age for 1 to 65534 only
};

// GNS: position of one or more systems.
struct S_GNS_Data {
  char talker[2];
  double timeOfDay;
  double latitude;
  double longitude;
  eNmeaModeIndicator mode[6];  // one per letter of the field, then empty
  unsigned char satellites;    // in use
  double hdop;
  double altitude;         // m above mean sea level
  double geoidSeparation;  // m, geoid above the ellipsoid
  double differentialAge;  // s
  unsigned short referenceStation;
  eNmeaNavStatus navStatus;
};

// ZDA: date and time.
struct S_ZDA_Data {
  char talker[2];
  unsigned short year;
  unsigned char month;
  unsigned char day;
  double timeOfDay;
  signed char zoneHours;      // local zone, -13 to 13; -64: empty
  unsigned char zoneMinutes;  // of the local zone
};

// GLL: position.
struct S_GLL_Data {
  char talker[2];
  double timeOfDay;
  double latitude;
  double longitude;
  eNmeaGllStatus status;
  eNmeaModeIndicator mode;
};

// GSV: satellites in view, four to a sentence.
struct S_GSV_Data {
  char talker[2];
  unsigned char totalSentences;  // of this group
  unsigned char sentenceNumber;  // from 1 on
  unsigned char satellitesInView;
  unsigned char satelliteId[4];
  unsigned char elevation[4];  // degrees
  unsigned short azimuth[4];   // degrees
  unsigned char snr[4];        // dB-Hz; empty when not tracked
  unsigned char signalId;      // NMEA signal id (`MapNmeaSignalId2Algo`)
};

// GSA: satellites in use and dilutions of precision.
struct S_GSA_Data {
  char talker[2];
  char operationMode;  // 'M' manual, 'A' automatic; 0: empty
  char fixType;        // '1' no fix, '2' 2D, '3' 3D; 0: empty
  unsigned char satelliteId[12];
  double pdop;
  double hdop;
  double vdop;
  unsigned char systemId;  // NMEA system id (`MapNmeaSystemId2Algo`)
};

// RMC: recommended minimum data.
struct S_RMC_Data {
  char talker[2];
  unsigned short year;
  unsigned char month;
  unsigned char day;
  double timeOfDay;
  double latitude;
  double longitude;
  double speedKnots;
  double courseTrue;                 // degrees
  double magneticVariation;          // degrees, never negative as sent
  unsigned char variationDirection;  // decoded: 0 for "W" and "E", 1 for other text; encoded: its letter, if it is one
  eNmeaModeIndicator mode;
  eNmeaRmcStatus status;
  eNmeaNavStatus navStatus;
};

// VTG: course and speed over ground.
struct S_VTG_Data {
  char talker[2];
  double courseTrue;      // degrees
  double courseMagnetic;  // degrees
  double speedKnots;
  double speedKmh;  // km/h
  eNmeaModeIndicator mode;
};

// Any of the eight; which one is told by the sentence type given to `Decode`.
union U_EcdDcdData {
  S_GGA_Data gga;
  S_GNS_Data gns;
  S_ZDA_Data zda;
  S_GLL_Data gll;
  S_GSV_Data gsv;
  S_GSA_Data gsa;
  S_RMC_Data rmc;
  S_VTG_Data vtg;
};

// A row of the map between the system and signal ids of NMEA 0183 and the enumerations of namespace ALGO. An unused row
// holds the values given here.
struct S_NmeaSS2Algo {
  unsigned char nmeaSystem = 255;
  unsigned char nmeaSignal = 255;  // 0: all signals of the system
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;
  ALGO::eGNSSFrequency frequency = ALGO::FREQ_UNKNOWN;
  ALGO::eGNSSTrackType trackType = ALGO::TRACK_UNKNOWN;
};

#endif  // VELAGNSS_TEXTPROTO_NMEA_RECORDS_H
