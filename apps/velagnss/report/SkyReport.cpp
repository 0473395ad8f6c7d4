#include "apps/velagnss/report/SkyReport.h"

#include <algorithm>
#include <cmath>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::size_t kMaxSatellites = 200;
constexpr std::size_t kMaxSignals = 12;    // of a satellite
constexpr double kLongestPause = 600;      // s
constexpr double kLongestSilence = 60;     // s, of a system when sentences name one after the other
constexpr unsigned int kFullCircle = 360;  // degrees
constexpr unsigned int kZenith = 90;       // degrees

bool HasPlace(const S_EpochSatellite& seen) { return seen.elevation <= kZenith && seen.azimuth <= kFullCircle; }

bool IsInSky(const S_EpochSatellite& seen) { return HasPlace(seen) || !seen.signals.empty(); }

S_SkyPoint PointOf(const S_EpochSatellite& seen, eUse use, double seconds) {
  const double radius = kZenith - seen.elevation;
  const double azimuth = seen.azimuth * kRadiansPerDegree;
  return {{seconds, radius * std::sin(azimuth), radius * std::cos(azimuth), use, false}, seen.azimuth, seen.elevation};
}

bool IsSame(const S_SkyPoint& one, const S_SkyPoint& other) {
  return one.azimuth == other.azimuth && one.elevation == other.elevation && one.kind == other.kind;
}

// The signal among those that are known.
template <class Signals>
auto Find(Signals& signals, const S_EpochSignal& signal) {
  return std::find_if(signals.begin(), signals.end(), [&](const S_SignalName& known) { return known.Is(signal); });
}

}  // namespace

bool S_SignalName::Is(const S_EpochSignal& signal) const {
  return code.empty() || signal.code.empty() ? name == signal.name : code == signal.code;
}

void S_SignalName::Complete(const S_EpochSignal& signal) {
  if (name.empty()) name = signal.name;
  if (code.empty()) code = signal.code;
}

void C_SkyReport::Add(const S_Epoch& epoch, const S_Moment& moment, std::size_t& signalsLeft) {
  AddCounts(epoch, moment);
  for (const S_EpochSatellite& seen : epoch.satellites) {
    S_SkySatellite* const satellite = SatelliteOf(seen);
    if (satellite == nullptr) continue;
    ++satellite->epochs;
    satellite->saysUse = satellite->saysUse || seen.isUsed.has_value();
    satellite->used += seen.isUsed.value_or(false) ? 1 : 0;
    if (seen.isUsed.value_or(false)) satellite->usedAt = m_used.TimesOf(seen.system);
    if (HasPlace(seen)) AddPlace(*satellite, seen, moment);
    for (const S_EpochSignal& signal : seen.signals)
      if (IsKnown(signal.cn0)) AddSignal(*satellite, seen, signal, moment, signalsLeft);
  }
}

S_SkySatellite* C_SkyReport::SatelliteOf(const S_EpochSatellite& seen) {
  const auto found = m_satellites.find({seen.system, seen.number});
  if (found != m_satellites.end()) return &found->second;
  if (m_satellites.size() < kMaxSatellites) return &m_satellites[{seen.system, seen.number}];
  m_leftOut.set((seen.system * 256 + seen.number) % m_leftOut.size());
  return nullptr;
}

// Of GSA and GSV, an epoch may have one or the other, and that of some systems only: the last that named satellites of
// a system in use counts.
eUse C_SkyReport::UseOf(const S_SkySatellite& satellite, ALGO::eGNSSSystem system) const {
  const std::uint64_t times = m_used.TimesOf(system);
  if (times == 0) return eUseNotKnown;
  return satellite.usedAt == times ? eUsed : eTracked;
}

void C_SkyReport::AddPlace(S_SkySatellite& satellite, const S_EpochSatellite& seen, const S_Moment& moment) {
  S_SkyPoint point = PointOf(seen, UseOf(satellite, seen.system), moment.seconds);
  const double pause = moment.seconds - satellite.seen;
  const bool isFirst = satellite.track.Points().empty();
  point.startsPiece = isFirst || pause < 0 || pause > kLongestPause;
  satellite.seen = moment.seconds;
  if (point.startsPiece || !IsSame(point, satellite.track.Points().back())) satellite.track.Add(point);
}

