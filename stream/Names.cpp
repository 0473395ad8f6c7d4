// Words for what the library delivers as numbers. They appear in command lines and in JSON, so a name once given stays.
#include "stream/Names.h"

#include <algorithm>
#include <iterator>

#include "binproto/VelaBIN_Messages.h"
#include "records/ResultCodes.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NmeaSentenceCodec.h"
#include "textproto/NumberText.h"
#include "textproto/PkvnNames.h"

namespace velagnss {
namespace {

using eProtocols = C_RawDataMessage::eProtocols;

// How the messages of a protocol get their names.
enum class eNaming {
  Fixed,     // one message, or messages without a number: the word alone
  Numbered,  // the word and the number
  ByNumber,  // likewise, and the number alone will do
  Nmea,      // the sentence formatter
  Pkvn,      // the name after "$PKVN,"
};

struct S_ProtocolRow {
  eProtocols protocol;
  std::string_view name;
  eNaming naming;
  std::string_view word;
  unsigned int numMessages;
};

constexpr unsigned int kNumRtcmNumbers = 1U << 12;  // 12 bits (RTCM 10403)
// "$RD0," and "$RD1,"; only the second is ever delivered.
constexpr unsigned int kNumRdVersions = 2;

// clang-format off
constexpr S_ProtocolRow kProtocols[] = {  // by protocol number
    {C_RawDataMessage::eJROX,        "jrox",   eNaming::Fixed,    "JROX",        1},
    {C_RawDataMessage::eRTCM3_x,     "rtcm3",  eNaming::ByNumber, "RTCM",        kNumRtcmNumbers},
    {C_RawDataMessage::eNMEA0183,    "nmea",   eNaming::Nmea,     "",            std::size(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs)},
    {C_RawDataMessage::eVelaBIN,     "bin",    eNaming::ByNumber, "BIN",         VelaBIN_Messages::kMaxMessageNumber + 1},
    {C_RawDataMessage::ePKVN,        "pkvn",   eNaming::Pkvn,     "",            std::size(textproto::PkvnSentences::kNames)},
    {C_RawDataMessage::eVelaRD,      "rd",     eNaming::Numbered, "RD",          kNumRdVersions},
    {C_RawDataMessage::eJSITERECORD, "site",   eNaming::Fixed,    "JSITERECORD", 1},
    {C_RawDataMessage::eVelaCmdAck,  "ack",    eNaming::Fixed,    "ACK",         1},
    {C_RawDataMessage::eVelaJI,      "ji",     eNaming::Fixed,    "JI",          1},
    {C_RawDataMessage::eVelaJQUERY,  "jquery", eNaming::Fixed,    "JQUERY",      1},
    {C_RawDataMessage::eVelaGEO,     "geo",    eNaming::Fixed,    "JGEO",        1},
};
// clang-format on

// A row out of place would give the messages of two protocols each other's names.
constexpr bool IsIndexedByProtocol() {
  for (unsigned int i = 0; i < std::size(kProtocols); ++i)
    if (kProtocols[i].protocol != i) return false;
  return std::size(kProtocols) == C_RawDataMessage::eAllProtocols;
}
static_assert(IsIndexedByProtocol());

const S_ProtocolRow* RowOf(eProtocols protocol) {
  return protocol < std::size(kProtocols) ? &kProtocols[protocol] : nullptr;
}

struct S_ResultRow {
  unsigned int result;
  std::string_view text;
};

// The codes that decoding a frame can give.
constexpr S_ResultRow kResults[] = {
    {eResultOk, "ok"},
    {eResultNull, "no data"},
    {eResultWrongSentence, "wrong sentence"},
    {eResultBadSync, "bad prefix or line end"},
    {eResultChecksum, "checksum mismatch"},
    {eResultUnknownMessage, "message not supported"},
    {eResultNotText, "packed, not text"},
    {eResultWrongMessage, "message cannot be converted"},
    {eResultOutOfRange, "value out of range"},
    {eResultPastEnd, "message too short or too long"},
    {eResultBadField, "too few fields, or a field that cannot be parsed"},
    {eResultTalker, "talker cannot carry a field"},
    {eResultTooShort, "too short"},
    {eResultTooLong, "too long"},
    {eResultNoSeed, "week not resolved: no date known"},
};

// By enumerator of geo/GnssEnums.h. A gap is a component that has no name of its own.
constexpr std::string_view kSystems[] = {"gps", "glonass", "beidou", "galileo", "sbas", "qzss", "navic"};
constexpr std::string_view kFrequencies[] = {"L1", "L2", "L5", "G1", "G2", "B1", "E5b", "B3", "E5", "E6"};
constexpr std::string_view kTrackTypes[] = {"C/A", "P", "X", "AltBOC", "", "M", "L", "L1C", "I", "Q",
                                            "",    "",  "",  "P(Y)",   "", "A", "",  "",    "BC"};

template <std::size_t N>
std::string_view TextAt(const std::string_view (&texts)[N], unsigned int index) {
  return index < N ? texts[index] : std::string_view();
}

bool IsUnlistedSentence(const Frame& frame) {
  return frame.protocol == C_RawDataMessage::eNMEA0183 && frame.message == C_RawDataMessage::eNmeaUnknown;
}

// ASCII only: toupper follows the locale.
constexpr char ToUpper(char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; }

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char x, char y) { return ToUpper(x) == ToUpper(y); });
}

}  // namespace

