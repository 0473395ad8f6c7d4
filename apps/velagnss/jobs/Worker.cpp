#include "apps/velagnss/jobs/Worker.h"

#include <fmt/format.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eKind = S_TaskOutcome::eKind;
using t_Clock = std::chrono::steady_clock;

constexpr auto kTakeTime = 500ms;  // a signal waits for it
constexpr auto kQueuePause = 1s;   // before a queue that is away is asked again
constexpr auto kRepairPause = 2s;
constexpr int kMaxRefusals = 30;
constexpr auto kOutputPause = 10s;
constexpr std::chrono::milliseconds kFirstPause = 1s;  // of a task that has failed; doubled with each try
constexpr std::chrono::milliseconds kLongestPause = 60s;

// Prolongs the lease of a task as long as it lives. A thread of its own, because inputs and outputs wait.
class C_LeaseKeeper {
 public:
  C_LeaseKeeper(const C_TakenTask& taken, std::chrono::milliseconds lease)
      : m_thread(StartWithoutSignals([this, &taken, lease] { Work(taken, lease / 3); })) {}
  ~C_LeaseKeeper() {
    {
      const std::lock_guard lock(m_mutex);
      m_isOver = true;
    }
    m_over.notify_one();
    m_thread.join();
  }
  C_LeaseKeeper(const C_LeaseKeeper&) = delete;
  C_LeaseKeeper& operator=(const C_LeaseKeeper&) = delete;

 private:
  void Work(const C_TakenTask& taken, std::chrono::milliseconds interval) {
    std::unique_lock lock(m_mutex);
    while (!m_over.wait_for(lock, interval, [this] { return m_isOver; })) taken.Keep();
  }

  std::mutex m_mutex;
  std::condition_variable m_over;
  bool m_isOver = false;
  std::thread m_thread;
};

std::chrono::milliseconds PauseAfter(std::uint64_t tries) {
  std::chrono::milliseconds pause = kFirstPause;
  for (std::uint64_t i = 1; i < tries && pause < kLongestPause; ++i) pause *= 2;
  return std::min(pause, kLongestPause);
}

}  // namespace

eExitCode C_Worker::Run() {
  while (SignalReceived() == 0) {
    std::optional<C_TakenTask> taken;
    const t_NatsResult result = Take(taken);
    NoteQueue(result);
    if (result && !taken) PauseUntilSignal(kQueuePause);
    if (taken)
      if (const eExitCode code = Serve(*taken); code != eExitOk) return code;
    if (!taken && !result && m_options.untilEmpty && IsAtEnd()) break;
  }
  return m_givenUp > 0 ? eExitData : eExitOk;
}

// A queue that cannot be repaired may still hand out tasks. One that was lost is not back before it has been repaired:
// a worker that only waits for tasks does not learn that the streams have been deleted.
t_NatsResult C_Worker::Take(std::optional<C_TakenTask>& taken) {
  if (const t_Clock::time_point now = t_Clock::now(); m_isLost || now >= m_repairTime) {
    m_repairTime = now + kRepairPause;
    m_repairFailure = m_queue.Repair();
  }
  t_NatsResult failure = m_queue.Take(kTakeTime, taken);
  return failure ? failure : m_repairFailure;
}

bool C_Worker::IsAtEnd() const {
  bool isEmpty = false;
  return !m_queue.IsEmpty(isEmpty) && isEmpty;
}

// libnats connects again by itself.
void C_Worker::NoteQueue(const t_NatsResult& result) {
  const bool wasLost = std::exchange(m_isLost, result.has_value());
  if (result && !wasLost) ReportWarning(fmt::format("{}: {}; trying again", m_queue.Shown(), result->text));
  if (!result && wasLost) ReportNotice(fmt::format("{}: is back", m_queue.Shown()));
}

// The task that was at work when workers died again and again may be what killed them.
S_TaskOutcome C_Worker::Try(const C_TakenTask& taken) const {
  if (!taken.Task())
    return {eKind::Hopeless, fmt::format("{} is not a task that this version understands", taken.Key()), 0, 0};
  const std::uint64_t tries = std::max(taken.Task()->tries, 1U);
  if (taken.Tries() > tries)
    return {eKind::Hopeless,
            fmt::format("no worker has finished it in {}", tries == 1 ? "one try" : fmt::format("{} tries", tries)), 0,
            0};
  return RunTask(*taken.Task(), m_options.run);
}

eExitCode C_Worker::Serve(const C_TakenTask& taken) {
  const C_LeaseKeeper keeper(taken, m_options.lease);
  const t_Clock::time_point begin = t_Clock::now();
  S_TaskOutcome outcome = Try(taken);
  // The output of this machine is no fault of the task: giving it back would use up its tries.
  while (outcome.kind == eKind::OutputFailed && !m_options.untilEmpty && SignalReceived() == 0) {
    ReportWarning("the output failed; the task is tried again in 10 s");
    PauseUntilSignal(kOutputPause);
    if (SignalReceived() == 0) outcome = Try(taken);
  }
  if (outcome.kind == eKind::Failed && taken.Tries() >= std::max(taken.Task()->tries, 1U))
    outcome.kind = eKind::Hopeless;
  const std::chrono::duration<double> seconds = t_Clock::now() - begin;
  switch (outcome.kind) {
    case eKind::Done:
    case eKind::Hopeless:
      Answer(taken, outcome, seconds.count());
      return eExitOk;
    case eKind::Failed:
      m_queue.GiveBack(taken, PauseAfter(taken.Tries()));
      return eExitOk;
    case eKind::Interrupted:
    case eKind::OutputFailed:
      m_queue.GiveBack(taken, 0ms);
      return outcome.kind == eKind::OutputFailed && SignalReceived() == 0 ? eExitOutput : eExitOk;
  }
  return eExitOk;
}

void C_Worker::Answer(const C_TakenTask& taken, const S_TaskOutcome& outcome, double seconds) {
  S_TaskResult result;
  result.task = taken.Task().value_or(S_Task());
  result.error = outcome.error;
  result.worker = m_options.run.worker;
  result.bytes = outcome.bytes;
  result.frames = outcome.frames;
  result.seconds = seconds;
  result.tries = static_cast<unsigned int>(taken.Tries());
  if (!result.error.empty()) ++m_givenUp;
  if (result.error.empty())
    ReportDetail(fmt::format("{}: done, {}", ShownTask(result.task), Counted(result.frames, "frame")));
  else
    ReportWarning(fmt::format("{}: given up: {}", ShownTask(result.task), Printable(result.error)));
  Record(taken, result);
}

// The lease is kept meanwhile. A server that has just come back may refuse for some time what it accepts later. A task
// that is not recorded is done once more, with the same results.
void C_Worker::Record(const C_TakenTask& taken, const S_TaskResult& result) {
  for (int refusals = 0; refusals < kMaxRefusals;) {
    const t_NatsResult failure = m_queue.Finish(taken, result);
    NoteQueue(failure);
    if (!failure || SignalReceived() != 0) return;
    if (failure->kind == S_NatsFailure::eKind::Refused) ++refusals;
    PauseUntilSignal(kQueuePause);
  }
}

}  // namespace Host
