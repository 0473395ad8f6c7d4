// Signals of the satellite systems: RINEX codes, carrier frequencies, and the numbers by which messages name them.
//
// Internal. Sources: RTCM 10403, tables of the MSM signal masks; RINEX 3.05, tables 4 to 10; IGS SSR 1.00 for the
// numbers of code biases.
#ifndef VELAGNSS_RTCM3_SIGNALS_H
#define VELAGNSS_RTCM3_SIGNALS_H

#include "geo/GnssEnums.h"

namespace velagnss::rtcm3 {

inline constexpr unsigned int kSystems = 7;      // `ALGO::eGNSSSystem` 0 to 6, NavIC being 6
inline constexpr unsigned int kMsmSignals = 32;  // numbered from 1
inline constexpr unsigned int kSsrSignals = 32;  // numbered from 0

// Carriers are in kilohertz: all are multiples of a half, so phases in cycles need a single rounding.
struct Signal {
  char code[3] = {};  // empty: not a known signal
  unsigned char frequency = ALGO::FREQ_UNKNOWN;
  unsigned char trackType = ALGO::TRACK_UNKNOWN;
  double kilohertz = 0;            // 0: not known
  double kilohertzPerChannel = 0;  // GLONASS
};

// The signal that 1001 to 1004 and 1009 to 1012 mean by a carrier, 0 or 1, and a code indicator, 0 to 3; the system is
// GPS, GLONASS, or SBAS.
const Signal& LegacySignal(ALGO::eGNSSSystem system, unsigned int carrier, unsigned int indicator);

// Signal `number`, 1 to 32, of an MSM.
const Signal& MsmSignal(ALGO::eGNSSSystem system, unsigned int number);

// RINEX code of signal `number`, 0 to 31, of a code bias; empty if it is not known.
const char* SsrCode(ALGO::eGNSSSystem system, unsigned int number);

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_SIGNALS_H
