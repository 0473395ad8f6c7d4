// Records as one line of text, so that a case of a table can hold what a decoder must give.
#ifndef VELAGNSS_TESTS_RECORD_LINE_H
#define VELAGNSS_TESTS_RECORD_LINE_H

#include <charconv>
#include <cstddef>
#include <string>
#include <type_traits>

#include "geo/NotAvailable.h"

inline std::string ValueText(const char* text) { return '"' + std::string(text) + '"'; }
inline std::string ValueText(char letter) { return letter == 0 ? "." : std::string(1, letter); }

// The shortest digits that read back to the same number; "-" for the not-available marker.
template <class Number>
std::string ValueText(Number value) {
  if constexpr (!std::is_same_v<Number, long>)
    if (IsNotAvailable(value)) return "-";
  char digits[64];
  return {digits, std::to_chars(digits, digits + sizeof digits, value).ptr};
}

template <class Value, std::size_t N>
std::string ValueText(const Value (&values)[N]) {
  std::string line;
  for (const Value& value : values) line += (line.empty() ? "" : "/") + ValueText(value);
  return line;
}

inline std::string ValueText(const std::string& text) { return text; }

// The values with a blank between them.
template <class... Values>
std::string RecordLine(const Values&... values) {
  std::string line;
  ((line += (line.empty() ? "" : " ") + ValueText(values)), ...);
  return line;
}

#endif  // VELAGNSS_TESTS_RECORD_LINE_H
