// The help set to the width of a terminal.
#ifndef VELAGNSS_APPS_HELP_TEXT_H
#define VELAGNSS_APPS_HELP_TEXT_H

#include <string>
#include <string_view>

namespace Host {

// `help` with no line longer than `width`, as far as its words allow. Lines without indentation are filled as
// paragraphs. The description of an entry, which begins after two spaces or more, continues in its own column.
std::string WrapHelp(std::string_view help, std::size_t width);

// The environment variable COLUMNS if it holds a sensible width, otherwise 80.
std::size_t HelpWidth();

}  // namespace Host

#endif  // VELAGNSS_APPS_HELP_TEXT_H
