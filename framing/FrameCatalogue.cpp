// The catalogue of frames: start patterns, expected messages with their lengths, and how the first bytes of a frame
// tell which of them it is.
#include <array>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <string_view>

#include "framing/RecognizerTables.h"
#include "textproto/PkvnNames.h"
#include "textproto/SentenceIds.h"

namespace PkvnSentences = velagnss::textproto::PkvnSentences;
namespace SentenceIds = velagnss::textproto::SentenceIds;

namespace {

using eProtocols = C_RawDataMessage::eProtocols;

constexpr char kAnyByte = '.';
constexpr char kReservedBits = '~';  // six bits that RTCM 10403 reserves, zero, above the two top bits of the length

constexpr S_FrameDescriptor Frame(std::string_view name, eProtocols protocol, std::string_view start,
                                  unsigned short headerLength, unsigned short maxLength) {
  S_FrameDescriptor row = {};
  for (std::size_t i = 0; i < name.size(); ++i) row.name[i] = name[i];
  for (std::size_t i = 0; i < start.size(); ++i) {
    row.startMask[i] = start[i] == kAnyByte ? 0x00 : start[i] == kReservedBits ? 0xFC : 0xFF;
    row.startPattern[i] = row.startMask[i] == 0xFF ? static_cast<unsigned char>(start[i]) : 0;
  }
  row.protocol = protocol;
  row.startLength = static_cast<unsigned short>(start.size());
  row.headerLength = headerLength;
  row.maxLength = maxLength;
  return row;
}

// Length limits that hold whatever the message is.
constexpr S_FrameLengths kInfoReply = {37, 120};
constexpr S_FrameLengths kQueryReply = {21, 120};
constexpr S_FrameLengths kSiteRecord = {13, 512};

// The row is the sentence as `C_NMEA_EncodeDecode::mppz_NmeaMsgIDs` numbers it.
// clang-format off
constexpr S_FrameLengths kNmeaLengths[] = {
    {27, 128},  // ALM
    {21,  64},  // APB
    {19,  88},  // BWC
    {15, 120},  // DTM
    {14, 120},  // HDG
    {14, 120},  // HDM
    {14, 120},  // HDT
    {14, 120},  // HEV
    {22, 128},  // GGA
    {13,  60},  // GLL
    {20, 120},  // GNS
    {20, 250},  // GRS
    {24, 250},  // GSA
    {15,  70},  // GST
    {10, 100},  // GSV
    {18,  90},  // RMA
    {20, 100},  // RMB
    {18,  90},  // RMC
    { 9,  25},  // ROT
    {11, 200},  // RRE
    {15,  50},  // VTG
    {12,  32},  // XTE
    {13,  40},  // ZDA
};

// The row is the version, the digit behind "$RD". No body is short enough for version 0: it is always rejected.
constexpr S_FrameLengths kRdLengths[] = {{0, 0}, {37, 80}};

// The row is the message type.
constexpr S_FrameLengths kPkvnLengths[] = {
    {18, 2048},  // RAW
    {38,  179},  // ATTSTAT
    {25,  100},  // GBS
    {25,   70},  // HPR
    {20,  100},  // BLV
    {40,  255},  // FVI
    {60,  190},  // RTKSTAT
    {20,   90},  // VCT
    {19,   33},  // INTLT
    {19,   35},  // TEMPERATURE
    {30,  255},  // ARN_ROUTER
};
static_assert(std::size(kPkvnLengths) == std::size(PkvnSentences::kNames));

struct S_BlockRow {
  unsigned short block;
  S_FrameLengths lengths;  // whole frames: 8 header, data, 2 checksum
};

constexpr S_BlockRow kBlocks[] = {
    {1,  {62, 62}},    {2,  {26, 26}},    {3,  {126, 126}},  {5,  {82, 82}},    {6,   {22, 22}},   {16,  {322, 322}},
    {19, {386, 386}},  {25, {138, 138}},  {34, {42, 42}},    {35, {138, 138}},  {36,  {346, 346}}, {39,  {422, 422}},
    {44, {66, 66}},    {45, {138, 138}},  {49, {310, 310}},  {59, {266, 266}},  {61,  {330, 330}}, {62,  {50, 50}},
    {65, {78, 78}},    {66, {362, 362}},  {69, {310, 310}},  {71, {458, 458}},  {76,  {458, 458}}, {80,  {50, 50}},
    {89, {90, 90}},    {93, {66, 66}},    {94, {106, 106}},  {95, {138, 138}},  {96,  {310, 310}}, {97,  {38, 38}},
    {98, {78, 78}},    {99, {314, 314}},  {100, {270, 270}}, {101, {458, 458}}, {102, {354, 354}}, {103, {74, 103}},
    {104, {290, 290}}, {122, {90, 90}},   {180, {242, 242}}, {209, {342, 342}},
};

// The RTCM 10403 message numbers that are delivered, and 4011 to 4095 of the proprietary ones.
constexpr unsigned short kRtcmNumbers[][2] = {
    {63, 63},     {1001, 1013}, {1019, 1020}, {1030, 1033}, {1042, 1046}, {1057, 1066}, {1068, 1068}, {1071, 1077},
    {1081, 1087}, {1091, 1097}, {1101, 1107}, {1111, 1117}, {1121, 1127}, {1230, 1230}, {1240, 1243}, {1245, 1245},
    {1258, 1261}, {1263, 1270}, {1303, 1303}, {4011, 4011}, {4013, 4014}, {4067, 4095},
};

enum eSsrKind : unsigned char { eOrbitClock, eHighRateClock, eCodeBias, ePhaseBias, eVtec };

struct S_SsrRow {
  unsigned short number;
  eSsrKind kind;
  ALGO::eGNSSSystem system;  // of the orbit/clock messages
};

// Messages of the state space representation. The high-rate clock messages count as orbit/clock messages too.
constexpr S_SsrRow kSsrMessages[] = {
    {1057, eOrbitClock,    ALGO::GNSS_GPS},
    {1058, eOrbitClock,    ALGO::GNSS_GPS},
    {1059, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1060, eOrbitClock,    ALGO::GNSS_GPS},
    {1062, eHighRateClock, ALGO::GNSS_GPS},
    {1063, eOrbitClock,    ALGO::GNSS_GLONASS},
    {1064, eOrbitClock,    ALGO::GNSS_GLONASS},
    {1065, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1066, eOrbitClock,    ALGO::GNSS_GLONASS},
    {1068, eHighRateClock, ALGO::GNSS_GLONASS},
    {1240, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1241, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1242, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1243, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1245, eOrbitClock,    ALGO::GNSS_GALILEO},
    {1258, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1259, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1260, eCodeBias,      ALGO::GNSS_UNKNOWN},
    {1261, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1263, eOrbitClock,    ALGO::GNSS_BEIDOU},
    {1264, eVtec,          ALGO::GNSS_UNKNOWN},
    {1265, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1266, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1267, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1268, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1269, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1270, ePhaseBias,     ALGO::GNSS_UNKNOWN},
    {1303, eOrbitClock,    ALGO::GNSS_BEIDOU},
};
// clang-format on

// The tables above, spread out so that a lookup is one access.
constexpr unsigned int kMaxBlock = 209;

constexpr auto kBlockLengths = [] {
  std::array<S_FrameLengths, kMaxBlock + 1> lengths = {};
  for (const S_BlockRow& row : kBlocks) lengths[row.block] = row.lengths;
  return lengths;
}();

constexpr auto kIsRtcmNumber = [] {
  std::array<bool, 4096> accepted = {};
  for (const auto& range : kRtcmNumbers) {
    for (unsigned int number = range[0]; number <= range[1]; ++number) accepted[number] = true;
  }
  return accepted;
}();

const S_SsrRow* FindSsr(unsigned int number) {
  for (const S_SsrRow& row : kSsrMessages) {
    if (row.number == number) return &row;
  }
  return nullptr;
}

bool IsSsr(eProtocols protocol, unsigned int number, eSsrKind kind) {
  const S_SsrRow* row = protocol == C_RawDataMessage::eRTCM3_x ? FindSsr(number) : nullptr;
  return row != nullptr && row->kind == kind;
}

constexpr unsigned int kMaxReplyType = 999;

}  // namespace

