#include "apps/velagnss/commands/JobsCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/QueueArguments.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/TextMaker.h"

namespace Host {
namespace {

constexpr std::int64_t kRateTime = 60'000;  // milliseconds

struct S_JobTotals {
  std::uint64_t bytes = 0;
  std::uint64_t frames = 0;
  std::uint64_t lastTasks = 0;  // of the last minute
  std::uint64_t lastBytes = 0;

  double BytesPerSecond() const { return static_cast<double>(lastBytes) * 1000 / kRateTime; }
};

S_JobTotals TotalsOf(const S_QueueState& state) {
  S_JobTotals totals;
  for (const S_TaskResult& result : state.done) {
    totals.bytes += result.bytes;
    totals.frames += result.frames;
    if (state.now - result.finished > kRateTime) continue;
    ++totals.lastTasks;
    totals.lastBytes += result.bytes;
  }
  return totals;
}

class C_JobsText : public C_TextBuffer {
 public:
  C_JobsText(const C_TaskQueue& queue, const S_QueueState& state);
};

C_JobsText::C_JobsText(const C_TaskQueue& queue, const S_QueueState& state) {
  constexpr double kMega = 1e6;
  const S_JobTotals totals = TotalsOf(state);
  m_text = fmt::format(
      "queue    {}\nwaiting  {}\nrunning  {}\ndone     {}: {} in {:.1f} MB\nfailed   {}\nrate     {:.1f} MB/s, {} "
      "in the last minute\n",
      queue.Shown(), state.waiting, state.running, state.done.size(), Counted(totals.frames, "frame"),
      static_cast<double>(totals.bytes) / kMega, state.failed.size(), totals.BytesPerSecond() / kMega,
      Counted(totals.lastTasks, "task"));
  for (const S_TaskResult& result : state.failed)
    m_text += fmt::format("\n{}\n  {}\n  try {} of {}, by {}\n", Printable(ShownTask(result.task)),
                          Printable(result.error), result.tries, result.task.tries, Printable(result.worker));
}

void WriteFailed(C_JsonWriter& json, const S_TaskResult& result) {
  json.BeginObject();
  json.Key("input").Utf8(result.task.input);
  json.Key("begin").Integer(result.task.range.begin);
  const std::uint64_t end = result.task.range.end;
  json.Key("end").IntegerOrNull(end == S_ByteRange().end ? std::nullopt : std::optional(end));
  json.Key("error").Utf8(result.error);
  json.Key("tries").Integer(result.tries);
  json.Key("worker").Utf8(result.worker);
  json.EndObject();
}

void WriteJobs(C_JsonWriter& json, const S_QueueState& state) {
  const S_JobTotals totals = TotalsOf(state);
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("waiting").Integer(state.waiting);
  json.Key("running").Integer(state.running);
  json.Key("done").Integer(state.done.size());
  json.Key("bytes").Integer(totals.bytes);
  json.Key("frames").Integer(totals.frames);
  json.Key("tasks_last_minute").Integer(totals.lastTasks);
  json.Key("bytes_per_second").Number(totals.BytesPerSecond());
  json.Key("failed").BeginArray();
  for (const S_TaskResult& result : state.failed) WriteFailed(json, result);
  json.EndArray();
  json.EndObject();
  json.EndLine();
}

class C_JobsCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  S_QueueArguments m_queue;
  std::string m_output = "-";
  bool m_isJson = false;
  bool m_forgets = false;
};

void C_JobsCommand::Declare(CLI::App& app) {
  DeclareQueue(app, m_queue);
  app.add_flag("--json", m_isJson, "one JSON object");
  app.add_flag("--forget-failed", m_forgets, "forget the failed tasks, after they have been shown");
  DeclareOutput(app, m_output);
}

int C_JobsCommand::Run() {
  C_TaskQueue queue;
  S_QueueState state;
  if (!OpenQueue(m_queue, false, queue)) return eExitInput;
  if (const t_NatsResult result = queue.Read(state)) return ReportQueueFailure(queue, *result);
  C_OutputRun output;
  if (!output.Open(m_output)) return eExitOutput;
  C_JsonWriter json;
  C_JobsText text(queue, state);
  WriteJobs(json, state);
  const int code = m_isJson ? output.Write(json) : output.Write(text);
  const t_NatsResult result = m_forgets && code == eExitOk ? queue.ForgetFailed(state) : std::nullopt;
  return result ? ReportQueueFailure(queue, *result) : code;
}

}  // namespace

const S_CommandEntry kJobsCommand = {
    "jobs",
    "Show how far the tasks of a queue are, and which have failed.\n\n"
    "Examples:\n"
    "  velagnss jobs --queue nats://host/archive          counts, rate, and what has failed and why\n"
    "  velagnss jobs --queue nats://host/archive --json   for programs\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_JobsCommand>(); }};

}  // namespace Host
