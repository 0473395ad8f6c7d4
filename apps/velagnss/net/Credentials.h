// User names and passwords of casters, NATS servers and web servers.
#ifndef VELAGNSS_APPS_CREDENTIALS_H
#define VELAGNSS_APPS_CREDENTIALS_H

#include <string>

#include "apps/velagnss/net/Address.h"

namespace Host {

// Fills the user and password of `address` in, unless it has a password. They come from the first line of `file` for
// its host and port (and user, where it has one), else from variables of the environment: VELAGNSS_NTRIP_USER and
// VELAGNSS_NTRIP_PASSWORD, VELAGNSS_NATS_... for the schemes of NATS, VELAGNSS_HTTP_... for those of the web. An
// address for which there are none keeps what it has.
//
// The lines of the file are "HOST[:PORT] USER PASSWORD"; a '#' begins a comment line. `file` may be empty. Returns an
// error text, empty when good: a file that other users may read is refused.
std::string FillAccount(S_Address& address, const std::string& file);

// Returns an error text, empty when `file` can be read and each of its lines is good.
std::string CheckCredentials(const std::string& file);

// Reads a file that nobody else may read, of at most 1 MiB. Returns an error text, empty when `text` is what it holds.
std::string ReadSecretFile(const std::string& file, std::string& text);

}  // namespace Host

#endif  // VELAGNSS_APPS_CREDENTIALS_H
