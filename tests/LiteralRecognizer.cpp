#include "tests/LiteralRecognizer.h"

#include <algorithm>
#include <string>

#include "tests/Streams.h"

namespace {

using Raw = C_RawDataMessage;
using Bytes = LiteralRecognizer::Bytes;
using Queue = std::deque<unsigned char>;
using Work = LiteralRecognizer::Work;
using Literal = LiteralRecognizer;
using enum Literal::Result;

struct TextRow {
  std::string name;
  unsigned least, greatest;
};

// clang-format off
const TextRow kNmeaRows[23] = {
    {"ALM", 27, 128}, {"APB", 21, 64},  {"BWC", 19, 88},  {"DTM", 15, 120}, {"HDG", 14, 120}, {"HDM", 14, 120},
    {"HDT", 14, 120}, {"HEV", 14, 120}, {"GGA", 22, 128}, {"GLL", 13, 60},  {"GNS", 20, 120}, {"GRS", 20, 250},
    {"GSA", 24, 250}, {"GST", 15, 70},  {"GSV", 10, 100}, {"RMA", 18, 90},  {"RMB", 20, 100}, {"RMC", 18, 90},
    {"ROT", 9, 25},   {"RRE", 11, 200}, {"VTG", 15, 50},  {"XTE", 12, 32},  {"ZDA", 13, 40},
};
const TextRow kPkvnRows[11] = {
    {"RAW", 18, 2048}, {"ATTSTAT", 38, 179}, {"GBS", 25, 100}, {"HPR", 25, 70},   {"BLV", 20, 100},
    {"FVI", 40, 255},  {"RTKSTAT", 60, 190}, {"VCT", 20, 90},  {"INTLT", 19, 33}, {"TEMPERATURE", 19, 35},
    {"ARN_ROUTER", 30, 255},
};
const unsigned kBlocks[][3] = {  // id, least and greatest length
    {1, 62, 62},     {2, 26, 26},     {3, 126, 126},   {5, 82, 82},     {6, 22, 22},     {16, 322, 322},
    {19, 386, 386},  {25, 138, 138},  {34, 42, 42},    {35, 138, 138},  {36, 346, 346},  {39, 422, 422},
    {44, 66, 66},    {45, 138, 138},  {49, 310, 310},  {59, 266, 266},  {61, 330, 330},  {62, 50, 50},
    {65, 78, 78},    {66, 362, 362},  {69, 310, 310},  {71, 458, 458},  {76, 458, 458},  {80, 50, 50},
    {89, 90, 90},    {93, 66, 66},    {94, 106, 106},  {95, 138, 138},  {96, 310, 310},  {97, 38, 38},
    {98, 78, 78},    {99, 314, 314},  {100, 270, 270}, {101, 458, 458}, {102, 354, 354}, {103, 74, 103},
    {104, 290, 290}, {122, 90, 90},   {180, 242, 242}, {209, 342, 342},
};
const unsigned kRtcmNumbers[][2] = {  // first and last
    {63, 63},     {1001, 1013}, {1019, 1020}, {1030, 1033}, {1042, 1046}, {1057, 1066}, {1068, 1068}, {1071, 1077},
    {1081, 1087}, {1091, 1097}, {1101, 1107}, {1111, 1117}, {1121, 1127}, {1230, 1230}, {1240, 1243}, {1245, 1245},
    {1258, 1261}, {1263, 1270}, {1303, 1303}, {4011, 4011}, {4013, 4014}, {4067, 4095},
};
// clang-format on

bool IsLineEnd(unsigned char byte) { return byte == 13 || byte == 10; }

// Where a counter would overflow, its low 16 bits are kept.
void Add(unsigned& counter, std::size_t amount) {
  if (counter + amount > 0xFFFFFFFF) counter &= 0xFFFF;
  counter += static_cast<unsigned>(amount);
}

template <std::size_t N>
unsigned RowOf(const TextRow (&rows)[N], const std::string& name) {
  unsigned row = 0;
  while (row < N && rows[row].name != name) ++row;
  return row;
}

std::string TextAt(const Bytes& bytes, std::size_t from, std::size_t count) {
  std::string text;
  for (std::size_t at = from; at < from + count && at < bytes.size(); ++at) text += static_cast<char>(bytes[at]);
  return text;
}

// What a frame's first bytes tell: its kind and limits. False: no frame of that protocol.
bool SetKind(Work& work, unsigned type, unsigned least, unsigned greatest) {
  work.message.type = type;
  work.least = least;
  work.greatest = greatest;
  return true;
}

bool RtcmParameters(Work& work) {
  const Bytes& bytes = work.message.bytes;
  const unsigned length = (bytes[1] & 3U) * 256 + bytes[2] + 6;
  const unsigned number = bytes[3] * 16U + bytes[4] / 16;
  for (const auto& [first, last] : kRtcmNumbers)
    if (first <= number && number <= last) return SetKind(work, number, length, length);
  return false;
}

bool NmeaParameters(Work& work) {
  const unsigned row = RowOf(kNmeaRows, TextAt(work.message.bytes, 3, 3));
  return row < 23 && SetKind(work, row, kNmeaRows[row].least, kNmeaRows[row].greatest);
}

bool BinParameters(Work& work) {
  const Bytes& bytes = work.message.bytes;
  const unsigned block = bytes[4] + bytes[5] * 256U;
  const unsigned length = bytes[6] + bytes[7] * 256U + 10;
  for (const auto& [id, least, greatest] : kBlocks)
    if (id == block && least <= length && length <= greatest) return SetKind(work, id, length, length);
  return false;
}

// The name ends at a comma or NUL.
unsigned PkvnRow(const Bytes& bytes) {
  const std::string name = TextAt(bytes, 6, 31);
  return RowOf(kPkvnRows, name.substr(0, name.find_first_of(std::string(",\0", 2))));
}

bool IsPkvn(const Bytes& bytes) { return TextAt(bytes, 0, 6) == "$PKVN," && PkvnRow(bytes) < 11; }

bool PkvnParameters(Work& work) {
  const unsigned row = PkvnRow(work.message.bytes);
  return row < 11 && SetKind(work, row, kPkvnRows[row].least, kPkvnRows[row].greatest);
}

// "$RD0," passes here, and is too long whatever follows.
bool RdParameters(Work& work) {
  const unsigned char version = work.message.bytes[3];
  return version == '0' ? SetKind(work, 0, 0, 0) : version == '1' && SetKind(work, 1, 37, 80);
}

bool InfoParameters(Work& work) { return SetKind(work, 0, 37, 120); }

bool QueryParameters(Work& work) { return SetKind(work, 0, 21, 120); }

bool SiteRecordParameters(Work& work) { return SetKind(work, work.message.type, 13, 512); }

// Where a frame ends.

enum Collected { kPart, kWhole, kBroken };

// The next byte of the frame: first those that are held, then those queued after them.
bool Next(Work& work, const Queue& queue, std::size_t& examined) {
  Bytes& bytes = work.message.bytes;
  if (examined == bytes.size()) {
    if (bytes.size() >= queue.size()) return false;
    bytes.push_back(queue[bytes.size()]);
  }
  ++examined;
  return true;
}

// A single step may have left more bytes held than the frame has.
Collected EndAt(Work& work, std::size_t length) {
  work.message.bytes.resize(length);
  return kWhole;
}

bool LimitReached(const Work& work, std::size_t length) { return length >= work.greatest || length >= work.capacity; }

Collected CollectBytes(Work& work, const Queue& queue) {
  std::size_t length = 0;
  while (!LimitReached(work, length) && Next(work, queue, length)) continue;
  if (length == work.greatest) return EndAt(work, length);
  return LimitReached(work, length) ? kBroken : kPart;
}

Collected CollectLine(Work& work, const Queue& queue) {
  for (std::size_t length = 0; Next(work, queue, length);) {
    const unsigned char byte = work.message.bytes[length - 1];
    if (byte < 32 && !IsLineEnd(byte)) return kBroken;
    if (IsLineEnd(byte) && length >= work.least) return EndAt(work, length);
    if (LimitReached(work, length)) return kBroken;
  }
  return kPart;
}

// Up to CR LF. After the start of a JROX frame there are only packed bytes and line ends.
template <bool kJrox>
Collected CollectPacked(Work& work, const Queue& queue) {
  for (std::size_t length = 0; Next(work, queue, length);) {
    const Bytes& bytes = work.message.bytes;
    const unsigned char byte = bytes[length - 1];
    if (kJrox && length > 6 && byte < 0x80 && !IsLineEnd(byte)) return kBroken;
    if (length >= work.least && length > 1 && bytes[length - 2] == 13 && byte == 10) return EndAt(work, length);
    if (LimitReached(work, length)) return kBroken;
  }
  return kPart;
}

// A sentence of one kind carries packed bytes.
bool IsPkvnRaw(const Work& work) { return work.message.protocol == Raw::ePKVN && work.message.type == 0; }

// Whatever the bytes and the limits: only the room ends it.
Collected CollectAcknowledgement(Work& work, const Queue& queue) {
  for (std::size_t length = 0; Next(work, queue, length);) {
    if (IsLineEnd(work.message.bytes[length - 1])) return EndAt(work, length);
    if (length >= work.capacity) return kBroken;
  }
  return kPart;
}

// Whether a whole frame is right: complete, bad check or rejected.

// The value of the two upper-case hexadecimal digits at the end of bytes[0, end), -1 for other bytes.
int ChecksumBefore(const Bytes& bytes, std::size_t end) {
  const std::string digits = "0123456789ABCDEF";
  const std::size_t high = digits.find(static_cast<char>(bytes[end - 2]));
  const std::size_t low = digits.find(static_cast<char>(bytes[end - 1]));
  return high > 15 || low > 15 ? -1 : static_cast<int>(high * 16 + low);
}

unsigned char Xor(const unsigned char* bytes, std::size_t count) {
  unsigned char sum = 0;
  for (std::size_t at = 0; at < count; ++at) sum ^= bytes[at];
  return sum;
}

// Blanks, at most one plus sign, digits; what follows them is not looked at if it is made of the same characters.
unsigned ExpectedCount(std::string text) {
  text = text.substr(0, std::min<std::size_t>(text.find('\0'), 9));
  if (text.find_first_not_of(" +0123456789") != std::string::npos) return 0;
  std::size_t at = 0;
  while (at < text.size() && text[at] == ' ') ++at;
  if (at < text.size() && text[at] == '+') ++at;
  unsigned value = 0;
  for (; at < text.size() && text[at] >= '0' && text[at] <= '9'; ++at)
    value = value * 10 + static_cast<unsigned>(text[at] - '0');
  return value > 65535 ? 0 : value;
}

// Bytes of payload in 7-of-8 packing from `from` on; 0 for none, or where the last word is not the sum of the others.
unsigned Unwind(const Bytes& bytes, std::size_t from) {
  std::vector<bool> bits;
  for (std::size_t at = from; at < bytes.size() && bytes[at] >= 0x80; ++at)
    for (unsigned bit = 0; bit < 7; ++bit) bits.push_back(((bytes[at] >> bit) & 1) != 0);
  const std::size_t words = bits.size() / 16;
  unsigned sum = 0;
  unsigned last = 0;
  for (std::size_t word = 0; word < words; ++word) {
    sum = (sum + last) & 0xFFFF;
    last = 0;
    for (unsigned bit = 0; bit < 16; ++bit) last |= (bits[word * 16 + bit] ? 1U : 0U) << bit;
  }
  return words == 0 || sum != last ? 0 : static_cast<unsigned>(2 * words - 2);
}

Literal::Result CheckRtcm(Work& work) {
  const Bytes& frame = work.message.bytes;
  const std::size_t end = frame.size();
  if (end < 6) return kChecksum;
  work.message.type = end > 6 ? frame[3] * 16U + frame[4] / 16 : 0;
  const unsigned sent = frame[end - 3] * 65536U + frame[end - 2] * 256U + frame[end - 1];
  return BitwiseCrc24(TextAt(frame, 0, end - 3)) == sent ? kComplete : kChecksum;
}

Literal::Result CheckSentence(Work& work) {
  const Bytes& frame = work.message.bytes;
  const std::size_t length = frame.size();
  const bool mustHaveSum = work.message.protocol == Raw::eNMEA0183;
  if (length < 5 || frame[length - 4] != '*') return mustHaveSum ? kRejected : kComplete;
  const int sent = ChecksumBefore(frame, length - 1);
  if (sent < 0) return kRejected;
  return Xor(&frame[1], length - 5) == sent ? kComplete : kChecksum;
}

Literal::Result CheckBin(Work& work) {
  const Bytes& frame = work.message.bytes;
  if (work.greatest > work.capacity || TextAt(frame, 0, 4) != "$BIN" || frame.size() < 10) return kChecksum;
  if (frame[6] + frame[7] * 256U + 10 != frame.size()) return kChecksum;
  unsigned sum = 0;
  for (std::size_t at = 8; at < frame.size() - 2; ++at) sum += frame[at];
  const unsigned sent = frame[frame.size() - 2] + frame[frame.size() - 1] * 256U;
  return sum % 65536 == sent ? kComplete : kChecksum;
}

// "$PKVN,RAW,any,count,packed" CR LF; odd payloads are padded by one byte.
Literal::Result CheckPkvnRaw(Work& work) {
  const Bytes& frame = work.message.bytes;
  std::string count;
  std::size_t at = 9;
  for (unsigned commas = 0; commas < 3; ++at) {
    if (at >= frame.size()) return kRejected;
    if (frame[at] == ',') ++commas;
    if (frame[at] != ',' && commas == 2) count += static_cast<char>(frame[at]);
  }
  for (std::size_t packed = at; packed < frame.size(); ++packed)
    if (frame[packed] < 0x80 && !IsLineEnd(frame[packed])) return kRejected;
  const unsigned expected = ExpectedCount(count);
  const unsigned unwound = Unwind(frame, at);
  return unwound != 0 && unwound == expected + expected % 2 ? kComplete : kChecksum;
}

// With a checksum, the frame ends before its line end, and a wrong sum counts as a rejection, not as a bad check.
Literal::Result CheckPkvn(Work& work) {
  Bytes& frame = work.message.bytes;
  if (frame.size() < 5 || frame[frame.size() - 4] != '*') return kComplete;
  frame.pop_back();
  const int sent = ChecksumBefore(frame, frame.size());
  return IsPkvn(frame) && sent >= 0 && Xor(&frame[1], frame.size() - 4) == sent ? kComplete : kRejected;
}

bool IsAddressCharacter(unsigned char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }

// A sentence of any address; the digits of its sum in either case.
Literal::Result CheckUnlisted(Work& work) {
  const Bytes& line = work.message.bytes;
  const std::size_t length = line.size();
  if (length < 7 || (line[0] != '$' && line[0] != '!') || line[length - 4] != '*') return kRejected;
  std::size_t comma = 1;
  while (comma < length - 4 && IsAddressCharacter(line[comma])) ++comma;
  if (comma == 1 || line[comma] != ',') return kRejected;
  Bytes digits(line.end() - 3, line.end() - 1);
  for (unsigned char& digit : digits) digit = digit >= 'a' && digit <= 'f' ? digit - 32 : digit;
  const int sent = ChecksumBefore(digits, 2);
  if (sent < 0) return kRejected;
  return Xor(&line[1], length - 5) == sent ? kComplete : kChecksum;
}

Literal::Result CheckSiteRecord(Work& work) {
  return LimitReached(work, work.message.bytes.size()) ? kRejected : kComplete;
}

Literal::Result CheckJrox(Work& work) { return Unwind(work.message.bytes, 6) != 0 ? kComplete : kChecksum; }

}  // namespace