std::string_view ProtocolName(eProtocols protocol) {
  const S_ProtocolRow* const row = RowOf(protocol);
  return row != nullptr ? row->name : "none";
}

std::optional<eProtocols> FindProtocol(std::string_view name) {
  for (const S_ProtocolRow& row : kProtocols)
    if (EqualIgnoringCase(row.name, name)) return row.protocol;
  return std::nullopt;
}

std::optional<unsigned int> MessageNumber(unsigned int message) {
  constexpr unsigned int kNone = 0xFFFFFFFF;  // of C_RawDataMessage::messageType
  return message == kNone ? std::nullopt : std::optional(message);
}

std::optional<unsigned int> MessageNumber(const Frame& frame) {
  return IsUnlistedSentence(frame) ? std::nullopt : MessageNumber(frame.message);
}

std::string_view UnlistedName(const Frame& frame) {
  if (!IsUnlistedSentence(frame) || frame.data == nullptr) return {};
  return SentenceName({reinterpret_cast<const char*>(frame.data), frame.length});
}

unsigned int NumMessages(eProtocols protocol) {
  const S_ProtocolRow* const row = RowOf(protocol);
  return row != nullptr ? row->numMessages : 0;
}

bool IsCalledByNumber(eProtocols protocol) {
  const S_ProtocolRow* const row = RowOf(protocol);
  return row != nullptr && row->naming == eNaming::ByNumber;
}

MessageName::MessageName(eProtocols protocol, unsigned int message) {
  const S_ProtocolRow* const row = RowOf(protocol);
  if (row == nullptr) return;
  // A number beyond the table leaves the word of its row, which is empty for sentences.
  std::string_view word = row->word;
  if (row->naming == eNaming::Nmea && message < row->numMessages) word = C_NMEA_EncodeDecode::mppz_NmeaMsgIDs[message];
  if (row->naming == eNaming::Pkvn && message < row->numMessages) word = textproto::PkvnSentences::kNames[message];
  char* end = std::copy(word.begin(), word.end(), m_text);
  if (row->naming == eNaming::Numbered || row->naming == eNaming::ByNumber)
    end = textproto::NumberText::WriteInteger(end, message);
  m_size = static_cast<unsigned char>(end - m_text);
}

std::string_view ResultText(unsigned int result) {
  for (const S_ResultRow& row : kResults)
    if (row.result == result) return row.text;
  return "not decoded";
}

std::string_view ReasonText(RejectedStart::Reason reason) {
  return reason == RejectedStart::Reason::Checksum ? "checksum error"
                                                   : "unknown message, or invalid length or characters";
}

std::string_view ReasonText(SkippedRange::Reason reason) {
  switch (reason) {
    case SkippedRange::Reason::FalseStarts:
      return "damaged or unknown frames";
    case SkippedRange::Reason::EndOfStream:
      return "cut off at the end of the input";
    default:
      return "noise";
  }
}

std::string_view SystemName(ALGO::eGNSSSystem system) { return TextAt(kSystems, system); }
std::string_view FrequencyName(ALGO::eGNSSFrequency frequency) { return TextAt(kFrequencies, frequency); }
std::string_view TrackTypeName(ALGO::eGNSSTrackType trackType) { return TextAt(kTrackTypes, trackType); }

}  // namespace velagnss
