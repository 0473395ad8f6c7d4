// The kinds of live sources, by the schemes of their addresses.
#ifndef VELAGNSS_APPS_LINKS_H
#define VELAGNSS_APPS_LINKS_H

#include <memory>
#include <string>

#include "apps/velagnss/input/live/Link.h"
#include "apps/velagnss/net/Address.h"

namespace Host {

// What the user has chosen for all live sources.
struct S_LiveOptions {
  std::optional<std::chrono::milliseconds> quietTime = std::chrono::milliseconds(500);  // then what waits is given up
  std::optional<std::chrono::milliseconds> idleTimeout;  // without a byte, then the link is opened anew
  std::optional<unsigned int> maxTries;                  // in a row that fail
  std::string credentials;                               // a file; empty for none
  std::string position;                                  // latitude,longitude,height for casters that want to know it
};

// Whether `name` is a live source rather than a file: an address, or the name of a serial port.
bool IsLive(const std::string& name);

// Returns an error text, empty when `name` can be a live source. Opens nothing.
std::string CheckLive(const std::string& name);

// `name` has been checked.
std::unique_ptr<C_Link> MakeLink(const std::string& name, const S_LiveOptions& options, C_Await& await);

}  // namespace Host

#endif  // VELAGNSS_APPS_LINKS_H
