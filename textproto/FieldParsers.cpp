#include "textproto/FieldParsers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "geo/NotAvailable.h"
#include "textproto/CharSet.h"
#include "textproto/NumberText.h"

namespace {

constexpr C_CharSet kUnsignedChars(" +0123456789");
constexpr C_CharSet kSignedChars(" +-0123456789");
constexpr C_CharSet kDecimalChars(" +-.0123456789DEde");

// Steps that all text-to-number parsers share; `scan` converts. Out of line, because nearly all fields are plain digits
// and never come here.
template <class Value>
[[gnu::noinline]] bool ParseStrictly(std::string_view text, const C_CharSet& allowed,
                                     std::size_t (*scan)(std::string_view, Value&), Value& value, bool allowEmpty) {
  if (static_cast<unsigned short>(text.size()) == 0) {
    if (allowEmpty) value = 0;
    return allowEmpty;
  }
  for (const char c : text)
    if (!allowed.Contains(c)) return false;
  return scan(text, value) != 0;
}

// The wide parser's result in a narrower type; out of its range is a failure.
template <class Wide, bool (*Parse)(std::string_view, Wide&, unsigned char), class Narrow>
bool ParseNarrow(std::string_view text, Narrow& value, unsigned char allowEmpty) {
  Wide wide = 0;
  if (!Parse(text, wide, allowEmpty)) return false;
  if (wide < std::numeric_limits<Narrow>::min() || wide > std::numeric_limits<Narrow>::max()) return false;
  value = static_cast<Narrow>(wide);
  return true;
}

template <class Value, bool (*Parse)(std::string_view, Value&, unsigned char)>
bool ParseOrDefault(std::string_view field, Value defaultValue, Value& value) {
  if (field.empty()) {
    value = defaultValue;
    return true;
  }
  if (Parse(field, value, 1)) return true;
  value = defaultValue;
  return false;
}

// A null field is an empty one.
std::string_view FieldView(const char* field) { return field == nullptr ? std::string_view() : field; }

// Two digits of a field, from `first` on
template <class Value>
bool ParsePair(std::string_view field, std::size_t first, Value& value) {
  unsigned int pair = 0;
  if (!UTIL::StrToU32(field.substr(first, 2), pair, 1)) return false;
  value = static_cast<Value>(pair);
  return true;
}

}  // namespace

