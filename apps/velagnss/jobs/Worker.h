// Takes tasks from a queue, one after the other, and does them.
#ifndef VELAGNSS_APPS_WORKER_H
#define VELAGNSS_APPS_WORKER_H

#include <chrono>
#include <string>

#include "apps/velagnss/jobs/TaskQueue.h"
#include "apps/velagnss/jobs/TaskRun.h"
#include "apps/velagnss/os/ExitCodes.h"

namespace Host {

struct S_WorkOptions {
  S_TaskRunOptions run;
  std::chrono::milliseconds lease{30'000};
  bool untilEmpty = false;  // end when nothing waits or is at work, or when the output fails
};

class C_Worker {
 public:
  C_Worker(C_TaskQueue& queue, const S_WorkOptions& options) : m_queue(queue), m_options(options) {}

  // Until a signal, after which the task at work is given back. eExitData when tasks were given up.
  eExitCode Run();

 private:
  t_NatsResult Take(std::optional<C_TakenTask>& taken);
  eExitCode Serve(const C_TakenTask& taken);
  S_TaskOutcome Try(const C_TakenTask& taken) const;
  void Answer(const C_TakenTask& taken, const S_TaskOutcome& outcome, double seconds);
  void Record(const C_TakenTask& taken, const S_TaskResult& result);
  bool IsAtEnd() const;
  void NoteQueue(const t_NatsResult& result);

  C_TaskQueue& m_queue;
  const S_WorkOptions& m_options;
  std::chrono::steady_clock::time_point m_repairTime;  // when the queue is repaired next
  t_NatsResult m_repairFailure;                        // of the last time
  bool m_isLost = false;                               // the queue, and it was reported
  std::uint64_t m_givenUp = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_WORKER_H
