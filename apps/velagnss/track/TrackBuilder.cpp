#include "apps/velagnss/track/TrackBuilder.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace Host {
namespace {

constexpr double kMaxLate = 10;  // s

// A combined solution counts as the fix of its best system.
constexpr eNmeaModeIndicator kBestFirst[] = {
    eNmeaModeRtk,        eNmeaModeRtkFloat,  eNmeaModePrecise, eNmeaModeDifferential,
    eNmeaModeAutonomous, eNmeaModeEstimated, eNmeaModeManual,  eNmeaModeSimulator,
};

// The qualities of GGA have the numbers of the mode indicators; greater ones are fixes of an unknown kind.
eNmeaModeIndicator FixOfQuality(unsigned int quality) {
  return quality <= eNmeaModeSimulator ? static_cast<eNmeaModeIndicator>(quality) : eNmeaModeEmpty;
}

eNmeaModeIndicator BestOf(const eNmeaModeIndicator (&modes)[6]) {
  for (const eNmeaModeIndicator mode : kBestFirst)
    if (std::find(std::begin(modes), std::end(modes), mode) != std::end(modes)) return mode;
  return modes[0];
}

bool IsFix(eNmeaModeIndicator mode) { return mode != eNmeaModeNotValid && mode != eNmeaModeReserved9; }

bool IsWithin(double value, double limit) { return value >= -limit && value <= limit; }

// Fills in what is still missing from a further sentence.
template <class Value>
void Fill(Value& value, const Value& other) {
  if (IsNotAvailable(value)) value = other;
}

void FillAll(S_TrackPoint& point, const S_TrackPoint& other) {
  Fill(point.altitude, other.altitude);
  Fill(point.geoidSeparation, other.geoidSeparation);
  Fill(point.hdop, other.hdop);
  Fill(point.speedKnots, other.speedKnots);
  Fill(point.courseTrue, other.courseTrue);
  Fill(point.satellites, other.satellites);
  if (point.fix == eNmeaModeEmpty) point.fix = other.fix;
}

template <class Record>
S_TrackSolution PositionOf(const Record& record, eNmeaModeIndicator fix) {
  const bool hasFix = IsFix(fix) && IsWithin(record.latitude, 90) && IsWithin(record.longitude, 180);
  S_TrackSolution solution{record.timeOfDay, hasFix, {}};
  solution.point.latitude = record.latitude;
  solution.point.longitude = record.longitude;
  solution.point.fix = fix;
  return solution;
}

template <class Record>
S_TrackSolution HeightOf(const Record& record, eNmeaModeIndicator fix) {
  S_TrackSolution solution = PositionOf(record, fix);
  solution.point.altitude = record.altitude;
  solution.point.geoidSeparation = record.geoidSeparation;
  solution.point.hdop = record.hdop;
  solution.point.satellites = record.satellites;
  return solution;
}

S_TrackSolution FromGga(const S_GGA_Data& gga) { return HeightOf(gga, FixOfQuality(gga.quality)); }

S_TrackSolution FromGns(const S_GNS_Data& gns) { return HeightOf(gns, BestOf(gns.mode)); }

S_TrackSolution FromRmc(const S_RMC_Data& rmc) {
  const bool isVoid = rmc.status >= eNmeaRmcNotValid;
  S_TrackSolution solution = PositionOf(rmc, isVoid ? eNmeaModeNotValid : rmc.mode);
  solution.point.speedKnots = rmc.speedKnots;
  solution.point.courseTrue = rmc.courseTrue;
  return solution;
}

// Only for epochs whose position comes with another sentence. Either unit may be missing.
S_TrackPoint FromVtg(const S_VTG_Data& vtg) {
  constexpr double kKmhPerKnot = 1.852;
  S_TrackPoint point;
  if (!IsFix(vtg.mode)) return point;
  point.speedKnots =
      IsNotAvailable(vtg.speedKnots) && !IsNotAvailable(vtg.speedKmh) ? vtg.speedKmh / kKmhPerKnot : vtg.speedKnots;
  point.courseTrue = vtg.courseTrue;
  return point;
}

// A GLL of the first versions of the standard has no status.
S_TrackSolution FromGll(const S_GLL_Data& gll) {
  const bool isVoid = gll.status >= eNmeaGllNotValid && gll.status != eNmeaGllEmpty;
  return PositionOf(gll, isVoid ? eNmeaModeNotValid : gll.mode);
}

}  // namespace

