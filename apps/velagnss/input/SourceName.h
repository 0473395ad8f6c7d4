// Sources in names of other things: files, stations.
#ifndef VELAGNSS_APPS_SOURCE_NAME_H
#define VELAGNSS_APPS_SOURCE_NAME_H

#include <string>
#include <string_view>

namespace Host {

// A word for such names from the name of a source, which may be hostile: of a path its last part, of an address host,
// port and path. Everything but ASCII letters, digits, '-' and '_' becomes '_'.
std::string SafeSourceName(std::string_view source);

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_NAME_H
