#include "apps/velagnss/input/live/UdpLink.h"

#include <fmt/core.h>
#include <net/if.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <asio/ip/udp.hpp>
#include <cerrno>
#include <utility>

#include "apps/velagnss/net/ListenAddress.h"
#include "apps/velagnss/net/Resolve.h"

namespace Host {
namespace {

using asio::ip::udp;
using namespace std::chrono_literals;

// A membership is lost with its interface, and routers forget it: silence is the only sign.
constexpr auto kRejoinAfter = 60s;
constexpr int kReceiveBuffer = 1 << 20;  // bytes that the kernel keeps for a program that is busy

// A receiver with its buffer: a handler that runs after the link is gone finds both.
struct S_Receiver {
  explicit S_Receiver(C_Await& await) : socket(await.Context()) {}

  udp::socket socket;
  bool isReceiving = false;
  bool hasReceived = false;
  std::size_t size = 0;
  asio::error_code error;
  std::array<unsigned char, std::size_t{64} << 10> buffer;  // a datagram that does not fit would be cut without a word
};

void BeginReceive(const std::shared_ptr<S_Receiver>& receiver) {
  receiver->isReceiving = true;
  receiver->socket.async_receive(asio::buffer(receiver->buffer),
                                 [receiver](const asio::error_code& error, std::size_t size) {
                                   receiver->isReceiving = false;
                                   receiver->size = size;
                                   receiver->error = error;
                                 });
}

template <class Value>
asio::error_code SetOption(udp::socket& socket, int level, int name, const Value& value) {
  if (::setsockopt(socket.native_handle(), level, name, &value, sizeof value) == 0) return {};
  return {errno, asio::error::get_system_category()};
}

asio::error_code ChangeMembership(udp::socket& socket, const asio::ip::address& group, unsigned int interface,
                                  bool isMember) {
  if (group.is_v6()) {
    ipv6_mreq request{};
    const auto bytes = group.to_v6().to_bytes();
    std::copy(bytes.begin(), bytes.end(), request.ipv6mr_multiaddr.s6_addr);
    request.ipv6mr_interface = interface;
    return SetOption(socket, IPPROTO_IPV6, isMember ? IPV6_ADD_MEMBERSHIP : IPV6_DROP_MEMBERSHIP, request);
  }
  ip_mreqn request{};
  request.imr_multiaddr.s_addr = htonl(group.to_v4().to_uint());
  request.imr_ifindex = static_cast<int>(interface);
  return SetOption(socket, IPPROTO_IP, isMember ? IP_ADD_MEMBERSHIP : IP_DROP_MEMBERSHIP, request);
}

std::string JoinError(const asio::error_code& error) {
  if (error.value() == ENODEV) return "there is no route to this group; name the network interface: ?interface=eth0";
  return fmt::format("cannot join the group: {}", error.message());
}

class C_UdpLink : public C_Link {
 public:
  C_UdpLink(const S_Address& address, C_Await& await) : m_await(await), m_address(address) {}
  ~C_UdpLink() override { Shut(); }
  C_UdpLink(const C_UdpLink&) = delete;
  C_UdpLink& operator=(const C_UdpLink&) = delete;

  std::optional<S_LinkFailure> Open() override;
  S_Read Read(C_Await::t_Time deadline) override;
  void Close() override { Shut(); }
  std::string Peer() const override { return EndpointText(m_endpoint); }

 private:
  std::string FindEndpoint();
  asio::error_code Bind();
  std::string Join();
  std::string Rejoin();
  void WarnOfStrangers();
  void Shut() {
    if (m_receiver == nullptr) return;
    asio::error_code ignored;
    m_receiver->socket.close(ignored);
    m_receiver.reset();
  }
  bool IsGroup() const { return m_endpoint.address().is_multicast(); }

