// From the sentences of a stream to the points of a track: one per epoch, the best position that the receiver sent.
#ifndef VELAGNSS_APPS_TRACK_BUILDER_H
#define VELAGNSS_APPS_TRACK_BUILDER_H

#include <array>
#include <limits>
#include <optional>

#include "apps/velagnss/text/TimeText.h"
#include "geo/NotAvailable.h"
#include "stream/Record.h"
#include "stream/StreamClock.h"

namespace Host {

// A position and what else is known of it; what is not known is at its marker.
struct S_TrackPoint {
  bool startsSegment = false;  // not connected to the point before
  C_TimeText time;             // UTC; empty when no sentence carried one
  bool isDated = false;        // `time` has a date; otherwise it is a time of day
  double latitude = NA_DOUBLE;
  double longitude = NA_DOUBLE;  // -180 to 180
  double altitude = NA_DOUBLE;   // m above mean sea level
  double geoidSeparation = NA_DOUBLE;
  double hdop = NA_DOUBLE;
  double speedKnots = NA_DOUBLE;
  double courseTrue = NA_DOUBLE;
  unsigned char satellites = NA_U8;         // in use
  eNmeaModeIndicator fix = eNmeaModeEmpty;  // empty: there is a fix of an unknown kind
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

// Sentences with the same time of day form one epoch, and one without a time belongs to those before it. The position
// of an epoch comes from the first of GGA, GNS, RMC and GLL that has a fix; values that it lacks are filled in from the
// next, speed and course also from VTG. An epoch without any fix makes no point, and a new segment of the track begins
// after it, as at the beginning of an input and where the time steps back. A sentence that is late by up to 10 s is
// left out.
class C_TrackBuilder {
 public:
  explicit C_TrackBuilder(C_TrackSink& sink) : m_sink(sink) {}

  // Takes one of the sentences, which `clock` has noted already, and ignores every other record.
  void Take(const velagnss::Record& record, const velagnss::StreamClock& clock);

  // The end of an input.
  void Finish(const velagnss::StreamClock& clock);

 private:
  enum eSource { Gga, Gns, Rmc, Gll, kNumSources };  // the best first
  static constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();

  void Add(eSource source, const S_TrackSolution& solution, const velagnss::StreamClock& clock);
  bool IsOfThisEpoch(eSource source, double timeOfDay) const;
  std::optional<S_TrackPoint> BestPoint() const;
  void CloseEpoch(const velagnss::StreamClock& clock);

  C_TrackSink& m_sink;
  std::array<std::optional<S_TrackSolution>, kNumSources> m_solutions;  // of the epoch, by source
  S_TrackPoint m_velocity;                                              // of the epoch, from VTG
  double m_timeOfDay = kNoTime;                                         // of the epoch
  double m_seconds = kNoTime;                                           // the same on the clock's scale
  double m_latest = kNoTime;                                            // of any epoch, on the clock's scale
  bool m_isBroken = true;                                               // the next point starts a segment
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_BUILDER_H
