// The standard library's conversion takes any number. Those of receivers are neither huge nor tiny: their digits come
// from one or two multiplications of integers of 128 bits, which are exact, without tables of powers.
#include "apps/velagnss/text/ShortestNumber.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace Host {
namespace {

__extension__ using t_Wide = unsigned __int128;

constexpr auto kPowersOfTen = [] {
  std::array<std::uint64_t, 20> powers = {1};
  for (std::size_t i = 1; i < powers.size(); ++i) powers[i] = 10 * powers[i - 1];
  return powers;
}();

// "00" to "99"
constexpr auto kPairs = [] {
  std::array<char, 200> pairs = {};
  for (unsigned int i = 0; i < 100; ++i) {
    pairs[2 * i] = static_cast<char>('0' + i / 10);
    pairs[2 * i + 1] = static_cast<char>('0' + i % 10);
  }
  return pairs;
}();

// A number as `digits` / 10^`decimals`.
struct S_Decimal {
  std::uint64_t digits;
  unsigned int decimals;
};

void DropTrailingZeros(S_Decimal& decimal) {
  while (decimal.decimals > 0 && decimal.digits % 10 == 0) {
    decimal.digits /= 10;
    --decimal.decimals;
  }
}

// What was a decimal with few digits: the only one of up to 15 digits that reads as this number, so no other can be
// shorter. `magnitude` is below 2^30.
bool FindFewDecimals(double magnitude, S_Decimal& decimal) {
  constexpr unsigned int kDecimals = 4;
  constexpr double kScale = 1e4;
  const auto digits = static_cast<std::uint64_t>(magnitude * kScale + 0.5);
  if (static_cast<double>(digits) / kScale != magnitude) return false;
  decimal = {digits, kDecimals};
  DropTrailingZeros(decimal);
  return true;
}

// The numbers that are read: their texts have no exponent, unless they end with zeros, and no more than 19 decimals.
constexpr int kLeastExponent = -9;
constexpr int kEndExponent = 30;
constexpr double kLeast = 0x1p-9;
constexpr double kEnd = 0x1p30;

// By the exponent of two of a number: how many decimals show at least 17 digits of it, which always tell it apart.
constexpr auto kDecimalsOf = [] {
  std::array<unsigned char, kEndExponent - kLeastExponent> decimals = {};
  for (int exponent = kLeastExponent; exponent < kEndExponent; ++exponent) {
    const t_Wide least = t_Wide{kPowersOfTen[16]} << -kLeastExponent;  // 17 digits
    unsigned char& number = decimals[static_cast<std::size_t>(exponent - kLeastExponent)];
    while ((t_Wide{kPowersOfTen[number]} << (exponent - kLeastExponent)) < least) ++number;
  }
  return decimals;
}();

// A number in units of some decimal: what it may be rounded to, and what it should be.
struct S_Rounding {
  std::uint64_t digits;  // cut off, not rounded
  std::uint64_t least;   // that it may be rounded to
  std::uint64_t greatest;
  bool isUp;     // the next integer is nearer; of two as near the even one counts as such
  bool isExact;  // nothing but zeros was cut off
};

// Gives up the last digit, if an integer without it is still between the limits.
bool DropDigit(S_Rounding& rounding) {
  const std::uint64_t least = (rounding.least + 9) / 10;
  const std::uint64_t greatest = rounding.greatest / 10;
  if (least > greatest) return false;
  const std::uint64_t digits = rounding.digits / 10;
  const std::uint64_t digit = rounding.digits - 10 * digits;
  const bool isUp = digit > 5 || (digit == 5 && (!rounding.isExact || digits % 2 != 0));
  rounding = {digits, least, greatest, isUp, rounding.isExact && digit == 0};
  return true;
}

// All decimals between the points halfway to its neighbors read as this number. Gives its 17 digits, or some more, and
// these limits, by integers in quarters of its last bit. The points themselves need not be considered: they have more
// decimals than that.
S_Rounding RoundingOf(double magnitude, unsigned int& decimals) {
  constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << 52;
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  const int exponent = static_cast<int>(bits >> 52) - 1023;
  const std::uint64_t mantissa = (bits & (kHiddenBit - 1)) | kHiddenBit;
  const auto shift = static_cast<unsigned int>(52 + 2 - exponent);
  decimals = kDecimalsOf[static_cast<std::size_t>(exponent - kLeastExponent)];

  const t_Wide scale = kPowersOfTen[decimals];
  const t_Wide exact = scale * mantissa << 2;
  const t_Wide below = scale << (mantissa == kHiddenBit ? 0 : 1);  // a power of two is closer to its neighbor below
  const t_Wide above = scale << 1;
  const t_Wide half = t_Wide{1} << (shift - 1);
  const auto digits = static_cast<std::uint64_t>(exact >> shift);
  const t_Wide rest = exact & ((half << 1) - 1);
  return {.digits = digits,
          .least = static_cast<std::uint64_t>((exact - below) >> shift) + 1,
          .greatest = static_cast<std::uint64_t>((exact + above) >> shift),
          .isUp = rest > half || (rest == half && digits % 2 != 0),
          .isExact = rest == 0};
}

S_Decimal FindShortest(double magnitude) {
  unsigned int decimals = 0;
  S_Rounding rounding = RoundingOf(magnitude, decimals);
  while (DropDigit(rounding)) --decimals;
  const bool isNext = rounding.digits < rounding.least || (rounding.isUp && rounding.digits < rounding.greatest);
  return {rounding.digits + (isNext ? 1 : 0), decimals};
}

// Eight digits, leading zeros included. The halves do not wait for each other.
void WriteEightDigits(char* out, std::uint32_t digits) {
  const std::uint32_t halves[] = {digits / 10'000, digits % 10'000};
  for (const std::uint32_t half : halves) {
    std::memcpy(out, &kPairs[2 * (half / 100)], 2);
    std::memcpy(out + 2, &kPairs[2 * (half % 100)], 2);
    out += 4;
  }
}

std::size_t CountDigits(std::uint64_t digits) {
  const auto bits = static_cast<unsigned int>(std::bit_width(digits));
  const unsigned int least = bits * 1233 >> 12;  // log10(2) is 1233 / 4096: this or one more
  return least + (digits >= kPowersOfTen[least] ? 1 : 0);
}

// All copies have the same size, whatever is wanted of them: what is too much is overwritten, or beyond the end.
char* WriteDecimal(char* out, S_Decimal decimal) {
  constexpr std::size_t kBlock = 8;
  constexpr std::size_t kDigits = 3 * kBlock;
  constexpr std::uint32_t kBlockEnd = 100'000'000;
  char text[2 * kDigits] = {};
  char* const end = text + kDigits;
  std::memset(text, '0', kDigits);
  std::uint64_t rest = decimal.digits;
  for (char* block = end - kBlock; rest != 0; block -= kBlock, rest /= kBlockEnd)
    WriteEightDigits(block, static_cast<std::uint32_t>(rest % kBlockEnd));
  const std::size_t size = std::max<std::size_t>(CountDigits(decimal.digits), decimal.decimals + 1);
  std::memcpy(out, end - size, kDigits);
  if (decimal.decimals == 0) return out + size;
  char* const point = out + size - decimal.decimals;
  *point = '.';
  std::memcpy(point + 1, end - decimal.decimals, kDigits);
  return out + size + 1;
}

// Shorter with an exponent: "1e+05".
bool EndsWithManyZeros(const S_Decimal& decimal) { return decimal.decimals == 0 && decimal.digits % 100'000 == 0; }

}  // namespace

char* WriteShortest(char* out, double value) {
  const double magnitude = std::fabs(value);
  S_Decimal decimal = {};
  if (magnitude >= kLeast && magnitude < kEnd) {
    if (!FindFewDecimals(magnitude, decimal)) decimal = FindShortest(magnitude);
    if (!EndsWithManyZeros(decimal)) {
      if (value < 0) *out++ = '-';
      return WriteDecimal(out, decimal);
    }
  }
  return std::to_chars(out, out + kShortestSize, value).ptr;
}

}  // namespace Host
