// The recognizer driven as the documents advise: patient, fed no more than fits, pumped until it is idle, and emptied
// byte by byte at the end. The recognizer does not keep the bytes that it drops, so the reader keeps a window of the
// stream for its events.
#include "stream/FrameReader.h"

#include <algorithm>
#include <array>

#include "framing/FrameRecognizer.h"
#include "framing/UnlistedSentence.h"

namespace velagnss {
namespace {

// A counter folds when it nears 2^32, but its low 16 bits go on as if it had not. So it is looked at before it can have
// grown by 2^16.
constexpr std::uint64_t kCountedBytes = 1U << 15;

// Modulo 2^16: right whether or not the counter folded in between.
std::uint64_t Growth(unsigned int now, unsigned int before) { return static_cast<std::uint16_t>(now - before); }

StreamTotals GrowthOf(const S_RecognizerStatistics& now, const S_RecognizerStatistics& before) {
  return {Growth(now.bytesAccepted, before.bytesAccepted), Growth(now.bytesDiscarded, before.bytesDiscarded),
          Growth(now.framesGood, before.framesGood), Growth(now.framesBad, before.framesBad)};
}

StreamTotals operator+(const StreamTotals& a, const StreamTotals& b) {
  return {a.bytesAccepted + b.bytesAccepted, a.bytesDiscarded + b.bytesDiscarded, a.framesGood + b.framesGood,
          a.framesBad + b.framesBad};
}

// The bytes of the stream that events can show: the piece that is being read, and before it those that the recognizer
// held when the piece came.
class Window {
 public:
  explicit Window(std::size_t capacity) : m_capacity(capacity), m_kept(new unsigned char[2 * capacity]) {}

  // Nothing is held; the stream goes on at `offset`.
  void Clear(std::uint64_t offset) {
    m_first = m_size = m_pieceSize = 0;
    m_pieceOffset = offset;
  }

  void SetPiece(const unsigned char* bytes, std::size_t count) {
    m_piece = bytes;
    m_pieceSize = count;
  }

  // Copies the last `count` bytes, at most the capacity, and lets go of the piece. Fewer are kept if fewer are held, as
  // after events were switched on in mid-stream.
  void Keep(std::size_t count) {
    count = std::min(count, m_size + m_pieceSize);
    const std::size_t fromPiece = std::min(count, m_pieceSize);
    const std::size_t fromKept = count - fromPiece;
    m_first += m_size - fromKept;
    if (m_first + count > 2 * m_capacity) {  // the bytes move only when the room is used up, not with every piece
      std::copy_n(&m_kept[m_first], fromKept, &m_kept[0]);
      m_first = 0;
    }
    std::copy_n(m_piece + (m_pieceSize - fromPiece), fromPiece, &m_kept[m_first + fromKept]);
    m_size = count;
    m_pieceOffset += m_pieceSize;
    m_pieceSize = 0;
  }

  // Copies the bytes of the stream in [from, to), as far as they are held and there is room for them; returns how many.
  std::size_t Copy(std::uint64_t from, std::uint64_t to, unsigned char* out, std::size_t room) const {
    const std::uint64_t keptOffset = m_pieceOffset - m_size;
    from = std::max(from, keptOffset);
    if (from >= to) return 0;
    const auto count = static_cast<std::size_t>(std::min<std::uint64_t>(to - from, room));
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint64_t at = from + i;
      out[i] = at < m_pieceOffset ? m_kept[m_first + (at - keptOffset)] : m_piece[at - m_pieceOffset];
    }
    return count;
  }

 private:
  std::size_t m_capacity;
  std::unique_ptr<unsigned char[]> m_kept;  // room for twice the capacity
  std::size_t m_first = 0;                  // of the kept bytes in their room
  std::size_t m_size = 0;
  const unsigned char* m_piece = nullptr;
  std::size_t m_pieceSize = 0;
  std::uint64_t m_pieceOffset = 0;
};

// The run of bytes without a frame that the reader is in, if it is in one.
class SkippedRun {
 public:
  bool IsOpen() const { return m_isOpen; }

  // The bytes in [from, to) belong to no frame.
  void Extend(std::uint64_t from, std::uint64_t to, const Window& window) {
    if (!m_isOpen) {
      m_isOpen = true;
      m_range = {};
      m_range.offset = from;
    }
    m_range.length = to - m_range.offset;
    m_range.size += window.Copy(from, to, m_bytes.data() + m_range.size, m_bytes.size() - m_range.size);
  }
  // A run can have several causes. The most specific one wins: the enumerators are in that order.
  void SetReason(SkippedRange::Reason reason) { m_range.reason = std::max(m_range.reason, reason); }

