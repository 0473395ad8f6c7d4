// The records of broadcast ephemerides and observations, the same for every protocol.
//
// Plain data, copied by value, little-endian with natural alignment. A decoder first puts a record into its empty
// state, so that a member which the message does not carry has the empty value given below. "invalid" is the double
// whose bytes are all 0xCC (`NA_DOUBLE`). Angles are radians. Week numbers are full weeks since 6 January 1980 once a
// decoder has resolved them. Times are seconds of the week in the member before them, in the time scale of
// `TimeSystem`.
#ifndef VELAGNSS_RECORDS_INTERFACE_RECORDS_H
#define VELAGNSS_RECORDS_INTERFACE_RECORDS_H

#include <cstdint>

#include "velagnss_export.h"

// Broadcast ephemeris as Keplerian elements with corrections: GPS and QZSS (IS-GPS-200, 20.3.3.4). Galileo and BeiDou
// fit into the same record.
struct S_IFKeplerEphRec {
  std::uint8_t System;      // `ALGO::eGNSSSystem`: 0 GPS, 5 QZSS, 2 BeiDou, 3 Galileo; empty 7
  std::uint8_t SvId;        // satellite number (PRN); empty 0xFF
  std::int8_t FreqChannel;  // always -128: no GLONASS satellite
  std::uint8_t Spare;       // decoders write 0; empty 0xFF

  std::uint32_t Health;     // health word as broadcast; empty 0xFFFFFFFF
  std::uint32_t Iode;       // issue of data, ephemeris; empty 0
  std::uint8_t TimeSystem;  // system that defines the time scale: 0 for GPS and QZSS; empty 7

  std::uint16_t TxWeek;    // week of transmission; empty 0
  double TxTime;           // s, time of week of transmission; empty 0.0
  std::uint16_t ToeWeek;   // week of the ephemeris reference time; empty 0
  double Toe;              // s, ephemeris reference time; empty 0.0
  std::uint16_t ToeSpare;  // not set; empty 0
  std::uint16_t TocWeek;   // week of the clock reference time; empty 0
  double Toc;              // s, clock reference time; empty 0.0

  double Af0;  // s, clock bias; invalid
  double Af1;  // s/s, clock drift; invalid
  double Af2;  // s/s^2, clock drift rate; invalid

  double M0;        // rad, mean anomaly at the reference time; invalid
  double DeltaN;    // rad/s, mean motion difference; invalid
  double Spare0;    // not set; invalid
  double Ecc;       // eccentricity; invalid
  double SqrtA;     // sqrt(m), root of the semi-major axis; invalid
  double Spare1;    // not set; invalid
  double Spare2;    // not set; invalid
  double Omega0;    // rad, longitude of the ascending node at the weekly epoch; invalid
  double I0;        // rad, inclination at the reference time; invalid
  double Omega;     // rad, argument of perigee; invalid
  double OmegaDot;  // rad/s, rate of right ascension; invalid
  double IDot;      // rad/s, rate of inclination; invalid
  double Cuc;       // rad, cosine correction of the argument of latitude; invalid
  double Cus;       // rad, sine correction of the argument of latitude; invalid
  double Crc;       // m, cosine correction of the orbit radius; invalid
  double Crs;       // m, sine correction of the orbit radius; invalid
  double Cic;       // rad, cosine correction of the inclination; invalid
  double Cis;       // rad, sine correction of the inclination; invalid

  std::uint32_t Iode2;        // issue of data, ephemeris, repeated; empty 0xFFFFFFFF
  std::uint16_t CodeOnL2;     // codes on L2, 2 bits; empty 0
  std::uint16_t L2PDataFlag;  // L2 P data flag, 1 bit; empty 0
  double Ura;                 // m, user range accuracy of the 4-bit index, 1e99 for "no prediction"; invalid
  std::uint32_t SvHealth;     // satellite health, 6 bits; empty 0xFFFFFFFF
  std::uint32_t Spare3;       // not set; empty 0
  double Tgd;                 // s, group delay; invalid
  double Spare4;              // not set; invalid
  std::uint32_t Iodc;         // issue of data, clock, 10 bits; empty 0
  double FitInterval;         // GPS: h, from the fit interval flag and IODC; QZSS: the flag itself, 0 or 1; invalid
};