struct LiteralRecognizer::Scanner {
  Collected (*collect)(Work&, const Queue&);
  Result (*check)(Work&);  // none: passes
  bool countsBroken = true;
};

namespace {

const Literal::Scanner kRtcm = {CollectBytes, CheckRtcm};
const Literal::Scanner kBin = {CollectBytes, CheckBin};
const Literal::Scanner kText = {CollectLine, CheckSentence};
const Literal::Scanner kPkvn = {CollectLine, CheckPkvn};
const Literal::Scanner kPkvnRaw = {CollectPacked<false>, CheckPkvnRaw};
const Literal::Scanner kSite = {CollectLine, CheckSiteRecord};
const Literal::Scanner kAck = {CollectAcknowledgement, nullptr, false};
const Literal::Scanner kJrox = {CollectPacked<true>, CheckJrox};
const Literal::Scanner kUnlisted = {CollectLine, CheckUnlisted};

struct Descriptor {
  Raw::eProtocols protocol;
  std::string start;          // '.' is any byte, '!' one whose top six bits are 0
  std::size_t needed;         // bytes that kind and length are read from
  unsigned least, greatest;   // limits of a frame, where its kind does not say others
  unsigned capacity;          // room that the protocol asks for
  bool (*parameters)(Work&);  // none: passes
  const Literal::Scanner* scanner;
};

// clang-format off
const Descriptor kDescriptors[11] = {  // in search order
    {Raw::eJROX,        "$JROX,",              6, 10,  440, 1024, nullptr,              &kJrox},
    {Raw::eRTCM3_x,     "\xD3!...",            5,  0,    0, 1029, RtcmParameters,       &kRtcm},
    {Raw::eNMEA0183,    "$.....,",             7,  0,    0, 1024, NmeaParameters,       &kText},
    {Raw::eVelaBIN,     "$BIN......",         10,  0,    0, 2048, BinParameters,        &kBin},
    {Raw::ePKVN,        "$PKVN,............", 18,  0,    0, 2048, PkvnParameters,       &kPkvn},
    {Raw::eVelaRD,      "$RD.,",              10,  0,    0,  512, RdParameters,         &kText},
    {Raw::eVelaJI,      "$>JI,",              10, 37,  120,  512, InfoParameters,       &kText},
    {Raw::eVelaJQUERY,  "$>JQUERY,",          10, 21,  120,  512, QueryParameters,      &kText},
    {Raw::eJSITERECORD, "$>JSITERECORD",      13, 13,  512,  512, SiteRecordParameters, &kSite},
    {Raw::eVelaCmdAck,  "$>",                  2,  2,    2,  256, nullptr,              &kAck},
    {Raw::eVelaGEO,     "$>JGEO,",            10, 37,  120,   80, InfoParameters,       &kText},
};
// clang-format on

bool BeginsAs(const Bytes& bytes, const std::string& start) {
  for (std::size_t at = 0; at < start.size(); ++at) {
    const auto wanted = static_cast<unsigned char>(start[at]);
    if (wanted != '.' && !(wanted == '!' ? bytes[at] < 4 : wanted == bytes[at])) return false;
  }
  return true;
}

}  // namespace

