// The field emitters of the sentence encoder. A field is written in place where there is room for the longest one,
// else composed first; a failed emitter leaves the message as it was.
#include <algorithm>
#include <array>
#include <cmath>

#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NumberText.h"
#include "textproto/SentenceChecksum.h"
#include "textproto/SentenceText.h"

namespace velagnss::textproto {
namespace {

constexpr double kSecondsPerDay = 86400.0;
constexpr unsigned int kMinutesPerDay = 1440;

// Integers, as C passes them to printf.
// A format from a host is only data: it is taken apart here, so that none of its conversions can make printf read an
// argument that was not passed.
unsigned int EmitInteger(char* msg, const char* format, int notAvailable, int value, bool leadingComma) {
  C_PrintFormat parsed;
  if (msg == nullptr || format == nullptr) return eResultNull;
  if (!parsed.Parse(format, C_PrintFormat::kIntegerConversions)) return eResultNull;
  C_FieldText field;
  if (leadingComma) field.Add(',');
  if (value != notAvailable) parsed.Print(field, value);
  if (field.IsTooLong()) return eResultPastEnd;
  return C_SentenceText(msg).Append(field.View().substr(0, field.View().find('\0')));  // "%c" of a NUL ends the text
}

unsigned int EmitAngle(char* msg, const S_AngleStyle& style, const char* minutesFormat, double notAvailable,
                       double degrees, S_AngleLayout layout) {
  C_PrintFormat parsed;
  if (msg == nullptr || minutesFormat == nullptr) return eResultNull;
  if (!parsed.Parse(minutesFormat, C_PrintFormat::kRealConversions)) return eResultNull;
  C_SentenceText sentence(msg);
  return AppendAngle(sentence, style, parsed, notAvailable, degrees, layout);
}

// The digits that read back as the same number, which is rounded to nanoseconds: the fraction needs no calculation.
char* WriteTimeWithAllDigits(char* out, double secondsOfDay) {
  constexpr unsigned int kMaxDecimals = 9;
  constexpr std::size_t kMinDecimals = 2;
  char text[NumberText::kMaxFixedLength + kMaxDecimals];
  std::string_view digits(text,
                          static_cast<std::size_t>(NumberText::WriteFixed(text, secondsOfDay, kMaxDecimals) - text));
  const std::size_t point = digits.find('.');
  while (digits.ends_with('0') && digits.size() > point + 1 + kMinDecimals) digits.remove_suffix(1);
  unsigned int seconds = 0;
  static_cast<void>(NumberText::ReadPlainInteger(digits.substr(0, point), seconds));
  const unsigned int minutes = std::min(seconds / 60, kMinutesPerDay - 1);  // a leap second is 23:59:60
  out = NumberText::WriteInteger(out, minutes / 60, 2);
  out = NumberText::WriteInteger(out, minutes % 60, 2);
  out = NumberText::WriteInteger(out, seconds - 60 * minutes, 2);
  digits.remove_prefix(point);
  return out + digits.copy(out, digits.size());
}

// Rounding comes first: 59.996 s is the next minute, and what rounds to a whole day 24 h.
char* WriteTimeInHundredths(char* out, double secondsOfDay) {
  constexpr double kHalf = 0.5;
  const auto hundredths = static_cast<unsigned int>(secondsOfDay * 100 + kHalf);
  const unsigned int seconds = hundredths / 100;
  const unsigned int digits = seconds / 3600 * 10'000 + seconds / 60 % 60 * 100 + seconds % 60;
  out = NumberText::WriteInteger(out, digits, 6);
  *out++ = '.';
  return NumberText::WriteInteger(out, hundredths % 100, 2);
}

// Of arc, beyond the whole degrees. Minutes that round to 60 stay 60: they are not carried.
double MinutesOf(double magnitude) { return (magnitude - static_cast<unsigned int>(magnitude)) * 60; }

template <class WriteMinutes>
char* WriteAngle(char* out, const S_AngleStyle& style, double degrees, S_AngleLayout layout,
                 const WriteMinutes& writeMinutes) {
  const char letter = degrees < 0 ? style.negative : style.positive;
  if (layout.leadingComma) *out++ = ',';
  if (!layout.directionAfter) *out++ = letter;
  out = NumberText::WriteInteger(out, static_cast<unsigned int>(std::fabs(degrees)), style.degreeDigits);
  out = writeMinutes(out);
  if (!layout.directionAfter) return out;
  *out++ = ',';
  *out++ = letter;
  return out;
}

}  // namespace

// "123519.00". The negated condition refuses NaN as well.
unsigned int AppendTime(C_SentenceText& sentence, double notAvailable, double secondsOfDay, bool leadingComma) {
  if (secondsOfDay == notAvailable) return sentence.Append(std::string_view(leadingComma ? "," : ""));
  const bool hasAllDigits = sentence.DigitsOfTimes() == TimeDigits::All;
  const double limit = hasAllDigits ? kSecondsPerDay + 1 : kSecondsPerDay;
  if (!(secondsOfDay >= 0 && secondsOfDay < limit)) return eResultOutOfRange;
  return AppendWritten(sentence, [&](char* at) {
    if (leadingComma) *at++ = ',';
    return hasAllDigits ? WriteTimeWithAllDigits(at, secondsOfDay) : WriteTimeInHundredths(at, secondsOfDay);
  });
}

// "4807.03800000,N"; some sentences of other systems put the letter first.
unsigned int AppendAngle(C_SentenceText& sentence, const S_AngleStyle& style, const C_PrintFormat& minutesFormat,
                         double notAvailable, double degrees, S_AngleLayout layout) {
  // Number and letter are fields of their own.
  if (degrees == notAvailable) return sentence.Append(std::string_view(layout.leadingComma ? ",," : ","));
  // NaN fails this comparison, so it is refused, too.
  if (!(std::fabs(degrees) <= style.limit)) return eResultOutOfRange;
  const double minutes = MinutesOf(std::fabs(degrees));
  if (minutesFormat.IsPlain(minutes)) {
    return AppendWritten(sentence, [&](char* at) {
      const auto writeMinutes = [&](char* out) { return minutesFormat.PrintPlain(out, minutes); };
      return WriteAngle(at, style, degrees, layout, writeMinutes);
    });
  }
  // A format of the host: its text may have any length.
  C_FieldText printed;
  minutesFormat.Print(printed, minutes);
  const std::string_view text = printed.View();
  if (printed.IsTooLong() || text.size() > C_NMEA_EncodeDecode::kMaxMessageLength) return eResultPastEnd;
  C_FieldText field;
  field.SetEnd(
      WriteAngle(field.End(), style, degrees, layout, [text](char* out) { return out + text.copy(out, text.size()); }));
  return sentence.Append(field);
}

unsigned int EndSentence(C_SentenceText& sentence, unsigned short& length) {
  // "$GPGGA," is seven characters, so a shorter text has no field. The upper limit leaves room for "*hh", CR LF and the
  // NUL in 1024 bytes.
  constexpr std::size_t kMinLength = 8;
  constexpr std::string_view kLineEnd = "\r\n";
  const std::size_t textLength = sentence.View().size();
  if (textLength < kMinLength || textLength > C_NMEA_EncodeDecode::kMaxMessageLength) return eResultPastEnd;
  const std::array<char, 3> checksum = ChecksumText(sentence.View());
  sentence.AppendUnchecked({checksum.data(), checksum.size()});
  sentence.AppendUnchecked(kLineEnd);
  length = static_cast<unsigned short>(sentence.View().size());
  return eResultOk;
}

}  // namespace velagnss::textproto

