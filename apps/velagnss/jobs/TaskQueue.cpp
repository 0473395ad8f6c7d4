#include "apps/velagnss/jobs/TaskQueue.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "apps/velagnss/net/nats/NatsAddress.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eKind = S_NatsFailure::eKind;

constexpr const char* kWorkers = "workers";  // the consumer that all workers share
constexpr std::string_view kTask = "task";   // kinds of subjects
constexpr std::string_view kDone = "done";
constexpr std::string_view kFailed = "failed";
constexpr std::int64_t kMaxRunning = 100'000;
constexpr std::int64_t kFlushTime = 2'000;  // milliseconds
constexpr std::int64_t kLogTime = 5'000;    // milliseconds for a message of the log

std::int64_t Nanoseconds(std::chrono::milliseconds time) { return std::chrono::nanoseconds(time).count(); }

std::string_view TextOf(const natsMsg* message) {
  return {natsMsg_GetData(message), static_cast<std::size_t>(natsMsg_GetDataLength(message))};
}

// The last part of a subject.
std::string KeyOf(std::string_view subject) { return std::string(subject.substr(subject.rfind('.') + 1)); }

t_NatsResult MetaDataOf(natsMsg* message, t_MessageMetaData& data) {
  return NatsResult(NatsMake(data, [message](jsMsgMetaData** made) { return natsMsg_GetMetaData(made, message); }));
}

// Tells apart the times that a task was submitted. A sequence number alone may be given twice: a server that was killed
// may have lost its last messages.
std::string SubmissionOf(std::uint64_t sequence, std::int64_t time) { return fmt::format("{}@{}", sequence, time); }

// Of a message that was looked up.
std::string SubmissionOf(natsMsg* message) {
  return SubmissionOf(natsMsg_GetSequence(message), natsMsg_GetTime(message));
}

// The server refuses a second message of a subject. Its error has no code of its own.
bool IsRepeated(const t_NatsResult& result) {
  return result && result->text.find("messages per subject") != std::string::npos;
}

}  // namespace

std::string CheckQueue(const std::string& name) {
  constexpr const char* kForm = "must be written as nats://HOST/QUEUE or natss://HOST/QUEUE";
  S_Address address;
  if (!IsAddress(name)) return kForm;
  if (std::string error = ReadAddress(name, address); !error.empty()) return error;
  if (!IsNats(address)) return kForm;
  return CheckAddress(address, address.scheme == "nats"
                                   ? NatsForm("nats", "nats://USER@HOST:PORT/QUEUE", kNatsOptions)
                                   : NatsForm("natss", "natss://USER@HOST:PORT/QUEUE", kNatsOptions));
}

C_TakenTask::C_TakenTask(t_NatsMessage message, const jsMsgMetaData& data)
    : m_message(std::move(message)),
      m_key(KeyOf(natsMsg_GetSubject(m_message.get()))),
      m_submission(SubmissionOf(data.Sequence.Stream, data.Timestamp)),
      m_sequence(data.Sequence.Stream),
      m_tries(data.NumDelivered),
      m_task(ReadTask(TextOf(m_message.get()))) {}

t_NatsResult C_TaskQueue::Open(const std::string& name, const std::string& credentials, bool creates) {
  ReadAddress(name, m_address);
  m_tasks = {m_session, StreamOf(m_address)};
  m_log = {m_session, m_tasks.Name() + "_log"};
  t_NatsResult result = m_session.Open(m_address, {.credentials = credentials, .reconnects = true});
  if (!result) result = OpenStream(m_tasks.Name(), false, creates);
  if (!result) result = OpenStream(m_log.Name(), true, creates);
  return result;
}

std::string C_TaskQueue::Subject(std::string_view kind, std::string_view key) const {
  return fmt::format("{}.{}.{}", m_tasks.Name(), kind, key);
}

