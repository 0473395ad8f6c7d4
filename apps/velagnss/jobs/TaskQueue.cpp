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

}  // namespace

std::string CheckQueue(const std::string& name) {
  S_Address address;
  if (std::string error = ReadAddress(name, address); !error.empty()) return error;
  if (!IsNats(address)) return "must be written as nats://HOST/QUEUE or natss://HOST/QUEUE";
  return CheckAddress(address, address.scheme == "nats"
                                   ? NatsForm("nats", "nats://USER@HOST:PORT/QUEUE", kNatsOptions)
                                   : NatsForm("natss", "natss://USER@HOST:PORT/QUEUE", kNatsOptions));
}

C_TakenTask::C_TakenTask(t_NatsMessage message, std::string key, std::uint64_t tries)
    : m_message(std::move(message)), m_key(std::move(key)), m_tries(tries), m_task(ReadTask(TextOf(m_message.get()))) {}

t_NatsResult C_TaskQueue::Open(const std::string& name, const std::string& credentials, bool creates) {
  ReadAddress(name, m_address);
  m_name = StreamOf(m_address);
  m_log = m_name + "_log";
  t_NatsResult result = m_session.Open(m_address, {.credentials = credentials, .reconnects = true});
  if (!result) result = OpenStream(m_name, false, creates);
  if (!result) result = OpenStream(m_log, true, creates);
  return result;
}

