// From the sentences of a stream to the points of a track: one per epoch, the best position that the receiver sent.
#ifndef VELAGNSS_APPS_TRACK_BUILDER_H
#define VELAGNSS_APPS_TRACK_BUILDER_H

#include <limits>

#include "apps/velagnss/epoch/BestPosition.h"
#include "apps/velagnss/text/TimeText.h"
#include "stream/Record.h"
#include "stream/StreamClock.h"

namespace Host {

// A point of a track.
struct S_TrackPoint : S_Position {
  bool startsSegment = false;  // not connected to the point before
  C_TimeText time = {};        // UTC; empty when no sentence carried one
  bool isDated = false;        // `time` has a date; otherwise it is a time of day
};

class C_TrackSink {
 public:
  virtual ~C_TrackSink() = default;
  virtual void OnPoint(const S_TrackPoint& point) = 0;
};

// Sentences with the same time of day form one epoch, and one without a time belongs to those before it. The position
// of an epoch is its best one. An epoch without any fix makes no point, and a new segment of the track begins after it,
// as at the beginning of an input and where the time steps back. A sentence that is late by up to 10 s is left out.
class C_TrackBuilder {
 public:
  explicit C_TrackBuilder(C_TrackSink& sink) : m_sink(sink) {}

  // Takes one of the sentences, which `clock` has noted already, and ignores every other record.
  void Take(const velagnss::Record& record, const velagnss::StreamClock& clock);

  // The end of an input.
  void Finish(const velagnss::StreamClock& clock);

 private:
  static constexpr double kNoTime = std::numeric_limits<double>::quiet_NaN();

  bool IsTimely(C_BestPosition::eSource source, double time, const velagnss::StreamClock& clock);
  bool IsOfThisEpoch(C_BestPosition::eSource source, double timeOfDay) const;
  void CloseEpoch(const velagnss::StreamClock& clock);

  C_TrackSink& m_sink;
  C_BestPosition m_position;     // of the epoch
  double m_timeOfDay = kNoTime;  // of the epoch
  double m_seconds = kNoTime;    // the same on the clock's scale
  double m_latest = kNoTime;     // of any epoch, on the clock's scale
  bool m_isBroken = true;        // the next point starts a segment
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TRACK_BUILDER_H
