// Fields of text sentences as numbers, times and dates, and small helpers for strings. Internal.
//
// The parsers are stricter than the C library's scanning: every character of a field must be one that such a number
// may hold, so that "12A" is refused instead of read as 12. Then the number is read as a scan would: blanks and a sign
// may lead, and what follows the number ("5 5", "12+3") does not matter. A number that its type cannot hold is refused.
// All return true on success.
//
// A field is given as a C string or, with the same results, as a view: a view lets decoders parse in place.
#ifndef VELAGNSS_TEXTPROTO_FIELD_PARSERS_H
#define VELAGNSS_TEXTPROTO_FIELD_PARSERS_H

#include <string_view>

namespace UTIL {

// Text to number; `value` is written on success only. An empty text gives 0 where `allowEmpty` is set, else it is
// refused, as null is. (The length is taken modulo 65,536 for the test for emptiness.)
bool StrToU32(const char* text, unsigned int& value, unsigned char allowEmpty);    // blanks, "+", digits
bool StrToU16(const char* text, unsigned short& value, unsigned char allowEmpty);  // the same, up to 65535
bool StrToU8(const char* text, unsigned char& value, unsigned char allowEmpty);    // the same, up to 255
bool StrToS32(const char* text, int& value, unsigned char allowEmpty);             // blanks, "+", "-", digits
bool StrToS8(const char* text, signed char& value, unsigned char allowEmpty);      // the same, -128 to 127
bool StrToDBL(const char* text, double& value, unsigned char allowEmpty);  // blanks, signs, ".", digits, "D", "E"; "D"
                                                                           // passes but is no exponent: "1.5d3" is 1.5

// Its result is inverted: a text that is a number is refused and nothing written; any other text succeeds with 0.
// Callers rely on nothing else.
bool StrToS16(const char* text, short& value, unsigned char allowEmpty);

bool StrToU32(std::string_view text, unsigned int& value, unsigned char allowEmpty);
bool StrToU16(std::string_view text, unsigned short& value, unsigned char allowEmpty);
bool StrToU8(std::string_view text, unsigned char& value, unsigned char allowEmpty);
bool StrToS32(std::string_view text, int& value, unsigned char allowEmpty);
bool StrToS8(std::string_view text, signed char& value, unsigned char allowEmpty);
bool StrToDBL(std::string_view text, double& value, unsigned char allowEmpty);

// Field to number: an empty or null field gives the default with success, a field that is no such number the default
// with failure.
bool ParseFieldU8(const char* field, unsigned char defaultValue, unsigned char& value);
bool ParseFieldS8(const char* field, signed char defaultValue, signed char& value);
bool ParseFieldU16(const char* field, unsigned short defaultValue, unsigned short& value);
bool ParseFieldU32(const char* field, unsigned int defaultValue, unsigned int& value);
bool ParseFieldDBL(const char* field, double defaultValue, double& value);

// The same for hexadecimal digits, but no character is refused beforehand ("5G" reads 5) and a failure leaves `value`
// as it was.
bool ParseFieldHex32(const char* field, unsigned int defaultValue, unsigned int& value);

bool ParseFieldU8(std::string_view field, unsigned char defaultValue, unsigned char& value);
bool ParseFieldS8(std::string_view field, signed char defaultValue, signed char& value);
bool ParseFieldU16(std::string_view field, unsigned short defaultValue, unsigned short& value);
bool ParseFieldU32(std::string_view field, unsigned int defaultValue, unsigned int& value);
bool ParseFieldDBL(std::string_view field, double defaultValue, double& value);
bool ParseFieldHex32(std::string_view field, unsigned int defaultValue, unsigned int& value);

// hhmmss.ss, of NMEA 0183. Of the seconds at most five characters are read. The outputs are 0 first and hold what was
// read before a failure. An empty field succeeds with the seconds not available (NA_DOUBLE); null, and a field of 1 to
// 5 characters, fail.
bool ParseTimeOfDay(const char* field, unsigned int& hours, unsigned int& minutes, double& seconds);
bool ParseTimeOfDay(std::string_view field, unsigned int& hours, unsigned int& minutes, double& seconds);

// The same in seconds of the day; NA_DOUBLE of an empty field, 0.0 after a failure. Ranges are not checked.
bool ParseTimeOfDaySeconds(const char* field, double& secondsOfDay);
bool ParseTimeOfDaySeconds(std::string_view field, double& secondsOfDay);

// (d)ddmm.mmmm in degrees, without sign. The last two digits before the first "." and all behind them are minutes; the
// "." must stand at index 3 or later. 0.0 after a failure, NA_DOUBLE of an empty field; null, and a field of 1 to 5
// characters, fail.
bool ParseDegreesMinutes(const char* field, double& degrees);
bool ParseDegreesMinutes(std::string_view field, double& degrees);

// ddmmyy, the year from 2000 on. The outputs get the defaults first; an empty field keeps them and succeeds. Null, and
// a field of 1 to 5 characters, fail. Characters behind the sixth do not matter, ranges are not checked. After a
// failure the outputs hold what was read before it.
bool ParseDate(const char* field, unsigned short defaultYear, unsigned char defaultMonth, unsigned char defaultDay,
               unsigned short& year, unsigned char& month, unsigned char& day);
bool ParseDate(std::string_view field, unsigned short defaultYear, unsigned char defaultMonth, unsigned char defaultDay,
               unsigned short& year, unsigned char& month, unsigned char& day);

// Writes ddmmyy and a NUL to `out` (7 bytes). A date of which any part equals its not-available value becomes an empty
// text, with success; month beyond 1 to 12 or day beyond 1 to 31 an empty text with failure.
bool FormatDate(unsigned short year, unsigned char month, unsigned char day, unsigned short naYear,
                unsigned char naMonth, unsigned char naDay, char* out);

// Seconds of the day, rounded to hundredths, as hours, minutes and seconds. What rounds to 86400 s is 24 h. Not finite
// or beyond 64 bits of hundredths: all zero.
void SplitTimeOfDay(double secondsOfDay, unsigned char& hours, unsigned char& minutes, double& seconds);

// Reverses `count` bytes in place. False for null.
bool ReverseBytes(unsigned char* bytes, unsigned char count);

// Copies `src`, or `fallback` when that is null, as far as it fits into `destSize` bytes with its NUL. Nothing happens
// when there is no destination or nothing to copy.
void CopyStringBounded(char* dest, const char* src, const char* fallback, unsigned int destSize);

// Last occurrence of `c`; null when there is none, or no text.
const char* FindLastChar(const char* text, char c);

}  // namespace UTIL

#endif  // VELAGNSS_TEXTPROTO_FIELD_PARSERS_H
