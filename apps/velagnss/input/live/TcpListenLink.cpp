#include "apps/velagnss/input/live/TcpListenLink.h"

#include <fmt/core.h>

#include <asio/steady_timer.hpp>

#include "apps/velagnss/input/live/StreamLink.h"
#include "apps/velagnss/net/ListenAddress.h"
#include "apps/velagnss/net/Resolve.h"
#include "apps/velagnss/net/TcpSocket.h"

namespace Host {
namespace {

using asio::ip::tcp;

// Senders that come and go at once, by mistake or with intent, must not fill the log either.
constexpr auto kBetweenSenders = std::chrono::milliseconds(200);

// Accepts connections for as long as it lives, so that none is refused between two senders.
class C_Door : public std::enable_shared_from_this<C_Door> {
 public:
  using t_Notice = std::function<void(const std::string& text)>;

  C_Door(C_Await& await, t_Notice notice) : m_acceptor(await.Context()), m_notice(std::move(notice)) {}

  asio::error_code Listen(const tcp::endpoint& endpoint);
  void AcceptNext();
  void Shut() {
    asio::error_code ignored;
    m_acceptor.close(ignored);
    m_pause.reset();
  }

  // The sender that has come, or nobody. One may wait for the present one to end: a receiver that has lost its line
  // comes back before that is noticed here. Others are turned away.
  std::optional<tcp::socket> Take() { return std::exchange(m_newcomer, std::nullopt); }
  bool HasNewcomer() const { return m_newcomer.has_value(); }
  void SetOccupied(bool isOccupied) {
    m_isOccupied = isOccupied;
    m_hasTurnedAway = false;
  }

 private:
  void OnAccept(const asio::error_code& error, tcp::socket socket);
  void TryLater(const asio::error_code& error);
  void LetIn(tcp::socket socket);
  void TurnAway(const tcp::socket& socket);

  tcp::acceptor m_acceptor;
  std::optional<asio::steady_timer> m_pause;  // whose end cancels it
  const t_Notice m_notice;
  std::optional<tcp::socket> m_newcomer;
  bool m_isOccupied = false;
  bool m_hasTurnedAway = false;
  bool m_hasFailed = false;  // to accept
};

asio::error_code C_Door::Listen(const tcp::endpoint& endpoint) {
  asio::error_code error;
  m_acceptor.open(endpoint.protocol(), error);
  if (!error) m_acceptor.set_option(tcp::acceptor::reuse_address(true), error);
  if (!error) m_acceptor.bind(endpoint, error);
  if (!error) m_acceptor.listen(tcp::acceptor::max_listen_connections, error);
  if (!error) AcceptNext();
  return error;
}

void C_Door::AcceptNext() {
  m_acceptor.async_accept([self = shared_from_this()](const asio::error_code& error, tcp::socket socket) {
    self->OnAccept(error, std::move(socket));
  });
}

void C_Door::OnAccept(const asio::error_code& error, tcp::socket socket) {
  if (!m_acceptor.is_open()) return;
  if (error) return TryLater(error);
  m_hasFailed = false;
  if (m_newcomer)
    TurnAway(socket);
  else
    LetIn(std::move(socket));
  AcceptNext();
}

// Without a free descriptor the connection stays in the system's queue and would be offered again at once, for ever.
void C_Door::TryLater(const asio::error_code& error) {
  if (!std::exchange(m_hasFailed, true))
    m_notice(fmt::format("a connection cannot be accepted: {}; trying again each second", error.message()));
  m_pause.emplace(m_acceptor.get_executor(), std::chrono::seconds(1));
  m_pause->async_wait([self = shared_from_this()](const asio::error_code& cancelled) {
    if (!cancelled) self->AcceptNext();
  });
}

void C_Door::LetIn(tcp::socket socket) {
  asio::error_code gone;
  if (m_isOccupied)
    m_notice(fmt::format("{} waits until the present sender has left", EndpointText(socket.remote_endpoint(gone))));
  m_newcomer = std::move(socket);
}

// Said once for each sender: whoever knocks again and again must not fill the log.
void C_Door::TurnAway(const tcp::socket& socket) {
  asio::error_code gone;
  if (std::exchange(m_hasTurnedAway, true)) return;
  m_notice(fmt::format("turned {} away: another one waits already", EndpointText(socket.remote_endpoint(gone))));
}

// Looked at again every 5 s: the rules below have no pause.
S_LinkFailure ListenFailure(std::string text) {
  return {S_LinkFailure::eKind::Lost, std::move(text), std::chrono::seconds(5)};
}

class C_TcpListenLink : public C_StreamLink<tcp::socket> {
 public:
  C_TcpListenLink(const S_Address& address, C_Await& await)
      : C_StreamLink(await, "the sender has closed the connection"), m_address(address) {}
  ~C_TcpListenLink() override { StopListening(); }
  C_TcpListenLink(const C_TcpListenLink&) = delete;
  C_TcpListenLink& operator=(const C_TcpListenLink&) = delete;

  // Waits for a sender as long as it takes.
  std::optional<S_LinkFailure> Open() override;

  // The port stays open for the next sender.
  void Close() override {
    C_StreamLink::Close();
    if (m_door) m_door->SetOccupied(false);
  }

  // The next sender is waited for at once.
  S_RetryRules RetryRules() const override { return {.first = {}, .idleTimeout = {}}; }

 private:
  std::optional<S_LinkFailure> Listen();
  void StopListening() {
    if (m_door) m_door->Shut();
    m_door.reset();
  }

  const S_Address m_address;
  std::shared_ptr<C_Door> m_door;
  C_Await::t_Time m_nextAt;  // a sender may be taken
};

std::optional<S_LinkFailure> C_TcpListenLink::Listen() {
  const S_ListenAddress place = FindListenAddress(m_await, m_address);
  if (!place.error.empty()) return ListenFailure(place.error);
  const tcp::endpoint endpoint(place.address, place.port);
  m_door = std::make_shared<C_Door>(m_await, [this](const std::string& text) { Notify(text); });
  if (const asio::error_code error = m_door->Listen(endpoint)) {
    StopListening();
    return ListenFailure(ListenErrorText(error, m_address));
  }
  Notify(fmt::format("waits for a connection at {}{}", EndpointText(endpoint),
                     place.address.is_loopback() ? "" : ", which other machines can reach"));
  return std::nullopt;
}

std::optional<S_LinkFailure> C_TcpListenLink::Open() {
  if (!m_door) {
    if (std::optional<S_LinkFailure> failure = Listen()) return failure;
  }
  m_await.Until(m_nextAt, [] { return false; });
  m_await.Until(C_Await::t_Time::max(), [this] { return m_door->HasNewcomer(); });
  m_nextAt = C_Await::t_Clock::now() + kBetweenSenders;
  std::optional<tcp::socket> sender = m_door->Take();
  if (!sender) return S_LinkFailure::Lost("stopped");
  m_door->SetOccupied(true);
  TuneTcp(sender->native_handle());
  asio::error_code gone;
  std::string peer = EndpointText(sender->remote_endpoint(gone));
  Use(std::move(*sender), std::move(peer));
  return std::nullopt;
}

}  // namespace

constexpr S_LinkKind kTcpListenLink = {{.scheme = "tcp-listen",
                                        .example = "tcp-listen://ADDRESS:PORT or tcp-listen://:PORT",
                                        .host = S_AddressForm::eNeed::Maybe,
                                        .port = S_AddressForm::eNeed::Must},
                                       &MakeLinkOf<C_TcpListenLink>};

}  // namespace Host
