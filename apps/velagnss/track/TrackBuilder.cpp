#include "apps/velagnss/track/TrackBuilder.h"

#include <cmath>

#include "apps/velagnss/pipeline/RecordTime.h"

namespace Host {
namespace {

constexpr double kMaxLate = 10;  // s

}  // namespace

void C_TrackBuilder::Take(const velagnss::Record& record, const velagnss::StreamClock& clock) {
  const std::optional<C_BestPosition::eSource> source = C_BestPosition::SourceOf(record);
  if (!source || IsTimely(*source, TimeOfDayOf(record), clock)) m_position.Take(record);
}

// Begins a new epoch where there is one; false for a sentence that is late.
bool C_TrackBuilder::IsTimely(C_BestPosition::eSource source, double time, const velagnss::StreamClock& clock) {
  const double timeOfDay = velagnss::StreamClock::IsTimeOfDay(time) ? time : kNoTime;
  if (!IsOfThisEpoch(source, timeOfDay)) {
    const double stepBack = m_latest - clock.Seconds();
    if (!std::isnan(timeOfDay) && stepBack > 0 && stepBack <= kMaxLate) return false;
    CloseEpoch(clock);
    m_isBroken = m_isBroken || stepBack > kMaxLate;
  }
  if (!std::isnan(timeOfDay)) {
    m_timeOfDay = timeOfDay;
    m_seconds = m_latest = clock.Seconds();
  }
  return true;
}

bool C_TrackBuilder::IsOfThisEpoch(C_BestPosition::eSource source, double timeOfDay) const {
  if (std::isnan(timeOfDay) || std::isnan(m_timeOfDay)) return !m_position.Has(source);
  return timeOfDay == m_timeOfDay;
}

void C_TrackBuilder::CloseEpoch(const velagnss::StreamClock& clock) {
  const std::optional<S_Position> best = m_position.Best();
  if (best) {
    S_TrackPoint point{*best, m_isBroken, C_TimeText::StreamTime(clock, m_seconds)};
    point.isDated = clock.UtcOf(m_seconds).mjd.has_value();
    m_sink.OnPoint(point);
  }
  m_isBroken = !best && (m_isBroken || !m_position.IsEmpty());
  m_position = {};
  m_timeOfDay = m_seconds = kNoTime;
}

void C_TrackBuilder::Finish(const velagnss::StreamClock& clock) {
  CloseEpoch(clock);
  m_latest = kNoTime;
  m_isBroken = true;
}

}  // namespace Host
