// The machine that `C_FrameRecognizer` is the facade of: the states of the search, the counters, and all that is queued
// and dropped. Internal, so that memories and tuning may change within a major version of the library.
#ifndef VELAGNSS_FRAMING_RECOGNIZER_CORE_H
#define VELAGNSS_FRAMING_RECOGNIZER_CORE_H

#include <memory>

#include "framing/BodyScanner.h"
#include "framing/FrameParameters.h"
#include "framing/FrameRecognizer.h"
#include "framing/QueueWindow.h"
#include "framing/StartMatcher.h"

namespace velagnss::framing {

// Operations that have the name of one in FrameRecognizer.h are documented there.
class C_RecognizerCore {
 public:
  using eProtocols = C_RawDataMessage::eProtocols;

  // All memory is allocated here: queue, copy and unpacked message.
  C_RecognizerCore(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling, bool keepStatistics);
  C_RecognizerCore(const C_RecognizerCore&) = delete;  // the scanner refers to its neighbors
  C_RecognizerCore& operator=(const C_RecognizerCore&) = delete;
  ~C_RecognizerCore() = default;

  // Inline for the facade. On a slow line it is called a few times per byte, mostly without data and with nothing to
  // do: so all that needs registers saved is out of line, and called last.
  eRecognitionResult DoRecognition(const unsigned char* data, unsigned short length, C_RawDataMessage& message) {
    if (m_state == eResynchronise) return Resynchronize(data, length, message);
    if (data != nullptr && length != 0) {
      if (length > kShortCopy) return Feed(data, length, message);
      if (length > 1 || !m_queue.HasPlace()) return FeedShort(data, length, message);
      const bool isPlain = IsPlain(*data);
      m_queue.AddInPlace(*data);
      if (isPlain) return Pass();
      m_lastScanCount = kStepAgain;
    }
    return Advance(message);
  }

  void EnableProtocol(eProtocols protocol) { Enable(protocol, m_allowed); }
  void DisableProtocol(eProtocols protocol) { Enable(protocol, {}); }
  void SetOverflowHandling(eCircBufOvrflowHandling overflowHandling) { m_overflowHandling = overflowHandling; }
  void SetPatientSearch(bool patient);
  void SetAcceptUnlisted(bool on);
  void FullProcessingReset();
  void ResetFrameScanProc();
  unsigned short GetMaxFrameLength() const { return m_maxFrameLength; }
  unsigned int GetFreeSpace() const { return m_queue.FreeSpace(); }
  unsigned int GetQueuedBytes() const { return m_queue.Queued(); }
  unsigned int CopyQueuedBytes(unsigned char* out, unsigned int room) const { return m_queue.Copy(out, room); }
  // Counted in any case; a host that asked for no statistics just does not get to see them.
  const S_RecognizerStatistics* GetStatistics() const { return m_keepsStatistics ? &m_counters : nullptr; }

  bool IsAFrameStartChar(unsigned char byte) const { return m_starts.CanStart(byte); }
  bool IsAPostFrameAllowedByte(unsigned char byte);

  // The tables that the search works from.
  void CreateRecognizedFrames() { m_starts.TakePatterns(); }
  void SetFrameStartChars();
  // Filled in by the facade, whose operations a host may call again.
  S_ExpectedMessages& Expected() { return m_expected; }

  eRecognitionResult FrameStartSearch();
  eRecognitionResult DetermineMsgExpectations();
  bool GetFrameParameters(eProtocols protocol) { return ReadParameters(RowOf(protocol)); }  // of one that has a step
  eRecognitionResult FrameBodyWait();
  eRecognitionResult VelaBINBodyWait();
  eRecognitionResult BodyWait(eBody body);  // of every other shape

 private:
  // Bytes of the stream, [begin, end).
  struct S_Range {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
  };

  C_RecognizerCore(const t_Protocols& allowed, eCircBufOvrflowHandling overflowHandling, bool keepStatistics);

  // The states in the order that a frame passes through them. Resynchronise is left at the next call.
  enum eScanState : unsigned int { eIdle = 0, eStartSearch = 1, eBodyWait = 2, eResynchronise = 3 };

  static constexpr unsigned short kStepAgain = 0xFFFF;  // equals no scan count
  static constexpr unsigned int kNoWait = 0xFFFFFFFF;   // equals no number of queued bytes

  // What `DoRecognition` is made of. A step is made only when something is new: bytes, or the outcome of the last step.
  eRecognitionResult Resynchronize(const unsigned char* data, unsigned short length, C_RawDataMessage& message);
  eRecognitionResult Feed(const unsigned char* data, unsigned short length, C_RawDataMessage& message);
  eRecognitionResult FeedShort(const unsigned char* data, unsigned short length, C_RawDataMessage& message);
  eRecognitionResult TakeQueued(unsigned int before, C_RawDataMessage& message);
  eRecognitionResult Advance(C_RawDataMessage& message) {
    if (m_queue.Queued() == 0 || m_lastScanCount == m_scanCount) return eRecNoNewData;
    m_lastScanCount = m_scanCount;
    if (m_queue.Queued() == m_wait.queued) return m_wait.result;
    switch (m_state) {
      case eIdle:
        return StepIdle();
      case eStartSearch:
        return StepStartSearch(message);
      case eBodyWait:
        return StepBodyWait(message);
      default:
        return eRecError;
    }
  }
  // Whether the byte leaves the last step waiting, as most bytes do that come one by one.
  bool IsPlain(unsigned char byte) const {
    const unsigned int queued = m_queue.Queued();
    return queued == m_wait.queued && queued < m_wait.plainBelow && byte >= m_wait.leastPlain;
  }
  // Plain bytes have been queued after a step that waits: counts and result become those of another step, without one.
  eRecognitionResult Pass() {
    m_wait.queued = m_queue.Queued();
    m_scanner.Pass(m_wait.queued);
    m_lastScanCount = m_scanCount;
    m_scanCount = static_cast<unsigned short>(m_wait.queued);
    return m_wait.result;
  }
  // One for each state; they alone move the queue.
  eRecognitionResult StepIdle();
  eRecognitionResult StepStartSearch(C_RawDataMessage& message);
  eRecognitionResult StepWithoutMatch(eRecognitionResult result, C_RawDataMessage& message);
  eRecognitionResult StepBodyWait(C_RawDataMessage& message);
  eRecognitionResult StepAfterGlance(eVerdict verdict, C_RawDataMessage& message);
  // What needs more registers saved: a whole line in view, and what a glance leaves to be decided.
  [[gnu::noinline]] eRecognitionResult StepLine(C_RawDataMessage& message);
  [[gnu::noinline]] eRecognitionResult StepOtherBody(C_RawDataMessage& message);

