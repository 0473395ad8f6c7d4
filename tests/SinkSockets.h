// The other ends of destinations: sockets on this machine, read and written with waits that end.
#ifndef VELAGNSS_TESTS_SINK_SOCKETS_H
#define VELAGNSS_TESTS_SINK_SOCKETS_H

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <memory>
#include <string>
#include <string_view>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/sinks/live/Piece.h"

namespace Test {

using Host::C_FileDescriptor;

// Long enough for the slowest machine: a test that fails waits so long, one that passes does not.
inline constexpr int kPatience = 20'000;  // ms

inline sockaddr_in Loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// A socket of `type` bound to a port of its own.
struct Bound {
  explicit Bound(int type) : socket(::socket(AF_INET, type | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = Loopback(0);
    socklen_t size = sizeof address;
    EXPECT_EQ(::bind(socket.Get(), reinterpret_cast<sockaddr*>(&address), size), 0);
    ::getsockname(socket.Get(), reinterpret_cast<sockaddr*>(&address), &size);
    port = ntohs(address.sin_port);
    if (type == SOCK_STREAM) ::listen(socket.Get(), 8);
  }
  C_FileDescriptor Accept() const {
    pollfd waiting{socket.Get(), POLLIN, 0};
    EXPECT_EQ(::poll(&waiting, 1, kPatience), 1) << "nobody connects";
    return C_FileDescriptor(::accept(socket.Get(), nullptr, nullptr));
  }

  C_FileDescriptor socket;
  int port = 0;
};

inline int FreePort() { return Bound(SOCK_STREAM).port; }

inline C_FileDescriptor ConnectTo(int port, int receiveBuffer = 0) {
  C_FileDescriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (receiveBuffer > 0) ::setsockopt(socket.Get(), SOL_SOCKET, SO_RCVBUF, &receiveBuffer, sizeof receiveBuffer);
  const sockaddr_in address = Loopback(port);
  EXPECT_EQ(::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return socket;
}

inline C_FileDescriptor ConnectTo(const std::string& path) {
  C_FileDescriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  path.copy(address.sun_path, sizeof address.sun_path - 1);
  EXPECT_EQ(::connect(socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  return socket;
}

// What can be read until there are `size` bytes, or the end. `ended` says which.
inline std::string ReadFrom(const C_FileDescriptor& socket, std::size_t size, bool* ended = nullptr) {
  std::string bytes;
  if (ended != nullptr) *ended = false;
  while (bytes.size() < size) {
    pollfd waiting{socket.Get(), POLLIN, 0};
    if (::poll(&waiting, 1, kPatience) != 1) {
      ADD_FAILURE() << "only " << bytes.size() << " bytes came";
      break;
    }
    char buffer[4096];
    const ssize_t count = ::read(socket.Get(), buffer, std::min(sizeof buffer, size - bytes.size()));
    if (count <= 0) {
      if (ended != nullptr) *ended = true;
      break;
    }
    bytes.append(buffer, static_cast<std::size_t>(count));
  }
  return bytes;
}

inline std::string ReadToEnd(const C_FileDescriptor& socket) { return ReadFrom(socket, std::string::npos); }

inline void WriteTo(const C_FileDescriptor& socket, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(socket.Get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return;  // the other side need not take all of it
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
}

// A unit for each line.
inline Host::t_Piece PieceOf(std::string_view lines) {
  auto piece = std::make_shared<Host::S_Piece>();
  for (const char c : lines) {
    piece->bytes += c;
    if (c == '\n') piece->EndUnit();
  }
  return piece;
}

}  // namespace Test

#endif  // VELAGNSS_TESTS_SINK_SOCKETS_H