Literal::LiteralRecognizer(const eProtocols* protocols, unsigned overflowPolicy) : m_policy(overflowPolicy) {
  if (protocols == nullptr || protocols[0] == Raw::eAllProtocols) {
    std::fill_n(m_allowed, 11, true);
  } else {
    for (int entry = 0; entry < 254 && protocols[entry] <= 10; ++entry) m_allowed[protocols[entry]] = true;
  }
  std::copy_n(m_allowed, 11, m_enabled);
  for (const Descriptor& descriptor : kDescriptors)
    if (m_allowed[descriptor.protocol]) m_work.capacity = std::max(m_work.capacity, descriptor.capacity);
}

void Literal::EnableProtocol(unsigned protocol) {
  if (protocol == Raw::eAllProtocols) std::copy_n(m_allowed, 11, m_enabled);
  if (protocol <= 10 && m_allowed[protocol]) m_enabled[protocol] = true;
}

void Literal::DisableProtocol(unsigned protocol) {
  if (protocol == Raw::eAllProtocols) std::fill_n(m_enabled, 11, false);
  if (protocol <= 10) m_enabled[protocol] = false;
}

void Literal::ResetFrameScanProc() {
  m_state = kIdle;
  m_last = 12;
  m_isUnlisted = false;
  m_work.message = Message();
  m_scanCount = 0;
  m_lastScanCount = 0xFFFF;
  m_postFrame = false;
}

