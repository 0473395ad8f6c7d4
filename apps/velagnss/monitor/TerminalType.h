// What the terminfo database knows of the type of a terminal.
#ifndef VELAGNSS_APPS_TERMINAL_TYPE_H
#define VELAGNSS_APPS_TERMINAL_TYPE_H

#include <string>

namespace Host {

// Whether a type, such as "xterm", is in the database. `descriptor` is the terminal's.
bool IsTerminalTypeKnown(const std::string& type, int descriptor);

}  // namespace Host

#endif  // VELAGNSS_APPS_TERMINAL_TYPE_H
