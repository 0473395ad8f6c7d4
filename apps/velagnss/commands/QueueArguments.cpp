#include "apps/velagnss/commands/QueueArguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"

namespace Host {

void DeclareQueue(CLI::App& app, S_QueueArguments& arguments) {
  app.add_option("--queue", arguments.queue,
                 "the queue, a stream of a NATS server: nats://host/QUEUE, or natss:// for TLS")
      ->option_text("ADDRESS")
      ->required()
      ->check(&CheckQueue);
  DeclareCredentials(app, arguments.credentials);
}

bool OpenQueue(const S_QueueArguments& arguments, bool creates, C_TaskQueue& queue) {
  const t_NatsResult result = queue.Open(arguments.queue, arguments.credentials, creates);
  if (result) ReportQueueFailure(queue, *result);
  return !result;
}

int ReportQueueFailure(const C_TaskQueue& queue, const S_NatsFailure& failure) {
  ReportError(fmt::format("{}: {}", queue.Shown(), failure.text));
  return eExitInput;
}

void DeclareTask(CLI::App& app, S_TaskArguments& arguments) {
  DeclareDecoding(app, arguments.stream);
  DeclareFilter(app, arguments.filter);
  DeclareSeed(app, arguments.stream);
}

std::vector<std::string> TaskWords(const CLI::App& app) {
  CLI::App known("", app.get_name());
  known.set_help_flag();
  S_TaskArguments unused;
  DeclareTask(known, unused);
  std::vector<std::string> words;
  for (const CLI::Option* option : app.get_options()) {
    const std::string name = option->get_name();
    if (known.get_option_no_throw(name) == nullptr) continue;
    for (const std::string& value : option->results())
      words.push_back(option->get_items_expected_max() == 0 ? name : fmt::format("{}={}", name, value));
  }
  return words;
}

std::string ReadTaskWords(const std::vector<std::string>& words, S_RelayOptions& relay) {
  CLI::App app("", "submit");
  app.set_help_flag();
  S_TaskArguments arguments;
  DeclareTask(app, arguments);
  try {
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    app.parse(reversed);
  } catch (const CLI::ParseError& error) {
    return error.what();
  }
  relay.run = RunOptions(arguments.stream);
  return FillFilter(arguments.filter, arguments.stream, relay.filter);
}

}  // namespace Host