void Literal::FullProcessingReset() {
  ResetFrameScanProc();
  m_queue.clear();
  m_work.least = m_work.greatest = 0;
  m_current = 11;
  counters = Counters();
}

bool Literal::IsAFrameStartChar(unsigned char byte) const {
  if (byte == '!' && m_acceptsUnlisted && m_enabled[Raw::eNMEA0183]) return true;
  return std::any_of(std::begin(kDescriptors), std::end(kDescriptors), [&](const Descriptor& descriptor) {
    return m_enabled[descriptor.protocol] && static_cast<unsigned char>(descriptor.start[0]) == byte;
  });
}

bool Literal::IsAPostFrameAllowedByte(unsigned char byte) {
  const bool endsAsLine = m_last < 11 && kDescriptors[m_last].protocol != Raw::eRTCM3_x;
  return m_postFrame = m_postFrame && endsAsLine && IsLineEnd(byte);
}

Literal::Result Literal::DoRecognition(const unsigned char* data, unsigned length, Message& delivered) {
  if (m_state == kResynchronise) ResetFrameScanProc();
  bool overflow = false;
  for (unsigned at = 0; data != nullptr && at < length; ++at) {
    if (m_queue.size() >= QueueCapacity()) {
      if (m_policy > 2) return kError;
      overflow = true;
      if (m_policy != 1) Add(counters.discarded, 1);
      if (m_policy == 1) Add(counters.discarded, m_queue.size());
      if (m_policy == 0) m_queue.pop_front();
      if (m_policy == 1) m_queue.clear();
      if (m_policy != 2) ResetFrameScanProc();
    }
    if (m_queue.size() < QueueCapacity()) m_queue.push_back(data[at]);
    m_lastScanCount = 0xFFFF;
  }
  if (overflow) return kOverflow;
  if (m_queue.empty() || m_lastScanCount == m_scanCount) return kNoNewData;
  m_lastScanCount = m_scanCount;
  if (m_state == kIdle) return IdleStep();
  return m_state == kStartSearch ? SearchStep(delivered) : BodyStep(delivered);
}

