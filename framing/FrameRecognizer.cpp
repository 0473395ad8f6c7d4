// The machine that moves the queue: what to do with each byte, one step a call. Which bytes start and end a frame is
// told by FrameCatalogue.cpp and BodyScanners.cpp.
#include "framing/FrameRecognizer.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <iterator>

#include "framing/ByteScan.h"
#include "framing/RecognizerTables.h"
#include "framing/RunningCrc24.h"
#include "textproto/SentenceIds.h"

namespace SentenceIds = velagnss::textproto::SentenceIds;

namespace {

constexpr unsigned int kNumProtocols = 11;

// The longest frame that buffers must hold, by protocol.
constexpr unsigned short kMaxFrameLengths[kNumProtocols] = {
    1024,  // eJROX
    1029,  // eRTCM3_x: 3 header, 1023 payload, 3 checksum
    1024,  // eNMEA0183
    2048,  // eVelaBIN
    2048,  // ePKVN
    512,   // eVelaRD
    512,   // eJSITERECORD
    256,   // eVelaCmdAck
    512,   // eVelaJI
    512,   // eVelaJQUERY
    80,    // eVelaGEO
};

constexpr unsigned int kMaxListEntries = 254;  // of a host's protocol list
constexpr unsigned int kQueueMargin = 32;      // bytes queued beyond the longest frame
constexpr unsigned short kStepAgain = 0xFFFF;  // no scan count equals it

// The first bytes of a frame as one word, so that a start pattern is compared at once.
constexpr unsigned int kHeadBytes = sizeof(std::uint64_t);

std::uint64_t Head(const unsigned char* bytes) {
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, kHeadBytes);
  return word;
}

std::uint64_t ShortHead(const unsigned char* bytes, unsigned int count) {
  unsigned char padded[kHeadBytes] = {};
  std::copy_n(bytes, count, padded);
  return Head(padded);
}

using t_Protocols = std::array<bool, kNumProtocols>;

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
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    if (protocols[i]) longest = std::max(longest, kMaxFrameLengths[i]);
  }
  return longest;
}

}  // namespace

C_FrameRecognizer::C_FrameRecognizer(const eProtocols* protocols, eCircBufOvrflowHandling overflowHandling,
                                     bool keepStatistics)
    : m_overflowHandling(overflowHandling),
      m_allowedProtocols(NamedProtocols(protocols)),
      m_maxFrameLength(LongestFrame(m_allowedProtocols)),
      m_statistics(keepStatistics ? new S_RecognizerStatistics() : nullptr),
      m_runningSums(new C_RunningCrc24()),
      m_copy(new unsigned char[CopyCapacity()]()),
      m_unwindBuffer(new unsigned char[m_maxFrameLength + kQueueMargin]()),
      m_workMessage(nullptr, m_maxFrameLength),
      m_queue(m_maxFrameLength + kQueueMargin, 1, overflowHandling) {
  CreateRecognizedFrames();
  SetExpectedNMEA0183Msgs();
  SetExpectedVelaBINMsgs();
  SetExpectedVelaRDMsgs();
  SetExpectedVelaJIMsgs();
  SetExpectedVelaGEOMsgs();
  SetExpectedVelaJQUERYMsgs();
  SetExpectedJSITERECORDMsgs();
  EnableProtocol(C_RawDataMessage::eAllProtocols);
}

C_FrameRecognizer::~C_FrameRecognizer() = default;

void C_FrameRecognizer::EnableProtocol(eProtocols protocol) {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    if (protocol == i || protocol == C_RawDataMessage::eAllProtocols) m_enabledProtocols[i] = m_allowedProtocols[i];
  }
  SetFrameStartChars();
}

void C_FrameRecognizer::DisableProtocol(eProtocols protocol) {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    if (protocol == i || protocol == C_RawDataMessage::eAllProtocols) m_enabledProtocols[i] = false;
  }
  SetFrameStartChars();
}

void C_FrameRecognizer::SetOverflowHandling(eCircBufOvrflowHandling overflowHandling) {
  m_overflowHandling = overflowHandling;
  m_queue.SetOverflowHandling(overflowHandling);
}

