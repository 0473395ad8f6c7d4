// Waiting for the end of a frame's body, and checking it. A scanner looks at queued bytes and gives its verdict; it
// removes nothing. There are two shapes of body: a length that is known from the start, and bytes up to an end mark.
#include <algorithm>
#include <iterator>
#include <string_view>

#include "binproto/VelaBin_Decode.h"
#include "framing/ByteScan.h"
#include "framing/CRC24.h"
#include "framing/RecognizerTables.h"
#include "framing/RunningCrc24.h"
#include "records/ResultCodes.h"
#include "textproto/FieldParsers.h"
#include "textproto/VelaPKVN_Decode.h"

// How a body runs up to its end, and what must hold then.
struct C_FrameRecognizer::S_BodyRule {
  eVerdict (C_FrameRecognizer::*check)();   // of the whole frame; null: nothing
  bool knownLength = false;                 // the frame ends at its greatest length; nothing below applies
  UTIL::eMark mark = UTIL::eMark::Control;  // what is not content: a line end, or else a fault
  unsigned int first = 0;                   // position of the first byte that is looked at
  bool endsInCrLf = false;                  // the end is CR LF, not the first of either
  bool limited = false;                     // the expected lengths are limits; otherwise only the buffer is
};

namespace {

using UTIL::eMark;
using UTIL::kCr;
using UTIL::kLf;

constexpr unsigned int kJroxHeader = 6;     // "$JROX,"
constexpr unsigned int kShortestSum = 5;    // "$*hh" and a line end
constexpr unsigned int kRawComma = 9;       // "$PKVN,RAW": position of the comma behind it
constexpr std::size_t kRawCountDigits = 9;  // kept of the field that tells the payload's length

unsigned int FindMark(eMark mark, const unsigned char* bytes, unsigned int from, unsigned int to) {
  switch (mark) {
    case eMark::Control:
      return UTIL::Find<eMark::Control>(bytes, from, to);
    case eMark::LineEnd:
      return UTIL::Find<eMark::LineEnd>(bytes, from, to);
    case eMark::CrLf:
      return UTIL::Find<eMark::CrLf>(bytes, from, to);
    default:
      return UTIL::Find<eMark::Plain>(bytes, from, to);
  }
}

constexpr bool IsLineEnd(unsigned char byte) { return byte == kCr || byte == kLf; }

}  // namespace

// clang-format off
constexpr C_FrameRecognizer::S_BodyRule C_FrameRecognizer::kBodyRules[] = {
    // check                                    known  mark            first        CR LF  limited
    {&C_FrameRecognizer::CheckRtcmSum,          true},
    {&C_FrameRecognizer::CheckBinaryFrame,      true},
    {&C_FrameRecognizer::CheckNmeaSum,          false, eMark::Control, 0,           false, true},
    {&C_FrameRecognizer::CheckPkvnSentence,     false, eMark::Control, 0,           false, true},
    {&C_FrameRecognizer::CheckSiteRecord,       false, eMark::Control, 0,           false, true},
    {nullptr,                                   false, eMark::LineEnd, 0,           false, false},
    {&C_FrameRecognizer::CheckPackedReply,      false, eMark::Plain,   kJroxHeader, true,  true},
    {&C_FrameRecognizer::CheckPackedSentence,   false, eMark::CrLf,    1,           true,  true},
};
// clang-format on

// Of the proprietary sentences the packed one has a body of its own.
eRecognitionResult C_FrameRecognizer::FrameBodyWait() {
  if (!IsBodyAwaited()) return eRecError;
  const eBody body = kProtocols[m_currentDescriptor].body;
  const bool isPacked = body == ePkvnBody && m_workMessage.messageType == VelaPKVN_Messages::ePkvnRAW;
  return ScanBody(isPacked ? ePkvnRawBody : body);
}

