// The public operations: checks on the way in, the tables of NmeaSentences.cpp do the rest.
#include "textproto/NMEA_EncodeDecode.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "framing/XorSum.h"
#include "records/ResultCodes.h"
#include "textproto/FieldValues.h"
#include "textproto/NmeaSentences.h"
#include "textproto/SentenceChecksum.h"
#include "textproto/SentenceText.h"

using namespace velagnss::textproto;

namespace {

static_assert(sizeof(U_EcdDcdData) == 104);  // hosts of other languages lay it out by hand

// Bytes of a sentence with its checksum. Receivers exceed the 82 characters that NMEA 0183 allows, so the upper limit
// is that of the work buffer.
constexpr unsigned short kMinLength = 8;
constexpr unsigned short kMaxLength = 1024;

template <class Record>
unsigned int DecodeSentence(const S_NmeaSentence<Record>& rules, const unsigned char* sentence, unsigned short length,
                            Record& record) {
  // Before any check: after a failure the record holds markers, never values of an earlier sentence.
  SetEmpty(rules, record);
  if (sentence == nullptr) return eResultNull;
  if (length > kMaxLength) return eResultTooLong;
  if (length < kMinLength) return eResultBadField;
  const std::string_view text = TextOf(sentence, length);
  return DecodeFields(rules, t_NmeaFields(text), TypeOf(text), record);
}

// A sentence of the record in the buffer, checksum and CR LF included; after a failure the fields before the failing
// one are there.
template <class Record>
unsigned int EncodeSentence(const S_NmeaSentence<Record>& rules, const Record& record, char* buffer,
                            unsigned short& length) {
  buffer[0] = '\0';
  // A record that was reset and never filled has no talker; its sentence would not be recognized.
  if (record.talker[0] == '\0' || record.talker[1] == '\0') return eResultOutOfRange;
  C_SentenceText sentence(buffer);
  const unsigned int result = AppendSentence(sentence, rules, record);
  return result == eResultOk ? EndSentence(sentence, length) : result;
}

// Without its type the record of a sentence is only known by its table.
template <class Record>
const Record& RecordAt(const void* record, const S_NmeaSentence<Record>&) {
  return *static_cast<const Record*>(record);
}

}  // namespace

C_NMEA_EncodeDecode::C_NMEA_EncodeDecode() { Reset(); }

C_NMEA_EncodeDecode::~C_NMEA_EncodeDecode() = default;

unsigned int C_NMEA_EncodeDecode::Reset() {
  m_lastResult = eResultOk;
  // All of it: hosts may look at the buffer.
  std::memset(m_workBuffer, 0, sizeof m_workBuffer);
  return eResultOk;
}

unsigned int C_NMEA_EncodeDecode::GetLastResult() const { return m_lastResult; }

const unsigned char* C_NMEA_EncodeDecode::GetWorkBuffer() const {
  return reinterpret_cast<const unsigned char*>(m_workBuffer);
}

unsigned int C_NMEA_EncodeDecode::Decode(unsigned char* sentence, unsigned short length,
                                         C_RawDataMessage::eNMEA0183Messages type, U_EcdDcdData& data) {
  // The union includes bytes of no member of the record. They must not depend on what it held before.
  SetZero(data);
  return m_lastResult = DecodeChecked(sentence, length, type, data);
}

unsigned int C_NMEA_EncodeDecode::DecodeChecked(unsigned char* sentence, unsigned short length,
                                                C_RawDataMessage::eNMEA0183Messages type, U_EcdDcdData& data) {
  if (sentence == nullptr) return eResultNull;
  if (length < kMinLength) return eResultTooLong;
  // Before the type: a damaged sentence must not be reported as one that is not supported.
  if (!ValidateNmeaCheckSum(sentence, length)) return eResultChecksum;
  return VisitSentence(
      type, [&](const auto& rules, auto member) { return DecodeSentence(rules, sentence, length, data.*member); });
}

unsigned int C_NMEA_EncodeDecode::Encode(const void* record, C_RawDataMessage::eNMEA0183Messages type,
                                         unsigned char* out, unsigned short& length) {
  // Composed in the work buffer, so that a failure leaves `out` and `length` alone.
  unsigned short sentenceLength = 0;
  m_lastResult = record == nullptr || out == nullptr ? eResultNull : EncodeAny(record, type, sentenceLength);
  if (m_lastResult != eResultOk) return m_lastResult;
  // With the NUL.
  std::memcpy(out, m_workBuffer, sentenceLength + std::size_t{1});
  length = sentenceLength;
  return m_lastResult;
}

