// The kinds of destinations, by the schemes of their addresses.
#ifndef VELAGNSS_APPS_SINKS_H
#define VELAGNSS_APPS_SINKS_H

#include <memory>
#include <string>

#include "apps/velagnss/sinks/live/Sink.h"

namespace Host {

class C_Casters;
class C_SinkThread;

// Returns an error text, empty when `destination` can be one: a file, "-" for standard output, or an address. Opens
// nothing. What is wrong with an address is said without its password.
std::string CheckDestination(const std::string& destination);

// Whether a destination takes the raw stream.
enum class eRawUse {
  Usual,      // unless a format is given
  OnRequest,  // only then: the readers of a caster's mount expect whole frames
  Never,      // it sorts units by what they are
};
eRawUse RawUseOf(const std::string& destination);

// The addresses that a destination can be, for the help.
std::string DestinationForms();

struct S_SinkContext {
  // The sources are files, which are read as fast as the slowest reader takes it, unless its address has another
  // policy. A file keeps its contents until the end then, as with `-o`.
  bool canWait;
  C_SinkThread& thread;
  C_Casters& casters;
  std::string credentials;  // the name of a file; may be empty
  bool isInOrder = true;    // what comes of an input: nothing earlier follows
};

// `destination` has been checked.
std::unique_ptr<C_Sink> MakeSink(const std::string& destination, const S_SinkContext& context);

}  // namespace Host

#endif  // VELAGNSS_APPS_SINKS_H
