// The kinds of fields that NMEA 0183 sentences are made of: each makes the rule that reads it into a member of a record
// and writes it from there. Internal.
#ifndef VELAGNSS_TEXTPROTO_NMEA_FIELD_RULES_H
#define VELAGNSS_TEXTPROTO_NMEA_FIELD_RULES_H

#include <string_view>
#include <type_traits>

#include "geo/NotAvailable.h"
#include "textproto/FieldParsers.h"
#include "textproto/SentenceRules.h"

namespace NmeaFieldRules {

using t_Nmea = C_NMEA_EncodeDecode;

// --- Members ---

template <auto Member>
struct S_MemberOf;
template <class Record, class Type, Type Record::*Member>
struct S_MemberOf<Member> {
  using t_Record = Record;
  using t_Value = std::remove_extent_t<Type>;
};
template <auto Member>
using t_RecordOf = typename S_MemberOf<Member>::t_Record;
template <auto Member>
using t_ValueOf = typename S_MemberOf<Member>::t_Value;
template <auto Member>
using t_RuleOf = S_FieldRule<t_RecordOf<Member>>;

// The member, or the rule's element of a member that is an array.
template <auto Member, class Record>
auto& ValueOf(Record& record, const S_FieldRule<std::remove_const_t<Record>>& rule) {
  if constexpr (std::is_array_v<std::remove_reference_t<decltype(record.*Member)>>) {
    return (record.*Member)[rule.index];
  } else {
    return record.*Member;
  }
}

template <class Value>
inline constexpr Value kMarker = Value{};
template <>
inline constexpr double kMarker<double> = NA_DOUBLE;
template <>
inline constexpr unsigned char kMarker<unsigned char> = NA_U8;
template <>
inline constexpr unsigned short kMarker<unsigned short> = NA_U16;

constexpr unsigned int ResultOf(bool isRead) { return isRead ? eResultOk : eResultBadField; }

[[nodiscard]] inline unsigned int AppendText(C_SentenceText& sentence, std::string_view text) {
  C_FieldText field;
  field.Add(',');
  field.Add(text);
  return sentence.Append(field);
}

// A single character; NUL is an empty field.
[[nodiscard]] inline unsigned int AppendLetter(C_SentenceText& sentence, char letter) {
  return AppendText(sentence, {&letter, letter == '\0' ? 0U : 1U});
}

// --- Numbers: an empty field is the marker ---

inline bool ReadNumber(std::string_view field, double marker, double& value) {
  return UTIL::ParseFieldDBL(field, marker, value);
}
inline bool ReadNumber(std::string_view field, unsigned char marker, unsigned char& value) {
  return UTIL::ParseFieldU8(field, marker, value);
}
inline bool ReadNumber(std::string_view field, signed char marker, signed char& value) {
  return UTIL::ParseFieldS8(field, marker, value);
}
inline bool ReadNumber(std::string_view field, unsigned short marker, unsigned short& value) {
  return UTIL::ParseFieldU16(field, marker, value);
}
// In 16 bits on the wire
inline bool ReadNumber(std::string_view field, unsigned int marker, unsigned int& value) {
  unsigned short narrow = 0;
  const bool isRead = UTIL::ParseFieldU16(field, static_cast<unsigned short>(marker), narrow);
  value = narrow;
  return isRead;
}

// A number as printf takes it.
constexpr double Printed(double value) { return value; }
constexpr int Printed(int value) { return value; }
constexpr int Printed(unsigned int value) { return static_cast<int>(value); }

template <auto Member, const t_ValueOf<Member>& Marker>
constexpr t_RuleOf<Member> Number(std::string_view format, unsigned char index = 0) {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule& rule, t_Record& record) {
    return ResultOf(ReadNumber(field, Marker, ValueOf<Member>(record, rule)));
  };
  result.write = [](C_SentenceText& sentence, const t_Rule& rule, const t_Record& record) {
    return AppendValue(sentence, rule.format, Printed(Marker), Printed(ValueOf<Member>(record, rule)), true);
  };
  result.format = C_PrintFormat(format);
  result.index = index;
  return result;
}

// With the marker of the member's type
template <auto Member>
constexpr t_RuleOf<Member> Number(std::string_view format, unsigned char index = 0) {
  return Number<Member, kMarker<t_ValueOf<Member>>>(format, index);
}

// --- Times and dates ---

template <auto Member>
constexpr t_RuleOf<Member> Time() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    double secondsOfDay = 0.0;
    const bool isRead = UTIL::ParseTimeOfDaySeconds(field, secondsOfDay);
    if (isRead) record.*Member = secondsOfDay;
    return ResultOf(isRead);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendTime(sentence, NA_DOUBLE, record.*Member, true);
  };
  return result;
}

