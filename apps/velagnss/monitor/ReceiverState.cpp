#include "apps/velagnss/monitor/ReceiverState.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <memory>
#include <utility>

#include "apps/velagnss/text/Units.h"
#include "geo/PointCoordinate.h"

namespace Host {
namespace {

// More than a stream of corrections carries. One that carries more shows those that were heard last.
constexpr std::size_t kMaxStations = 64;

// A satellite that no sentence has named for so long is gone.
constexpr double kLeastSeen = 12;    // s: some receivers send a system every ten seconds
constexpr double kEpochsSeen = 3.5;  // if those are longer

// Epochs of observations alone have nothing that only sentences say.
bool IsOfSentences(const S_Epoch& epoch) {
  return !epoch.station || epoch.hasPosition || epoch.fixType != '\0' || epoch.accuracy ||
         std::any_of(epoch.satellites.begin(), epoch.satellites.end(),
                     [](const S_EpochSatellite& satellite) { return !IsNotAvailable(satellite.nmeaId); });
}

// Names are padded with blanks. A message without one leaves the earlier one.
void TakeText(const velagnss::Rtcm3Text& text, std::string& kept) {
  const std::string_view view = text.View().substr(0, text.View().find_last_not_of(' ') + 1);
  if (!view.empty()) kept = view;
}

}  // namespace

void C_ReceiverState::Take(const S_FrameRecord& record, double now) {
  m_now = std::isnan(now) ? 0 : now;
  m_epochs.Take(record);
  m_lastAt = m_now;
  if (const auto* station = std::get_if<velagnss::Rtcm3Station>(&record.decoded.record)) Take(*station);
  if (const auto* antenna = std::get_if<velagnss::Rtcm3Antenna>(&record.decoded.record)) Take(*antenna);
}

void C_ReceiverState::Finish(const velagnss::StreamClock& clock) { m_epochs.Finish(clock); }

// Stations of the same epoch come at once: they do not shorten the interval.
void C_ReceiverState::Take(const S_Epoch& epoch) {
  constexpr double kAtOnce = 0.05;  // s
  if (m_epochAt > 0 && m_lastAt - m_epochAt > kAtOnce) m_interval = m_lastAt - m_epochAt;
  m_epochAt = m_lastAt;
  const bool isOfSentences = IsOfSentences(epoch);
  if (isOfSentences) TakeSentences(epoch);
  if (!epoch.station) return;
  S_Station& station = StationOf(epoch.station->number);
  station.view.isReceiver = isOfSentences;
  const bool isSame = isOfSentences && m_sky;
  Note(station.sky, isSame ? m_sky->value : std::make_shared<const std::vector<S_EpochSatellite>>(epoch.satellites));
}

void C_ReceiverState::TakeSentences(const S_Epoch& epoch) {
  if (!epoch.satellites.empty()) TakeSatellites(epoch);
  if (epoch.position) Note(m_position, *epoch.position);
  if (epoch.position && !IsNotAvailable(epoch.position->speedKnots))
    Note(m_motion, {epoch.position->speedKnots, epoch.position->courseTrue});
  if (epoch.accuracy) Note(m_accuracy, *epoch.accuracy);
  if (epoch.hasPosition || epoch.fixType != '\0') TakeFix(epoch);
  if (!IsNotAvailable(epoch.pdop) || !IsNotAvailable(epoch.hdop) || !IsNotAvailable(epoch.vdop))
    Note(m_dops, {epoch.pdop, epoch.hdop, epoch.vdop});
  TakeCounts(epoch);
}

// What an epoch does not say of a satellite stays as it was, if there is a time by which to forget it.
void C_ReceiverState::TakeSatellites(const S_Epoch& epoch) {
  const double kept = std::max(kLeastSeen, kEpochsSeen * m_interval);
  std::erase_if(m_seen, [&](const S_Seen& seen) { return m_lastAt == 0 || std::abs(m_lastAt - seen.at) > kept; });
  for (const S_EpochSatellite& satellite : epoch.satellites) {
    S_EpochSatellite& seen = SeenOf(satellite).satellite;
    if (!IsNotAvailable(satellite.elevation)) seen.elevation = satellite.elevation;
    if (!IsNotAvailable(satellite.azimuth)) seen.azimuth = satellite.azimuth;
    if (!satellite.signals.empty()) seen.signals = satellite.signals;
  }
  TakeUse(epoch, kept);
  Note(m_sky, SkyOfSeen());
}

// Some receivers name the satellites in use of one system at a time: the others stay as they were for a while.
void C_ReceiverState::TakeUse(const S_Epoch& epoch, double kept) {
  std::bitset<ALGO::GNSS_UNKNOWN + 1> systems;
  for (const S_EpochSatellite& satellite : epoch.satellites) {
    S_Seen& seen = SeenOf(satellite);
    if (satellite.isUsed.value_or(false)) seen.usedAt = m_lastAt;
    if (satellite.isUsed.value_or(false)) systems.set(satellite.system);
    if (satellite.isUsed && !seen.satellite.isUsed) seen.satellite.isUsed = false;
  }
  for (S_Seen& seen : m_seen) {
    const bool wasUsed = seen.usedAt == m_lastAt || (!systems[seen.satellite.system] && m_lastAt - seen.usedAt <= kept);
    if (wasUsed) seen.satellite.isUsed = true;
    if (!wasUsed && seen.satellite.isUsed) seen.satellite.isUsed = false;
  }
}

C_ReceiverState::S_Seen& C_ReceiverState::SeenOf(const S_EpochSatellite& satellite) {
  const auto key = [](const S_EpochSatellite& s) { return std::make_pair(s.system, s.number); };
  const auto at =
      std::lower_bound(m_seen.begin(), m_seen.end(), key(satellite),
                       [&](const S_Seen& seen, const auto& wanted) { return key(seen.satellite) < wanted; });
  const bool isThere = at != m_seen.end() && key(at->satellite) == key(satellite);
  S_Seen& seen = isThere ? *at : *m_seen.insert(at, {satellite, m_lastAt});
  seen.at = m_lastAt;
  return seen;
}

t_Sky C_ReceiverState::SkyOfSeen() const {
  auto sky = std::make_shared<std::vector<S_EpochSatellite>>();
  for (const S_Seen& seen : m_seen) sky->push_back(seen.satellite);
  return sky;
}

// GGA of some receivers counts to 12 only, and GSA may come now and then.
void C_ReceiverState::TakeCounts(const S_Epoch& epoch) {
  S_SatelliteCounts counts;
  if (epoch.position && !IsNotAvailable(epoch.position->satellites)) counts.used = epoch.position->satellites;
  for (unsigned int used = 0; const S_Seen& seen : m_seen)
    if (seen.satellite.isUsed) counts.used = std::max(counts.used.value_or(0), used += *seen.satellite.isUsed ? 1 : 0);
  if (!m_seen.empty()) counts.inView = static_cast<unsigned int>(m_seen.size());
  if (counts.used || counts.inView) Note(m_counts, counts);
}

void C_ReceiverState::TakeFix(const S_Epoch& epoch) {
  const eNmeaModeIndicator kind = epoch.position ? epoch.position->fix : eNmeaModeEmpty;
  Note(m_fix, {epoch.position.has_value(), kind, epoch.fixType});
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
  const auto find = [&] {
    return std::find_if(m_stations.begin(), m_stations.end(),
                        [number](const S_Station& station) { return station.view.number >= number; });
  };
  auto at = find();
  if (at == m_stations.end() || at->view.number != number) {
    if (m_stations.size() >= kMaxStations) DropOldestStation();
    at = m_stations.emplace(find());
    at->view.number = number;
  }
  at->lastAt = m_now;
  return *at;
}

void C_ReceiverState::DropOldestStation() {
  m_stations.erase(std::min_element(m_stations.begin(), m_stations.end(),
                                    [](const auto& a, const auto& b) { return a.lastAt < b.lastAt; }));
}

void C_ReceiverState::Show(S_SourceView& view, const S_AgeClock& clock) const {
  view.position = Aged(m_position, clock);
  view.motion = Aged(m_motion, clock);
  view.fix = Aged(m_fix, clock);
  view.dops = Aged(m_dops, clock);
  view.counts = Aged(m_counts, clock);
  view.accuracy = Aged(m_accuracy, clock);
  view.sky = Aged(m_sky, clock);
  for (const S_Station& station : m_stations) {
    view.stations.push_back(station.view);
    view.stations.back().sky = Aged(station.sky, clock);
  }
}

}  // namespace Host
