#include "apps/velagnss/account/StreamAccount.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include "apps/velagnss/pipeline/TagBlock.h"
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

S_MessageCount& C_StreamAccount::CountOf(const velagnss::Frame& frame) {
  const S_MessageKey key = KeyOf(frame);
  if (key.name.empty()) {
    const auto found =
        std::find_if(m_messages.begin(), m_messages.end(), [&](const auto& row) { return row.key == key; });
    if (found != m_messages.end()) return *found;
  }
  std::string name = key.name;
  if (name.empty()) name = velagnss::MessageName(frame.protocol, frame.message).Text();
  return RowOf({key, std::move(name), velagnss::MessageNumber(frame)});
}

// A linear search: a stream carries some tens of message types at most. A sentence that breaks a rule of the catalog
// shares the row of those of the same name that keep it.
S_MessageCount& C_StreamAccount::RowOf(const S_MessageCount& message) {
  const auto found = std::find_if(m_messages.begin(), m_messages.end(), [&](const S_MessageCount& row) {
    return row.key.protocol == message.key.protocol && row.name == message.name;
  });
  if (found == m_messages.end())
    return m_messages.emplace_back(S_MessageCount{message.key, message.name, message.number});
  if (!found->number && message.number) {
    found->key = message.key;
    found->number = message.number;
  }
  return *found;
}

// A failed checksum means a damaged frame; other rejections are mostly bytes that happen to look like a start.
void C_StreamAccount::OnRejection(const velagnss::RejectedStart& start) {
  ++(start.reason == velagnss::RejectedStart::Reason::Checksum ? m_checksumErrors : m_rejectedStarts);
  m_falseStarts.Add({start.offset, start.reason});
}

// TAG blocks belong to the sentence after them, although the frame search passes over them.
void C_StreamAccount::OnSkipped(const velagnss::SkippedRange& range) {
  if (IsTagOnly(range))
    m_bytesOfTags += range.length;
  else
    m_skipped.Add({range.offset, range.length});
}

void C_StreamAccount::EndInput(const S_InputEnd& end) {
  m_clock = end.clock;
  m_bytes = end.totals.bytes;
  m_queued = end.totals.queued;
  // The byte counts are those before the queue was searched again at the end of the input; the frame counts include
  // what that search recovered.
  m_atEnd = end.totals.atEnd;
  m_framesGood = end.totals.overall.framesGood;
  m_framesBad = end.totals.overall.framesBad;
  m_bytesDamaged = end.totals.overall.bytesDiscarded - m_bytesOfTags;
  SortMessages();
}

void C_StreamAccount::SortMessages() {
  std::sort(m_messages.begin(), m_messages.end(), [](const S_MessageCount& a, const S_MessageCount& b) {
    return std::tie(a.key.protocol, a.key.type, a.name) < std::tie(b.key.protocol, b.key.type, b.name);
  });
}

void C_StreamAccount::AddCounts(const C_StreamAccount& other) {
  for (const auto count :
       {&C_StreamAccount::m_checksumErrors, &C_StreamAccount::m_rejectedStarts, &C_StreamAccount::m_bytes,
        &C_StreamAccount::m_queued, &C_StreamAccount::m_framesGood, &C_StreamAccount::m_framesBad,
        &C_StreamAccount::m_framesDecoded, &C_StreamAccount::m_bytesDamaged})
    this->*count += other.*count;
  for (const auto count : {&velagnss::StreamTotals::bytesAccepted, &velagnss::StreamTotals::bytesDiscarded,
                           &velagnss::StreamTotals::framesGood, &velagnss::StreamTotals::framesBad})
    m_atEnd.*count += other.m_atEnd.*count;
  for (const S_MessageCount& from : other.m_messages) {
    S_MessageCount& entry = RowOf(from);
    entry.count += from.count;
    entry.decoded += from.decoded;
    entry.faults += from.faults;
  }
  SortMessages();
  m_skipped.AddCount(other.m_skipped.Count());
  m_durationOfOthers += other.Duration() > 0 ? other.Duration() : std::nan("");
}

double C_StreamAccount::BadPercent() const { return Percent(m_framesBad, m_framesGood + m_framesBad); }

// From the first epoch to the end of the last one: n epochs cover n intervals. Without the last
// one the rates would be too high.
double C_StreamAccount::Duration() const {
  if (!m_epochs.First()) return m_durationOfOthers;
  // Whole milliseconds: the sum of times of day has rounding errors in its last digits.
  return std::round((*m_epochs.Last() - *m_epochs.First() + m_epochs.Interval()) * 1000) / 1000;
}

double C_StreamAccount::RateOf(std::uint64_t count) const {
  return Duration() > 0 ? static_cast<double>(count) / Duration() : std::nan("");
}

}  // namespace Host
