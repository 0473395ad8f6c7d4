// The kinds of destinations, by the schemes of their addresses.
#ifndef VELAGNSS_APPS_SINKS_H
#define VELAGNSS_APPS_SINKS_H

#include <memory>
#include <string>

#include "apps/velagnss/sinks/live/NetSink.h"
#include "apps/velagnss/sinks/live/SinkKind.h"

namespace Host {

// Returns an error text, empty when `destination` can be one: a file, "-" for standard output, or an address. Opens
// nothing. What is wrong with an address is said without its password.
std::string CheckDestination(const std::string& destination);

// Whether a destination is a caster's mount, here or elsewhere: the readers of such streams expect whole frames.
bool IsNtrip(const std::string& destination);

// The addresses that a destination can be, a line each, for the help.
std::string DestinationForms();

// `destination` has been checked. `canWait`: the sources are files, which are read as fast as the slowest reader takes
// it, unless the address has another policy. A file keeps its contents until the end then, as with `-o`.
std::unique_ptr<C_Sink> MakeSink(const std::string& destination, bool canWait, C_SinkThread& thread,
                                 C_Casters& casters);

}  // namespace Host

#endif  // VELAGNSS_APPS_SINKS_H
