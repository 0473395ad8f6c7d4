// Records for the contents of RTCM 3 messages (RTCM 10403).
//
// Values are in physical units: meters, seconds, radians, hertz. A value that a message does not carry, or carries as
// "not available", holds the marker of its type (geo/NotAvailable.h), never zero. A scaled value is computed from the
// transmitted integer with a single rounding, so the integer can be recovered from it. Arrays have a fixed size; only
// as many elements are set as the count next to them says. Every record begins with its message number.
#ifndef VELAGNSS_RTCM3_RTCM3_RECORDS_H
#define VELAGNSS_RTCM3_RTCM3_RECORDS_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <variant>

#include "geo/GnssEnums.h"
#include "geo/NotAvailable.h"
#include "records/InterfaceRecords.h"

namespace velagnss {

// NavIC has no number of its own in `ALGO::eGNSSSystem`.
inline constexpr ALGO::eGNSSSystem kNavic = ALGO::GNSS_RESERVED6;

// A point in time, as transmitted and as GPS time. The week is available once a date is known, from
// `Rtcm3Decoder::SeedTime`, a message of the stream, or `Rtcm3Decoder::AssumeTime`. GLONASS messages often carry the
// time of day only; as long as the day is unknown, `seconds` is not available either.
struct Rtcm3Time {
  std::uint32_t sent = NA_U32;      // time of week, GLONASS: time of day (UTC + 3 h); ms, corrections: s
  unsigned char dayOfWeek = NA_U8;  // GLONASS MSM: as sent, 0 Sunday to 6 Saturday, 7 unknown
  unsigned short week = NA_U16;     // GPS week since 6 January 1980
  double seconds = NA_DOUBLE;       // s of that week, GPS time
  bool isWeekAssumed = false;       // the week is that of `Rtcm3Decoder::AssumeTime`; the stream may refute it later
};

// Text of up to 255 bytes.
struct Rtcm3Text {
  // The text without its terminating NUL.
  std::string_view View() const { return {bytes, size}; }

  unsigned char size = 0;  // bytes
  char bytes[256] = {};    // terminated by a NUL
};

// Position of the antenna of a reference station: 1005, 1006, 1032.
struct Rtcm3Station {
  unsigned short message = 0;               // number
  unsigned short station = 0;               // reference station, 0 to 4095
  unsigned short physicalStation = NA_U16;  // 1032: the physical station that a computed one is based on
  unsigned char itrfYear = 0;               // realization of the reference frame; reserved
  unsigned char servesGps = NA_U8;          // 1: the station provides this system
  unsigned char servesGlonass = NA_U8;      // likewise
  unsigned char servesGalileo = NA_U8;      // likewise
  unsigned char isComputed = NA_U8;         // 1: not a physical station
  unsigned char singleOscillator = NA_U8;   // 1: all observations are taken at the same instant
  unsigned char quarterCycle = NA_U8;       // 0 unknown, 1 phases corrected for quarter-cycle shifts, 2 not corrected
  double x = NA_DOUBLE;  // m, antenna reference point, Earth-centered, Earth-fixed; not available if all three
                         // were sent as zero, which means "not set"
  double y = NA_DOUBLE;  // m
  double z = NA_DOUBLE;  // m
  double antennaHeight = NA_DOUBLE;  // m, reference point above the marker: 1006
};

// Antenna and receiver of a reference station: 1007, 1008, 1033. Texts are ISO 8859-1 and often padded with blanks; a
// text that the message does not carry is empty.
struct Rtcm3Antenna {
  unsigned short message = 0;   // number
  unsigned short station = 0;   // reference station, 0 to 4095
  unsigned char setup = NA_U8;  // 0: the standard model of this antenna type applies
  Rtcm3Text antenna;            // IGS name
  Rtcm3Text antennaSerial;      // 1008, 1033
  Rtcm3Text receiver;           // 1033
  Rtcm3Text firmware;           // 1033
  Rtcm3Text receiverSerial;     // 1033
};

// Date, leap seconds and announced messages: 1013.
struct Rtcm3SystemParameters {
  // A message that the station sends, and how often.
  struct Announcement {
    unsigned short message = 0;   // number
    bool isRegular = false;       // sent at regular intervals
    double interval = NA_DOUBLE;  // s
  };

  static constexpr std::size_t kMaxAnnouncements = 31;  // the count has 5 bits