// A task waits once, and what became of it is known once: there is one message for each subject.
t_NatsResult C_TaskQueue::OpenStream(const std::string& name, bool isLog, bool creates) const {
  const std::array<std::string, 2> subjects =
      isLog ? std::array{Subject(kDone, "*"), Subject(kFailed, "*")} : std::array{Subject(kTask, "*"), std::string()};
  std::array<const char*, 2> names = {subjects[0].c_str(), subjects[1].c_str()};
  jsStreamConfig wanted;
  jsStreamConfig_Init(&wanted);
  wanted.Name = name.c_str();
  wanted.Subjects = names.data();
  wanted.SubjectsLen = isLog ? 2 : 1;
  wanted.Retention = isLog ? js_LimitsPolicy : js_WorkQueuePolicy;
  wanted.MaxMsgsPerSubject = 1;
  wanted.Discard = isLog ? js_DiscardOld : js_DiscardNew;
  wanted.DiscardNewPerSubject = !isLog;
  t_StreamInfo info;
  t_NatsResult result = m_session.OpenStream(wanted, creates, info);
  if (result || info->Config->Retention == wanted.Retention) return result;
  return S_NatsFailure{eKind::Refused,
                       fmt::format("the stream {} is there, but it is not a queue; name another one", name)};
}

t_NatsResult C_TaskQueue::ForgetFailed(const S_QueueState& state) const {
  return state.failed.empty() ? std::nullopt : m_log.RemoveAll(Subject(kFailed, "*"), state.lastRead);
}

t_NatsResult C_TaskQueue::Publish(const std::string& subject, const std::string& text) const {
  t_PubAck ack;
  jsErrCode code{};
  const natsStatus status = NatsMake(ack, [&](jsPubAck** made) {
    return js_Publish(made, m_session.JetStream(), subject.c_str(), text.data(), static_cast<int>(text.size()), nullptr,
                      &code);
  });
  return NatsResult(status, code);
}

// A task that has been answered and is still in the queue makes room.
t_NatsResult C_TaskQueue::Enqueue(const std::string& key, const std::string& text, bool& isNew) const {
  isNew = false;
  t_NatsResult result = Publish(Subject(kTask, key), text);
  if (IsRepeated(result)) {
    t_NatsMessage old;
    bool isGone = false;
    result = m_tasks.Find(Subject(kTask, key), old);
    if (!result && old) result = RemoveAnswered(old.get(), isGone);
    if (result || (old && !isGone)) return result;
    result = Publish(Subject(kTask, key), text);
  }
  isNew = !result;
  return IsRepeated(result) ? std::nullopt : result;
}

// Earlier answers are forgotten last: until the task is added they tell whether the one in the queue has been answered.
// A worker may answer the new one at once, so only what was there before is forgotten.
t_NatsResult C_TaskQueue::Add(const S_Task& task, bool again, eAdded& added) const {
  const std::string key = task.Key();
  t_NatsMessage done;
  t_NatsMessage failed;
  t_NatsResult result = m_log.Find(Subject(kDone, key), done);
  added = eAdded::Done;
  if (result || (done && !again)) return result;
  bool isNew = false;
  result = m_log.Find(Subject(kFailed, key), failed);
  if (!result) result = Enqueue(key, TaskText(task), isNew);
  added = isNew ? eAdded::New : eAdded::Waiting;
  for (natsMsg* const old : {done.get(), failed.get()})
    if (!result && isNew && old != nullptr) result = m_log.RemoveAll(natsMsg_GetSubject(old), natsMsg_GetSequence(old));
  return result;
}

t_NatsResult C_TaskQueue::FindAnswer(const std::string& key, const std::string& submission, bool& isAnswered) const {
  isAnswered = false;
  for (const std::string_view kind : {kDone, kFailed}) {
    t_NatsMessage message;
    if (t_NatsResult failure = m_log.Find(Subject(kind, key), message)) return failure;
    const std::optional<S_TaskResult> answer = message ? ReadResult(TextOf(message.get())) : std::nullopt;
    isAnswered = answer && answer->submission == submission;
    if (isAnswered) break;
  }
  return std::nullopt;
}

t_NatsResult C_TaskQueue::RemoveAnswered(natsMsg* task, bool& isRemoved) const {
  t_NatsResult failure = FindAnswer(KeyOf(natsMsg_GetSubject(task)), SubmissionOf(task), isRemoved);
  return failure || !isRemoved ? failure : m_tasks.Remove(natsMsg_GetSequence(task));
}

