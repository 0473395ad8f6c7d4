#include "apps/velagnss/net/Await.h"

#include <asio/post.hpp>
#include <utility>

namespace Host {

// What has happened already counts even after the deadline: the thread may have been kept from looking at it.
bool C_Await::Until(t_Time deadline, const std::function<bool()>& isDone) {
  while (!isDone()) {
    if (m_isStopping) return false;
    // A context without work counts as stopped, and would not wait.
    const auto work = asio::make_work_guard(m_context);
    m_context.restart();
    const bool isLate = t_Clock::now() >= deadline;
    if ((isLate ? m_context.poll_one() : m_context.run_one_until(deadline)) == 0 && isLate) return false;
  }
  return true;
}

asio::error_code C_Await::Operation(t_Time deadline, const std::function<void(t_Handler)>& start,
                                    const std::function<void()>& cancel) {
  bool isDone = false;
  asio::error_code result;
  start([&](const asio::error_code& error) {
    isDone = true;
    result = error;
  });
  if (Until(deadline, [&] { return isDone; })) return result;
  cancel();
  while (!isDone) {
    m_context.restart();
    m_context.run_one();
  }
  return m_isStopping ? asio::error::operation_aborted : asio::error::timed_out;
}

bool C_Await::Sleep(t_Clock::duration time) {
  Until(t_Clock::now() + time, [] { return false; });
  return !m_isStopping;
}

void C_Await::Stop() {
  m_isStopping = true;
  asio::post(m_context, [] {});
}

void C_Await::Post(std::function<void()> call) { asio::post(m_context, std::move(call)); }

}  // namespace Host
