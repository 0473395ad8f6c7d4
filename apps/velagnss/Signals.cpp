#include "apps/velagnss/Signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace Host {
namespace {

volatile std::sig_atomic_t g_signal = 0;
int g_pipe[2] = {-1, -1};

// Only async-signal-safe calls. The byte's value is of no interest, and a full pipe is readable already.
void Handle(int signal) {
  const int savedErrno = errno;
  g_signal = signal;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
  errno = savedErrno;
}

}  // namespace

void InstallSignalHandlers() {
  if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) g_pipe[0] = g_pipe[1] = -1;
  struct sigaction action {};
  action.sa_handler = &Handle;
  action.sa_flags = static_cast<int>(SA_RESETHAND);  // and no SA_RESTART: blocking calls return
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) ::sigaction(signal, &action, nullptr);
  for (const int signal : {SIGPIPE, SIGXFSZ}) std::signal(signal, SIG_IGN);
}

int SignalReceived() { return g_signal; }
int SignalDescriptor() { return g_pipe[0]; }

}  // namespace Host
