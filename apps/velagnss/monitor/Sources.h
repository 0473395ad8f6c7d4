// The sources that the monitor reads: fed by one thread, looked at by another.
#ifndef VELAGNSS_APPS_SOURCES_H
#define VELAGNSS_APPS_SOURCES_H

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/monitor/Pages.h"
#include "apps/velagnss/monitor/SourceModel.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/pipeline/RecordRun.h"

namespace Host {

class C_Sources {
 public:
  // `hasNews` is called whenever there is something else to show.
  C_Sources(S_RunOptions options, std::function<void()> hasNews);
  ~C_Sources();

  // The job of one input after the other, each of which becomes a source of its own. Further ones can be fed at the
  // same time.
  C_StreamJob& NextJob();

  // What the inputs came to, once they have ended.
  eExitCode Judge() const { return m_verdict; }

  // From any thread from here on. The text filters all sources, also those to come; returns an error text for the user,
  // or nothing.
  std::optional<std::string> SetFilter(std::string_view text);

  std::vector<S_Tab> Tabs();

  // Nothing as long as there is no such source.
  std::optional<S_SourceView> View(std::size_t number);

 private:
  class C_Job;

  // Every access to a source takes this lock. Feeding waits while a look is wanted: a file is fed without pause, and
  // the screen would hardly ever get its turn.
  class C_Lock {
   public:
    enum class eFor { Feeding, Looking };
    C_Lock(C_Sources& sources, eFor purpose);
    ~C_Lock();

   private:
    C_Sources& m_sources;
    std::unique_lock<std::mutex> m_lock;
    bool m_looks;
  };

  C_SourceModel& Begin(const std::string& name);

  const S_RunOptions m_options;
  const std::function<void()> m_hasNews;
  std::deque<C_Job> m_jobs;
  eExitCode m_verdict = eExitOk;

  std::mutex m_mutex;
  std::condition_variable m_hasLooked;
  std::atomic<int> m_lookers = 0;
  std::deque<std::pair<std::string, C_SourceModel>> m_models;
  std::string m_filter;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCES_H