// In search order: the first match wins. "$>" comes before "$>JGEO,", so that an acknowledgement, where it is asked
// for, hides that reply.
// clang-format off
const C_FrameRecognizer::S_ProtocolRow C_FrameRecognizer::kProtocols[kNumProtocols] = {
    //     name           protocol                         start                header  max      needed
    {Frame("ROX",         C_RawDataMessage::eJROX,         "$JROX,",               10,  440),     6,
        nullptr,                                           eJroxBody},
    {Frame("RTCM 3.x",    C_RawDataMessage::eRTCM3_x,      "\xD3~...",              6, 1029),     5,
        &C_FrameRecognizer::GetRTCM3_xFrameParameters,     eRtcmBody},
    {Frame("NMEA0183",    C_RawDataMessage::eNMEA0183,     "$.....,",               8,  512),     7,
        &C_FrameRecognizer::GetNMEA0183rameParameters,     eTextBody},
    {Frame("VelaBIN",     C_RawDataMessage::eVelaBIN,      "$BIN......",           10, 2048),    10,
        &C_FrameRecognizer::GetVelaBINFrameParameters,     eVelaBinBody},
    {Frame("VelaPKVN",    C_RawDataMessage::ePKVN,         "$PKVN,............",   18, 2048),    18,
        &C_FrameRecognizer::GetPKvnFrameParameters,        ePkvnBody},
    {Frame("VelaRD",      C_RawDataMessage::eVelaRD,       "$RD.,",                10,  512),    10,
        &C_FrameRecognizer::GetVelaRDFrameParameters,      eTextBody},
    {Frame("VelaJI",      C_RawDataMessage::eVelaJI,       "$>JI,",                10,  512),    10,
        &C_FrameRecognizer::GetVelaJIFrameParameters,      eTextBody},
    {Frame("VelaJQUERY",  C_RawDataMessage::eVelaJQUERY,   "$>JQUERY,",            10,  512),    10,
        &C_FrameRecognizer::GetVelaJQUERYFrameParameters,  eTextBody},
    {Frame("JSITERECORD", C_RawDataMessage::eJSITERECORD,  "$>JSITERECORD",        13,  512),    13,
        &C_FrameRecognizer::GetJSITERECORDFrameParameters, eSiteRecordBody},
    {Frame("VelaCmdAck",  C_RawDataMessage::eVelaCmdAck,   "$>",                    2,    2),     2,
        nullptr,                                           eAckBody},
    {Frame("VelaGEO",     C_RawDataMessage::eVelaGEO,      "$>JGEO,",              10,   80),    10,
        &C_FrameRecognizer::GetVelaGEOFrameParameters,     eTextBody},
};
// clang-format on

