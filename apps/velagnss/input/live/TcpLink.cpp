#include "apps/velagnss/input/live/TcpLink.h"

#include "apps/velagnss/input/live/StreamLink.h"
#include "apps/velagnss/net/Resolve.h"
#include "apps/velagnss/net/TcpSocket.h"

namespace Host {
namespace {

using asio::ip::tcp;

constexpr auto kConnectTime = std::chrono::seconds(20);  // for the name and all addresses together

class C_TcpLink : public C_StreamLink<tcp::socket> {
 public:
  C_TcpLink(const S_Address& address, C_Await& await)
      : C_StreamLink(await, "the other side has closed the connection"), m_host(address.host), m_port(address.port) {}

  std::optional<S_LinkFailure> Open() override {
    tcp::socket socket(m_await.Context());
    std::string error = ConnectTcp(m_await, m_host, m_port, C_Await::t_Clock::now() + kConnectTime, socket);
    if (!error.empty()) return S_LinkFailure::Lost(std::move(error));
    asio::error_code gone;  // already: the first read says so
    std::string peer = EndpointText(socket.remote_endpoint(gone));
    Use(std::move(socket), std::move(peer));
    return std::nullopt;
  }

  // Keepalive finds a peer that has vanished; only this finds one whose receiver has.
  S_RetryRules RetryRules() const override { return {.idleTimeout = std::chrono::seconds(60)}; }

 private:
  const std::string m_host;
  const std::string m_port;
};

}  // namespace

constexpr S_LinkKind kTcpLink = {{.scheme = "tcp",
                                  .example = "tcp://HOST:PORT",
                                  .host = S_AddressForm::eNeed::Must,
                                  .port = S_AddressForm::eNeed::Must},
                                 &MakeLinkOf<C_TcpLink>};

}  // namespace Host
