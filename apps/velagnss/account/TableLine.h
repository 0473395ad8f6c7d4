// Lines of the tables for people.
#ifndef VELAGNSS_APPS_TABLE_LINE_H
#define VELAGNSS_APPS_TABLE_LINE_H

#include <fmt/core.h>

#include <cmath>
#include <string>

#include "apps/velagnss/text/AppendFormat.h"

namespace Host {

template <class... Arguments>
void Line(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  AppendFormat(text, format, std::forward<Arguments>(arguments)...);
  text += '\n';
}

// "-" for a value that does not exist.
inline std::string NumberText(double value, int decimals) {
  return std::isfinite(value) ? fmt::format("{:.{}f}", value, decimals) : "-";
}

}  // namespace Host

#endif  // VELAGNSS_APPS_TABLE_LINE_H
