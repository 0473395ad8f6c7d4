#include "apps/velagnss/account/PositionSummary.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "apps/velagnss/text/Units.h"
#include "geo/Geodesy.h"
#include "geo/NotAvailable.h"
#include "geo/PointCoordinate.h"

namespace Host {
namespace {

constexpr double kLeastRadius = 500e3;     // m: a mean nearer to the Earth's center has no position on the ellipsoid
constexpr double kGreatestAltitude = 1e9;  // m: no receiver is beyond the Moon

// Quality of GGA (NMEA 0183): single, differential, precise, RTK, RTK float. 6 is dead reckoning, 7 manual, 8
// simulated.
bool IsFix(const S_GGA_Data& gga) { return gga.quality >= 1 && gga.quality <= 5; }

bool IsFix(const S_GNS_Data& gns) {
  return std::any_of(std::begin(gns.mode), std::end(gns.mode),
                     [](eNmeaModeIndicator mode) { return mode >= eNmeaModeAutonomous && mode <= eNmeaModeRtkFloat; });
}

bool IsFix(const S_RMC_Data& rmc) { return rmc.status < eNmeaRmcNotValid; }
bool IsFix(const S_GLL_Data& gll) { return gll.status < eNmeaGllNotValid || gll.status == eNmeaGllEmpty; }

// The marker of a missing value is outside as well.
bool IsWithin(double value, double limit) { return value >= -limit && value <= limit; }

}  // namespace

void C_PositionSummary::Note(const velagnss::Record& record) {
  const auto add = [&](const auto& fix) {
    NoteReason(fix);
    if (IsFix(fix) && IsNewEpoch(fix.timeOfDay)) Add(fix.latitude, fix.longitude, fix.altitude, fix.geoidSeparation);
  };
  if (const auto* gga = std::get_if<S_GGA_Data>(&record)) add(*gga);
  if (const auto* gns = std::get_if<S_GNS_Data>(&record)) add(*gns);
  if (const auto* rmc = std::get_if<S_RMC_Data>(&record)) NoteReason(*rmc);
  if (const auto* gll = std::get_if<S_GLL_Data>(&record)) NoteReason(*gll);
}

template <class Sentence>
void C_PositionSummary::NoteReason(const Sentence& sentence) {
  if (!IsWithin(sentence.latitude, 90) || !IsWithin(sentence.longitude, 180)) return;
  m_reason = std::max(m_reason, IsFix(sentence) ? eNoPosition::NoAltitude : eNoPosition::NoFix);
}

// Fixes without a time are all taken as different ones.
bool C_PositionSummary::IsNewEpoch(double timeOfDay) {
  if (IsNotAvailable(timeOfDay)) return true;
  const bool isNew = m_timeOfDay != timeOfDay;
  m_timeOfDay = timeOfDay;
  return isNew;
}

// Mean and products are updated with each fix (Welford, Technometrics 4, 1962): in sums of squares of coordinates the
// Earth's radius would swamp the millimeters of the spread.
void C_PositionSummary::Add(double latitude, double longitude, double altitude, double separation) {
  if (!IsWithin(latitude, 90) || !IsWithin(longitude, 180) || !IsWithin(altitude, kGreatestAltitude)) return;
  const bool hasSeparation = IsWithin(separation, kGreatestAltitude);
  C_PointCoordinate point(C_PointCoordinate::COORD_GEODETIC, latitude * kRadiansPerDegree,
                          longitude * kRadiansPerDegree, altitude + (hasSeparation ? separation : 0));
  point.ConvertToAllInternal();
  ++m_count;
  C_Vector3 step = point.Cartesian() - m_mean;
  const C_Vector3 before = step;
  step.Scale(1 / static_cast<double>(m_count));
  m_mean += step;
  const C_Vector3 after = point.Cartesian() - m_mean;
  const double products[] = {before.X() * after.X(), before.Y() * after.Y(), before.Z() * after.Z(),
                             before.X() * after.Y(), before.X() * after.Z(), before.Y() * after.Z()};
  for (std::size_t i = 0; i < m_products.size(); ++i) m_products[i] += products[i];
  m_meanAltitude += (altitude - m_meanAltitude) / static_cast<double>(m_count);
  m_hasHeight = m_hasHeight && hasSeparation;
  m_kept.Add(point.Cartesian());
}

std::optional<S_PositionSummary> C_PositionSummary::Summary() const {
  if (m_count == 0) return std::nullopt;
  if (m_mean.Norm() < kLeastRadius) return S_PositionSummary{m_count, kNotKnown, kNotKnown, kNotKnown, m_meanAltitude};
  C_PointCoordinate mean(C_PointCoordinate::COORD_CARTESIAN, m_mean);
  mean.ConvertToAllInternal();
  const C_Vector3& geodetic = mean.Geodetic();
  S_PositionSummary summary{m_count, geodetic.X(), geodetic.Y(), m_hasHeight ? geodetic.Z() : kNotKnown,
                            m_meanAltitude};
  std::array<double, 6> local{};
  ALGO::CovEcefToLocal(geodetic.X(), geodetic.Y(), geodetic.Z(), m_products.data(), local.data());
  const auto spread = [&](double squares) { return std::sqrt(std::max(squares, 0.0) / static_cast<double>(m_count)); };
  summary.spreadNorth = spread(local[0]);
  summary.spreadEast = spread(local[1]);
  summary.spreadUp = spread(local[2]);
  SetRadii(summary);
  return summary;
}

void C_PositionSummary::SetRadii(S_PositionSummary& summary) const {
  C_PointCoordinate mean(C_PointCoordinate::COORD_CARTESIAN, m_mean);
  std::vector<double> distances;
  distances.reserve(m_kept.Kept().size());
  for (const C_Vector3& position : m_kept.Kept()) distances.push_back(mean.RangeLocal(position).Norm2());
  summary.radius50 = Quantile(distances, 0.50);
  summary.radius95 = Quantile(distances, 0.95);
}

}  // namespace Host