void C_FrameRecognizer::SetPatientSearch(bool patient) {
  m_patientSearch = patient;
  SetFrameStartChars();
}

void C_FrameRecognizer::SetFrameStartChars() {
  m_minStartLength = 255;
  m_maxStartLength = 0;
  m_settled = 0;
  std::memset(m_rowsByByte, 0, sizeof m_rowsByByte);
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const S_FrameDescriptor& row = m_descriptors[i];
    m_neededLengths[i] = m_patientSearch ? kProtocols[i].neededLength : row.startLength;
    m_startHeads[i] = Head(row.startPattern);
    m_startHeadMasks[i] = Head(row.startMask);
    if (!m_enabledProtocols[row.protocol]) continue;
    m_minStartLength = std::min(m_minStartLength, m_neededLengths[i]);
    m_maxStartLength = std::max(m_maxStartLength, m_neededLengths[i]);
    AddRowByByte(i);
  }
}

void C_FrameRecognizer::AddRowByByte(unsigned int descriptor) {
  const S_FrameDescriptor& row = m_descriptors[descriptor];
  for (unsigned int place = 0; place < std::size(m_rowsByByte); ++place) {
    for (unsigned int byte = 0; byte < 256; ++byte) {
      const bool fits = (byte & row.startMask[place]) == row.startPattern[place];
      if (fits) m_rowsByByte[place][byte] = static_cast<unsigned short>(m_rowsByByte[place][byte] | 1U << descriptor);
    }
  }
}

bool C_FrameRecognizer::IsAFrameStartChar(unsigned char byte) const { return m_rowsByByte[0][byte] != 0; }

bool C_FrameRecognizer::IsAPostFrameAllowedByte(unsigned char byte) {
  m_postFrame = m_postFrame && m_lastDescriptor < kNumProtocols &&
                m_descriptors[m_lastDescriptor].protocol != C_RawDataMessage::eRTCM3_x &&
                (byte == UTIL::kCr || byte == UTIL::kLf);
  return m_postFrame;
}

void C_FrameRecognizer::FullProcessingReset() {
  FlushBytes(m_queue.NumItems());
  m_frameMinLength = 0;
  m_frameMaxLength = 0;
  m_currentDescriptor = kNumProtocols;
  ResetFrameScanProc();
  if (m_statistics != nullptr) *m_statistics = S_RecognizerStatistics();
}

void C_FrameRecognizer::ResetFrameScanProc() {
  m_state = eIdle;
  m_lastDescriptor = kNumProtocols + 1;
  ResetWorkMessage();
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  m_postFrame = false;
}

void C_FrameRecognizer::ResetWorkMessage() {
  m_settled = 0;
  m_examined = 0;
  m_workMessage.protocol = C_RawDataMessage::eNoProtocol;
  m_workMessage.messageType = 0xFFFFFFFF;
  m_workMessage.messageSubtype = 0xFFFFFFFF;
  m_workMessage.length = 0;
}

// Room for a frame behind as many bytes of false starts as the ring can hold.
unsigned int C_FrameRecognizer::CopyCapacity() const { return 2U * (m_maxFrameLength + kQueueMargin); }

// Each byte is copied once, however many false starts come before it.
const unsigned char* C_FrameRecognizer::LinearBytes(unsigned int count, unsigned int headRun) {
  if (m_position >= m_copyEnd || m_position + count > m_copyBegin + CopyCapacity()) {
    m_copyBegin = m_position;
    m_copyEnd = m_position;
  }
  unsigned char* const copy = &m_copy[m_position - m_copyBegin];
  for (auto held = static_cast<unsigned int>(m_copyEnd - m_position); held < count;) {
    const unsigned int end = held < headRun ? headRun : count;
    std::memcpy(copy + held, m_queue.PeekNthQueuedItem(held), end - held);
    m_copyEnd = m_position + end;
    held = end;
  }
  return copy;
}