using namespace velagnss::textproto;

unsigned int C_NMEA_EncodeDecode::MsgAdd_CHAR(char* msg, const char* format, char notAvailable, char value,
                                              bool leadingComma) {
  // By way of signed char: the text must not depend on whether the compiler's char has a sign.
  return EmitInteger(msg, format, static_cast<signed char>(notAvailable), static_cast<signed char>(value),
                     leadingComma);
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_S32(char* msg, const char* format, int notAvailable, int value,
                                             bool leadingComma) {
  return EmitInteger(msg, format, notAvailable, value, leadingComma);
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_U32(char* msg, const char* format, unsigned int notAvailable,
                                             unsigned int value, bool leadingComma) {
  // "%u" and "%X" take the bits as unsigned again.
  return EmitInteger(msg, format, static_cast<int>(notAvailable), static_cast<int>(value), leadingComma);
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_DBL(char* msg, const char* format, const double& notAvailable,
                                             const double& value, bool leadingComma) {
  C_PrintFormat parsed;
  if (msg == nullptr || format == nullptr) return eResultNull;
  if (!parsed.Parse(format, C_PrintFormat::kRealConversions)) return eResultNull;
  C_SentenceText sentence(msg);
  return AppendValue(sentence, parsed, notAvailable, value, leadingComma);
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_TimeOfDay(char* msg, double notAvailable, const double& secondsOfDay,
                                                   bool leadingComma) {
  if (msg == nullptr) return eResultNull;
  C_SentenceText sentence(msg);
  return AppendTime(sentence, notAvailable, secondsOfDay, leadingComma);
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_LatDegMin(char* msg, const char* minutesFormat, double notAvailable,
                                                   const double& degrees, bool directionAfter, bool leadingComma) {
  return EmitAngle(msg, kLatitudeStyle, minutesFormat, notAvailable, degrees, {directionAfter, leadingComma});
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_LonDegMin(char* msg, const char* minutesFormat, double notAvailable,
                                                   const double& degrees, bool directionAfter, bool leadingComma) {
  return EmitAngle(msg, kLongitudeStyle, minutesFormat, notAvailable, degrees, {directionAfter, leadingComma});
}

unsigned int C_NMEA_EncodeDecode::MsgAdd_ChecksumCrLf(char* msg, unsigned short& length) const {
  if (msg == nullptr) return eResultNull;
  C_SentenceText sentence(msg);
  return EndSentence(sentence, length);
}
