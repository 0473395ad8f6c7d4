// One task from its input to its destinations.
#ifndef VELAGNSS_APPS_TASK_RUN_H
#define VELAGNSS_APPS_TASK_RUN_H

#include <functional>
#include <string>
#include <vector>

#include "apps/velagnss/input/live/LiveSource.h"
#include "apps/velagnss/jobs/Task.h"
#include "apps/velagnss/relay/RelayJob.h"

namespace Host {

struct S_TaskRunOptions {
  std::vector<std::string> to;  // destinations, which C_TaskOutput has checked
  std::string worker;           // a word that no other worker has
  S_LiveOptions access;         // to web servers, and accounts

  // Reads the words of a command line. Returns an error text.
  std::function<std::string(const std::vector<std::string>& words, S_RelayOptions& relay)> readOptions;
};

struct S_TaskOutcome {
  enum class eKind {
    Done,          // everything has been delivered
    Failed,        // another try may succeed
    Hopeless,      // no try would succeed
    OutputFailed,  // the fault is not the task's
    Interrupted,   // by a signal
  };
  eKind kind = eKind::Done;
  std::string error;  // failed or hopeless: why
  std::uint64_t bytes = 0;
  std::uint64_t frames = 0;
};

S_TaskOutcome RunTask(const S_Task& task, const S_TaskRunOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_TASK_RUN_H