unsigned int C_NMEA_EncodeDecode::EncodeAny(const void* record, C_RawDataMessage::eNMEA0183Messages type,
                                            unsigned short& length) {
  return VisitSentence(type, [&](const auto& rules, auto) {
    return EncodeSentence(rules, RecordAt(record, rules), m_workBuffer, length);
  });
}

unsigned char C_NMEA_EncodeDecode::GetNmeaCheckSum(const unsigned char* bytes, unsigned short start,
                                                   unsigned short count) {
  if (bytes == nullptr) return 0;
  // One byte is summed even for a count of 0, as the header says.
  return velagnss::framing::XorOf(bytes + start, std::max<unsigned int>(count, 1));
}

bool C_NMEA_EncodeDecode::ValidateNmeaCheckSum(unsigned char* sentence, unsigned short length) {
  if (sentence == nullptr) return false;
  return FindCheckedStar({reinterpret_cast<const char*>(sentence), length}) != std::string_view::npos;
}

bool C_NMEA_EncodeDecode::GetNmeaLatLonFromString(const unsigned char* field, double& value) {
  value = 0.0;
  return field != nullptr && ParseDegreesMinutes(reinterpret_cast<const char*>(field), value);
}

// One type each, without testing the checksum: for text that a host has checked or composed itself.
unsigned int C_NMEA_EncodeDecode::Decode_GGA(unsigned char* sentence, unsigned short length, S_GGA_Data& record) {
  return DecodeSentence(kGga, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GNS(unsigned char* sentence, unsigned short length, S_GNS_Data& record) {
  return DecodeSentence(kGns, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_ZDA(unsigned char* sentence, unsigned short length, S_ZDA_Data& record) {
  return DecodeSentence(kZda, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GLL(unsigned char* sentence, unsigned short length, S_GLL_Data& record) {
  return DecodeSentence(kGll, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GSV(unsigned char* sentence, unsigned short length, S_GSV_Data& record) {
  return DecodeSentence(kGsv, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_GSA(unsigned char* sentence, unsigned short length, S_GSA_Data& record) {
  return DecodeSentence(kGsa, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_RMC(unsigned char* sentence, unsigned short length, S_RMC_Data& record) {
  return DecodeSentence(kRmc, sentence, length, record);
}
unsigned int C_NMEA_EncodeDecode::Decode_VTG(unsigned char* sentence, unsigned short length, S_VTG_Data& record) {
  return DecodeSentence(kVtg, sentence, length, record);
}

// One type each, into the work buffer.
unsigned int C_NMEA_EncodeDecode::Encode_GGA(const S_GGA_Data& record, unsigned short& length) {
  return EncodeSentence(kGga, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GNS(const S_GNS_Data& record, unsigned short& length) {
  return EncodeSentence(kGns, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_ZDA(const S_ZDA_Data& record, unsigned short& length) {
  return EncodeSentence(kZda, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GLL(const S_GLL_Data& record, unsigned short& length) {
  return EncodeSentence(kGll, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GSV(const S_GSV_Data& record, unsigned short& length) {
  return EncodeSentence(kGsv, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_GSA(const S_GSA_Data& record, unsigned short& length) {
  return EncodeSentence(kGsa, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_RMC(const S_RMC_Data& record, unsigned short& length) {
  return EncodeSentence(kRmc, record, m_workBuffer, length);
}
unsigned int C_NMEA_EncodeDecode::Encode_VTG(const S_VTG_Data& record, unsigned short& length) {
  return EncodeSentence(kVtg, record, m_workBuffer, length);
}

void C_NMEA_EncodeDecode::Reset_GGA(S_GGA_Data& record) { SetEmpty(kGga, record); }
void C_NMEA_EncodeDecode::Reset_GNS(S_GNS_Data& record) { SetEmpty(kGns, record); }
void C_NMEA_EncodeDecode::Reset_ZDA(S_ZDA_Data& record) { SetEmpty(kZda, record); }
void C_NMEA_EncodeDecode::Reset_GLL(S_GLL_Data& record) { SetEmpty(kGll, record); }
void C_NMEA_EncodeDecode::Reset_GSV(S_GSV_Data& record) { SetEmpty(kGsv, record); }
void C_NMEA_EncodeDecode::Reset_GSA(S_GSA_Data& record) { SetEmpty(kGsa, record); }
void C_NMEA_EncodeDecode::Reset_RMC(S_RMC_Data& record) { SetEmpty(kRmc, record); }
void C_NMEA_EncodeDecode::Reset_VTG(S_VTG_Data& record) { SetEmpty(kVtg, record); }