// ddmmyy
template <class Record>
constexpr S_FieldRule<Record> Date() {
  using t_Rule = S_FieldRule<Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, Record& record) {
    unsigned short year = 0;
    unsigned char month = 0;
    unsigned char day = 0;
    if (!UTIL::ParseDate(field, NA_U16, NA_U8, NA_U8, year, month, day)) return ResultOf(false);
    record.year = year;
    record.month = month;
    record.day = day;
    return ResultOf(true);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const Record& record) -> unsigned int {
    char date[8];
    const bool isDate = UTIL::FormatDate(record.year, record.month, record.day, NA_U16, NA_U8, NA_U8, date);
    return isDate ? AppendText(sentence, date) : eResultOutOfRange;
  };
  return result;
}

// --- Angles: two fields, the number and its letter. Both are written together. ---

inline constexpr C_PrintFormat kMinutesFormat("%011.8lf");

template <auto Member, const S_AngleStyle& Style>
constexpr t_RuleOf<Member> Angle() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    double degrees = 0.0;
    const bool isRead = UTIL::ParseDegreesMinutes(field, degrees);
    if (isRead) record.*Member = degrees;
    return ResultOf(isRead);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendAngle(sentence, Style, kMinutesFormat, NA_DOUBLE, record.*Member, {true, true});
  };
  return result;
}

template <auto Member, const S_AngleStyle& Style>
constexpr t_RuleOf<Member> AngleLetter() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    double& degrees = record.*Member;
    if (field.empty()) degrees = NA_DOUBLE;
    if (field.empty() || field == std::string_view(&Style.positive, 1)) return ResultOf(true);
    if (field != std::string_view(&Style.negative, 1)) return ResultOf(false);
    if (!IsNotAvailable(degrees)) degrees = -degrees;
    return ResultOf(true);
  };
  return result;
}

template <auto Member>
constexpr t_RuleOf<Member> Latitude() {
  return Angle<Member, kLatitudeStyle>();
}
template <auto Member>
constexpr t_RuleOf<Member> LatitudeLetter() {
  return AngleLetter<Member, kLatitudeStyle>();
}
template <auto Member>
constexpr t_RuleOf<Member> Longitude() {
  return Angle<Member, kLongitudeStyle>();
}
template <auto Member>
constexpr t_RuleOf<Member> LongitudeLetter() {
  return AngleLetter<Member, kLongitudeStyle>();
}

// --- Letters ---

// A letter that stands for a value of an enumeration; an empty field too stands for one.
template <auto Member, auto ValueOfLetter, auto LetterOfValue>
constexpr t_RuleOf<Member> Code() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    if (field.size() > 1) return ResultOf(false);
    record.*Member = ValueOfLetter(field.empty() ? '\0' : field[0]);
    return ResultOf(true);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendLetter(sentence, LetterOfValue(record.*Member));
  };
  return result;
}

template <auto Member>
constexpr t_RuleOf<Member> Mode() {
  return Code<Member, t_Nmea::GetModIndicatorEnum, t_Nmea::GetModIndicatorChar>();
}
template <auto Member>
constexpr t_RuleOf<Member> NavStatus() {
  return Code<Member, t_Nmea::GetNavStatusEnum, t_Nmea::GetNavStatusChar>();
}

// A letter kept as it is, one of a few; an empty field is none of them.
template <auto Member>
constexpr t_RuleOf<Member> OneOf(const char* letters) {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.letters = letters;
  result.read = [](std::string_view field, const t_Rule& rule, t_Record& record) {
    if (field.size() != 1 || std::string_view(rule.letters).find(field[0]) == std::string_view::npos)
      return ResultOf(false);
    record.*Member = field[0];
    return ResultOf(true);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendLetter(sentence, record.*Member);
  };
  return result;
}

// A unit is written always, whatever the length of the sentence, and read past.
template <class Record>
constexpr S_FieldRule<Record> Unit(const char* letter) {
  S_FieldRule<Record> result;
  result.letters = letter;
  result.write = [](C_SentenceText& sentence, const S_FieldRule<Record>& rule, const Record&) -> unsigned int {
    const char unit[] = {',', rule.letters[0]};
    sentence.AppendUnchecked({unit, sizeof unit});
    return eResultOk;
  };
  return result;
}

// The rule for sentences of more than so many fields only.
template <class Record>
constexpr S_FieldRule<Record> OnlyBeyond(unsigned char fields, S_FieldRule<Record> rule) {
  rule.moreThan = fields;
  return rule;
}

}  // namespace NmeaFieldRules

#endif  // VELAGNSS_TEXTPROTO_NMEA_FIELD_RULES_H
