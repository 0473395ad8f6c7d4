#include "textproto/NMEA_EncodeDecode.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "framing/XorSum.h"
#include "records/ResultCodes.h"
#include "textproto/FieldParsers.h"
#include "textproto/NmeaSentences.h"
#include "textproto/NumberText.h"

namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

static_assert(sizeof(U_EcdDcdData) == 104);

template <class Record>
const Record& As(const void* record) {
  return *static_cast<const Record*>(record);
}

unsigned char XorOf(std::string_view bytes) {
  return velagnss::framing::XorOf(reinterpret_cast<const unsigned char*>(bytes.data()),
                                  static_cast<unsigned int>(bytes.size()));
}

// A sentence of the record in the buffer, checksum and CR LF included.
template <class Record>
unsigned int EncodeSentence(const C_NMEA_EncodeDecode& nmea, const S_SentenceRules<Record>& rules, const Record& record,
                            char* buffer, unsigned short& length) {
  const unsigned int result = WriteFields(rules, record, buffer);
  return result == eResultOk ? nmea.MsgAdd_ChecksumCrLf(buffer, length) : result;
}

}  // namespace

std::array<char, 3> ChecksumText(std::string_view text) {
  const unsigned char sum = XorOf(text.substr(1));
  return {'*', kHexDigits[sum >> 4], kHexDigits[sum & 15]};
}

std::size_t FindCheckedStar(std::string_view sentence) {
  constexpr std::size_t kMinLength = 8;
  constexpr std::size_t kMinStar = 6;
  constexpr std::size_t kDigits = 2;
  if (sentence.size() < kMinLength) return std::string_view::npos;
  const std::size_t star = sentence.rfind('*');
  if (star == std::string_view::npos || star < kMinStar || star + kDigits >= sentence.size())
    return std::string_view::npos;
  const unsigned int sum = XorOf(sentence.substr(1, star - 1));
  if (sentence[star + 1] == kHexDigits[sum >> 4] && sentence[star + 2] == kHexDigits[sum & 15]) return star;
  unsigned int expected = 0;  // digits in lower case, or a shorter number
  const bool isNumber = NumberText::ScanHex32(sentence.substr(star + 1, kDigits), expected) != 0;
  return isNumber && expected == sum ? star : std::string_view::npos;
}

C_NMEA_EncodeDecode::C_NMEA_EncodeDecode() { Reset(); }

C_NMEA_EncodeDecode::~C_NMEA_EncodeDecode() = default;

unsigned int C_NMEA_EncodeDecode::Reset() {
  m_lastResult = eResultOk;
  std::memset(m_workBuffer, 0, sizeof m_workBuffer);
  return eResultOk;
}

unsigned int C_NMEA_EncodeDecode::GetLastResult() const { return m_lastResult; }

const unsigned char* C_NMEA_EncodeDecode::GetWorkBuffer() const {
  return reinterpret_cast<const unsigned char*>(m_workBuffer);
}

unsigned int C_NMEA_EncodeDecode::Decode(unsigned char* sentence, unsigned short length,
                                         C_RawDataMessage::eNMEA0183Messages type, U_EcdDcdData& data) {
  std::memset(&data, 0, sizeof data);
  return m_lastResult = DecodeChecked(sentence, length, type, data);
}

unsigned int C_NMEA_EncodeDecode::DecodeChecked(unsigned char* sentence, unsigned short length,
                                                C_RawDataMessage::eNMEA0183Messages type, U_EcdDcdData& data) {
  constexpr unsigned short kMinLength = 8;
  if (sentence == nullptr) return eResultNull;
  if (length < kMinLength) return eResultTooLong;
  if (!ValidateNmeaCheckSum(sentence, length)) return eResultChecksum;
  switch (type) {
    case C_RawDataMessage::eNmeaGGA:
      return Decode_GGA(sentence, length, data.gga);
    case C_RawDataMessage::eNmeaGLL:
      return Decode_GLL(sentence, length, data.gll);
    case C_RawDataMessage::eNmeaGNS:
      return Decode_GNS(sentence, length, data.gns);
    case C_RawDataMessage::eNmeaGSA:
      return Decode_GSA(sentence, length, data.gsa);
    case C_RawDataMessage::eNmeaGSV:
      return Decode_GSV(sentence, length, data.gsv);
    case C_RawDataMessage::eNmeaRMC:
      return Decode_RMC(sentence, length, data.rmc);
    case C_RawDataMessage::eNmeaVTG:
      return Decode_VTG(sentence, length, data.vtg);
    case C_RawDataMessage::eNmeaZDA:
      return Decode_ZDA(sentence, length, data.zda);
    default:
      return eResultUnknownMessage;
  }
}

unsigned int C_NMEA_EncodeDecode::Encode(const void* record, C_RawDataMessage::eNMEA0183Messages type,
                                         unsigned char* out, unsigned short& length) {
  unsigned short sentenceLength = 0;
  m_lastResult = record == nullptr || out == nullptr ? eResultNull : EncodeAny(record, type, sentenceLength);
  if (m_lastResult != eResultOk) return m_lastResult;
  std::memcpy(out, m_workBuffer, sentenceLength + std::size_t{1});
  length = sentenceLength;
  return m_lastResult;
}

