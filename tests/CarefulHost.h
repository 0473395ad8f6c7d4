// A host as the documents advise one: patient, without acknowledgements, feeding no more than there is room for,
// pumping until nothing new comes, and feeding again at the end what a false start has kept waiting.
#ifndef VELAGNSS_TESTS_CAREFUL_HOST_H
#define VELAGNSS_TESTS_CAREFUL_HOST_H

#include <algorithm>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/ExactCopy.h"

struct S_Found {
  std::size_t from;  // in the stream
  unsigned int protocol;
  unsigned int type;
  std::string bytes;

  std::size_t End() const { return from + bytes.size(); }
  bool operator==(const S_Found&) const = default;
};

class CarefulHost {
 public:
  explicit CarefulHost(bool acceptsUnlisted = false) {
    m_recognizer.SetPatientSearch(true);
    m_recognizer.SetAcceptUnlisted(acceptsUnlisted);
    m_recognizer.DisableProtocol(C_RawDataMessage::eVelaCmdAck);
  }

  void Feed(std::string_view bytes, std::size_t piece = 4000) {
    while (!bytes.empty() && isInOrder) {
      ExactCopy part(bytes.substr(0, std::min<std::size_t>(piece, m_recognizer.GetFreeSpace())));
      m_tail.append(bytes.substr(0, part.Size()));
      bytes.remove_prefix(part.Size());
      m_fed += part.Size();
      auto result = m_recognizer.DoRecognition(part.Data(), part.Size(), m_message);
      isInOrder = part.Size() > 0;  // pumped dry, the queue has room
      for (; result != eRecNoNewData; result = m_recognizer.DoRecognition(nullptr, 0, m_message)) Note(result);
      m_tail.erase(0, m_tail.size() - Queued());
    }
  }

  // The end of the stream: what is queued waits for a rest that does not come, so its first byte was a false start.
  void Finish() {
    while (!m_tail.empty() && isInOrder) {
      const std::string rest = std::exchange(m_tail, {}).substr(1);
      m_recognizer.FullProcessingReset();
      m_begin = m_fed -= rest.size();
      m_foundBefore = found.size();
      Feed(rest);
    }
  }
  unsigned int Queued() const { return m_recognizer.GetQueuedBytes(); }
  const S_RecognizerStatistics& Counters() const { return *m_recognizer.GetStatistics(); }

  std::vector<S_Found> found;
  std::map<std::size_t, unsigned int> refusals;  // offset of the false start: result 4 or 5
  // No overflow and no error; each byte accepted, discarded or queued, and each frame counted.
  bool isInOrder = true;

 private:
  void Note(eRecognitionResult result) {
    const std::size_t head = m_fed - Queued();  // offset of the oldest byte that is still queued
    if (result == eRecChecksumError || result == eRecFrameRejected) refusals[head - 1] = result;
    if (result == eRecFrameComplete)
      found.push_back({head - m_message.length, m_message.protocol, m_message.messageType,
                       std::string(m_buffer, m_buffer + m_message.length)});
    isInOrder = isInOrder && result != eRecInputOverflow && result != eRecError &&
                Counters().framesGood == found.size() - m_foundBefore &&
                std::size_t{Counters().bytesAccepted} + Counters().bytesDiscarded == head - m_begin;
  }

  C_FrameRecognizer m_recognizer{nullptr, eCircBufOvrflowRejectNew, true};
  unsigned char m_buffer[2048];
  C_RawDataMessage m_message{m_buffer, sizeof m_buffer};
  std::size_t m_fed = 0;    // offset of the end of what was fed
  std::string m_tail;       // what is queued
  std::size_t m_begin = 0;  // offset from which the counters count
  std::size_t m_foundBefore = 0;
};

#endif  // VELAGNSS_TESTS_CAREFUL_HOST_H
