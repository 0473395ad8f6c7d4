#include "apps/velagnss/sinks/live/Listener.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <asio/io_context.hpp>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "apps/velagnss/net/TcpSocket.h"

namespace Host {
namespace {

using namespace std::chrono_literals;

constexpr int kBacklog = 128;
constexpr int kMostAtOnce = 64;  // connections that are accepted before others get their turn

// What a reader has not taken is bounded by its queue; the system's own buffers, of some megabytes by default, would
// hold an hour of old corrections.
constexpr int kSendBuffer = 32 * 1024;

using t_AddressList = std::unique_ptr<addrinfo, decltype(&::freeaddrinfo)>;

void SetOption(int socket, int level, int name, int value) { ::setsockopt(socket, level, name, &value, sizeof value); }

std::string BindErrorText(int error) {
  switch (error) {
    case EADDRINUSE:
      return "another program listens there; choose another port";
    case EACCES:
      return "ports below 1024 are for the superuser; choose another one";
    case EADDRNOTAVAIL:
      return "is not an address of this machine";
    default:
      return std::strerror(error);
  }
}

bool IsLoopback(const sockaddr& address) {
  if (address.sa_family == AF_INET) {
    const auto& v4 = reinterpret_cast<const sockaddr_in&>(address);
    return ntohl(v4.sin_addr.s_addr) >> 24 == 127;
  }
  const auto& v6 = reinterpret_cast<const sockaddr_in6&>(address).sin6_addr;
  return IN6_IS_ADDR_LOOPBACK(&v6) || (IN6_IS_ADDR_V4MAPPED(&v6) && v6.s6_addr[12] == 127);
}

C_Listener::S_Peer PeerOf(const sockaddr_storage& address, socklen_t size) {
  if (address.ss_family != AF_INET && address.ss_family != AF_INET6) return {};
  char host[NI_MAXHOST] = "";
  char port[NI_MAXSERV] = "";
  const auto* const any = reinterpret_cast<const sockaddr*>(&address);
  ::getnameinfo(any, size, host, sizeof host, port, sizeof port, NI_NUMERICHOST | NI_NUMERICSERV);
  const bool isV6 = address.ss_family == AF_INET6;
  return {fmt::format("{}{}{}:{}", isV6 ? "[" : "", host, isV6 ? "]" : "", port), IsLoopback(*any) ? "" : host};
}

C_FileDescriptor Spare() { return C_FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)); }

// Whether a program listens at the socket file.
bool IsInUse(const sockaddr_un& address) {
  const C_FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  return ::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 ||
         (errno != ECONNREFUSED && errno != ENOENT);
}

// Returns an error text.
std::string MakeWayFor(const sockaddr_un& address) {
  struct stat status {};
  if (::lstat(address.sun_path, &status) != 0) return {};
  if (!S_ISSOCK(status.st_mode)) return "there is a file of this name that is not a socket; choose another one";
  if (IsInUse(address)) return "another program listens there; choose another path";
  ::unlink(address.sun_path);
  return {};
}

}  // namespace

C_Listener::C_Listener(asio::io_context& context) : m_context(context), m_pause(context), m_spare(Spare()) {}

C_Listener::~C_Listener() { RemoveSocketFile(); }

std::string C_Listener::ListenTcp(const std::string& host, const std::string& port) {
  addrinfo hints{};
  hints.ai_family = AF_UNSPEC;
  hints.ai_socktype = SOCK_STREAM;
  hints.ai_flags = host.empty() ? 0 : AI_PASSIVE;
  addrinfo* found = nullptr;
  if (const int error = ::getaddrinfo(host.empty() ? nullptr : host.c_str(), port.c_str(), &hints, &found); error != 0)
    return ::gai_strerror(error);
  const t_AddressList owner(found, &::freeaddrinfo);
  // A machine without IPv6 has only one of the two loopback addresses.
  int missing = 0;
  for (; found != nullptr; found = found->ai_next) {
    const int error = ListenAt(*found);
    if (error == EADDRNOTAVAIL || error == EAFNOSUPPORT)
      missing = error;
    else if (error != 0)
      return BindErrorText(error);
  }
  return m_sockets.empty() ? BindErrorText(missing) : std::string();
}