// Broadcast ephemeris as position, velocity and acceleration: GLONASS (GLONASS ICD, 4.4; kilometers converted to
// meters) and SBAS (RTCA DO-229, message type 9). For SBAS the members that only GLONASS has stay empty.
struct S_IFPvaEphRec {
  std::uint8_t System;      // `ALGO::eGNSSSystem`: 1 GLONASS, 4 SBAS; empty 7
  std::uint8_t SvId;        // GLONASS: slot 1 to 24; SBAS: PRN; empty 0xFF
  std::int8_t FreqChannel;  // GLONASS: frequency channel -7 to +6; empty -128
  std::uint8_t Spare;       // decoders write 0; empty 0xFF

  std::uint32_t Health;     // GLONASS: the high bit of the word Bn, 1 is unhealthy; SBAS: 0; empty 0xFFFFFFFF
  std::uint32_t Iod;        // issue of data; GLONASS: the index tb; empty 0
  std::uint8_t TimeSystem;  // system that defines the time scale: 1 GLONASS, 0 SBAS; empty 7

  std::uint16_t FrameWeek;  // week of the frame time; empty 0
  double FrameTime;         // s, time of week of the frame (GLONASS: from tk); empty 0.0
  std::uint16_t RefWeek;    // week of the reference time; empty 0
  double RefTime;           // s, reference time of week (GLONASS: from tb); empty 0.0

  // The satellite's clock. GLONASS: tau_n is added to its reading, so it is the clock bias with the other sign; gamma_n
  // is the relative bias of its frequency. SBAS: a_Gf0 and a_Gf1, bias and drift, which are subtracted.
  double TauN;    // s; invalid
  double GammaN;  // s/s; invalid

  double PosX, PosY, PosZ;  // m; invalid
  double VelX, VelY, VelZ;  // m/s; invalid
  double AccX, AccY, AccZ;  // m/s^2; invalid

  double DeltaTauN;     // s, delay between the L2 and the L1 signal; invalid
  std::uint32_t Bn;     // as `Health`; empty 0xFFFFFFFF
  std::uint16_t En;     // days, age of the data; empty 0xFFFF
  std::uint16_t Ft;     // accuracy index; empty 0xFFFF
  std::uint32_t Tb;     // GLONASS: reference time, in units of 15 min of the day; empty 0xFFFFFFFF
  std::uint32_t Valid;  // 1 once GLONASS strings have been read; empty 0
  double TauGps;        // s, fraction of the offset between GPS and GLONASS time; invalid
  double TauC;          // s, correction of GLONASS time to UTC(SU); invalid

  std::uint8_t M;               // type of satellite; empty 0, like all below
  std::uint8_t BnBits;          // the word Bn, 3 bits
  std::uint8_t P;               // origin of the time parameters, 2 bits
  std::uint8_t N4;              // four-year interval, 1 is 1996 to 1999
  std::uint16_t Nt;             // day within the four-year interval, 1 is 1 January of its first year
  std::uint8_t N;               // slot as sent in string 4
  std::uint8_t P1, P2, P3, P4;  // flags of the strings 1 to 4
  std::uint8_t Ln;              // health flag of string 3
};

// One observation of one signal of a satellite.
struct S_IFGnssObsData {
  std::uint8_t Frequency;   // `ALGO::eGNSSFrequency`; empty 15
  std::uint8_t TrackType;   // `ALGO::eGNSSTrackType`; empty 21
  std::uint8_t Spare[2];    // zero only when cleared
  std::uint32_t Flags;      // measurement flags in the bits 0, 1 and 7; empty 0xFFFFFFFF
  double Pseudorange;       // m, code measurement; invalid
  double CarrierPhase;      // cycles, carrier measurement; invalid
  double Measurement3;      // third measurement of the signal, as sent; invalid
  double SignalStrength;    // dB-Hz; invalid
  std::uint32_t LockCount;  // continuity of lock, as sent; empty 0xFFFFFFFF
  std::uint32_t Spare2;     // zero only when cleared
};

// Zeros the whole record, padding included, and writes its empty values.
VELAGNSS_API void SetEmpty_IFEphRec(S_IFKeplerEphRec& record);
VELAGNSS_API void SetEmpty_IFEphRec(S_IFPvaEphRec& record);

// Writes the empty values. With `clearAll` other than 0 the record is zeroed first; with 0 the spare bytes stay as they
// are.
VELAGNSS_API void SetEmpty_IFGnssObsData(S_IFGnssObsData& record, unsigned char clearAll);

#endif  // VELAGNSS_RECORDS_INTERFACE_RECORDS_H