  unsigned short message = 0;                     // number
  unsigned short station = 0;                     // reference station, 0 to 4095
  unsigned short mjd = 0;                         // Modified Julian Day, UTC
  std::uint32_t secondOfDay = 0;                  // UTC, 0 to 86400
  unsigned char leapSeconds = NA_U8;              // GPS time - UTC, s
  unsigned char numAnnouncements = 0;             // set in `announcements`
  Announcement announcements[kMaxAnnouncements];  // in the order of the message
};

// A text message: 1029.
struct Rtcm3Message {
  unsigned short message = 0;       // number
  unsigned short station = 0;       // reference station, 0 to 4095
  unsigned short mjd = 0;           // Modified Julian Day, UTC
  std::uint32_t secondOfDay = 0;    // UTC, 0 to 86400
  unsigned char numCharacters = 0;  // as sent; not checked against the text
  Rtcm3Text text;                   // UTF-8, not checked; trailing NUL bytes are removed
};

// GLONASS code-phase biases: 1230.
struct Rtcm3GlonassBiases {
  unsigned short message = 0;       // number
  unsigned short station = 0;       // reference station, 0 to 4095
  unsigned char isAligned = NA_U8;  // 1: phases are aligned with the pseudoranges; 0: add the bias to the phase range
  double l1Ca = NA_DOUBLE;          // m
  double l1P = NA_DOUBLE;           // m
  double l2Ca = NA_DOUBLE;          // m
  double l2P = NA_DOUBLE;           // m
};

// Statistics of the residuals in a network of reference stations: 1030, 1031, 1303.
struct Rtcm3Residuals {
  // Standard deviations of the residuals of one satellite.
  struct Satellite {
    unsigned char svId = 0;           // as sent
    double constant = NA_DOUBLE;      // mm, non-dispersive
    double distance = NA_DOUBLE;      // ppm, non-dispersive, grows with the distance
    double height = NA_DOUBLE;        // ppm, non-dispersive, grows with the height
    double ionoConstant = NA_DOUBLE;  // mm, dispersive
    double ionoDistance = NA_DOUBLE;  // ppm, dispersive
  };

  static constexpr std::size_t kMaxSatellites = 31;  // the count has 5 bits

  unsigned short message = 0;                     // number
  unsigned short station = 0;                     // reference station, 0 to 4095
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // of the message
  Rtcm3Time time;                                 // `sent` in s
  unsigned char numReferences = 0;                // reference stations used
  unsigned char numSatellites = 0;                // set in `satellites`
  Satellite satellites[kMaxSatellites];           // in the order of the message
};

// Whether a signal has stayed in lock since its last observation by the same station.
enum class Rtcm3Lock : unsigned char {
  Unknown,    // no earlier observation, or the indicator or time cannot be used
  Kept,       // continuous since the last observation
  MaybeLost,  // the indicator is too coarse to tell
  Lost,       // lost since the last observation
};

// A satellite at one epoch.
struct Rtcm3Satellite {
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // SBAS for the SBAS satellites in GPS messages
  unsigned char svId = NA_U8;        // GPS, Galileo, BeiDou, NavIC number; GLONASS slot, if known; SBAS, QZSS PRN
  unsigned char number = NA_U8;      // as sent: position in the mask, from 1, or the satellite number
  signed char channel = NA_CHANNEL;  // GLONASS frequency channel, from this or an earlier message
  unsigned char extended = NA_U8;    // extended information of MSM5 and MSM7, as sent
  double roughRange = NA_DOUBLE;     // light-milliseconds (299792.458 m), common to the ranges of all signals
  double roughRate = NA_DOUBLE;      // m/s, common to the rates of all signals; MSM5, MSM7
};

// A signal of a satellite at one epoch.
struct Rtcm3Signal {
  // `Pseudorange`: m. `CarrierPhase`: cycles, increases with the range. `Measurement3`: Doppler in Hz, positive when
  // the range decreases. `SignalStrength`: C/N0, dB-Hz. `LockCount`: lock time indicator as sent. `Flags` is not
  // available.
  S_IFGnssObsData data{};
  unsigned char satellite = 0;      // index into `Rtcm3Observations::satellites`
  unsigned char number = NA_U8;     // MSM: signal 1 to 32; others: the code indicator
  char code[3] = {};                // RINEX 3 band and attribute, "1C"; empty for a reserved number
  unsigned char halfCycle = NA_U8;  // MSM2 to MSM7: 1 if the half-cycle ambiguity is not resolved
  Rtcm3Lock lock = Rtcm3Lock::Unknown;
  double frequency = NA_DOUBLE;   // Hz; not available for reserved signals and GLONASS without a channel
  double phaseRange = NA_DOUBLE;  // m, carrier phase times wavelength
  double rangeRate = NA_DOUBLE;   // m/s, positive when the range increases
  double lockTime = NA_DOUBLE;    // s, minimum of the range that the indicator encodes
};

// Observations of one system at one epoch: 1001 to 1004, 1009 to 1012, MSM1 to MSM7.
//
// An epoch of a station usually takes several messages. Messages belong together if they have the same station and
// their times differ by less than 5 ms. The epoch is complete with the first message whose `isMoreToCome` is false, or
// when the time changes. Times of all systems are comparable, as they are GPS time.
struct Rtcm3Observations {
  static constexpr std::size_t kMaxSatellites = 64;  // bits of the mask
  static constexpr std::size_t kMaxSignals = 64;     // cells of an MSM

