// The program's messages while a screen hides standard error.
#ifndef VELAGNSS_APPS_MESSAGE_LOG_H
#define VELAGNSS_APPS_MESSAGE_LOG_H

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/monitor/Pages.h"
#include "apps/velagnss/os/Diagnostics.h"

namespace Host {

// Takes all messages (Diagnostics.h) while it lives, and keeps the last of them.
class C_MessageLog {
 public:
  // `hasNews` is called after each message.
  explicit C_MessageLog(std::function<void()> hasNews);
  ~C_MessageLog();
  C_MessageLog(const C_MessageLog&) = delete;
  C_MessageLog& operator=(const C_MessageLog&) = delete;

  // From any thread: all that are kept, the oldest first; the last one while it is new.
  std::vector<S_LogLine> Lines() const;
  std::optional<S_LogLine> Latest() const;

  // Messages go to standard error again. Those that are kept are written there if they have not been.
  void GiveBack();

 private:
  using t_Clock = std::chrono::steady_clock;
  struct S_Kept {
    eMessage kind;
    std::string text;
    S_LogLine line;
  };

  void Take(eMessage kind, const std::string& text);

  std::function<void()> m_hasNews;
  mutable std::mutex m_mutex;
  std::deque<S_Kept> m_kept;
  std::uint64_t m_leftOut = 0;
  t_Clock::time_point m_last;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_MESSAGE_LOG_H
