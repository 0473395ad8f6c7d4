// The kinds of live sources, by the schemes of their addresses.
#ifndef VELAGNSS_APPS_LINKS_H
#define VELAGNSS_APPS_LINKS_H

#include <memory>
#include <string>

#include "apps/velagnss/input/live/LiveSource.h"
#include "apps/velagnss/net/Address.h"

namespace Host {

// Whether `name` is a live source rather than a file: an address, or the name of a serial port.
bool IsLive(const std::string& name);

// Returns an error text, empty when `name` can be a live source. Opens nothing.
std::string CheckLive(const std::string& name);

// How `name` appears in messages and records: without user and password.
std::string ShownLive(const std::string& name);

// `name` has been checked.
std::unique_ptr<C_Link> MakeLink(const std::string& name, const S_LiveOptions& options, C_Await& await);

}  // namespace Host

#endif  // VELAGNSS_APPS_LINKS_H
