// The one thread that serves all network destinations.
#ifndef VELAGNSS_APPS_SINK_THREAD_H
#define VELAGNSS_APPS_SINK_THREAD_H

#include <asio/executor_work_guard.hpp>
#include <asio/io_context.hpp>
#include <chrono>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

// A message for the user, which only the main thread may show.
struct S_SinkMessage {
  enum class eWeight { Detail, Notice, Warning, Error };
  eWeight weight;
  std::string text;
};

class C_SinkThread {
 public:
  using t_Clock = std::chrono::steady_clock;

  C_SinkThread();
  ~C_SinkThread();  // stops at once
  C_SinkThread(const C_SinkThread&) = delete;
  C_SinkThread& operator=(const C_SinkThread&) = delete;

  // Runs `call` on the thread. What is posted before `Stop` or not run by then is never run.
  void Post(std::function<void()> call);

  // Runs `function` on the thread and waits for its result. Not from the thread itself, and not after `Stop`.
  template <class Function>
  auto Call(Function function) {
    std::promise<decltype(function())> result;
    Post([&] { result.set_value(function()); });
    return result.get_future().get();
  }

  // No call runs after this; the objects that calls refer to can go.
  void Stop();

  // On the thread only.
  asio::io_context& Context() { return m_context; }

  // From the thread: hands a message to the main thread.
  void Say(S_SinkMessage::eWeight weight, std::string text);

  // From the thread: something that the main thread may wait for has changed.
  void Wake();

  // From the main thread: shows the messages that have come.
  void ShowMessages();

  // From the main thread: waits until `isDone`, shows messages meanwhile. False when the deadline comes first, or a
  // signal other than `signalBefore`.
  bool WaitFor(const std::function<bool()>& isDone, t_Clock::time_point deadline, int signalBefore = 0);

  // Becomes readable when there is a message.
  int Descriptor() const { return m_event.Get(); }

 private:
  asio::io_context m_context{1};
  asio::executor_work_guard<asio::io_context::executor_type> m_work;
  C_FileDescriptor m_event;
  std::mutex m_mutex;
  std::vector<S_SinkMessage> m_messages;
  std::thread m_thread;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SINK_THREAD_H