Literal::Result Literal::IdleStep() {
  m_scanCount = 0;
  m_lastScanCount = 0xFFFF;
  for (; !m_queue.empty(); m_queue.pop_front(), m_work.message.bytes.clear()) {
    if (IsAFrameStartChar(m_queue.front())) {
      m_state = kStartSearch;
      m_lastScanCount = m_scanCount;
      m_scanCount = 1;
      return kSearching;
    }
    Add(IsAPostFrameAllowedByte(m_queue.front()) ? counters.accepted : counters.discarded, 1);
  }
  return kSearching;
}

void Literal::DropFalseStart() {
  Add(counters.discarded, 1);
  m_queue.pop_front();
  ResetFrameScanProc();
}

Literal::Result Literal::SearchStep(Message& delivered) {
  const Result result = FrameStartSearch();
  if (m_acceptsUnlisted && m_state == kStartSearch && NoListedStart()) m_state = kResynchronise;
  if (m_state == kResynchronise && m_acceptsUnlisted && BeginsUnlisted()) {
    m_listedWasBad = false;
    return LookAsUnlisted(result, delivered);
  }
  if (m_state == kResynchronise) DropFalseStart();
  if (m_state == kBodyWait) {
    if (m_work.least < m_work.message.bytes.size()) m_work.message.bytes.resize(m_work.least);
    m_scanCount = static_cast<unsigned>(m_work.message.bytes.size());
    m_lastScanCount = 0xFFFF;
  }
  return result;
}

