// Waiting for the end of a frame's body, and checking the whole. Internal.
#ifndef VELAGNSS_FRAMING_BODY_SCANNER_H
#define VELAGNSS_FRAMING_BODY_SCANNER_H

#include <algorithm>
#include <cstdint>
#include <memory>

#include "framing/ByteScan.h"
#include "framing/ProtocolTable.h"
#include "framing/QueueWindow.h"
#include "framing/RawDataMessage.h"
#include "framing/RunningCrc24.h"
#include "framing/UnlistedSentence.h"
#include "framing/XorSum.h"

namespace velagnss::framing {

inline constexpr unsigned int kShortestSum = 5;  // "$*hh" and a line end

// The frame that the recognizer is working on. Its bytes stay in the queue: the message has none, its length says how
// many of the oldest queued bytes are taken for the frame, its capacity how many it may have.
struct S_FrameInProgress {
  C_RawDataMessage message;
  S_FrameLengths lengths = {0, 0};
};

// What a scan says of the bytes that are there.
enum class eVerdict {
  More,       // good so far, the end is still to come
  Complete,   // a whole frame; the message has its length
  BadCheck,   // checksum or packing wrong
  Rejected,   // too long, or a byte that cannot be
  GivenUp,    // as Rejected, but not counted as a bad frame: an acknowledgement without end
  ShortLine,  // a checked sentence that ends below the least length of its kind; ShortLine() has its length
  Undecided,  // only of a glance: a scan decides
};

// Scans by the rule of the body's shape. There are two kinds: a length that is known from the start, and bytes up to an
// end mark. A scan removes nothing from the queue, and no byte is scanned twice: what a scan has learned is kept for
// the next one, and as far as it does not depend on the frame also for the frames after it.
class C_BodyScanner {
 public:
  // `queue` and `frame` must outlive the scanner.
  C_BodyScanner(C_QueueWindow& queue, S_FrameInProgress& frame);

  // Looks at the queued bytes as a body of this shape, whatever frame is in progress.
  eVerdict Scan(eBody body);

  // Glances decide the usual cases only: a whole sentence with the right checksum, and a body that is good so far. A
  // sentence that may be queued as a whole, as most are in large pieces, takes the
  // glance at a line.
  bool MayHoldLine() const;
  eVerdict GlanceAtLine();
  eVerdict GlanceAtText();
  eVerdict GlanceAtUnlisted() { return GlanceAtContent<eMark::Control>(eBody::Unlisted, Limit(), kFirstPrintable); }
  eVerdict GlanceAtAck() { return GlanceAtContent<eMark::LineEnd>(eBody::Ack, m_frame.message.capacity, kCr + 1); }
  eVerdict GlanceAtRtcm();

  // After `More`: while fewer than `below` bytes are queued in all, further bytes leave the scan waiting if they are
  // `least` or greater.
  struct S_Wait {
    unsigned int below = 0;
    unsigned char least = 0;
  };
  const S_Wait& Wait() const { return m_wait; }
  // Such bytes have been queued: all that are queued now belong to the frame.
  void Pass(unsigned int queued) {
    m_frame.message.length = static_cast<unsigned short>(queued);
    m_examined = queued;
  }

  // The frame in progress is another one: its body is scanned from the first byte on.
  void StartOver() { m_examined = 0; }

  // Whether the queued bytes decide that the oldest of them do not begin a sentence that is not listed: there is no
  // line end in time, or no checksum before it. Cheaper than a scan, and a look ahead that answers for many starts.
  bool LacksSentenceEnd() {
    const std::uint64_t unmarkedTo = m_unmarkedTo[static_cast<unsigned int>(eMark::Control)];
    return unmarkedTo >= m_queue.Position() + kLongestSentence || LooksForSentenceEnd();
  }

  // Whether sentences that end below their least length are reported. A scan after that goes on beyond the line.
  void TakeShortLines(bool on) { m_takesShortLines = on; }
  unsigned int ShortLine() const { return m_examined; }

