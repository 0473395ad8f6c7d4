// Satellite systems, carrier bands and signal components, as decoders and records use them.
//
// The numbers are fixed: records store them, they index arrays (systems: 7 slots, 0 to 6), and they map to the system
// and signal ids of NMEA 0183. Records that store them in 8 bits say so.
#ifndef VELAGNSS_GEO_GNSS_ENUMS_H
#define VELAGNSS_GEO_GNSS_ENUMS_H

namespace ALGO {

// Satellite systems. A number of 7 or more is not a known system.
enum eGNSSSystem : unsigned int {
  GNSS_GPS = 0,        // NMEA system id 1
  GNSS_GLONASS = 1,    // NMEA system id 2
  GNSS_BEIDOU = 2,     // NMEA system id 5; its time is GPS time - 14 s
  GNSS_GALILEO = 3,    // NMEA system id 3
  GNSS_SBAS = 4,       // no NMEA mapping
  GNSS_QZSS = 5,       // NMEA system id 5, signals on L1, L2, L5
  GNSS_RESERVED6 = 6,  // a further system without a mapping
  GNSS_UNKNOWN = 7,    // not set
};

// Carrier bands, by their center frequency: L1, E1 and B1C 1575.42 MHz, L2 1227.60, L5 and E5a 1176.45, G1 1602 and G2
// 1246 plus 0.5625 and 0.4375 times the channel, B1 1561.098, E5b and B2 1207.14, B3 1268.52, E5 1191.795, E6 1278.75.
enum eGNSSFrequency : unsigned int {
  FREQ_L1 = 0,   // GPS and QZSS L1, Galileo E1 (L1-A)
  FREQ_L2 = 1,   // GPS and QZSS L2
  FREQ_L5 = 2,   // GPS and QZSS L5, Galileo E5a and, in the NMEA signal table, Galileo L1-BC
  FREQ_G1 = 3,   // GLONASS
  FREQ_G2 = 4,   // GLONASS
  FREQ_B1 = 5,   // BeiDou
  FREQ_E5B = 6,  // Galileo E5b, BeiDou B2
  FREQ_B3 = 7,   // BeiDou
  FREQ_E5 = 8,   // Galileo E5a+b
  FREQ_E6 = 9,   // Galileo
  FREQ_RESERVED10 = 10,
  FREQ_RESERVED11 = 11,
  FREQ_RESERVED12 = 12,
  FREQ_RESERVED13 = 13,
  FREQ_ALL = 14,      // all signals of the system (NMEA signal id 0)
  FREQ_UNKNOWN = 15,  // not set
};

// Components of a signal: the code on the carrier that was tracked. The meaning of a number depends on system and band.
enum eGNSSTrackType : unsigned int {
  TRACK_CA = 0,      // C/A code of GPS, QZSS and GLONASS
  TRACK_P = 1,       // GLONASS P code
  TRACK_E5X = 2,     // Galileo E5a and E5b
  TRACK_ALTBOC = 3,  // Galileo E5
  TRACK_RESERVED4 = 4,
  TRACK_M = 5,    // GPS L1 M, L2C-M
  TRACK_L = 6,    // GPS L2C-L
  TRACK_L1C = 7,  // QZSS, NMEA signals 2 and 3
  TRACK_I = 8,    // in-phase component: GPS L5-I, BeiDou I
  TRACK_Q = 9,    // quadrature component: GPS L5-Q, BeiDou Q, QZSS NMEA signal 4
  TRACK_RESERVED10 = 10,
  TRACK_RESERVED11 = 11,
  TRACK_RESERVED12 = 12,
  TRACK_PY = 13,  // GPS P(Y) on L1 and L2
  TRACK_RESERVED14 = 14,
  TRACK_A = 15,  // Galileo E6-A, L1-A
  TRACK_RESERVED16 = 16,
  TRACK_RESERVED17 = 17,
  TRACK_BC = 18,  // Galileo E6-BC, L1-BC
  TRACK_RESERVED19 = 19,
  TRACK_ALL = 20,      // all components
  TRACK_UNKNOWN = 21,  // not set
};

}  // namespace ALGO

#endif  // VELAGNSS_GEO_GNSS_ENUMS_H
