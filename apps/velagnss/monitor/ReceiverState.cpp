#include "apps/velagnss/monitor/ReceiverState.h"

#include <algorithm>
#include <memory>

#include "apps/velagnss/text/Units.h"
#include "geo/PointCoordinate.h"

namespace Host {
namespace {

// More than a stream of corrections carries. One that carries more shows those that were heard last.
constexpr std::size_t kMaxStations = 64;

// Epochs of observations alone have nothing that only sentences say.
bool IsOfSentences(const S_Epoch& epoch) {
  return !epoch.station || epoch.hasPosition || epoch.fixType != '\0' || epoch.accuracy ||
         std::any_of(epoch.satellites.begin(), epoch.satellites.end(),
                     [](const S_EpochSatellite& satellite) { return !IsNotAvailable(satellite.nmeaId); });
}

S_SatelliteCounts CountsOf(const S_Epoch& epoch) {
  const std::vector<S_EpochSatellite>& satellites = epoch.satellites;
  S_SatelliteCounts counts;
  if (!satellites.empty()) counts.inView = static_cast<unsigned int>(satellites.size());
  const auto isUsed = [](const S_EpochSatellite& satellite) { return satellite.isUsed.value_or(false); };
  const auto saysSo = [](const S_EpochSatellite& satellite) { return satellite.isUsed.has_value(); };
  if (std::any_of(satellites.begin(), satellites.end(), saysSo))
    counts.used = static_cast<unsigned int>(std::count_if(satellites.begin(), satellites.end(), isUsed));
  else if (epoch.position && !IsNotAvailable(epoch.position->satellites))
    counts.used = epoch.position->satellites;
  return counts;
}

// Names are padded with blanks. A message without one leaves the earlier one.
void TakeText(const velagnss::Rtcm3Text& text, std::string& kept) {
  const std::string_view view = text.View().substr(0, text.View().find_last_not_of(' ') + 1);
  if (!view.empty()) kept = view;
}

}  // namespace

void C_ReceiverState::Take(const S_FrameRecord& record, double now) {
  m_now = now;
  m_epochs.Take(record);
  m_lastAt = now;
  if (const auto* station = std::get_if<velagnss::Rtcm3Station>(&record.decoded.record)) Take(*station);
  if (const auto* antenna = std::get_if<velagnss::Rtcm3Antenna>(&record.decoded.record)) Take(*antenna);
}

void C_ReceiverState::Finish(const velagnss::StreamClock& clock) { m_epochs.Finish(clock); }

// Stations of the same epoch come at once: they do not shorten the interval.
void C_ReceiverState::Take(const S_Epoch& epoch) {
  constexpr double kAtOnce = 0.05;  // s
  if (m_lastAt - m_epochAt > kAtOnce) m_interval = m_lastAt - m_epochAt;
  m_epochAt = m_lastAt;
  const auto kept = std::make_shared<const S_Epoch>(epoch);
  const bool isOfSentences = IsOfSentences(epoch);
  if (isOfSentences) TakeSentences(epoch, kept);
  if (epoch.station) TakeStation(*epoch.station, kept, isOfSentences);
}

void C_ReceiverState::TakeSentences(const S_Epoch& epoch, const t_EpochPointer& kept) {
  if (!epoch.satellites.empty()) Note(m_sentences, kept);
  if (epoch.position) Note(m_position, *epoch.position);
  if (epoch.position && !IsNotAvailable(epoch.position->speedKnots))
    Note(m_motion, {epoch.position->speedKnots, epoch.position->courseTrue});
  if (epoch.accuracy) Note(m_accuracy, *epoch.accuracy);
  if (epoch.hasPosition || epoch.fixType != '\0') TakeFix(epoch);
  if (!IsNotAvailable(epoch.pdop) || !IsNotAvailable(epoch.hdop) || !IsNotAvailable(epoch.vdop))
    Note(m_dops, {epoch.pdop, epoch.hdop, epoch.vdop});
  const S_SatelliteCounts counts = CountsOf(epoch);
  if (counts.used || counts.inView) Note(m_counts, counts);
}

void C_ReceiverState::TakeFix(const S_Epoch& epoch) {
  const eNmeaModeIndicator kind = epoch.position ? epoch.position->fix : eNmeaModeEmpty;
  Note(m_fix, {epoch.position.has_value(), kind, epoch.fixType});
}

void C_ReceiverState::TakeStation(const S_EpochStation& station, const t_EpochPointer& kept, bool isReceiver) {
  S_Station& entry = StationOf(station.number);
  entry.view.isReceiver = isReceiver;
  Note(entry.epoch, kept);
}

void C_ReceiverState::Take(const velagnss::Rtcm3Station& record) {
  S_StationView& view = StationOf(record.station).view;
  if (IsNotAvailable(record.x)) return;
  C_PointCoordinate point(C_PointCoordinate::COORD_CARTESIAN, record.x, record.y, record.z);
  point.ConvertToAllInternal();
  const C_Vector3& geodetic = point.Geodetic();
  view.latitude = geodetic.X() * kDegreesPerRadian;
  view.longitude = geodetic.Y() * kDegreesPerRadian;
  view.height = geodetic.Z();
}

void C_ReceiverState::Take(const velagnss::Rtcm3Antenna& record) {
  S_StationView& view = StationOf(record.station).view;
  TakeText(record.receiver, view.receiver);
  TakeText(record.antenna, view.antenna);
}

C_ReceiverState::S_Station& C_ReceiverState::StationOf(unsigned short number) {
  auto at = std::find_if(m_stations.begin(), m_stations.end(),
                         [number](const S_Station& station) { return station.view.number >= number; });
  if (at == m_stations.end() || at->view.number != number) {
    if (m_stations.size() >= kMaxStations) {
      const auto oldest = std::min_element(m_stations.begin(), m_stations.end(),
                                           [](const auto& a, const auto& b) { return a.lastAt < b.lastAt; });
      m_stations.erase(oldest);
      return StationOf(number);
    }
    S_Station station{};
    station.view.number = number;
    at = m_stations.insert(at, station);
  }
  at->lastAt = m_now;
  return *at;
}

void C_ReceiverState::Show(S_SourceView& view, const S_AgeClock& clock) const {
  view.position = Aged(m_position, clock);
  view.motion = Aged(m_motion, clock);
  view.fix = Aged(m_fix, clock);
  view.dops = Aged(m_dops, clock);
  view.counts = Aged(m_counts, clock);
  view.accuracy = Aged(m_accuracy, clock);
  view.sentences = Aged(m_sentences, clock);
  for (const S_Station& station : m_stations) {
    view.stations.push_back(station.view);
    view.stations.back().epoch = Aged(station.epoch, clock);
  }
}

}  // namespace Host
