#include "apps/velagnss/text/MessageNames.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <iterator>

#include "framing/FrameRecognizer.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/VelaPKVN_Messages.h"

namespace Host {
namespace {

using eProtocols = C_RawDataMessage::eProtocols;

// How the messages of a protocol are named from their number.
enum class eNaming {
  Fixed,     // one message, or none that are numbered: the text alone
  Numbered,  // the text and the number
  ByNumber,  // likewise, and the number alone will do
  Nmea,      // the sentence formatter
  Pkvn,      // the name behind "$PKVN,"
};

struct S_ProtocolEntry {
  eProtocols protocol;
  std::string_view name;
  eNaming naming;
  std::string_view messageText;
};

// clang-format off
constexpr S_ProtocolEntry kProtocols[] = {  // by protocol number
    {C_RawDataMessage::eJROX,        "jrox",    eNaming::Fixed,    "JROX"},
    {C_RawDataMessage::eRTCM3_x,     "rtcm3",   eNaming::ByNumber, "RTCM"},
    {C_RawDataMessage::eNMEA0183,    "nmea",    eNaming::Nmea,     ""},
    {C_RawDataMessage::eVelaBIN,     "bin",     eNaming::ByNumber, "BIN"},
    {C_RawDataMessage::ePKVN,        "pkvn",    eNaming::Pkvn,     ""},
    {C_RawDataMessage::eVelaRD,      "rd",      eNaming::Numbered, "RD"},
    {C_RawDataMessage::eJSITERECORD, "site",    eNaming::Fixed,    "JSITERECORD"},
    {C_RawDataMessage::eVelaCmdAck,  "ack",     eNaming::Fixed,    "ACK"},
    {C_RawDataMessage::eVelaJI,      "ji",      eNaming::Fixed,    "JI"},
    {C_RawDataMessage::eVelaJQUERY,  "jquery",  eNaming::Fixed,    "JQUERY"},
    {C_RawDataMessage::eVelaGEO,     "geo",     eNaming::Fixed,    "JGEO"},
};
// clang-format on
static_assert(std::size(kProtocols) == kNumProtocols);

constexpr bool IsIndexedByProtocol() {
  for (unsigned int i = 0; i < std::size(kProtocols); ++i)
    if (kProtocols[i].protocol != i) return false;
  return true;
}
static_assert(IsIndexedByProtocol());

constexpr std::string_view kPkvnNames[] = {  // by VelaPKVN_Messages::eMessageTypes
    "RAW", "ATTSTAT", "GBS", "HPR", "BLV", "FVI", "RTKSTAT", "VCT", "INTLT", "TEMPERATURE", "ARN_ROUTER"};
static_assert(std::size(kPkvnNames) == VelaPKVN_Messages::ePkvnARN_ROUTER + 1);

constexpr unsigned int kMaxRtcmNumber = 4095;  // 12 bits
constexpr unsigned int kMaxBlockId = 209;
constexpr unsigned int kMaxRdVersion = 1;

// The numbers that messages of a protocol may have: [0, count). None of a protocol that numbers no messages.
unsigned int NumMessageTypes(eProtocols protocol) {
  switch (protocol) {
    case C_RawDataMessage::eRTCM3_x:
      return kMaxRtcmNumber + 1;
    case C_RawDataMessage::eNMEA0183:
      return std::size(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs);
    case C_RawDataMessage::eVelaBIN:
      return kMaxBlockId + 1;
    case C_RawDataMessage::ePKVN:
      return std::size(kPkvnNames);
    case C_RawDataMessage::eVelaRD:
      return kMaxRdVersion + 1;
    default:
      return 1;
  }
}

char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return ToUpper(x) == ToUpper(y); });
}

}  // namespace

std::string_view ProtocolName(eProtocols protocol) {
  return protocol < kNumProtocols ? kProtocols[protocol].name : std::string_view("none");
}

std::optional<eProtocols> FindProtocol(std::string_view name) {
  for (const S_ProtocolEntry& entry : kProtocols)
    if (EqualIgnoringCase(entry.name, name)) return entry.protocol;
  return std::nullopt;
}

std::string ProtocolNames() {
  std::string names;
  for (const S_ProtocolEntry& entry : kProtocols) names.append(names.empty() ? "" : " ").append(entry.name);
  return names;
}

C_MessageName::C_MessageName(eProtocols protocol, unsigned int messageType) {
  if (protocol >= kNumProtocols) return;
  const S_ProtocolEntry& entry = kProtocols[protocol];
  Append(entry.messageText);
  if (entry.naming == eNaming::Numbered || entry.naming == eNaming::ByNumber) AppendNumber(messageType);
  if (messageType >= NumMessageTypes(protocol)) return;
  if (entry.naming == eNaming::Nmea) Append(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs[messageType]);
  if (entry.naming == eNaming::Pkvn) Append(kPkvnNames[messageType]);
}

void C_MessageName::Append(std::string_view text) {
  std::memcpy(m_text + m_size, text.data(), text.size());
  m_size = static_cast<unsigned char>(m_size + text.size());
}

void C_MessageName::AppendNumber(unsigned int number) {
  m_size = static_cast<unsigned char>(std::to_chars(m_text + m_size, std::end(m_text), number).ptr - m_text);
}

std::vector<S_MessageKey> FindMessages(std::string_view nameOrNumber) {
  std::vector<S_MessageKey> found;
  unsigned int number = kNoMessageType;
  const char* const end = nameOrNumber.data() + nameOrNumber.size();
  const bool isNumber = std::from_chars(nameOrNumber.data(), end, number).ptr == end && !nameOrNumber.empty();
  for (const S_ProtocolEntry& entry : kProtocols) {
    for (unsigned int type = 0; type < NumMessageTypes(entry.protocol); ++type) {
      const bool isMeant = isNumber ? type == number && entry.naming == eNaming::ByNumber
                                    : EqualIgnoringCase(C_MessageName(entry.protocol, type).Text(), nameOrNumber);
      if (isMeant) found.push_back({entry.protocol, type});
    }
  }
  return found;
}

}  // namespace Host
