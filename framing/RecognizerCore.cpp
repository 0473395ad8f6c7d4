#include "framing/RecognizerCore.h"

#include <algorithm>
#include <cstring>

#include "framing/MessageLengths.h"

namespace velagnss::framing {

namespace {

// A list that lacks its end mark must not be read without limit.
constexpr unsigned int kMaxListEntries = 254;  // of a host's protocol list

// Bytes queued beyond the longest frame: the line end of the frame before it, and the start of the next one, need not
// make a full queue.
constexpr unsigned int kQueueMargin = 32;

// The protocols of a host's list; a null or empty list names them all.
t_Protocols NamedProtocols(const C_RawDataMessage::eProtocols* list) {
  t_Protocols named = {};
  if (list == nullptr || list[0] == C_RawDataMessage::eAllProtocols) {
    named.fill(true);
    return named;
  }
  for (unsigned int i = 0; i < kMaxListEntries && list[i] < kNumProtocols; ++i) named[list[i]] = true;
  return named;
}

unsigned short LongestFrame(const t_Protocols& protocols) {
  unsigned short longest = 0;
  for (const S_ProtocolRow& row : kProtocols) {
    if (protocols[row.frame.protocol]) longest = std::max(longest, row.bufferLength);
  }
  return longest;
}

}  // namespace

C_RecognizerCore::C_RecognizerCore(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling,
                                   bool keepStatistics)
    : m_overflowHandling(overflowHandling),
      m_keepsStatistics(keepStatistics),
      m_allowed(NamedProtocols(protocols)),
      m_maxFrameLength(LongestFrame(m_allowed)),
      m_enabled(m_allowed),
      m_queue(m_maxFrameLength + kQueueMargin, overflowHandling),
      m_frame{C_RawDataMessage(nullptr, m_maxFrameLength)},
      m_scanner(m_queue, m_frame) {}

// Sets the flag of one protocol, or of all, from `flags`.
void C_RecognizerCore::Enable(eProtocols protocol, const t_Protocols& flags) {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    if (protocol == i || protocol == C_RawDataMessage::eAllProtocols) m_enabled[i] = flags[i];
  }
  SetFrameStartChars();
}

void C_RecognizerCore::SetOverflowHandling(eCircBufOvrflowHandling overflowHandling) {
  // Both must agree: overflow is counted here and handled there.
  m_overflowHandling = overflowHandling;
  m_queue.SetOverflowHandling(overflowHandling);
}

void C_RecognizerCore::SetPatientSearch(bool patient) {
  m_patientSearch = patient;
  SetFrameStartChars();
}

// Another set of patterns may match what the last search did not.
void C_RecognizerCore::SetFrameStartChars() {
  m_queuedAtLastWait = 0;
  m_starts.Search(m_enabled, m_patientSearch);
}

// An RTCM 3 frame ends with its checksum: a CR or LF after it is noise.
bool C_RecognizerCore::IsAPostFrameAllowedByte(unsigned char byte) {
  m_postFrame = m_postFrame && m_lastRow < kNumProtocols &&
                kProtocols[m_lastRow].frame.protocol != C_RawDataMessage::eRTCM3_x && (byte == kCr || byte == kLf);
  return m_postFrame;
}

void C_RecognizerCore::FullProcessingReset() {
  m_queue.Drop(m_queue.Queued());
  m_frame.lengths = {0, 0};
  m_currentRow = kNumProtocols;
  ResetFrameScanProc();
  m_counters = S_RecognizerStatistics();
}

void C_RecognizerCore::ResetFrameScanProc() {
  m_state = eIdle;
  m_lastRow = kNumProtocols;
  ResetFrame();
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  m_postFrame = false;
}

// The message owns no bytes, so there is nothing to clear: the fields alone say that no frame is in progress.
void C_RecognizerCore::ResetFrame() {
  m_queuedAtLastWait = 0;
  m_scanner.StartOver();
  m_frame.message.protocol = C_RawDataMessage::eNoProtocol;
  m_frame.message.messageType = 0xFFFFFFFF;
  m_frame.message.messageSubtype = 0xFFFFFFFF;
  m_frame.message.length = 0;
}

// The limits may be others than those of the last wait, so what it had learned of the body does not hold.
void C_RecognizerCore::Expect(const S_Expectation& expectation) {
  m_frame.message.messageType = expectation.type;
  m_frame.lengths = expectation.lengths;
  m_queuedAtLastWait = 0;
  m_scanner.StartOver();
}

// A sum that would pass 32 bits is cut to its low half before the addition (see S_RecognizerStatistics).
void C_RecognizerCore::Count(unsigned int S_RecognizerStatistics::*counter, unsigned int amount) {
  unsigned int& value = m_counters.*counter;
  if (value > 0xFFFFFFFF - amount) value &= 0xFFFF;
  value += amount;
}