// Returns the system's error, or 0.
int C_Listener::ListenAt(const addrinfo& place) {
  C_FileDescriptor socket(::socket(place.ai_family, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket.IsOpen()) return errno;
  SetOption(socket.Get(), SOL_SOCKET, SO_REUSEADDR, 1);
  SetOption(socket.Get(), SOL_SOCKET, SO_SNDBUF, kSendBuffer);  // those that are accepted inherit it
  if (::bind(socket.Get(), place.ai_addr, place.ai_addrlen) != 0 || ::listen(socket.Get(), kBacklog) != 0) return errno;
  m_isOpenToOthers = m_isOpenToOthers || !IsLoopback(*place.ai_addr);
  m_sockets.push_back(std::make_unique<t_Socket>(m_context, socket.Release()));
  return 0;
}

std::string C_Listener::ListenUnix(const std::string& path, unsigned int mode) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path)
    return fmt::format("a socket file's path has at most {} bytes", sizeof address.sun_path - 1);
  path.copy(address.sun_path, path.size());
  if (std::string error = MakeWayFor(address); !error.empty()) return error;
  C_FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  SetOption(socket.Get(), SOL_SOCKET, SO_SNDBUF, kSendBuffer);
  const mode_t mask = ::umask(~mode & 0777U);  // the file must never have more permissions than it shall have
  const int bound = ::bind(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const int error = errno;
  ::umask(mask);
  if (bound != 0) return std::strerror(error);
  m_path = path;
  if (::listen(socket.Get(), kBacklog) != 0) return std::strerror(errno);
  m_sockets.push_back(std::make_unique<t_Socket>(m_context, socket.Release()));
  return {};
}

void C_Listener::Begin(t_OnAccept onAccept, t_OnTrouble onTrouble) {
  m_onAccept = std::move(onAccept);
  m_onTrouble = std::move(onTrouble);
  for (const auto& socket : m_sockets) Wait(*socket);
}

void C_Listener::Close() {
  asio::error_code ignored;
  for (const auto& socket : m_sockets) socket->close(ignored);
  m_pause.cancel();
  RemoveSocketFile();
}

void C_Listener::RemoveSocketFile() {
  if (!m_path.empty()) ::unlink(m_path.c_str());
  m_path.clear();
}

void C_Listener::Wait(t_Socket& socket) {
  socket.async_wait(t_Socket::wait_read, [this, &socket](const asio::error_code& error) {
    if (!error) Accept(socket);
  });
}

void C_Listener::Accept(t_Socket& socket) {
  for (int i = 0; i < kMostAtOnce && socket.is_open(); ++i) {
    sockaddr_storage address{};
    socklen_t size = sizeof address;
    C_FileDescriptor reader(
        ::accept4(socket.native_handle(), reinterpret_cast<sockaddr*>(&address), &size, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (reader.IsOpen()) {
      if (m_path.empty()) TuneTcp(reader.Get());
      m_onAccept(std::move(reader), PeerOf(address, size));
      continue;
    }
    if (errno == EAGAIN) break;
    if (errno == EINTR || errno == ECONNABORTED) continue;
    const int error = errno;
    TurnAway(socket.native_handle());
    return OnFailure(error);
  }
  if (socket.is_open()) Wait(socket);
}

// A connection that cannot be accepted would keep the socket readable, and us busy.
void C_Listener::TurnAway(int socket) {
  m_spare.Close();
  C_FileDescriptor(::accept4(socket, nullptr, nullptr, SOCK_CLOEXEC)).Close();
  m_spare = Spare();
}

void C_Listener::OnFailure(int error) {
  m_onTrouble(fmt::format("turns clients away: {}", std::strerror(error)));
  if (std::exchange(m_isPausing, true)) return;
  m_pause.expires_after(1s);
  m_pause.async_wait([this](const asio::error_code& cancelled) {
    if (cancelled) return;
    m_isPausing = false;
    for (const auto& socket : m_sockets) {
      socket->cancel();
      Wait(*socket);
    }
  });
}

}  // namespace Host
