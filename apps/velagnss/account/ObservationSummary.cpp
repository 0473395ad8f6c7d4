#include "apps/velagnss/account/ObservationSummary.h"

#include <algorithm>

#include "apps/velagnss/pipeline/Observations.h"
#include "apps/velagnss/text/Units.h"
#include "geo/LeapSeconds.h"

namespace Host {
namespace {

using namespace velagnss;

double SecondsOf(unsigned short week, double seconds) { return week * kSecondsPerWeek + seconds; }

// Missing without a date.
std::optional<double> GpsTime(const Rtcm3Time& time) {
  if (IsNotAvailable(time.week) || IsNotAvailable(time.seconds)) return std::nullopt;
  return SecondsOf(time.week, time.seconds);
}

// Station names are padded with blanks. A message that has no such text leaves the earlier one.
void Take(const Rtcm3Text& text, std::string& kept) {
  const std::string_view view = text.View().substr(0, text.View().find_last_not_of(' ') + 1);
  if (!view.empty()) kept = view;
}
void Take(double value, double& kept) {
  if (!IsNotAvailable(value)) kept = value;
}

// The entry of a key in a list that is sorted by it; a new one if there is none.
template <class Entry, class Key, class KeyOf>
Entry& Find(std::vector<Entry>& list, const Key& key, const KeyOf& keyOf) {
  auto at = std::find_if(list.begin(), list.end(), [&](const Entry& entry) { return !(keyOf(entry) < key); });
  if (at == list.end() || !(keyOf(*at) == key)) at = list.insert(at, Entry(key));
  return *at;
}

}  // namespace

double ReferenceOf(const S_IFKeplerEphRec& record) {
  return SecondsOf(record.ToeWeek, record.Toe) + (record.TimeSystem == ALGO::GNSS_BEIDOU ? ALGO::kBeidouBehind : 0);
}
double ReferenceOf(const S_IFPvaEphRec& record) {
  const double time = SecondsOf(record.RefWeek, record.RefTime);
  if (record.TimeSystem != ALGO::GNSS_GLONASS) return time;
  const double utc = std::max(time - ALGO::kGlonassAhead, 0.0);  // a wrong date may lie before the GPS epoch
  return utc + LeapSecondsOn(kMjdOfGpsEpoch + static_cast<unsigned int>(utc / kSecondsPerDay));
}

void C_ObservationSummary::Note(const S_FrameRecord& record) {
  const bool isDated = record.decoded.week != WeekSource::None;
  const auto add = [&](const auto& kind) {
    if constexpr (requires { this->Add(kind); }) Add(kind);
    if constexpr (requires { kind.ephemeris; }) AddEphemeris(kind.ephemeris, isDated);
    if constexpr (requires { ReferenceOf(kind); }) AddEphemeris(kind, isDated);
  };
  std::visit(add, record.decoded.record);
  if (std::holds_alternative<Rtcm3Observations>(record.decoded.record))
    m_epochs.Note(record.frame.offset, record.clock.Seconds());
}

void C_ObservationSummary::Add(const Rtcm3Station& record) {
  S_StationSummary& station = StationOf(record.station);
  Take(record.x, station.x);
  Take(record.y, station.y);
  Take(record.z, station.z);
  Take(record.antennaHeight, station.antennaHeight);
}

void C_ObservationSummary::Add(const Rtcm3Antenna& record) {
  S_StationSummary& station = StationOf(record.station);
  Take(record.antenna, station.antenna);
  Take(record.antennaSerial, station.antennaSerial);
  Take(record.receiver, station.receiver);
  Take(record.firmware, station.firmware);
  Take(record.receiverSerial, station.receiverSerial);
}

void C_ObservationSummary::Add(const Rtcm3SystemParameters& record) {
  if (!IsNotAvailable(record.leapSeconds)) m_leapSeconds = record.leapSeconds;
}

void C_ObservationSummary::Add(const Rtcm3Observations& record) {
  if (const std::optional<double> time = GpsTime(record.time)) m_lastEpoch = time;
  for (unsigned int i = 0; i < record.numSignals; ++i) {
    const Rtcm3Signal& signal = record.signals[i];
    const Rtcm3Satellite& satellite = record.satellites[signal.satellite];
    if (!IsObserved(signal) || signal.code[0] == '\0') continue;
    S_SystemSummary& system = SystemOf(satellite.system);
    auto& entry =
        Find(system.signals, std::string_view(signal.code), [](const S_SignalSummary& s) { return s.Code(); });
    ++entry.observations;
    if (IsNotAvailable(satellite.svId)) continue;
    system.satellites.set(satellite.svId);
    entry.satellites.set(satellite.svId);
  }
}

template <class Ephemeris>
void C_ObservationSummary::AddEphemeris(const Ephemeris& record, bool isDated) {
  const auto system = ALGO::eGNSSSystem{record.System};
  auto& entry = Find(m_ephemerides, system, [](const S_EphemerisSummary& e) { return e.system; });
  ++entry.count;
  entry.satellites.set(record.SvId);
  if (isDated) entry.latest = std::max(ReferenceOf(record), entry.latest.value_or(0));
}

std::optional<double> C_ObservationSummary::AgeOf(const S_EphemerisSummary& ephemerides) const {
  if (!m_lastEpoch || !ephemerides.latest) return std::nullopt;
  return *m_lastEpoch - *ephemerides.latest;
}

S_StationSummary& C_ObservationSummary::StationOf(unsigned short id) {
  return Find(m_stations, id, [](const S_StationSummary& entry) { return entry.id; });
}

S_SystemSummary& C_ObservationSummary::SystemOf(ALGO::eGNSSSystem system) {
  return Find(m_systems, system, [](const S_SystemSummary& entry) { return entry.system; });
}

}  // namespace Host