// Ends as well when the server does not remove what it should.
t_NatsResult C_TaskQueue::RemoveAnsweredUpTo(std::uint64_t sequence, bool& isOneLeft) const {
  isOneLeft = false;
  std::uint64_t before = 0;
  for (bool isRemoved = true; isRemoved;) {
    t_StreamInfo info;
    t_NatsMessage first;
    if (t_NatsResult failure = m_tasks.Read(info)) return failure;
    const std::uint64_t at = info->State.FirstSeq;
    if (info->State.Msgs == 0 || at > sequence || at == std::exchange(before, at)) return std::nullopt;
    t_NatsResult failure = m_tasks.Find(at, first);
    if (!failure && first) failure = RemoveAnswered(first.get(), isRemoved);
    if (failure || !first) return failure;
  }
  isOneLeft = true;
  return std::nullopt;
}

// The consumer that all workers share; null when there is none.
t_NatsResult C_TaskQueue::FindWorkers(t_ConsumerInfo& info) const {
  jsErrCode code{};
  const natsStatus status = NatsMake(info, [&](jsConsumerInfo** made) {
    return js_GetConsumerInfo(made, m_session.JetStream(), m_tasks.Name().c_str(), kWorkers, nullptr, &code);
  });
  return code == JSConsumerNotFoundErr ? std::nullopt : NatsResult(status, code);
}

// The server has no limit of deliveries: a worker gives a task up, and records why.
t_NatsResult C_TaskQueue::AddWorkers() const {
  const std::string subject = Subject(kTask, "*");
  jsConsumerConfig config;
  jsConsumerConfig_Init(&config);
  config.Durable = kWorkers;
  config.AckPolicy = js_AckExplicit;
  config.AckWait = Nanoseconds(m_lease);
  config.MaxDeliver = -1;
  config.MaxAckPending = kMaxRunning;
  config.FilterSubject = subject.c_str();
  jsErrCode code{};
  t_ConsumerInfo info;
  const natsStatus status = NatsMake(info, [&](jsConsumerInfo** made) {
    return js_AddConsumer(made, m_session.JetStream(), m_tasks.Name().c_str(), &config, nullptr, &code);
  });
  return NatsResult(status, code);
}

t_NatsResult C_TaskQueue::BeginWork(std::chrono::milliseconds lease) {
  m_lease = lease;
  if (t_NatsResult failure = AddWorkers()) return failure;
  jsSubOptions options;
  jsSubOptions_Init(&options);
  options.Stream = m_tasks.Name().c_str();
  options.Consumer = kWorkers;
  jsErrCode code{};
  const natsStatus status = NatsMake(m_subscription, [&](natsSubscription** made) {
    return js_PullSubscribe(made, m_session.JetStream(), Subject(kTask, "*").c_str(), kWorkers, nullptr, &options,
                            &code);
  });
  return NatsResult(status, code);
}

// The new one hands out all that is in the queue. A task at work may then be done twice.
t_NatsResult C_TaskQueue::ReplaceWorkers() const {
  jsErrCode code{};
  const natsStatus status = js_DeleteConsumer(m_session.JetStream(), m_tasks.Name().c_str(), kWorkers, nullptr, &code);
  if (status != NATS_OK && code != JSConsumerNotFoundErr) return NatsResult(status, code);
  return AddWorkers();
}

// What is left up to the floor is nobody's: below it the server takes everything for acknowledged. What is lost above
// it comes below it when the tasks before it are answered. The floor is asked for first, because it moves on with each
// answer.
t_NatsResult C_TaskQueue::Repair() const {
  t_ConsumerInfo workers;
  t_NatsResult failure = FindWorkers(workers);
  if (failure) return failure;
  if (!workers) return AddWorkers();
  bool isOneLeft = false;
  failure = RemoveAnsweredUpTo(workers->AckFloor.Stream, isOneLeft);
  return failure || !isOneLeft ? failure : ReplaceWorkers();
}

t_NatsResult C_TaskQueue::Take(std::chrono::milliseconds limit, std::optional<C_TakenTask>& taken) const {
  taken.reset();
  natsMsgList list{};
  jsErrCode code{};
  const natsStatus status = natsSubscription_Fetch(&list, m_subscription.get(), 1, limit.count(), &code);
  if (status == NATS_TIMEOUT) return std::nullopt;
  if (status != NATS_OK) return NatsResult(status, code);
  t_NatsMessage message(std::exchange(list.Msgs[0], nullptr));
  natsMsgList_Destroy(&list);
  t_MessageMetaData data;
  if (t_NatsResult result = MetaDataOf(message.get(), data)) return result;
  taken.emplace(std::move(message), *data);
  bool isAnswered = false;
  if (FindAnswer(taken->Key(), taken->Submission(), isAnswered) || !isAnswered) return std::nullopt;
  t_NatsResult result = Acknowledge(*taken);
  taken.reset();
  return result;
}

