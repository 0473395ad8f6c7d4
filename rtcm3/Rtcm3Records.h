// The records that the contents of RTCM 3 messages (RTCM 10403) leave the library in.
//
// Values have their physical units: metres, seconds, radians, hertz. What a message does not carry, or carries as "not
// available", holds the marker of its type (geo/NotAvailable.h) and is never zero. Each scaled value is rounded once,
// from the integer that was sent, so that the integer can be had back. Arrays are of fixed size; only the first
// elements, as many as the count beside them says, are set.
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

// An instant, as sent and as GPS time. The week is known once a date is: from `Rtcm3Decoder::SeedTime` or from a
// message of the stream. The seconds of GLONASS need the day, which most of its messages lack; without one they are
// missing too.
struct Rtcm3Time {
  std::uint32_t sent = NA_U32;      // of the week, or of the day of GLONASS (UTC + 3 h); ms, corrections: s
  unsigned char dayOfWeek = NA_U8;  // MSM of GLONASS: 0 Sunday to 6, as sent; 7 was sent for "unknown"
  unsigned short week = NA_U16;     // GPS week since 6 January 1980
  double seconds = NA_DOUBLE;       // s of that week, GPS time
};

// Text of up to 255 bytes.
struct Rtcm3Text {
  std::string_view View() const { return {bytes, size}; }

  unsigned char size = 0;  // bytes
  char bytes[256] = {};    // followed by a NUL
};

// Where the antenna of a reference station is: 1005, 1006, 1032.
struct Rtcm3Station {
  unsigned short message = 0;
  unsigned short station = 0;               // reference station, 0 to 4095
  unsigned short physicalStation = NA_U16;  // 1032: the real station behind a computed one
  unsigned char itrfYear = 0;               // realization of the reference frame; reserved
  unsigned char servesGps = NA_U8;          // 1: the station provides this system
  unsigned char servesGlonass = NA_U8;
  unsigned char servesGalileo = NA_U8;
  unsigned char isComputed = NA_U8;        // 1: not a physical station
  unsigned char singleOscillator = NA_U8;  // 1: all observations are taken at the same instant
  unsigned char quarterCycle = NA_U8;      // 0 unknown, 1 phases corrected for quarter-cycle shifts, 2 not corrected
  double x = NA_DOUBLE;                    // m, antenna reference point, Earth-centred, Earth-fixed. Three zeros were
  double y = NA_DOUBLE;                    // sent for "not set" and are not available here.
  double z = NA_DOUBLE;
  double antennaHeight = NA_DOUBLE;  // m, reference point above the marker: 1006
};

// Antenna and receiver of a reference station: 1007, 1008, 1033. Texts are ISO 8859-1, often padded with blanks; those
// that a message does not carry are empty.
struct Rtcm3Antenna {
  unsigned short message = 0;
  unsigned short station = 0;
  unsigned char setup = NA_U8;  // 0: the standard model of the antenna type applies
  Rtcm3Text antenna;            // IGS name
  Rtcm3Text antennaSerial;      // 1008, 1033
  Rtcm3Text receiver;           // 1033, like the next two
  Rtcm3Text firmware;
  Rtcm3Text receiverSerial;
};

// Date, leap seconds and announced messages: 1013.
struct Rtcm3SystemParameters {
  // One message that the station sends.
  struct Announcement {
    unsigned short message = 0;
    bool isRegular = false;       // sent at regular intervals
    double interval = NA_DOUBLE;  // s
  };

  static constexpr std::size_t kMaxAnnouncements = 31;

  unsigned short message = 0;
  unsigned short station = 0;
  unsigned short mjd = 0;             // Modified Julian Day, UTC
  std::uint32_t secondOfDay = 0;      // UTC, 0 to 86400
  unsigned char leapSeconds = NA_U8;  // GPS time - UTC, s
  unsigned char numAnnouncements = 0;
  Announcement announcements[kMaxAnnouncements];
};

