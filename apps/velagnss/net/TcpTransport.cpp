#include "apps/velagnss/net/TcpTransport.h"

#include <optional>
#include <utility>

#include "apps/velagnss/net/StreamConnection.h"
#include "apps/velagnss/net/TcpSocket.h"

namespace Host {
namespace {

class C_TcpTransport : public C_Transport {
 public:
  explicit C_TcpTransport(C_Await& await) : m_await(await) {}

  std::string Connect(const std::string& host, const std::string& port, C_Await::t_Time deadline) override {
    Close();
    asio::ip::tcp::socket socket(m_await.Context());
    std::string error = ConnectTcp(m_await, host, port, deadline, socket);
    if (error.empty()) m_connection.emplace(m_await, std::move(socket));
    return error;
  }

  S_Read Read(C_Await::t_Time deadline) override {
    return m_connection ? m_connection->Read(deadline) : S_Read{{}, false, "not connected"};
  }

  void Send(std::string_view bytes) override {
    if (m_connection) m_connection->Send(bytes);
  }

  void Close() override { m_connection.reset(); }

 private:
  C_Await& m_await;
  std::optional<C_StreamConnection<asio::ip::tcp::socket>> m_connection;
};

}  // namespace

std::unique_ptr<C_Transport> MakeTcpTransport(C_Await& await) { return std::make_unique<C_TcpTransport>(await); }

}  // namespace Host
