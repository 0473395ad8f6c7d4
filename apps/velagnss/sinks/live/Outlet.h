// What pieces leave by, while it is open: a connection, a socket for datagrams.
#ifndef VELAGNSS_APPS_OUTLET_H
#define VELAGNSS_APPS_OUTLET_H

#include <functional>
#include <string>

#include "apps/velagnss/sinks/live/SendQueue.h"

namespace Host {

// Used on the sink thread.
class C_Outlet {
 public:
  using t_Clock = C_SendQueue::t_Clock;

  // Called once, in a call of its own, when it has ended by itself; not after `Close`.
  using t_OnEnd = std::function<void(const std::string& why)>;

  virtual ~C_Outlet() = default;

  // Sends `head`, and then what is in the queue.
  virtual void Begin(std::string head, t_OnEnd onEnd) = 0;

  virtual void Put(const t_Piece& piece) = 0;

  // Sends what waits, then ends.
  virtual void Finish() = 0;

  // At once. What has not been sent goes back into the queue.
  virtual void Close() = 0;

  // Ends when nothing has moved for as long as the limits allow.
  virtual void CheckProgress(t_Clock::time_point now) = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_OUTLET_H
