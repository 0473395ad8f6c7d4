#include "apps/velagnss/net/nats/NatsSession.h"

#include <fmt/format.h>

#include <array>
#include <cstdlib>
#include <limits>
#include <utility>

#include "apps/velagnss/net/Credentials.h"
#include "apps/velagnss/net/nats/NatsAddress.h"

namespace Host {
namespace {

// Milliseconds.
constexpr std::int64_t kConnectTime = 5'000;
constexpr std::int64_t kAnswerTime = 5'000;     // for requests to JetStream
constexpr std::int64_t kWriteTime = 10'000;     // until a server that takes no bytes counts as lost
constexpr std::int64_t kPingInterval = 10'000;  // twice without an answer, and it counts as lost as well
constexpr std::int64_t kReconnectWait = 1'000;
constexpr std::int64_t kReconnectJitter = 500;

S_NatsFailure Refused(std::string text) { return {S_NatsFailure::eKind::Refused, std::move(text)}; }

// Sets options of a connection one after the other; the first that fails ends it.
class C_OptionSetter {
 public:
  explicit C_OptionSetter(natsOptions* options) : m_options(options) {}

  template <class... Parameters, class... Arguments>
  C_OptionSetter& Set(natsStatus (*set)(natsOptions*, Parameters...), Arguments... arguments) {
    if (m_status == NATS_OK) m_status = set(m_options, arguments...);
    return *this;
  }
  t_NatsResult Result() const { return NatsResult(m_status); }

