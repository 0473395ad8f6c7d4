#include "apps/velagnss/os/TerminalSignals.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <utility>

#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

std::atomic<bool> g_stop = false;
std::atomic<bool> g_resumed = false;
static_assert(std::atomic<bool>::is_always_lock_free);
int g_pipe[2] = {-1, -1};

// Also when the terminal is lost: using it then fails, and stops nobody.
bool IsInForeground(int terminal) {
  const pid_t group = ::tcgetpgrp(terminal);
  return group < 0 || group == ::getpgrp();
}

// Only async-signal-safe calls.
void Note(int signal) {
  const int savedErrno = errno;
  if (signal == SIGTSTP) g_stop = true;
  if (signal == SIGCONT) g_resumed = true;
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = ::write(g_pipe[1], &byte, 1);
  errno = savedErrno;
}

// No SA_RESTART: a write to a terminal that takes nothing returns, see C_ScreenThread::Free.
void Catch(int signal, struct sigaction* before) {
  struct sigaction action {};
  action.sa_handler = &Note;
  ::sigaction(signal, &action, before);
}

}  // namespace

C_TerminalSignals::C_TerminalSignals() : m_before() {
  if (::pipe2(g_pipe, O_CLOEXEC | O_NONBLOCK) != 0) g_pipe[0] = g_pipe[1] = -1;
  g_stop = false;
  g_resumed = false;
  for (int i = 0; i < 3; ++i) {
    Catch(kSignals[i], &m_before[i]);
    if (kSignals[i] == SIGTSTP && m_before[i].sa_handler == SIG_IGN) ::sigaction(SIGTSTP, &m_before[i], nullptr);
  }
}

C_TerminalSignals::~C_TerminalSignals() {
  for (int i = 0; i < 3; ++i) ::sigaction(kSignals[i], &m_before[i], nullptr);
  for (int& end : g_pipe) ::close(std::exchange(end, -1));
}

int C_TerminalSignals::Descriptor() const { return g_pipe[0]; }

// Emptied first: a signal in between is found the next time.
C_TerminalSignals::S_Came C_TerminalSignals::Take() {
  for (char bytes[64]; ::read(g_pipe[0], bytes, sizeof bytes) > 0;) {
  }
  return {g_stop.exchange(false), g_resumed.exchange(false)};
}

// Sent to this thread, so that it has its effect on the whole program before `raise` returns.
void C_TerminalSignals::StopProgram() {
  struct sigaction noting {};
  ::sigaction(SIGTSTP, &m_before[1], &noting);
  ::raise(SIGTSTP);
  ::sigaction(SIGTSTP, &noting, nullptr);
}

// Without a shell that could let it go on, the program is not stopped.
void WaitForForeground(int terminal) {
  constexpr int kPause = 100;  // ms
  while (!IsInForeground(terminal) && SignalReceived() == 0) {
    ::raise(SIGTTOU);
    ::poll(nullptr, 0, kPause);
  }
}

}  // namespace Host
