// The thread that owns the terminal: it draws the sources and obeys the keys.
//
// Nobody else waits for the terminal. One that takes nothing holds up only this thread: sources are read on, and the
// program can end.
#ifndef VELAGNSS_APPS_SCREEN_THREAD_H
#define VELAGNSS_APPS_SCREEN_THREAD_H

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <future>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "apps/velagnss/monitor/Controls.h"
#include "apps/velagnss/monitor/MessageLog.h"
#include "apps/velagnss/monitor/Sources.h"
#include "apps/velagnss/monitor/Terminal.h"
#include "apps/velagnss/monitor/Wake.h"
#include "apps/velagnss/os/TerminalSignals.h"

namespace Host {

class C_ScreenThread {
 public:
  // `wake` is called when there is something else to show. All of these must outlive the thread.
  C_ScreenThread(C_Wake& wake, C_Sources& sources, const C_MessageLog& log, const std::string& filter);
  ~C_ScreenThread();
  C_ScreenThread(const C_ScreenThread&) = delete;
  C_ScreenThread& operator=(const C_ScreenThread&) = delete;

  // Returns an error text for the user when there is no terminal to draw on, or nothing: from then on, the end of the
  // program is requested (Signals.h) by a key, and when the terminal is lost.
  std::optional<std::string> Start(const S_TerminalOptions& options);

  enum class eEnd {
    Restored,  // the terminal is as it was before
    Dropped,   // likewise, but it took nothing: what it had not shown is lost
    Stuck,     // nor could that be done: the thread is still there, and the process can only be left
  };
  eEnd Stop();

  // Whether the terminal went away. After `Stop`.
  bool IsLost() const { return m_isLost; }

 private:
  using t_Clock = std::chrono::steady_clock;

  void Work(const S_TerminalOptions& options, std::promise<std::optional<std::string>> opened);
  void ShowUntilEnd();
  void Draw();
  void Wait(std::chrono::milliseconds longest);
  void ObeyKeys(bool isLost);
  void ObeySignals();
  S_ScreenState State();
  const S_SourceView& View(std::size_t tab);
  void Hold(bool isPaused);
  bool IsDoneWithin(std::chrono::milliseconds time);
  bool Free();

  C_Wake& m_wake;
  C_Sources& m_sources;
  const C_MessageLog& m_log;
  C_Controls m_controls;
  C_Terminal m_terminal;
  C_TerminalSignals m_signals;
  std::map<std::size_t, S_SourceView> m_views;  // by number; while paused, as they were
  bool m_isPaused = false;
  t_Clock::time_point m_lastDraw;
  bool m_hasNews = true;  // since then
  bool m_isLost = false;
  std::exception_ptr m_failure;

  std::thread m_thread;
  std::mutex m_mutex;
  std::condition_variable m_hasEnded;
  bool m_isDone = false;
  std::atomic<bool> m_isEnding = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SCREEN_THREAD_H
