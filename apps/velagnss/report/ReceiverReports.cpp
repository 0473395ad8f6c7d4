#include "apps/velagnss/report/ReceiverReports.h"

#include <cmath>
#include <utility>

#include "geo/LeapSeconds.h"
#include "geo/NotAvailable.h"

namespace Host {
namespace {

constexpr std::size_t kMaxReceivers = 8;

}  // namespace

C_ReceiverReports::C_ReceiverReports(C_TimeBins& axis, const C_StreamAccount& account, C_PointReport& points)
    : m_axis(axis), m_account(account), m_points(points) {
  points.SetErrorSink([this](const auto&... error) { NoteError(error...); });
}

void C_ReceiverReports::BeginInput(const std::string&) { m_contents = {}; }

void C_ReceiverReports::OnFrame(const S_FrameRecord& record) {
  m_clock = &record.clock;
  m_epochs.Take(record);
}

void C_ReceiverReports::EndInput(const S_InputEnd& end) {
  m_clock = &end.clock;
  m_epochs.Finish(end.clock);
}

void C_ReceiverReports::Take(const S_Epoch& epoch) {
  const S_Moment moment = MomentOf(epoch);
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

S_Moment C_ReceiverReports::MomentOf(const S_Epoch& epoch) {
  const double seconds = StreamSecondsOf(*m_clock, epoch.mjd, epoch.timeOfDay);
  if (!std::isnan(seconds)) m_contents.seconds = seconds;
  return {m_contents.seconds, m_axis.Note(m_contents.seconds)};
}

// The epoch was on the axis when it came, long before it was solved. It has no week if the stream had no date then.
void C_ReceiverReports::NoteError(const C_GnssTime& time, const C_Vector3& error, const velagnss::StreamClock& clock) {
  const velagnss::UtcTime utc = velagnss::UtcOfGps(time);
  const std::optional<unsigned int> mjd = IsNotAvailable(time.m_week) ? std::nullopt : std::optional(utc.mjd);
  const auto bin = m_axis.Find(StreamSecondsOf(clock, mjd, utc.secondsOfDay));
  m_contents.computed.north.Add(bin, error.X());
  m_contents.computed.east.Add(bin, error.Y());
  m_contents.computed.up.Add(bin, error.Z());
}

bool C_ReceiverReports::IsComputed(const t_Station& receiver) const {
  if (!m_points.Station() || m_points.SomeErrors().empty()) return false;
  const t_Station station = m_points.Station()->number;
  return receiver == (station == m_contents.own ? std::nullopt : station);
}

}  // namespace Host
