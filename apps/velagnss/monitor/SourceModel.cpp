#include "apps/velagnss/monitor/SourceModel.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace Host {
namespace {

using eState = S_LinkChange::eState;

// So many bytes without a frame are noise: no frame has more than 2048.
constexpr std::uint64_t kNoise = 4096;

// In words, by S_LinkChange::eState.
constexpr std::string_view kLinkStates[] = {"connecting", "connected", "lost", "refused", "failed"};

}  // namespace

C_SourceModel::C_SourceModel(std::string name, t_Now now) : m_name(std::move(name)), m_now(std::move(now)) {}

double C_SourceModel::MachineTime() const { return std::chrono::duration<double>(m_now().time_since_epoch()).count(); }

// A pipe may be fed by a receiver: what has come from it grows old as well.
double C_SourceModel::Now() const {
  if (m_isLive) return MachineTime();
  return m_hasEnded ? m_seconds : m_seconds + Silence();
}

C_TimeText C_SourceModel::When() const {
  if (m_isLive) return C_TimeText::OfMachine(m_now());
  return m_time ? m_time->value : C_TimeText();
}

// Receivers send every second, or faster; reference stations may take half a minute.
double C_SourceModel::Patience() const {
  constexpr double kLeast = 5;     // s
  constexpr double kMost = 300;    // s
  constexpr double kEpochs = 3.5;  // an epoch is known when the next one begins
  return std::clamp(kEpochs * m_receivers.EpochInterval(), kLeast, kMost);
}

void C_SourceModel::BeginInput(const std::string& name) { m_raw.BeginInput(name); }

void C_SourceModel::OnBytes(std::span<const unsigned char> bytes, t_Arrival arrival) {
  m_isLive = m_isLive || arrival;
  m_bytes += bytes.size();
  m_bytesAt = MachineTime();
  if (m_isLive) m_byteRate.Add(m_bytesAt, bytes.size());
  m_raw.OnBytes(arrival);
}

void C_SourceModel::OnFrame(const S_FrameRecord& record) {
  const double before = std::exchange(m_seconds, record.clock.Seconds());
  const double now = m_isLive ? m_bytesAt : m_seconds;
  if (!std::isnan(m_seconds) && m_seconds != before) m_time = {C_TimeText::StreamTime(record.clock, m_seconds), now};
  ++m_frames;
  m_bytesAtFrame = m_bytes;
  m_frameRate.Add(now);
  const std::uint64_t end = record.frame.offset + record.frame.length;
  if (!m_isLive && !std::isnan(now)) m_byteRate.Add(now, end - std::exchange(m_bytesRated, end));
  m_receivers.Take(record, now);
  m_messages.Take(record, now);
  if (record.decoded.hasDataError) m_faults.OnWrongContents(record, When());
  m_raw.OnFrame(record);
}

void C_SourceModel::OnRejection(const velagnss::RejectedStart& start) {
  m_faults.OnRejection(start, When());
  m_raw.OnRejection(start);
}

void C_SourceModel::OnSkipped(const velagnss::SkippedRange& range) {
  m_faults.OnSkipped(range, When());
  m_raw.OnSkipped(range);
}

void C_SourceModel::EndInput(const S_InputEnd& end) {
  m_hasEnded = true;
  OnTotals(end.totals.overall);
  m_receivers.Finish(end.clock);
  m_raw.EndInput(end);
}

// A notice changes nothing: the program shows it among its messages.
void C_SourceModel::OnLink(const S_LinkChange& change) {
  m_isLive = true;
  m_raw.OnLink(change);
  if (change.state == eState::Notice) return;
  if (change.state == eState::Connected) ++m_connected;
  if (change.state == eState::Lost) ++m_lost;
  m_link = change;
}

S_LinkView C_SourceModel::Link() const {
  S_LinkView view;
  view.connected = m_connected;
  view.lost = m_lost;
  if (!m_link) return view;
  view.state = kLinkStates[static_cast<std::size_t>(m_link->state)];
  view.text = m_link->text;
  view.failures = m_link->failures;
  const double at = std::chrono::duration<double>(m_link->at.time_since_epoch()).count();
  view.age = S_AgeClock{MachineTime()}.AgeOf(at);
  return view;
}

double C_SourceModel::Silence() const { return S_AgeClock{MachineTime()}.AgeOf(m_bytesAt); }

// A link that has failed before it was ever connected is lost as well.
eSourceState C_SourceModel::State() const {
  if (m_link && m_link->state == eState::Failed) return eSourceState::Failed;
  if (m_hasEnded) return eSourceState::Ended;
  if (m_link && m_link->state != eState::Connected && m_connected + m_link->failures > 0) return eSourceState::Lost;
  if (m_bytes == 0) return eSourceState::Waiting;
  if (Silence() > Patience()) return eSourceState::Silent;
  return m_bytes - m_bytesAtFrame > kNoise ? eSourceState::NoFrames : eSourceState::Receiving;
}

S_SourceView C_SourceModel::Snapshot() const {
  const S_AgeClock clock{Now(), Patience()};
  S_SourceView view;
  view.name = m_name;
  view.silence = Silence();
  view.state = State();
  view.link = Link();
  view.time = Aged(m_time, clock);
  view.bytes = m_bytes;
  view.framesGood = m_frames;
  view.framesBad = m_framesBad;
  view.bytesPerSecond = m_byteRate.PerSecond(clock.now);
  view.framesPerSecond = m_frameRate.PerSecond(clock.now);
  m_receivers.Show(view, clock);
  m_messages.Show(view, clock);
  m_faults.Show(view);
  m_raw.Show(view);
  return view;
}

}  // namespace Host