 private:
  natsOptions* m_options;
  natsStatus m_status = NATS_OK;
};

// Returns an error text.
std::string ReadToken(const S_Address& address, std::string& token) {
  const std::string file = NatsOption(address, "token");
  if (file.empty()) {
    const char* const value = std::getenv("VELAGNSS_NATS_TOKEN");
    token = value != nullptr ? value : "";
    return {};
  }
  std::string error = ReadSecretFile(file, token);
  while (!token.empty() && (token.back() == '\n' || token.back() == '\r')) token.pop_back();
  if (error.empty() && token.empty()) error = fmt::format("token file {}: is empty", file);
  return error;
}

t_NatsResult SetAccount(natsOptions* options, S_Address address, const S_NatsAccess& access) {
  if (const std::string creds = NatsOption(address, "creds"); !creds.empty()) {
    std::string text;
    if (std::string error = ReadSecretFile(creds, text); !error.empty()) return Refused(std::move(error));
    return NatsResult(natsOptions_SetUserCredentialsFromFiles(options, creds.c_str(), nullptr));
  }
  if (std::string error = FillAccount(address, access.credentials); !error.empty()) return Refused(std::move(error));
  if (!address.user.empty())
    return NatsResult(natsOptions_SetUserInfo(options, address.user.c_str(), address.password.c_str()));
  std::string token;
  if (std::string error = ReadToken(address, token); !error.empty()) return Refused(std::move(error));
  return token.empty() ? std::nullopt : NatsResult(natsOptions_SetToken(options, token.c_str()));
}

// The files are read each time: they change while a program runs for months.
t_NatsResult SetTls(natsOptions* options, const S_Address& address) {
  if (address.scheme != "natss") return std::nullopt;
  const std::string ca = NatsOption(address, "ca");
  const std::string certificate = NatsOption(address, "cert");
  C_OptionSetter setter(options);
  setter.Set(&natsOptions_SetSecure, true).Set(&natsOptions_SetExpectedHostname, address.host.c_str());
  if (!ca.empty()) setter.Set(&natsOptions_LoadCATrustedCertificates, ca.c_str());
  if (!certificate.empty())
    setter.Set(&natsOptions_LoadCertificatesChain, certificate.c_str(), NatsOption(address, "key").c_str());
  if (address.options.contains("insecure")) setter.Set(&natsOptions_SkipServerVerification, true);
  t_NatsResult result = setter.Result();
  if (result) result = Refused("cannot read the certificates: " + result->text);
  return result;
}

t_NatsResult SetTimes(natsOptions* options, const S_NatsAccess& access) {
  C_OptionSetter setter(options);
  setter.Set(&natsOptions_SetName, "velagnss")
      .Set(&natsOptions_SetTimeout, kConnectTime)
      .Set(&natsOptions_SetWriteDeadline, kWriteTime)
      .Set(&natsOptions_SetPingInterval, kPingInterval)
      .Set(&natsOptions_SetMaxPingsOut, 2)
      .Set(&natsOptions_SetAllowReconnect, access.reconnects)
      .Set(&natsOptions_SetMaxReconnect, std::numeric_limits<int>::max())
      .Set(&natsOptions_SetReconnectWait, kReconnectWait)
      .Set(&natsOptions_SetReconnectJitter, kReconnectJitter, kReconnectJitter);
  return setter.Result();
}

}  // namespace

t_NatsResult C_NatsSession::Open(const S_Address& address, const S_NatsAccess& access) {
  Close();
  t_NatsResult result = Connect(WithNatsPort(address), access);
  if (!result) {
    jsOptions options;
    jsOptions_Init(&options);
    options.Wait = kAnswerTime;
    result = NatsResult(
        NatsMake(m_jetStream, [&](jsCtx** made) { return natsConnection_JetStream(made, Connection(), &options); }));
  }
  if (!result) result = CheckJetStream();
  if (result) Close();
  return result;
}

t_NatsResult C_NatsSession::Connect(const S_Address& address, const S_NatsAccess& access) {
  t_NatsOptions options;
  t_NatsResult result = NatsResult(NatsMake(options, &natsOptions_Create));
  const std::string url = "nats://" + address.HostAndPort();
  if (!result) result = NatsResult(natsOptions_SetURL(options.get(), url.c_str()));
  if (!result) result = SetTimes(options.get(), access);
  if (!result) result = SetTls(options.get(), address);
  if (!result) result = SetAccount(options.get(), address, access);
  if (result) return result;
  return NatsResult(
      NatsMake(m_connection, [&](natsConnection** made) { return natsConnection_Connect(made, options.get()); }));
}

// A server without JetStream answers nothing else that says so.
t_NatsResult C_NatsSession::CheckJetStream() const {
  t_NatsHandle<jsAccountInfo, &jsAccountInfo_Destroy> info;
  jsErrCode code{};
  const natsStatus status =
      NatsMake(info, [&](jsAccountInfo** made) { return js_GetAccountInfo(made, JetStream(), nullptr, &code); });
  return NatsResult(status, code);
}

void C_NatsSession::Close() {
  m_jetStream.reset();
  m_connection.reset();
}

bool C_NatsSession::IsConnected() const {
  return m_connection != nullptr && natsConnection_Status(Connection()) == NATS_CONN_STATUS_CONNECTED;
}

std::string C_NatsSession::Peer() const {
  std::array<char, 300> url{};
  if (m_connection == nullptr || natsConnection_GetConnectedUrl(Connection(), url.data(), url.size()) != NATS_OK)
    return {};
  S_Address address;
  return ReadAddress(url.data(), address).empty() ? address.HostAndPort() : std::string();
}

t_NatsResult C_NatsSession::OpenStream(jsStreamConfig& wanted, bool creates, t_StreamInfo& info) const {
  jsErrCode code{};
  natsStatus status = NatsMake(
      info, [&](jsStreamInfo** made) { return js_GetStreamInfo(made, JetStream(), wanted.Name, nullptr, &code); });
  if (creates && code == JSStreamNotFoundErr) {
    code = jsErrCode(0);
    status =
        NatsMake(info, [&](jsStreamInfo** made) { return js_AddStream(made, JetStream(), &wanted, nullptr, &code); });
  }
  return NatsResult(status, code);
}

}  // namespace Host
