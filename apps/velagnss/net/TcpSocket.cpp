#include "apps/velagnss/net/TcpSocket.h"

#include <fmt/core.h>
#include <netinet/tcp.h>

#include <algorithm>

#include "apps/velagnss/net/Resolve.h"

namespace Host {
namespace {

using asio::ip::tcp;

constexpr auto kTimePerAddress = std::chrono::seconds(5);

struct S_TcpOption {
  int name;
  int value;
};
constexpr S_TcpOption kTcpOptions[] = {
    {TCP_NODELAY, 1},    {TCP_KEEPIDLE, 30},          // seconds of silence before the first probe
    {TCP_KEEPINTVL, 10},                              // seconds between probes
    {TCP_KEEPCNT, 3},    {TCP_USER_TIMEOUT, 60'000},  // ms
};

asio::error_code ConnectTo(C_Await& await, const tcp::endpoint& endpoint, C_Await::t_Time deadline,
                           tcp::socket& socket) {
  asio::error_code ignored;
  socket.close(ignored);
  asio::error_code error;
  socket.open(endpoint.protocol(), error);
  if (error) return error;
  return await.Operation(
      deadline, [&](const C_Await::t_Handler& done) { socket.async_connect(endpoint, done); },
      [&] { socket.close(ignored); });
}

std::string ErrorText(const asio::error_code& error, std::size_t numAddresses) {
  const std::string text = error == asio::error::timed_out ? "no answer in time" : error.message();
  return numAddresses > 1 ? fmt::format("none of its {} addresses can be reached: {}", numAddresses, text) : text;
}

}  // namespace

std::string ConnectTcp(C_Await& await, const std::string& host, const std::string& port, C_Await::t_Time deadline,
                       tcp::socket& socket) {
  const S_Resolved resolved = Resolve(await, host, port, deadline);
  if (!resolved.error.empty()) return resolved.error;
  asio::error_code error = asio::error::timed_out;
  for (const tcp::endpoint& endpoint : resolved.endpoints) {
    const auto now = C_Await::t_Clock::now();
    if (await.IsStopping() || now >= deadline) break;
    error = ConnectTo(await, endpoint, std::min(deadline, now + kTimePerAddress), socket);
    if (error) continue;
    TuneTcp(socket.native_handle());
    return {};
  }
  asio::error_code ignored;
  socket.close(ignored);
  return await.IsStopping() ? "stopped" : ErrorText(error, resolved.endpoints.size());
}

// A connection without them is still one.
void TuneTcp(int socket) {
  const int on = 1;
  ::setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
  for (const S_TcpOption& option : kTcpOptions)
    ::setsockopt(socket, IPPROTO_TCP, option.name, &option.value, sizeof option.value);
}

}  // namespace Host