void C_TrackBuilder::Take(const velagnss::Record& record, const velagnss::StreamClock& clock) {
  if (const auto* gga = std::get_if<S_GGA_Data>(&record)) return Add(eSource::Gga, FromGga(*gga), clock);
  if (const auto* gns = std::get_if<S_GNS_Data>(&record)) return Add(eSource::Gns, FromGns(*gns), clock);
  if (const auto* rmc = std::get_if<S_RMC_Data>(&record)) return Add(eSource::Rmc, FromRmc(*rmc), clock);
  if (const auto* gll = std::get_if<S_GLL_Data>(&record)) return Add(eSource::Gll, FromGll(*gll), clock);
  if (const auto* vtg = std::get_if<S_VTG_Data>(&record)) m_velocity = FromVtg(*vtg);
}

void C_TrackBuilder::Add(eSource source, const S_TrackSolution& solution, const velagnss::StreamClock& clock) {
  const double timeOfDay = velagnss::StreamClock::IsTimeOfDay(solution.timeOfDay) ? solution.timeOfDay : kNoTime;
  if (!IsOfThisEpoch(source, timeOfDay)) {
    const double stepBack = m_latest - clock.Seconds();
    if (!std::isnan(timeOfDay) && stepBack > 0 && stepBack <= kMaxLate) return;
    CloseEpoch(clock);
    m_isBroken = m_isBroken || stepBack > kMaxLate;
  }
  if (!std::isnan(timeOfDay)) {
    m_timeOfDay = timeOfDay;
    m_seconds = m_latest = clock.Seconds();
  }
  std::optional<S_TrackSolution>& kept = m_solutions[source];
  if (!kept || !kept->hasFix) kept = solution;
}

bool C_TrackBuilder::IsOfThisEpoch(eSource source, double timeOfDay) const {
  if (std::isnan(timeOfDay) || std::isnan(m_timeOfDay)) return !m_solutions[source];
  return timeOfDay == m_timeOfDay;
}

std::optional<S_TrackPoint> C_TrackBuilder::BestPoint() const {
  std::optional<S_TrackPoint> best;
  for (const std::optional<S_TrackSolution>& solution : m_solutions) {
    if (!solution || !solution->hasFix) continue;
    if (best)
      FillAll(*best, solution->point);
    else
      best = solution->point;
  }
  if (best) FillAll(*best, m_velocity);
  return best;
}

void C_TrackBuilder::CloseEpoch(const velagnss::StreamClock& clock) {
  std::optional<S_TrackPoint> point = BestPoint();
  if (point) {
    point->startsSegment = m_isBroken;
    point->time = C_TimeText::StreamTime(clock, m_seconds);
    point->isDated = clock.KnowsDate() && !point->time.IsEmpty();
    m_sink.OnPoint(*point);
  }
  const bool wasEmpty =
      std::none_of(m_solutions.begin(), m_solutions.end(), [](const auto& s) { return s.has_value(); });
  m_isBroken = !point && (m_isBroken || !wasEmpty);
  m_solutions = {};
  m_velocity = {};
  m_timeOfDay = m_seconds = kNoTime;
}

void C_TrackBuilder::Finish(const velagnss::StreamClock& clock) {
  CloseEpoch(clock);
  m_latest = kNoTime;
  m_isBroken = true;
}

}  // namespace Host
