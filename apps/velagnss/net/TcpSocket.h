// TCP connections that notice when the other side is gone.
#ifndef VELAGNSS_APPS_TCP_SOCKET_H
#define VELAGNSS_APPS_TCP_SOCKET_H

#include <asio/ip/tcp.hpp>
#include <string>

#include "apps/velagnss/net/Await.h"

namespace Host {

// Resolves `host` and tries its addresses in turn, each for 5 s, all until the deadline. Returns an error text, empty
// when `socket` is connected and tuned.
std::string ConnectTcp(C_Await& await, const std::string& host, const std::string& port, C_Await::t_Time deadline,
                       asio::ip::tcp::socket& socket);

// Small pieces leave at once. A peer that has vanished ends the connection after a minute: by probes while we are
// silent, and by the user time-out while bytes of ours wait for their acknowledgement, when no probes are sent.
void TuneTcp(int socket);

}  // namespace Host

#endif  // VELAGNSS_APPS_TCP_SOCKET_H
