#include "apps/velagnss/text/Numbers.h"

#include <fmt/core.h>

#include <array>
#include <charconv>

namespace Host {
namespace {

constexpr int kDegreeDigits = 9;

// Without an exponent the largest double has 309 digits, the smallest "0." and 324 + 17 digits.
using t_Digits = std::array<char, 400>;

}  // namespace

std::string Counted(std::uint64_t count, std::string_view noun) {
  return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

void AppendDecimal(std::string& text, double value) {
  t_Digits digits;
  const auto result = std::to_chars(digits.begin(), digits.end(), value, std::chars_format::fixed);
  text.append(digits.begin(), result.ptr);
}

void AppendDegrees(std::string& text, double degrees) {
  t_Digits digits;
  const auto result = std::to_chars(digits.begin(), digits.end(), degrees, std::chars_format::fixed, kDegreeDigits);
  text.append(digits.begin(), result.ptr);
}

}  // namespace Host