eRecognitionResult C_FrameRecognizer::RTCM3xBodyWait() { return ScanBody(eRtcmBody); }
eRecognitionResult C_FrameRecognizer::NMEA0183BodyWait() { return ScanBody(eTextBody); }
eRecognitionResult C_FrameRecognizer::PKVNNotRawBodyWait() { return ScanBody(ePkvnBody); }
eRecognitionResult C_FrameRecognizer::JSITERECORDBodyWait() { return ScanBody(eSiteRecordBody); }
eRecognitionResult C_FrameRecognizer::VelaCmdAckBodyWait() { return ScanBody(eAckBody); }
eRecognitionResult C_FrameRecognizer::JROXBodyWait() { return ScanBody(eJroxBody); }
eRecognitionResult C_FrameRecognizer::PKVNRawBodyWait() { return ScanBody(ePkvnRawBody); }

// Of another protocol's frame the expected length may be more than there is room for.
eRecognitionResult C_FrameRecognizer::VelaBINBodyWait() {
  const bool hasNoRoom = IsBodyAwaited() && m_frameMaxLength > m_workMessage.capacity;
  return hasNoRoom ? Conclude(eVerdict::BadCheck) : ScanBody(eVelaBinBody);
}

eRecognitionResult C_FrameRecognizer::ScanBody(eBody body) {
  if (!IsBodyAwaited()) return eRecError;
  if (m_examinedAs != body) m_examined = 0;
  m_examinedAs = body;
  m_settled = 0;
  const S_BodyRule& rule = kBodyRules[body];
  const eVerdict collected = rule.knownLength ? CollectLength() : CollectUntilEnd(rule);
  const bool isChecked = collected == eVerdict::Complete && rule.check != nullptr;
  return Conclude(isChecked ? (this->*rule.check)() : collected);
}

// Collects bytes up to the end that the rule describes. An end that comes exactly at the limit still counts.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CollectUntilEnd(const S_BodyRule& rule) {
  const unsigned int capacity = m_workMessage.capacity;
  const unsigned int limit = rule.limited ? std::min<unsigned int>(m_frameMaxLength, capacity) : capacity;
  const unsigned int end = std::min(m_queue.NumItems(), limit);
  const unsigned char* bytes = FrameBytes(end);
  for (unsigned int at = FirstMark(rule, bytes, end); at < end; at = FindMark(rule.mark, bytes, at + 1, end)) {
    if (!IsLineEnd(bytes[at])) {
      HoldBytes(at + 1);
      return eVerdict::Rejected;
    }
    if (rule.limited && at + 1 < m_frameMinLength) continue;
    if (rule.endsInCrLf && (bytes[at] != kLf || bytes[at - 1] != kCr)) continue;
    m_workMessage.length = static_cast<unsigned short>(at + 1);
    return eVerdict::Complete;
  }
  HoldBytes(end);
  if (end == limit) return rule.limited ? eVerdict::Rejected : eVerdict::GivenUp;
  m_examined = end;
  return eVerdict::More;
}

// The first mark that needs a look, `end` or more when there is none. How far the stream has no mark is remembered
// from one false start to the next: a stream of nothing but starts would be scanned over and over otherwise.
unsigned int C_FrameRecognizer::FirstMark(const S_BodyRule& rule, const unsigned char* bytes, unsigned int end) {
  static_assert(std::size(decltype(m_unmarkedTo){}) == UTIL::kNumMarks);
  std::uint64_t& unmarkedTo = m_unmarkedTo[static_cast<unsigned int>(rule.mark)];
  const unsigned int from = std::max(m_examined, rule.first);
  const unsigned int unmarked = unmarkedTo > m_position ? static_cast<unsigned int>(unmarkedTo - m_position) : 0;
  const unsigned int at = FindMark(rule.mark, bytes, std::max(from, unmarked), end);
  if (from <= std::max(unmarked, 1U)) unmarkedTo = m_position + std::min(at, end);
  return at;
}

