// A connection that carries bytes both ways: what protocols such as NTRIP are spoken over.
#ifndef VELAGNSS_APPS_TRANSPORT_H
#define VELAGNSS_APPS_TRANSPORT_H

#include <span>
#include <string>
#include <string_view>

#include "apps/velagnss/net/Await.h"

namespace Host {

class C_Transport {
 public:
  virtual ~C_Transport() = default;

  // Resolves the name and tries its addresses in turn. Returns an error text, empty when connected. `port` is a number
  // or the name of a service.
  virtual std::string Connect(const std::string& host, const std::string& port, C_Await::t_Time deadline) = 0;

  // Waits for bytes until the deadline. They stay until the next call.
  struct S_Read {
    std::span<const unsigned char> bytes;  // empty: none came, the connection has ended, or `error`
    bool hasEnded = false;                 // the other side has closed it
    std::string error;
  };
  virtual S_Read Read(C_Await::t_Time deadline) = 0;

  // Sends while `Read` and the other calls wait; keeps a copy until then. Bytes beyond 64 KiB that still wait are
  // dropped, whole calls at a time. A failure shows in `Read`.
  virtual void Send(std::string_view bytes) = 0;

  virtual void Close() = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TRANSPORT_H
