// Signals about the terminal that the program runs at: SIGWINCH, SIGTSTP, SIGCONT.
#ifndef VELAGNSS_APPS_TERMINAL_SIGNALS_H
#define VELAGNSS_APPS_TERMINAL_SIGNALS_H

#include <csignal>

namespace Host {

// While it lives, the signals are noted for the thread that owns the terminal, which alone may touch it: a handler can
// run in any thread, in the midst of anything. There is one at a time. A SIGTSTP that the caller ignores stays ignored.
class C_TerminalSignals {
 public:
  C_TerminalSignals();
  ~C_TerminalSignals();
  C_TerminalSignals(const C_TerminalSignals&) = delete;
  C_TerminalSignals& operator=(const C_TerminalSignals&) = delete;

  // Readable after each of the signals until `Take`.
  int Descriptor() const;

  struct S_Came {
    bool stop;     // the user wants the program to stop; the signal has been held back
    bool resumed;  // the program goes on, and others may have used the terminal
  };
  S_Came Take();

  // Lets SIGTSTP have its effect; returns when the program goes on.
  void StopProgram();

 private:
  static constexpr int kSignals[] = {SIGWINCH, SIGTSTP, SIGCONT};
  struct sigaction m_before[3];
};

// In the background, using the terminal would stop the program, and the signal that shall end it would stay unheard.
// This stops it as well, but returns when it is in the foreground or when a signal has come (Signals.h).
void WaitForForeground(int terminal);

}  // namespace Host

#endif  // VELAGNSS_APPS_TERMINAL_SIGNALS_H
