#include "apps/velagnss/input/live/UnixLink.h"

#include <fmt/core.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <asio/local/stream_protocol.hpp>
#include <cerrno>
#include <cstring>

#include "apps/velagnss/input/live/StreamLink.h"

namespace Host {
namespace {

using t_Stream = asio::local::stream_protocol;

constexpr std::size_t kMaxPath = sizeof(sockaddr_un::sun_path) - 1;

std::string ConnectError(int error) {
  switch (error) {
    case ENOENT:
      return "there is no such socket file; start the program that makes it";
    case ECONNREFUSED:
      return "no program listens at it";
    default:
      return std::strerror(error);
  }
}

class C_UnixLink : public C_StreamLink<t_Stream::socket> {
 public:
  C_UnixLink(const S_Address& address, C_Await& await)
      : C_StreamLink(await, "the other side has closed the connection"), m_path(address.path) {}

  // Never waits: asio takes a full queue of connections (EAGAIN) for one that is under way, and then for a good one.
  std::optional<S_LinkFailure> Open() override {
    t_Stream::socket socket(m_await.Context());
    asio::error_code error;
    socket.open({}, error);
    if (!error) socket.non_blocking(true, error);
    if (error) return S_LinkFailure::Lost(error.message());
    const t_Stream::endpoint endpoint(m_path);
    if (::connect(socket.native_handle(), endpoint.data(), static_cast<socklen_t>(endpoint.size())) != 0)
      return S_LinkFailure::Lost(ConnectError(errno));
    Use(std::move(socket), {});
    return std::nullopt;
  }

 private:
  const std::string m_path;
};

std::string CheckPath(const S_Address& address) {
  if (address.path.size() <= kMaxPath) return {};
  return fmt::format("the path of a socket has at most {} characters, this one {}", kMaxPath, address.path.size());
}

}  // namespace

constexpr S_LinkKind kUnixLink = {{.scheme = "unix",
                                   .example = "unix:///PATH, with three slashes",
                                   .path = S_AddressForm::eNeed::Must,
                                   .check = &CheckPath},
                                  &MakeLinkOf<C_UnixLink>};

}  // namespace Host
