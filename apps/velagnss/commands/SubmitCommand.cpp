#include "apps/velagnss/commands/SubmitCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <map>

#include "apps/velagnss/commands/QueueArguments.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/jobs/TaskCutter.h"
#include "apps/velagnss/net/http/HttpAddress.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Quantities.h"

namespace Host {
namespace {

// A task is read by everybody who can read the queue.
std::string CheckArchive(const std::string& name) {
  S_Address address;
  if (IsHttp(name)) {
    if (const std::string error = CheckHttp(name); !error.empty())
      return fmt::format("'{}': {}", ShownLive(name), error);
    ReadAddress(name, address);
    return address.user.empty() && address.password.empty()
               ? std::string()
               : fmt::format(
                     "'{}': everybody who reads the queue would see the password; give it to submit and to the "
                     "workers with --credentials",
                     address.Shown());
  }
  if (name == "-" || IsLive(name))
    return fmt::format("'{}': tasks are made of files and of https://host/file", ShownLive(name));
  return {};
}

std::string CheckSplit(const std::string& text) {
  constexpr std::uint64_t kLeast = 100'000;
  if (const auto size = ParseDataSize(text); size && *size >= kLeast) return {};
  return "'" + text + "' is not a size from 100k on, as in 500M or 2G";
}

class C_SubmitCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  t_NatsResult Submit(const std::vector<S_Task>& tasks, const C_TaskQueue& queue);

  const CLI::App* m_app = nullptr;
  S_QueueArguments m_queue;
  S_TaskArguments m_task;
  std::vector<std::string> m_names;
  S_CutOptions m_cut;
  bool m_again = false;
  std::map<C_TaskQueue::eAdded, std::uint64_t> m_counts;
};

void C_SubmitCommand::Declare(CLI::App& app) {
  m_app = &app;
  app.add_option("INPUT", m_names, "files that the workers can read by the same path, or https://host/file")
      ->option_text("...")
      ->required()
      ->check(&CheckArchive);
  DeclareQueue(app, m_queue);
  app.add_option_function<std::string>(
         "--split", [this](const std::string& text) { m_cut.split = *ParseDataSize(text); },
         "cut files that are not compressed into tasks of this many bytes, as in 1G\n(default: one task for each file)")
      ->option_text("SIZE")
      ->check(&CheckSplit);
  app.add_option("--tries", m_cut.task.tries, "give a task up after this many failed tries (default: 3)")
      ->option_text("COUNT")
      ->check(NumberBetween(1U, 1000U, "a whole number from 1 to 1000"));
  app.add_flag("--again", m_again, "also submit what is done already");
  DeclareTask(app, m_task);
  m_cut.task.tries = 3;
}

int C_SubmitCommand::Run() {
  m_cut.task.options = TaskWords(*m_app);
  m_cut.task.namesInput = m_names.size() > 1;
  m_cut.access.credentials = m_queue.credentials;
  S_RelayOptions understood;
  if (const std::string error = ReadTaskWords(m_cut.task.options, understood); !error.empty())
    return ReportUsage("submit", error);
  C_TaskQueue queue;
  if (!OpenQueue(m_queue, true, queue)) return eExitInput;
  eExitCode code = eExitOk;
  for (const std::string& name : m_names) {
    if (SignalReceived() != 0) break;
    const std::optional<std::vector<S_Task>> tasks = CutInput(name, m_cut);
    if (!tasks) code = eExitInput;
    const t_NatsResult result = tasks ? Submit(*tasks, queue) : std::nullopt;
    if (result) return ReportQueueFailure(queue, *result);
  }
  ReportNotice(fmt::format("{} submitted, {} waiting or at work already, {} done already",
                           m_counts[C_TaskQueue::eAdded::New], m_counts[C_TaskQueue::eAdded::Waiting],
                           m_counts[C_TaskQueue::eAdded::Done]));
  return code;
}

t_NatsResult C_SubmitCommand::Submit(const std::vector<S_Task>& tasks, const C_TaskQueue& queue) {
  for (const S_Task& task : tasks) {
    C_TaskQueue::eAdded added{};
    if (t_NatsResult result = queue.Add(task, m_again, added)) return result;
    ++m_counts[added];
  }
  return std::nullopt;
}

}  // namespace

const S_CommandEntry kSubmitCommand = {
    "submit",
    "Cut archives into tasks for workers on any number of machines.\n\n"
    "Examples:\n"
    "  velagnss submit --queue nats://host/archive /data/2024/*.bin          a task for each file\n"
    "  velagnss submit --queue nats://host/archive --split 1G /data/all.bin    tasks of 1 GB\n"
    "  velagnss submit --queue nats://host/archive --msg GGA https://host/a.bin   from a web server\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_SubmitCommand>(); }};

}  // namespace Host