// Collects a body whose whole frame is m_frameMaxLength bytes long.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CollectLength() {
  const unsigned int limit = std::min<unsigned int>(m_frameMaxLength, m_workMessage.capacity);
  const unsigned int length = std::min(m_queue.NumItems(), limit);
  m_workMessage.length = static_cast<unsigned short>(length);
  if (length < limit) return eVerdict::More;
  return limit < m_frameMaxLength ? eVerdict::Rejected : eVerdict::Complete;
}

// Brings a verdict into state, counters and result.
eRecognitionResult C_FrameRecognizer::Conclude(eVerdict verdict) {
  m_scanCount = m_workMessage.length;
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
    case eVerdict::GivenUp:
      break;
  }
  m_state = eResynchronise;
  return verdict == eVerdict::BadCheck ? eRecChecksumError : eRecFrameRejected;
}

// The sum stands behind the payload, high byte first: all of it together sums to zero.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckRtcmSum() {
  constexpr unsigned int kWithoutPayload = 3 + 3;
  const unsigned short length = m_workMessage.length;
  if (length < kWithoutPayload || length > C_RunningCrc24::kMaxCount) return eVerdict::BadCheck;  // another protocol's
  const unsigned char* bytes = FrameBytes(length);
  if (m_runningSums->Knows(m_position)) {
    if (m_runningSums->Sum(m_position, bytes, length) != 0) return eVerdict::BadCheck;
  } else if (C_CRC24::ComputeCRC(bytes, length) != 0) {
    m_runningSums->Sum(m_position, bytes, length);  // the false start's bytes may hold more starts
    return eVerdict::BadCheck;
  }
  m_workMessage.messageType = length > kWithoutPayload ? bytes[3] << 4 | bytes[4] >> 4 : 0;
  return eVerdict::Complete;
}

C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckBinaryFrame() {
  const unsigned short length = m_workMessage.length;
  unsigned short number = 0;
  unsigned short frameLength = 0;
  unsigned short position = 0;
  const unsigned int result =
      C_VelaBin_Decode::ValidateFrame(FrameBytes(length), length, number, frameLength, position);
  return result == eResultOk ? eVerdict::Complete : eVerdict::BadCheck;
}

// "*hh" and the line end close a sentence: in NMEA 0183 always, in the receiver's own replies if it so pleases.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckNmeaSum() {
  const unsigned int length = m_workMessage.length;
  const unsigned char* bytes = FrameBytes(length);
  if (length < kShortestSum || bytes[length - 4] != '*') {
    return m_workMessage.protocol == C_RawDataMessage::eNMEA0183 ? eVerdict::Rejected : eVerdict::Complete;
  }
  unsigned int sum = 0;
  if (!UTIL::ReadHex(bytes + length - 3, 2, sum)) return eVerdict::Rejected;
  return UTIL::XorOf(bytes + 1, length - 5) == sum ? eVerdict::Complete : eVerdict::BadCheck;
}

// A sentence with a checksum is delivered without its line end, one without with it.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckPkvnSentence() {
  const unsigned int length = m_workMessage.length;
  const unsigned char* bytes = FrameBytes(length);
  if (length < kShortestSum || bytes[length - 4] != '*') return eVerdict::Complete;
  m_workMessage.length = static_cast<unsigned short>(length - 1);
  if (bytes[length - 3] == '*' || bytes[length - 2] == '*') return eVerdict::Rejected;
  VelaPKVN_Messages::eMessageTypes type = VelaPKVN_Messages::ePkvnUnknown;
  unsigned short errorPosition = 0;
  const unsigned int result = C_VelaPKVN_Decode::ValidateFrame(bytes, m_workMessage.length, type, errorPosition);
  return result == eResultOk ? eVerdict::Complete : eVerdict::Rejected;
}

// Unlike the other texts, a site record must end below the limit, not at it.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckSiteRecord() {
  const unsigned int limit = std::min<unsigned int>(m_frameMaxLength, m_workMessage.capacity);
  return m_workMessage.length < limit ? eVerdict::Complete : eVerdict::Rejected;
}

