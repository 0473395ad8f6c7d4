// What pieces leave by, while it is open: a connection, a socket for datagrams.
#ifndef VELAGNSS_APPS_OUTLET_H
#define VELAGNSS_APPS_OUTLET_H

#include <asio/posix/stream_descriptor.hpp>
#include <functional>
#include <memory>
#include <string>

#include "apps/velagnss/os/FileDescriptor.h"
#include "apps/velagnss/sinks/live/SendQueue.h"

namespace Host {

// Used on the sink thread.
class C_Outlet : public std::enable_shared_from_this<C_Outlet> {
 public:
  using t_Clock = C_SendQueue::t_Clock;

  // Called once, in a call of its own, when it has ended by itself; not after `Close`.
  using t_OnEnd = std::function<void(const std::string& why)>;

  virtual ~C_Outlet() = default;
  C_Outlet(const C_Outlet&) = delete;
  C_Outlet& operator=(const C_Outlet&) = delete;

  // Sends `head`, and then what is in the queue.
  virtual void Begin(std::string head, t_OnEnd onEnd) = 0;

  void Put(const t_Piece& piece);

  // Sends what waits, then ends.
  void Finish();

  // At once. What has not been sent goes back into the queue.
  void Close();

  // Ends when nothing has moved for as long as the limits allow.
  virtual void CheckProgress(t_Clock::time_point) {}

 protected:
  C_Outlet(asio::io_context& context, C_FileDescriptor descriptor, t_SinkCounters counters,
           std::shared_ptr<C_SendQueue> queue);

  // As much of the queue as can be sent now. When nothing waits while it is finishing, it ends.
  virtual void Send() = 0;

  // The descriptor is still open.
  virtual void BeforeEnd() {}

  // The handlers of what is going on run once more, with an error.
  void End(const std::string& why);

  asio::posix::stream_descriptor m_descriptor;
  t_SinkCounters m_counters;
  std::shared_ptr<C_SendQueue> m_queue;
  t_OnEnd m_onEnd;
  bool m_isFinishing = false;
  bool m_hasEnded = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OUTLET_H
