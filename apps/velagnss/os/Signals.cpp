#include "apps/velagnss/os/Signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace Host {
namespace {

volatile std::sig_atomic_t g_signal = 0;
int g_pipe[2] = {-1, -1};

// Only async-signal-safe calls. The value of the byte does not matter, and a full pipe is readable anyway.
void Handle(int signal) {
  const int savedErrno = errno;
  g_signal = signal;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
  errno = savedErrno;
}

bool IsIgnored(int signal) {
  struct sigaction action {};
  return ::sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

}  // namespace

void InstallSignalHandlers() {
  if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) g_pipe[0] = g_pipe[1] = -1;
  struct sigaction action {};
  action.sa_handler = &Handle;
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // and no SA_RESTART: blocking calls return
  for (const int signal : {SIGINT, SIGTERM}) ::sigaction(signal, &action, nullptr);
  if (!IsIgnored(SIGHUP)) ::sigaction(SIGHUP, &action, nullptr);
  action.sa_handler = SIG_IGN;
  for (const int signal : {SIGPIPE, SIGXFSZ}) ::sigaction(signal, &action, nullptr);
}

int SignalReceived() { return g_signal; }
int SignalDescriptor() { return g_pipe[0]; }

}  // namespace Host
