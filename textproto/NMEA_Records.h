// The records of eight NMEA 0183 sentences, and the enumerations of their one-character fields.
//
// A value that a sentence leaves empty holds its marker: NA_DOUBLE, 255 (8 bits), 65535 (16 bits), the "Empty"
// enumerator, or what the member's comment says (see geo/NotAvailable.h). `C_NMEA_EncodeDecode::Reset_GGA` and its
// the operations like it set a whole record to its markers. `talker` is not NUL-terminated: "GP", "GL", "GA", "GB",
// "GN" and others; NULs after a reset. Times are seconds of the UTC day, positions degrees (north and east positive),
// speeds and courses as named. Nothing checks ranges while decoding: a sentence that says 99 hours is stored as such.
#ifndef VELAGNSS_TEXTPROTO_NMEA_RECORDS_H
#define VELAGNSS_TEXTPROTO_NMEA_RECORDS_H

#include "geo/GnssEnums.h"

// How a position was found; each with its letter of NMEA 0183.
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

// The markers of two members whose range needs another marker than their type has.
inline constexpr unsigned int kNoGgaQuality = 10;  // qualities are 0 to 9
inline constexpr signed char kNoZoneHours = -64;   // zones are -13 to 13

// GGA: position, fix and its quality.
//
//   $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
//
// is 45319 s, 48.1173 and 11.516667 degrees, quality 1, 8 satellites, HDOP 0.9, 545.4 m, 46.9 m, age and station
// absent. The height above the ellipsoid is `altitude` + `geoidSeparation`. A sentence without a fix has quality 0 and,
// most often, empty coordinates; some receivers repeat the last ones: look at the quality first.
struct S_GGA_Data {
  char talker[2];                   // of the sentence id: "GP", "GN", ...
  double timeOfDay;                 // s of the UTC day
  double latitude;                  // degrees, north positive
  double longitude;                 // degrees, east positive
  unsigned int quality;             // as sent, 0 (no fix) to 9; empty: kNoGgaQuality
  unsigned char satellites;         // in use
  double hdop;                      // horizontal dilution of precision
  double altitude;                  // m above mean sea level
  double geoidSeparation;           // m, geoid above the ellipsoid
  double differentialAge;           // s
  unsigned short referenceStation;  // of the differential corrections; the encoder writes an age for 1 to 65534 only
};

// GNS: position of one or more systems.
//
//   $GNGNS,014035.00,4332.69262,S,17235.48549,E,RR,13,0.9,25.63,11.24,,,V*0A
//
// has the modes RTK for GPS and RTK for GLONASS; the other four are empty. The letters are in the order GPS, GLONASS,
// Galileo, BeiDou, QZSS, NavIC (NMEA 0183, 4.11). A sentence of one system alone has one letter or none, and the
// encoder writes letters for a talker that ends in N only.
struct S_GNS_Data {
  char talker[2];                   // "GN" for a solution of several systems
  double timeOfDay;                 // s of the UTC day
  double latitude;                  // degrees, north positive
  double longitude;                 // degrees, east positive
  eNmeaModeIndicator mode[6];       // one per letter of the field, then empty
  unsigned char satellites;         // in use
  double hdop;                      // horizontal dilution of precision
  double altitude;                  // m above mean sea level
  double geoidSeparation;           // m, geoid above the ellipsoid
  double differentialAge;           // s, age of the differential corrections
  unsigned short referenceStation;  // of these corrections
  eNmeaNavStatus navStatus;         // sentences of NMEA 0183 before 4.1 have none
};

// ZDA: date and time.
//
//   $GPZDA,160012.71,11,03,2004,-1,00*7D
//
// is 57612.71 s of 11 March 2004, UTC. By the standard the zone is what is added to local time to get UTC: negative to
// the east. It is passed on as sent.
struct S_ZDA_Data {
  char talker[2];             // of the sentence id
  unsigned short year;        // four digits
  unsigned char month;        // 1 to 12
  unsigned char day;          // 1 to 31
  double timeOfDay;           // s of the UTC day; 86400 and more in a leap second
  signed char zoneHours;      // local zone, -13 to 13; empty: kNoZoneHours
  unsigned char zoneMinutes;  // of the local zone
};

// GLL: position.
//
//   $GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41
//
// is 37.387458 and -121.972360 degrees at 58349.48 s (five characters of the seconds are read, unless all digits are asked for), valid, autonomous.
struct S_GLL_Data {
  char talker[2];           // of the sentence id
  double timeOfDay;         // s of the UTC day
  double latitude;          // degrees, north positive
  double longitude;         // degrees, east positive
  eNmeaGllStatus status;    // whether to use the position
  eNmeaModeIndicator mode;  // how it was found; sentences before NMEA 0183 2.3 have none
};

