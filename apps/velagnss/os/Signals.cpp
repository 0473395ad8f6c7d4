#include "apps/velagnss/os/Signals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace Host {
namespace {

// Set by handlers, which may run in any thread, and read by others.
std::atomic<int> g_signal = 0;
std::atomic<unsigned int> g_hangups = 0;
static_assert(std::atomic<int>::is_always_lock_free && std::atomic<unsigned int>::is_always_lock_free);
int g_pipe[2] = {-1, -1};

// Only async-signal-safe calls. The value of the byte does not matter, and a full pipe is readable anyway.
void Wake() {
  const int savedErrno = errno;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
  errno = savedErrno;
}

void Handle(int signal) {
  g_signal = signal;
  Wake();
}

void HandleHangup(int) {
  ++g_hangups;
  Wake();
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

// No SA_RESTART: blocking calls return. A signal that has come already has had its first time.
void EndAtSecondSignal(bool on) {
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (IsIgnored(signal)) continue;
    struct sigaction action {};
    action.sa_handler = on && g_signal == signal ? SIG_DFL : &Handle;
    action.sa_flags = on ? static_cast<int>(SA_RESETHAND) : 0;
    ::sigaction(signal, &action, nullptr);
  }
}

void InstallSignalHandlers() {
  if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) g_pipe[0] = g_pipe[1] = -1;
  struct sigaction action {};
  action.sa_handler = &Handle;
  for (const int signal : {SIGINT, SIGTERM})
    ::sigaction(signal, &action, nullptr);  // a caller's SIG_IGN does not count
  EndAtSecondSignal(true);
  action.sa_handler = SIG_IGN;
  for (const int signal : {SIGPIPE, SIGXFSZ}) ::sigaction(signal, &action, nullptr);
}

void CountHangups() {
  struct sigaction action {};
  action.sa_handler = &HandleHangup;
  ::sigaction(SIGHUP, &action, nullptr);
}

// The pipe is emptied before the count is read, so that a hangup in between is not slept through. A signal that ends
// the program stays readable.
unsigned int HangupsReceived() {
  for (char bytes[64]; ::read(g_pipe[0], bytes, sizeof bytes) > 0;) {
  }
  if (g_signal != 0) Wake();
  return g_hangups;
}

int SignalReceived() { return g_signal; }

// A signal that comes first decides.
void RequestEnd() {
  int none = 0;
  if (g_signal.compare_exchange_strong(none, kEndRequested)) Wake();
}

int SignalDescriptor() { return g_pipe[0]; }

void PauseUntilSignal(std::chrono::milliseconds time) {
  pollfd signal{SignalDescriptor(), POLLIN, 0};
  ::poll(&signal, 1, static_cast<int>(time.count()));
}

std::thread StartWithoutSignals(const std::function<void()>& work) {
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);
  std::thread thread(work);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
  return thread;
}

}  // namespace Host
