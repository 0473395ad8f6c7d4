// The same results as the readers of FieldValues.h for C strings, and what becomes of null.
#include "textproto/FieldParsers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "textproto/FieldValues.h"
#include "textproto/NumberText.h"

namespace Fields = velagnss::textproto;

namespace {

// A null field is an empty one.
std::string_view FieldView(const char* field) { return field == nullptr ? std::string_view() : field; }

// A reader of FieldValues.h for a C string; null is refused.
template <class Value>
bool ParseText(bool (*parse)(std::string_view, Value&, unsigned char), const char* text, Value& value,
               unsigned char allowEmpty) {
  return text != nullptr && parse(text, value, allowEmpty);
}

}  // namespace

namespace UTIL {

bool StrToU32(const char* text, unsigned int& value, unsigned char allowEmpty) {
  return ParseText<unsigned int>(Fields::StrToU32, text, value, allowEmpty);
}
bool StrToU16(const char* text, unsigned short& value, unsigned char allowEmpty) {
  return ParseText<unsigned short>(Fields::StrToU16, text, value, allowEmpty);
}
bool StrToU8(const char* text, unsigned char& value, unsigned char allowEmpty) {
  return ParseText<unsigned char>(Fields::StrToU8, text, value, allowEmpty);
}
bool StrToS32(const char* text, int& value, unsigned char allowEmpty) {
  return ParseText<int>(Fields::StrToS32, text, value, allowEmpty);
}
bool StrToS8(const char* text, signed char& value, unsigned char allowEmpty) {
  return ParseText<signed char>(Fields::StrToS8, text, value, allowEmpty);
}
bool StrToDBL(const char* text, double& value, unsigned char allowEmpty) {
  return ParseText<double>(Fields::StrToDBL, text, value, allowEmpty);
}

// Inverted on purpose: the header documents it, and host code depends on it.
bool StrToS16(const char* text, short& value, unsigned char allowEmpty) {
  int number = 0;
  if (StrToS32(text, number, allowEmpty)) return false;
  value = 0;
  return true;
}

bool ParseFieldU8(const char* field, unsigned char defaultValue, unsigned char& value) {
  return Fields::ParseFieldU8(FieldView(field), defaultValue, value);
}
bool ParseFieldS8(const char* field, signed char defaultValue, signed char& value) {
  return Fields::ParseFieldS8(FieldView(field), defaultValue, value);
}
bool ParseFieldU16(const char* field, unsigned short defaultValue, unsigned short& value) {
  return Fields::ParseFieldU16(FieldView(field), defaultValue, value);
}
bool ParseFieldU32(const char* field, unsigned int defaultValue, unsigned int& value) {
  return Fields::ParseFieldU32(FieldView(field), defaultValue, value);
}
bool ParseFieldDBL(const char* field, double defaultValue, double& value) {
  return Fields::ParseFieldDBL(FieldView(field), defaultValue, value);
}
bool ParseFieldHex32(const char* field, unsigned int defaultValue, unsigned int& value) {
  return Fields::ParseFieldHex32(FieldView(field), defaultValue, value);
}

bool ParseTimeOfDay(const char* field, unsigned int& hours, unsigned int& minutes, double& seconds) {
  // Null: the field is missing, unlike an empty field, which is a time not available.
  if (field != nullptr) return Fields::ParseTimeOfDay(field, hours, minutes, seconds);
  hours = 0;
  minutes = 0;
  seconds = 0.0;
  return false;
}

bool ParseTimeOfDaySeconds(const char* field, double& secondsOfDay) {
  if (field != nullptr) return Fields::ParseTimeOfDaySeconds(field, secondsOfDay);
  secondsOfDay = 0.0;
  return false;
}

bool ParseDate(const char* field, unsigned short defaultYear, unsigned char defaultMonth, unsigned char defaultDay,
               unsigned short& year, unsigned char& month, unsigned char& day) {
  Fields::S_Date date = {};
  const bool isRead = Fields::ParseDate(FieldView(field), {defaultYear, defaultMonth, defaultDay}, date);
  // Written in any case: after a failure hosts read the defaults or what was read before it.
  year = date.year;
  month = date.month;
  day = date.day;
  return isRead && field != nullptr;
}

bool FormatDate(unsigned short year, unsigned char month, unsigned char day, unsigned short naYear,
                unsigned char naMonth, unsigned char naDay, char* out) {
  using Fields::NumberText::WriteInteger;
  if (out == nullptr) return false;
  *out = '\0';
  // Markers first: month 255 is "not available" rather than out of range.
  if (month == naMonth || day == naDay || year == naYear) return true;
  if (month < 1 || month > 12 || day < 1 || day > 31) return false;
  // ddmmyy, as in RMC: "010324" is 1 March 2024.
  out = WriteInteger(out, day, 2);
  out = WriteInteger(out, month, 2);
  out = WriteInteger(out, year % 100, 2);
  *out = '\0';
  return true;
}

// Rounding comes first: 59.996 s is the next minute, never "60.00" seconds of this one.
void SplitTimeOfDay(double secondsOfDay, unsigned char& hours, unsigned char& minutes, double& seconds) {
  constexpr double kLimit = 0x1p63;  // of a 64-bit integer
  const double hundredths = std::floor(secondsOfDay * 100 + 0.5);
  // Converting a double that an integer cannot hold is undefined behavior; NaN fails both comparisons.
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
  // The NUL always fits: the text is cut instead.
  const std::size_t length = std::min<std::size_t>(destSize - 1, std::strlen(source));
  std::memcpy(dest, source, length);
  dest[length] = '\0';
}

const char* FindLastChar(const char* text, char c) {
  // strrchr would find the end of the text for a NUL.
  if (text == nullptr || *text == '\0' || c == '\0') return nullptr;
  return std::strrchr(text, c);
}

}  // namespace UTIL
