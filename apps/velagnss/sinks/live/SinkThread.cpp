#include "apps/velagnss/sinks/live/SinkThread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <asio/executor_work_guard.hpp>
#include <asio/post.hpp>
#include <cstdint>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

// That wait for the main thread. Readers that come and go must not fill the memory while it is busy.
constexpr std::size_t kMostMessages = 1'000;

void Show(const S_SinkMessage& message) {
  switch (message.weight) {
    case S_SinkMessage::eWeight::Detail:
      return ReportDetail(message.text);
    case S_SinkMessage::eWeight::Notice:
      return ReportNotice(message.text);
    case S_SinkMessage::eWeight::Warning:
      return ReportWarning(message.text);
    case S_SinkMessage::eWeight::Error:
      return ReportError(message.text);
  }
}

}  // namespace

C_SinkThread::C_SinkThread()
    : m_work(asio::make_work_guard(m_context)), m_event(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  m_thread = StartWithoutSignals([this] { m_context.run(); });
}

C_SinkThread::~C_SinkThread() { Stop(); }

void C_SinkThread::Post(std::function<void()> call) { asio::post(m_context, std::move(call)); }

void C_SinkThread::Stop() {
  m_context.stop();
  if (m_thread.joinable()) m_thread.join();
}

void C_SinkThread::Say(S_SinkMessage::eWeight weight, std::string text) {
  {
    const std::lock_guard lock(m_mutex);
    if (m_messages.size() < kMostMessages) m_messages.push_back({weight, std::move(text)});
  }
  Wake();
}

void C_SinkThread::Wake() {
  const std::uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = ::write(m_event.Get(), &one, sizeof one);
}

void C_SinkThread::ShowMessages() {
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t ignored = ::read(m_event.Get(), &count, sizeof count);
  std::vector<S_SinkMessage> messages;
  {
    const std::lock_guard lock(m_mutex);
    messages.swap(m_messages);
  }
  for (const S_SinkMessage& message : messages) Show(message);
}

// Each round first clears the event and then looks: a change in between leaves the event set.
bool C_SinkThread::WaitFor(const std::function<bool()>& isDone, t_Clock::time_point deadline, int signalBefore) {
  while (true) {
    ShowMessages();
    if (isDone()) return true;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - t_Clock::now()).count();
    if (left <= 0 || SignalReceived() != signalBefore) return false;
    constexpr std::int64_t kLongest = 1'000;  // ms
    pollfd waiting[] = {{m_event.Get(), POLLIN, 0}, {SignalDescriptor(), POLLIN, 0}};
    ::poll(waiting, signalBefore == 0 ? 2 : 1, static_cast<int>(std::min<std::int64_t>(left, kLongest)));
  }
}

}  // namespace Host
