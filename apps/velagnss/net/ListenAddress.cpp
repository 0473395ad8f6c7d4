#include "apps/velagnss/net/ListenAddress.h"

#include <fmt/core.h>

#include <cerrno>

#include "apps/velagnss/net/Resolve.h"

namespace Host {

S_ListenAddress FindListenAddress(C_Await& await, const S_Address& address) {
  constexpr auto kTime = std::chrono::seconds(5);
  const std::string& host = address.host.empty() ? "127.0.0.1" : address.host;
  const S_Resolved resolved = Resolve(await, host, address.port, C_Await::t_Clock::now() + kTime);
  if (!resolved.error.empty()) return {{}, 0, resolved.error};
  return {resolved.endpoints.front().address(), resolved.endpoints.front().port(), {}};
}

std::string ListenErrorText(const asio::error_code& error, const S_Address& address) {
  if (error == asio::error::address_in_use)
    return fmt::format("port {} is in use by another program; end that one or choose another port", address.port);
  if (error == asio::error::access_denied)
    return fmt::format("ports below 1024, such as {}, need special rights; choose one from 1024 on", address.port);
  if (error.value() == EADDRNOTAVAIL)
    return fmt::format("{} is not an address of this machine; 0.0.0.0 and [::] mean all of its addresses",
                       address.host);
  return error.message();
}

}  // namespace Host
