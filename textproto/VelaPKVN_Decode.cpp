// Checks and dispatch of the proprietary sentences. Each record is set empty before it is filled, and the copy that is
// kept of the last one is replaced only by a whole one.
#include "textproto/VelaPKVN_Decode.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "framing/XorSum.h"
#include "records/ResultCodes.h"
#include "textproto/PkvnNames.h"
#include "textproto/PkvnSentences.h"
#include "textproto/SentenceFields.h"

using namespace VelaPKVN_Messages;
using namespace velagnss::textproto;
using PkvnSentences::kPrefix;

namespace {

// Bytes. The recognizer reads name and length limits from as many (framing/ProtocolTable.h).
constexpr unsigned int kMinFrame = 18;

struct S_ChannelName {
  std::string_view name;
  ePKvnAttStatSysChans channel;
};

// clang-format off
// Signals as ATTSTAT and RTKSTAT list them: "L1,(1,2,3),E5a,(5)". Receivers write E5a and E5b in either case.
constexpr S_ChannelName kChannelNames[] = {
    {"L1", ePkvnL1}, {"L2", ePkvnL2}, {"L5", ePkvnL5},
    {"G1", ePkvnG1}, {"G2", ePkvnG2},
    {"B1", ePkvnB1}, {"B2", ePkvnB2}, {"B3", ePkvnB3}, {"B2B", ePkvnB2B},
    {"E5a", ePkvnE5a}, {"E5A", ePkvnE5a}, {"E5b", ePkvnE5b}, {"E5B", ePkvnE5b}, {"E5a+b", ePkvnE5ab},
    {"E6", ePkvnE6}, {"E1B", ePkvnE1B},
    {"QL1", ePkvnQL1},
};
// clang-format on

constexpr bool IsLineEnd(char c) { return c == '\r' || c == '\n'; }

// The sentence without the line end that may follow it. A sentence of up to 19 bytes is taken as it is, even if its
// last byte is a line end: its checksum is wrong then.
std::string_view WithoutLineEnd(std::string_view sentence) {
  if (sentence.size() <= kMinFrame + 1) return sentence;
  for (int i = 0; i < 2 && IsLineEnd(sentence.back()); ++i) sentence.remove_suffix(1);
  return sentence;
}

bool HasChecksum(std::string_view sentence) {
  const std::size_t digits = sentence.size() - 2;
  unsigned int expected = 0;
  const auto* text = reinterpret_cast<const unsigned char*>(sentence.data());
  if (!C_VelaPKVN_Decode::ExtractHexValue(text + digits, 2, expected)) return false;
  unsigned int sum = 0;
  for (std::size_t i = 1; i < digits - 1; ++i) sum ^= text[i];  // the byte before the digits is taken for the asterisk
  return sum == expected;
}

template <class Record>
unsigned int DecodeSentence(const PkvnSentences::S_PkvnSentence<Record>& sentence, const unsigned char* frame,
                            unsigned short length, Record& record, Record& kept) {
  // First of all: after a bad sentence hosts must not take the one before it for the current state.
  if (!sentence.isKeptOnFailure) SetEmpty(sentence, kept);
  if (frame == nullptr) return eResultNull;
  if (length < kMinFrame) return eResultBadSync;
  SetEmpty(sentence, record);
  const PkvnSentences::t_PkvnFields fields(TextOf(frame, length));
  const unsigned int result = DecodeFields(sentence, fields, record);
  if (result == eResultOk) kept = record;
  return result;
}

}  // namespace

C_VelaPKVN_Decode::C_VelaPKVN_Decode() { Reset(); }

void C_VelaPKVN_Decode::Reset() {
  std::fill(std::begin(m_received), std::end(m_received), 0U);
  std::memset(&m_records, 0, sizeof m_records);
  // Not zeros but markers: 0 is a valid heading.
  SetEmpty(PkvnSentences::kAttStat, m_records.attStat);
  SetEmpty(PkvnSentences::kGbs, m_records.gbs);
  SetEmpty(PkvnSentences::kHpr, m_records.hpr);
  SetEmpty(PkvnSentences::kBlv, m_records.blv);
  SetEmpty(PkvnSentences::kFvi, m_records.fvi);
  SetEmpty(PkvnSentences::kRtkStat, m_records.rtkStat);
  SetEmpty(PkvnSentences::kVct, m_records.vct);
  SetEmpty(PkvnSentences::kIntlt, m_records.intlt);
  SetEmpty(PkvnSentences::kTemperature, m_records.temperature);
  SetEmpty(PkvnSentences::kArn, m_records.arn);
  m_lastResult = eResultOk;
}

unsigned int C_VelaPKVN_Decode::ValidateFrame(const unsigned char* frame, unsigned short length, eMessageTypes& type,
                                              unsigned short& errorPosition) {
  if (frame == nullptr) return eResultNull;
  // "$PKVN,HPR,120000.00,271.50,-1.25,0.75,G*hh"
  const std::string_view sentence = WithoutLineEnd({reinterpret_cast<const char*>(frame), length});
  if (sentence.size() > PkvnSentences::t_PkvnFields::kLimits.textLength) return eResultTooLong;
  if (sentence.size() < kMinFrame) return eResultTooShort;

  const auto wrong = std::mismatch(kPrefix.begin(), kPrefix.end(), sentence.begin()).first;
  errorPosition = static_cast<unsigned short>(wrong - kPrefix.begin());
  if (wrong != kPrefix.end()) {
    // Counted from 1; without an error it is the number of bytes up to the end of the name.
    ++errorPosition;
    return eResultBadSync;
  }

  const std::string_view name = PkvnSentences::NameIn(sentence.substr(kPrefix.size()));
  errorPosition = static_cast<unsigned short>(errorPosition + name.size());
  type = PkvnSentences::TypeOf(name);
  if (type == ePkvnUnknown) return eResultUnknownMessage;
  return HasChecksum(sentence) ? eResultOk : eResultChecksum;
}