void C_SkyReport::AddSignal(S_SkySatellite& satellite, const S_EpochSatellite& seen, const S_EpochSignal& signal,
                            const S_Moment& moment, std::size_t& signalsLeft) {
  S_SkySignal* const known = SignalOf(satellite, seen, signal, signalsLeft);
  if (known == nullptr) return void(++m_signalsLeftOut);
  known->cn0.Add(signal.cn0);
  known->series.Add(moment.bin, signal.cn0);
  auto& bands = m_kinds[known->kind].bands;
  if (seen.elevation > kZenith) return;
  const std::size_t band = seen.elevation / S_SignalKind::kBandWidth;
  bands[std::min(band, bands.size() - 1)].Add(signal.cn0);
}

S_SkySignal* C_SkyReport::SignalOf(S_SkySatellite& satellite, const S_EpochSatellite& seen, const S_EpochSignal& signal,
                                   std::size_t& signalsLeft) {
  auto found = Find(satellite.signals, signal);
  if (found == satellite.signals.end()) {
    if (satellite.signals.size() == kMaxSignals || signalsLeft == 0) return nullptr;
    --signalsLeft;
    found = satellite.signals.emplace(found);
    found->kind = KindOf(seen.system, signal);
  }
  found->Complete(signal);
  return &*found;
}

std::size_t C_SkyReport::KindOf(ALGO::eGNSSSystem system, const S_EpochSignal& signal) {
  const auto isIt = [&](const S_SignalKind& kind) { return kind.system == system && kind.Is(signal); };
  auto found = std::find_if(m_kinds.begin(), m_kinds.end(), isIt);
  if (found == m_kinds.end()) {
    found = m_kinds.emplace(found);
    found->system = system;
  }
  found->Complete(signal);
  return static_cast<std::size_t>(found - m_kinds.begin());
}

void C_SkyReport::AddCounts(const S_Epoch& epoch, const S_Moment& moment) {
  C_SatelliteCounts::t_Numbers seen, inView, used;
  for (const S_EpochSatellite& satellite : epoch.satellites) {
    ++seen[satellite.system];
    if (IsInSky(satellite)) inView[satellite.system] = 0;
    if (satellite.isUsed) used[satellite.system] += *satellite.isUsed ? 1 : 0;
  }
  for (auto& [system, number] : inView) number = seen[system];
  std::erase_if(used, [&](const auto& row) { return row.second == 0 && m_used.Holds(row.first, moment); });
  if (!inView.empty()) m_inView.Add(inView, moment);
  if (!used.empty())
    m_used.Add(used, moment);
  else if (epoch.position && !IsNotAvailable(epoch.position->satellites))
    m_used.AddAll(epoch.position->satellites, moment);
}

void C_SatelliteCounts::Add(const t_Numbers& numbers, const S_Moment& moment) {
  unsigned int all = 0;
  for (const auto& [system, last] : m_last)
    if (!numbers.contains(system) && Holds(system, moment)) all += last.number;
  for (const auto& [system, number] : numbers) {
    m_systems[system].Add(moment.bin, number);
    m_last[system] = {moment.seconds, number, TimesOf(system) + 1};
    all += number;
  }
  AddAll(all, moment);
}

bool C_SatelliteCounts::Holds(ALGO::eGNSSSystem system, const S_Moment& moment) const {
  const auto found = m_last.find(system);
  return found != m_last.end() && found->second.number > 0 &&
         std::abs(moment.seconds - found->second.seconds) <= kLongestSilence;
}

std::uint64_t C_SatelliteCounts::TimesOf(ALGO::eGNSSSystem system) const {
  const auto found = m_last.find(system);
  return found == m_last.end() ? 0 : found->second.times;
}

}  // namespace Host
