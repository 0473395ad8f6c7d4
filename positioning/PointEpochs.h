// From observation messages to the pseudoranges of whole epochs.
//
//   const velagnss::PointEpoch* before = epochs.Note(observations);  // null, or the epoch before
//   ...
//   const velagnss::PointEpoch* last = epochs.Flush();
#ifndef VELAGNSS_POSITIONING_POINT_EPOCHS_H
#define VELAGNSS_POSITIONING_POINT_EPOCHS_H

#include <cstddef>
#include <memory>

#include "geo/GnssTime.h"
#include "rtcm3/Rtcm3Records.h"
#include "velagnss_export.h"

namespace velagnss {

// A pseudorange.
struct PointRange {
  char code[3] = {};     // RINEX 3 band and attribute; empty: none
  double range = 0;      // m
  double frequency = 0;  // Hz
};

// The pseudoranges of a satellite on one or two frequencies.
struct PointRanges {
  ALGO::eGNSSSystem system = ALGO::GNSS_UNKNOWN;  // of the satellite
  unsigned char svId = NA_U8;                     // as in `Rtcm3Satellite`
  PointRange first;                               // see `PointEpochs`
  PointRange second;                              // likewise
};

// The pseudoranges of an epoch.
struct PointEpoch {
  C_GnssTime time;                          // GPS time; the week is NA_U16 as long as no date is known
  unsigned char leapSeconds = 0;            // GPS time - UTC, from a GLONASS message of the epoch; 18 without one
  unsigned short station = 0;               // reference station
  const PointRanges* satellites = nullptr;  // `numSatellites` of them
  std::size_t numSatellites = 0;            // at most `PointEpochs::kMaxSatellites`
};

// Collects the messages of an epoch and chooses two signals of each satellite:
//
//   GPS, QZSS   L1 C/A, else another code on L1, with L2, else L5
//   GLONASS     G1 C/A, else P, with G2
//   Galileo     E1 with E5a, else E5b, else E5
//   BeiDou      B1I with B3I, else B2I: the clock and group delays of the ephemerides belong to these
//   NavIC       L5 with S
//
// SBAS is left out. So are signals whose range is known only in part (MSM1 to MSM3 and the odd legacy messages) and
// epochs without a time. An epoch ends when a message has another time or station: many stations end each message, not
// each epoch, by `isMoreToCome`. Messages that differ by less than 5 ms belong together, the first one gives the time.
// Allocates memory in its constructor only and throws nothing later.
class VELAGNSS_API PointEpochs {
 public:
  static constexpr std::size_t kMaxSatellites = 128;  // of an epoch; more are left out

  PointEpochs();
  ~PointEpochs();
  PointEpochs(const PointEpochs&) = delete;
  PointEpochs& operator=(const PointEpochs&) = delete;

  // Takes a message. Returns the epoch that ended with it, valid until the next call; null if none did.
  const PointEpoch* Note(const Rtcm3Observations& observations);

  // Ends and returns the current epoch, valid until the next call; null if there is none.
  const PointEpoch* Flush();

 private:
  class VELAGNSS_NO_EXPORT Impl;
  std::unique_ptr<Impl> m_impl;
};

}  // namespace velagnss

#endif  // VELAGNSS_POSITIONING_POINT_EPOCHS_H
