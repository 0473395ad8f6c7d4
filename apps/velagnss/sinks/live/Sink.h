// A destination of `--to`: a file, a socket, a port, a caster.
//
// A new kind is a class with this interface, in a file of its own, and a row in Sinks.cpp.
#ifndef VELAGNSS_APPS_SINK_H
#define VELAGNSS_APPS_SINK_H

#include <cstdint>
#include <string>

#include "apps/velagnss/sinks/live/Piece.h"

namespace Host {

struct S_SinkTotals {
  std::uint64_t readers = 0;   // connected now
  std::uint64_t accepted = 0;  // so far
  std::uint64_t units = 0;     // sent, to each reader
  std::uint64_t bytes = 0;     // likewise
  std::uint64_t dropped = 0;   // units
  std::uint64_t waiting = 0;   // units that are not sent yet
};

// Used by the main thread.
class C_Sink {
 public:
  virtual ~C_Sink() = default;

  // For messages.
  virtual const std::string& Name() const = 0;

  // False, reported, when it can never take anything, such as an address that is taken.
  virtual bool Open() = 0;

  // Takes a piece. Sinks over the network never wait here.
  virtual void Put(const t_Piece& piece) = 0;

  // Whether a source that can wait should wait now.
  virtual bool IsFull() const { return false; }

  // Whether it can take no more: failed, which has been reported, or its reader has left.
  virtual bool HasEnded() const { return false; }

  // Sends what waits and ends the connections; `IsFinished` then becomes true.
  virtual void Finish() = 0;
  virtual bool IsFinished() const = 0;

  // Whether something was lost that should not have been; reported.
  virtual bool HasFailed() const { return false; }

  virtual S_SinkTotals Totals() const = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SINK_H
