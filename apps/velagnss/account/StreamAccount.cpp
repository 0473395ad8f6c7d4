#include "apps/velagnss/account/StreamAccount.h"

#include <cmath>

#include "apps/velagnss/pipeline/TagBlock.h"

namespace Host {

double Percent(std::uint64_t part, std::uint64_t whole) {
  return whole == 0 ? 0 : 100.0 * static_cast<double>(part) / static_cast<double>(whole);
}

void C_StreamAccount::BeginInput(const std::string& name) {
  *this = C_StreamAccount();
  m_input = name;
}

void C_StreamAccount::OnFrame(const S_FrameRecord& record) {
  S_MessageCount& entry = *m_messages.Of(record.frame);
  ++entry.count;
  if (IsDecoded(record.decoded)) {
    ++entry.decoded;
    ++m_framesDecoded;
  }
  if (record.decoded.hasDataError) ++entry.faults;
  m_epochs.Note(record.frame.offset, record.clock.Seconds());
  m_position.Note(record.decoded.record);
  m_observations.Note(record);
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
  m_messages.Sort();
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
  for (const S_MessageCount& from : other.Messages()) {
    S_MessageCount& entry = *m_messages.Of(from);
    entry.count += from.count;
    entry.decoded += from.decoded;
    entry.faults += from.faults;
  }
  m_messages.Sort();
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
