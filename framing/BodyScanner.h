// Waiting for the end of a frame's body, and checking the whole. Internal.
#ifndef VELAGNSS_FRAMING_BODY_SCANNER_H
#define VELAGNSS_FRAMING_BODY_SCANNER_H

#include <cstdint>
#include <memory>

#include "framing/ByteScan.h"
#include "framing/ProtocolTable.h"
#include "framing/QueueWindow.h"
#include "framing/RawDataMessage.h"
#include "framing/RunningCrc24.h"
#include "framing/UnlistedSentence.h"

namespace velagnss::framing {

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
  // The same of a shape that is known to the caller.
  template <eBody kBody>
  eVerdict ScanAs();

  // Whether the frame, a text, is queued as a whole and has the right checksum; the message then has its length. A
  // quick look at the usual case: after `false`, a scan decides.
  bool IsWholeSentence() {
#ifdef __SSE2__
    // The pass over the line would be wasted where the end may be missing, or where bytes have been looked at before.
    return m_queue.Queued() >= kLineWindow && m_examined == 0 && IsUnknown(eMark::Control) && JudgeLine();
#else
    return false;
#endif
  }

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
  bool JudgeLine();  // the pass of IsWholeSentence
  // The part of LacksSentenceEnd that looks at bytes.
  bool LooksForSentenceEnd();
  // Takes that many of the oldest queued bytes for the frame.
  void Hold(unsigned int count);
  // Length at which a frame without an end is given up: its own limit or the room for it, whichever is less.
  unsigned int Limit() const;
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

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BODY_SCANNER_H
