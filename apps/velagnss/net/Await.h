// Waits for operations of asio one after the other: the thread of a source reads as a sequence of steps, each of which
// has a deadline and ends early when the program does.
#ifndef VELAGNSS_APPS_AWAIT_H
#define VELAGNSS_APPS_AWAIT_H

#include <asio/error.hpp>
#include <asio/io_context.hpp>
#include <atomic>
#include <chrono>
#include <functional>

namespace Host {

class C_Await {
 public:
  using t_Clock = std::chrono::steady_clock;
  using t_Time = t_Clock::time_point;

  C_Await() : m_context(1) {}

  // For the sockets and ports that one thread uses. Their handlers run only in the calls below.
  asio::io_context& Context() { return m_context; }

  // Runs handlers until `isDone`, until the deadline, or until `Stop`. Whether `isDone`.
  bool Until(t_Time deadline, const std::function<bool()>& isDone);

  // Starts an operation and waits for its end. When that does not come in time, `cancel` must make the operation end,
  // and its end is waited for. The error is `timed_out` then, and `operation_aborted` after `Stop`.
  using t_Handler = std::function<void(const asio::error_code& error)>;
  asio::error_code Operation(t_Time deadline, const std::function<void(t_Handler)>& start,
                             const std::function<void()>& cancel);

  // False after `Stop`.
  bool Sleep(t_Clock::duration time);

  // From any thread: ends the wait that is going on and all later ones.
  void Stop();
  bool IsStopping() const { return m_isStopping; }

  // From any thread: `call` runs in the next wait.
  void Post(std::function<void()> call);

 private:
  asio::io_context m_context;
  std::atomic<bool> m_isStopping = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_AWAIT_H