  const SkippedRange& Close() {
    m_isOpen = false;
    m_range.data = m_bytes.data();
    return m_range;
  }
  void Forget() { m_isOpen = false; }

 private:
  bool m_isOpen = false;
  SkippedRange m_range;
  std::array<unsigned char, SkippedRange::kMaxBytes> m_bytes{};
};

}  // namespace

class FrameReader::Impl {
 public:
  Impl();

  bool Feed(const unsigned char* bytes, std::size_t count);
  void Finish() { m_isFinishing = true; }
  const StreamItem& Next();
  void Restart();

  StreamTotals Totals() const { return m_totals + GrowthOf(*m_recognizer.GetStatistics(), m_counted); }
  std::uint64_t Queued() const { return m_recognizer.GetQueuedBytes(); }
  std::uint64_t Head() const { return m_fed - Queued(); }  // offset of the oldest byte queued

  // The overflow policy never applies, because no more is fed than fits.
  C_FrameRecognizer m_recognizer{nullptr, eCircBufOvrflowRejectNew, true};
  bool m_areEventsReported = false;
  std::uint64_t m_fed = 0;  // bytes handed to the recognizer
  StreamTotals m_totalsAtFinish;
  std::uint64_t m_queuedAtFinish = 0;

 private:
  bool Advance();
  bool TakePiece();
  bool TakeTheRest();
  bool EndLine(std::size_t queued);
  void GiveUpOneByte(std::size_t queued);
  void Step(const unsigned char* bytes, std::size_t count);
  void StepAndReport(const unsigned char* bytes, std::size_t count);
  void Note(eRecognitionResult result, std::size_t count);
  void NoteSkipped(eRecognitionResult result, std::uint64_t before, std::uint64_t lineEnds);
  void NoteFrame(unsigned short length, std::uint64_t offset);
  void NoteRejection(eRecognitionResult result, std::uint64_t offset);
  void CloseSkippedRun();
  void Push(const StreamItem& item) { m_items[m_numItems++] = item; }
  void TakeCounters();
  void ResetRecognizer(std::uint64_t offset);

  const unsigned int m_capacity;  // of the recognizer's queue
  std::unique_ptr<unsigned char[]> m_buffer;
  C_RawDataMessage m_message;

  const unsigned char* m_rest = nullptr;  // what has been fed and not yet been handed to the recognizer
  std::size_t m_restSize = 0;
  bool m_isPumping = false;                 // the recognizer has more to say about what it holds
  bool m_isFinishing = false;               // what it holds at the end of `m_rest` is given up byte by byte
  bool m_isSearchedAgain = false;           // that has begun
  std::unique_ptr<unsigned char[]> m_tail;  // what is searched again

  Window m_window;
  SkippedRun m_skipped;
  std::array<unsigned char, RejectedStart::kMaxBytes> m_rejectedBytes{};

  // What one step may yield: the end of a skipped run, and a frame.
  std::array<StreamItem, 2> m_items;
  std::size_t m_numItems = 0;
  std::size_t m_nextItem = 0;
  const StreamItem m_nothing;

  S_RecognizerStatistics m_counted{};  // the recognizer's counters as far as they are in `m_totals`
  std::uint64_t m_countedAt = 0;       // bytes fed by then
  StreamTotals m_totals;
};

FrameReader::Impl::Impl()
    : m_capacity(m_recognizer.GetFreeSpace()),
      m_buffer(new unsigned char[m_recognizer.GetMaxFrameLength()]),
      m_message(m_buffer.get(), m_recognizer.GetMaxFrameLength()),
      m_tail(new unsigned char[m_capacity + 1]),  // and a line end
      m_window(m_capacity) {
  // Patience makes the frames independent of how the input is cut. An acknowledgement is "$>" and any text up to a line
  // end: searching for it turns noise into frames and hides other replies, so callers must ask for it.
  m_recognizer.SetPatientSearch(true);
  m_recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
}

void FrameReader::Impl::Restart() {
  ResetRecognizer(0);
  m_totals = m_totalsAtFinish = {};
  m_queuedAtFinish = 0;
  m_restSize = 0;
  m_isPumping = m_isFinishing = m_isSearchedAgain = false;
  m_skipped.Forget();
  m_numItems = m_nextItem = 0;
}

// The counters restart at zero with the recognizer, so the part of them already taken is zero, too.
void FrameReader::Impl::ResetRecognizer(std::uint64_t offset) {
  m_recognizer.FullProcessingReset();
  m_counted = {};
  m_window.Clear(offset);
  m_fed = m_countedAt = offset;
}