  // Frames that are not listed: at each start that has failed as a listed one.
  bool IsNoListedStart();
  bool MayBeUnlisted(eRecognitionResult result);
  bool BeginsUnlisted();
  void ExpectUnlisted();
  eRecognitionResult LookAsUnlisted(eRecognitionResult result, bool isCounted, C_RawDataMessage& message);
  eVerdict JudgeUnlisted(eBody body, eVerdict verdict);
  bool HoldsListedFrame(unsigned int length);
  bool FindFrame(const unsigned char* bytes, unsigned int count, S_Range& found);

  // For more bytes than fit: applies the policy and counts what it costs.
  eRecognitionResult QueueInput(const unsigned char* data, unsigned int length);
  bool MakeRoomInFullQueue();
  void DropFalseStart();
  // The step that was made only waits. As long as fewer than `below` bytes are queued, those from `leastPlain` on make
  // no difference.
  void Wait(eRecognitionResult result, unsigned int below, unsigned char leastPlain);
  void WaitForStart();
  void WaitForBody();
  // Copies the frame out and drops it from the queue. Its result is that of the step.
  eRecognitionResult DeliverFrame(C_RawDataMessage& message);

  // Protocols that were not named at construction stay disabled: the buffers were sized without them.
  void Enable(eProtocols protocol, const t_Protocols& flags);
  void ResetFrame();
  // The shape of the body that is awaited, and the step of any shape where one is awaited.
  eBody AwaitedBody() const;
  eRecognitionResult AwaitedBodyWait(eBody body);
  // Type and length limits, read from the start of the frame.
  void Expect(const S_Expectation& expectation);
  // The frame is one of this row.
  eRecognitionResult AwaitBody(unsigned int row, const S_Expectation& expectation);
  bool ReadExpectation(const S_ProtocolRow& row, S_Expectation& expectation) const;
  bool ReadParameters(const S_ProtocolRow& row);
  // Single steps may be called in any state, so each of them asks this first.
  bool IsBodyAwaited() const { return m_state == eBodyWait && m_currentRow < kNumProtocols; }
  // The only place where frames are counted.
  eRecognitionResult Conclude(eVerdict verdict);
  eRecognitionResult ConcludeFault(eVerdict verdict);
  void Count(unsigned int S_RecognizerStatistics::*counter, unsigned int amount);

  eCircBufOvrflowHandling m_overflowHandling;
  const bool m_keepsStatistics;
  const t_Protocols m_allowed;  // named at construction
  const unsigned short m_maxFrameLength;
  t_Protocols m_enabled = {};
  bool m_patientSearch = false;
  bool m_acceptsUnlisted = false;
  S_ExpectedMessages m_expected;

  // What to know of the last step if it only waits for more bytes.
  struct S_Wait {
    unsigned int queued = kNoWait;              // bytes queued: with no others, a step would do the same again
    eRecognitionResult result = eRecNoNewData;  // its result
    unsigned int plainBelow = 0;                // as long as fewer bytes than these are queued,
    unsigned char leastPlain = 0;               // one more leaves it waiting if it is this one or greater
  };

  eScanState m_state = eIdle;
  bool m_postFrame = false;                     // a frame was delivered: its line end may follow
  unsigned short m_scanCount = 0;               // bytes of the current frame looked at
  unsigned short m_lastScanCount = kStepAgain;  // m_scanCount at the last step
  S_Wait m_wait;
  unsigned int m_currentRow = kNumProtocols;  // of kProtocols: the start that matched last
  S_RecognizerStatistics m_counters = {};

  // A start that failed as a listed frame and is looked at as an unlisted one.
  bool m_isUnlisted = false;
  unsigned int m_listedRow = kNumProtocols;               // m_currentRow before that
  bool m_wasBad = false;                                  // the listed frame would be counted as a bad one
  eRecognitionResult m_listedResult = eRecFrameRejected;  // its result
  std::unique_ptr<C_RecognizerCore> m_inner;              // searches unlisted frames for listed ones inside
  S_Range m_listedInside;                                 // the first of them in the frame that was searched last

  // The parts, in the order of their construction: the scanner keeps references to the two before it.
  C_QueueWindow m_queue;
  S_FrameInProgress m_frame;
  C_BodyScanner m_scanner;
  C_StartMatcher m_starts;
};

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_RECOGNIZER_CORE_H
