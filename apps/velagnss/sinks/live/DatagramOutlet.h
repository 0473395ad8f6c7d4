// Sends each unit as a datagram of its own.
#ifndef VELAGNSS_APPS_DATAGRAM_OUTLET_H
#define VELAGNSS_APPS_DATAGRAM_OUTLET_H

#include "apps/velagnss/sinks/live/Outlet.h"

namespace Host {

// A unit that no datagram can hold is dropped: a part of it is of no use to anybody.
class C_DatagramOutlet : public C_Outlet {
 public:
  // `socket` is connected.
  C_DatagramOutlet(asio::io_context& context, C_FileDescriptor socket, t_SinkCounters counters,
                   std::shared_ptr<C_SendQueue> queue)
      : C_Outlet(context, std::move(socket), std::move(counters), std::move(queue)) {}

  void Begin(std::string head, t_OnEnd onEnd) override;

 private:
  enum class eSent { Yes, NotNow, Failed };

  void Send() override;
  eSent SendPiece(const t_Piece& piece);
  eSent SendUnit(std::string_view unit);

  bool m_isWaiting = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_DATAGRAM_OUTLET_H
