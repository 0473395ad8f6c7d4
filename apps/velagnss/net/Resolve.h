// Looks names of machines up, with a deadline.
#ifndef VELAGNSS_APPS_RESOLVE_H
#define VELAGNSS_APPS_RESOLVE_H

#include <asio/ip/tcp.hpp>
#include <cstdint>
#include <string>
#include <vector>

#include "apps/velagnss/net/Await.h"

namespace Host {

struct S_Resolved {
  std::vector<asio::ip::tcp::endpoint> endpoints;  // IPv4 and IPv6, in the system's order; none after an error
  std::string error;                               // empty when there are endpoints
};

// All addresses of `host`, which may be an address itself; empty: "any", to listen at. `port` is a number or the name
// of a service. Returns at the deadline and after `Stop` whatever the name servers do: the look-up goes on in a thread
// of its own and its answer is thrown away.
S_Resolved Resolve(C_Await& await, const std::string& host, const std::string& port, C_Await::t_Time deadline);

// "127.0.0.1:5015", "[::1]:5015".
std::string EndpointText(const asio::ip::address& address, std::uint16_t port);

template <class Protocol>
std::string EndpointText(const asio::ip::basic_endpoint<Protocol>& endpoint) {
  return EndpointText(endpoint.address(), endpoint.port());
}

}  // namespace Host

#endif  // VELAGNSS_APPS_RESOLVE_H
