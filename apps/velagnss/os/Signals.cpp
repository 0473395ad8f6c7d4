#include "apps/velagnss/os/Signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace Host {
namespace {

volatile std::sig_atomic_t g_signal = 0;
volatile std::sig_atomic_t g_hangups = 0;
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
  g_hangups = g_hangups + 1;
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
  return static_cast<unsigned int>(g_hangups);
}

int SignalReceived() { return g_signal; }
void RequestEnd() {
  if (g_signal == 0) Handle(kEndRequested);
}
int SignalDescriptor() { return g_pipe[0]; }

}  // namespace Host
