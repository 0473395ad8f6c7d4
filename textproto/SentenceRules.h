// How the fields of a sentence get into its record: the rule type, the readers that several families of sentences
// share, and the one interpreter. Internal.
//
// A sentence is a table of rules, in the order of its fields. The tables of the NMEA 0183 sentences are in
// NmeaSentences.cpp, those of "$PKVN," in PkvnSentences.h, that of "$RD1" in VelaRD_Decode.cpp. What a family of
// sentences has of its own (its name, its least number of fields, its result codes) is checked by its decoder before.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_RULES_H
#define VELAGNSS_TEXTPROTO_SENTENCE_RULES_H

#include <cstddef>
#include <iterator>
#include <limits>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "geo/NotAvailable.h"
#include "records/ResultCodes.h"
#include "textproto/FieldValues.h"
#include "textproto/NmeaMoreRecords.h"
#include "textproto/NumberText.h"

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

// How far the fields of a sentence go. Found once: it does not change while they are read.
struct S_FieldExtent {
  std::size_t readable;
  std::size_t count;
};

// The interpreter of one rule. A sentence may end early: what it does not have is left as it is, without an error. A
// field that is too long ends it as well. It is always inlined: where the rule is a constant, so is the reader then,
// and the compiler puts that in the place of a call through a pointer.
template <class Fields, class Record>
[[nodiscard, gnu::always_inline]] inline unsigned int ReadRun(const S_FieldRule<Record>& rule, const Fields& fields,
                                                              const S_FieldExtent& extent, TimeDigits digits,
                                                              Record& record) {
  const t_FieldReader<Record> read =
      rule.kind.readAll != rule.kind.read && digits == TimeDigits::All ? rule.kind.readAll : rule.kind.read;
  if (read == nullptr || extent.count <= rule.moreThan) return eResultOk;
  for (unsigned int i = 0; i < rule.count && rule.first + i < extent.readable; ++i)
    if (const unsigned int result = read(fields[rule.first + i], i, record); result != eResultOk) return result;
  return eResultOk;
}

// A whole table, rule by rule.
template <class Fields, class Record>
[[nodiscard]] unsigned int ReadFields(const Fields& fields, std::span<const S_FieldRule<Record>> rules, Record& record,
                                      TimeDigits digits = TimeDigits::Hundredths) {
  const S_FieldExtent extent = {fields.Readable(), fields.Count()};
  for (const S_FieldRule<Record>& rule : rules)
    if (const unsigned int result = ReadRun(rule, fields, extent, digits, record); result != eResultOk) return result;
  return eResultOk;
}

// The same with the table as a constant, for sentences that come all the time: unrolled, which takes half the time.
template <const auto& Rules, class Fields, class Record, std::size_t... I>
[[nodiscard]] unsigned int ReadRuns(const Fields& fields, Record& record, TimeDigits digits,
                                    std::index_sequence<I...>) {
  const S_FieldExtent extent = {fields.Readable(), fields.Count()};
  unsigned int result = eResultOk;
  static_cast<void>((((result = ReadRun(Rules[I], fields, extent, digits, record)) == eResultOk) && ...));
  return result;
}
template <const auto& Rules, class Fields, class Record>
[[nodiscard]] unsigned int ReadFieldsOf(const Fields& fields, Record& record, TimeDigits digits) {
  return ReadRuns<Rules>(fields, record, digits, std::make_index_sequence<std::size(Rules)>());
}

// The other direction.
template <const auto& Rules, class Record, std::size_t... I>
[[nodiscard]] unsigned int WriteRuns(C_SentenceText& sentence, const Record& record, std::index_sequence<I...>) {
  unsigned int result = eResultOk;
  static_cast<void>((((result = Rules[I].kind.write(sentence, record)) == eResultOk) && ...));
  return result;
}
template <const auto& Rules, class Record>
[[nodiscard]] unsigned int WriteFieldsOf(C_SentenceText& sentence, const Record& record) {
  return WriteRuns<Rules>(sentence, record, std::make_index_sequence<std::size(Rules)>());
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

// The common case, in place: an empty field, or one to three digits. False, with `value` untouched, for all else.
template <class Integer>
bool ReadFewDigits(std::string_view field, Integer marker, Integer& value) {
  unsigned int number = marker;
  if (!field.empty() && !NumberText::ReadFewDigits(field, number)) return false;
  if (number > std::numeric_limits<Integer>::max()) return false;
  value = static_cast<Integer>(number);
  return true;
}

// The overload brings the marker of the type along.
inline bool ReadNumber(std::string_view field, double& value) { return ParseFieldDBL(field, NA_DOUBLE, value); }
inline bool ReadNumber(std::string_view field, unsigned char& value) {
  return ReadFewDigits(field, NA_U8, value) || ParseFieldU8(field, NA_U8, value);
}
inline bool ReadNumber(std::string_view field, unsigned short& value) {
  return ReadFewDigits(field, NA_U16, value) || ParseFieldU16(field, NA_U16, value);
}
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