// A step that a host called by itself has found a false start.
eRecognitionResult C_RecognizerCore::Resynchronize(const unsigned char* data, unsigned short length,
                                                   C_RawDataMessage& message) {
  ResetFrameScanProc();
  return DoRecognition(data, length, message);
}

// Overflow is counted and handled before the step, so that the step sees what the policy has left.
eRecognitionResult C_RecognizerCore::Feed(const unsigned char* data, unsigned short length, C_RawDataMessage& message) {
  if (length > m_queue.FreeSpace()) {
    const eRecognitionResult queued = QueueInput(data, length);
    if (queued != eRecNoNewData) return queued;
  } else {
    m_queue.Add(data, length);
    m_lastScanCount = kStepAgain;
  }
  return Advance(message);
}

// Bytes go in by blocks as long as they fit; at a full queue the policy decides byte by byte.
eRecognitionResult C_RecognizerCore::QueueInput(const unsigned char* data, unsigned int length) {
  eRecognitionResult result = eRecNoNewData;
  while (length > 0) {
    if (m_queue.IsFull()) {
      if (!MakeRoomInFullQueue()) return eRecError;
      result = eRecInputOverflow;
    }
    // At least one byte: under RejectNew a full queue stays full, and the byte is refused there.
    const unsigned int count = std::min(length, std::max(m_queue.FreeSpace(), 1U));
    m_queue.Add(data, count);
    m_lastScanCount = kStepAgain;
    data += count;
    length -= count;
  }
  return result;
}

bool C_RecognizerCore::MakeRoomInFullQueue() {
  switch (m_overflowHandling) {
    case eCircBufOvrflowDropOldest:
      DropFalseStart();
      return true;
    case eCircBufOvrflowFlushAll:
      Count(&S_RecognizerStatistics::bytesDiscarded, m_queue.Queued());
      m_queue.Drop(m_queue.Queued());
      ResetFrameScanProc();
      return true;
    case eCircBufOvrflowRejectNew:  // the queue itself refuses the byte; the scan goes on
      Count(&S_RecognizerStatistics::bytesDiscarded, 1);
      return true;
    default:
      return false;
  }
}

// Gives up the oldest byte, and with it the frame that seemed to begin there. Only that byte: a frame may have begun
// among those that follow it.
void C_RecognizerCore::DropFalseStart() {
  Count(&S_RecognizerStatistics::bytesDiscarded, 1);
  m_queue.Drop(1);
  ResetFrameScanProc();
}

// How many of the bytes belong to the frame delivered before them: its line end.
unsigned int C_RecognizerCore::CountAccepted(const unsigned char* bytes, unsigned int count) {
  unsigned int accepted = 0;
  while (accepted < count && m_postFrame && !IsAFrameStartChar(bytes[accepted]) &&
         IsAPostFrameAllowedByte(bytes[accepted]))
    ++accepted;
  return accepted;
}

// Drops bytes that cannot start a frame. After a frame its line end counts as accepted, everything else is noise.
eRecognitionResult C_RecognizerCore::StepIdle() {
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  while (m_queue.Queued() > 0) {
    unsigned int run = 0;
    const unsigned char* const bytes = m_queue.HeadRun(run);
    const unsigned int accepted = CountAccepted(bytes, run);
    unsigned int count = accepted;
    while (count < run && !IsAFrameStartChar(bytes[count])) ++count;
    const bool isStart = count < run;
    if (count > 0) {
      Count(&S_RecognizerStatistics::bytesAccepted, accepted);
      Count(&S_RecognizerStatistics::bytesDiscarded, count - accepted);
      m_queue.Drop(count);
      m_frame.message.length = 0;  // of a frame that a host's own scan completed: its bytes are gone now
    }
    if (!isStart) continue;
    m_state = eStartSearch;
    // Unequal, so that the next call makes a step: equal counts mean that nothing is left to do.
    m_lastScanCount = 0;
    m_scanCount = 1;
    return eRecSearching;
  }
  return eRecSearching;
}

// On a match the search may hold more bytes than the frame has (the next one's, say): those are given back.
eRecognitionResult C_RecognizerCore::StepStartSearch() {
  const eRecognitionResult result = FrameStartSearch();
  if (m_state == eResynchronise) {
    DropFalseStart();
  } else if (m_state == eBodyWait) {
    m_frame.message.length = std::min(m_frame.message.length, m_frame.lengths.least);
    m_scanCount = m_frame.message.length;
    m_lastScanCount = kStepAgain;
  } else {
    m_queuedAtLastWait = m_queue.Queued();
  }
  return result;
}

// The scanner has judged the body; here the queue is moved: by one byte after a fault, by the frame when it is
// complete.
eRecognitionResult C_RecognizerCore::StepBodyWait(C_RawDataMessage& message) {
  const eRecognitionResult result = FrameBodyWait();
  if (m_state == eResynchronise) DropFalseStart();
  if (result == eRecFrameComplete) DeliverFrame(message);
  if (result == eRecFrameStarted) m_queuedAtLastWait = m_queue.Queued();
  return result;
}

