// What waits to be sent to one reader: bounded, because a slow reader must not fill the memory, and because old
// corrections are worse than none.
#ifndef VELAGNSS_APPS_SEND_QUEUE_H
#define VELAGNSS_APPS_SEND_QUEUE_H

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <utility>

#include "apps/velagnss/sinks/live/Piece.h"

namespace Host {

// What becomes of a reader that does not keep up.
enum class ePolicy {
  Drop,   // loses the oldest pieces
  Close,  // is disconnected
  Wait,   // holds the source up; for files, which can wait
};

struct S_QueueLimits {
  std::size_t bytes = 1 << 20;
  std::chrono::milliseconds age{5'000};     // of the oldest piece; no limit with `Wait`
  std::chrono::milliseconds stall{30'000};  // without progress, then the reader is disconnected
  ePolicy policy = ePolicy::Drop;
};

// Counted on the sink thread, read by the main thread.
struct S_SinkCounters {
  std::atomic<std::uint64_t> readers = 0;   // connected now
  std::atomic<std::uint64_t> accepted = 0;  // so far
  std::atomic<std::uint64_t> units = 0;     // sent, to each reader
  std::atomic<std::uint64_t> bytes = 0;     // likewise
  std::atomic<std::uint64_t> dropped = 0;   // units
  std::atomic<std::uint64_t> waiting = 0;   // units that are not sent yet
  std::atomic<std::uint64_t> full = 0;      // queues that are full
};

// Shared, because handlers that have not run may outlive a sink.
using t_SinkCounters = std::shared_ptr<S_SinkCounters>;

class C_SendQueue {
 public:
  using t_Clock = std::chrono::steady_clock;

  C_SendQueue(const S_QueueLimits& limits, t_SinkCounters counters)
      : m_limits(limits), m_counters(std::move(counters)) {}
  ~C_SendQueue() {
    while (!IsEmpty()) PopOldest();
  }
  C_SendQueue(const C_SendQueue&) = delete;
  C_SendQueue& operator=(const C_SendQueue&) = delete;

  // Appends a piece, and drops the oldest ones to stay within the limits. The newest one stays, however long it is.
  // False: it is over the limits, and the policy is to close.
  bool Add(t_Piece piece, t_Clock::time_point now);

  // Takes the oldest piece that is not too old; null when there is none.
  t_Piece Take(t_Clock::time_point now);

  // Puts back what could not be sent after all, without its first `unitsSent` units.
  void PutBack(const t_Piece& piece, std::size_t unitsSent, t_Clock::time_point now);

  void Clear();

  bool IsEmpty() const { return m_pieces.empty(); }
  std::size_t Bytes() const { return m_bytes; }

 private:
  struct S_Waiting {
    t_Piece piece;
    t_Clock::time_point since;
  };

  bool IsOverLimits(t_Clock::time_point now) const;
  bool IsTooOld(t_Clock::time_point now) const;
  t_Piece PopOldest();
  void DropOldest() { m_counters->dropped += PopOldest()->ends.size(); }
  void SetBytes(std::size_t bytes);

  S_QueueLimits m_limits;
  t_SinkCounters m_counters;
  std::deque<S_Waiting> m_pieces;
  std::size_t m_bytes = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SEND_QUEUE_H
