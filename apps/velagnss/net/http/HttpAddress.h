// Files on web servers by their addresses: "https://host/archive/session.bin".
#ifndef VELAGNSS_APPS_HTTP_ADDRESS_H
#define VELAGNSS_APPS_HTTP_ADDRESS_H

#include <string>
#include <string_view>

namespace Host {

// Whether `name` is the address of a file on a web server.
bool IsHttp(std::string_view name);

// Returns an error text, empty when `name`, which `IsHttp`, can be asked for. Opens nothing.
std::string CheckHttp(const std::string& name);

struct S_HttpAccount {
  std::string user;
  std::string password;
};

// What to ask for, and as whom.
struct S_HttpAddress {
  std::string url;  // as written, without an account
  S_HttpAccount account;
};

// Reads `name`, which has been checked. An account that it does not have comes from `credentials`, the name of a file
// that may be empty, or from VELAGNSS_HTTP_USER and VELAGNSS_HTTP_PASSWORD (net/Credentials.h). Returns an error text.
std::string ReadHttp(const std::string& name, const std::string& credentials, S_HttpAddress& http);

}  // namespace Host

#endif  // VELAGNSS_APPS_HTTP_ADDRESS_H
