#include "apps/velagnss/pipeline/FrameReader.h"

#include <algorithm>
#include <array>

namespace Host {
namespace {

constexpr unsigned int kQueueSlack = 32;    // the queue holds that much more than the longest frame
constexpr std::size_t kRejectionBytes = 5;  // no start is judged by fewer, however the stream is cut

// What a counter has grown by since `last`. When a counter nears 2^32 it is folded, but its low 16 bits go on as if it
// had not been; one step moves it by far less than 2^16.
std::uint64_t Growth(unsigned int now, unsigned int& last) {
  const auto growth = static_cast<std::uint16_t>(now - last);
  last = now;
  return growth;
}

}  // namespace

C_FrameReader::C_FrameReader(const C_RawDataMessage::eProtocols* protocols, C_FrameSink& sink)
    : m_recognizer(protocols, eCircBufOvrflowRejectNew, true),
      m_sink(sink),
      m_capacity(m_recognizer.GetMaxFrameLength() + kQueueSlack),
      m_buffer(m_recognizer.GetMaxFrameLength()),
      m_frame(m_buffer.data(), static_cast<unsigned int>(m_buffer.size())) {
  m_recognizer.SetPatientSearch(true);
  m_kept.reserve(m_capacity);
}

void C_FrameReader::Restart() {
  m_recognizer.FullProcessingReset();
  m_fed = m_head = 0;
  m_inSkippedRun = false;
  m_kept.clear();
  m_lastCounters = {};
  m_totals = m_totalsAtEnd = {};
  m_queuedAtEnd = 0;
}

void C_FrameReader::Feed(std::span<const unsigned char> bytes) {
  m_current = bytes;
  m_currentFrom = m_fed;
  while (m_fed - m_currentFrom < bytes.size()) {
    const std::span<const unsigned char> rest = bytes.subspan(m_fed - m_currentFrom);
    Pump(rest.first(std::min<std::size_t>(rest.size(), m_recognizer.GetFreeSpace())));
  }
  KeepQueuedBytes(bytes);
}

void C_FrameReader::Pump(std::span<const unsigned char> piece) {
  std::uint64_t before = m_head;
  unsigned int result = m_recognizer.DoRecognition(piece.data(), static_cast<unsigned short>(piece.size()), m_frame);
  m_fed += piece.size();
  while (true) {
    m_head = m_fed - Queued();
    NoteStep(result, before);
    if (result == eRecNoNewData) return;
    before = m_head;
    result = m_recognizer.DoRecognition(nullptr, 0, m_frame);
  }
}

void C_FrameReader::NoteStep(unsigned int result, std::uint64_t before) {
  if (m_head == before) return;  // nothing left the queue
  const std::uint64_t acceptedBefore = m_totals.bytesAccepted;
  TakeCounters();
  if (result == eRecFrameComplete) {
    CloseSkippedRun(before);
    m_sink.OnFrame(m_frame, before);
    return;
  }
  // Line ends that belong to the frame before come first, then what is skipped.
  const std::uint64_t skippedFrom = before + (m_totals.bytesAccepted - acceptedBefore);
  if (skippedFrom == m_head) return;
  if (!m_inSkippedRun) m_skippedFrom = skippedFrom;
  m_inSkippedRun = true;
  if (result == eRecChecksumError || result == eRecFrameRejected) NoteRejection(result, before);
}

void C_FrameReader::NoteRejection(unsigned int result, std::uint64_t offset) {
  std::array<unsigned char, kRejectionBytes> bytes;
  std::size_t count = 0;
  const std::uint64_t keptFrom = m_currentFrom - m_kept.size();
  for (std::uint64_t at = offset; at < m_fed && count < bytes.size(); ++at)
    bytes[count++] = at < m_currentFrom ? m_kept[at - keptFrom] : m_current[at - m_currentFrom];
  m_sink.OnRejection({offset, result, std::span(bytes).first(count)});
}

void C_FrameReader::CloseSkippedRun(std::uint64_t end) {
  if (m_inSkippedRun) m_sink.OnSkipped(m_skippedFrom, end - m_skippedFrom);
  m_inSkippedRun = false;
}

void C_FrameReader::TakeCounters() {
  const S_RecognizerStatistics& now = *m_recognizer.GetStatistics();
  m_totals.bytesAccepted += Growth(now.bytesAccepted, m_lastCounters.bytesAccepted);
  m_totals.bytesDiscarded += Growth(now.bytesDiscarded, m_lastCounters.bytesDiscarded);
  m_totals.framesGood += Growth(now.framesGood, m_lastCounters.framesGood);
  m_totals.framesBad += Growth(now.framesBad, m_lastCounters.framesBad);
}

void C_FrameReader::KeepQueuedBytes(std::span<const unsigned char> bytes) {
  const std::size_t queued = Queued();
  const std::size_t fromBytes = std::min(queued, bytes.size());
  m_kept.erase(m_kept.begin(), m_kept.end() - static_cast<std::ptrdiff_t>(queued - fromBytes));
  m_kept.insert(m_kept.end(), bytes.end() - static_cast<std::ptrdiff_t>(fromBytes), bytes.end());
  m_current = {};
  m_currentFrom = m_fed;
}

// Each round gives up one byte, the false start's first, and looks at what stands behind it.
void C_FrameReader::Finish() {
  TakeCounters();
  m_totalsAtEnd = m_totals;
  m_queuedAtEnd = m_kept.size();
  while (!m_kept.empty()) {
    if (!m_inSkippedRun) m_skippedFrom = m_head;
    m_inSkippedRun = true;
    ++m_totals.bytesDiscarded;
    const std::vector<unsigned char> rest(m_kept.begin() + 1, m_kept.end());
    m_recognizer.FullProcessingReset();
    m_lastCounters = {};
    m_fed = m_head += 1;
    m_kept.clear();
    Feed(rest);
  }
  CloseSkippedRun(m_fed);
}

}  // namespace Host