// The piece is not copied: a second one is refused until the first is used up.
bool FrameReader::Impl::Feed(const unsigned char* bytes, std::size_t count) {
  if (m_restSize > 0 || m_isPumping || m_isFinishing) return false;
  m_rest = bytes;
  m_restSize = bytes == nullptr ? 0 : count;
  m_window.SetPiece(m_rest, m_restSize);
  return true;
}

// Most steps yield nothing, a few yield two items: steps are made until there is something to hand out.
const StreamItem& FrameReader::Impl::Next() {
  if (m_nextItem == m_numItems) {
    m_nextItem = m_numItems = 0;
    while (m_numItems == 0 && Advance()) {
    }
  }
  return m_nextItem < m_numItems ? m_items[m_nextItem++] : m_nothing;
}

// Makes one step; false when nothing is left to do.
bool FrameReader::Impl::Advance() {
  if (m_isPumping) {
    Step(nullptr, 0);
    return true;
  }
  if (TakePiece()) return true;
  if (!m_isFinishing) return false;
  if (TakeTheRest()) return true;
  m_isFinishing = m_isSearchedAgain = false;
  CloseSkippedRun();
  return m_numItems > 0;
}

// Hands as many bytes to the recognizer as it can queue.
bool FrameReader::Impl::TakePiece() {
  if (m_restSize == 0) {
    // The caller's buffer may be gone at the next call.
    m_areEventsReported ? m_window.Keep(Queued()) : m_window.Clear(m_fed);
    return false;
  }
  const std::size_t count = std::min<std::size_t>(m_restSize, m_recognizer.GetFreeSpace());
  const unsigned char* const bytes = m_rest;
  m_rest += count;
  m_restSize -= count;
  m_isPumping = true;
  // Before the step, which may count up to a whole queue.
  if (m_fed - m_countedAt > kCountedBytes) TakeCounters();
  Step(bytes, count);
  return true;
}

// What waits when the stream has ended: a sentence that lacks only its line end, or a false start.
bool FrameReader::Impl::TakeTheRest() {
  const auto queued = static_cast<std::size_t>(Queued());
  TakeCounters();
  if (!m_isSearchedAgain) {
    // What holds for the stream itself, before some bytes are searched a second time.
    m_totalsAtFinish = m_totals;
    m_queuedAtFinish = queued;
    m_isSearchedAgain = true;
  }
  if (queued == 0) return false;
  m_recognizer.CopyQueuedBytes(m_tail.get(), m_capacity);
  if (!EndLine(queued)) GiveUpOneByte(queued);
  return true;
}

// The end of the stream is taken for the line end of its last sentence. The recognizer gets it as a byte, which counts
// neither as part of the frame nor in the totals. If that makes no frame, the recognizer is reset next.
bool FrameReader::Impl::EndLine(std::size_t queued) {
  unsigned char* const lineEnd = m_tail.get() + queued;
  *lineEnd = '\r';
  const auto length = static_cast<unsigned int>(queued + 1);
  if (framing::JudgeSentence(m_tail.get(), length) != framing::eSentence::Checked) return false;
  eRecognitionResult result = m_recognizer.DoRecognition(lineEnd, 1, m_message);
  while (result != eRecNoNewData && Queued() == length) result = m_recognizer.DoRecognition(nullptr, 0, m_message);
  if (result != eRecFrameComplete) return false;
  NoteFrame(std::min(m_message.length, static_cast<unsigned short>(queued)), m_fed - queued);
  // Of some protocols the line end is not in the frame: it is still queued.
  while (Queued() > 0) m_recognizer.DoRecognition(nullptr, 0, m_message);
  --m_totals.bytesAccepted;
  return true;
}

// The oldest byte is a false start that waits for bytes that will not come: what follows it is searched afresh.
void FrameReader::Impl::GiveUpOneByte(std::size_t queued) {
  const std::uint64_t head = m_fed - queued;
  if (m_areEventsReported) {
    m_skipped.Extend(head, head + 1, m_window);
    m_skipped.SetReason(SkippedRange::Reason::EndOfStream);
  }
  ResetRecognizer(head + 1);
  // The reset drops the byte without counting it.
  ++m_totals.bytesDiscarded;
  m_rest = m_tail.get() + 1;
  m_restSize = queued - 1;
  m_window.SetPiece(m_rest, m_restSize);
}

void FrameReader::Impl::Step(const unsigned char* bytes, std::size_t count) {
  if (m_areEventsReported) return StepAndReport(bytes, count);
  Note(m_recognizer.DoRecognition(bytes, static_cast<unsigned short>(count), m_message), count);
}