// A text for the operators: 1029.
struct Rtcm3Message {
  unsigned short message = 0;
  unsigned short station = 0;
  unsigned short mjd = 0;           // Modified Julian Day, UTC
  std::uint32_t secondOfDay = 0;    // UTC, 0 to 86400
  unsigned char numCharacters = 0;  // as the message says; not checked
  Rtcm3Text text;                   // UTF-8, not checked; NUL bytes at its end are cut off
};

// Code-phase biases of GLONASS: 1230.
struct Rtcm3GlonassBiases {
  unsigned short message = 0;
  unsigned short station = 0;
  unsigned char isAligned = NA_U8;  // 1: phases are aligned to the pseudoranges; 0: add the bias to the phase range
  double l1Ca = NA_DOUBLE;          // m
  double l1P = NA_DOUBLE;           // m
  double l2Ca = NA_DOUBLE;          // m
  double l2P = NA_DOUBLE;           // m
};

// How well a message knows its satellites after interpolation in a network: 1030, 1031, 1303.
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

  static constexpr std::size_t kMaxSatellites = 31;

  unsigned short message = 0;
  unsigned short station = 0;
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;
  Rtcm3Time time;                   // `sent` in s
  unsigned char numReferences = 0;  // stations used
  unsigned char numSatellites = 0;
  Satellite satellites[kMaxSatellites];
};

// Whether the lock on a carrier was kept since the last observation of the same signal of the same station.
enum class Rtcm3Lock : unsigned char {
  Unknown,    // no earlier observation, or no usable indicator or time
  Kept,       // the lock is at least as old as the last observation
  MaybeLost,  // the indicator is too coarse to tell
  Lost,       // the lock is younger than the last observation
};

// A satellite of an epoch.
struct Rtcm3Satellite {
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // SBAS for the SBAS satellites in messages of GPS
  unsigned char svId = NA_U8;        // GPS, Galileo, BeiDou, NavIC number; GLONASS slot, if known; SBAS, QZSS PRN
  unsigned char number = NA_U8;      // as sent: position in the mask from 1, or the satellite field
  signed char channel = NA_CHANNEL;  // GLONASS frequency channel; from this or from an earlier message
  unsigned char extended = NA_U8;    // extended information of MSM5 and MSM7, as sent
  double roughRange = NA_DOUBLE;     // light-milliseconds (299792.458 m): what the ranges of all signals lean on
  double roughRate = NA_DOUBLE;      // m/s, the same of the rates; MSM5, MSM7
};

// A signal of a satellite of an epoch.
struct Rtcm3Signal {
  // `Pseudorange` m; `CarrierPhase` cycles, growing with the range; `Measurement3` Doppler in Hz, positive when the
  // range shrinks; `SignalStrength` dB-Hz; `LockCount` the lock time indicator as sent. `Flags` is not available.
  S_IFGnssObsData data{};
  unsigned char satellite = 0;      // index into `Rtcm3Observations::satellites`
  unsigned char number = NA_U8;     // MSM: signal 1 to 32; others: the code indicator
  char code[3] = {};                // RINEX 3 band and attribute, "1C"; empty for a reserved number
  unsigned char halfCycle = NA_U8;  // MSM2 to MSM7: 1 if a half-cycle ambiguity is left
  Rtcm3Lock lock = Rtcm3Lock::Unknown;
  double frequency = NA_DOUBLE;   // Hz; not available for reserved signals and GLONASS without a channel
  double phaseRange = NA_DOUBLE;  // m, the carrier phase times the wavelength
  double rangeRate = NA_DOUBLE;   // m/s, positive when the range grows
  double lockTime = NA_DOUBLE;    // s, the least that the indicator stands for
};

// Observations of one system at one epoch: 1001 to 1004, 1009 to 1012, MSM1 to MSM7.
//
// An epoch of a station is spread over several messages. They belong together if they name the same station and their
// times differ by less than 5 ms; the epoch is complete with the first message whose `isMoreToCome` is false, or when
// the time changes. The times are comparable whatever the system.
struct Rtcm3Observations {
  static constexpr std::size_t kMaxSatellites = 64;
  static constexpr std::size_t kMaxSignals = 64;