Literal::Result Literal::BodyStep(Message& delivered) {
  const unsigned bad = counters.bad;
  const Result result = FrameBodyWait();
  if (m_state == kResynchronise && m_acceptsUnlisted && !m_isUnlisted && BeginsUnlisted()) {
    m_listedWasBad = counters.bad != bad;
    counters.bad = bad;
    return LookAsUnlisted(result, delivered);
  }
  if (m_state == kResynchronise) DropFalseStart();
  if (result != kComplete) return result;
  delivered = m_work.message;
  const std::size_t length = m_work.message.bytes.size();
  Add(counters.accepted, length);
  m_queue.erase(m_queue.begin(), m_queue.begin() + static_cast<std::ptrdiff_t>(length));
  ResetFrameScanProc();
  m_postFrame = true;
  m_last = m_current;
  return kComplete;
}

// From seven bytes on, those that are there may rule out every start that needs more.
bool Literal::NoListedStart() const {
  if (m_queue.size() < 7) return false;
  for (unsigned descriptor = 0; descriptor < 11; ++descriptor) {
    const std::string& start = kDescriptors[descriptor].start;
    const Bytes bytes(m_queue.begin(),
                      m_queue.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(m_queue.size(), 18)));
    const bool isOpen = m_enabled[kDescriptors[descriptor].protocol] && StartLength(descriptor) > bytes.size();
    if (isOpen && BeginsAs(bytes, start.substr(0, bytes.size()))) return false;
  }
  return true;
}

