// Why not the C library or <charconv> alone: scanf and printf follow the locale and are slow, and from_chars reads
// neither blanks nor a plus sign. Numbers of sentences are short; they are read and written with integers, exactly, and
// only the rest is left to <charconv>, which rounds correctly.
#include "textproto/NumberText.h"

#include <array>
#include <bit>
#include <cfloat>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <system_error>

namespace velagnss::textproto::NumberText {
namespace {

constexpr int kNoDigit = 99;

constexpr bool IsSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// ASCII only: tolower follows the locale.
constexpr char ToLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

constexpr int DigitValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = ToLower(c);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : kNoDigit;
}

template <int Base>
constexpr bool IsDigit(char c) {
  return DigitValue(c) < Base;
}

// The text from some position on; reading past its end gives NUL, which is not part of any number.
class C_Reader {
 public:
  explicit C_Reader(std::string_view text) : m_text(text) {}

  char Peek(std::size_t ahead = 0) const { return ahead < m_text.size() - m_used ? m_text[m_used + ahead] : '\0'; }
  void Skip(std::size_t count = 1) { m_used += count; }
  std::size_t Used() const { return m_used; }
  const char* Here() const { return m_text.data() + m_used; }

  void SkipSpace() {
    while (IsSpace(Peek())) Skip();
  }
  bool SkipSign() {  // true if it was a minus
    const char sign = Peek();
    if (sign == '-' || sign == '+') Skip();
    return sign == '-';
  }
  bool SkipWord(std::string_view lowerCase) {
    for (std::size_t i = 0; i < lowerCase.size(); ++i)
      if (ToLower(Peek(i)) != lowerCase[i]) return false;
    Skip(lowerCase.size());
    return true;
  }

