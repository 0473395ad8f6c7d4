// Nearly all fields are plain digits, so each reader tries those first. Only the rest pays for the check of every
// character and for the full scan.
#include "textproto/FieldValues.h"

#include <cstdint>
#include <limits>

#include "geo/NotAvailable.h"
#include "textproto/CharSet.h"
#include "textproto/NumberText.h"

namespace velagnss::textproto {
namespace {

constexpr C_CharSet kUnsignedChars(" +0123456789");
constexpr C_CharSet kSignedChars(" +-0123456789");
constexpr C_CharSet kDecimalChars(" +-.0123456789DEde");

// Steps that all text-to-number readers share; `scan` converts. Out of line, because nearly all fields are plain digits
// and never come here.
template <class Value>
[[gnu::noinline]] bool ParseStrictly(std::string_view text, const C_CharSet& allowed,
                                     std::size_t (*scan)(std::string_view, Value&), Value& value, bool allowEmpty) {
  // Modulo 65,536, as the header promises. No field of a sentence is that long.
  if (static_cast<unsigned short>(text.size()) == 0) {
    if (allowEmpty) value = 0;
    return allowEmpty;
  }
  for (const char c : text)
    if (!allowed.Contains(c)) return false;
  return scan(text, value) != 0;
}

// The wide reader's result in a narrower type; a value outside its range is a failure, never clamped: 300 satellites
// must not become 255, which is the marker for "not available".
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

// Two digits of a field, from `first` on. A blank or a sign may take the place of the first digit.
template <class Value>
bool ParsePair(std::string_view field, std::size_t first, Value& value) {
  unsigned int pair = 0;
  if (!StrToU32(field.substr(first, 2), pair, 1)) return false;
  value = static_cast<Value>(pair);
  return true;
}

}  // namespace

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

// "123519.00" is 12:35:19. NMEA 0183 leaves the number of decimals open.
bool ParseTimeOfDay(std::string_view field, unsigned int& hours, unsigned int& minutes, double& seconds) {
  constexpr std::size_t kSecondsLength = 5;  // ss.ss; receivers send three decimals and more, the rest is ignored
  hours = 0;
  minutes = 0;
  seconds = field.empty() ? NA_DOUBLE : 0.0;
  if (field.empty()) return true;
  if (field.size() < 6) return false;
  return ParsePair(field, 0, hours) && ParsePair(field, 2, minutes) &&
         StrToDBL(field.substr(4, kSecondsLength), seconds, 1);
}

bool ParseTimeOfDaySeconds(std::string_view field, double& secondsOfDay) {
  unsigned int hours = 0;
  unsigned int minutes = 0;
  double seconds = 0.0;
  secondsOfDay = 0.0;
  if (!ParseTimeOfDay(field, hours, minutes, seconds)) return false;
  // No check of ranges: 235960 is a leap second.
  secondsOfDay = IsNotAvailable(seconds) ? NA_DOUBLE : hours * 3600 + minutes * 60 + seconds;
  return true;
}

bool ParseTimeOfDayDigits(std::string_view field, double& secondsOfDay) {
  constexpr std::size_t kPoint = 6;
  constexpr std::size_t kMaxDecimals = 9;  // with the seconds of a day 15 digits: exact in a double
  if (!ParseTimeOfDaySeconds(field, secondsOfDay)) return false;
  unsigned int digits = 0;
  if (field.size() <= kPoint || field[kPoint] != '.' || !NumberText::ReadPlainInteger(field.substr(0, kPoint), digits))
    return true;
  // As one integer and one division: the number is then the one nearest to the text.
  std::uint64_t number = digits / 10000 * 3600 + digits / 100 % 100 * 60 + digits % 100;
  double scale = 1;
  for (const char c : field.substr(kPoint + 1, kMaxDecimals)) {
    if (c < '0' || c > '9') break;
    number = number * 10 + static_cast<unsigned int>(c - '0');
    scale *= 10;
  }
  secondsOfDay = static_cast<double>(number) / scale;
  return true;
}

// "4807.038" is 48 degrees and 7.038 minutes, "00833.91522" 8 degrees and 33.91522 minutes.
// field = degree+ minute minute "." digit*. How many digits of degrees there are is not said: the minutes are found
// from the point.
bool ParseDegreesMinutes(std::string_view field, double& degrees) {
  constexpr std::size_t kMinuteDigits = 2;  // before the point
  constexpr std::size_t kMinLength = 6;
  if (field.size() >= kMinLength && NumberText::ReadPlainAngle(field, degrees)) return true;
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

// "010324" is 1 March 2024.
bool ParseDate(std::string_view field, const S_Date& defaultDate, S_Date& date) {
  constexpr unsigned short kCentury = 2000;  // two digits do not say which
  date = defaultDate;
  if (field.size() < 6) return field.empty();
  if (!ParsePair(field, 0, date.day) || !ParsePair(field, 2, date.month) || !ParsePair(field, 4, date.year))
    return false;
  date.year = static_cast<unsigned short>(date.year + kCentury);
  return true;
}

}  // namespace velagnss::textproto
