#include "apps/velagnss/report/ReceiverReports.h"

#include <cmath>
#include <utility>

#include "geo/LeapSeconds.h"
#include "geo/NotAvailable.h"

namespace Host {
namespace {

constexpr std::size_t kMaxReceivers = 8;

}  // namespace

void C_EpochMaker::OnFrame(const S_FrameRecord& record) {
  m_offset = record.frame.offset;
  m_clock = &record.clock;
  m_epochs.Take(record);
}

void C_EpochMaker::EndInput(const S_InputEnd& end) {
  m_offset = m_sink.kEnd;
  m_clock = &end.clock;
  m_epochs.Finish(end.clock);
}

void C_EpochMaker::Make(S_Epoch&& epoch) {
  const double seconds = StreamSecondsOf(*m_clock, epoch.mjd, epoch.timeOfDay);
  m_sink.Make(m_offset, {std::move(epoch), seconds});
}

void C_ComputedReport::TakeUpTo(std::uint64_t offset) {
  m_errors.TakeUpTo(offset, [this](const S_PointError& error) { Note(error); });
}

// The epoch was on the axis when it came, long before it was solved. It has no week if the stream had no date then.
void C_ComputedReport::Note(const S_PointError& error) {
  const velagnss::UtcTime utc = velagnss::UtcOfGps(error.time);
  const std::optional<unsigned int> mjd = IsNotAvailable(error.time.m_week) ? std::nullopt : std::optional(utc.mjd);
  const auto bin = m_axis.Find(StreamSecondsOf(error.clock, mjd, utc.secondsOfDay));
  m_report.north.Add(bin, error.error.X());
  m_report.east.Add(bin, error.error.Y());
  m_report.up.Add(bin, error.error.Z());
}

C_ReceiverReports::C_ReceiverReports(C_TimeBins& axis, const C_StreamAccount& account, C_PointReport& points)
    : m_axis(axis), m_account(account), m_points(points), m_computed(axis, points) {}

void C_ReceiverReports::TakeUpTo(std::uint64_t offset) {
  m_epochs.TakeUpTo(offset, [this](const C_EpochMaker::S_Made& made) { Take(made); });
}

void C_ReceiverReports::Take(const C_EpochMaker::S_Made& made) {
  const S_Epoch& epoch = made.epoch;
  const S_Moment moment = MomentAt(made.seconds);
  S_ReceiverReport* const report = ReportOf(ReceiverOf(epoch));
  if (report == nullptr) return;
  ++report->epochs;
  report->sky.Add(epoch, moment, m_contents.signalsLeft);
  report->quality.Add(epoch, moment);
  report->place.Add(epoch, moment);
}

C_ReceiverReports::t_Station C_ReceiverReports::ReceiverOf(const S_Epoch& epoch) {
  if (!epoch.station) return std::nullopt;
  if (epoch.hasSentences) NoteOwn(*epoch.station);
  return m_contents.own == epoch.station->number ? std::nullopt : t_Station(epoch.station->number);
}

// Observations may have come before the first epoch of sentences ended.
void C_ReceiverReports::NoteOwn(const S_EpochStation& station) {
  if (m_contents.own == station.number) return;
  m_contents.own = station.number;
  if (m_contents.receivers.contains(std::nullopt)) return;
  auto report = m_contents.receivers.extract(station.number);
  if (report.empty()) return;
  report.key() = std::nullopt;
  m_contents.receivers.insert(std::move(report));
}

// There is always room for the receiver of the sentences.
S_ReceiverReport* C_ReceiverReports::ReportOf(const t_Station& receiver) {
  auto& receivers = m_contents.receivers;
  if (const auto found = receivers.find(receiver); found != receivers.end()) return &found->second;
  const std::size_t stations = receivers.size() - receivers.count(std::nullopt);
  if (!receiver || stations < kMaxReceivers - 1) return &receivers[receiver];
  m_contents.leftOut.set(*receiver % m_contents.leftOut.size());
  return nullptr;
}

S_Moment C_ReceiverReports::MomentAt(double seconds) {
  if (!std::isnan(seconds)) m_contents.seconds = seconds;
  return {m_contents.seconds, m_axis.Note(m_contents.seconds)};
}

bool C_ReceiverReports::IsComputed(const t_Station& receiver) const {
  if (!m_points.Station() || m_points.SomeErrors().empty()) return false;
  const t_Station station = m_points.Station()->number;
  return receiver == (station == m_contents.own ? std::nullopt : station);
}

}  // namespace Host
