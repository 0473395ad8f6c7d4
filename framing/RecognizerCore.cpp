#include "framing/RecognizerCore.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "framing/MessageLengths.h"
#include "framing/UnlistedSentence.h"

namespace velagnss::framing {

namespace {

// A list that lacks its end mark must not be read without limit.
constexpr unsigned int kMaxListEntries = 254;  // of a host's protocol list

// Of an RTCM 3 frame (RTCM 10403): preamble, 6 reserved bits and 10 of payload length, payload, checksum. The payload
// begins with the 12 bits of the message number.
constexpr unsigned char kRtcmPreamble = 0xD3;
constexpr unsigned int kRtcmHeader = 3;
constexpr unsigned int kRtcmEnvelope = kRtcmHeader + 3;
constexpr unsigned int kRtcmNumberBytes = 2;

unsigned int RtcmPayload(const unsigned char* frame) { return (frame[1] & 0x03U) << 8 | frame[2]; }

// The bytes that may come second in an unlisted frame: a character of an address, or reserved bits that are zero.
constexpr auto kSecondOfUnlisted = [] {
  std::array<bool, 256> second = {true, true, true, true};
  for (unsigned int byte = '0'; byte <= 'Z'; ++byte) second[byte] = byte <= '9' || byte >= 'A';
  return second;
}();

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
    : C_RecognizerCore(NamedProtocols(protocols), overflowHandling, keepStatistics) {}

C_RecognizerCore::C_RecognizerCore(const t_Protocols& allowed, eCircBufOvrflowHandling overflowHandling,
                                   bool keepStatistics)
    : m_overflowHandling(overflowHandling),
      m_keepsStatistics(keepStatistics),
      m_allowed(allowed),
      m_maxFrameLength(LongestFrame(m_allowed)),
      m_enabled(m_allowed),
      m_queue(m_maxFrameLength + kQueueMargin),
      m_frame{C_RawDataMessage(nullptr, m_maxFrameLength)},
      m_scanner(m_queue, m_frame) {}

// Sets the flag of one protocol, or of all, from `flags`.
void C_RecognizerCore::Enable(eProtocols protocol, const t_Protocols& flags) {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    if (protocol == i || protocol == C_RawDataMessage::eAllProtocols) m_enabled[i] = flags[i];
  }
  SetFrameStartChars();
}

void C_RecognizerCore::SetPatientSearch(bool patient) {
  m_patientSearch = patient;
  SetFrameStartChars();
}

// The second recognizer is made here, with its memory, because the byte path must not allocate.
void C_RecognizerCore::SetAcceptUnlisted(bool on) {
  m_acceptsUnlisted = on;
  m_scanner.TakeShortLines(on);
  if (on && m_inner == nullptr) {
    m_inner.reset(new C_RecognizerCore(m_allowed, eCircBufOvrflowRejectNew, false));
    m_inner->m_expected = m_expected;
    m_inner->CreateRecognizedFrames();
  }
  SetFrameStartChars();
}

// Another set of patterns may match what the last search did not, and what was known of the bytes may not hold.
void C_RecognizerCore::SetFrameStartChars() {
  m_wait.queued = kNoWait;
  m_starts.Search(m_enabled, m_patientSearch);
  if (m_inner == nullptr) return;
  if (m_acceptsUnlisted && m_enabled[C_RawDataMessage::eNMEA0183]) m_starts.AlsoStopAt(kEncapsulatedStart);
  m_scanner.StartOver();
  m_listedInside = {};
  m_inner->m_enabled = m_enabled;
  m_inner->SetPatientSearch(m_patientSearch);
}

bool C_RecognizerCore::IsAPostFrameAllowedByte(unsigned char byte) {
  m_postFrame = m_postFrame && IsLineEnd(byte);
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
  ResetFrame();
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  m_postFrame = false;
}

// The message owns no bytes, so there is nothing to clear: the fields alone say that no frame is in progress.
void C_RecognizerCore::ResetFrame() {
  m_wait.queued = kNoWait;
  m_isUnlisted = false;
  m_scanner.StartOver();
  m_frame.message.protocol = C_RawDataMessage::eNoProtocol;
  m_frame.message.messageType = 0xFFFFFFFF;
  m_frame.message.messageSubtype = 0xFFFFFFFF;
  m_frame.message.length = 0;
}

// The limits may be others than those of the last wait, so what it had learned of the body does not hold.
inline void C_RecognizerCore::Expect(const S_Expectation& expectation) {
  m_frame.message.messageType = expectation.type;
  m_frame.lengths = expectation.lengths;
  m_wait.queued = kNoWait;
  m_scanner.StartOver();
}

// A sum that would pass 32 bits is cut to its low half before the addition (see S_RecognizerStatistics).
inline void C_RecognizerCore::Count(unsigned int S_RecognizerStatistics::*counter, unsigned int amount) {
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
    return queued != eRecNoNewData ? queued : Advance(message);
  }
  const unsigned int before = m_queue.Queued();
  m_queue.Add(data, length);
  return TakeQueued(before, message);
}

