// A queue of tasks on a NATS server: a stream of tasks that wait or are at work, and one of what became of the others.
#ifndef VELAGNSS_APPS_TASK_QUEUE_H
#define VELAGNSS_APPS_TASK_QUEUE_H

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "apps/velagnss/jobs/Task.h"
#include "apps/velagnss/net/nats/NatsSession.h"
#include "apps/velagnss/net/nats/NatsStream.h"

namespace Host {

// Returns an error text, empty when `name` can be the address of a queue, "nats://host/QUEUE".
std::string CheckQueue(const std::string& name);

// A task that has been taken. It goes to another worker when it is neither kept nor answered for the time of the lease.
class C_TakenTask {
 public:
  C_TakenTask(t_NatsMessage message, const jsMsgMetaData& data);

  const std::optional<S_Task>& Task() const { return m_task; }  // none: it cannot be read
  const std::string& Key() const { return m_key; }
  const std::string& Submission() const { return m_submission; }
  std::uint64_t Sequence() const { return m_sequence; }
  std::uint64_t Tries() const { return m_tries; }  // this one included

  // Prolongs the lease. From any thread.
  void Keep() const { natsMsg_InProgress(m_message.get(), nullptr); }

  natsMsg* Message() const { return m_message.get(); }

 private:
  t_NatsMessage m_message;
  std::string m_key;
  std::string m_submission;
  std::uint64_t m_sequence;
  std::uint64_t m_tries;
  std::optional<S_Task> m_task;
};

struct S_QueueState {
  std::uint64_t waiting = 0;
  std::uint64_t running = 0;  // also those given back that pause
  std::vector<S_TaskResult> done;
  std::vector<S_TaskResult> failed;
  std::int64_t now = 0;        // ms since 1970
  std::uint64_t lastRead = 0;  // what has failed later is not in here
};

// Used by one thread. Calls wait for the server, at most some seconds each.
class C_TaskQueue {
 public:
  C_TaskQueue() = default;
  C_TaskQueue(const C_TaskQueue&) = delete;
  C_TaskQueue& operator=(const C_TaskQueue&) = delete;

  // `name` has been checked. Connects; `creates` the streams where they are missing.
  t_NatsResult Open(const std::string& name, const std::string& credentials, bool creates);

  // For messages.
  std::string Shown() const { return m_address.Shown(); }

  enum class eAdded { New, Waiting, Done };
  // Adds a task that neither waits nor is done. One that is done is added again if `again`, one that has failed in any
  // case.
  t_NatsResult Add(const S_Task& task, bool again, eAdded& added) const;

  // What `Take` needs. The lease of all workers is the one that was set last.
  t_NatsResult BeginWork(std::chrono::milliseconds lease);

  // To be called every few seconds by each worker. A server that was killed, or whose machine was, has lost some of
  // what it wrote last. It may keep tasks that it counts as acknowledged and never hands out again: they leave the
  // queue if their answers are recorded, and are handed out otherwise.
  t_NatsResult Repair() const;

  // Waits for a task until `limit` has passed. None: there was none, or one that had been answered already.
  t_NatsResult Take(std::chrono::milliseconds limit, std::optional<C_TakenTask>& taken) const;

  // Records what became of a task, and takes it out of the queue. Fails only if it is not recorded: a recorded task
  // that is still in the queue is not done once more.
  t_NatsResult Finish(const C_TakenTask& taken, S_TaskResult result) const;

  // Gives a task back, to be taken after `pause`.
  void GiveBack(const C_TakenTask& taken, std::chrono::milliseconds pause) const;

  // Whether nothing waits or is at work.
  t_NatsResult IsEmpty(bool& isEmpty) const;

  t_NatsResult Read(S_QueueState& state) const;

  // What has failed is no longer known, if it is in `state`.
  t_NatsResult ForgetFailed(const S_QueueState& state) const;

 private:
  std::string Subject(std::string_view kind, std::string_view key) const;
  t_NatsResult OpenStream(const std::string& name, bool isLog, bool creates) const;
  t_NatsResult Publish(const std::string& subject, const std::string& text) const;
  t_NatsResult Enqueue(const std::string& key, const std::string& text, bool& isNew) const;
  t_NatsResult FindAnswer(const std::string& key, const std::string& submission, bool& isAnswered) const;
  t_NatsResult RemoveAnswered(natsMsg* task, bool& isRemoved) const;
  t_NatsResult RemoveAnsweredUpTo(std::uint64_t sequence, bool& isOneLeft) const;
  t_NatsResult FindWorkers(t_ConsumerInfo& info) const;
  t_NatsResult AddWorkers() const;
  t_NatsResult ReplaceWorkers() const;
  t_NatsResult Acknowledge(const C_TakenTask& taken) const;
  t_NatsResult ReadLog(S_QueueState& state) const;

  S_Address m_address;
  std::chrono::milliseconds m_lease{};
  C_NatsSession m_session;
  C_NatsStream m_tasks{m_session, {}};
  C_NatsStream m_log{m_session, {}};  // the answers
  t_NatsSubscription m_subscription;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TASK_QUEUE_H
