#include "apps/velagnss/account/PointReport.h"

#include <cmath>
#include <utility>

#include "apps/velagnss/pipeline/Ephemerides.h"
#include "apps/velagnss/text/Units.h"
#include "geo/NotAvailable.h"
#include "geo/PointCoordinate.h"

namespace Host {
namespace {

constexpr std::size_t kMaxWaiting = 1024;  // epochs

S_PointStation StationOf(const velagnss::Rtcm3Station& record) {
  C_PointCoordinate point(C_PointCoordinate::COORD_CARTESIAN, record.x, record.y, record.z);
  point.ConvertToAllInternal();
  const C_Vector3& geodetic = point.Geodetic();
  return {record.station, point.Cartesian(), geodetic.X(), geodetic.Y(), geodetic.Z()};
}

}  // namespace

void C_PointReport::BeginInput(const std::string&) {
  t_ErrorSink* const sink = m_errorSink;
  *this = C_PointReport();
  m_errorSink = sink;
  m_engine = std::make_unique<S_Engine>();
}

void C_PointReport::OnFrame(const S_FrameRecord& record) {
  m_offset = record.frame.offset;
  m_clock = &record.clock;
  const velagnss::Record& contents = record.decoded.record;
  NoteEphemeris(m_engine->ephemerides, record.decoded);
  if (const auto* station = std::get_if<velagnss::Rtcm3Station>(&contents)) Note(*station);
  if (const auto* observations = std::get_if<velagnss::Rtcm3Observations>(&contents))
    Wait(m_engine->epochs.Note(*observations));
}

void C_PointReport::EndBlock() {
  if (m_errorSink != nullptr) m_errorSink->EndMaking();
}

void C_PointReport::EndInput(const S_InputEnd& end) {
  m_offset = t_ErrorSink::kEnd;
  m_clock = &end.clock;
  Wait(m_engine->epochs.Flush());
  while (!m_waiting.empty()) SolveOldest();
  m_engine.reset();
}

void C_PointReport::Note(const velagnss::Rtcm3Station& station) {
  if (!IsNotAvailable(station.x)) m_stations.insert_or_assign(station.station, StationOf(station));
}

// Positions of several stations have no mean.
void C_PointReport::Wait(const velagnss::PointEpoch* epoch) {
  if (epoch == nullptr) return;
  if (!m_stationNumber) m_stationNumber = epoch->station;
  if (epoch->station != *m_stationNumber) {
    ++m_otherStations;
    return;
  }
  ++m_epochs;
  m_waiting.push_back({*epoch, {epoch->satellites, epoch->satellites + epoch->numSatellites}});
  if (m_waiting.size() > kMaxWaiting) SolveOldest();
}

void C_PointReport::SolveOldest() {
  S_Waiting& oldest = m_waiting.front();
  oldest.epoch.satellites = oldest.satellites.data();
  if (const auto known = m_stations.find(*m_stationNumber); known != m_stations.end()) m_station = known->second;
  NoteSolution(oldest.epoch.time, m_engine->solver.Solve(oldest.epoch, m_engine->ephemerides));
  m_waiting.pop_front();
}

void C_PointReport::NoteSolution(const C_GnssTime& time, const velagnss::PointSolution& solution) {
  ++m_results[static_cast<std::size_t>(solution.result)];
  const bool isSolved = solution.result == velagnss::PointResult::Ok;
  for (std::size_t i = 0; i < solution.numSatellites; ++i) {
    const velagnss::PointSatellite& satellite = solution.satellites[i];
    S_PointSatellite& known = m_satellites[{satellite.system, satellite.svId}];
    ++known.epochs;
    const bool isUsed = satellite.use == velagnss::PointUse::Used;
    if (isSolved || !isUsed) ++known.uses[static_cast<std::size_t>(satellite.use)];
    if (!isSolved) continue;
    if (!IsNotAvailable(satellite.azimuth)) known.azimuth = satellite.azimuth;
    if (!IsNotAvailable(satellite.elevation)) known.elevation = satellite.elevation;
    if (!isUsed) continue;
    for (S_MeanSquare* residuals : {&known.residuals, &m_systems[satellite.system].residuals, &m_residuals})
      residuals->Add(satellite.residual);
  }
  if (!isSolved) return;
  for (auto& [system, known] : m_systems) {
    const velagnss::PointSystem& used = solution.systems[system];
    known.epochs += used.numUsed > 0 ? 1 : 0;
    known.ionosphereFree += used.numUsed > 0 && used.secondBand != '\0' ? 1 : 0;
    known.satellites += used.numUsed;
  }
  m_pdop.Add(solution.pdop);
  m_hdop.Add(solution.hdop);
  m_vdop.Add(solution.vdop);
  NotePosition(time, solution.position);
}

void C_PointReport::NotePosition(const C_GnssTime& time, const C_Vector3& position) {
  C_PointCoordinate point(C_PointCoordinate::COORD_CARTESIAN, position);
  point.ConvertToAllInternal();
  const C_Vector3& geodetic = point.Geodetic();
  m_positions.Add(geodetic.X() * kDegreesPerRadian, geodetic.Y() * kDegreesPerRadian, geodetic.Z(), 0);
  if (!m_station) return;
  C_PointCoordinate station(C_PointCoordinate::COORD_CARTESIAN, m_station->position);
  const C_Vector3 error = station.RangeLocal(position);
  m_errors.Add(error);
  m_errorSum += error;
  ++m_errorCount;
  if (m_errorSink != nullptr) m_errorSink->Make(m_offset, {time, error, *m_clock});
}

std::optional<S_PointErrors> C_PointReport::Errors() const {
  if (m_errorCount == 0) return std::nullopt;
  std::vector<double> horizontal;
  std::vector<double> vertical;
  for (const C_Vector3& error : m_errors.Kept()) {
    horizontal.push_back(error.Norm2());
    vertical.push_back(std::fabs(error.Z()));
  }
  C_Vector3 mean = m_errorSum;
  mean.Scale(1 / static_cast<double>(m_errorCount));
  return S_PointErrors{m_errorCount,
                       mean.X(),
                       mean.Y(),
                       mean.Z(),
                       Quantile(horizontal, 0.50),
                       Quantile(horizontal, 0.95),
                       Quantile(vertical, 0.50),
                       Quantile(vertical, 0.95)};
}

}  // namespace Host