unsigned int C_VelaPKVN_Decode::Decode(unsigned char* frame, unsigned short length, eMessageTypes& type,
                                       U_VelaPKVN_EcdDcdData& data) {
  std::memset(&data, 0, sizeof data);
  unsigned short errorPosition = 0;
  m_lastResult = ValidateFrame(frame, length, type, errorPosition);
  if (m_lastResult == eResultOk) m_lastResult = DecodeByType(frame, length, type, data);
  if (m_lastResult == eResultOk) ++m_received[type];
  return m_lastResult;
}

unsigned int C_VelaPKVN_Decode::DecodeByType(unsigned char* frame, unsigned short length, eMessageTypes type,
                                             U_VelaPKVN_EcdDcdData& data) {
  switch (type) {
    // Its body is packed bytes, which have no fields.
    case ePkvnRAW:
      return eResultNotText;
    case ePkvnATTSTAT:
      return Decode_AttStat(frame, length, data.attStat);
    case ePkvnGBS:
      return Decode_GBS(frame, length, data.gbs);
    case ePkvnHPR:
      return Decode_HPR(frame, length, data.hpr);
    case ePkvnBLV:
      return Decode_BLV(frame, length, data.blv);
    case ePkvnFVI:
      return Decode_FVI(frame, length, data.fvi);
    case ePkvnRTKSTAT:
      return Decode_RtkStat(frame, length, data.rtkStat);
    case ePkvnVCT:
      return Decode_VCT(frame, length, data.vct);
    case ePkvnINTLT:
      return Decode_INTLT(frame, length, data.intlt);
    case ePkvnTEMPERATURE:
      return Decode_TEMPERATURE(frame, length, data.temperature);
    case ePkvnARN_ROUTER:
      return Decode_ARN(frame, length, data.arn);
    case ePkvnUnknown:
      break;
  }
  return eResultUnknownMessage;
}

// One type each, without the frame check: for hosts that have recognized the sentence already.
unsigned int C_VelaPKVN_Decode::Decode_AttStat(unsigned char* frame, unsigned short length, S_PKvnAttStat& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kAttStat, frame, length, record, m_records.attStat);
}

unsigned int C_VelaPKVN_Decode::Decode_GBS(unsigned char* frame, unsigned short length, S_PKvnGbs& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kGbs, frame, length, record, m_records.gbs);
}

unsigned int C_VelaPKVN_Decode::Decode_HPR(unsigned char* frame, unsigned short length, S_PKvnHpr& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kHpr, frame, length, record, m_records.hpr);
}

unsigned int C_VelaPKVN_Decode::Decode_BLV(unsigned char* frame, unsigned short length, S_PKvnBlv& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kBlv, frame, length, record, m_records.blv);
}

unsigned int C_VelaPKVN_Decode::Decode_FVI(unsigned char* frame, unsigned short length, S_PKvnFvi& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kFvi, frame, length, record, m_records.fvi);
}

unsigned int C_VelaPKVN_Decode::Decode_RtkStat(unsigned char* frame, unsigned short length, S_PKvnRtkStat& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kRtkStat, frame, length, record, m_records.rtkStat);
}

unsigned int C_VelaPKVN_Decode::Decode_VCT(unsigned char* frame, unsigned short length, S_PKvnVct& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kVct, frame, length, record, m_records.vct);
}

unsigned int C_VelaPKVN_Decode::Decode_INTLT(unsigned char* frame, unsigned short length, S_PKvnINTLT& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kIntlt, frame, length, record, m_records.intlt);
}

unsigned int C_VelaPKVN_Decode::Decode_TEMPERATURE(unsigned char* frame, unsigned short length,
                                                   S_PKvnTEMPERATURE& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kTemperature, frame, length, record, m_records.temperature);
}

unsigned int C_VelaPKVN_Decode::Decode_ARN(unsigned char* frame, unsigned short length, S_PKvnARN& record) {
  return m_lastResult = DecodeSentence(PkvnSentences::kArn, frame, length, record, m_records.arn);
}

unsigned int C_VelaPKVN_Decode::GetReceivedMsgCount(eMessageTypes type) const {
  // The type comes from the host and may be any number.
  return type < std::size(m_received) ? m_received[type] : 0;
}

bool C_VelaPKVN_Decode::ExtractHexValue(const unsigned char* text, unsigned char digits, unsigned int& value) {
  return velagnss::framing::ReadHex(text, digits, value);
}

bool C_VelaPKVN_Decode::MapPKvnAttSysStr2Type(const char* name, ePKvnAttStatSysChans& channel) {
  channel = ePkvnChanUnknown;
  if (name == nullptr) return false;
  for (const S_ChannelName& row : kChannelNames) {
    if (row.name != name) continue;
    channel = row.channel;
    return true;
  }
  return false;
}
