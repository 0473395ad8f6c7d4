#include "apps/velagnss/text/ShortestNumber.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace Host {
namespace {

__extension__ using t_Wide = unsigned __int128;

constexpr unsigned int kMaxDecimals = 16;
constexpr auto kPowersOfTen = [] {
  std::array<std::uint64_t, kMaxDecimals + 1> powers = {1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
  return powers;
}();

// A number without its sign.
struct S_Decimal {
  std::uint32_t whole;
  std::uint64_t fraction;  // in units of 10^-decimals
  unsigned int decimals;
};

// The usual numbers are from 1 on and below 2^kEndExponent. Others are left to the standard library, which takes twice
// as long, except small ones with few decimals.
constexpr int kEndExponent = 31;
constexpr int kFractionBits = 52;  // of a double

// By the exponent of two: the fewest decimals with which decimals are no farther apart than doubles.
constexpr auto kDecimals = [] {
  std::array<unsigned char, kEndExponent> decimals = {};
  for (int exponent = 0; exponent < kEndExponent; ++exponent)
    while (kPowersOfTen[decimals[exponent]] >> (kFractionBits - exponent) == 0) ++decimals[exponent];
  return decimals;
}();

// With so many decimals, at least one number reads as the double; with one decimal less, at most one does. If that
// exists, it is the shortest, once its zeros at the end are left out. Otherwise it is the nearest of the others. No
// fraction is rounded up to 1, because integers are doubles themselves.
bool FindUsual(double magnitude, S_Decimal& decimal) {
  constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kFractionBits;
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const int exponent = static_cast<int>(bits >> kFractionBits) - 1023;
  const std::uint64_t mantissa = (bits & (kHiddenBit - 1)) | kHiddenBit;
  if (exponent < 0 || exponent >= kEndExponent) return false;

  // The fraction in units of 10^-decimals, exact: `digits`, and `rest` after a point of `shift` bits.
  const int shift = kFractionBits - exponent;
  const std::uint64_t one = std::uint64_t{1} << shift;
  const unsigned int decimals = kDecimals[exponent];
  const std::uint64_t unit = kPowersOfTen[decimals];
  const t_Wide exact = t_Wide{mantissa & (one - 1)} * unit;
  const auto high = static_cast<std::uint64_t>(exact >> 64);
  const auto low = static_cast<std::uint64_t>(exact);
  const std::uint64_t digits = high << (64 - shift) | low >> shift;
  const std::uint64_t rest = low & (one - 1);
  std::uint64_t fraction = digits + ((rest + one / 2 - 1 + digits % 2) >> shift);  // a tie goes to the even one

  const std::uint64_t halfway = unit / 2;  // to the next double, measured as `rest` is
  const std::uint64_t lastDigit = digits % 10;
  const std::uint64_t down = lastDigit * one + rest;
  if (down < halfway) fraction = digits - lastDigit;
  if (10 * one - down < halfway) fraction = digits - lastDigit + 10;
  decimal = {static_cast<std::uint32_t>(mantissa >> shift), fraction, decimals};
  return true;
}

// Below 1, a number that was written with up to four decimals. No other number of up to 15 digits reads back as the
// same double, so none can be shorter.
bool FindSmall(double magnitude, S_Decimal& decimal) {
  constexpr double kScale = 1e4;
  constexpr double kLeast = 1e-3;  // below it, an exponent is shorter: "1e-04"
  if (!(magnitude >= kLeast && magnitude < 1)) return false;
  constexpr double kHalf = 0.5;  // rounds; a text that is off by one digit is read as another number
  const auto digits = static_cast<std::uint32_t>(magnitude * kScale + kHalf);
  decimal = {0, digits, 4};
  return digits / kScale == magnitude;
}

// Eight digits, one in each byte, the first in the lowest: all groups are halved at once. The products are quotients by
// 100 and 10, exact for numbers of four and two digits.
constexpr std::uint32_t kEightDigits = 100'000'000;
std::uint64_t EightDigits(std::uint32_t number) {
  const std::uint64_t fours = number / 10'000 | std::uint64_t{number % 10'000} << 32;
  const std::uint64_t hundreds = fours * 5243 >> 19 & 0x7F'0000'007F;
  const std::uint64_t pairs = hundreds | (fours - 100 * hundreds) << 16;
  const std::uint64_t tens = pairs * 103 >> 10 & 0xF'000F'000F'000F;
  return tens | (pairs - 10 * tens) << 8;
}

// Writes eight characters, of which `size` count.
char* WriteText(char* out, std::uint64_t digits, int size = 8) {
  const std::uint64_t text = digits | 0x3030'3030'3030'3030;  // "0" and so on
  for (int i = 0; i < 8; ++i) out[i] = static_cast<char>(text >> 8 * i);
  return out + size;
}

char* WriteWhole(char* out, std::uint32_t whole) {
  if (whole >= kEightDigits) {
    out = std::to_chars(out, out + kShortestSize, whole / kEightDigits).ptr;
    return WriteText(out, EightDigits(whole % kEightDigits));
  }
  const std::uint64_t digits = EightDigits(whole);
  const int zeros = std::countr_zero(digits | std::uint64_t{1} << 56) / 8;  // the last one is written
  return WriteText(out, digits >> 8 * zeros, 8 - zeros);
}

char* WriteDecimal(char* out, const S_Decimal& decimal) {
  out = WriteWhole(out, decimal.whole);
  if (decimal.fraction == 0) return out;
  *out++ = '.';
  const std::uint64_t decimals = decimal.fraction * kPowersOfTen[kMaxDecimals - decimal.decimals];
  const std::uint64_t first = EightDigits(static_cast<std::uint32_t>(decimals / kEightDigits));
  const auto rest = static_cast<std::uint32_t>(decimals % kEightDigits);
  out = WriteText(out, first);
  if (rest == 0) return out - std::countl_zero(first) / 8;
  const std::uint64_t last = EightDigits(rest);
  return WriteText(out, last) - std::countl_zero(last) / 8;
}

}  // namespace

char* WriteShortest(char* out, double value) {
  const double magnitude = std::fabs(value);
  S_Decimal decimal = {};
  const bool isFound = FindUsual(magnitude, decimal) || FindSmall(magnitude, decimal);
  constexpr std::uint32_t kManyZeros = 100'000;  // shorter with an exponent: "1e+05"
  if (!isFound || (decimal.fraction == 0 && decimal.whole % kManyZeros == 0))
    return std::to_chars(out, out + kShortestSize, value).ptr;
  *out = '-';  // written over unless the value is negative
  return WriteDecimal(out + (value < 0 ? 1 : 0), decimal);
}

}  // namespace Host