void C_FrameRecognizer::CreateRecognizedFrames() {
  for (unsigned int i = 0; i < kNumProtocols; ++i) m_descriptors[i] = kProtocols[i].frame;
}

void C_FrameRecognizer::SetExpectedNMEA0183Msgs() { m_nmeaLengths = kNmeaLengths; }
void C_FrameRecognizer::SetExpectedVelaRDMsgs() { m_velaRdLengths = kRdLengths; }
void C_FrameRecognizer::SetExpectedVelaJIMsgs() { m_velaJiLengths = kInfoReply; }
void C_FrameRecognizer::SetExpectedVelaGEOMsgs() { m_velaGeoLengths = kInfoReply; }
void C_FrameRecognizer::SetExpectedVelaJQUERYMsgs() { m_velaJqueryLengths = kQueryReply; }
void C_FrameRecognizer::SetExpectedJSITERECORDMsgs() { m_jsiteRecordLengths = kSiteRecord; }

void C_FrameRecognizer::SetExpectedVelaBINMsgs() { m_velaBinLengths = kBlockLengths.data(); }

// Whether `count` bytes are held and begin with `prefix`.
bool C_FrameRecognizer::BeginsWith(std::string_view prefix, unsigned int count) {
  return m_workMessage.length >= count && std::memcmp(FrameBytes(count), prefix.data(), prefix.size()) == 0;
}

bool C_FrameRecognizer::Expect(unsigned int type, const S_FrameLengths& lengths) {
  m_workMessage.messageType = type;
  m_frameMinLength = lengths.least;
  m_frameMaxLength = lengths.greatest;
  m_settled = 0;
  m_examined = 0;
  return true;
}

// Preamble, 6 reserved bits and 10 of payload length, then the payload, whose first 12 bits are the message number.
bool C_FrameRecognizer::GetRTCM3_xFrameParameters() {
  if (m_workMessage.length < 5) return false;
  const unsigned char* bytes = FrameBytes(5);
  const auto length = static_cast<unsigned short>(((bytes[1] & 0x03) << 8 | bytes[2]) + 6);
  const unsigned int number = bytes[3] << 4 | bytes[4] >> 4;
  return IsASupportedRtcm3Type(number) && Expect(number, {length, length});
}

// "$GPGGA,": the formatter behind the two letters of the talker tells the sentence.
bool C_FrameRecognizer::GetNMEA0183rameParameters() {
  if (m_workMessage.length < 7) return false;
  const unsigned int sentence = SentenceIds::Find(reinterpret_cast<const char*>(FrameBytes(7)) + 3);
  return sentence < std::size(kNmeaLengths) && Expect(sentence, m_nmeaLengths[sentence]);
}

