// How the fields of a sentence get into its record: the rule type, the readers that several families of sentences
// share, and the one interpreter. Internal.
//
// A sentence is a table of rules, in the order of its fields. The tables of the NMEA 0183 sentences are in
// NmeaSentences.cpp, those of "$PKVN," in PkvnSentences.h, that of "$RD1" in VelaRD_Decode.cpp. What a family of
// sentences has of its own (its name, its least number of fields, its result codes) is checked by its decoder before.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_RULES_H
#define VELAGNSS_TEXTPROTO_SENTENCE_RULES_H

#include <cstddef>
#include <span>
#include <string_view>
#include <type_traits>

#include "geo/NotAvailable.h"
#include "records/ResultCodes.h"
#include "textproto/FieldValues.h"
#include "textproto/NmeaMoreRecords.h"

namespace velagnss::textproto {

class C_SentenceText;

// Stores the value of one field; gives 0, or the code that ends the decoding. `index` counts within a run of fields.
template <class Record>
using t_FieldReader = unsigned int (*)(std::string_view field, unsigned int index, Record& record);

// Appends all fields of a run; gives 0, or the code that ends the encoding.
template <class Record>
using t_FieldWriter = unsigned int (*)(C_SentenceText& sentence, const Record& record);

// Both directions of one kind of field. Sentences that are not encoded have readers only.
template <class Record>
struct S_FieldKind {
  constexpr S_FieldKind(t_FieldReader<Record> reader, t_FieldWriter<Record> writer = nullptr)
      : S_FieldKind(reader, writer, reader) {}
  constexpr S_FieldKind(t_FieldReader<Record> reader, t_FieldWriter<Record> writer, t_FieldReader<Record> readerOfAll)
      : read(reader), write(writer), readAll(readerOfAll) {}

  t_FieldReader<Record> read;  // null: the field is not looked at
  t_FieldWriter<Record> write;
  t_FieldReader<Record> readAll;  // for `TimeDigits::All`
};

// A run of fields that are handled alike: mostly one.
template <class Record>
struct S_FieldRule {
  unsigned char first;  // position in the sentence, its name being 0
  unsigned char count;
  S_FieldKind<Record> kind;
  unsigned char moreThan = 0;  // read only if the sentence has more fields than this
};

// The interpreter. A sentence may end early: what it does not have is left as it is, without an error. A field that is
// too long ends it as well.
template <class Fields, class Record>
[[nodiscard]] unsigned int ReadFields(const Fields& fields, std::span<const S_FieldRule<Record>> rules, Record& record,
                                      TimeDigits digits = TimeDigits::Hundredths) {
  // Both are found once: they do not change while fields are read.
  const std::size_t readable = fields.Readable();
  const std::size_t count = fields.Count();
  for (const S_FieldRule<Record>& rule : rules) {
    const t_FieldReader<Record> read = digits == TimeDigits::All ? rule.kind.readAll : rule.kind.read;
    if (read == nullptr || count <= rule.moreThan) continue;
    for (unsigned int i = 0; i < rule.count && rule.first + i < readable; ++i) {
      const unsigned int result = read(fields[rule.first + i], i, record);
      if (result != eResultOk) return result;
    }
  }
  return eResultOk;
}

// Position after the last field of a table that begins at `first`; 0 where a rule does not start at the field after the
// rule before it.
template <class Record>
constexpr std::size_t EndOfFields(std::span<const S_FieldRule<Record>> rules, std::size_t first) {
  for (const S_FieldRule<Record>& rule : rules) {
    if (rule.first != first) return 0;
    first += rule.count;
  }
  return first;
}

// --- Readers of numbers and times: an empty field stores the marker, without an error ---

// All readers of fields fail with the same code; which field it was is not reported.
constexpr unsigned int ResultOf(bool isRead) { return isRead ? eResultOk : eResultBadField; }

// The overload brings the marker of the type along.
inline bool ReadNumber(std::string_view field, double& value) { return ParseFieldDBL(field, NA_DOUBLE, value); }
inline bool ReadNumber(std::string_view field, unsigned char& value) { return ParseFieldU8(field, NA_U8, value); }
inline bool ReadNumber(std::string_view field, unsigned short& value) { return ParseFieldU16(field, NA_U16, value); }
inline bool ReadNumber(std::string_view field, unsigned int& value) { return ParseFieldU32(field, NA_U32, value); }

// Of an array the element that the place in the run says.
template <auto Member, class Record>
unsigned int Number(std::string_view field, unsigned int index, Record& record) {
  if constexpr (std::is_array_v<std::remove_reference_t<decltype(record.*Member)>>) {
    return ResultOf(ReadNumber(field, (record.*Member)[index]));
  } else {
    return ResultOf(ReadNumber(field, record.*Member));
  }
}

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_RULES_H
