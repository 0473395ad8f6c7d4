#include "apps/velagnss/net/TlsTransport.h"

#include <fmt/core.h>
#include <openssl/err.h>
#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <asio/ip/address.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ssl/context.hpp>
#include <asio/ssl/error.hpp>
#include <asio/ssl/stream.hpp>
#include <optional>
#include <utility>

#include "apps/velagnss/net/StreamConnection.h"
#include "apps/velagnss/net/TcpSocket.h"

namespace Host {
namespace {

using asio::ip::tcp;

// Closes as a socket does, which C_StreamConnection expects, without a closing alert: its answer would be of no use.
struct S_TlsStream : asio::ssl::stream<tcp::socket> {
  using asio::ssl::stream<tcp::socket>::stream;
  void close(asio::error_code& error) { lowest_layer().close(error); }
};

std::string SetUpContext(const S_TlsOptions& options, asio::ssl::context& context) {
  ::SSL_CTX_set_min_proto_version(context.native_handle(), TLS1_2_VERSION);
  context.set_verify_mode(options.isInsecure ? asio::ssl::verify_none : asio::ssl::verify_peer);
  asio::error_code error;
  if (options.isInsecure) return {};
  if (options.authorities.empty())
    context.set_default_verify_paths(error);
  else
    context.load_verify_file(options.authorities, error);
  return error ? fmt::format("cannot read the trusted certificates: {}", error.message()) : std::string();
}

// Certificates name machines or addresses, these without the interface of a link-local one ("fe80::1%eth0"). Only a
// name may be sent in the clear (RFC 6066, 3), which a server with several certificates needs. False: what the
// certificate must name could not be set, and any would do.
bool SetPeer(SSL* tls, const std::string& host) {
  asio::error_code isName;
  asio::ip::make_address(host, isName);
  if (!isName)
    return ::X509_VERIFY_PARAM_set1_ip_asc(::SSL_get0_param(tls), host.substr(0, host.find('%')).c_str()) == 1;
  std::string name = host;  // the macro for this has a cast that our warnings refuse
  return !host.empty() && ::SSL_set1_host(tls, host.c_str()) == 1 &&
         ::SSL_ctrl(tls, SSL_CTRL_SET_TLSEXT_HOSTNAME, TLSEXT_NAMETYPE_host_name, name.data()) == 1;
}

std::string HandshakeError(SSL* tls, const asio::error_code& error) {
  const auto code = static_cast<unsigned long>(error.value());
  const bool isTls = error.category() == asio::error::get_ssl_category();
  if (isTls && ERR_GET_REASON(code) == SSL_R_CERTIFICATE_VERIFY_FAILED)
    return fmt::format("its certificate is not accepted: {}",
                       ::X509_verify_cert_error_string(::SSL_get_verify_result(tls)));
  if (isTls && ERR_GET_REASON(code) == SSL_R_WRONG_VERSION_NUMBER) return "the other side does not speak TLS";
  if (error == asio::error::timed_out) return "no answer to TLS in time: perhaps the other side does not speak it";
  if (error == asio::error::eof || error == asio::ssl::error::stream_truncated)
    return "the other side closed the connection during the TLS handshake";
  return fmt::format("TLS: {}", error.message());
}

class C_TlsTransport : public C_Transport {
 public:
  C_TlsTransport(C_Await& await, S_TlsOptions options) : m_await(await), m_options(std::move(options)) {}

  std::string Connect(const std::string& host, const std::string& port, C_Await::t_Time deadline) override;
  S_Read Read(C_Await::t_Time deadline) override;
  void Send(std::string_view bytes) override {
    if (m_connection) m_connection->Send(bytes);
  }
  void Close() override { m_connection.reset(); }

 private:
  std::string ShakeHands(const std::string& host, C_Await::t_Time deadline);

  C_Await& m_await;
  const S_TlsOptions m_options;
  std::optional<C_StreamConnection<S_TlsStream>> m_connection;
};

// The authorities are read each time: they change while a program runs for months.
std::string C_TlsTransport::Connect(const std::string& host, const std::string& port, C_Await::t_Time deadline) {
  Close();
  asio::ssl::context context(asio::ssl::context::tls_client);
  std::string error = SetUpContext(m_options, context);
  if (!error.empty()) return error;
  tcp::socket socket(m_await.Context());
  error = ConnectTcp(m_await, host, port, deadline, socket);
  if (!error.empty()) return error;
  m_connection.emplace(m_await, S_TlsStream(std::move(socket), context));
  error = ShakeHands(host, deadline);
  if (!error.empty()) Close();
  return error;
}

std::string C_TlsTransport::ShakeHands(const std::string& host, C_Await::t_Time deadline) {
  S_TlsStream& stream = m_connection->Get();
  if (!SetPeer(stream.native_handle(), host)) return fmt::format("TLS: no certificate can name '{}'", host);
  const asio::error_code error = m_await.Operation(
      deadline, [&](const C_Await::t_Handler& done) { stream.async_handshake(asio::ssl::stream_base::client, done); },
      [&] { m_connection->Close(); });
  return error ? HandshakeError(stream.native_handle(), error) : std::string();
}

// Few casters end TLS before they close. What came is whole frames or checked by them, so that the end is one.
C_Transport::S_Read C_TlsTransport::Read(C_Await::t_Time deadline) {
  if (!m_connection) return {{}, false, "not connected"};
  S_Read read = m_connection->Read(deadline);
  const asio::error_code truncated = asio::ssl::error::stream_truncated;
  return read.error == truncated.message() ? S_Read{{}, true, {}} : read;
}

}  // namespace

std::unique_ptr<C_Transport> MakeTlsTransport(C_Await& await, const S_TlsOptions& options) {
  return std::make_unique<C_TlsTransport>(await, options);
}

}  // namespace Host
