// Sends each unit as a datagram of its own.
#ifndef VELAGNSS_APPS_DATAGRAM_OUTLET_H
#define VELAGNSS_APPS_DATAGRAM_OUTLET_H

#include <asio/posix/stream_descriptor.hpp>
#include <memory>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/sinks/live/Outlet.h"

namespace Host {

// A unit that no datagram can hold is dropped: a part of it is of no use to anybody.
class C_DatagramOutlet : public C_Outlet, public std::enable_shared_from_this<C_DatagramOutlet> {
 public:
  // `socket` is connected.
  C_DatagramOutlet(asio::io_context& context, C_FileDescriptor socket, t_SinkCounters counters,
                   std::shared_ptr<C_SendQueue> queue);

  void Begin(std::string head, t_OnEnd onEnd) override;
  void Put(const t_Piece& piece) override;
  void Finish() override;
  void Close() override;
  void CheckProgress(t_Clock::time_point) override {}

 private:
  enum class eSent { Yes, NotNow, Failed };

  void Send();
  eSent SendPiece(const t_Piece& piece);
  eSent SendUnit(std::string_view unit);
  void End(const std::string& why);

  asio::posix::stream_descriptor m_socket;
  t_SinkCounters m_counters;
  std::shared_ptr<C_SendQueue> m_queue;
  t_OnEnd m_onEnd;
  bool m_isWaiting = false;
  bool m_isFinishing = false;
  bool m_hasEnded = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_DATAGRAM_OUTLET_H
