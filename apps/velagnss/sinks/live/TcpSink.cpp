#include "apps/velagnss/sinks/live/TcpSink.h"

#include "apps/velagnss/net/Resolve.h"
#include "apps/velagnss/net/TcpSocket.h"
#include "apps/velagnss/sinks/live/OutgoingSink.h"

namespace Host {
namespace {

constexpr auto kConnectTime = std::chrono::seconds(15);

// As for readers of ours: what waits in the system's buffer grows old there.
constexpr int kSendBuffer = 32 * 1024;

S_Dialed Dial(C_Await& await, const S_Address& address) {
  asio::ip::tcp::socket socket(await.Context());
  const auto deadline = C_Await::t_Clock::now() + kConnectTime;
  if (std::string error = ConnectTcp(await, address.host, address.port, deadline, socket); !error.empty())
    return {.failure = S_LinkFailure{S_LinkFailure::eKind::Lost, std::move(error), {}}};
  asio::error_code ignored;
  socket.set_option(asio::socket_base::send_buffer_size(kSendBuffer), ignored);
  std::string peer = EndpointText(socket.remote_endpoint(ignored));
  return {.descriptor = C_FileDescriptor(socket.release()), .peer = std::move(peer)};
}

std::unique_ptr<C_NetSink> Make(const S_SinkMaking& making) {
  return std::make_unique<C_OutgoingSink>(making.thread, making.address.Shown(), making.limits, S_DialRules(),
                                          [address = making.address](C_Await& await) { return Dial(await, address); });
}

}  // namespace

const S_SinkKind kTcpSink = {{.scheme = "tcp",
                              .example = "tcp://HOST:PORT",
                              .host = S_AddressForm::eNeed::Must,
                              .port = S_AddressForm::eNeed::Must},
                             &Make};

}  // namespace Host