eRecognitionResult C_FrameRecognizer::DoRecognition(const unsigned char* data, unsigned short length,
                                                    C_RawDataMessage& message) {
  if (m_state == eResynchronise) ResetFrameScanProc();
  if (data != nullptr && length != 0) {
    if (length > GetFreeSpace()) {
      const eRecognitionResult queued = QueueInput(data, length);
      if (queued != eRecNoNewData) return queued;
    } else {
      m_queue.QueueNItems(data, length);
      m_lastScanCount = kStepAgain;
    }
  }
  if (m_queue.NumItems() == 0 || m_lastScanCount == m_scanCount) return eRecNoNewData;
  m_lastScanCount = m_scanCount;
  // Nothing new since the last step: it would come to the same.
  if (m_queue.NumItems() == m_settled) return m_state == eBodyWait ? eRecFrameStarted : eRecSearching;
  switch (m_state) {
    case eIdle:
      return StepIdle();
    case eStartSearch:
      return StepStartSearch();
    case eBodyWait:
      return StepBodyWait(message);
    default:
      return eRecError;
  }
}

// Bytes go in by blocks as long as they fit; at a full queue the policy decides byte by byte.
eRecognitionResult C_FrameRecognizer::QueueInput(const unsigned char* data, unsigned int length) {
  eRecognitionResult result = eRecNoNewData;
  while (length > 0) {
    if (m_queue.IsQueueFull()) {
      if (!MakeRoomInFullQueue()) return eRecError;
      result = eRecInputOverflow;
    }
    const unsigned int count = std::min(length, std::max(GetFreeSpace(), 1U));
    m_queue.QueueNItems(data, count);
    m_lastScanCount = kStepAgain;
    data += count;
    length -= count;
  }
  return result;
}

bool C_FrameRecognizer::MakeRoomInFullQueue() {
  switch (m_overflowHandling) {
    case eCircBufOvrflowDropOldest:
      DropFalseStart();
      return true;
    case eCircBufOvrflowFlushAll:
      Count(&S_RecognizerStatistics::bytesDiscarded, m_queue.NumItems());
      FlushBytes(m_queue.NumItems());
      ResetFrameScanProc();
      return true;
    case eCircBufOvrflowRejectNew:  // the queue itself refuses the byte; the scan goes on
      Count(&S_RecognizerStatistics::bytesDiscarded, 1);
      return true;
    default:
      return false;
  }
}

// Gives up the oldest byte, and with it the frame that seemed to begin there.
void C_FrameRecognizer::DropFalseStart() {
  Count(&S_RecognizerStatistics::bytesDiscarded, 1);
  FlushBytes(1);
  ResetFrameScanProc();
}

void C_FrameRecognizer::FlushBytes(unsigned int count) {
  m_queue.FlushItems(count);
  m_position += count;
}

// Drops bytes that cannot start a frame. Behind a frame its line end counts as accepted, everything else is noise.
eRecognitionResult C_FrameRecognizer::StepIdle() {
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  while (m_queue.NumItems() > 0) {
    unsigned int run = 0;
    const unsigned char* bytes = static_cast<const unsigned char*>(m_queue.PeekHeadRun(run));
    unsigned int accepted = 0;
    while (accepted < run && m_postFrame && !IsAFrameStartChar(bytes[accepted]) &&
           IsAPostFrameAllowedByte(bytes[accepted]))
      ++accepted;
    unsigned int count = accepted;
    while (count < run && !IsAFrameStartChar(bytes[count])) ++count;
    Count(&S_RecognizerStatistics::bytesAccepted, accepted);
    Count(&S_RecognizerStatistics::bytesDiscarded, count - accepted);
    const bool isStart = count < run;
    if (count > 0) {
      FlushBytes(count);
      m_workMessage.length = 0;  // where a step called by itself has completed a frame, it is gone now
    }
    if (!isStart) continue;
    m_state = eStartSearch;
    m_lastScanCount = 0;
    m_scanCount = 1;
    return eRecSearching;
  }
  return eRecSearching;
}

eRecognitionResult C_FrameRecognizer::StepStartSearch() {
  const eRecognitionResult result = FrameStartSearch();
  if (m_state == eResynchronise) {
    DropFalseStart();
  } else if (m_state == eBodyWait) {
    m_workMessage.length = std::min(m_workMessage.length, m_frameMinLength);
    m_scanCount = m_workMessage.length;
    m_lastScanCount = kStepAgain;
  } else {
    m_settled = m_queue.NumItems();
  }
  return result;
}

