// Lines of the tables for people.
#ifndef VELAGNSS_APPS_TABLE_LINE_H
#define VELAGNSS_APPS_TABLE_LINE_H

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <string>

namespace Host {

template <class... Arguments>
void Line(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  fmt::format_to(std::back_inserter(text), format, std::forward<Arguments>(arguments)...);
  text += '\n';
}

// "-" for a value that does not exist.
inline std::string NumberText(double value, int decimals) {
  return std::isfinite(value) ? fmt::format("{:.{}f}", value, decimals) : "-";
}

}  // namespace Host

#endif  // VELAGNSS_APPS_TABLE_LINE_H