// "$BIN", block id and data length, 16 bits each, low byte first.
bool C_FrameRecognizer::GetVelaBINFrameParameters() {
  if (m_workMessage.length <= 9) return false;
  const unsigned char* bytes = FrameBytes(10);
  const unsigned int block = bytes[4] | bytes[5] << 8;
  const unsigned int length = (bytes[6] | bytes[7] << 8) + 10;
  if (block > kMaxBlock || m_velaBinLengths[block].greatest == 0) return false;
  if (length < m_velaBinLengths[block].least || length > m_velaBinLengths[block].greatest) return false;
  const auto frameLength = static_cast<unsigned short>(length);
  return Expect(block, {frameLength, frameLength});
}

// "$PKVN,HPR,".
bool C_FrameRecognizer::GetPKvnFrameParameters() {
  constexpr std::size_t kHeld = 18;
  if (!BeginsWith(PkvnSentences::kPrefix, kHeld)) return false;
  const std::string_view held(reinterpret_cast<const char*>(FrameBytes(kHeld)), kHeld);
  const auto type = PkvnSentences::TypeOf(PkvnSentences::NameIn(held.substr(PkvnSentences::kPrefix.size())));
  if (type == VelaPKVN_Messages::ePkvnUnknown) return false;
  return Expect(type, kPkvnLengths[type]);
}

// "$RD1,": one digit, because the comma stands behind it.
bool C_FrameRecognizer::GetVelaRDFrameParameters() {
  if (!BeginsWith("$RD", 10)) return false;
  const unsigned char* bytes = FrameBytes(10);
  const unsigned int version = static_cast<unsigned int>(bytes[3]) - '0';
  return version < std::size(kRdLengths) && bytes[4] == ',' && Expect(version, m_velaRdLengths[version]);
}

bool C_FrameRecognizer::GetVelaJIFrameParameters() { return BeginsWith("$>JI,", 10) && Expect(0, m_velaJiLengths); }

bool C_FrameRecognizer::GetVelaGEOFrameParameters() { return BeginsWith("$>JGEO,", 10) && Expect(0, m_velaGeoLengths); }

bool C_FrameRecognizer::GetVelaJQUERYFrameParameters() {
  return BeginsWith("$>JQUERY,", 10) && Expect(0, m_velaJqueryLengths);
}

// A site record has no type.
bool C_FrameRecognizer::GetJSITERECORDFrameParameters() {
  return BeginsWith("$>JSITERECORD", 13) && Expect(m_workMessage.messageType, m_jsiteRecordLengths);
}

bool C_FrameRecognizer::IsASupportedRtcm3Type(unsigned int number) {
  return number < kIsRtcmNumber.size() && kIsRtcmNumber[number];
}

bool C_FrameRecognizer::IsAnRtcmSsrOrbitClockMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eOrbitClock) || IsSsr(protocol, number, eHighRateClock);
}

bool C_FrameRecognizer::IsAnRtcmSsrCodeBiasMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eCodeBias);
}

bool C_FrameRecognizer::IsAnRtcmSsrPhaseBiasMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, ePhaseBias);
}

bool C_FrameRecognizer::IsAnRtcmSsrVtecMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eVtec);
}

bool C_FrameRecognizer::IsAHighRateSsrClockMsg(eProtocols protocol, unsigned int number) {
  return IsSsr(protocol, number, eHighRateClock);
}

ALGO::eGNSSSystem C_FrameRecognizer::GetRtcmSsrOrbitClockMsgSys(unsigned int number) {
  const S_SsrRow* row = FindSsr(number);
  return row != nullptr ? row->system : ALGO::GNSS_UNKNOWN;
}

bool C_FrameRecognizer::IsAnNmeaGgaMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eNMEA0183 && type == C_RawDataMessage::eNmeaGGA;
}

bool C_FrameRecognizer::IsAVelaRDMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaRD && type <= kMaxReplyType;
}

bool C_FrameRecognizer::IsAVelaJIMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaJI && type <= kMaxReplyType;
}

bool C_FrameRecognizer::IsAVelaJQUERYMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaJQUERY && type <= kMaxReplyType;
}

bool C_FrameRecognizer::IsAVelaGEOMsg(eProtocols protocol, unsigned int type) {
  return protocol == C_RawDataMessage::eVelaGEO && type <= kMaxReplyType;
}
