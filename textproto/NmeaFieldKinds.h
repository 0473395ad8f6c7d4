// The kinds of fields that NMEA 0183 sentences are made of: each reads a run of fields into a member of a record and
// writes it from there. Internal.
//
// Reading and writing of a kind are next to each other because they must agree: what is written must read back.
#ifndef VELAGNSS_TEXTPROTO_NMEA_FIELD_KINDS_H
#define VELAGNSS_TEXTPROTO_NMEA_FIELD_KINDS_H

#include <string_view>

#include "geo/NotAvailable.h"
#include "textproto/FieldParsers.h"
#include "textproto/FieldValues.h"
#include "textproto/SentenceRules.h"
#include "textproto/SentenceText.h"

namespace velagnss::textproto::NmeaFieldKinds {

using t_Nmea = C_NMEA_EncodeDecode;

// The record that a member belongs to.
template <class Record, class Value>
// Never defined: only its type is used.
Record RecordOf(Value Record::*member);
template <auto Member>
using t_KindOf = S_FieldKind<decltype(RecordOf(Member))>;

// The fields of a sentence begin with their comma, so none needs to know whether it is the last.
[[nodiscard]] inline unsigned int AppendText(C_SentenceText& sentence, std::string_view text) {
  return sentence.AppendAfterComma(text);
}

// A single character; NUL is an empty field.
[[nodiscard]] inline unsigned int AppendLetter(C_SentenceText& sentence, char letter) {
  return AppendText(sentence, {&letter, letter == '\0' ? 0U : 1U});
}

// --- Numbers: an empty field is the marker ---

// As the encoders print them; the compiler takes the formats apart.
inline constexpr C_PrintFormat kInteger("%d");
inline constexpr C_PrintFormat kTwoDigits("%02d");
inline constexpr C_PrintFormat kThreeDigits("%03d");
inline constexpr C_PrintFormat kFourDigits("%04d");
inline constexpr C_PrintFormat kOneDecimal("%.1lf");
inline constexpr C_PrintFormat kTwoDecimals("%.2lf");
inline constexpr C_PrintFormat kThreeDecimals("%.3lf");
inline constexpr C_PrintFormat kMinutes("%011.8lf");  // of arc: 8 decimals are 0.02 mm

// One for each type of member, which brings its marker along: a value equal to it becomes an empty field.
[[nodiscard]] inline unsigned int AppendNumber(C_SentenceText& sentence, const C_PrintFormat& format, double value) {
  return AppendValue(sentence, format, NA_DOUBLE, value, true);
}
[[nodiscard]] inline unsigned int AppendNumber(C_SentenceText& sentence, const C_PrintFormat& format,
                                               unsigned char value) {
  return AppendValue<int>(sentence, format, NA_U8, value, true);
}
[[nodiscard]] inline unsigned int AppendNumber(C_SentenceText& sentence, const C_PrintFormat& format,
                                               unsigned short value) {
  return AppendValue<int>(sentence, format, NA_U16, value, true);
}

template <class Value, std::size_t N>
[[nodiscard]] unsigned int AppendNumber(C_SentenceText& sentence, const C_PrintFormat& format,
                                        const Value (&values)[N]) {
  for (const Value value : values)
    if (const unsigned int result = AppendNumber(sentence, format, value); result != eResultOk) return result;
  return eResultOk;
}

// The format is a template argument, so a table row is two function pointers and nothing else.
template <auto Member, const C_PrintFormat& Format, class Record>
unsigned int WriteNumber(C_SentenceText& sentence, const Record& record) {
  return AppendNumber(sentence, Format, record.*Member);
}

// A number, or a run of them into an array.
template <auto Member, const C_PrintFormat& Format>
constexpr t_KindOf<Member> NumberAs = {Number<Member>, WriteNumber<Member, Format>};

// --- Times and dates: a field that is not one leaves the record as it is ---

// "123519.00"
template <auto Member, bool (*Parse)(std::string_view, double&), class Record>
unsigned int ReadTime(std::string_view field, unsigned int, Record& record) {
  double secondsOfDay = 0.0;
  const bool isRead = Parse(field, secondsOfDay);
  if (isRead) record.*Member = secondsOfDay;
  return ResultOf(isRead);
}

template <auto Member, class Record>
unsigned int WriteTime(C_SentenceText& sentence, const Record& record) {
  return AppendTime(sentence, NA_DOUBLE, record.*Member, true);
}

template <auto Member>
constexpr t_KindOf<Member> Time = {ReadTime<Member, ParseTimeOfDaySeconds>, WriteTime<Member>,
                                   ReadTime<Member, ParseTimeOfDayDigits>};

// ddmmyy
template <class Record>
unsigned int ReadDate(std::string_view field, unsigned int, Record& record) {
  // A local first: a bad date must not leave the day of one and the year of another.
  S_Date date = {};
  if (!ParseDate(field, {NA_U16, NA_U8, NA_U8}, date)) return eResultBadField;
  record.year = date.year;
  record.month = date.month;
  record.day = date.day;
  return eResultOk;
}

template <class Record>
unsigned int WriteDate(C_SentenceText& sentence, const Record& record) {
  // ddmmyy and a NUL.
  char text[8];
  const bool isDate = UTIL::FormatDate(record.year, record.month, record.day, NA_U16, NA_U8, NA_U8, text);
  return isDate ? AppendText(sentence, text) : eResultOutOfRange;
}

template <class Record>
constexpr S_FieldKind<Record> Date = {ReadDate<Record>, WriteDate<Record>};

// --- Angles: two fields, the number and its direction letter ---

// "4807.038": degrees and minutes of arc, without a sign.
inline unsigned int ReadDegrees(std::string_view field, double& degrees) {
  double value = 0.0;
  const bool isRead = ParseDegreesMinutes(field, value);
  if (isRead) degrees = value;
  return ResultOf(isRead);
}

// A number without its letter could be on either side: it counts as not available.
inline unsigned int ApplyDirection(std::string_view field, const S_AngleStyle& style, double& degrees) {
  if (field.empty()) degrees = NA_DOUBLE;
  if (field.empty() || field == std::string_view(&style.positive, 1)) return eResultOk;
  if (field != std::string_view(&style.negative, 1)) return eResultBadField;
  // A letter without a number, which some receivers send before their first fix, must not turn the marker around.
  if (!IsNotAvailable(degrees)) degrees = -degrees;
  return eResultOk;
}

template <auto Member, const S_AngleStyle& Style, class Record>
// The number comes first and is stored as positive; the letter then decides its sign.
unsigned int ReadAngle(std::string_view field, unsigned int index, Record& record) {
  return index == 0 ? ReadDegrees(field, record.*Member) : ApplyDirection(field, Style, record.*Member);
}

template <auto Member, const S_AngleStyle& Style, class Record>
unsigned int WriteAngle(C_SentenceText& sentence, const Record& record) {
  return AppendAngle(sentence, Style, kMinutes, NA_DOUBLE, record.*Member, {true, true});
}

template <auto Member>
// "4807.03800000,N"
constexpr t_KindOf<Member> Latitude = {ReadAngle<Member, kLatitudeStyle>, WriteAngle<Member, kLatitudeStyle>};
template <auto Member>
// "01131.00000000,E"
constexpr t_KindOf<Member> Longitude = {ReadAngle<Member, kLongitudeStyle>, WriteAngle<Member, kLongitudeStyle>};

// --- Letters ---

// A letter for a value of an enumeration; an empty field too has a value.
template <auto Member, auto ValueOfLetter, class Record>
unsigned int ReadCode(std::string_view field, unsigned int, Record& record) {
  if (field.size() > 1) return eResultBadField;
  // Unknown letters have a value, too: standards add letters, and a new one must not cost the whole sentence.
  record.*Member = ValueOfLetter(field.empty() ? '\0' : field[0]);
  return eResultOk;
}

template <auto Member, auto LetterOfValue, class Record>
unsigned int WriteCode(C_SentenceText& sentence, const Record& record) {
  return AppendLetter(sentence, LetterOfValue(record.*Member));
}

template <auto Member, auto ValueOfLetter, auto LetterOfValue>
constexpr t_KindOf<Member> Code = {ReadCode<Member, ValueOfLetter>, WriteCode<Member, LetterOfValue>};

template <auto Member>
// A, D, E, ... of NMEA 0183 from 2.3 on, and S, C, U, V from 4.1 on.
constexpr t_KindOf<Member> Mode = Code<Member, t_Nmea::GetModIndicatorEnum, t_Nmea::GetModIndicatorChar>;
template <auto Member>
constexpr t_KindOf<Member> NavStatus = Code<Member, t_Nmea::GetNavStatusEnum, t_Nmea::GetNavStatusChar>;

// A letter kept as it is, one of a few; an empty field is none of them.
template <auto Member, char... Letters, class Record>
// For operation mode and fix type of GSA.
unsigned int ReadOneOf(std::string_view field, unsigned int, Record& record) {
  if (field.size() != 1 || ((field[0] != Letters) && ...)) return eResultBadField;
  record.*Member = field[0];
  return eResultOk;
}

template <auto Member, class Record>
unsigned int WriteLetter(C_SentenceText& sentence, const Record& record) {
  return AppendLetter(sentence, record.*Member);
}

template <auto Member, char... Letters>
constexpr t_KindOf<Member> OneOf = {ReadOneOf<Member, Letters...>, WriteLetter<Member>};

// A unit is always written, whatever the length of the sentence. Receivers send any text there or none, so it is not
// looked at.
template <char Letter, class Record>
unsigned int WriteUnit(C_SentenceText& sentence, const Record&) {
  constexpr char kUnit[] = {',', Letter};
  sentence.AppendUnchecked({kUnit, sizeof kUnit});
  return eResultOk;
}

template <class Record, char Letter>
// No reader: the field is passed over.
constexpr S_FieldKind<Record> Unit = {nullptr, WriteUnit<Letter, Record>};

}  // namespace velagnss::textproto::NmeaFieldKinds

#endif  // VELAGNSS_TEXTPROTO_NMEA_FIELD_KINDS_H
