#include "apps/velagnss/commands/WorkCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <utility>

#include "apps/velagnss/commands/QueueArguments.h"
#include "apps/velagnss/jobs/TaskOutput.h"
#include "apps/velagnss/jobs/Worker.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Quantities.h"

namespace Host {
namespace {

constexpr auto kRetryPause = std::chrono::seconds(1);
constexpr auto kLeastLease = std::chrono::seconds(1);
constexpr auto kLongestLease = std::chrono::hours(1);

std::string CheckLease(const std::string& text) {
  const auto time = ParseDuration(text);
  if (time && *time >= kLeastLease && *time <= kLongestLease) return {};
  return "'" + text + "' is not a time from 1s to 1h";
}

// Where this process is: no other worker has the same.
std::string NameOfWorker() {
  constexpr std::size_t kMaxHost = 40;
  std::array<char, 256> host{};
  ::gethostname(host.data(), host.size() - 1);
  return fmt::format("{:.{}}-{}", host.data(), kMaxHost, ::getpid());
}

class C_WorkCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  t_NatsResult Open(C_TaskQueue& queue) const;

  S_QueueArguments m_queue;
  S_WorkOptions m_work;
};

void C_WorkCommand::Declare(CLI::App& app) {
  DeclareQueue(app, m_queue);
  app.add_option("--to", m_work.run.to,
                 "where results go, FORMAT:DIRECTORY/ for a file for each task, or a destination of\n"
                 "relay that leaves out repeats; repeated for several. Formats: frames, json, epochs")
      ->option_text("WHERE")
      ->required()
      ->allow_extra_args(false);
  app.add_flag("--until-empty", m_work.untilEmpty, "end when no task waits or is at work; for scripts");
  app.add_option_function<std::string>(
         "--lease",
         [this](const std::string& text) {
           m_work.lease = std::chrono::duration_cast<std::chrono::milliseconds>(*ParseDuration(text));
         },
         "give the task of a worker that has died to another after this time\n(default: 30s)")
      ->option_text("TIME")
      ->check(&CheckLease);
}

int C_WorkCommand::Run() {
  if (const std::string error = C_TaskOutput::Check(m_work.run.to); !error.empty()) return ReportUsage("work", error);
  m_work.run.worker = NameOfWorker();
  m_work.run.access.credentials = m_queue.credentials;
  m_work.run.readOptions = &ReadTaskWords;
  C_TaskQueue queue;
  const t_NatsResult result = Open(queue);
  if (SignalReceived() != 0) return eExitOk;
  return result ? ReportQueueFailure(queue, *result) : C_Worker(queue, m_work).Run();
}

// A server that is away when a worker starts comes back as one that goes away later does.
t_NatsResult C_WorkCommand::Open(C_TaskQueue& queue) const {
  bool isReported = false;
  while (true) {
    t_NatsResult result = queue.Open(m_queue.queue, m_queue.credentials, true);
    if (!result) result = queue.BeginWork(m_work.lease);
    const bool mayPass = result && result->kind == S_NatsFailure::eKind::Lost && !m_work.untilEmpty;
    if (!mayPass || SignalReceived() != 0) return result;
    if (!std::exchange(isReported, true))
      ReportWarning(fmt::format("{}: {}; trying again", queue.Shown(), result->text));
    PauseUntilSignal(kRetryPause);
  }
}

}  // namespace

const S_CommandEntry kWorkCommand = {
    "work",
    "Do the tasks of a queue, one after the other.\n\n"
    "Examples:\n"
    "  velagnss work --queue nats://host/archive --to json:/data/results/    a file for each task\n"
    "  velagnss work --queue nats://host/archive --to epochs:out/ --until-empty   for scripts\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_WorkCommand>(); }};

}  // namespace Host
