#include "apps/velagnss/rinex/ObsSelection.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>

#include "apps/velagnss/pipeline/Observations.h"
#include "apps/velagnss/rinex/RinexText.h"

namespace Host {
namespace {

constexpr double kLightSpeed = 299'792'458;  // m/s

// Carriers of GLONASS, Hz: GLONASS ICD, table 3.1.
double GlonassFrequency(char band, int channel) {
  return band == '1' ? 1602e6 + 562.5e3 * channel : 1246e6 + 437.5e3 * channel;
}

// m, to be added to a phase range; 0 without one.
double BiasOf(const S_ObsContext& context, t_SignalCode code) {
  using Biases = velagnss::Rtcm3GlonassBiases;
  if (!context.biases || context.biases->isAligned != 0) return 0;
  const double Biases::*const ofL1 = code[1] == 'P' ? &Biases::l1P : &Biases::l1Ca;
  const double Biases::*const ofL2 = code[1] == 'P' ? &Biases::l2P : &Biases::l2Ca;
  const double bias = *context.biases.*(code[0] == '1' ? ofL1 : ofL2);
  return IsNotAvailable(bias) ? 0 : bias;
}

}  // namespace

C_ObsSelection::C_ObsSelection(const S_RinexOptions& options, const S_ObsContext& context, C_LeftOut* leftOut)
    : m_options(options),
      m_context(context),
      m_leftOut(leftOut),
      m_isSelected(SelectNavSystems(options.systems)),
      m_types(ReadObsTypes(options.obsTypes)) {}

bool C_ObsSelection::Take(S_ObsEpoch& epoch) {
  const std::string objection = Objection(epoch);
  if (!objection.empty()) LeaveOut(epoch, objection);
  const bool isWritten = objection.empty() && IsInInterval(epoch.time);
  if (isWritten) m_last = epoch.time;
  std::erase_if(epoch.signals, [&](S_ObsSignal& signal) {
    if (!m_isSelected[signal.system]) return true;
    FlagSlip(signal, epoch, isWritten);
    if (isWritten && LacksChannel(signal)) LeaveOut(epoch, "a GLONASS satellite whose frequency channel is not known");
    if (!isWritten || LacksChannel(signal)) return true;
    Finish(signal);
    return !KeepTypes(signal);
  });
  return !epoch.signals.empty();
}

// Epochs before the first date of their input are less than a week older than it.
bool C_ObsSelection::Date(S_ObsEpoch& epoch) const {
  using eDate = S_ObsEpoch::eDate;
  const std::optional<std::int64_t>& first = m_context.firstDated[epoch.input];
  if (epoch.date == eDate::Known || !first) return epoch.date != eDate::None;
  epoch.time = epoch.time % kMsPerWeek + *first / kMsPerWeek * kMsPerWeek;
  if (epoch.time > *first) epoch.time -= kMsPerWeek;
  epoch.date = eDate::Known;
  return true;
}

std::string C_ObsSelection::Objection(S_ObsEpoch& epoch) const {
  if (!Date(epoch)) return "the date is not known; give the date of the recording with --date";
  if (!IsInCalendar(static_cast<double>(epoch.time) / double{kMsPerSecond})) return std::string(kNotInCalendar);
  if (m_last && epoch.time <= *m_last) return "not later than the epoch before";
  return {};
}

bool C_ObsSelection::IsInInterval(std::int64_t time) const {
  const auto interval = static_cast<std::int64_t>(std::llround(m_options.interval * double{kMsPerSecond}));
  if (interval == 0) return true;
  const std::int64_t after = time % interval;
  return std::min(after, interval - after) < kSameEpoch;
}

// A slip is flagged at the next phase that is written. Another input goes on after a gap in which anything may have
// happened, and so does a change between the two families of messages. Times of week cannot measure longer gaps than
// half a week, so that the lock after one is not known.
void C_ObsSelection::FlagSlip(S_ObsSignal& signal, const S_ObsEpoch& epoch, bool isWritten) {
  const bool isLegacy = (signal.flags & S_ObsSignal::eIsLegacy) != 0;
  const auto [place, isNew] =
      m_signals.try_emplace({signal.system, signal.number, static_cast<unsigned char>(signal.code[0]),
                             static_cast<unsigned char>(signal.code[1])},
                            S_History{false, isLegacy, epoch.input, epoch.time});
  S_History& history = place->second;
  const bool hasSlipped = (signal.flags & S_ObsSignal::eLockLost) != 0 || history.isLegacy != isLegacy ||
                          history.input != epoch.input || epoch.time - history.time > kMsPerWeek / 2;
  history = {history.isSlipPending || hasSlipped, isLegacy, epoch.input, epoch.time};
  if (!history.isSlipPending || !isWritten || signal.values[ePhase] == kNoNumber) return;
  signal.flags |= S_ObsSignal::eLockLost;
  history.isSlipPending = false;
}

// A satellite whose channel never became known: its phases are of no use, and the header must name the channel.
bool C_ObsSelection::LacksChannel(const S_ObsSignal& signal) const {
  return NavSystems()[signal.system].letter == 'R' && IsNotAvailable(m_context.channels[signal.number]);
}

// Converts what was kept in meters, as the channel is known now, and aligns the phases of GLONASS with its codes.
void C_ObsSelection::Finish(S_ObsSignal& signal) const {
  if (NavSystems()[signal.system].letter != 'R') return;
  const double perMeter = GlonassFrequency(signal.code[0], m_context.channels[signal.number]) / kLightSpeed;
  if ((signal.flags & S_ObsSignal::eInMeters) != 0) {
    signal.values[ePhase] *= perMeter;
    if (signal.values[eDoppler] != kNoNumber) signal.values[eDoppler] *= -perMeter;
  }
  signal.values[ePhase] += BiasOf(m_context, signal.code) * perMeter;
}

// With a list of types only these remain. Zero means the same as a missing value.
bool C_ObsSelection::KeepTypes(S_ObsSignal& signal) const {
  const std::vector<std::string>& types = m_types[signal.system];
  for (std::size_t kind = 0; kind < kNumObsKinds; ++kind) {
    const std::string name = {kObsKindLetters[kind], signal.code[0], signal.code[1]};
    const bool isListed = types.empty() || std::find(types.begin(), types.end(), name) != types.end();
    if (!isListed || !IsRinexObservation(signal.values[kind])) signal.values[kind] = kNoNumber;
  }
  return std::any_of(signal.values.begin(), signal.values.end(), [](double value) { return value != kNoNumber; });
}

void C_ObsSelection::LeaveOut(const S_ObsEpoch& epoch, const std::string& reason) const {
  if (m_leftOut != nullptr) m_leftOut->Add(fmt::format("epoch at {} ms", epoch.time), reason);
}

}  // namespace Host
