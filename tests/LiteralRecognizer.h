// The rules of frame recognition once more, as slow and plain code: the second opinion that the recognizer is compared
// with. Every step looks at each byte again from the frame's first one; nothing is shared with the library but the
// numbers of the protocols.
#ifndef VELAGNSS_TESTS_LITERAL_RECOGNIZER_H
#define VELAGNSS_TESTS_LITERAL_RECOGNIZER_H

#include <deque>
#include <vector>

#include "framing/RawDataMessage.h"

class LiteralRecognizer {
 public:
  using eProtocols = C_RawDataMessage::eProtocols;
  using Bytes = std::vector<unsigned char>;
  enum Result : unsigned { kNoNewData, kSearching, kStarted, kComplete, kChecksum, kRejected, kOverflow, kError };
  struct Message {
    eProtocols protocol = C_RawDataMessage::eNoProtocol;
    unsigned type = ~0U;
    unsigned subtype = ~0U;
    Bytes bytes;
  };
  struct Work {  // the frame in hand
    Message message;
    unsigned least = 0, greatest = 0;  // its limits
    unsigned capacity = 0;
  };
  struct Scanner;
  struct Counters {
    unsigned accepted = 0, discarded = 0, good = 0, bad = 0;
  };

  LiteralRecognizer(const eProtocols* protocols, unsigned overflowPolicy);

  // One call of the pump; a null `data` queues nothing. With `kComplete`, `delivered` is the frame.
  Result DoRecognition(const unsigned char* data, unsigned length, Message& delivered);
  void EnableProtocol(unsigned protocol);
  void DisableProtocol(unsigned protocol);
  void SetOverflowHandling(unsigned policy) { m_policy = policy; }
  void SetPatientSearch(bool patient) { m_patient = patient; }
  void SetAcceptUnlisted(bool on) { m_acceptsUnlisted = on; }
  void FullProcessingReset();
  void ResetFrameScanProc();
  bool IsAFrameStartChar(unsigned char byte) const;
  bool IsAPostFrameAllowedByte(unsigned char byte);
  unsigned GetMaxFrameLength() const { return m_work.capacity; }
  unsigned GetFreeSpace() const { return static_cast<unsigned>(QueueCapacity() - m_queue.size()); }

  // The steps of `DoRecognition`.
  Result FrameStartSearch();
  Result DetermineMsgExpectations();
  Result FrameBodyWait();
  Result BodyWait(unsigned step);       // of one protocol, by the steps of `AnyBodyWait`
  bool FrameParameters(unsigned step);  // the same by the steps of `AnyParameters`

  Counters counters;

 private:
  enum State { kIdle, kStartSearch, kBodyWait, kResynchronise };

  std::size_t QueueCapacity() const { return m_work.capacity + 32U; }
  std::size_t StartLength(unsigned descriptor) const;
  bool Matches(unsigned descriptor) const;
  bool GetParameters(unsigned descriptor);
  void DropFalseStart();
  Result IdleStep();
  Result SearchStep(Message& delivered);
  Result BodyStep(Message& delivered);
  bool NoListedStart() const;
  bool BeginsUnlisted() const;
  Result LookAsUnlisted(Result listed, Message& delivered);
  bool HoldsListedFrame(std::size_t length) const;
  std::size_t ShortLine() const;
  Result Scan(const Scanner& scanner);

  bool m_allowed[11] = {};
  bool m_enabled[11] = {};
  bool m_patient = false;
  bool m_acceptsUnlisted = false;
  unsigned m_listed = 11;     // the descriptor before that
  bool m_isUnlisted = false;  // the frame in hand has failed as a listed one
  Result m_listedResult = kRejected;
  bool m_listedWasBad = false;
  unsigned m_policy;
  std::deque<unsigned char> m_queue;
  Work m_work;
  State m_state = kIdle;
  unsigned m_scanCount = 0;
  unsigned m_lastScanCount = 0xFFFF;
  unsigned m_current = 11;  // descriptors
  unsigned m_last = 12;
  bool m_postFrame = false;
};

#endif  // VELAGNSS_TESTS_LITERAL_RECOGNIZER_H