 private:
  // How a shape of body is collected and checked: BodyScanner.cpp has one rule for each.
  struct S_Rule;
  static const S_Rule kRules[];  // by eBody

  // The shape is a template argument, so that reading its rule costs nothing at run time. Not all in one function,
  // which would save registers for the most complex of them.
  template <eBody kBody>
  [[gnu::noinline]] eVerdict ScanAs();

  // The two ways to find the end: by the length from the header, and at an end mark. Both leave the number of bytes
  // that belong to the frame in its message.
  inline eVerdict CollectLength();
  template <eBody kBody>
  eVerdict CollectUntilEnd();
  // The first end mark, or byte that must not be in the body, from `first` on and before `end`.
  template <eMark kMark>
  unsigned int FirstMark(unsigned int first, const unsigned char* bytes, unsigned int end);
  // Whether the bytes from the oldest one on have not been searched for the mark.
  bool IsUnknown(eMark mark) const { return m_unmarkedTo[static_cast<unsigned int>(mark)] <= m_queue.Position(); }
  // Whether all that is queued is content: bytes of `least` and above never end it.
  template <eMark kMark>
  eVerdict GlanceAtContent(eBody body, unsigned int limit, unsigned char least);
  // Judges a sentence by its first control character; `sumOf(end)` is the sum of its content.
  template <class SumOf>
  eVerdict JudgeEnd(const unsigned char* bytes, unsigned int end, SumOf sumOf);
  // The queued bytes are good so far; further ones will be, from `least` on and below `limit`.
  eVerdict AwaitMore(eBody body, unsigned int limit, unsigned char least);
  // The part of LacksSentenceEnd that looks at bytes.
  bool LooksForSentenceEnd();
  // Takes that many of the oldest queued bytes for the frame.
  void Hold(unsigned int count);
  // Length at which a frame without an end is given up: its own limit or the room for it, whichever is less.
  unsigned int Limit() const { return std::min<unsigned int>(m_frame.lengths.greatest, m_frame.message.capacity); }
  // Bytes that a packed message unpacks to; 0 if its checksum is wrong.
  unsigned int Unwound(const unsigned char* packed);

  // The checks of whole frames. RTCM 10403: CRC-24Q over everything before it.
  inline eVerdict CheckRtcmSum();
  // A 16-bit sum of the data, low byte first; the header is covered by its exact length only.
  eVerdict CheckBinaryFrame();
  // NMEA 0183: exclusive or of the characters between "$" and "*".
  inline eVerdict CheckNmeaSum();
  // The same of any address, digits of either case.
  eVerdict CheckUnlistedSentence();
  // Whether a listed sentence is whole below its least length.
  bool IsShortLine(const unsigned char* bytes, unsigned int length) const;
  // "$PKVN,RAW,1,4," and packed bytes: the count must agree with what they unpack to.
  eVerdict CheckPackedSentence();
  // "$PKVN,HPR,...*15": a checksum must be right if there is one.
  eVerdict CheckPkvnSentence();
  // No checksum: only a length below the limit.
  eVerdict CheckSiteRecord();
  // "$JROX," and packed bytes.
  eVerdict CheckPackedReply();