eRecognitionResult C_FrameRecognizer::StepBodyWait(C_RawDataMessage& message) {
  const eRecognitionResult result = FrameBodyWait();
  if (m_state == eResynchronise) DropFalseStart();
  if (result == eRecFrameComplete) DeliverFrame(message);
  if (result == eRecFrameStarted) m_settled = m_queue.NumItems();
  return result;
}

void C_FrameRecognizer::DeliverFrame(C_RawDataMessage& message) {
  const unsigned short length = m_workMessage.length;
  message.protocol = m_workMessage.protocol;
  message.messageType = m_workMessage.messageType;
  message.messageSubtype = m_workMessage.messageSubtype;
  message.length = 0;
  if (message.data != nullptr) {
    message.length = static_cast<unsigned short>(std::min<unsigned int>(length, message.capacity));
    std::memcpy(message.data, FrameBytes(length), message.length);
  }
  FlushBytes(length);
  Count(&S_RecognizerStatistics::bytesAccepted, length);
  ResetWorkMessage();
  m_state = eIdle;
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  m_postFrame = true;
  m_lastDescriptor = m_currentDescriptor;
}

eRecognitionResult C_FrameRecognizer::FrameStartSearch() {
  if (m_state != eStartSearch) return eRecError;
  const unsigned int queued = m_queue.NumItems();
  if (queued < m_minStartLength) return eRecSearching;
  const unsigned int held = std::min<unsigned int>(m_maxStartLength, queued);
  HoldBytes(held);
  m_scanCount = m_workMessage.length;
  const unsigned char* bytes = FrameBytes(std::max<unsigned int>(m_workMessage.length, 2));  // two are looked up
  const std::uint64_t head = m_workMessage.length < kHeadBytes ? ShortHead(bytes, m_workMessage.length) : Head(bytes);
  for (unsigned int rows = m_rowsByByte[0][bytes[0]] & m_rowsByByte[1][bytes[1]]; rows != 0; rows &= rows - 1) {
    const auto i = static_cast<unsigned int>(std::countr_zero(rows));
    if ((head & m_startHeadMasks[i]) != m_startHeads[i] || !Matches(i, bytes)) continue;
    m_currentDescriptor = i;
    return DetermineMsgExpectations();
  }
  if (m_workMessage.length >= m_maxStartLength) m_state = eResynchronise;
  return eRecSearching;
}

// Whether the bytes held, of which the head matches, start a frame of this protocol. "$GPGGA," must also name a
// sentence that is known.
bool C_FrameRecognizer::Matches(unsigned int descriptor, const unsigned char* bytes) const {
  const S_FrameDescriptor& row = m_descriptors[descriptor];
  if (m_neededLengths[descriptor] > m_workMessage.length) return false;
  for (unsigned int i = kHeadBytes; i < row.startLength; ++i) {
    if ((bytes[i] & row.startMask[i]) != row.startPattern[i]) return false;
  }
  if (row.protocol != C_RawDataMessage::eNMEA0183) return true;
  return SentenceIds::Find(reinterpret_cast<const char*>(bytes) + 3) != C_RawDataMessage::eNmeaUnknown;
}

eRecognitionResult C_FrameRecognizer::DetermineMsgExpectations() {
  m_frameMinLength = 0;
  m_frameMaxLength = 0;
  if (m_currentDescriptor >= kNumProtocols) {
    m_state = eResynchronise;
    return eRecError;
  }
  const S_FrameDescriptor& row = m_descriptors[m_currentDescriptor];
  m_workMessage.protocol = row.protocol;
  Expect(m_workMessage.messageType, {row.headerLength, row.maxLength});
  const auto readParameters = kProtocols[m_currentDescriptor].readParameters;
  if (readParameters != nullptr && !(this->*readParameters)()) {
    m_state = eResynchronise;
    return eRecFrameRejected;
  }
  m_state = eBodyWait;
  return eRecFrameStarted;
}
