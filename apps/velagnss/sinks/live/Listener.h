// Sockets that readers connect to.
#ifndef VELAGNSS_APPS_LISTENER_H
#define VELAGNSS_APPS_LISTENER_H

#include <asio/posix/stream_descriptor.hpp>
#include <asio/steady_timer.hpp>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

class C_Listener {
 public:
  explicit C_Listener(asio::io_context& context);
  ~C_Listener();  // removes the file of a Unix socket
  C_Listener(const C_Listener&) = delete;
  C_Listener& operator=(const C_Listener&) = delete;

  // Both return an error text, empty when they listen. Called before `Begin`.
  //
  // At all addresses that `host` means; without one at those of the loopback interface, which no other machine reaches.
  std::string ListenTcp(const std::string& host, const std::string& port);

  // A socket file that a program left behind is replaced, one that is in use is not. `mode`: its permissions.
  std::string ListenUnix(const std::string& path, unsigned int mode);

  // Whether other machines can connect.
  bool IsOpenToOthers() const { return m_isOpenToOthers; }

  // `peer`: "127.0.0.1:40712" and "127.0.0.1"; both empty for a Unix socket.
  struct S_Peer {
    std::string name;
    std::string address;  // empty for this machine, too
  };
  using t_OnAccept = std::function<void(C_FileDescriptor socket, const S_Peer& peer)>;
  using t_OnTrouble = std::function<void(const std::string& text)>;
  void Begin(t_OnAccept onAccept, t_OnTrouble onTrouble);

  void Close();

 private:
  using t_Socket = asio::posix::stream_descriptor;

  int ListenAt(const struct addrinfo& place);
  void Wait(t_Socket& socket);
  void Accept(t_Socket& socket);
  void OnFailure(int error);
  void TurnAway(int socket);
  void RemoveSocketFile();

  asio::io_context& m_context;
  asio::steady_timer m_pause;
  std::vector<std::unique_ptr<t_Socket>> m_sockets;
  C_FileDescriptor m_spare;  // given up for a moment when there are no more descriptors
  std::string m_path;        // of a Unix socket
  bool m_isOpenToOthers = false;
  bool m_isPausing = false;
  t_OnAccept m_onAccept;
  t_OnTrouble m_onTrouble;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LISTENER_H
