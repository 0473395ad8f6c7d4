// Numbers as text, read and written as the C library's scan and print formats do in the C locale, whatever the
// program's locale is. Nothing is allocated. Internal.
#ifndef VELAGNSS_TEXTPROTO_NUMBER_TEXT_H
#define VELAGNSS_TEXTPROTO_NUMBER_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace velagnss::textproto::NumberText {

// Reading. Leading white space is skipped, then a sign may come, then the number. The result is the number of
// characters used, from the start of `text`; what follows them does not matter. 0 with `value` untouched: no number
// there, a number that is cut off ("1e", "0x"), or one that its type cannot hold.

std::size_t ScanU32(std::string_view text, unsigned int& value);  // "%u"; a negative number wraps
std::size_t ScanS32(std::string_view text, int& value);           // "%d"
std::size_t ScanS64(std::string_view text, long long& value);     // "%lld"

// "%x" and "%llx": "0x" may lead, either case; a negative number wraps.
std::size_t ScanHex32(std::string_view text, unsigned int& value);
std::size_t ScanHex64(std::string_view text, unsigned long long& value);

// "%lf": decimal and hexadecimal ("0x1.8p3") numbers, "inf", "infinity" and "nan" in either case. Rounded to nearest;
// what is too small for a double reads as a subnormal number or zero with its sign.
std::size_t ScanDouble(std::string_view text, double& value);

// The common case at its fastest: the whole text is digits, for a decimal perhaps with a point among them. False with
// `value` untouched for all else, long texts included; the functions above read that.
inline bool ReadFewDigits(std::string_view text, unsigned int& value);  // one to three
inline bool ReadPlainInteger(std::string_view text, unsigned int& value);
bool ReadPlainDecimal(std::string_view text, double& value);

// Degrees and minutes of arc, "4807.038": degrees, two digits of minutes, a point and up to 13 decimals.
bool ReadPlainAngle(std::string_view text, double& degrees);

// Writing: from `out` on, without a NUL; the result is the end of what was written.

// Characters that WriteFixed needs at most, besides the decimals: sign, 309 digits and the point.
inline constexpr std::size_t kMaxFixedLength = 1 + 309 + 1;
inline constexpr unsigned int kMaxDecimals = 20;  // that WriteFixed writes
// Characters that WriteInteger needs at most, when `width` is less.
inline constexpr std::size_t kMaxIntegerLength = 20;

// "%0<width>.<decimals>f", correctly rounded, halves to even; not finite: "inf", "nan", with "-" where the sign is set.
// Up to kMaxDecimals decimals; the width is for finite values only.
char* WriteFixed(char* out, double value, unsigned int decimals, unsigned int width = 0);

// "%0<width>lld"
char* WriteInteger(char* out, long long value, unsigned int width = 0);

// --- Implementation ---

namespace Implementation {

// The value of a digit, and more than 9 for any other character: unsigned, so that those below "0" are beyond it too.
inline unsigned int DigitOf(char c) { return static_cast<unsigned char>(c) - static_cast<unsigned int>('0'); }

// Appends the digits from `at` on to the number, as far as they go; gives back where they end.
inline const char* AppendDigits(const char* at, const char* end, std::uint64_t& number) {
  for (; at != end; ++at) {
    const unsigned int digit = DigitOf(*at);
    if (digit > 9) break;
    number = number * 10 + digit;
  }
  return at;
}

}  // namespace Implementation

inline bool ReadFewDigits(std::string_view text, unsigned int& value) {
  using Implementation::DigitOf;
  if (text.empty() || text.size() > 3) return false;
  unsigned int number = DigitOf(text[0]);
  bool areDigits = number <= 9;
  for (std::size_t i = 1; i < text.size(); ++i) {
    areDigits &= DigitOf(text[i]) <= 9;
    number = 10 * number + DigitOf(text[i]);
  }
  if (areDigits) value = number;
  return areDigits;
}

inline bool ReadPlainInteger(std::string_view text, unsigned int& value) {
  constexpr std::size_t kMaxDigits = 9;  // that 32 bits hold whatever they are
  if (text.empty() || text.size() > kMaxDigits) return false;
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  if (Implementation::AppendDigits(text.data(), end, number) != end) return false;
  value = static_cast<unsigned int>(number);
  return true;
}

}  // namespace velagnss::textproto::NumberText

#endif  // VELAGNSS_TEXTPROTO_NUMBER_TEXT_H
