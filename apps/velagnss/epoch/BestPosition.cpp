#include "apps/velagnss/epoch/BestPosition.h"

#include <algorithm>
#include <iterator>

namespace Host {
namespace {

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

void FillAll(S_Position& point, const S_Position& other) {
  Fill(point.altitude, other.altitude);
  Fill(point.geoidSeparation, other.geoidSeparation);
  Fill(point.hdop, other.hdop);
  Fill(point.speedKnots, other.speedKnots);
  Fill(point.courseTrue, other.courseTrue);
  Fill(point.satellites, other.satellites);
  if (point.fix == eNmeaModeEmpty) point.fix = other.fix;
}

template <class Record>
S_PositionReport PositionOf(const Record& record, eNmeaModeIndicator fix) {
  const bool hasFix = IsFix(fix) && IsWithin(record.latitude, 90) && IsWithin(record.longitude, 180);
  S_PositionReport report{hasFix, {}};
  report.position.latitude = record.latitude;
  report.position.longitude = record.longitude;
  report.position.fix = fix;
  return report;
}

template <class Record>
S_PositionReport HeightOf(const Record& record, eNmeaModeIndicator fix) {
  S_PositionReport report = PositionOf(record, fix);
  report.position.altitude = record.altitude;
  report.position.geoidSeparation = record.geoidSeparation;
  report.position.hdop = record.hdop;
  report.position.satellites = record.satellites;
  return report;
}

S_PositionReport FromGga(const S_GGA_Data& gga) { return HeightOf(gga, FixOfQuality(gga.quality)); }

S_PositionReport FromGns(const S_GNS_Data& gns) { return HeightOf(gns, BestOf(gns.mode)); }

S_PositionReport FromRmc(const S_RMC_Data& rmc) {
  const bool isVoid = rmc.status >= eNmeaRmcNotValid;
  S_PositionReport report = PositionOf(rmc, isVoid ? eNmeaModeNotValid : rmc.mode);
  report.position.speedKnots = rmc.speedKnots;
  report.position.courseTrue = rmc.courseTrue;
  return report;
}

// Only for epochs whose position comes with another sentence. Either unit may be missing.
S_Position FromVtg(const S_VTG_Data& vtg) {
  constexpr double kKmhPerKnot = 1.852;
  S_Position point;
  if (!IsFix(vtg.mode)) return point;
  point.speedKnots =
      IsNotAvailable(vtg.speedKnots) && !IsNotAvailable(vtg.speedKmh) ? vtg.speedKmh / kKmhPerKnot : vtg.speedKnots;
  point.courseTrue = vtg.courseTrue;
  return point;
}

// A GLL of the first versions of the standard has no status.
S_PositionReport FromGll(const S_GLL_Data& gll) {
  const bool isVoid = gll.status >= eNmeaGllNotValid && gll.status != eNmeaGllEmpty;
  return PositionOf(gll, isVoid ? eNmeaModeNotValid : gll.mode);
}

}  // namespace

std::optional<C_BestPosition::eSource> C_BestPosition::SourceOf(const velagnss::Record& record) {
  if (std::holds_alternative<S_GGA_Data>(record)) return eSource::Gga;
  if (std::holds_alternative<S_GNS_Data>(record)) return eSource::Gns;
  if (std::holds_alternative<S_RMC_Data>(record)) return eSource::Rmc;
  if (std::holds_alternative<S_GLL_Data>(record)) return eSource::Gll;
  return std::nullopt;
}

void C_BestPosition::Take(const velagnss::Record& record) {
  if (const auto* gga = std::get_if<S_GGA_Data>(&record)) return Keep(eSource::Gga, FromGga(*gga));
  if (const auto* gns = std::get_if<S_GNS_Data>(&record)) return Keep(eSource::Gns, FromGns(*gns));
  if (const auto* rmc = std::get_if<S_RMC_Data>(&record)) return Keep(eSource::Rmc, FromRmc(*rmc));
  if (const auto* gll = std::get_if<S_GLL_Data>(&record)) return Keep(eSource::Gll, FromGll(*gll));
  if (const auto* vtg = std::get_if<S_VTG_Data>(&record)) m_velocity = FromVtg(*vtg);
}

void C_BestPosition::Keep(eSource source, const S_PositionReport& report) {
  std::optional<S_PositionReport>& kept = m_reports[source];
  if (!kept || !kept->hasFix) kept = report;
}

bool C_BestPosition::IsEmpty() const {
  return std::none_of(m_reports.begin(), m_reports.end(), [](const auto& report) { return report.has_value(); });
}

std::optional<S_Position> C_BestPosition::Best() const {
  std::optional<S_Position> best;
  for (const std::optional<S_PositionReport>& report : m_reports) {
    if (!report || !report->hasFix) continue;
    if (best)
      FillAll(*best, report->position);
    else
      best = report->position;
  }
  if (best) FillAll(*best, m_velocity);
  return best;
}

}  // namespace Host
