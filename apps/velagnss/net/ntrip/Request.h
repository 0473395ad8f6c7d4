// Heads of the requests that readers and pushers of NTRIP send, versions 1 and 2.
#ifndef VELAGNSS_APPS_NTRIP_REQUEST_H
#define VELAGNSS_APPS_NTRIP_REQUEST_H

#include <string>
#include <string_view>

namespace Host {

// What both kinds of requests hold. Everything has been checked.
struct S_NtripRequest {
  unsigned int version = 2;
  std::string hostAndPort;
  std::string mount;  // without its slash; empty for the source table
  std::string user;   // empty for none
  std::string password;
};

// "GET": wants a stream, or the table. `gga`: the first position, a sentence without its line end; version 2 only, may
// be empty.
std::string ReaderHead(const S_NtripRequest& request, std::string_view gga);

// "POST", or "SOURCE" in version 1, which sends a password without a user. `record`: what the source table shall say of
// the stream, "STR;...", may be empty.
std::string PusherHead(const S_NtripRequest& request, std::string_view record);

// The value of a field "Authorization" (RFC 7617).
std::string BasicAuthorization(std::string_view user, std::string_view password);

// Each returns an error text, empty when good: what has line ends or blanks in it would change the request.
std::string CheckMount(std::string_view mount);
std::string CheckAccount(std::string_view user, std::string_view password);
std::string CheckPusherPassword(std::string_view password);  // version 1

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_REQUEST_H
