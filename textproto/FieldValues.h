// The fields of text sentences as numbers, times, dates and angles, for the decoders. Internal.
//
// The readers are stricter than the C library's scanning: every character of a field must be one that such a number
// may hold, so that "12A" is refused instead of read as 12. Then the number is read as a scan would read it: blanks and
// a sign may lead, and what follows the number ("5 5", "12+3") does not matter. A number that its type cannot hold is
// refused. All return true on success.
//
// Fields are views, so that decoders read them in place. textproto/FieldParsers.h has the same for C strings.
#ifndef VELAGNSS_TEXTPROTO_FIELD_VALUES_H
#define VELAGNSS_TEXTPROTO_FIELD_VALUES_H

#include <string_view>

namespace velagnss::textproto {

// Text to number; `value` is written on success only. An empty text gives 0 where `allowEmpty` is set, and is refused
// otherwise. (The length is taken modulo 65,536 for the test for emptiness.)
bool StrToU32(std::string_view text, unsigned int& value, unsigned char allowEmpty);    // blanks, "+", digits
bool StrToU16(std::string_view text, unsigned short& value, unsigned char allowEmpty);  // the same, up to 65535
bool StrToU8(std::string_view text, unsigned char& value, unsigned char allowEmpty);    // the same, up to 255
bool StrToS32(std::string_view text, int& value, unsigned char allowEmpty);             // blanks, "+", "-", digits
bool StrToS8(std::string_view text, signed char& value, unsigned char allowEmpty);      // the same, -128 to 127
bool StrToDBL(std::string_view text, double& value, unsigned char allowEmpty);  // blanks, signs, ".", digits, "D", "E";
                                                                                // "D" passes but is not an exponent:
                                                                                // "1.5d3" is 1.5

// Field to number: an empty field gives the default with success, a field that is not such a number gives the default
// with failure.
bool ParseFieldU8(std::string_view field, unsigned char defaultValue, unsigned char& value);
bool ParseFieldS8(std::string_view field, signed char defaultValue, signed char& value);
bool ParseFieldU16(std::string_view field, unsigned short defaultValue, unsigned short& value);
bool ParseFieldU32(std::string_view field, unsigned int defaultValue, unsigned int& value);
bool ParseFieldDBL(std::string_view field, double defaultValue, double& value);

// The same for hexadecimal digits, but no character is refused beforehand ("5G" reads 5), and a failure leaves `value`
// as it was.
bool ParseFieldHex32(std::string_view field, unsigned int defaultValue, unsigned int& value);

// hhmmss.ss, of NMEA 0183. At most five characters of the seconds are read. The outputs are set to 0 first and hold
// what was read before a failure. An empty field succeeds with the seconds not available (NA_DOUBLE); a field of 1 to 5
// characters fails.
bool ParseTimeOfDay(std::string_view field, unsigned int& hours, unsigned int& minutes, double& seconds);

// The same in seconds of the day; NA_DOUBLE for an empty field, 0.0 after a failure. Ranges are not checked.
bool ParseTimeOfDaySeconds(std::string_view field, double& secondsOfDay);

// Accepts the same, and reads all decimals of the seconds, up to nine.
bool ParseTimeOfDayDigits(std::string_view field, double& secondsOfDay);

// (d)ddmm.mmmm in degrees, without sign. The last two digits before the first "." and everything after them are
// minutes; the "." must be at index 3 or later. 0.0 after a failure, NA_DOUBLE for an empty field; a field of 1 to 5
// characters fails.
bool ParseDegreesMinutes(std::string_view field, double& degrees);

// A calendar date as sentences give it.
struct S_Date {
  unsigned short year;
  unsigned char month;
  unsigned char day;
};

// ddmmyy, the year from 2000 on. `date` gets the default first; an empty field keeps it and succeeds. A field of 1 to 5
// characters fails. Characters after the sixth do not matter, ranges are not checked. After a failure the date holds
// what was read before it.
bool ParseDate(std::string_view field, const S_Date& defaultDate, S_Date& date);

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_FIELD_VALUES_H
