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

namespace velagnss::framing {

// The frame that the recognizer is working on. Its bytes stay in the queue: the message has none, its length says how
// many of the oldest queued bytes are taken for the frame, its capacity how many it may have.
struct S_FrameInProgress {
  C_RawDataMessage message;
  S_FrameLengths lengths = {0, 0};
};

// What a scan says of the bytes that are there.
enum class eVerdict {
  More,      // good so far, the end is still to come
  Complete,  // a whole frame; the message has its length
  BadCheck,  // checksum or packing wrong
  Rejected,  // too long, or a byte that cannot be
  GivenUp,   // as Rejected, but not counted as a bad frame: an acknowledgement without end
};

// Scans by the rule of the body's shape. There are two kinds: a length that is known from the start, and bytes up to an
// end mark. A scan removes nothing from the queue, and no byte is looked at twice: what a scan has learned is kept for
// the next one, and as far as it does not depend on the frame also for the frames after it.
class C_BodyScanner {
 public:
  // `queue` and `frame` must outlive the scanner.
  C_BodyScanner(C_QueueWindow& queue, S_FrameInProgress& frame);

  // Looks at the queued bytes as a body of this shape, whatever frame is in progress.
  eVerdict Scan(eBody body);

  // The frame in progress is another one: its body is scanned from the first byte on.
  void StartOver() { m_examined = 0; }

 private:
  struct S_Rule;
  static const S_Rule kRules[];  // by eBody

  eVerdict CollectLength();
  eVerdict CollectUntilEnd(const S_Rule& rule);
  unsigned int FirstMark(const S_Rule& rule, const unsigned char* bytes, unsigned int end);
  void Hold(unsigned int count);
  unsigned int Limit() const;
  unsigned int Unwound(const unsigned char* packed);

  eVerdict CheckRtcmSum();
  eVerdict CheckBinaryFrame();
  eVerdict CheckNmeaSum();
  eVerdict CheckPackedSentence();
  eVerdict CheckPkvnSentence();
  eVerdict CheckSiteRecord();
  eVerdict CheckPackedReply();

  C_QueueWindow& m_queue;
  S_FrameInProgress& m_frame;
  unsigned int m_examined = 0;  // bytes of the body that need no second look by the same rule
  eBody m_examinedAs = eBody::Text;
  std::uint64_t m_unmarkedTo[kNumMarks] = {};  // by eMark: no such byte is queued before this position of the stream
  C_RunningCrc24 m_runningSums;                // of the bytes after a false start of RTCM 3
  std::unique_ptr<unsigned char[]> m_unwound;  // what a packed message unpacks to
};

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BODY_SCANNER_H