  C_Await& m_await;
  const S_Address m_address;
  std::shared_ptr<S_Receiver> m_receiver;
  udp::endpoint m_endpoint;
  unsigned int m_interface = 0;
  C_Await::t_Time m_rejoinAt;
  bool m_hasWarned = false;
};

// Addresses of link-local groups are only complete with an interface. Returns an error text.
std::string C_UdpLink::FindEndpoint() {
  S_ListenAddress place = FindListenAddress(m_await, m_address);
  if (!place.error.empty()) return place.error;
  if (const auto name = m_address.options.find("interface"); name != m_address.options.end()) {
    m_interface = ::if_nametoindex(name->second.c_str());
    if (m_interface == 0) return fmt::format("there is no network interface '{}'; see: ip link", name->second);
  }
  if (place.address.is_v6()) {
    asio::ip::address_v6 address = place.address.to_v6();
    if (m_interface == 0)
      m_interface = static_cast<unsigned int>(address.scope_id());
    else
      address.scope_id(m_interface);
    place.address = address;
  }
  m_endpoint = {place.address, place.port};
  return {};
}

// Bound to its address, the socket gets the datagrams of this group alone; several programs may receive the same one.
asio::error_code C_UdpLink::Bind() {
  asio::error_code error;
  udp::socket& socket = m_receiver->socket;
  socket.open(m_endpoint.protocol(), error);
  if (error) return error;
  asio::error_code ignored;
  socket.set_option(udp::socket::receive_buffer_size(kReceiveBuffer), ignored);
  if (IsGroup()) socket.set_option(udp::socket::reuse_address(true), ignored);
  socket.bind(m_endpoint, error);
  return error;
}

std::string C_UdpLink::Join() {
  m_rejoinAt = C_Await::t_Clock::now() + kRejoinAfter;
  const asio::error_code error = ChangeMembership(m_receiver->socket, m_endpoint.address(), m_interface, true);
  return error ? JoinError(error) : std::string();
}

std::string C_UdpLink::Rejoin() {
  ChangeMembership(m_receiver->socket, m_endpoint.address(), m_interface, false);
  return Join();
}

void C_UdpLink::WarnOfStrangers() {
  const auto interface = m_address.options.find("interface");
  const bool isLocal =
      m_endpoint.address().is_loopback() || (interface != m_address.options.end() && interface->second == "lo");
  if (isLocal || std::exchange(m_hasWarned, true)) return;
  Notify(fmt::format("receives at {}, where other machines can send", EndpointText(m_endpoint)));
}

std::optional<S_LinkFailure> C_UdpLink::Open() {
  if (std::string error = FindEndpoint(); !error.empty()) return S_LinkFailure::Lost(std::move(error));
  m_receiver = std::make_shared<S_Receiver>(m_await);
  if (const asio::error_code error = Bind()) return S_LinkFailure::Lost(ListenErrorText(error, m_address));
  if (std::string error = IsGroup() ? Join() : ""; !error.empty()) return S_LinkFailure::Lost(std::move(error));
  WarnOfStrangers();
  return std::nullopt;
}

// An empty datagram is not the end of the stream. It is ignored.
C_Link::S_Read C_UdpLink::Read(C_Await::t_Time deadline) {
  if (m_receiver == nullptr) return {{}, S_LinkFailure::Lost("not open")};
  S_Receiver& receiver = *m_receiver;
  if (!receiver.isReceiving) BeginReceive(m_receiver);
  if (IsGroup()) deadline = std::min(deadline, m_rejoinAt);
  const bool hasCome = m_await.Until(deadline, [&receiver] { return !receiver.isReceiving; });
  if (!hasCome && IsGroup() && C_Await::t_Clock::now() >= m_rejoinAt) {
    if (std::string error = Rejoin(); !error.empty()) return {{}, S_LinkFailure::Lost(std::move(error))};
  }
  if (!hasCome) return {};
  if (receiver.error) return {{}, S_LinkFailure::Lost(receiver.error.message())};
  m_rejoinAt = C_Await::t_Clock::now() + kRejoinAfter;
  return {std::span(receiver.buffer).first(receiver.size), {}};
}

bool IsInterfaceName(const std::string& value) { return !value.empty() && value.size() < IF_NAMESIZE; }

constexpr S_AddressOption kOptions[] = {
    {"interface", "the name of a network interface, such as eth0", &IsInterfaceName}};

std::string CheckInterface(const S_Address& address) {
  asio::error_code noAddress;
  const bool isGroup = asio::ip::make_address(address.host, noAddress).is_multicast();
  if (isGroup || address.options.empty()) return {};
  return "interface= is for multicast groups; write the interface's own address in place of the host instead";
}

}  // namespace

constexpr S_LinkKind kUdpLink = {{.scheme = "udp",
                                  .example = "udp://ADDRESS:PORT or udp://:PORT",
                                  .host = S_AddressForm::eNeed::Maybe,
                                  .port = S_AddressForm::eNeed::Must,
                                  .options = kOptions,
                                  .check = &CheckInterface},
                                 &MakeLinkOf<C_UdpLink>};

}  // namespace Host
