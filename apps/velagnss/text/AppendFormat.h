// Formatted text at the end of a string.
#ifndef VELAGNSS_APPS_APPEND_FORMAT_H
#define VELAGNSS_APPS_APPEND_FORMAT_H

#include <fmt/core.h>

#include <string>

namespace Host {

void AppendFormatted(std::string& text, fmt::string_view format, fmt::format_args arguments);

// As fmt::format_to, which compiles all of fmt's formatting anew into each file that calls it: three seconds of the
// compiler and 60 kB of object code. This one has it compiled once.
template <class... Arguments>
void AppendFormat(std::string& text, fmt::format_string<Arguments...> format, Arguments&&... arguments) {
  AppendFormatted(text, format, fmt::make_format_args(arguments...));
}

}  // namespace Host

#endif  // VELAGNSS_APPS_APPEND_FORMAT_H
