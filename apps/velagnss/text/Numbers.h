// Numbers to text and back, without the locale.
#ifndef VELAGNSS_APPS_NUMBERS_H
#define VELAGNSS_APPS_NUMBERS_H

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>
#include <string_view>

#include "geo/NotAvailable.h"

namespace Host {

// Reads `text` as one number of its type; false when anything precedes or follows it.
template <class Number>
bool ParseWhole(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

// Whether a value can be written as digits: neither a marker nor infinite nor NaN.
inline bool IsKnown(double value) { return std::isfinite(value) && !IsNotAvailable(value); }

// The shortest digits that read back as the same number, never with an exponent: XML Schema's decimal has none.
void AppendDecimal(std::string& text, double value);

// "1 frame", "2 frames".
std::string Counted(std::uint64_t count, std::string_view noun);

// Degrees with 9 decimals: 0.1 mm on the ground.
void AppendDegrees(std::string& text, double degrees);

}  // namespace Host

#endif  // VELAGNSS_APPS_NUMBERS_H
