#include "apps/velagnss/sinks/live/NtripPushSink.h"

#include <asio/ip/tcp.hpp>
#include <utility>

#include "apps/velagnss/net/Credentials.h"
#include "apps/velagnss/net/Resolve.h"
#include "apps/velagnss/net/StreamConnection.h"
#include "apps/velagnss/net/TcpSocket.h"
#include "apps/velagnss/net/ntrip/NtripClient.h"
#include "apps/velagnss/net/ntrip/Request.h"
#include "apps/velagnss/sinks/live/OutgoingSink.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using asio::ip::tcp;
using eFailure = S_LinkFailure::eKind;
using eAnswer = S_NtripAnswer::eKind;

constexpr auto kConnectTime = 15s;

// Some casters of version 2 answer only after the first data.
constexpr auto kAnswerBeforeData = 5s;
constexpr auto kSlowAnswer = 10s;

// A connection of our own that broke holds the mount until the caster notices, and public casters ban machines that
// come back at once.
constexpr S_RetryRules kRetryRules = {
    .first = 5s, .longest = 300s, .firstRefused = 20s, .longestRefused = 600s, .goodAfter = 60s};

// What is asked over it is a head; then its socket goes to the sink thread.
class C_AskingTransport : public C_Transport {
 public:
  C_AskingTransport(C_Await& await, tcp::socket socket) : m_connection(await, std::move(socket)) {}

  std::string Connect(const std::string&, const std::string&, C_Await::t_Time) override { return {}; }
  S_Read Read(C_Await::t_Time deadline) override { return m_connection.Read(deadline); }
  void Send(std::string_view bytes) override { m_connection.Send(bytes); }
  void Close() override { m_connection.Close(); }

  C_FileDescriptor Release() { return C_FileDescriptor(m_connection.Get().release()); }

 private:
  C_StreamConnection<tcp::socket> m_connection;
};

class C_Pusher {
 public:
  C_Pusher(const S_Address& address, std::string credentials)
      : m_address(WithNtripPort(address)),
        m_credentials(std::move(credentials)),
        m_version(NumberOption(address, "version", 2)),
        m_mayFallBack(!address.options.contains("version")) {}

  S_Dialed Dial(C_Await& await);

 private:
  std::string Head(const S_Address& address) const;
  S_Dialed Push(C_AskingTransport& transport, const std::string& head, std::string peer);
  S_LinkFailure FailureOf(const S_NtripAnswer& answer);

  S_Address m_address;
  std::string m_credentials;
  std::size_t m_version;
  bool m_mayFallBack;  // to version 1: once
};

S_Dialed Failed(eFailure kind, std::string text) { return {.failure = S_LinkFailure{kind, std::move(text), {}}}; }

S_Dialed C_Pusher::Dial(C_Await& await) {
  S_Address address = m_address;
  std::string error = FillAccount(address, m_credentials);
  if (error.empty()) error = CheckAccount(address.user, address.password);
  if (error.empty() && m_version == 1) error = CheckPusherPassword(address.password);
  if (!error.empty()) return Failed(eFailure::Final, error);
  tcp::socket socket(await.Context());
  error = ConnectTcp(await, address.host, address.port, C_Await::t_Clock::now() + kConnectTime, socket);
  if (!error.empty()) return Failed(eFailure::Lost, error);
  asio::error_code ignored;
  std::string peer = EndpointText(socket.remote_endpoint(ignored));
  C_AskingTransport transport(await, std::move(socket));
  return Push(transport, Head(address), std::move(peer));
}

std::string C_Pusher::Head(const S_Address& address) const {
  return PusherHead({.version = static_cast<unsigned int>(m_version),
                     .hostAndPort = address.HostAndPort(),
                     .mount = address.path.substr(1),
                     .user = address.user,
                     .password = address.password},
                    {});
}

S_Dialed C_Pusher::Push(C_AskingTransport& transport, const std::string& head, std::string peer) {
  const auto now = C_Await::t_Clock::now();
  C_HeadParser parser;
  S_NtripAnswer answer = AskCaster(transport, head, parser, now + kAnswerBeforeData);
  const bool isSilent = parser.State() == C_HeadParser::eState::Incomplete && parser.IsEmpty();
  const bool mayWantData = m_version == 2 && isSilent && C_Await::t_Clock::now() >= now + kAnswerBeforeData;
  if (mayWantData)
    answer = {};
  else if (parser.State() == C_HeadParser::eState::Incomplete)
    answer = AskCaster(transport, {}, parser, now + kSlowAnswer);
  if (answer.kind != eAnswer::Good) return {.failure = FailureOf(answer)};
  return {.descriptor = transport.Release(),
          .peer = std::move(peer),
          .kind = m_version == 2 ? S_Dialed::eKind::Chunks : S_Dialed::eKind::Stream};
}

S_LinkFailure C_Pusher::FailureOf(const S_NtripAnswer& answer) {
  const bool isOdd = answer.kind == eAnswer::Table || answer.kind == eAnswer::Page || answer.kind == eAnswer::Moved;
  std::string text = isOdd ? "the caster does not take the stream: wrong mount, account or port" : answer.text;
  if (answer.mayBeVersion && std::exchange(m_mayFallBack, false) && CheckPusherPassword(m_address.password).empty()) {
    m_version = 1;
    text += "; next with version 1 of NTRIP";
  }
  return {answer.kind == eAnswer::Lost ? eFailure::Lost : eFailure::Refused, std::move(text), answer.retryAfter};
}

// A caster counts a pusher without data as a failure.
std::unique_ptr<C_NetSink> Make(const S_SinkMaking& making) {
  const auto pusher = std::make_shared<C_Pusher>(making.address, making.credentials);
  return std::make_unique<C_OutgoingSink>(making.thread, making.address.Shown(), making.limits,
                                          S_DialRules{.retry = kRetryRules, .waitsForData = true},
                                          [pusher](C_Await& await) { return pusher->Dial(await); });
}

std::string Check(const S_Address& address) {
  const std::string error = CheckMount(std::string_view(address.path).substr(1));
  return error.empty() ? CheckAccount(address.user, address.password) : error;
}

constexpr S_AddressOption kOptions[] = {{"version", "1 or 2", &IsNumber<1, 2>}};

}  // namespace

using eNeed = S_AddressForm::eNeed;

const S_SinkKind kNtripPushSink = {{.scheme = "ntrip-push",
                                    .example = "ntrip-push://USER@HOST:PORT/MOUNT",
                                    .account = eNeed::Maybe,
                                    .host = eNeed::Must,
                                    .port = eNeed::Maybe,
                                    .path = eNeed::Must,
                                    .options = kOptions,
                                    .check = &Check},
                                   &Make,
                                   eRawUse::OnRequest};

}  // namespace Host