void FrameReader::Impl::StepAndReport(const unsigned char* bytes, std::size_t count) {
  const std::uint64_t before = Head();
  const unsigned int acceptedBefore = m_recognizer.GetStatistics()->bytesAccepted;
  const eRecognitionResult result = m_recognizer.DoRecognition(bytes, static_cast<unsigned short>(count), m_message);
  Note(result, count);
  if (result == eRecFrameComplete) return;
  NoteSkipped(result, before, Growth(m_recognizer.GetStatistics()->bytesAccepted, acceptedBefore));
}

void FrameReader::Impl::Note(eRecognitionResult result, std::size_t count) {
  m_fed += count;
  if (result == eRecNoNewData) m_isPumping = false;
  // The frame is what has just left the queue.
  if (result == eRecFrameComplete) NoteFrame(m_message.length, Head() - m_message.length);
}

void FrameReader::Impl::NoteFrame(unsigned short length, std::uint64_t offset) {
  CloseSkippedRun();
  Push(Frame{m_message.data, length, m_message.protocol, m_message.messageType, offset});
}

// What left the queue without a frame: first line ends that belong to the frame before, then what is skipped.
void FrameReader::Impl::NoteSkipped(eRecognitionResult result, std::uint64_t before, std::uint64_t lineEnds) {
  const std::uint64_t head = Head();
  if (before + lineEnds == head) return;
  m_skipped.Extend(before + lineEnds, head, m_window);
  if (result == eRecChecksumError || result == eRecFrameRejected) NoteRejection(result, before);
}

void FrameReader::Impl::NoteRejection(eRecognitionResult result, std::uint64_t offset) {
  static_assert(static_cast<unsigned int>(RejectedStart::Reason::Checksum) == eRecChecksumError &&
                static_cast<unsigned int>(RejectedStart::Reason::NotAFrame) == eRecFrameRejected);
  m_skipped.SetReason(SkippedRange::Reason::FalseStarts);
  RejectedStart start;
  start.offset = offset;
  start.reason = static_cast<RejectedStart::Reason>(result);
  start.data = m_rejectedBytes.data();
  // Only what has arrived: a start is often rejected before the rest of it has come.
  start.size = m_window.Copy(offset, m_fed, m_rejectedBytes.data(), m_rejectedBytes.size());
  Push(start);
}

// Called before the frame that ends the run, so that callers get the stream in order.
void FrameReader::Impl::CloseSkippedRun() {
  if (m_skipped.IsOpen()) Push(m_skipped.Close());
}

void FrameReader::Impl::TakeCounters() {
  m_countedAt = m_fed;
  m_totals = Totals();
  m_counted = *m_recognizer.GetStatistics();
}

FrameReader::FrameReader() : m_impl(new Impl) {}
FrameReader::~FrameReader() = default;

void FrameReader::EnableProtocol(C_RawDataMessage::eProtocols protocol) {
  m_impl->m_recognizer.EnableProtocol(protocol);
}
void FrameReader::DisableProtocol(C_RawDataMessage::eProtocols protocol) {
  m_impl->m_recognizer.DisableProtocol(protocol);
}
void FrameReader::AcceptUnlisted(bool on) { m_impl->m_recognizer.SetAcceptUnlisted(on); }
void FrameReader::ReportEvents(bool on) { m_impl->m_areEventsReported = on; }

bool FrameReader::Feed(const unsigned char* bytes, std::size_t count) { return m_impl->Feed(bytes, count); }
void FrameReader::Finish() { m_impl->Finish(); }
void FrameReader::Restart() { m_impl->Restart(); }

const StreamItem& FrameReader::Next() { return m_impl->Next(); }

// Events, if they are reported, come between the frames. They are skipped here.
const Frame* FrameReader::NextFrame() {
  while (true) {
    const StreamItem& item = m_impl->Next();
    if (const Frame* frame = std::get_if<Frame>(&item)) return frame;
    if (std::holds_alternative<std::monostate>(item)) return nullptr;
  }
}

std::uint64_t FrameReader::BytesFed() const { return m_impl->m_fed; }
std::uint64_t FrameReader::BytesQueued() const { return m_impl->Queued(); }
StreamTotals FrameReader::Totals() const { return m_impl->Totals(); }
const StreamTotals& FrameReader::TotalsAtFinish() const { return m_impl->m_totalsAtFinish; }
std::uint64_t FrameReader::QueuedAtFinish() const { return m_impl->m_queuedAtFinish; }

}  // namespace velagnss