  unsigned short message = 0;
  unsigned short station = 0;
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // of the message
  Rtcm3Time time;                                 // `sent` in ms
  bool isMoreToCome = false;                      // more messages of this epoch follow
  unsigned char msm = 0;                          // 1 to 7; 0 for the other messages
  unsigned char stationIssue = NA_U8;             // MSM: issue of the station's data, 0 was sent for "none"
  unsigned char clockSteering = NA_U8;            // MSM: 0 not steered, 1 steered, 2 unknown, 3 reserved
  unsigned char externalClock = NA_U8;            // MSM: 0 internal, 1 external and locked, 2 external, 3 unknown
  unsigned char isSmoothed = NA_U8;               // 1: divergence-free smoothing
  unsigned char smoothingInterval = NA_U8;        // 0 none; 1 below 30 s; then to 1, 2, 4, 8 min; 6 more; 7 unlimited
  double rangeModulus = 0.0;  // m: ranges and phases lack a multiple of it (1001, 1003, 1009, 1011, MSM1 to 3); else 0
  unsigned char numSatellites = 0;
  unsigned char numSignals = 0;
  Rtcm3Satellite satellites[kMaxSatellites];  // in the order of the message
  Rtcm3Signal signals[kMaxSignals];           // likewise, satellite by satellite
};

// Ephemeris as Keplerian elements: 1019 GPS, 1041 NavIC, 1042 and 63 BeiDou, 1044 QZSS, 1045 Galileo F/NAV, 1046
// Galileo I/NAV.
//
// `ephemeris` is filled as the binary protocol's decoder does it. In addition:
//   TimeSystem      Galileo, BeiDou and NavIC: the system itself; weeks are on the GPS scale nevertheless
//   TxTime          never carried: not available. Weeks of toe and toc are then those nearest to the known time, at
//   most
//                   one from the week sent
//   Health          Galileo: bits 0 E1-B, 3 E5a, 6 E5b data invalid, 1-2, 4-5, 7-8 the signal's status, as RINEX has
//   SvHealth        them; BeiDou 0 good, 1 not; NavIC bit 0 S band, bit 1 L5
//   Iode, Iode2     Galileo: IODnav; BeiDou: AODE; NavIC: IODEC
//   Iodc            BeiDou: AODC; Galileo and NavIC: not available
//   Ura             Galileo: signal-in-space accuracy; 1e99 for "no prediction"
//   Tgd             Galileo: BGD E5a/E1; BeiDou: TGD1
//   CodeOnL2, L2PDataFlag, FitInterval    not available where the message has no such field
struct Rtcm3KeplerEphemeris {
  unsigned short message = 0;
  S_IFKeplerEphRec ephemeris{};
  unsigned short weekSent = NA_U16;     // as sent, in the system's own count
  unsigned char accuracyIndex = NA_U8;  // URA or SISA index, as sent
  unsigned char fitFlag = NA_U8;        // GPS, QZSS: as sent
  unsigned short dataSource = NA_U16;   // Galileo, as RINEX numbers them: 258 F/NAV, 517 I/NAV
  double groupDelay2 = NA_DOUBLE;       // s; Galileo I/NAV: BGD E5b/E1; BeiDou: TGD2
};

// Ephemeris of a GLONASS satellite as position and velocity: 1020.
//
// `ephemeris` is filled as the binary protocol's decoder does it; of the word Bn only the high bit is carried, and the
// slot of string 4 (`N`) is not. TauC, TauGps and N4 are available if `hasMore` is 1.
struct Rtcm3PvaEphemeris {
  unsigned short message = 0;
  S_IFPvaEphRec ephemeris{};
  unsigned short frameTimeSent = NA_U16;  // tk as sent: 5 bits hours, 6 bits minutes, 1 bit half minutes
  unsigned char almanacHealth = NA_U8;    // 1 healthy; not available where the station does not know it
  unsigned char hasMore = NA_U8;          // 1: the fields that come from string 5 are valid
  unsigned short dayOfTauC = NA_U16;      // day of TauC in the four-year interval
  unsigned char healthOfString5 = NA_U8;  // ln of string 5
};

