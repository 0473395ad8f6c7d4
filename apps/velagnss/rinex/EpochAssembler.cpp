#include "apps/velagnss/rinex/EpochAssembler.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "apps/velagnss/pipeline/Observations.h"

namespace Host {
namespace {

double KnownOr(double value) { return IsNotAvailable(value) ? kNoNumber : value; }

std::int64_t InWeek(const velagnss::Rtcm3Time& time) {
  return std::llround(time.seconds * static_cast<double>(kMsPerSecond));
}

unsigned char FlagsOf(const velagnss::Rtcm3Observations& message, const velagnss::Rtcm3Signal& signal) {
  using velagnss::Rtcm3Lock;
  unsigned int flags = 0;
  if (signal.lock == Rtcm3Lock::Lost || signal.lock == Rtcm3Lock::MaybeLost) flags |= S_ObsSignal::eLockLost;
  if (signal.halfCycle == 1) flags |= S_ObsSignal::eHalfCycle;
  if (IsNotAvailable(signal.frequency)) flags |= S_ObsSignal::eInMeters;
  if (message.msm == 0) flags |= S_ObsSignal::eIsLegacy;
  return static_cast<unsigned char>(flags);
}

}  // namespace

std::optional<double> C_EpochAssembler::OpenTime() const {
  if (!IsOpen()) return std::nullopt;
  return static_cast<double>(m_epoch.time % kMsPerWeek) / static_cast<double>(kMsPerSecond);
}

void C_EpochAssembler::Add(const velagnss::Rtcm3Observations& message) {
  if (message.numSignals == 0) return;
  if (IsNotAvailable(message.time.seconds)) return m_leaveOut("the time of GLONASS messages is not known yet");
  if (message.rangeModulus > 0) return m_leaveOut(fmt::format("{} has only parts of the ranges", message.message));
  const std::optional<double> open = OpenTime();
  if (MayHaveWrongLeapSeconds(message, open)) return m_leaveOut("the leap seconds of GLONASS are not known yet");
  if (open && std::abs(MillisecondsFrom(*open, message.time.seconds)) >= kSameEpoch) Close();
  if (!IsOpen()) m_epoch = {InWeek(message.time), S_ObsEpoch::eDate::None, m_input, {}};
  DateEpoch(message.time);
  for (unsigned int i = 0; i < message.numSignals; ++i) AddSignal(message, message.signals[i]);
}

void C_EpochAssembler::DateEpoch(const velagnss::Rtcm3Time& time) {
  using eDate = S_ObsEpoch::eDate;
  const eDate date = time.isWeekAssumed ? eDate::Assumed : eDate::Known;
  if (IsNotAvailable(time.week) || date <= m_epoch.date) return;
  m_epoch.time = m_epoch.time % kMsPerWeek + time.week * kMsPerWeek;
  m_epoch.date = date;
}

void C_EpochAssembler::AddSignal(const velagnss::Rtcm3Observations& message, const velagnss::Rtcm3Signal& signal) {
  const velagnss::Rtcm3Satellite& satellite = message.satellites[signal.satellite];
  const std::size_t system = NavSystemOf(satellite.system);
  if (IsNotAvailable(satellite.svId)) return m_leaveOut("a GLONASS satellite of unknown slot");
  const S_NavSystem& row = NavSystems()[system];
  const t_SignalCode code = {signal.code[0], signal.code[1]};
  if (!IsSignal(row.letter, code))
    return m_leaveOut(fmt::format("RINEX has no code for signal {} of {}", signal.number, row.name));
  S_ObsSignal out;
  out.system = static_cast<unsigned char>(system);
  out.number = static_cast<unsigned char>(satellite.svId - row.satelliteOffset);
  out.code = code;
  out.flags = FlagsOf(message, signal);
  out.rank = message.msm;
  const bool isInMeters = (out.flags & S_ObsSignal::eInMeters) != 0;
  out.values = {KnownOr(signal.data.Pseudorange), KnownOr(isInMeters ? signal.phaseRange : signal.data.CarrierPhase),
                KnownOr(isInMeters ? signal.rangeRate : signal.data.Measurement3), KnownOr(signal.data.SignalStrength)};
  Insert(out);
}

void C_EpochAssembler::Insert(const S_ObsSignal& signal) {
  const auto isBefore = [](const S_ObsSignal& a, const S_ObsSignal& b) { return a.Key() < b.Key(); };
  const auto place = std::lower_bound(m_epoch.signals.begin(), m_epoch.signals.end(), signal, isBefore);
  if (place == m_epoch.signals.end() || place->Key() != signal.Key())
    m_epoch.signals.insert(place, signal);
  else if (signal.rank > place->rank)
    *place = signal;
}

void C_EpochAssembler::Close() {
  if (!m_epoch.signals.empty()) m_onEpoch(m_epoch);
  m_epoch.signals.clear();
}

void C_EpochAssembler::EndInput() {
  Close();
  ++m_input;
}

}  // namespace Host
