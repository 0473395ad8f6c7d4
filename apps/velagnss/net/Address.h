// Names of live sources and sinks: "tcp://host:port", "serial:///dev/ttyUSB0?baud=115200".
#ifndef VELAGNSS_APPS_ADDRESS_H
#define VELAGNSS_APPS_ADDRESS_H

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace Host {

// The parts of an address as RFC 3986 names them, percent-decoded.
struct S_Address {
  std::string scheme;  // in lower case
  std::string user;
  std::string password;  // never shown
  std::string host;      // an IPv6 address without its brackets; empty for any
  std::string port;      // a number; empty when none is given and the scheme has no usual one
  std::string path;      // with its leading slash, or empty
  std::map<std::string, std::string> options;

  // The address without user and password: for messages and records.
  std::string Shown() const;

  // "host:port" or "[host]:port".
  std::string HostAndPort() const;
};

// Whether `text` is written as an address, of whatever scheme. A file can be called so only with "./" before it.
bool IsAddress(std::string_view text);

// Returns an error text, empty when `text` has been read. Control characters are refused wherever they are: they would
// otherwise find their way into requests. So is an '@' where it may end a password with a '/' or '?' in it, the parts
// of which would otherwise be taken for port and path, and be shown.
std::string ReadAddress(std::string_view text, S_Address& address);

}  // namespace Host

#endif  // VELAGNSS_APPS_ADDRESS_H
