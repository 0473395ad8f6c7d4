// Archives cut into tasks.
#ifndef VELAGNSS_APPS_TASK_CUTTER_H
#define VELAGNSS_APPS_TASK_CUTTER_H

#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/input/live/LiveSource.h"
#include "apps/velagnss/jobs/Task.h"

namespace Host {

// What is alike in all tasks of a run.
struct S_CutOptions {
  std::uint64_t split = 0;  // bytes of a task; 0: a task for each input
  S_Task task;              // all but input, identity and range
  S_LiveOptions access;     // to web servers
};

// The tasks of one input: a file, or the address of one. Nothing, reported, when it cannot be read. Only its beginning
// is. A compressed input and one of unknown length is one task: nobody could begin in the midst of it.
std::optional<std::vector<S_Task>> CutInput(const std::string& name, const S_CutOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_TASK_CUTTER_H