 private:
  std::string_view m_text;
  std::size_t m_used = 0;
};

// Reads an integer's magnitude with its sign; false when there is none or it exceeds 64 bits.
template <int Base>
bool ScanMagnitude(C_Reader& reader, bool& isNegative, unsigned long long& magnitude) {
  reader.SkipSpace();
  isNegative = reader.SkipSign();
  // Optional. A lone "0x" has no digits after it and is refused, where scanf would read its 0.
  if (Base == 16) reader.SkipWord("0x");
  if (!IsDigit<Base>(reader.Peek())) return false;
  constexpr unsigned long long kMax = std::numeric_limits<unsigned long long>::max();
  unsigned long long value = 0;
  for (; IsDigit<Base>(reader.Peek()); reader.Skip()) {
    const unsigned int digit = static_cast<unsigned int>(DigitValue(reader.Peek()));
    if (value > (kMax - digit) / Base) return false;
    value = value * Base + digit;
  }
  magnitude = value;
  return true;
}

template <int Base, class Unsigned>
std::size_t ScanUnsigned(std::string_view text, Unsigned& value) {
  C_Reader reader(text);
  bool isNegative = false;
  unsigned long long magnitude = 0;
  if (!ScanMagnitude<Base>(reader, isNegative, magnitude)) return 0;
  if (magnitude > std::numeric_limits<Unsigned>::max()) return 0;
  // As scanf does: "-1" is the greatest value.
  value = static_cast<Unsigned>(isNegative ? 0 - magnitude : magnitude);
  return reader.Used();
}

template <class Signed>
std::size_t ScanSigned(std::string_view text, Signed& value) {
  C_Reader reader(text);
  bool isNegative = false;
  unsigned long long magnitude = 0;
  if (!ScanMagnitude<10>(reader, isNegative, magnitude)) return 0;
  constexpr unsigned long long kMax = std::numeric_limits<Signed>::max();
  if (magnitude > kMax + (isNegative ? 1 : 0)) return 0;
  value = static_cast<Signed>(isNegative ? 0 - magnitude : magnitude);
  return reader.Used();
}

// A positive number as its text gives it: leading digits, and the power of the base that they are to be multiplied by.
struct S_Digits {
  std::uint64_t leading = 0;
  long long exponent = 0;
  int count = 0;           // of significant digits in `leading`
  bool isComplete = true;  // no digit but zeros was left out
};

// Digits that 64 bits hold whatever they are.
template <int Base>
constexpr int kLeadingDigits = Base == 10 ? 19 : 16;

template <int Base>
void AddDigit(S_Digits& digits, int digit, bool isFraction) {
  if (digits.count < kLeadingDigits<Base>) {
    digits.leading = digits.leading * Base + static_cast<unsigned int>(digit);
    // Leading zeros do not use up the digits that fit.
    if (digits.leading != 0) ++digits.count;
    if (isFraction) --digits.exponent;
    return;
  }
  if (digit != 0) digits.isComplete = false;
  if (!isFraction) ++digits.exponent;
}

// mantissa = digit+ [ "." digit* ] | "." digit+
template <int Base>
bool ScanMantissa(C_Reader& reader, S_Digits& digits) {
  const std::size_t start = reader.Used();
  for (; IsDigit<Base>(reader.Peek()); reader.Skip()) AddDigit<Base>(digits, DigitValue(reader.Peek()), false);
  std::size_t digitsSeen = reader.Used() - start;
  if (reader.Peek() != '.') return digitsSeen > 0;
  reader.Skip();
  for (; IsDigit<Base>(reader.Peek()); reader.Skip()) {
    AddDigit<Base>(digits, DigitValue(reader.Peek()), true);
    ++digitsSeen;
  }
  return digitsSeen > 0;
}

// exponent = letter [ "+" | "-" ] digit+. None is exponent 0; a letter without digits is a number cut off.
bool ScanExponent(C_Reader& reader, char letter, long long& exponent) {
  constexpr long long kFarOut = 1'000'000'000'000;  // beyond what any text's digits can make up for
  exponent = 0;
  if (ToLower(reader.Peek()) != letter) return true;
  reader.Skip();
  const bool isNegative = reader.SkipSign();
  if (!IsDigit<10>(reader.Peek())) return false;
  for (; IsDigit<10>(reader.Peek()); reader.Skip())
    // Stops growing instead of overflowing. The digits are still used up.
    if (exponent < kFarOut) exponent = exponent * 10 + DigitValue(reader.Peek());
  if (isNegative) exponent = -exponent;
  return true;
}

// Hands the text [first, last) to the exact conversion of the standard library. `isSmall`: the number is below 1,
// so out of range means that it is zero to a double.
bool ConvertExactly(const char* first, const char* last, std::chars_format format, bool isSmall, double& value) {
  const std::from_chars_result result = std::from_chars(first, last, value, format);
  if (result.ec == std::errc()) return std::isfinite(value);
  value = 0.0;
  return result.ec == std::errc::result_out_of_range && isSmall;
}

// Integers of up to 2^53 times or by a power of ten that is exact: one operation, hence rounded correctly.
constexpr double kPowersOfTen[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                   1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
constexpr std::uint64_t kIntegerPowersOfTen[] = {1, 10, 100, 1000, 10'000, 100'000, 1'000'000, 10'000'000, 100'000'000};
constexpr std::uint64_t kMaxExactInteger = std::uint64_t{1} << DBL_MANT_DIG;
static_assert(FLT_EVAL_METHOD == 0, "intermediate results must be rounded to double");

bool ConvertShortDecimal(const S_Digits& digits, double& value) {
  constexpr long long kMaxExponent = std::size(kPowersOfTen) - 1;
  if (!digits.isComplete || digits.leading > kMaxExactInteger) return false;
  if (digits.exponent < -kMaxExponent || digits.exponent > kMaxExponent) return false;
  const double leading = static_cast<double>(digits.leading);
  value = digits.exponent < 0 ? leading / kPowersOfTen[-digits.exponent] : leading * kPowersOfTen[digits.exponent];
  return true;
}

// Up to 19 digits and small exponents cover all that receivers send; the rest goes to <charconv>.
bool ScanDecimal(C_Reader& reader, double& value) {
  const char* const first = reader.Here();
  S_Digits digits;
  long long exponent = 0;
  if (!ScanMantissa<10>(reader, digits) || !ScanExponent(reader, 'e', exponent)) return false;
  digits.exponent += exponent;
  if (ConvertShortDecimal(digits, value)) return true;
  const bool isSmall = digits.count + digits.exponent <= 0;
  return ConvertExactly(first, reader.Here(), std::chars_format::general, isSmall, value);
}

bool ScanHexadecimal(C_Reader& reader, double& value) {  // after "0x"
  const char* const first = reader.Here();
  S_Digits digits;
  long long exponent = 0;
  if (!ScanMantissa<16>(reader, digits) || !ScanExponent(reader, 'p', exponent)) return false;
  const bool isSmall = digits.leading == 0 || 4 * (digits.count + digits.exponent) + exponent <= 0;
  return ConvertExactly(first, reader.Here(), std::chars_format::hex, isSmall, value);
}

bool ScanInfinity(C_Reader& reader, double& value) {  // after "inf"
  value = std::numeric_limits<double>::infinity();
  // "infin" is a word cut off, neither "inf" with text after it nor "infinity".
  return ToLower(reader.Peek()) != 'i' || reader.SkipWord("inity");
}

bool ScanPositive(C_Reader& reader, double& value) {
  if (reader.SkipWord("0x")) return ScanHexadecimal(reader, value);
  if (reader.SkipWord("inf")) return ScanInfinity(reader, value);
  if (!reader.SkipWord("nan")) return ScanDecimal(reader, value);
  value = std::numeric_limits<double>::quiet_NaN();
  return true;
}

// value times 10^decimals, rounded to an integer, halves to even, as `%.f` rounds; false for numbers and decimals
// beyond the usual.
bool ScaleExactly(double magnitude, unsigned int decimals, std::uint64_t& scaled) {
  __extension__ using t_Wide = unsigned __int128;
  constexpr double kLimit = 1e9;  // times 10^8 that is below 2^63, a mantissa times 10^8 below 2^80
  if (!(magnitude < kLimit) || decimals >= std::size(kIntegerPowersOfTen)) return false;

  const std::uint64_t bits = std::bit_cast<std::uint64_t>(magnitude);
  const unsigned int biased = static_cast<unsigned int>(bits >> 52);
  const std::uint64_t fraction = bits & ((std::uint64_t{1} << 52) - 1);
  const std::uint64_t mantissa = biased == 0 ? fraction : fraction | (std::uint64_t{1} << 52);
  const unsigned int shift = 1075 - (biased == 0 ? 1 : biased);  // value = mantissa / 2^shift; >= 23, as value < 2^30
  const t_Wide product = t_Wide{mantissa} * kIntegerPowersOfTen[decimals];
  if (shift > 81) {  // less than half a unit
    scaled = 0;
    return true;
  }
  const t_Wide remainder = product & ((t_Wide{1} << shift) - 1);
  const t_Wide half = t_Wide{1} << (shift - 1);
  scaled = static_cast<std::uint64_t>(product >> shift);
  if (remainder > half || (remainder == half && (scaled & 1) != 0)) ++scaled;
  return true;
}

// "00" to "99"
constexpr auto kPairs = [] {
  std::array<char, 200> pairs = {};
  for (std::size_t i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// Writes `digits` decimal digits of the value, leading zeros included, in front of `end`.
void WriteDigitsBefore(char* end, std::uint64_t value, std::size_t digits) {
  for (; digits >= 2; digits -= 2, value /= 100) std::memcpy(end -= 2, &kPairs[2 * (value % 100)], 2);
  if (digits != 0) *--end = static_cast<char>('0' + value % 10);
}

std::size_t CountDigits(std::uint64_t value) {
  std::size_t count = 1;
  for (; value >= 100; value /= 100) count += 2;
  return count + (value >= 10 ? 1 : 0);
}

// value / 10^decimals with at least `minLength` characters
char* WriteScaled(char* out, std::uint64_t scaled, unsigned int decimals, std::size_t minLength) {
  const std::uint64_t whole = scaled / kIntegerPowersOfTen[decimals];
  const std::uint64_t fraction = scaled - whole * kIntegerPowersOfTen[decimals];
  const std::size_t fractionLength = decimals == 0 ? 0 : 1 + decimals;
  std::size_t wholeDigits = CountDigits(whole);
  if (wholeDigits + fractionLength < minLength) wholeDigits = minLength - fractionLength;
  char* const point = out + wholeDigits;
  char* const end = point + fractionLength;
  WriteDigitsBefore(point, whole, wholeDigits);
  if (decimals == 0) return end;
  *point = '.';
  WriteDigitsBefore(end, fraction, decimals);
  return end;
}

char* WriteWithLeadingZeros(char* out, std::string_view digits, std::size_t minLength) {
  for (; minLength > digits.size(); --minLength) *out++ = '0';
  return out + digits.copy(out, digits.size());
}

char* WriteNonFinite(char* out, double value) {
  const std::string_view text = std::isnan(value) ? "nan" : "inf";
  return out + text.copy(out, text.size());
}

}  // namespace

std::size_t ScanU32(std::string_view text, unsigned int& value) { return ScanUnsigned<10>(text, value); }
std::size_t ScanS32(std::string_view text, int& value) { return ScanSigned(text, value); }
std::size_t ScanS64(std::string_view text, long long& value) { return ScanSigned(text, value); }
std::size_t ScanHex32(std::string_view text, unsigned int& value) { return ScanUnsigned<16>(text, value); }
std::size_t ScanHex64(std::string_view text, unsigned long long& value) { return ScanUnsigned<16>(text, value); }

bool ReadPlainDecimal(std::string_view text, double& value) {
  // Such a number is exact in a double and so is its power of ten: one division, hence rounded correctly (IEEE 754).
  constexpr std::size_t kMaxDigits = 15;  // below 2^53
  if (text.size() > kMaxDigits + 1) return false;
  std::uint64_t number = 0;
  const char* const end = text.data() + text.size();
  const char* const wholeEnd = Implementation::AppendDigits(text.data(), end, number);
  const bool hasPoint = wholeEnd != end && *wholeEnd == '.';
  const char* const last = hasPoint ? Implementation::AppendDigits(wholeEnd + 1, end, number) : wholeEnd;
  const std::size_t digits = text.size() - (hasPoint ? 1 : 0);
  if (last != end || digits == 0 || digits > kMaxDigits) return false;
  value = static_cast<double>(number);
  if (hasPoint) value /= kPowersOfTen[end - wholeEnd - 1];
  return true;
}

bool ReadPlainAngle(std::string_view text, double& degrees) {
  constexpr std::size_t kMostDecimals = 13;  // with the minutes 15 digits
  constexpr std::size_t kMostWhole = 9;
  std::uint64_t whole = 0;
  const char* const end = text.data() + text.size();
  const char* const point = Implementation::AppendDigits(text.data(), end, whole);
  const auto wholeDigits = static_cast<std::size_t>(point - text.data());
  if (point == end || *point != '.' || wholeDigits < 3 || wholeDigits > kMostWhole) return false;
  const auto decimals = static_cast<std::size_t>(end - point - 1);
  const std::uint64_t wholeDegrees = whole / 100;
  std::uint64_t minutes = whole % 100;
  if (decimals > kMostDecimals || Implementation::AppendDigits(point + 1, end, minutes) != end) return false;
  // Rounded as the minutes alone would be, and only then divided by 60.
  degrees = static_cast<double>(wholeDegrees) + static_cast<double>(minutes) / kPowersOfTen[decimals] / 60;
  return true;
}

std::size_t ScanDouble(std::string_view text, double& value) {
  C_Reader reader(text);
  reader.SkipSpace();
  const bool isNegative = reader.SkipSign();
  double magnitude = 0.0;
  if (!ScanPositive(reader, magnitude)) return 0;
  value = isNegative ? -magnitude : magnitude;
  return reader.Used();
}

char* WriteFixed(char* out, double value, unsigned int decimals, unsigned int width) {
  std::size_t minLength = width;
  // By its bit: printf writes "-0.0" for a negative zero, which compares equal to zero.
  if (std::signbit(value)) {
    *out++ = '-';
    if (minLength > 0) --minLength;
  }
  const double magnitude = std::fabs(value);
  std::uint64_t scaled = 0;
  if (ScaleExactly(magnitude, decimals, scaled)) return WriteScaled(out, scaled, decimals, minLength);
  if (!std::isfinite(value)) return WriteNonFinite(out, value);
  // Rare from here on: numbers of 10^9 and more, or more decimals than any sentence has.
  char digits[kMaxFixedLength + kMaxDecimals];
  const auto [end, error] =
      std::to_chars(digits, digits + sizeof digits, magnitude, std::chars_format::fixed, static_cast<int>(decimals));
  return WriteWithLeadingZeros(out, {digits, static_cast<std::size_t>(end - digits)}, minLength);
}

char* WriteInteger(char* out, long long value, unsigned int width) {
  const bool isNegative = value < 0;
  if (isNegative) *out++ = '-';
  // Negated as unsigned: the least integer has no positive counterpart.
  const std::uint64_t magnitude =
      isNegative ? 0 - static_cast<std::uint64_t>(value) : static_cast<std::uint64_t>(value);
  std::size_t digits = CountDigits(magnitude);
  if (digits + isNegative < width) digits = width - isNegative;
  WriteDigitsBefore(out + digits, magnitude, digits);
  return out + digits;
}

}  // namespace velagnss::textproto::NumberText
