// Fields of text sentences as numbers, times and dates, given as C strings, and small helpers for strings. Internal.
//
// These are kept for host code that uses them; the decoders do not. They read fields in place with
// textproto/FieldValues.h, which does the work here too and says what each kind of field may hold. (Of this header the
// encoder uses `FormatDate`.) All return true on success.
#ifndef VELAGNSS_TEXTPROTO_FIELD_PARSERS_H
#define VELAGNSS_TEXTPROTO_FIELD_PARSERS_H

namespace UTIL {

// Text to number; `value` is written on success only. Null is refused.
bool StrToU32(const char* text, unsigned int& value, unsigned char allowEmpty);
bool StrToU16(const char* text, unsigned short& value, unsigned char allowEmpty);
bool StrToU8(const char* text, unsigned char& value, unsigned char allowEmpty);
bool StrToS32(const char* text, int& value, unsigned char allowEmpty);
bool StrToS8(const char* text, signed char& value, unsigned char allowEmpty);
bool StrToDBL(const char* text, double& value, unsigned char allowEmpty);

// Known oddity, kept: the result is inverted. A text that is a number is refused and nothing is written; any other text
// succeeds with 0.
bool StrToS16(const char* text, short& value, unsigned char allowEmpty);

// Field to number: an empty or null field gives the default with success.
bool ParseFieldU8(const char* field, unsigned char defaultValue, unsigned char& value);
bool ParseFieldS8(const char* field, signed char defaultValue, signed char& value);
bool ParseFieldU16(const char* field, unsigned short defaultValue, unsigned short& value);
bool ParseFieldU32(const char* field, unsigned int defaultValue, unsigned int& value);
bool ParseFieldDBL(const char* field, double defaultValue, double& value);
bool ParseFieldHex32(const char* field, unsigned int defaultValue, unsigned int& value);

// Times and dates. Null fails, with the times 0 and the date at its defaults.
bool ParseTimeOfDay(const char* field, unsigned int& hours, unsigned int& minutes, double& seconds);
bool ParseTimeOfDaySeconds(const char* field, double& secondsOfDay);
bool ParseDate(const char* field, unsigned short defaultYear, unsigned char defaultMonth, unsigned char defaultDay,
               unsigned short& year, unsigned char& month, unsigned char& day);

// Writes ddmmyy and a NUL to `out` (7 bytes). A date with any part equal to its not-available value becomes an empty
// text, with success; a month outside 1 to 12 or a day outside 1 to 31 an empty text with failure. Null fails.
bool FormatDate(unsigned short year, unsigned char month, unsigned char day, unsigned short naYear,
                unsigned char naMonth, unsigned char naDay, char* out);

// Seconds of the day, rounded to hundredths, as hours, minutes and seconds. What rounds to 86400 s is 24 h. Not finite
// or beyond 64 bits of hundredths: all zero.
void SplitTimeOfDay(double secondsOfDay, unsigned char& hours, unsigned char& minutes, double& seconds);

// Reverses `count` bytes in place. False for null.
bool ReverseBytes(unsigned char* bytes, unsigned char count);

// Copies `src`, or `fallback` when that is null, as far as it fits into `destSize` bytes with its NUL. Does nothing
// without a destination or without a text to copy.
void CopyStringBounded(char* dest, const char* src, const char* fallback, unsigned int destSize);

// Last occurrence of `c`; null when there is none, or no text.
const char* FindLastChar(const char* text, char c);

}  // namespace UTIL

#endif  // VELAGNSS_TEXTPROTO_FIELD_PARSERS_H
