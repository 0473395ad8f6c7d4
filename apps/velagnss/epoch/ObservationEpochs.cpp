#include "apps/velagnss/epoch/ObservationEpochs.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "apps/velagnss/epoch/NmeaSatellites.h"
#include "apps/velagnss/pipeline/Ephemerides.h"
#include "apps/velagnss/pipeline/Observations.h"
#include "apps/velagnss/text/Units.h"
#include "geo/LeapSeconds.h"
#include "stream/Names.h"

namespace Host {
namespace {

using namespace velagnss;

constexpr std::int64_t kMaxLate = 10000;  // ms
constexpr std::size_t kMaxOthers = 20;
constexpr std::size_t kMaxOpen = 64;

// Without a date the clock takes the leap seconds of today, see velagnss::StreamClock.
unsigned int LeapSecondsOf(const StreamClock::Utc& utc) { return LeapSecondsOn(utc.mjd.value_or(kLastLeapSecondMjd)); }

// The times of observations are whole milliseconds; their conversion leaves some billionths of a second.
double RoundedToMs(double seconds) {
  constexpr double kMs = 1000;
  return std::round(seconds * kMs) / kMs;
}

void Add(S_EpochSatellite& satellite, const Rtcm3Signal& signal) {
  const std::string_view code = signal.code;
  const auto isIt = [code](const S_EpochSignal& known) { return known.code == code; };
  const auto found = std::find_if(satellite.signals.begin(), satellite.signals.end(), isIt);
  if (found == satellite.signals.end()) {
    const unsigned char id = SignalIdOf(satellite.system, code);
    AddSignal(satellite,
              {std::string(NameOfSignal(satellite.system, id)), id, signal.data.SignalStrength, std::string(code)});
  } else if (IsNotAvailable(found->cn0)) {
    found->cn0 = signal.data.SignalStrength;
  }
}

}  // namespace

void C_ObservationEpochs::Take(const S_FrameRecord& record) {
  EndSilent(record.clock);
  if (!m_ephemerides && record.frame.protocol != C_RawDataMessage::eNMEA0183)
    m_ephemerides = std::make_unique<EphemerisStore>();
  if (m_ephemerides) NoteEphemeris(*m_ephemerides, record.decoded);
  const Record& contents = record.decoded.record;
  if (const auto* station = std::get_if<Rtcm3Station>(&contents); station != nullptr && !IsNotAvailable(station->x)) {
    C_PointCoordinate& antenna = m_antennas[station->station];
    antenna.Set(C_PointCoordinate::COORD_CARTESIAN, station->x, station->y, station->z);
    antenna.ConvertToAllInternal();
  }
  if (const auto* observations = std::get_if<Rtcm3Observations>(&contents)) Take(record, *observations);
}

void C_ObservationEpochs::Take(const S_FrameRecord& record, const Rtcm3Observations& observations) {
  if (IsNotAvailable(observations.time.seconds) || !IsTimely(observations, record.clock)) return;
  Begin(record, observations);
  S_Open& open = *OpenOf(observations.station);
  if (IsNotAvailable(open.week)) open.week = observations.time.week;
  open.others = 0;
  std::vector<std::string>& messages = open.epoch.station->messages;
  const std::string name(MessageName(record.frame.protocol, record.frame.message).Text());
  if (std::find(messages.begin(), messages.end(), name) == messages.end()) messages.push_back(name);
  Add(open.epoch, observations);
}

// Whether the message belongs to the epoch of its station or begins the next one, for which room is made.
bool C_ObservationEpochs::IsTimely(const Rtcm3Observations& observations, const StreamClock& clock) {
  const auto open = OpenOf(observations.station);
  if (open == m_open.end()) return !MayHaveWrongLeapSeconds(observations, std::nullopt);
  if (MayHaveWrongLeapSeconds(observations, open->seconds)) return false;
  const std::int64_t step = MillisecondsFrom(open->seconds, observations.time.seconds);
  if (std::abs(step) < kSameEpoch) return !open->isTaken;
  if (step < 0 && step >= -kMaxLate) return false;
  End(open, clock);
  return true;
}

void C_ObservationEpochs::Begin(const S_FrameRecord& record, const Rtcm3Observations& observations) {
  if (OpenOf(observations.station) != m_open.end()) return;
  if (m_open.size() == kMaxOpen) End(m_open.begin(), record.clock);
  const double time = record.clock.Seconds();
  S_Open& open = m_open.emplace_back(S_Open{observations.station, observations.time.week, observations.time.seconds,
                                            time, LeapSecondsOf(record.clock.UtcOf(time))});
  open.epoch.offset = record.frame.offset;
  open.epoch.station.emplace().number = observations.station;
}

void C_ObservationEpochs::Add(S_Epoch& epoch, const Rtcm3Observations& observations) {
  for (unsigned int i = 0; i < observations.numSignals; ++i) {
    const Rtcm3Signal& signal = observations.signals[i];
    const Rtcm3Satellite& seen = observations.satellites[signal.satellite];
    if (IsNotAvailable(seen.svId) || signal.code[0] == '\0' || !IsObserved(signal)) continue;
    S_EpochSatellite* const satellite = SatelliteOf(epoch, seen.system, seen.svId);
    if (satellite != nullptr) Host::Add(*satellite, signal);
  }
}

std::vector<C_ObservationEpochs::S_Open>::iterator C_ObservationEpochs::OpenOf(unsigned short station) {
  return std::find_if(m_open.begin(), m_open.end(), [station](const S_Open& open) { return open.station == station; });
}

void C_ObservationEpochs::End(std::vector<S_Open>::iterator open, const StreamClock& clock) {
  S_Open ended = std::move(*open);
  m_open.erase(open);
  if (ended.isTaken) return;
  for (S_Open& other : m_open) ++other.others;
  SetTimeAndPlace(ended, clock);
  SetSky(ended);
  m_sink(std::move(ended.epoch));
}

// Between two messages of an epoch every other station may end one of its own. A taken epoch remains, so that its late
// messages are known.
void C_ObservationEpochs::EndSilent(const StreamClock& clock) {
  const auto isSilent = [this](const S_Open& open) {
    return !open.isTaken && open.others >= std::max(kMaxOthers, 2 * m_open.size());
  };
  const auto next = [&] { return std::find_if(m_open.begin(), m_open.end(), isSilent); };
  for (auto silent = next(); silent != m_open.end(); silent = next()) End(silent, clock);
}

std::optional<S_Epoch> C_ObservationEpochs::TakeOut(const t_Fits& fits, const StreamClock& clock) {
  std::optional<S_Epoch> taken;
  for (S_Open& open : m_open) {
    ++open.others;
    if (open.isTaken || taken) continue;
    SetTimeAndPlace(open, clock);
    if (!fits(open.epoch)) continue;
    SetSky(open);
    open.isTaken = true;
    taken = std::exchange(open.epoch, {});
  }
  return taken;
}

// The date may have become known, and with it the leap seconds, after the epoch began.
void C_ObservationEpochs::SetTimeAndPlace(S_Open& open, const StreamClock& clock) const {
  S_Epoch& epoch = open.epoch;
  const unsigned int leapSeconds = LeapSecondsOf(clock.UtcOf(open.time));
  const StreamClock::Utc utc = clock.UtcOf(open.time + open.leapSeconds - leapSeconds);
  epoch.timeOfDay = RoundedToMs(utc.secondsOfDay);
  epoch.mjd = utc.mjd;
  const auto antenna = m_antennas.find(open.station);
  if (antenna == m_antennas.end()) return;
  const C_Vector3& geodetic = antenna->second.Geodetic();
  epoch.station->latitude = geodetic.X() * kDegreesPerRadian;
  epoch.station->longitude = geodetic.Y() * kDegreesPerRadian;
  epoch.station->height = geodetic.Z();
}

// Whole degrees, as in GSV. The satellite moves by some hundred meters while its signal travels, which is negligible at
// this resolution.
void C_ObservationEpochs::SetSky(S_Open& open) const {
  constexpr long kFullCircle = 360;
  SortSatellites(open.epoch);
  const auto known = m_antennas.find(open.station);
  if (known == m_antennas.end()) return;
  C_PointCoordinate antenna = known->second;
  const C_GnssTime time(open.week, open.seconds, ALGO::GNSS_GPS);
  const auto leapSeconds = static_cast<unsigned char>(LeapSecondsOn(open.epoch.mjd.value_or(kLastLeapSecondMjd)));
  for (S_EpochSatellite& satellite : open.epoch.satellites) {
    SatelliteOrbit orbit;
    const auto number = static_cast<unsigned char>(satellite.number);
    const OrbitResult result = m_ephemerides->Find(satellite.system, number, time, leapSeconds, orbit);
    if (result != OrbitResult::Ok && result != OrbitResult::Unhealthy) continue;
    double elevation = 0;
    double azimuth = 0;
    antenna.ElevationAndAzimuth(orbit.state.position, true, elevation, azimuth);
    if (!(elevation >= 0)) continue;
    satellite.elevation = static_cast<unsigned char>(std::lround(elevation * kDegreesPerRadian));
    satellite.azimuth = static_cast<unsigned short>(std::lround(azimuth * kDegreesPerRadian) % kFullCircle);
  }
}

void C_ObservationEpochs::Finish(const StreamClock& clock) {
  while (!m_open.empty()) End(m_open.begin(), clock);
  m_antennas.clear();
  m_ephemerides.reset();
}

}  // namespace Host