std::string C_TaskQueue::Subject(std::string_view kind, std::string_view key) const {
  return fmt::format("{}.{}.{}", m_name, kind, key);
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

t_NatsResult C_TaskQueue::Find(const std::string& subject, bool& isThere) const {
  t_NatsMessage message;
  jsErrCode code{};
  const natsStatus status = NatsMake(message, [&](natsMsg** made) {
    return js_GetLastMsg(made, m_session.JetStream(), m_log.c_str(), subject.c_str(), nullptr, &code);
  });
  isThere = status == NATS_OK;
  return isThere || code == JSNoMessageFoundErr ? std::nullopt : NatsResult(status, code);
}

t_NatsResult C_TaskQueue::Forget(const std::string& subject) const {
  jsOptions options;
  jsOptions_Init(&options);
  options.Stream.Purge.Subject = subject.c_str();
  jsErrCode code{};
  const natsStatus status = js_PurgeStream(m_session.JetStream(), m_log.c_str(), &options, &code);
  return NatsResult(status, code);
}

t_NatsResult C_TaskQueue::ForgetFailed() const { return Forget(Subject(kFailed, "*")); }

t_NatsResult C_TaskQueue::Publish(const std::string& subject, const std::string& text) const {
  t_PubAck ack;
  jsErrCode code{};
  const natsStatus status = NatsMake(ack, [&](jsPubAck** made) {
    return js_Publish(made, m_session.JetStream(), subject.c_str(), text.data(), static_cast<int>(text.size()), nullptr,
                      &code);
  });
  return NatsResult(status, code);
}

// The server refuses a second message of a subject. Its error has no code of its own.
t_NatsResult C_TaskQueue::Add(const S_Task& task, bool again, eAdded& added) const {
  const std::string key = task.Key();
  bool isDone = false;
  t_NatsResult result = again ? Forget(Subject(kDone, key)) : Find(Subject(kDone, key), isDone);
  added = eAdded::Done;
  if (result || isDone) return result;
  result = Publish(Subject(kTask, key), TaskText(task));
  added = result ? eAdded::Waiting : eAdded::New;
  if (result && result->text.find("messages per subject") != std::string::npos) return std::nullopt;
  return result ? result : Forget(Subject(kFailed, key));
}

// The server has no limit of deliveries: a worker gives a task up, and records why.
t_NatsResult C_TaskQueue::BeginWork(std::chrono::milliseconds lease) {
  const std::string subject = Subject(kTask, "*");
  jsConsumerConfig config;
  jsConsumerConfig_Init(&config);
  config.Durable = kWorkers;
  config.AckPolicy = js_AckExplicit;
  config.AckWait = Nanoseconds(lease);
  config.MaxDeliver = -1;
  config.MaxAckPending = kMaxRunning;
  config.FilterSubject = subject.c_str();
  jsErrCode code{};
  t_ConsumerInfo info;
  natsStatus status = NatsMake(info, [&](jsConsumerInfo** made) {
    return js_AddConsumer(made, m_session.JetStream(), m_name.c_str(), &config, nullptr, &code);
  });
  if (t_NatsResult result = NatsResult(status, code)) return result;
  jsSubOptions options;
  jsSubOptions_Init(&options);
  options.Stream = m_name.c_str();
  options.Consumer = kWorkers;
  status = NatsMake(m_subscription, [&](natsSubscription** made) {
    return js_PullSubscribe(made, m_session.JetStream(), subject.c_str(), kWorkers, nullptr, &options, &code);
  });
  return NatsResult(status, code);
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
  std::string key = KeyOf(natsMsg_GetSubject(message.get()));
  taken.emplace(std::move(message), std::move(key), data->NumDelivered);
  return std::nullopt;
}

// Recorded first: a worker that dies in between leaves a task that is done once more, and not one that is lost.
t_NatsResult C_TaskQueue::Finish(const C_TakenTask& taken, const S_TaskResult& result) const {
  const bool isDone = result.error.empty();
  t_NatsResult failure = Publish(Subject(isDone ? kDone : kFailed, taken.Key()), ResultText(result));
  if (!failure && isDone) failure = Forget(Subject(kFailed, taken.Key()));
  if (failure) return failure;
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
  jsErrCode code{};
  const natsStatus status = NatsMake(info, [&](jsStreamInfo** made) {
    return js_GetStreamInfo(made, m_session.JetStream(), m_name.c_str(), nullptr, &code);
  });
  isEmpty = status == NATS_OK && info->State.Msgs == 0;
  return NatsResult(status, code);
}

t_NatsResult C_TaskQueue::Read(S_QueueState& state) const {
  t_StreamInfo stream;
  jsErrCode code{};
  natsStatus status = NatsMake(stream, [&](jsStreamInfo** made) {
    return js_GetStreamInfo(made, m_session.JetStream(), m_name.c_str(), nullptr, &code);
  });
  if (t_NatsResult result = NatsResult(status, code)) return result;
  t_ConsumerInfo workers;
  status = NatsMake(workers, [&](jsConsumerInfo** made) {
    return js_GetConsumerInfo(made, m_session.JetStream(), m_name.c_str(), kWorkers, nullptr, &code);
  });
  if (status != NATS_OK && code != JSConsumerNotFoundErr) return NatsResult(status, code);
  state.running = workers == nullptr ? 0 : static_cast<std::uint64_t>(workers->NumAckPending);
  state.waiting = stream->State.Msgs - std::min(stream->State.Msgs, state.running);
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  state.now = std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
  return ReadLog(state);
}

t_NatsResult C_TaskQueue::ReadLog(S_QueueState& state) const {
  const std::string all = m_name + ".*.*";
  jsSubOptions options;
  jsSubOptions_Init(&options);
  options.Stream = m_log.c_str();
  options.Ordered = true;
  t_StreamInfo info;
  t_NatsSubscription log;
  jsErrCode code{};
  natsStatus status = NatsMake(info, [&](jsStreamInfo** made) {
    return js_GetStreamInfo(made, m_session.JetStream(), m_log.c_str(), nullptr, &code);
  });
  if (status == NATS_OK && info->State.Msgs == 0) return std::nullopt;
  if (status == NATS_OK)
    status = NatsMake(log, [&](natsSubscription** made) {
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
    std::optional<S_TaskResult> one = ReadResult(TextOf(message.get()));
    if (!one) continue;
    one->finished = data->Timestamp / 1'000'000;
    (one->error.empty() ? state.done : state.failed).push_back(std::move(*one));
  }
  return NatsResult(status, code);
}

}  // namespace Host