// The same for a few bytes that mostly have place. What it calls comes last, so that it saves no registers.
eRecognitionResult C_RecognizerCore::FeedShort(const unsigned char* data, unsigned short length,
                                               C_RawDataMessage& message) {
  if (!m_queue.HasPlace(length)) return Feed(data, length, message);
  const unsigned int before = m_queue.Queued();
  m_queue.AddInPlace(data, length);
  return TakeQueued(before, message);
}

// There are more bytes than `before`: a step, unless they leave the last one waiting.
inline eRecognitionResult C_RecognizerCore::TakeQueued(unsigned int before, C_RawDataMessage& message) {
  const unsigned int queued = m_queue.Queued();
  if (before == m_wait.queued && queued <= m_wait.plainBelow &&
      AreAtLeast(m_wait.leastPlain, m_queue.Bytes() + before, queued - before))
    return Pass();
  m_lastScanCount = kStepAgain;
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
    // At least one byte per round: under RejectNew the queue is still full, and the byte is refused.
    const unsigned int count = std::min(length, std::max(m_queue.FreeSpace(), 1U));
    m_queue.Add(data, std::min(count, m_queue.FreeSpace()));
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
    case eCircBufOvrflowRejectNew:  // no room is made; the scan goes on
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

// Drops bytes that cannot start a frame. After a frame its line end counts as accepted, everything else is noise.
eRecognitionResult C_RecognizerCore::StepIdle() {
  const unsigned char* const bytes = m_queue.Bytes();
  const unsigned int queued = m_queue.Queued();
  unsigned int accepted = 0;
  while (accepted < queued && m_postFrame && IsLineEnd(bytes[accepted])) ++accepted;
  unsigned int count = accepted;
  if (count < queued && !IsAFrameStartChar(bytes[count])) {
    m_postFrame = false;
    if (++count < queued && !IsAFrameStartChar(bytes[count])) count = m_starts.FindStartByte(bytes, count, queued);
  }
  if (count > 0) {
    Count(&S_RecognizerStatistics::bytesAccepted, accepted);
    Count(&S_RecognizerStatistics::bytesDiscarded, count - accepted);
    m_queue.Drop(count);
    m_frame.message.length = 0;  // of a frame that a host's own scan completed: its bytes are gone now
  }
  const bool isStart = count < queued;
  m_state = isStart ? eStartSearch : eIdle;
  // Unequal, so that the next call makes a step: equal counts mean that nothing is left to do.
  m_lastScanCount = isStart ? 0 : kStepAgain;
  m_scanCount = isStart ? 1 : 0;
  return eRecSearching;
}

// A quick filter for BeginsUnlisted that rules out nearly all false starts. `result` is that of the listed frame: where
// it is a failure already, a look that is bound to fail as well would not change it.
inline bool C_RecognizerCore::MayBeUnlisted(eRecognitionResult result) {
  const unsigned char* const bytes = m_queue.Bytes();
  if (!kSecondOfUnlisted[bytes[1]]) return false;
  const bool isRtcm = bytes[0] == kRtcmPreamble;
  const auto protocol = isRtcm ? C_RawDataMessage::eRTCM3_x : C_RawDataMessage::eNMEA0183;
  if (result == eRecChecksumError && m_frame.message.protocol == protocol) return false;  // it would be the same sum
  if (result != eRecSearching && !isRtcm && m_scanner.LacksSentenceEnd()) return false;
  return BeginsUnlisted();
}

// On a match the search may hold more bytes than the frame has (the next one's, say): those are given back.
eRecognitionResult C_RecognizerCore::StepStartSearch(C_RawDataMessage& message) {
  const eRecognitionResult result = FrameStartSearch();
  if (m_state != eBodyWait) return StepWithoutMatch(result, message);
  m_frame.message.length = std::min(m_frame.message.length, m_frame.lengths.least);
  m_scanCount = m_frame.message.length;
  m_lastScanCount = kStepAgain;
  return result;
}

eRecognitionResult C_RecognizerCore::StepWithoutMatch(eRecognitionResult result, C_RawDataMessage& message) {
  if (m_acceptsUnlisted && m_state == eStartSearch && IsNoListedStart()) m_state = eResynchronise;
  if (m_state != eResynchronise) {
    WaitForStart();
    return result;
  }
  if (m_acceptsUnlisted && MayBeUnlisted(result)) return LookAsUnlisted(result, false, message);
  DropFalseStart();
  return result;
}

// The scanner has judged the body; here the queue is moved: by one byte after a fault, by the frame when it is
// complete.
eRecognitionResult C_RecognizerCore::StepBodyWait(C_RawDataMessage& message) {
  switch (kProtocols[m_currentRow].body) {
    case eBody::Rtcm:
      return StepAfterGlance(m_scanner.GlanceAtRtcm(), message);
    case eBody::Ack:
      return StepAfterGlance(m_scanner.GlanceAtAck(), message);
    case eBody::Text:
      if (m_isUnlisted) return StepAfterGlance(m_scanner.GlanceAtUnlisted(), message);
      if (m_scanner.MayHoldLine()) return StepLine(message);
      return StepAfterGlance(m_scanner.GlanceAtText(), message);
    default:
      return StepOtherBody(message);
  }
}

eRecognitionResult C_RecognizerCore::StepLine(C_RawDataMessage& message) {
  return StepAfterGlance(m_scanner.GlanceAtLine(), message);
}

inline eRecognitionResult C_RecognizerCore::StepAfterGlance(eVerdict verdict, C_RawDataMessage& message) {
  switch (verdict) {
    case eVerdict::Complete:
      Count(&S_RecognizerStatistics::framesGood, 1);
      return DeliverFrame(message);
    case eVerdict::More:
      m_scanCount = m_frame.message.length;
      WaitForBody();
      return eRecFrameStarted;
    default:
      return StepOtherBody(message);
  }
}

eRecognitionResult C_RecognizerCore::StepOtherBody(C_RawDataMessage& message) {
  const unsigned int framesBad = m_counters.framesBad;
  const eRecognitionResult result = AwaitedBodyWait(AwaitedBody());
  if (m_state == eResynchronise) {
    if (m_acceptsUnlisted && !m_isUnlisted && MayBeUnlisted(result)) {
      const bool isCounted = m_counters.framesBad != framesBad;
      m_counters.framesBad = framesBad;
      return LookAsUnlisted(result, isCounted, message);
    }
    DropFalseStart();
  }
  if (result == eRecFrameStarted) WaitForBody();
  return result == eRecFrameComplete ? DeliverFrame(message) : result;
}

inline void C_RecognizerCore::Wait(eRecognitionResult result, unsigned int below, unsigned char leastPlain) {
  m_wait = {m_queue.Queued(), result, below - 1, leastPlain};
}

// With unlisted frames accepted, any byte from a certain one on may show that no listed frame begins here.
inline void C_RecognizerCore::WaitForStart() {
  const unsigned int queued = m_queue.Queued();
  const unsigned int greatest = m_acceptsUnlisted ? kShortestSentence : m_starts.MaxLength();
  const bool mayPass = queued >= m_starts.MinLength() && queued + 1 < greatest;
  const unsigned int below = mayPass ? std::min(m_starts.NextLength(m_queue.Bytes(), queued), greatest) : queued;
  Wait(eRecSearching, below, 0);
}

inline void C_RecognizerCore::WaitForBody() { Wait(eRecFrameStarted, m_scanner.Wait().below, m_scanner.Wait().least); }

// Whether the bytes decide that no listed frame begins here. The search for the longest pattern would otherwise hold
// back an unlisted frame that is shorter, at the end of the stream for good.
bool C_RecognizerCore::IsNoListedStart() {
  if (m_queue.Queued() < kShortestSentence) return false;
  const unsigned int held = std::min<unsigned int>(m_queue.Queued(), m_starts.MaxLength());
  return !m_starts.MayMatchLater(m_queue.Bytes(), held);
}

// Whether the start, which has failed as a listed frame, may be one of an unlisted frame.
bool C_RecognizerCore::BeginsUnlisted() {
  const unsigned int held = std::min(m_queue.Queued(), kShortestSentence);
  const unsigned char* const bytes = m_queue.Bytes();
  if (bytes[0] != kRtcmPreamble) return m_enabled[C_RawDataMessage::eNMEA0183] && BeginsSentence(bytes, held);
  return m_enabled[C_RawDataMessage::eRTCM3_x] && bytes[1] < 4 && RtcmPayload(bytes) >= kRtcmNumberBytes;
}

// The frame in progress is the unlisted one that the oldest bytes begin.
void C_RecognizerCore::ExpectUnlisted() {
  const unsigned char* const bytes = m_queue.Bytes();
  const bool isRtcm = bytes[0] == kRtcmPreamble;
  const auto length = static_cast<unsigned short>(RtcmPayload(bytes) + kRtcmEnvelope);
  m_frame.message.protocol = isRtcm ? C_RawDataMessage::eRTCM3_x : C_RawDataMessage::eNMEA0183;
  m_currentRow = kRowOf[m_frame.message.protocol];
  Expect(
      {C_RawDataMessage::eNmeaUnknown, isRtcm ? S_FrameLengths{length, length} : S_FrameLengths{0, kLongestSentence}});
}

// `isCounted`: the listed frame would be counted as a bad one.
eRecognitionResult C_RecognizerCore::LookAsUnlisted(eRecognitionResult result, bool isCounted,
                                                    C_RawDataMessage& message) {
  m_listedRow = m_currentRow;
  ExpectUnlisted();
  m_isUnlisted = true;
  m_wasBad = isCounted;
  m_listedResult = result;
  m_state = eBodyWait;
  m_lastScanCount = kStepAgain;
  // Whether a line that failed in any other way lacks its end has been asked before (`MayBeUnlisted`).
  const bool isLine = m_frame.message.protocol == C_RawDataMessage::eNMEA0183;
  if (!isLine || result != eRecSearching || !m_scanner.LacksSentenceEnd()) return StepBodyWait(message);
  const eRecognitionResult rejected = Conclude(eVerdict::Rejected);
  DropFalseStart();
  return rejected;
}

// Everything that is found without unlisted frames must be found with them.
eVerdict C_RecognizerCore::JudgeUnlisted(eBody body, eVerdict verdict) {
  if (verdict == eVerdict::ShortLine) {
    const unsigned int length = m_scanner.ShortLine();
    if (HoldsListedFrame(length)) return m_scanner.Scan(body);
    m_frame.message.messageType = C_RawDataMessage::eNmeaUnknown;
    m_frame.message.length = static_cast<unsigned short>(length);
    return eVerdict::Complete;
  }
  return HoldsListedFrame(m_frame.message.length) ? eVerdict::GivenUp : verdict;
}

// Whether a listed frame begins after the first of the oldest `length` bytes and ends with the last of them or before.
// The one found last answers for most of the starts before it: a stream of starts that all reach to the same end is
// searched once.
bool C_RecognizerCore::HoldsListedFrame(unsigned int length) {
  const std::uint64_t position = m_queue.Position();
  if (m_listedInside.begin > position && m_listedInside.end <= position + length) return true;
  const unsigned char* const bytes = m_queue.Bytes();
  unsigned int start = 1;
  while (start < length && !m_inner->IsAFrameStartChar(bytes[start])) ++start;
  S_Range found;
  if (start == length || !m_inner->FindFrame(bytes + start, length - start, found)) return false;
  m_listedInside = {position + start + found.begin, position + start + found.end};
  return true;
}

// The first frame of the bytes, after which none follow: a start that waits for more is given up.
bool C_RecognizerCore::FindFrame(const unsigned char* bytes, unsigned int count, S_Range& found) {
  C_RawDataMessage none(nullptr, 0);
  FullProcessingReset();
  auto result = DoRecognition(bytes, static_cast<unsigned short>(count), none);
  unsigned int queued = m_queue.Queued();
  while (result != eRecFrameComplete && queued > 0) {
    if (result == eRecNoNewData) DropFalseStart();
    queued = m_queue.Queued();
    result = DoRecognition(nullptr, 0, none);
  }
  found = {count - queued, count - m_queue.Queued()};
  return result == eRecFrameComplete;
}

// A message that is too small gets the first bytes of the frame; the whole frame leaves the queue all the same.
eRecognitionResult C_RecognizerCore::DeliverFrame(C_RawDataMessage& message) {
  const C_RawDataMessage& frame = m_frame.message;
  message.protocol = frame.protocol;
  message.messageType = frame.messageType;
  message.messageSubtype = frame.messageSubtype;
  // A message without a buffer still says what the frame was.
  message.length = 0;
  if (message.data != nullptr) {
    message.length = static_cast<unsigned short>(std::min<unsigned int>(frame.length, message.capacity));
    CopyBytes(message.data, m_queue.Bytes(), message.length);
  }
  // An RTCM 3 frame ends with its checksum: a CR or LF after it is noise.
  m_postFrame = frame.protocol != C_RawDataMessage::eRTCM3_x;
  m_queue.Drop(frame.length);
  Count(&S_RecognizerStatistics::bytesAccepted, frame.length);
  ResetFrame();
  m_state = eIdle;
  m_scanCount = 0;
  m_lastScanCount = kStepAgain;
  return eRecFrameComplete;
}

// With nothing enabled the shortest start is 255 bytes and the longest 0: a start cannot be looked at, or is given up.
eRecognitionResult C_RecognizerCore::FrameStartSearch() {
  if (m_state != eStartSearch) return eRecError;
  if (m_queue.Queued() < m_starts.MinLength()) return eRecSearching;
  unsigned short& held = m_frame.message.length;
  held = std::max(held, static_cast<unsigned short>(std::min(m_starts.MaxLength(), m_queue.Queued())));
  m_scanCount = held;
  const unsigned char* const bytes = m_queue.Bytes();
  const S_Start start = m_starts.Find(bytes, held);
  if (start.row == S_Start::kNoRow) {
    if (held >= m_starts.MaxLength()) m_state = eResynchronise;
    return eRecSearching;
  }
  // Nearly all starts are of these two. The look-up of a sentence has given its type.
  constexpr unsigned int kSentenceRow = kRowOf[C_RawDataMessage::eNMEA0183];
  constexpr unsigned int kRtcmRow = kRowOf[C_RawDataMessage::eRTCM3_x];
  if (start.row == kSentenceRow) return AwaitBody(kSentenceRow, {start.sentence, m_expected.nmea[start.sentence]});
  S_Expectation frame = {};
  if (start.row == kRtcmRow && ReadRtcm(bytes, frame)) return AwaitBody(kRtcmRow, frame);
  m_currentRow = start.row;
  return DetermineMsgExpectations();
}

// The limits of the protocol hold until its parameter step has read those of the message.
eRecognitionResult C_RecognizerCore::DetermineMsgExpectations() {
  m_frame.lengths = {0, 0};
  if (m_currentRow >= kNumProtocols) {
    m_state = eResynchronise;
    return eRecError;
  }
  const S_ProtocolRow& row = kProtocols[m_currentRow];
  S_Expectation expectation = {m_frame.message.messageType, {row.frame.headerLength, row.frame.maxLength}};
  const bool isExpected = row.readParameters == nullptr || ReadExpectation(row, expectation);
  AwaitBody(m_currentRow, expectation);
  if (isExpected) return eRecFrameStarted;
  m_state = eResynchronise;
  return eRecFrameRejected;
}

inline eRecognitionResult C_RecognizerCore::AwaitBody(unsigned int row, const S_Expectation& expectation) {
  m_isUnlisted = false;
  m_currentRow = row;
  m_frame.message.protocol = kProtocols[row].frame.protocol;
  Expect(expectation);
  m_state = eBodyWait;
  return eRecFrameStarted;
}

// The one place that checks how many bytes a parameter step needs.
bool C_RecognizerCore::ReadExpectation(const S_ProtocolRow& row, S_Expectation& expectation) const {
  return m_frame.message.length >= row.neededLength &&
         row.readParameters(row, m_queue.Bytes(), m_expected, expectation);
}

bool C_RecognizerCore::ReadParameters(const S_ProtocolRow& row) {
  S_Expectation expectation = {m_frame.message.messageType, m_frame.lengths};
  if (!ReadExpectation(row, expectation)) return false;
  Expect(expectation);
  return true;
}

// Two shapes of body depend on the message as well: a sentence that is not listed, and a packed one.
inline eBody C_RecognizerCore::AwaitedBody() const {
  const eBody body = kProtocols[m_currentRow].body;
  if (body == eBody::Text && m_isUnlisted) return eBody::Unlisted;
  const bool isRaw = body == eBody::Pkvn && m_frame.message.messageType == VelaPKVN_Messages::ePkvnRAW;
  return isRaw ? eBody::PkvnRaw : body;
}

eRecognitionResult C_RecognizerCore::FrameBodyWait() {
  return IsBodyAwaited() ? AwaitedBodyWait(AwaitedBody()) : eRecError;
}

// A host may call this for the frame of another protocol, which may be longer than there is room for.
eRecognitionResult C_RecognizerCore::VelaBINBodyWait() {
  const bool hasNoRoom = IsBodyAwaited() && m_frame.lengths.greatest > m_frame.message.capacity;
  return hasNoRoom ? Conclude(eVerdict::BadCheck) : BodyWait(eBody::VelaBin);
}

eRecognitionResult C_RecognizerCore::BodyWait(eBody body) {
  return IsBodyAwaited() ? AwaitedBodyWait(body) : eRecError;
}

inline eRecognitionResult C_RecognizerCore::AwaitedBodyWait(eBody body) {
  m_wait.queued = kNoWait;
  const eVerdict verdict = m_scanner.Scan(body);
  const bool isUnlisted = verdict == eVerdict::ShortLine || (m_isUnlisted && verdict == eVerdict::Complete);
  return Conclude(isUnlisted ? JudgeUnlisted(body, verdict) : verdict);
}

// Brings a verdict into state, counters and result.
inline eRecognitionResult C_RecognizerCore::Conclude(eVerdict verdict) {
  m_scanCount = m_frame.message.length;
  if (verdict == eVerdict::More) return eRecFrameStarted;
  if (verdict != eVerdict::Complete) return ConcludeFault(verdict);
  m_state = eIdle;
  Count(&S_RecognizerStatistics::framesGood, 1);
  return eRecFrameComplete;
}

// A start that fails twice, as a listed and as an unlisted frame, is one bad frame.
eRecognitionResult C_RecognizerCore::ConcludeFault(eVerdict verdict) {
  const bool isBadCheck = verdict == eVerdict::BadCheck;
  m_state = eResynchronise;
  if (m_isUnlisted) m_currentRow = m_listedRow;
  // An acknowledgement has no form that could be wrong, so none of them is a bad frame.
  const bool isBad = m_isUnlisted ? isBadCheck || m_wasBad : verdict != eVerdict::GivenUp;
  if (isBad) Count(&S_RecognizerStatistics::framesBad, 1);
  const bool isSumWrong = isBadCheck || (m_isUnlisted && m_listedResult == eRecChecksumError);
  return isSumWrong ? eRecChecksumError : eRecFrameRejected;
}

}  // namespace velagnss::framing
