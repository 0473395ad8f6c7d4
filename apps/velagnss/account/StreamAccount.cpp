#include "apps/velagnss/account/StreamAccount.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "stream/Names.h"

namespace Host {

double Percent(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

void C_StreamAccount::BeginInput(const std::string& name) {
  *this = C_StreamAccount();
  m_input = name;
}

void C_StreamAccount::OnFrame(const S_FrameRecord& record) {
  S_MessageCount& entry = CountOf(record.frame);
  ++entry.count;
  const bool isDecoded =
      record.decoded.depth == velagnss::Depth::Full || record.decoded.depth == velagnss::Depth::Partial;
  if (isDecoded) ++entry.decoded;
  if (isDecoded) ++m_framesDecoded;
  if (record.decoded.hasDataError) ++entry.faults;
  m_epochs.Note(record.frame.offset, record.clock.Seconds());
  m_position.Note(record.decoded.record);
  m_observations.Note(record);
}

// A linear search: a stream carries some tens of message types at most.
S_MessageCount& C_StreamAccount::CountOf(const velagnss::Frame& frame) {
  const S_MessageKey key = KeyOf(frame);
  const auto found =
      std::find_if(m_messages.begin(), m_messages.end(), [&](const S_MessageCount& entry) { return entry.key == key; });
  if (found != m_messages.end()) return *found;
  std::string name = key.name;
  if (name.empty()) name = velagnss::MessageName(frame.protocol, frame.message).Text();
  return m_messages.emplace_back(S_MessageCount{key, std::move(name), velagnss::MessageNumber(frame)});
}

// A failed checksum means a damaged frame; other rejections are mostly bytes that happen to look like a start.
void C_StreamAccount::OnRejection(const velagnss::RejectedStart& start) {
  ++(start.reason == velagnss::RejectedStart::Reason::Checksum ? m_checksumErrors : m_rejectedStarts);
  m_falseStarts.Add({start.offset, start.reason});
}

void C_StreamAccount::OnSkipped(const velagnss::SkippedRange& range) { m_skipped.Add({range.offset, range.length}); }

void C_StreamAccount::EndInput(const S_InputEnd& end) {
  m_clock = end.clock;
  m_bytes = end.reader.BytesFed();
  m_queued = end.reader.QueuedAtFinish();
  // The byte counts are those before the queue was searched again at the end of the input; the frame counts include
  // what that search recovered.
  m_atEnd = end.reader.TotalsAtFinish();
  m_framesGood = end.reader.Totals().framesGood;
  m_framesBad = end.reader.Totals().framesBad;
  m_bytesDamaged = end.reader.Totals().bytesDiscarded;
  std::sort(m_messages.begin(), m_messages.end(), [](const S_MessageCount& a, const S_MessageCount& b) {
    return std::tie(a.key.protocol, a.key.type, a.name) < std::tie(b.key.protocol, b.key.type, b.name);
  });
}

double C_StreamAccount::BadPercent() const { return Percent(m_framesBad, m_framesGood + m_framesBad); }

// From the first epoch to the end of the last one: n epochs cover n intervals. Without the last
// one the rates would be too high.
double C_StreamAccount::Duration() const {
  if (!m_epochs.First()) return 0;
  return *m_epochs.Last() - *m_epochs.First() + m_epochs.Interval();
}

double C_StreamAccount::RateOf(std::uint64_t count) const {
  return Duration() > 0 ? static_cast<double>(count) / Duration() : std::nan("");
}

}  // namespace Host