  unsigned short message = 0;                     // number
  unsigned short station = 0;                     // reference station, 0 to 4095
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // of the message
  Rtcm3Time time;                                 // `sent` in ms
  bool isMoreToCome = false;                      // more messages of this epoch follow
  unsigned char msm = 0;                          // 1 to 7; 0 for the other messages
  unsigned char stationIssue = NA_U8;             // MSM: issue of the station data, 0 means none
  unsigned char clockSteering = NA_U8;            // MSM: 0 not steered, 1 steered, 2 unknown, 3 reserved
  unsigned char externalClock = NA_U8;            // MSM: 0 internal, 1 external and locked, 2 external, 3 unknown
  unsigned char isSmoothed = NA_U8;               // 1: divergence-free smoothing
  unsigned char smoothingInterval = NA_U8;        // 0 none; 1 below 30 s; then to 1, 2, 4, 8 min; 6 more; 7 unlimited
  double rangeModulus = 0.0;  // m: ranges are known modulo this (1001, 1003, 1009, 1011, MSM1 to MSM3); 0: whole ranges
  unsigned char numSatellites = 0;            // set in `satellites`
  unsigned char numSignals = 0;               // set in `signals`
  Rtcm3Satellite satellites[kMaxSatellites];  // in the order of the message
  Rtcm3Signal signals[kMaxSignals];           // likewise, satellite by satellite
};

// Ephemeris as Keplerian elements: 1019 GPS, 1041 NavIC, 1042 and 63 BeiDou, 1044 QZSS, 1045 Galileo F/NAV, 1046
// Galileo I/NAV.
//
// `ephemeris` holds what the decoder of the binary protocol would put there. In addition:
//   TimeSystem      Galileo, BeiDou and NavIC: the system itself; weeks still count from January 1980
//   TxTime          not available, as no message carries it. Near the turn of a week the weeks of toe and toc follow
//                   the known time
//   Health,         Galileo: as in RINEX, bits 0 (E1-B), 3 (E5a), 6 (E5b) data invalid, bits 1-2, 4-5, 7-8 signal
//   SvHealth        status; BeiDou: 0 good, 1 not; NavIC: bit 0 S band, bit 1 L5
//   Iode, Iode2     Galileo: IODnav; BeiDou: AODE; NavIC: IODEC
//   Iodc            BeiDou: AODC; Galileo and NavIC: not available
//   Ura             Galileo: signal-in-space accuracy; 1e99 for "no prediction"
//   Tgd             Galileo: BGD E5a/E1; BeiDou: TGD1
//   CodeOnL2, L2PDataFlag, FitInterval    not available where the message has no such field
struct Rtcm3KeplerEphemeris {
  unsigned short message = 0;           // number
  S_IFKeplerEphRec ephemeris{};         // see above
  unsigned short weekSent = NA_U16;     // as sent, in the system's own count
  unsigned char accuracyIndex = NA_U8;  // URA or SISA index, as sent
  unsigned char fitFlag = NA_U8;        // GPS, QZSS: as sent
  unsigned short dataSource = NA_U16;   // Galileo, as RINEX numbers them: 258 F/NAV, 517 I/NAV
  double groupDelay2 = NA_DOUBLE;       // s; Galileo I/NAV: BGD E5b/E1; BeiDou: TGD2
};

// Ephemeris of a GLONASS satellite as position and velocity: 1020.
//
// `ephemeris` holds what the decoder of the binary protocol would put there, but only the high bit of the word Bn, and
// no slot number of string 4 (`N`). TauC, TauGps and N4 are available if `hasMore` is 1.
struct Rtcm3PvaEphemeris {
  unsigned short message = 0;             // number
  S_IFPvaEphRec ephemeris{};              // see above
  unsigned short frameTimeSent = NA_U16;  // tk as sent: 5 bits hours, 6 bits minutes, 1 bit half minutes
  unsigned char almanacHealth = NA_U8;    // 1 healthy; not available if the station does not know
  unsigned char hasMore = NA_U8;          // 1: the fields of string 5 are valid
  unsigned short dayOfTauC = NA_U16;      // day of TauC in the four-year interval
  unsigned char healthOfString5 = NA_U8;  // ln of string 5
};

// Corrections in state space (SSR): 1057 to 1068 GPS and GLONASS, 1240 to 1245 Galileo, 1258 to 1263 BeiDou.
//
// Each system has six consecutive message numbers: orbit, clock, code biases, orbit and clock, accuracy, high-rate
// clock. Polynomials refer to `time`, plus half the update interval unless `updateCode` is 0.
struct Rtcm3Ssr {
  // Corrections of one satellite.
  struct Satellite {
    unsigned char svId = 0;             // as sent
    unsigned short issue = NA_U16;      // of the ephemeris that is corrected: IODE, IODnav, IOD of GLONASS and BeiDou
    unsigned short toe = NA_U16;        // s, BeiDou: reference time of that ephemeris modulo 8192 s
    double radial = NA_DOUBLE;          // m, to be subtracted from the broadcast position, as are the next two
    double alongTrack = NA_DOUBLE;      // m
    double crossTrack = NA_DOUBLE;      // m
    double radialRate = NA_DOUBLE;      // m/s
    double alongTrackRate = NA_DOUBLE;  // m/s
    double crossTrackRate = NA_DOUBLE;  // m/s
    double clock = NA_DOUBLE;           // m
    double clockRate = NA_DOUBLE;       // m/s
    double clockAcceleration = NA_DOUBLE;  // m/s^2
    double highRateClock = NA_DOUBLE;      // m, to be added to `clock`
    unsigned char accuracyIndex = NA_U8;   // class in the high 3 bits, value in the low 3
    double accuracy = NA_DOUBLE;   // m, upper bound; not available for the indices 0 (undefined) and 63 (unbounded)
    unsigned short firstBias = 0;  // index into `biases`
    unsigned char numBiases = 0;   // from there on
  };