// Recorded first: a worker that dies in between leaves a task that another finds answered, and not one that is lost.
t_NatsResult C_TaskQueue::Finish(const C_TakenTask& taken, S_TaskResult result) const {
  result.submission = taken.Submission();
  const bool isDone = result.error.empty();
  t_NatsResult failure = isDone ? m_log.RemoveAll(Subject(kFailed, taken.Key())) : std::nullopt;
  if (!failure) failure = Publish(Subject(isDone ? kDone : kFailed, taken.Key()), ResultText(result));
  if (!failure) Acknowledge(taken);
  return failure;
}

// By its number, which is another task's when the server has lost this one.
t_NatsResult C_TaskQueue::Acknowledge(const C_TakenTask& taken) const {
  t_NatsMessage message;
  t_NatsResult failure = m_tasks.Find(taken.Sequence(), message);
  if (failure || !message || SubmissionOf(message.get()) != taken.Submission()) return failure;
  jsErrCode code{};
  const natsStatus status = natsMsg_AckSync(taken.Message(), nullptr, &code);
  return NatsResult(status, code);
}

// Flushed, because the program may end now.
void C_TaskQueue::GiveBack(const C_TakenTask& taken, std::chrono::milliseconds pause) const {
  if (pause > 0ms)
    natsMsg_NakWithDelay(taken.Message(), Nanoseconds(pause), nullptr);
  else
    natsMsg_Nak(taken.Message(), nullptr);
  natsConnection_FlushTimeout(m_session.Connection(), kFlushTime);
}

t_NatsResult C_TaskQueue::IsEmpty(bool& isEmpty) const {
  t_StreamInfo info;
  t_NatsResult failure = m_tasks.Read(info);
  isEmpty = !failure && info->State.Msgs == 0;
  return failure;
}

t_NatsResult C_TaskQueue::Read(S_QueueState& state) const {
  t_ConsumerInfo workers;
  t_StreamInfo stream;
  bool isOneLeft = false;
  t_NatsResult failure = FindWorkers(workers);
  // An account that may only read cannot, and sees what workers will remove soon.
  if (!failure && workers) RemoveAnsweredUpTo(workers->AckFloor.Stream, isOneLeft);
  if (!failure) failure = m_tasks.Read(stream);
  if (failure) return failure;
  const std::uint64_t all = stream->State.Msgs;
  state.running = workers == nullptr ? 0 : std::min(all, static_cast<std::uint64_t>(workers->NumAckPending));
  state.waiting = all - state.running;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  state.now = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  return ReadLog(state);
}

t_NatsResult C_TaskQueue::ReadLog(S_QueueState& state) const {
  const std::string all = m_tasks.Name() + ".*.*";
  jsSubOptions options;
  jsSubOptions_Init(&options);
  options.Stream = m_log.Name().c_str();
  options.Ordered = true;
  t_StreamInfo info;
  t_NatsSubscription log;
  jsErrCode code{};
  if (t_NatsResult failure = m_log.Read(info)) return failure;
  if (info->State.Msgs == 0) return std::nullopt;
  natsStatus status = NatsMake(log, [&](natsSubscription** made) {
    return js_SubscribeSync(made, m_session.JetStream(), all.c_str(), nullptr, &options, &code);
  });
  for (std::uint64_t pending = 1; status == NATS_OK && pending > 0;) {
    t_NatsMessage message;
    t_MessageMetaData data;
    status = NatsMake(message, [&](natsMsg** made) { return natsSubscription_NextMsg(made, log.get(), kLogTime); });
    if (status == NATS_TIMEOUT) return std::nullopt;  // the last one has just been replaced
    if (status != NATS_OK) break;
    if (t_NatsResult result = MetaDataOf(message.get(), data)) return result;
    pending = data->NumPending;
    state.lastRead = data->Sequence.Stream;
    std::optional<S_TaskResult> one = ReadResult(TextOf(message.get()));
    if (!one) continue;
    one->finished = data->Timestamp / 1'000'000;
    (one->error.empty() ? state.done : state.failed).push_back(std::move(*one));
  }
  return NatsResult(status, code);
}

}  // namespace Host