C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckPackedReply() {
  const unsigned char* packed = FrameBytes(m_workMessage.length) + kJroxHeader;
  const auto maxWords = static_cast<unsigned short>(m_frameMaxLength / 2);
  return UnwindVela7of8Message(m_unwindBuffer.get(), packed, maxWords) != 0 ? eVerdict::Complete : eVerdict::BadCheck;
}

// "$PKVN,RAW,4,12," and packed bytes: the field before them tells how many bytes they hold. Packing rounds an odd
// number up to whole words.
C_FrameRecognizer::eVerdict C_FrameRecognizer::CheckPackedSentence() {
  const unsigned int length = m_workMessage.length;
  const unsigned char* bytes = FrameBytes(length);
  const std::string_view text(reinterpret_cast<const char*>(bytes), length);
  std::size_t comma = text.find(',', kRawComma);
  std::size_t field = 0;
  for (unsigned int commas = 1; commas < 3; ++commas) {
    if (comma == std::string_view::npos) return eVerdict::Rejected;
    field = comma + 1;
    comma = text.find(',', field);
  }
  if (comma == std::string_view::npos) return eVerdict::Rejected;

  const auto packed = static_cast<unsigned int>(comma + 1);
  for (unsigned int at = UTIL::Find<eMark::Plain>(bytes, packed, length); at < length;
       at = UTIL::Find<eMark::Plain>(bytes, at + 1, length)) {
    if (!IsLineEnd(bytes[at])) return eVerdict::Rejected;
  }
  char digits[kRawCountDigits + 1] = {};
  text.copy(digits, std::min(kRawCountDigits, comma - field), field);
  unsigned short expected = 0;
  if (!UTIL::StrToU16(digits, expected, 1)) expected = 0;
  const auto maxWords = static_cast<unsigned short>(m_frameMaxLength / 2);
  const unsigned int unwound = UnwindVela7of8Message(m_unwindBuffer.get(), bytes + packed, maxWords);
  const unsigned int wholeWords = expected + expected % 2U;
  return unwound != 0 && unwound == wholeWords ? eVerdict::Complete : eVerdict::BadCheck;
}

bool C_FrameRecognizer::ExtractHexValue(const unsigned char* text, unsigned char count, unsigned int& value) const {
  return UTIL::ReadHex(text, count, value);
}

unsigned char C_FrameRecognizer::Compute_ByteXOR(const unsigned char* data, unsigned short count) const {
  return data == nullptr ? 0 : UTIL::XorOf(data, count);
}

bool C_FrameRecognizer::Unwind7of8_Byte(unsigned short* out, unsigned char in, unsigned int& accumulator,
                                        unsigned char& bitCount) {
  if (out == nullptr) {
    accumulator = 0;
    bitCount = 0;
    return false;
  }
  if (bitCount < 32) accumulator |= (in & 0x7FU) << bitCount;
  bitCount = static_cast<unsigned char>(bitCount + 7);
  if (bitCount <= 15) return false;
  *out = static_cast<unsigned short>(accumulator);
  bitCount = static_cast<unsigned char>(bitCount - 16);
  accumulator >>= 16;
  return true;
}

unsigned int C_FrameRecognizer::UnwindVela7of8Message(void* out, const unsigned char* in, unsigned short maxWords) {
  if (out == nullptr || in == nullptr) return 0;
  unsigned char* bytes = static_cast<unsigned char*>(out);
  unsigned int accumulator = 0;
  unsigned char bitCount = 0;
  unsigned short word = 0;
  unsigned int sum = 0;  // of the words before the last
  unsigned int words = 0;
  for (; words < maxWords && (*in & UTIL::kPackedBit) != 0; ++in) {
    const unsigned short previous = word;
    if (!Unwind7of8_Byte(&word, *in, accumulator, bitCount)) continue;
    if (words > 0) sum += previous;
    *bytes++ = static_cast<unsigned char>(word);
    *bytes++ = static_cast<unsigned char>(word >> 8);
    ++words;
  }
  if (words == 0 || (sum & 0xFFFF) != word) return 0;
  return 2 * words - 2;
}