// The oldest bytes, seven at most, begin an RTCM 3 frame with a number, or an address.
bool Literal::BeginsUnlisted() const {
  if (m_queue[0] == 0xD3) return m_enabled[Raw::eRTCM3_x] && m_queue[1] < 4 && m_queue[1] * 256 + m_queue[2] > 1;
  if (!m_enabled[Raw::eNMEA0183] || (m_queue[0] != '$' && m_queue[0] != '!')) return false;
  for (std::size_t at = 1; at < std::min<std::size_t>(m_queue.size(), 7); ++at)
    if (!IsAddressCharacter(m_queue[at])) return at > 1 && m_queue[at] == ',';
  return true;
}

// The start has failed as a listed frame. It is one bad frame at most.
Literal::Result Literal::LookAsUnlisted(Result listed, Message& delivered) {
  const bool isRtcm = m_queue[0] == 0xD3;
  m_isUnlisted = true;
  m_listedResult = listed;
  m_listed = m_current;
  m_current = isRtcm ? 1 : 2;
  m_work.message.protocol = kDescriptors[m_current].protocol;
  m_work.message.type = Raw::eNmeaUnknown;
  m_work.greatest = isRtcm ? m_queue[1] * 256U + m_queue[2] + 6U : 1024;
  m_work.least = isRtcm ? m_work.greatest : 0;
  m_state = kBodyWait;
  m_lastScanCount = 0xFFFF;
  return BodyStep(delivered);
}

// Whether the search for listed frames, begun anew after each byte but the last, would end in one within the bytes.
bool Literal::HoldsListedFrame(std::size_t length) const {
  for (std::size_t start = 1; start < length;) {
    Literal inner(nullptr, 2);
    std::copy_n(m_allowed, 11, inner.m_allowed);
    std::copy_n(m_enabled, 11, inner.m_enabled);
    inner.m_patient = m_patient;
    inner.m_work.capacity = m_work.capacity;
    const Bytes bytes(m_queue.begin() + static_cast<std::ptrdiff_t>(start),
                      m_queue.begin() + static_cast<std::ptrdiff_t>(length));
    Message frame;
    Result result = inner.DoRecognition(bytes.data(), static_cast<unsigned>(bytes.size()), frame);
    while (result != kNoNewData && result != kComplete) result = inner.DoRecognition(nullptr, 0, frame);
    if (result == kComplete) return true;
    start = length - inner.m_queue.size() + 1;
  }
  return false;
}

// Length of a checked line at the first line end of a listed sentence, if that comes too early for it; else 0.
std::size_t Literal::ShortLine() const {
  const auto end = std::find_if(m_queue.begin(), m_queue.end(), [](unsigned char byte) { return byte < 32; });
  if (!m_acceptsUnlisted || m_work.message.protocol != Raw::eNMEA0183 || end == m_queue.end()) return 0;
  Work line = m_work;
  line.message.bytes.assign(m_queue.begin(), end + 1);
  const std::size_t length = line.message.bytes.size();
  const bool isShort = IsLineEnd(*end) && length < m_work.least && CheckUnlisted(line) == kComplete;
  return isShort && length <= std::min(m_work.greatest, m_work.capacity) && !HoldsListedFrame(length) ? length : 0;
}

std::size_t Literal::StartLength(unsigned descriptor) const {
  return m_patient ? kDescriptors[descriptor].needed : kDescriptors[descriptor].start.size();
}

bool Literal::Matches(unsigned descriptor) const {
  const Bytes& bytes = m_work.message.bytes;
  const eProtocols protocol = kDescriptors[descriptor].protocol;
  if (!m_enabled[protocol] || StartLength(descriptor) > bytes.size()) return false;
  if (!BeginsAs(bytes, kDescriptors[descriptor].start)) return false;
  return protocol != Raw::eNMEA0183 || RowOf(kNmeaRows, TextAt(bytes, 3, 3)) < 23;
}

