#include "apps/velagnss/epoch/Epoch.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "apps/velagnss/epoch/NmeaSatellites.h"

namespace Host {
namespace {

constexpr std::size_t kMaxSatellites = 512;
constexpr std::size_t kMaxSignals = 32;  // of a satellite

// Room for most epochs, so that memory need not grow step by step.
constexpr std::size_t kUsualSatellites = 64;
constexpr std::size_t kUsualSignals = 4;

// Before NMEA 0183 4.11 a GSV did not say which signal it meant; 0 means all of them.
bool HasId(const S_EpochSignal& signal) { return !IsNotAvailable(signal.nmeaId) && signal.nmeaId != 0; }

// Completes observed signals by those of GSV, and adds the others of GSV.
void AddSent(S_EpochSatellite& satellite, const std::vector<S_EpochSignal>& sent) {
  for (const S_EpochSignal& signal : sent) {
    const auto isIt = [&](const S_EpochSignal& observed) {
      return CanBeSignal(satellite.system, observed.code, signal.nmeaId);
    };
    const auto found = std::find_if(satellite.signals.begin(), satellite.signals.end(), isIt);
    if (found == satellite.signals.end()) {
      if (HasId(signal) || IsNotAvailable(satellite.signals.front().cn0)) AddSignal(satellite, signal);
      continue;
    }
    found->name = signal.name;
    found->nmeaId = signal.nmeaId;
    if (IsNotAvailable(found->cn0)) found->cn0 = signal.cn0;
  }
}

}  // namespace

S_EpochSatellite* SatelliteOf(S_Epoch& epoch, ALGO::eGNSSSystem system, unsigned int number) {
  std::vector<S_EpochSatellite>& satellites = epoch.satellites;
  const auto isIt = [&](const S_EpochSatellite& s) { return s.system == system && s.number == number; };
  const auto found = std::find_if(satellites.begin(), satellites.end(), isIt);
  if (found != satellites.end()) return &*found;
  if (satellites.size() >= kMaxSatellites) return nullptr;
  if (satellites.empty()) satellites.reserve(kUsualSatellites);
  S_EpochSatellite& satellite = satellites.emplace_back();
  satellite.system = system;
  satellite.number = number;
  return &satellite;
}

void AddSignal(S_EpochSatellite& satellite, const S_EpochSignal& signal) {
  if (satellite.signals.empty()) satellite.signals.reserve(kUsualSignals);
  if (satellite.signals.size() < kMaxSignals) satellite.signals.push_back(signal);
}

void SortSatellites(S_Epoch& epoch) {
  std::sort(epoch.satellites.begin(), epoch.satellites.end(),
            [](const auto& a, const auto& b) { return std::tie(a.system, a.number) < std::tie(b.system, b.number); });
}

void AddObservations(S_Epoch& epoch, const S_Epoch& observed) {
  epoch.offset = std::min(epoch.offset, observed.offset);
  epoch.station = observed.station;
  for (const S_EpochSatellite& seen : observed.satellites) {
    S_EpochSatellite* const satellite = SatelliteOf(epoch, seen.system, seen.number);
    if (satellite == nullptr) continue;
    if (IsNotAvailable(satellite->elevation)) satellite->elevation = seen.elevation;
    if (IsNotAvailable(satellite->azimuth)) satellite->azimuth = seen.azimuth;
    const std::vector<S_EpochSignal> sent = std::exchange(satellite->signals, seen.signals);
    AddSent(*satellite, sent);
  }
}

}  // namespace Host
