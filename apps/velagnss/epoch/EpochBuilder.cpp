#include "apps/velagnss/epoch/EpochBuilder.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "apps/velagnss/epoch/NmeaSatellites.h"
#include "apps/velagnss/pipeline/Observations.h"
#include "apps/velagnss/pipeline/RecordTime.h"
#include "apps/velagnss/text/Units.h"

namespace Host {
namespace {

using velagnss::GstRecord;

constexpr double kMaxLate = 10;  // s
constexpr double kNear = 0.5;    // s

// Farther than any fix is off, nearer than most reference stations are, m.
constexpr double kMaxDistance = 100;

// More than any receiver sends, so that no stream takes memory without end.
constexpr std::size_t kMaxPending = 256;
constexpr std::size_t kMaxKeys = 256;
constexpr std::size_t kMaxHeld = 64;

template <class... Records>
bool IsAnyOf(const velagnss::Record& record) {
  return (std::holds_alternative<Records>(record) || ...);
}

template <class Record>
std::string_view TalkerOf(const Record& record) {
  return {record.talker, sizeof record.talker};
}

// The pages of a GSV group are one sentence: the first one counts.
std::string KeyOf(const S_GSA_Data& gsa) {
  return "GSA" + std::string(TalkerOf(gsa)) + static_cast<char>(gsa.systemId);
}
std::string KeyOf(const S_GSV_Data& gsv) {
  return "GSV" + std::string(TalkerOf(gsv)) + static_cast<char>(gsv.signalId);
}
std::string KeyOf(const S_VTG_Data& vtg) { return "VTG" + std::string(TalkerOf(vtg)); }

std::string_view FormatterOf(std::string_view key) { return key.substr(0, 3); }

bool IsLaterPage(const S_GSV_Data& gsv) { return gsv.sentenceNumber > 1; }
template <class Record>
bool IsLaterPage(const Record&) {
  return false;
}

std::string_view AddressOf(const velagnss::Frame& frame) {
  constexpr std::size_t kSize = 5;  // talker and formatter, after "$"
  return std::string_view(reinterpret_cast<const char*>(frame.data), frame.length).substr(1, kSize);
}

// The later one is positive, across midnight as well.
double StepOf(double from, double to) {
  const double step = to - from;
  if (step < -kSecondsPerDay / 2) return step + kSecondsPerDay;
  return step > kSecondsPerDay / 2 ? step - kSecondsPerDay : step;
}

// GST has a time that the clock has not noted. A leap second is beyond the end of its day.
double MidnightBefore(double timeOfDay, const velagnss::StreamClock& clock) {
  const double now = clock.Seconds();
  return now + StepOf(clock.UtcOf(now).secondsOfDay, timeOfDay) - timeOfDay;
}

void NoteCorrections(const velagnss::Record& record, std::optional<unsigned short>& station) {
  const auto note = [&station](const auto& sentence) {
    if constexpr (requires { sentence.referenceStation; })
      if (!IsNotAvailable(sentence.referenceStation)) station = sentence.referenceStation;
  };
  std::visit(note, record);
}

C_PointCoordinate PointAt(double latitude, double longitude, double height) {
  C_PointCoordinate point(C_PointCoordinate::COORD_GEODETIC, latitude * kRadiansPerDegree,
                          longitude * kRadiansPerDegree, height);
  point.ConvertToAllInternal();
  return point;
}

}  // namespace

void C_EpochBuilder::Take(const S_FrameRecord& record) {
  m_observations.Take(record);
  TakeSentence(record.frame, record.decoded.record, record.clock);
}

void C_EpochBuilder::TakeSentence(const velagnss::Frame& frame, const velagnss::Record& record,
                                  const velagnss::StreamClock& clock) {
  const auto take = [&](const auto& untimed) {
    m_isRest = m_isRest || (m_isFirstFrame && (frame.offset > 0 || IsLaterPage(untimed)));
    TakeUntimed(frame.offset, untimed, clock);
  };
  if (const auto* gsa = std::get_if<S_GSA_Data>(&record)) take(*gsa);
  if (const auto* gsv = std::get_if<S_GSV_Data>(&record)) take(*gsv);
  if (const auto* vtg = std::get_if<S_VTG_Data>(&record)) take(*vtg);
  if (IsAnyOf<S_GGA_Data, S_GNS_Data, S_RMC_Data, S_GLL_Data, S_ZDA_Data, GstRecord>(record))
    TakeTimed(frame, record, clock);
  m_isFirstFrame = false;
}

void C_EpochBuilder::TakeTimed(const velagnss::Frame& frame, const velagnss::Record& record,
                               const velagnss::StreamClock& clock) {
  double timeOfDay = TimeOfDayOf(record);
  if (!velagnss::StreamClock::IsTimeOfDay(timeOfDay)) timeOfDay = NA_DOUBLE;
  const std::string key(AddressOf(frame));
  const bool areTimesKnown = !IsNotAvailable(timeOfDay) && !IsNotAvailable(m_epoch.timeOfDay);
  if (m_isRest || !IsOfThisEpoch(key, timeOfDay)) {
    const double step = areTimesKnown ? StepOf(m_epoch.timeOfDay, timeOfDay) : 0;
    // Some receivers give the moment of sending in ZDA, not that of the position.
    if (step != 0 && std::abs(step) < kNear && std::holds_alternative<S_ZDA_Data>(record)) return;
    if (step < 0 && step >= -kMaxLate) return;
    Close(clock);
  }
  Begin(frame.offset);
  AddPending();
  m_hasTimed = true;
  if (!IsNotAvailable(timeOfDay)) {
    m_epoch.timeOfDay = timeOfDay;
    m_midnight = MidnightBefore(timeOfDay, clock);
  }
  if (m_keys.size() < kMaxKeys) m_keys.push_back(key);
  m_last = key;
  m_position.Take(record);
  NoteCorrections(record, m_corrections);
  if (const auto* gst = std::get_if<GstRecord>(&record); gst != nullptr && !m_epoch.accuracy) m_epoch.accuracy = *gst;
}

// Without a time a sentence is of another epoch if it comes again.
bool C_EpochBuilder::IsOfThisEpoch(const std::string& key, double timeOfDay) const {
  if (!IsNotAvailable(timeOfDay) && !IsNotAvailable(m_epoch.timeOfDay)) return timeOfDay == m_epoch.timeOfDay;
  return std::find(m_keys.begin(), m_keys.end(), key) == m_keys.end();
}

void C_EpochBuilder::TakeUntimed(std::uint64_t offset, const t_Untimed& record, const velagnss::StreamClock& clock) {
  const std::string key = std::visit([](const auto& any) { return KeyOf(any); }, record);
  const bool isLaterPage = std::visit([](const auto& any) { return IsLaterPage(any); }, record);
  const bool isNext = !m_pending.empty() || (!isLaterPage && Repeats(key, FormatterOf(key)));
  if (isNext && m_hasTimed) {
    if (m_pending.size() < kMaxPending) m_pending.push_back({offset, record});
    return;
  }
  if (isNext) Close(clock);
  Apply(offset, record);
}

// A receiver may need several sentences in a row for what is the same by talker and system.
bool C_EpochBuilder::Repeats(const std::string& key, std::string_view formatter) const {
  return m_last != formatter && std::find(m_keys.begin(), m_keys.end(), key) != m_keys.end();
}

void C_EpochBuilder::Begin(std::uint64_t offset) {
  if (!m_isOpen) m_epoch.offset = offset;
  m_isOpen = true;
}

void C_EpochBuilder::Apply(std::uint64_t offset, const t_Untimed& record) {
  Begin(offset);
  const std::string key = std::visit([](const auto& any) { return KeyOf(any); }, record);
  if (m_keys.size() < kMaxKeys && !std::visit([](const auto& any) { return IsLaterPage(any); }, record))
    m_keys.push_back(key);
  m_last = FormatterOf(key);
  std::visit([this](const auto& any) { Add(any); }, record);
}

void C_EpochBuilder::AddPending() {
  for (const S_Pending& pending : m_pending) Apply(pending.offset, pending.record);
  m_pending.clear();
}

void C_EpochBuilder::Add(const S_VTG_Data& vtg) { m_position.Take(vtg); }

void C_EpochBuilder::Add(const S_GSA_Data& gsa) {
  m_epoch.fixType = std::max(m_epoch.fixType, gsa.fixType);
  if (IsNotAvailable(m_epoch.pdop)) m_epoch.pdop = gsa.pdop;
  if (IsNotAvailable(m_epoch.hdop)) m_epoch.hdop = gsa.hdop;
  if (IsNotAvailable(m_epoch.vdop)) m_epoch.vdop = gsa.vdop;
  const ALGO::eGNSSSystem system = SystemOfSentence(TalkerOf(gsa), gsa.systemId);
  for (const unsigned char id : gsa.satelliteId)
    if (S_EpochSatellite* const satellite = Satellite(system, id)) satellite->isUsed = true;
  m_saysWhatIsUsed = true;
}

void C_EpochBuilder::Add(const S_GSV_Data& gsv) {
  const ALGO::eGNSSSystem system = SystemOfSentence(TalkerOf(gsv), NA_U8);
  for (std::size_t i = 0; i < std::size(gsv.satelliteId); ++i) {
    S_EpochSatellite* const satellite = Satellite(system, gsv.satelliteId[i]);
    if (satellite == nullptr) continue;
    if (!IsNotAvailable(gsv.elevation[i])) satellite->elevation = gsv.elevation[i];
    if (!IsNotAvailable(gsv.azimuth[i])) satellite->azimuth = gsv.azimuth[i];
    if (!IsNotAvailable(gsv.snr[i])) AddSignal(*satellite, gsv.signalId, gsv.snr[i]);
  }
}

// Signals without an id cannot be told apart: each is kept.
void C_EpochBuilder::AddSignal(S_EpochSatellite& satellite, unsigned char signalId, double cn0) {
  std::vector<S_EpochSignal>& signals = satellite.signals;
  const auto found = std::find_if(signals.begin(), signals.end(),
                                  [signalId](const S_EpochSignal& signal) { return signal.nmeaId == signalId; });
  if (found != signals.end() && !IsNotAvailable(signalId)) {
    found->cn0 = cn0;
  } else {
    Host::AddSignal(satellite, {std::string(NameOfSignal(satellite.system, signalId)), signalId, cn0, {}});
  }
}

// The satellite of the epoch by its number in a sentence; null for an empty place.
S_EpochSatellite* C_EpochBuilder::Satellite(ALGO::eGNSSSystem system, unsigned char id) {
  if (IsNotAvailable(id) || id == 0) return nullptr;
  const S_SatelliteName name = SatelliteOf(system, id);
  S_EpochSatellite* const satellite = SatelliteOf(m_epoch, name.system, name.number);
  if (satellite != nullptr && IsNotAvailable(satellite->nmeaId)) satellite->nmeaId = id;
  return satellite;
}

// A sentence that is still to come may say that the observations are those of another receiver.
void C_EpochBuilder::TakeObserved(S_Epoch&& observed) {
  if (HaveTimeOfThisEpoch(observed) && m_held.size() < kMaxHeld) return m_held.push_back(std::move(observed));
  m_sink(std::move(observed));
}

bool C_EpochBuilder::HaveTimeOfThisEpoch(const S_Epoch& observed) const {
  constexpr double kMsPerSecond = 1000;
  if (IsNotAvailable(m_epoch.timeOfDay) || std::isnan(observed.timeOfDay)) return false;
  const double step = StepOf(m_epoch.timeOfDay, observed.timeOfDay);
  return std::abs(std::lround(step * kMsPerSecond)) < kSameEpoch;
}

bool C_EpochBuilder::AreOfThisEpoch(const S_Epoch& observed) const {
  return !m_epoch.station && HaveTimeOfThisEpoch(observed) && !AreOfAnotherReceiver(*observed.station);
}

// Receivers that do not know the number send 0.
bool C_EpochBuilder::AreOfAnotherReceiver(const S_EpochStation& station) const {
  if (station.number != 0 && m_corrections == station.number) return true;
  const std::optional<S_Position> position = m_position.Best();
  if (!position || IsNotAvailable(station.height)) return false;
  C_PointCoordinate receiver = PointAt(position->latitude, position->longitude, station.height);
  C_PointCoordinate antenna = PointAt(station.latitude, station.longitude, station.height);
  return (receiver.Cartesian() - antenna.Cartesian()).Norm() > kMaxDistance;
}

// Those that have ended come first. One station at most is the receiver.
void C_EpochBuilder::AddObserved(const velagnss::StreamClock& clock) {
  const auto fits = [this](const S_Epoch& observed) { return AreOfThisEpoch(observed); };
  for (S_Epoch& observed : std::exchange(m_held, {}))
    fits(observed) ? AddObservations(m_epoch, observed) : m_sink(std::move(observed));
  if (const auto observed = m_observations.TakeOut(fits, clock)) AddObservations(m_epoch, *observed);
}

void C_EpochBuilder::Close(const velagnss::StreamClock& clock) {
  if (m_isOpen) {
    AddObserved(clock);
    if (!IsNotAvailable(m_epoch.timeOfDay)) m_epoch.mjd = clock.UtcOf(m_midnight + kSecondsPerDay / 2).mjd;
    m_epoch.hasSentences = true;
    m_epoch.hasPosition = !m_position.IsEmpty();
    m_epoch.position = m_position.Best();
    if (m_epoch.position && IsNotAvailable(m_epoch.hdop)) m_epoch.hdop = m_epoch.position->hdop;
    for (S_EpochSatellite& satellite : m_epoch.satellites)
      if (m_saysWhatIsUsed && !satellite.isUsed) satellite.isUsed = false;
    SortSatellites(m_epoch);
    m_sink(std::move(m_epoch));
  }
  m_epoch = {};
  m_position = {};
  m_corrections.reset();
  m_keys.clear();
  m_last.clear();
  m_isOpen = m_hasTimed = m_isRest = m_saysWhatIsUsed = false;
}

void C_EpochBuilder::Finish(const velagnss::StreamClock& clock) {
  Close(clock);
  AddPending();
  Close(clock);
  m_observations.Finish(clock);
  m_isFirstFrame = true;
}

}  // namespace Host
