// How long after the time in it a message came.
#ifndef VELAGNSS_APPS_LATENCY_H
#define VELAGNSS_APPS_LATENCY_H

#include <optional>

#include "apps/velagnss/account/EvenSample.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"
#include "apps/velagnss/record/RecordClock.h"
#include "apps/velagnss/report/SeriesJson.h"

namespace Host {

// The time of the machine's clock when the last byte of the message came, minus the time in the message: of NMEA 0183
// sentences with a time of day and of RTCM 3 observations. An error of the machine's clock is part of it. As long as
// the stream has no date, the time in the message is taken to be the one nearest to its arrival.
class C_Latency {
 public:
  void Note(const S_FrameRecord& record, t_RecordTime arrival, const std::optional<S_TimeBin>& bin);

  // Null when the arrival of no message with a time was known.
  void Write(C_JsonWriter& json, const C_TimeBins& axis) const;

 private:
  S_ValueRange m_all;             // s
  C_EvenSample<double> m_sample;  // s
  C_Series m_series;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LATENCY_H