namespace UTIL {

bool StrToU32(std::string_view text, unsigned int& value, unsigned char allowEmpty) {
  return NumberText::ReadPlainInteger(text, value) ||
         ParseStrictly(text, kUnsignedChars, NumberText::ScanU32, value, allowEmpty != 0);
}
bool StrToS32(std::string_view text, int& value, unsigned char allowEmpty) {
  return ParseStrictly(text, kSignedChars, NumberText::ScanS32, value, allowEmpty != 0);
}
bool StrToDBL(std::string_view text, double& value, unsigned char allowEmpty) {
  return NumberText::ReadPlainDecimal(text, value) ||
         ParseStrictly(text, kDecimalChars, NumberText::ScanDouble, value, allowEmpty != 0);
}
bool StrToU16(std::string_view text, unsigned short& value, unsigned char allowEmpty) {
  return ParseNarrow<unsigned int, StrToU32>(text, value, allowEmpty);
}
bool StrToU8(std::string_view text, unsigned char& value, unsigned char allowEmpty) {
  return ParseNarrow<unsigned int, StrToU32>(text, value, allowEmpty);
}
bool StrToS8(std::string_view text, signed char& value, unsigned char allowEmpty) {
  return ParseNarrow<int, StrToS32>(text, value, allowEmpty);
}

bool StrToU32(const char* text, unsigned int& value, unsigned char allowEmpty) {
  return text != nullptr && StrToU32(std::string_view(text), value, allowEmpty);
}
bool StrToU16(const char* text, unsigned short& value, unsigned char allowEmpty) {
  return text != nullptr && StrToU16(std::string_view(text), value, allowEmpty);
}
bool StrToU8(const char* text, unsigned char& value, unsigned char allowEmpty) {
  return text != nullptr && StrToU8(std::string_view(text), value, allowEmpty);
}
bool StrToS32(const char* text, int& value, unsigned char allowEmpty) {
  return text != nullptr && StrToS32(std::string_view(text), value, allowEmpty);
}
bool StrToS8(const char* text, signed char& value, unsigned char allowEmpty) {
  return text != nullptr && StrToS8(std::string_view(text), value, allowEmpty);
}
bool StrToDBL(const char* text, double& value, unsigned char allowEmpty) {
  return text != nullptr && StrToDBL(std::string_view(text), value, allowEmpty);
}

bool StrToS16(const char* text, short& value, unsigned char allowEmpty) {
  int number = 0;
  if (StrToS32(text, number, allowEmpty)) return false;
  value = 0;
  return true;
}

bool ParseFieldU8(std::string_view field, unsigned char defaultValue, unsigned char& value) {
  return ParseOrDefault<unsigned char, StrToU8>(field, defaultValue, value);
}
bool ParseFieldS8(std::string_view field, signed char defaultValue, signed char& value) {
  return ParseOrDefault<signed char, StrToS8>(field, defaultValue, value);
}
bool ParseFieldU16(std::string_view field, unsigned short defaultValue, unsigned short& value) {
  return ParseOrDefault<unsigned short, StrToU16>(field, defaultValue, value);
}
bool ParseFieldU32(std::string_view field, unsigned int defaultValue, unsigned int& value) {
  return ParseOrDefault<unsigned int, StrToU32>(field, defaultValue, value);
}
bool ParseFieldDBL(std::string_view field, double defaultValue, double& value) {
  return ParseOrDefault<double, StrToDBL>(field, defaultValue, value);
}
bool ParseFieldHex32(std::string_view field, unsigned int defaultValue, unsigned int& value) {
  if (!field.empty()) return NumberText::ScanHex32(field, value) != 0;
  value = defaultValue;
  return true;
}

bool ParseFieldU8(const char* field, unsigned char defaultValue, unsigned char& value) {
  return ParseFieldU8(FieldView(field), defaultValue, value);
}
bool ParseFieldS8(const char* field, signed char defaultValue, signed char& value) {
  return ParseFieldS8(FieldView(field), defaultValue, value);
}
bool ParseFieldU16(const char* field, unsigned short defaultValue, unsigned short& value) {
  return ParseFieldU16(FieldView(field), defaultValue, value);
}
bool ParseFieldU32(const char* field, unsigned int defaultValue, unsigned int& value) {
  return ParseFieldU32(FieldView(field), defaultValue, value);
}
bool ParseFieldDBL(const char* field, double defaultValue, double& value) {
  return ParseFieldDBL(FieldView(field), defaultValue, value);
}
bool ParseFieldHex32(const char* field, unsigned int defaultValue, unsigned int& value) {
  return ParseFieldHex32(FieldView(field), defaultValue, value);
}

bool ParseTimeOfDay(std::string_view field, unsigned int& hours, unsigned int& minutes, double& seconds) {
  constexpr std::size_t kSecondsLength = 5;  // ss.ss
  hours = 0;
  minutes = 0;
  seconds = field.empty() ? NA_DOUBLE : 0.0;
  if (field.empty()) return true;
  if (field.size() < 6) return false;
  return ParsePair(field, 0, hours) && ParsePair(field, 2, minutes) &&
         StrToDBL(field.substr(4, kSecondsLength), seconds, 1);
}

bool ParseTimeOfDay(const char* field, unsigned int& hours, unsigned int& minutes, double& seconds) {
  if (field != nullptr) return ParseTimeOfDay(std::string_view(field), hours, minutes, seconds);
  hours = 0;
  minutes = 0;
  seconds = 0.0;
  return false;
}

bool ParseTimeOfDaySeconds(std::string_view field, double& secondsOfDay) {
  unsigned int hours = 0;
  unsigned int minutes = 0;
  double seconds = 0.0;
  secondsOfDay = 0.0;
  if (!ParseTimeOfDay(field, hours, minutes, seconds)) return false;
  secondsOfDay = IsNotAvailable(seconds) ? NA_DOUBLE : hours * 3600 + minutes * 60 + seconds;
  return true;
}

bool ParseTimeOfDaySeconds(const char* field, double& secondsOfDay) {
  if (field != nullptr) return ParseTimeOfDaySeconds(std::string_view(field), secondsOfDay);
  secondsOfDay = 0.0;
  return false;
}

bool ParseDegreesMinutes(std::string_view field, double& degrees) {
  constexpr std::size_t kMinuteDigits = 2;  // before the point
  constexpr std::size_t kMinLength = 6;
  degrees = field.empty() ? NA_DOUBLE : 0.0;
  if (field.empty()) return true;
  const std::size_t point = field.find('.');
  if (field.size() < kMinLength || point == std::string_view::npos || point <= kMinuteDigits) return false;
  unsigned int wholeDegrees = 0;
  double minutes = 0.0;
  if (!StrToU32(field.substr(0, point - kMinuteDigits), wholeDegrees, 1)) return false;
  if (!StrToDBL(field.substr(point - kMinuteDigits), minutes, 1)) return false;
  degrees = wholeDegrees + minutes / 60;
  return true;
}

bool ParseDegreesMinutes(const char* field, double& degrees) {
  if (field != nullptr) return ParseDegreesMinutes(std::string_view(field), degrees);
  degrees = 0.0;
  return false;
}

bool ParseDate(std::string_view field, unsigned short defaultYear, unsigned char defaultMonth, unsigned char defaultDay,
               unsigned short& year, unsigned char& month, unsigned char& day) {
  constexpr unsigned short kCentury = 2000;
  year = defaultYear;
  month = defaultMonth;
  day = defaultDay;
  if (field.size() < 6) return field.empty();
  if (!ParsePair(field, 0, day) || !ParsePair(field, 2, month) || !ParsePair(field, 4, year)) return false;
  year = static_cast<unsigned short>(year + kCentury);
  return true;
}

bool ParseDate(const char* field, unsigned short defaultYear, unsigned char defaultMonth, unsigned char defaultDay,
               unsigned short& year, unsigned char& month, unsigned char& day) {
  const bool isSuccess = ParseDate(FieldView(field), defaultYear, defaultMonth, defaultDay, year, month, day);
  return isSuccess && field != nullptr;
}

bool FormatDate(unsigned short year, unsigned char month, unsigned char day, unsigned short naYear,
                unsigned char naMonth, unsigned char naDay, char* out) {
  if (out == nullptr) return false;
  *out = '\0';
  if (month == naMonth || day == naDay || year == naYear) return true;
  if (month < 1 || month > 12 || day < 1 || day > 31) return false;
  out = NumberText::WriteInteger(out, day, 2);
  out = NumberText::WriteInteger(out, month, 2);
  out = NumberText::WriteInteger(out, year % 100, 2);
  *out = '\0';
  return true;
}

void SplitTimeOfDay(double secondsOfDay, unsigned char& hours, unsigned char& minutes, double& seconds) {
  constexpr double kLimit = 0x1p63;  // of a 64-bit integer
  const double hundredths = std::floor(secondsOfDay * 100 + 0.5);
  const bool isInRange = hundredths >= -kLimit && hundredths < kLimit;
  const double rounded = isInRange ? static_cast<double>(static_cast<std::int64_t>(hundredths)) / 100.0 : 0.0;
  hours = static_cast<unsigned char>(static_cast<std::int64_t>(rounded / 3600));
  const double rest = rounded - 3600.0 * hours;
  minutes = static_cast<unsigned char>(static_cast<std::int64_t>(rest / 60));
  seconds = rest - 60.0 * minutes;
}

bool ReverseBytes(unsigned char* bytes, unsigned char count) {
  if (bytes == nullptr) return false;
  std::reverse(bytes, bytes + count);
  return true;
}

void CopyStringBounded(char* dest, const char* src, const char* fallback, unsigned int destSize) {
  const char* const source = src != nullptr ? src : fallback;
  if (dest == nullptr || destSize == 0 || source == nullptr) return;
  const std::size_t length = std::min<std::size_t>(destSize - 1, std::strlen(source));
  std::memcpy(dest, source, length);
  dest[length] = '\0';
}

const char* FindLastChar(const char* text, char c) {
  if (text == nullptr || *text == '\0' || c == '\0') return nullptr;
  return std::strrchr(text, c);
}

}  // namespace UTIL