  // Code bias of one signal.
  struct Bias {
    unsigned char number = 0;  // of the signal, 0 to 31
    char code[3] = {};         // RINEX 3 band and attribute; empty for a number that is not known
    double bias = NA_DOUBLE;   // m
  };

  static constexpr std::size_t kMaxSatellites = 63;  // the count has 6 bits
  static constexpr std::size_t kMaxBiases = 430;     // the longest payload holds no more, at 19 bits each

  unsigned short message = 0;                     // number
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // of the message
  Rtcm3Time time;                                 // `sent` in s
  unsigned char updateCode = 0;                   // 0 to 15
  unsigned short updateInterval = 0;              // s
  bool isMoreToCome = false;                      // more messages of this set follow
  unsigned char isRegional = NA_U8;               // orbits: 0 ITRF, 1 a regional datum
  unsigned char issue = 0;                        // messages with the same time and issue belong together
  unsigned short provider = 0;                    // of the corrections
  unsigned char solution = 0;                     // of the provider
  unsigned char numSatellites = 0;                // set in `satellites`
  unsigned short numBiases = 0;                   // set in `biases`
  Satellite satellites[kMaxSatellites];           // in the order of the message
  Bias biases[kMaxBiases];                        // satellite by satellite
};

// A message that is not decoded or is faulty: its number, and its payload as part of the frame.
struct Rtcm3Payload {
  unsigned short message = 0;           // number
  const unsigned char* data = nullptr;  // first byte
  std::size_t size = 0;                 // bytes
};

// The contents of one frame. `std::monostate`: no valid frame.
using Rtcm3Record = std::variant<std::monostate, Rtcm3Payload, Rtcm3Station, Rtcm3Antenna, Rtcm3SystemParameters,
                                 Rtcm3Message, Rtcm3GlonassBiases, Rtcm3Residuals, Rtcm3Observations,
                                 Rtcm3KeplerEphemeris, Rtcm3PvaEphemeris, Rtcm3Ssr>;

}  // namespace velagnss

#endif  // VELAGNSS_RTCM3_RTCM3_RECORDS_H