Literal::Result Literal::FrameStartSearch() {
  if (m_state != kStartSearch) return kError;
  std::size_t least = 255;
  std::size_t greatest = 0;
  for (unsigned descriptor = 0; descriptor < 11; ++descriptor) {
    if (!m_enabled[kDescriptors[descriptor].protocol]) continue;
    least = std::min(least, StartLength(descriptor));
    greatest = std::max(greatest, StartLength(descriptor));
  }
  if (m_queue.size() < least) return kSearching;
  for (std::size_t held = 0; held < std::min(greatest, m_queue.size());) Next(m_work, m_queue, held);
  m_scanCount = static_cast<unsigned>(m_work.message.bytes.size());
  for (unsigned descriptor = 0; descriptor < 11; ++descriptor) {
    if (!Matches(descriptor)) continue;
    m_current = descriptor;
    return DetermineMsgExpectations();
  }
  if (m_work.message.bytes.size() >= greatest) m_state = kResynchronise;
  return kSearching;
}

Literal::Result Literal::DetermineMsgExpectations() {
  m_work.least = m_work.greatest = 0;
  m_state = kResynchronise;
  if (m_current > 10) return kError;
  m_isUnlisted = false;
  const Descriptor& descriptor = kDescriptors[m_current];
  m_work.least = descriptor.least;
  m_work.greatest = descriptor.greatest;
  m_work.message.protocol = descriptor.protocol;
  if (descriptor.parameters != nullptr && !GetParameters(m_current)) return kRejected;
  m_state = kBodyWait;
  return kStarted;
}

// Three of the steps look at numbers or letters only, the others at the whole start.
bool Literal::GetParameters(unsigned descriptor) {
  const Descriptor& row = kDescriptors[descriptor];
  const Bytes& bytes = m_work.message.bytes;
  if (bytes.size() < row.needed) return false;
  const bool anyStart = row.scanner == &kRtcm || row.protocol == Raw::eNMEA0183 || row.scanner == &kBin;
  return (anyStart || BeginsAs(bytes, row.start)) && row.parameters(m_work);
}

Literal::Result Literal::FrameBodyWait() {
  if (m_current > 10) return kError;
  if (m_isUnlisted && m_current == 2) return Scan(kUnlisted);
  return Scan(IsPkvnRaw(m_work) ? kPkvnRaw : *kDescriptors[m_current].scanner);
}

Literal::Result Literal::BodyWait(unsigned step) {
  constexpr const Scanner* kSteps[] = {&kRtcm, &kText, &kBin, &kPkvnRaw, &kPkvn, &kSite, &kAck, &kJrox};
  if (kSteps[step] != &kBin || m_state != kBodyWait || m_work.greatest <= m_work.capacity) return Scan(*kSteps[step]);
  Add(counters.bad, 1);
  m_scanCount = static_cast<unsigned>(m_work.message.bytes.size());
  m_state = kResynchronise;
  return kChecksum;
}

bool Literal::FrameParameters(unsigned step) { return GetParameters(step == 8 ? 10 : step + 1); }

Literal::Result Literal::Scan(const Scanner& scanner) {
  if (m_state != kBodyWait || m_current > 10) return kError;
  const std::size_t shortLine = &scanner == &kText ? ShortLine() : 0;
  const Collected collected = shortLine > 0 ? kWhole : scanner.collect(m_work, m_queue);
  m_scanCount = static_cast<unsigned>(m_work.message.bytes.size());
  if (collected == kPart) return kStarted;
  Result result = collected == kWhole ? kComplete : kRejected;
  if (shortLine > 0) {
    m_work.message.bytes.assign(m_queue.begin(), m_queue.begin() + static_cast<std::ptrdiff_t>(shortLine));
    m_work.message.type = Raw::eNmeaUnknown;
    result = kComplete;
  } else if (collected == kWhole && scanner.check != nullptr) {
    result = scanner.check(m_work);
  }
  if (result == kComplete && m_isUnlisted && HoldsListedFrame(m_work.message.bytes.size())) result = kRejected;
  m_state = result == kComplete ? kIdle : kResynchronise;
  if (result == kComplete) Add(counters.good, 1);
  if (result != kComplete && m_isUnlisted) m_current = m_listed;
  const bool isBad = m_isUnlisted ? result == kChecksum || m_listedWasBad : scanner.countsBroken;
  if (result != kComplete && isBad) Add(counters.bad, 1);
  return result == kRejected && m_isUnlisted && m_listedResult == kChecksum ? kChecksum : result;
}
