// From the sentences of a stream to the points of a track: one per epoch, the best that the receiver said about it.
#ifndef VELAGNSS_APPS_TRACK_BUILDER_H
#define VELAGNSS_APPS_TRACK_BUILDER_H

#include <array>
#include <limits>
#include <optional>

#include "apps/velagnss/pipeline/StreamClock.h"
#include "apps/velagnss/text/TimeText.h"
#include "geo/NotAvailable.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {

// A position and what is known beside it; what is not is at its marker.
struct S_TrackPoint {
  bool startsSegment = false;  // no line leads here from the point before
  C_TimeText time;             // UTC; empty when no sentence told one
  bool isDated = false;        // `time` has a date; else it is a time of day
  double latitude = NA_DOUBLE;
  double longitude = NA_DOUBLE;  // -180 to 180
  double altitude = NA_DOUBLE;   // m above mean sea level
  double geoidSeparation = NA_DOUBLE;
  double hdop = NA_DOUBLE;
  double speedKnots = NA_DOUBLE;
  double courseTrue = NA_DOUBLE;
  unsigned char satellites = NA_U8;         // in use
  eNmeaModeIndicator fix = eNmeaModeEmpty;  // empty: there is one, of a kind that is not told
};

// What one sentence says.
struct S_TrackSolution {
  double timeOfDay;
  bool hasFix;
  S_TrackPoint point;
};

class C_TrackSink {
 public:
  virtual ~C_TrackSink() = default;
  virtual void OnPoint(const S_TrackPoint& point) = 0;
};

// Sentences of the same time of day are one epoch, and so is one without a time with those before it. Of an epoch the
// position comes from GGA, else GNS, else RMC, else GLL, the first with a fix; what that one does not tell is filled in
// from the next. The sentences of an epoch without any fix make no point: there a new segment of the track begins, as
// at the beginning of an input and where the time steps back. A sentence that is late by up to 10 s is left out.
class C_TrackBuilder {
 public:
  explicit C_TrackBuilder(C_TrackSink& sink) : m_sink(sink) {}

  // Takes a decoded sentence that `clock` has noted already; other types than the four are passed by.
  void Take(C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& record, const C_StreamClock& clock);

  // The end of an input.
  void Finish(const C_StreamClock& clock);

 private:
  static constexpr std::size_t kNumSources = 4;
  static constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();

  void Add(std::size_t source, const S_TrackSolution& solution, const C_StreamClock& clock);
  bool IsOfThisEpoch(std::size_t source, double timeOfDay) const;
  std::optional<S_TrackPoint> BestPoint() const;
  void CloseEpoch(const C_StreamClock& clock);

  C_TrackSink& m_sink;
  std::array<std::optional<S_TrackSolution>, kNumSources> m_solutions;  // of the epoch, by source
  double m_timeOfDay = kNoTime;                                         // of the epoch
  double m_seconds = kNoTime;                                           // the same on the clock's scale
  double m_latest = kNoTime;                                            // of any epoch, on the clock's scale
  bool m_isBroken = true;                                               // the next point starts a segment
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_BUILDER_H