// A message that is too small gets the first bytes of the frame; the whole frame leaves the queue all the same.
void C_RecognizerCore::DeliverFrame(C_RawDataMessage& message) {
  const C_RawDataMessage& frame = m_frame.message;
  message.protocol = frame.protocol;
  message.messageType = frame.messageType;
  message.messageSubtype = frame.messageSubtype;
  // A message without a buffer still says what the frame was.
  message.length = 0;
  if (message.data != nullptr) {
    message.length = static_cast<unsigned short>(std::min<unsigned int>(frame.length, message.capacity));
    std::memcpy(message.data, m_queue.Bytes(frame.length), message.length);
  }
  m_queue.Drop(frame.length);
  Count(&S_RecognizerStatistics::bytesAccepted, frame.length);
  ResetFrame();
  m_state = eIdle;
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  m_postFrame = true;
  m_lastRow = m_currentRow;
}

// With nothing enabled the shortest start is 255 bytes and the longest 0: a start cannot be looked at, or is given up.
eRecognitionResult C_RecognizerCore::FrameStartSearch() {
  if (m_state != eStartSearch) return eRecError;
  if (m_queue.Queued() < m_starts.MinLength()) return eRecSearching;
  unsigned short& held = m_frame.message.length;
  held = std::max(held, static_cast<unsigned short>(std::min(m_starts.MaxLength(), m_queue.Queued())));
  m_scanCount = held;
  const unsigned int row = m_starts.Find(m_queue.Bytes(std::max<unsigned int>(held, 2)), held);
  if (row != C_StartMatcher::kNoRow) {
    m_currentRow = row;
    return DetermineMsgExpectations();
  }
  if (held >= m_starts.MaxLength()) m_state = eResynchronise;
  return eRecSearching;
}

// The limits of the protocol hold until its parameter step has read those of the message.
eRecognitionResult C_RecognizerCore::DetermineMsgExpectations() {
  m_frame.lengths = {0, 0};
  if (m_currentRow >= kNumProtocols) {
    m_state = eResynchronise;
    return eRecError;
  }
  const S_ProtocolRow& row = kProtocols[m_currentRow];
  m_frame.message.protocol = row.frame.protocol;
  Expect({m_frame.message.messageType, {row.frame.headerLength, row.frame.maxLength}});
  if (row.readParameters != nullptr && !ReadParameters(row)) {
    m_state = eResynchronise;
    return eRecFrameRejected;
  }
  m_state = eBodyWait;
  return eRecFrameStarted;
}

// The one place that checks how many bytes a parameter step needs.
bool C_RecognizerCore::ReadParameters(const S_ProtocolRow& row) {
  if (m_frame.message.length < row.neededLength) return false;
  S_Expectation expectation = {m_frame.message.messageType, m_frame.lengths};
  if (!row.readParameters(row, m_queue.Bytes(row.neededLength), m_expected, expectation)) return false;
  Expect(expectation);
  return true;
}

// Of the proprietary sentences the packed one has a body of its own.
eRecognitionResult C_RecognizerCore::FrameBodyWait() {
  if (!IsBodyAwaited()) return eRecError;
  // The only shape of body that depends on the message, not on the protocol alone.
  const eBody body = kProtocols[m_currentRow].body;
  const bool isPacked = body == eBody::Pkvn && m_frame.message.messageType == VelaPKVN_Messages::ePkvnRAW;
  return BodyWait(isPacked ? eBody::PkvnRaw : body);
}

// A host may call this for the frame of another protocol, which may be longer than there is room for.
eRecognitionResult C_RecognizerCore::VelaBINBodyWait() {
  const bool hasNoRoom = IsBodyAwaited() && m_frame.lengths.greatest > m_frame.message.capacity;
  return hasNoRoom ? Conclude(eVerdict::BadCheck) : BodyWait(eBody::VelaBin);
}

eRecognitionResult C_RecognizerCore::BodyWait(eBody body) {
  if (!IsBodyAwaited()) return eRecError;
  m_queuedAtLastWait = 0;
  return Conclude(m_scanner.Scan(body));
}

// Brings a verdict into state, counters and result.
eRecognitionResult C_RecognizerCore::Conclude(eVerdict verdict) {
  m_scanCount = m_frame.message.length;
  switch (verdict) {
    case eVerdict::More:
      return eRecFrameStarted;
    case eVerdict::Complete:
      m_state = eIdle;
      Count(&S_RecognizerStatistics::framesGood, 1);
      return eRecFrameComplete;
    case eVerdict::BadCheck:
    case eVerdict::Rejected:
      Count(&S_RecognizerStatistics::framesBad, 1);
      break;
    // An acknowledgement has no form that could be wrong, so none of them is a bad frame.
    case eVerdict::GivenUp:
      break;
  }
  m_state = eResynchronise;
  return verdict == eVerdict::BadCheck ? eRecChecksumError : eRecFrameRejected;
}

}  // namespace velagnss::framing