// Corrections in state space (SSR): 1057 to 1068 GPS and GLONASS, 1240 to 1245 Galileo, 1258 to 1263 BeiDou.
//
// Which parts a satellite has follows from `message`: orbit, clock, code biases, orbit and clock, accuracy, high-rate
// clock, in this order from the first number of each system on. The reference time of the polynomials is `time`, plus
// half the update interval unless that is 1 s (its code 0).
struct Rtcm3Ssr {
  // Corrections of one satellite.
  struct Satellite {
    unsigned char svId = 0;
    unsigned short issue = NA_U16;  // of the ephemeris that the orbit corrects: IODE, GLONASS and BeiDou IOD, IODnav
    unsigned short toe = NA_U16;    // s, BeiDou: reference time of that ephemeris modulo 8192 s
    double radial = NA_DOUBLE;      // m, to be subtracted from the broadcast position, like the next two
    double alongTrack = NA_DOUBLE;  // m
    double crossTrack = NA_DOUBLE;  // m
    double radialRate = NA_DOUBLE;  // m/s
    double alongTrackRate = NA_DOUBLE;     // m/s
    double crossTrackRate = NA_DOUBLE;     // m/s
    double clock = NA_DOUBLE;              // m
    double clockRate = NA_DOUBLE;          // m/s
    double clockAcceleration = NA_DOUBLE;  // m/s^2
    double highRateClock = NA_DOUBLE;      // m, to be added to `clock`
    unsigned char accuracyIndex = NA_U8;   // class in the high 3 bits, value in the low 3
    double accuracy = NA_DOUBLE;           // m, upper bound; not available for index 0, and 63, which has no bound
    unsigned short firstBias = 0;          // index into `biases`
    unsigned char numBiases = 0;
  };

  // Code bias of one signal.
  struct Bias {
    unsigned char number = 0;  // of the signal, 0 to 31
    char code[3] = {};         // RINEX 3 band and attribute; empty for a number that is not known
    double bias = NA_DOUBLE;   // m
  };

  static constexpr std::size_t kMaxSatellites = 63;
  static constexpr std::size_t kMaxBiases = 430;  // of 19 bits each, in the longest payload

  unsigned short message = 0;
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;
  Rtcm3Time time;                     // `sent` in s
  unsigned char updateCode = 0;       // 0 to 15
  unsigned short updateInterval = 0;  // s
  bool isMoreToCome = false;          // more messages of this set follow
  unsigned char isRegional = NA_U8;   // orbits: 0 ITRF, 1 a regional datum
  unsigned char issue = 0;            // of the set; messages with the same time and issue belong together
  unsigned short provider = 0;
  unsigned char solution = 0;
  unsigned char numSatellites = 0;
  unsigned short numBiases = 0;
  Satellite satellites[kMaxSatellites];
  Bias biases[kMaxBiases];  // satellite by satellite
};

// A message that is not decoded, or that failed: its number and its payload, which is part of the frame.
struct Rtcm3Payload {
  unsigned short message = 0;
  const unsigned char* data = nullptr;
  std::size_t size = 0;
};

// The contents of one frame. `std::monostate`: there was no frame.
using Rtcm3Record = std::variant<std::monostate, Rtcm3Payload, Rtcm3Station, Rtcm3Antenna, Rtcm3SystemParameters,
                                 Rtcm3Message, Rtcm3GlonassBiases, Rtcm3Residuals, Rtcm3Observations,
                                 Rtcm3KeplerEphemeris, Rtcm3PvaEphemeris, Rtcm3Ssr>;

}  // namespace velagnss

#endif  // VELAGNSS_RTCM3_RTCM3_RECORDS_H
