#include "apps/velagnss/report/Latency.h"

#include <cmath>

#include "apps/velagnss/account/PositionSummary.h"
#include "apps/velagnss/pipeline/RecordTime.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Units.h"

namespace Host {
namespace {

using velagnss::StreamClock;

// Without seconds: the message carries no time.
StreamClock::Utc TimeIn(const S_FrameRecord& record) {
  if (std::holds_alternative<velagnss::Rtcm3Observations>(record.decoded.record))
    return record.clock.UtcOf(record.clock.Seconds());
  const double timeOfDay = TimeOfDayOf(record.decoded.record);
  return IsNotAvailable(timeOfDay) ? StreamClock::Utc{{}, kNotKnown} : record.clock.UtcOfTimeOfDay(timeOfDay);
}

// Since the beginning of MJD 0. Neither the machine's clock nor a day of 86400 s knows leap seconds.
double SecondsOf(t_RecordTime time) {
  constexpr std::chrono::sys_days kMjd0 = std::chrono::year(1858) / 11 / 17;
  return std::chrono::duration<double>(time - kMjd0).count();
}

}  // namespace

void C_Latency::Note(const S_FrameRecord& record, t_RecordTime arrival, const std::optional<S_TimeBin>& bin) {
  const StreamClock::Utc sent = TimeIn(record);
  const double day = static_cast<double>(sent.mjd.value_or(0)) * kSecondsPerDay;
  const double latency = SecondsOf(arrival) - day - sent.secondsOfDay;
  if (!std::isfinite(latency)) return;
  const double seconds = sent.mjd ? latency : std::remainder(latency, kSecondsPerDay);
  m_all.Add(seconds);
  m_sample.Add(seconds);
  m_series.Add(bin, seconds);
}

void C_Latency::Write(C_JsonWriter& json, const C_TimeBins& axis) const {
  json.Key("latency");
  if (m_all.count == 0) return json.Null();
  constexpr unsigned int kDecimals = 3;
  const auto write = [&json](std::string_view key, double seconds) { WriteRounded(json.Key(key), seconds, kDecimals); };
  std::vector<double> values = m_sample.Kept();
  json.BeginObject();
  json.Key("count").Integer(m_all.count);
  write("mean_s", m_all.Mean());
  write("min_s", m_all.min);
  write("p50_s", Quantile(values, 0.5));
  write("p90_s", Quantile(values, 0.9));
  write("p99_s", Quantile(values, 0.99));
  write("max_s", m_all.max);
  WriteSeries(json.Key("series"), m_series, axis, kDecimals);
  json.EndObject();
}

}  // namespace Host
