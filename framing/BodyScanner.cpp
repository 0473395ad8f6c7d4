#include "framing/BodyScanner.h"

#include <algorithm>
#include <string_view>

#include "binproto/VelaBin_Decode.h"
#include "framing/CRC24.h"
#include "framing/SevenOfEight.h"
#include "framing/XorSum.h"
#include "records/ResultCodes.h"
#include "textproto/FieldParsers.h"
#include "textproto/PkvnNames.h"
#include "textproto/VelaPKVN_Decode.h"

namespace velagnss::framing {

// How a body runs up to its end, and what must hold then.
struct C_BodyScanner::S_Rule {
  eVerdict (C_BodyScanner::*check)();  // of the whole frame; null: nothing
  bool knownLength = false;            // the frame ends at its greatest length; nothing below applies
  eMark mark = eMark::Control;         // what is not content: a line end, or else a fault
  unsigned int first = 0;              // position of the first byte that is looked at
  bool endsInCrLf = false;             // the end is CR LF, not the first of either
  bool limited = false;                // the expected lengths are limits; otherwise only the capacity is
};

namespace {

constexpr unsigned int kJroxHeader = RowOf(C_RawDataMessage::eJROX).frame.startLength;
constexpr std::size_t kRawComma =  // after "$PKVN,RAW"
    textproto::PkvnSentences::kPrefix.size() + textproto::PkvnSentences::kNames[VelaPKVN_Messages::ePkvnRAW].size();
constexpr std::size_t kRawCountDigits = 9;  // characters of the field with the payload's length that are read

static_assert(C_RunningCrc24::kMaxCount == RowOf(C_RawDataMessage::eRTCM3_x).frame.maxLength);

// By eMark: this byte value and those above it are never marks.
constexpr unsigned char kLeastOfContent[kNumMarks] = {kFirstPrintable, kCr + 1, kLf + 1, kPackedBit};

bool IsPackedUpToLineEnds(const unsigned char* bytes, unsigned int from, unsigned int to) {
  while ((from = FindReadingAhead<eMark::Plain>(bytes, from, to)) < to) {
    if (!IsLineEnd(bytes[from++])) return false;
  }
  return true;
}

// The field's number; 0 for one that is empty, cannot be parsed or does not fit 16 bits. An embedded NUL ends it.
unsigned int PayloadBytes(std::string_view field) {
  char digits[kRawCountDigits + 1] = {};
  field.copy(digits, kRawCountDigits);
  unsigned short value = 0;
  return UTIL::StrToU16(digits, value, 1) ? value : 0;
}

}  // namespace

// clang-format off
// In the order of eBody.
constexpr C_BodyScanner::S_Rule C_BodyScanner::kRules[] = {
    // check                              known  mark            first        CR LF  limited
    {&C_BodyScanner::CheckRtcmSum,        true},
    {&C_BodyScanner::CheckBinaryFrame,    true},
    {&C_BodyScanner::CheckNmeaSum,        false, eMark::Control, 0,           false, true},
    {&C_BodyScanner::CheckPkvnSentence,   false, eMark::Control, 0,           false, true},
    {&C_BodyScanner::CheckSiteRecord,     false, eMark::Control, 0,           false, true},
    {nullptr,                             false, eMark::LineEnd, 0,           false, false},
    {&C_BodyScanner::CheckPackedReply,    false, eMark::Plain,   kJroxHeader, true,  true},
    {&C_BodyScanner::CheckPackedSentence, false, eMark::CrLf,    1,           true,  true},
    {&C_BodyScanner::CheckUnlistedSentence, false, eMark::Control, 0,         false, true},
};
// clang-format on

// Packed bytes hold seven bits each, so a frame unpacks to less than its own length.
C_BodyScanner::C_BodyScanner(C_QueueWindow& queue, S_FrameInProgress& frame)
    : m_queue(queue), m_frame(frame), m_unwound(new unsigned char[frame.message.capacity]()) {}

eVerdict C_BodyScanner::Scan(eBody body) {
  switch (body) {
    case eBody::Rtcm:
      return ScanAs<eBody::Rtcm>();
    case eBody::VelaBin:
      return ScanAs<eBody::VelaBin>();
    case eBody::Text:
      return ScanAs<eBody::Text>();
    case eBody::Pkvn:
      return ScanAs<eBody::Pkvn>();
    case eBody::SiteRecord:
      return ScanAs<eBody::SiteRecord>();
    case eBody::Ack:
      return ScanAs<eBody::Ack>();
    case eBody::Jrox:
      return ScanAs<eBody::Jrox>();
    case eBody::PkvnRaw:
      return ScanAs<eBody::PkvnRaw>();
    default:
      return ScanAs<eBody::Unlisted>();
  }
}

template <eBody kBody>
eVerdict C_BodyScanner::ScanAs() {
  constexpr S_Rule kRule = kRules[static_cast<unsigned int>(kBody)];
  if (m_examinedAs != kBody) m_examined = 0;
  m_examinedAs = kBody;
  const eVerdict collected = kRule.knownLength ? CollectLength() : CollectUntilEnd<kBody>();
  const bool isChecked = collected == eVerdict::Complete && kRule.check != nullptr;
  return isChecked ? (this->*kRule.check)() : collected;
}

// The frame has at least these bytes; a start search may have taken more.
inline void C_BodyScanner::Hold(unsigned int count) {
  m_frame.message.length = std::max(m_frame.message.length, static_cast<unsigned short>(count));
}

// Collects bytes up to the end that the rule describes. An end that comes exactly at the limit still counts.
template <eBody kBody>
inline eVerdict C_BodyScanner::CollectUntilEnd() {
  constexpr S_Rule kRule = kRules[static_cast<unsigned int>(kBody)];
  const unsigned int limit = kRule.limited ? Limit() : m_frame.message.capacity;
  const unsigned int end = std::min(m_queue.Queued(), limit);
  const unsigned char* bytes = m_queue.Bytes();
  unsigned int at = FirstMark<kRule.mark>(kRule.first, bytes, end);
  for (; at < end; at = FindReadingAhead<kRule.mark>(bytes, at + 1, end)) {
    if (!IsLineEnd(bytes[at])) {
      Hold(at + 1);
      return eVerdict::Rejected;
    }
    if (kRule.limited && at + 1 < m_frame.lengths.least) {
      if (kBody != eBody::Text || !m_takesShortLines || !IsShortLine(bytes, at + 1)) continue;
      m_examined = at + 1;
      return eVerdict::ShortLine;
    }
    if (kRule.endsInCrLf && (bytes[at] != kLf || bytes[at - 1] != kCr)) continue;
    m_frame.message.length = static_cast<unsigned short>(at + 1);
    return eVerdict::Complete;
  }
  if (end < limit) return AwaitMore(kBody, limit, kLeastOfContent[static_cast<unsigned int>(kRule.mark)]);
  Hold(end);
  return kRule.limited ? eVerdict::Rejected : eVerdict::GivenUp;
}

// The whole queue is scanned, even beyond the longest sentence: the answer then serves later starts as well.
bool C_BodyScanner::LooksForSentenceEnd() {
  std::uint64_t& unmarkedTo = m_unmarkedTo[static_cast<unsigned int>(eMark::Control)];
  const std::uint64_t position = m_queue.Position();
  const unsigned int queued = m_queue.Queued();
  const unsigned char* const bytes = m_queue.Bytes();
  const unsigned int unmarked = unmarkedTo > position ? static_cast<unsigned int>(unmarkedTo - position) : 0;
  const unsigned int at = std::min(FindReadingAhead<eMark::Control>(bytes, unmarked, queued), queued);
  unmarkedTo = position + at;
  if (at == queued || at >= kLongestSentence) return at >= kLongestSentence;
  return at + 1 < kShortestSentence || !IsLineEnd(bytes[at]) || bytes[at - 3] != '*';
}

// Collects a body whose frame ends at its greatest length.
inline eVerdict C_BodyScanner::CollectLength() {
  const unsigned int limit = Limit();
  if (m_queue.Queued() < limit) return AwaitMore(m_examinedAs, limit, 0);
  m_frame.message.length = static_cast<unsigned short>(limit);
  return limit < m_frame.lengths.greatest ? eVerdict::Rejected : eVerdict::Complete;
}

// The words that the bytes hold, as bytes without the checksum; 0 when it is wrong. A limit on the words keeps what is
// unpacked within the frame's own limit.
unsigned int C_BodyScanner::Unwound(const unsigned char* packed) {
  return UnwindMessage(m_unwound.get(), packed, static_cast<unsigned short>(m_frame.lengths.greatest / 2));
}

// The checksum follows the payload, high byte first: the frame with its checksum sums to zero (RTCM 10403). Where a
// frame fails, its bytes are summed once more into the running sums: they may hold further starts, whose frames overlap
// this one, and a stream of starts would otherwise be summed hundreds of times over.
eVerdict C_BodyScanner::CheckRtcmSum() {
  constexpr unsigned int kWithoutPayload = 3 + 3;
  const unsigned short length = m_frame.message.length;
  if (length < kWithoutPayload || length > C_RunningCrc24::kMaxCount) return eVerdict::BadCheck;  // another protocol's
  const unsigned char* bytes = m_queue.Bytes();
  const std::uint64_t position = m_queue.Position();
  if (m_runningSums.Knows(position)) {
    if (m_runningSums.Sum(position, bytes, length) != 0) return eVerdict::BadCheck;
  } else if (C_CRC24::ComputeCRC(bytes, length) != 0) {
    m_runningSums.Sum(position, bytes, length);
    return eVerdict::BadCheck;
  }
  m_frame.message.messageType = length > kWithoutPayload ? bytes[3] << 4 | bytes[4] >> 4 : 0;
  return eVerdict::Complete;
}

// The decoder's own check: one statement of the rule, so that the two cannot disagree.
eVerdict C_BodyScanner::CheckBinaryFrame() {
  const unsigned short length = m_frame.message.length;
  unsigned short number = 0;
  unsigned short frameLength = 0;
  unsigned short position = 0;
  const unsigned int result = C_VelaBin_Decode::ValidateFrame(m_queue.Bytes(), length, number, frameLength, position);
  return result == eResultOk ? eVerdict::Complete : eVerdict::BadCheck;
}

// "*hh" and the line end close a sentence. The checksum is mandatory here for NMEA 0183, without which noise between
// "$" and a line end would pass; in the receiver's own replies it is optional.
eVerdict C_BodyScanner::CheckNmeaSum() {
  const unsigned int length = m_frame.message.length;
  const unsigned char* bytes = m_queue.Bytes();
  if (length < kShortestSum || bytes[length - 4] != '*') {
    return m_frame.message.protocol == C_RawDataMessage::eNMEA0183 ? eVerdict::Rejected : eVerdict::Complete;
  }
  unsigned int sum = 0;
  if (!ReadHex(bytes + length - 3, 2, sum)) return eVerdict::Rejected;
  return XorOf(bytes + 1, length - 5) == sum ? eVerdict::Complete : eVerdict::BadCheck;
}

eVerdict C_BodyScanner::CheckUnlistedSentence() {
  const unsigned int length = m_frame.message.length;
  switch (JudgeSentence(m_queue.Bytes(), length)) {
    case eSentence::Checked:
      return eVerdict::Complete;
    case eSentence::BadSum:
      return eVerdict::BadCheck;
    default:
      return eVerdict::Rejected;
  }
}

// Judged at its first line end only: a sentence contains no other.
bool C_BodyScanner::IsShortLine(const unsigned char* bytes, unsigned int length) const {
  return m_frame.message.protocol == C_RawDataMessage::eNMEA0183 && JudgeSentence(bytes, length) == eSentence::Checked;
}

// A sentence with a checksum is delivered without its line end, which its decoder does not take; the line end stays
// queued and is accepted after the frame. A sentence without a checksum is delivered with it.
eVerdict C_BodyScanner::CheckPkvnSentence() {
  const unsigned int length = m_frame.message.length;
  const unsigned char* bytes = m_queue.Bytes();
  if (length < kShortestSum || bytes[length - 4] != '*') return eVerdict::Complete;
  m_frame.message.length = static_cast<unsigned short>(length - 1);
  if (bytes[length - 3] == '*' || bytes[length - 2] == '*') return eVerdict::Rejected;
  VelaPKVN_Messages::eMessageTypes type = VelaPKVN_Messages::ePkvnUnknown;
  unsigned short errorPosition = 0;
  const unsigned int result = C_VelaPKVN_Decode::ValidateFrame(bytes, m_frame.message.length, type, errorPosition);
  return result == eResultOk ? eVerdict::Complete : eVerdict::Rejected;
}

// Unlike the other texts, a site record must end below the limit, not at it.
eVerdict C_BodyScanner::CheckSiteRecord() {
  return m_frame.message.length < Limit() ? eVerdict::Complete : eVerdict::Rejected;
}

eVerdict C_BodyScanner::CheckPackedReply() {
  const unsigned char* packed = m_queue.Bytes() + kJroxHeader;
  return Unwound(packed) != 0 ? eVerdict::Complete : eVerdict::BadCheck;
}

// "$PKVN,RAW,4,12," and packed bytes: the second field after the name is the number of bytes that they hold.
eVerdict C_BodyScanner::CheckPackedSentence() {
  const unsigned int length = m_frame.message.length;
  const unsigned char* bytes = m_queue.Bytes();
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
  if (!IsPackedUpToLineEnds(bytes, packed, length)) return eVerdict::Rejected;
  const unsigned int expected = PayloadBytes(text.substr(field, comma - field));
  const unsigned int unwound = Unwound(bytes + packed);
  const unsigned int wholeWords = expected + expected % 2U;  // an odd payload is padded
  return unwound != 0 && unwound == wholeWords ? eVerdict::Complete : eVerdict::BadCheck;
}

}  // namespace velagnss::framing