unsigned int C_NMEA_EncodeDecode::EncodeAny(const void* record, C_RawDataMessage::eNMEA0183Messages type,
                                            unsigned short& length) {
  switch (type) {
    case C_RawDataMessage::eNmeaGGA:
      return Encode_GGA(As<S_GGA_Data>(record), length);
    case C_RawDataMessage::eNmeaGLL:
      return Encode_GLL(As<S_GLL_Data>(record), length);
    case C_RawDataMessage::eNmeaGNS:
      return Encode_GNS(As<S_GNS_Data>(record), length);
    case C_RawDataMessage::eNmeaGSA:
      return Encode_GSA(As<S_GSA_Data>(record), length);
    case C_RawDataMessage::eNmeaGSV:
      return Encode_GSV(As<S_GSV_Data>(record), length);
    case C_RawDataMessage::eNmeaRMC:
      return Encode_RMC(As<S_RMC_Data>(record), length);
    case C_RawDataMessage::eNmeaVTG:
      return Encode_VTG(As<S_VTG_Data>(record), length);
    case C_RawDataMessage::eNmeaZDA:
      return Encode_ZDA(As<S_ZDA_Data>(record), length);
    default:
      return eResultUnknownMessage;
  }
}

unsigned char C_NMEA_EncodeDecode::GetNmeaCheckSum(const unsigned char* bytes, unsigned short start,
                                                   unsigned short count) {
  if (bytes == nullptr) return 0;
  return velagnss::framing::XorOf(bytes + start, std::max<unsigned int>(count, 1));
}

bool C_NMEA_EncodeDecode::ValidateNmeaCheckSum(unsigned char* sentence, unsigned short length) {
  if (sentence == nullptr) return false;
  return FindCheckedStar({reinterpret_cast<const char*>(sentence), length}) != std::string_view::npos;
}

bool C_NMEA_EncodeDecode::GetNmeaLatLonFromString(const unsigned char* field, double& value) {
  return UTIL::ParseDegreesMinutes(reinterpret_cast<const char*>(field), value);
}

unsigned int C_NMEA_EncodeDecode::Decode_GGA(unsigned char* sentence, unsigned short length, S_GGA_Data& record) {
  return DecodeSentence(kGgaRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GNS(unsigned char* sentence, unsigned short length, S_GNS_Data& record) {
  return DecodeSentence(kGnsRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_ZDA(unsigned char* sentence, unsigned short length, S_ZDA_Data& record) {
  return DecodeSentence(kZdaRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GLL(unsigned char* sentence, unsigned short length, S_GLL_Data& record) {
  return DecodeSentence(kGllRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GSV(unsigned char* sentence, unsigned short length, S_GSV_Data& record) {
  return DecodeSentence(kGsvRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GSA(unsigned char* sentence, unsigned short length, S_GSA_Data& record) {
  return DecodeSentence(kGsaRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_RMC(unsigned char* sentence, unsigned short length, S_RMC_Data& record) {
  return DecodeSentence(kRmcRules, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_VTG(unsigned char* sentence, unsigned short length, S_VTG_Data& record) {
  return DecodeSentence(kVtgRules, sentence, length, record);
}

unsigned int C_NMEA_EncodeDecode::Encode_GGA(const S_GGA_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kGgaRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GNS(const S_GNS_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kGnsRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_ZDA(const S_ZDA_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kZdaRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GLL(const S_GLL_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kGllRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GSV(const S_GSV_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kGsvRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GSA(const S_GSA_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kGsaRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_RMC(const S_RMC_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kRmcRules, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_VTG(const S_VTG_Data& record, unsigned short& length) {
  return EncodeSentence(*this, kVtgRules, record, m_workBuffer, length);
}

void C_NMEA_EncodeDecode::Reset_GGA(S_GGA_Data& record) { ResetRecord(kGgaRules, record); }
void C_NMEA_EncodeDecode::Reset_GNS(S_GNS_Data& record) { ResetRecord(kGnsRules, record); }
void C_NMEA_EncodeDecode::Reset_ZDA(S_ZDA_Data& record) { ResetRecord(kZdaRules, record); }
void C_NMEA_EncodeDecode::Reset_GLL(S_GLL_Data& record) { ResetRecord(kGllRules, record); }
void C_NMEA_EncodeDecode::Reset_GSV(S_GSV_Data& record) { ResetRecord(kGsvRules, record); }
void C_NMEA_EncodeDecode::Reset_GSA(S_GSA_Data& record) { ResetRecord(kGsaRules, record); }
void C_NMEA_EncodeDecode::Reset_RMC(S_RMC_Data& record) { ResetRecord(kRmcRules, record); }
void C_NMEA_EncodeDecode::Reset_VTG(S_VTG_Data& record) { ResetRecord(kVtgRules, record); }
