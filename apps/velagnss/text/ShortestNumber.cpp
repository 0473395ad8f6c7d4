#include "apps/velagnss/text/ShortestNumber.h"

#include <charconv>
#include <cmath>
#include <cstdint>

namespace Host {
namespace {

// Most numbers of receivers were decimals with few digits before they were read. The standard library takes any number
// and several times as long.
constexpr std::uint64_t kScale = 10'000;
constexpr double kLeast = 1e-3;  // below it, an exponent is shorter: "1e-04"
constexpr double kEnd = 1e9;     // with its decimals a number has up to 13 digits

// The number as an integer of 1 / `kScale`, if it is the double nearest to one. No other decimal of up to 15 digits
// reads as the same number, so no other can be shorter.
bool FindDecimal(double magnitude, std::uint64_t& digits) {
  if (!(magnitude >= kLeast && magnitude < kEnd)) return false;
  digits = static_cast<std::uint64_t>(std::llround(magnitude * static_cast<double>(kScale)));
  constexpr std::uint64_t kManyZeros = 100'000;  // shorter with an exponent: "1e+05"
  return static_cast<double>(digits) / static_cast<double>(kScale) == magnitude && digits % (kScale * kManyZeros) != 0;
}

}  // namespace

char* WriteShortest(char* out, double value) {
  std::uint64_t digits = 0;
  if (!FindDecimal(std::fabs(value), digits)) return std::to_chars(out, out + kShortestSize, value).ptr;
  if (value < 0) *out++ = '-';
  out = std::to_chars(out, out + kShortestSize, digits / kScale).ptr;
  std::uint64_t decimals = digits % kScale;
  if (decimals == 0) return out;
  *out++ = '.';
  for (std::uint64_t unit = kScale / 10; decimals != 0; unit /= 10) {
    *out++ = static_cast<char>('0' + decimals / unit);
    decimals %= unit;
  }
  return out;
}

}  // namespace Host