// GSV: satellites in view, four to a sentence.
//
//   $GPGSV,3,1,11,03,03,111,00,04,15,270,00,06,01,010,00,13,06,292,00,1*69
//
// is the first of three sentences about 11 satellites on signal 1: number, elevation, azimuth and signal to noise of 3,
// 4, 6 and 13. The satellite numbers are those of NMEA 0183, not of the systems: SBAS are PRN - 87, GLONASS slot + 64.
struct S_GSV_Data {
  char talker[2];                  // of the system: "GP", "GL", "GA", ...
  unsigned char totalSentences;    // of this group
  unsigned char sentenceNumber;    // from 1 on
  unsigned char satellitesInView;  // of this system and signal, over the whole group
  unsigned char satelliteId[4];    // by NMEA 0183; unused places are empty, like all of their values
  unsigned char elevation[4];      // degrees
  unsigned short azimuth[4];       // degrees
  unsigned char snr[4];            // dB-Hz; empty when not tracked
  unsigned char signalId;          // NMEA signal id (`MapNmeaSignalId2Algo`)
};

// GSA: satellites in use and dilutions of precision.
//
//   $GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,2*09
//
// is a 3D fix, chosen automatically, with five satellites of system 2 (GLONASS). The dilutions are those of the whole
// solution, the same in the GSA of each system. One system may need several sentences.
struct S_GSA_Data {
  char talker[2];                 // "GN" where `systemId` gives the system
  char operationMode;             // 'M' manual, 'A' automatic; 0: empty
  char fixType;                   // '1' no fix, '2' 2D, '3' 3D; 0: empty
  unsigned char satelliteId[12];  // by NMEA 0183; empty slots may be anywhere
  double pdop;                    // position dilution of precision
  double hdop;                    // its horizontal part
  double vdop;                    // its vertical part
  unsigned char systemId;         // NMEA system id (`MapNmeaSystemId2Algo`)
};

// RMC: recommended minimum data.
//
//   $GPRMC,225446.33,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E,A,V*51
//
// is 82486.33 s, valid, 49.274167 and -123.185333 degrees, half a knot on course 54.7, magnetic variation 20.3 degrees
// east, autonomous. The year has two digits and is taken to be from 2000 on, so that this date reads as 19 November
// 2094.
struct S_RMC_Data {
  char talker[2];                    // of the sentence id
  unsigned short year;               // 2000 to 2099
  unsigned char month;               // 1 to 12
  unsigned char day;                 // 1 to 31
  double timeOfDay;                  // s of the UTC day
  double latitude;                   // degrees, north positive
  double longitude;                  // degrees, east positive
  double speedKnots;                 // over ground
  double courseTrue;                 // degrees
  double magneticVariation;          // degrees, never negative as sent
  unsigned char variationDirection;  // decoded: 0 for "W" and "E", 1 for other text; encoded: its letter, if it is one
  eNmeaModeIndicator mode;           // how the position was found
  eNmeaRmcStatus status;             // whether to use it
  eNmeaNavStatus navStatus;          // sentences of NMEA 0183 before 4.1 have none
};

// VTG: course and speed over ground.
//
//   $GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,A*25
//
// Both speeds are the same value in two units; a receiver at rest often leaves the courses empty.
struct S_VTG_Data {
  char talker[2];           // of the sentence id
  double courseTrue;        // degrees
  double courseMagnetic;    // degrees
  double speedKnots;        // over ground
  double speedKmh;          // km/h
  eNmeaModeIndicator mode;  // how they were found
};

// Any of the eight: the one for the sentence type given to `Decode`. No other member may be read, since it was never
// written.
union U_EcdDcdData {
  S_GGA_Data gga;  // `C_RawDataMessage::eNmeaGGA`, and so on
  S_GNS_Data gns;  // `eNmeaGNS`
  S_ZDA_Data zda;  // `eNmeaZDA`
  S_GLL_Data gll;  // `eNmeaGLL`
  S_GSV_Data gsv;  // `eNmeaGSV`
  S_GSA_Data gsa;  // `eNmeaGSA`
  S_RMC_Data rmc;  // `eNmeaRMC`
  S_VTG_Data vtg;  // `eNmeaVTG`
};

// A row of the map between the system and signal ids of NMEA 0183 and the enumerations of namespace ALGO. An unused row
// holds the values given here.
struct S_NmeaSS2Algo {
  unsigned char nmeaSystem = 255;                        // system id of NMEA 0183
  unsigned char nmeaSignal = 255;                        // signal id; 0: all signals of the system
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;         // the same system
  ALGO::eGNSSFrequency frequency = ALGO::FREQ_UNKNOWN;   // carrier band of the signal
  ALGO::eGNSSTrackType trackType = ALGO::TRACK_UNKNOWN;  // component of the signal
};

#endif  // VELAGNSS_TEXTPROTO_NMEA_RECORDS_H