  // References to the parts of the recognizer that it shares.
  C_QueueWindow& m_queue;
  S_FrameInProgress& m_frame;
  unsigned int m_examined = 0;  // bytes of the body that need no second look by the same rule
  eBody m_examinedAs = eBody::Text;
  S_Wait m_wait;
  bool m_takesShortLines = false;
  std::uint64_t m_unmarkedTo[kNumMarks] = {};  // by eMark: no such byte is queued before this position of the stream
  C_RunningCrc24 m_runningSums;                // of the bytes after a false start of RTCM 3
  std::unique_ptr<unsigned char[]> m_unwound;  // what a packed message unpacks to
};

// The first mark that needs a look, `end` or more when there is none. How far the stream has no mark is remembered
// from one false start to the next: a stream of nothing but starts would be scanned over and over otherwise.
template <eMark kMark>
inline unsigned int C_BodyScanner::FirstMark(unsigned int first, const unsigned char* bytes, unsigned int end) {
  std::uint64_t& unmarkedTo = m_unmarkedTo[static_cast<unsigned int>(kMark)];
  const std::uint64_t position = m_queue.Position();
  const unsigned int from = std::max(m_examined, first);
  const unsigned int unmarked = unmarkedTo > position ? static_cast<unsigned int>(unmarkedTo - position) : 0;
  const unsigned int at = FindReadingAhead<kMark>(bytes, std::max(from, unmarked), end);
  if (from <= std::max(unmarked, 1U)) unmarkedTo = std::max(unmarkedTo, position + std::min(at, end));
  return at;
}

inline eVerdict C_BodyScanner::AwaitMore(eBody body, unsigned int limit, unsigned char least) {
  m_examined = m_queue.Queued();
  m_examinedAs = body;
  m_frame.message.length = static_cast<unsigned short>(m_examined);
  m_wait = {limit, least};
  return eVerdict::More;
}

template <class SumOf>
inline eVerdict C_BodyScanner::JudgeEnd(const unsigned char* bytes, unsigned int end, SumOf sumOf) {
  const unsigned int least = std::max<unsigned int>(m_frame.lengths.least, kShortestSum);
  unsigned int sum = 0;
  if (end + 1 < least || end >= Limit() || !IsLineEnd(bytes[end]) || bytes[end - 3] != '*' ||
      !ReadHex(&bytes[end - 2], 2, sum) || sum != sumOf(end))
    return eVerdict::Undecided;
  m_frame.message.length = static_cast<unsigned short>(end + 1);
  return eVerdict::Complete;
}

#ifdef __SSE2__
// The pass over the line would be wasted where the end may be missing, or where bytes have been looked at before.
inline bool C_BodyScanner::MayHoldLine() const {
  return m_queue.Queued() >= kLineWindow && m_examined == 0 && IsUnknown(eMark::Control);
}

inline eVerdict C_BodyScanner::GlanceAtLine() {
  const unsigned char* const bytes = m_queue.Bytes();
  const S_Line line = ReadLine(bytes);
  if (line.end == kLineWindow) return eVerdict::Undecided;
  m_unmarkedTo[static_cast<unsigned int>(eMark::Control)] = m_queue.Position() + line.end;
  return JudgeEnd(bytes, line.end, [&line](unsigned int) { return line.sum; });
}
#else
inline bool C_BodyScanner::MayHoldLine() const { return false; }
inline eVerdict C_BodyScanner::GlanceAtLine() { return eVerdict::Undecided; }
#endif

// Bytes that were searched for a false start before this one mostly do not hold a sentence.
inline eVerdict C_BodyScanner::GlanceAtText() {
  if (m_examined == 0 ? !IsUnknown(eMark::Control) : m_examinedAs != eBody::Text) return eVerdict::Undecided;
  const unsigned char* const bytes = m_queue.Bytes();
  const unsigned int queued = m_queue.Queued();
  const unsigned int limit = Limit();
  const unsigned int at = FirstMark<eMark::Control>(0, bytes, queued);
  if (at < queued) return JudgeEnd(bytes, at, [bytes](unsigned int end) { return XorOf(bytes + 1, end - 4); });
  return queued < limit ? AwaitMore(eBody::Text, limit, kFirstPrintable) : eVerdict::Undecided;
}

template <eMark kMark>
inline eVerdict C_BodyScanner::GlanceAtContent(eBody body, unsigned int limit, unsigned char least) {
  if (m_examined != 0 && m_examinedAs != body) return eVerdict::Undecided;
  const unsigned int queued = m_queue.Queued();
  const bool isContent = queued < limit && FirstMark<kMark>(0, m_queue.Bytes(), queued) >= queued;
  return isContent ? AwaitMore(body, limit, least) : eVerdict::Undecided;
}

inline eVerdict C_BodyScanner::GlanceAtRtcm() {
  const unsigned int limit = Limit();
  return m_queue.Queued() < limit ? AwaitMore(eBody::Rtcm, limit, 0) : eVerdict::Undecided;
}

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BODY_SCANNER_H
