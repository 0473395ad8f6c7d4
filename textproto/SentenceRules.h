// What a sentence is made of: a table of fields per record, and the one interpreter that reads and the one that writes
// them. The tables stand in NmeaSentences.cpp. Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_RULES_H
#define VELAGNSS_TEXTPROTO_SENTENCE_RULES_H

#include <cstddef>
#include <cstring>
#include <span>
#include <string_view>

#include "framing/RawDataMessage.h"
#include "records/ResultCodes.h"
#include "textproto/SentenceFields.h"
#include "textproto/SentenceText.h"

// One field of a sentence. The first rule of a table is for field 1, field 0 being the sentence id.
template <class Record>
struct S_FieldRule {
  // Stores the field's value; 0 or the code that ends the decoding. Null: the field is not looked at.
  unsigned int (*read)(std::string_view field, const S_FieldRule& rule, Record& record) = nullptr;
  // Appends the field; 0 or the code that ends the encoding. Null: the rule before wrote it.
  unsigned int (*write)(C_SentenceText& sentence, const S_FieldRule& rule, const Record& record) = nullptr;
  C_PrintFormat format{};         // of a number
  const char* letters = nullptr;  // that may stand in the field
  unsigned char index = 0;        // into a member that is an array
  unsigned char moreThan = 0;     // the field is read only if the sentence has more fields than this
};

template <class Record>
struct S_SentenceRules {
  C_RawDataMessage::eNMEA0183Messages type;
  unsigned char minFields;  // sentence id and checksum included
  std::span<const S_FieldRule<Record>> fields;
  Record reset;  // every value at its marker
};

// 1 + 20 fields are those of GSV, the longest.
using t_NmeaFields = C_SentenceFields<1 + 20, 1023, 64>;

// Zeros in the padding too.
template <class Record>
void ResetRecord(const S_SentenceRules<Record>& rules, Record& record) {
  std::memcpy(&record, &rules.reset, sizeof record);
}

// Field 0: "$", talker, sentence id. The talker is stored whatever the id is.
template <class Record>
[[nodiscard]] unsigned int ReadSentenceId(const t_NmeaFields& fields, const S_SentenceRules<Record>& rules,
                                          Record& record) {
  if (!fields.IsReadable(0)) return eResultWrongSentence;
  const auto type = C_NMEA_EncodeDecode::GetNmeaPreamble(fields[0].data(), static_cast<unsigned char>(fields[0].size()),
                                                         record.talker);
  return type == rules.type ? eResultOk : eResultWrongSentence;
}

// The values behind it. An early end is no fault.
template <class Record>
[[nodiscard]] unsigned int ReadFields(const t_NmeaFields& fields, std::span<const S_FieldRule<Record>> rules,
                                      Record& record) {
  std::size_t index = 0;
  for (const S_FieldRule<Record>& rule : rules) {
    if (!fields.IsReadable(++index) || fields.Count() <= rule.moreThan) return eResultOk;
    if (rule.read == nullptr) continue;
    const unsigned int result = rule.read(fields[index], rule, record);
    if (result != eResultOk) return result;
  }
  return eResultOk;
}

template <class Record>
[[nodiscard]] unsigned int DecodeSentence(const S_SentenceRules<Record>& rules, const unsigned char* sentence,
                                          unsigned short length, Record& record) {
  constexpr unsigned short kMinLength = 8;
  constexpr unsigned short kMaxLength = 1024;
  ResetRecord(rules, record);
  if (sentence == nullptr) return eResultNull;
  if (length > kMaxLength) return eResultTooLong;
  if (length < kMinLength) return eResultBadField;
  const t_NmeaFields fields(TextOf(sentence, length));
  if (fields.Count() < rules.minFields) return eResultBadField;
  const unsigned int result = ReadSentenceId(fields, rules, record);
  return result == eResultOk ? ReadFields(fields, rules.fields, record) : result;
}

// Writes all but the checksum to the buffer; after a failure what stood before the failing field is there.
template <class Record>
[[nodiscard]] unsigned int WriteFields(const S_SentenceRules<Record>& rules, const Record& record, char* buffer) {
  buffer[0] = '\0';
  if (record.talker[0] == '\0' || record.talker[1] == '\0') return eResultOutOfRange;
  C_SentenceText sentence(buffer);
  sentence.AppendUnchecked("$");
  sentence.AppendUnchecked({record.talker, sizeof record.talker});
  sentence.AppendUnchecked(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs[rules.type]);
  for (const S_FieldRule<Record>& rule : rules.fields) {
    if (rule.write == nullptr) continue;
    const unsigned int result = rule.write(sentence, rule, record);
    if (result != eResultOk) return result;
  }
  return eResultOk;
}

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_RULES_H
