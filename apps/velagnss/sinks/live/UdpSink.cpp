#include "apps/velagnss/sinks/live/UdpSink.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "apps/velagnss/net/Resolve.h"
#include "apps/velagnss/sinks/live/OutgoingSink.h"

namespace Host {
namespace {

constexpr auto kLookUpTime = std::chrono::seconds(15);

template <class Value>
bool Set(int socket, int level, int name, const Value& value) {
  return ::setsockopt(socket, level, name, &value, sizeof value) == 0;
}

// Without a number the system's own applies: 1 for groups, which stay in the local network then.
bool SetTtl(int socket, bool isV6, int ttl) {
  if (ttl == 0) return true;
  if (isV6)
    return Set(socket, IPPROTO_IPV6, IPV6_MULTICAST_HOPS, ttl) && Set(socket, IPPROTO_IPV6, IPV6_UNICAST_HOPS, ttl);
  return Set(socket, IPPROTO_IP, IP_MULTICAST_TTL, ttl) && Set(socket, IPPROTO_IP, IP_TTL, ttl);
}

bool SetInterface(int socket, bool isV6, const std::string& name) {
  const auto index = static_cast<int>(::if_nametoindex(name.c_str()));
  if (index == 0) return false;
  ip_mreqn request{};
  request.imr_ifindex = index;
  return isV6 ? Set(socket, IPPROTO_IPV6, IPV6_MULTICAST_IF, index) : Set(socket, IPPROTO_IP, IP_MULTICAST_IF, request);
}

S_Dialed Failed(std::string text) {
  return {.failure = S_LinkFailure{S_LinkFailure::eKind::Lost, std::move(text), {}}};
}

S_Dialed Dial(C_Await& await, const S_Address& address) {
  const S_Resolved resolved = Resolve(await, address.host, address.port, C_Await::t_Clock::now() + kLookUpTime);
  if (!resolved.error.empty()) return Failed(resolved.error);
  const auto& endpoint = resolved.endpoints.front();
  const bool isV6 = endpoint.address().is_v6();
  C_FileDescriptor socket(::socket(isV6 ? AF_INET6 : AF_INET, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  Set(socket.Get(), SOL_SOCKET, SO_BROADCAST, 1);  // for addresses such as 192.168.1.255
  const auto interface = address.options.find("interface");
  const bool isSet = SetTtl(socket.Get(), isV6, static_cast<int>(NumberOption(address, "ttl", 0))) &&
                     (interface == address.options.end() || SetInterface(socket.Get(), isV6, interface->second));
  if (!isSet || ::connect(socket.Get(), endpoint.data(), static_cast<socklen_t>(endpoint.size())) != 0)
    return Failed(std::strerror(errno));
  return {.descriptor = std::move(socket), .peer = EndpointText(endpoint), .kind = S_Dialed::eKind::Datagrams};
}

std::unique_ptr<C_NetSink> Make(const S_SinkMaking& making) {
  return std::make_unique<C_OutgoingSink>(making.thread, making.address.Shown(), making.limits, S_DialRules(),
                                          [address = making.address](C_Await& await) { return Dial(await, address); });
}

bool IsInterface(const std::string& value) { return !value.empty() && value.size() < IF_NAMESIZE; }

constexpr S_AddressOption kOptions[] = {
    {"ttl", "a number from 1 to 255", &IsNumber<1, 255>},
    {"interface", "the name of a network interface, such as eth0", &IsInterface},
};

}  // namespace

const S_SinkKind kUdpSink = {{.scheme = "udp",
                              .example = "udp://HOST:PORT",
                              .host = S_AddressForm::eNeed::Must,
                              .port = S_AddressForm::eNeed::Must,
                              .options = kOptions},
                             &Make};

}  // namespace Host
