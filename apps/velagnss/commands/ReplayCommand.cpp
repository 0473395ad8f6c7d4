#include "apps/velagnss/commands/ReplayCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/SourceLoop.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/net/ntrip/HttpHead.h"
#include "apps/velagnss/record/ReplaySource.h"
#include "apps/velagnss/relay/RelayJob.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/Quantities.h"

namespace Host {
namespace {

constexpr std::size_t kPieceSize = 1 << 16;

std::string CheckSpeed(const std::string& text) {
  constexpr double kLeast = 0.001;
  constexpr double kGreatest = 100'000;
  if (text == "max") return {};
  return NumberBetween(kLeast, kGreatest, "a number from 0.001 to 100000, or 'max'")(text);
}

std::optional<double> ReadSpeed(const std::string& text) {
  double speed = 0;
  return ParseWhole(text, speed) ? std::optional(speed) : std::nullopt;
}

std::string CheckGap(const std::string& text) {
  return ParseDuration(text) ? "" : "'" + text + "' is not a time, as in 500ms, 10s or 5m";
}

class C_ReplayCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  std::string Objection() const;
  eExitCode CheckFiles(const C_Destinations& destinations) const;
  int Replay(C_Destinations& destinations);

  S_ReplayOptions m_options;
  std::string m_output;
  std::vector<std::string> m_to;
  bool m_mayPush = false;
};

void C_ReplayCommand::Declare(CLI::App& app) {
  app.add_option("FILE", m_options.files, "recordings, in this order; compressed ones as well")
      ->option_text("...")
      ->required();
  DeclareOutput(app, m_output);
  DeclareDestinations(app, m_to);
  app.get_option("--to")->required(false);
  app.add_flag("--allow-push", m_mayPush, "let --to push the replay to a caster, whose readers may take it for live");
  app.add_option_function<std::string>(
         "--speed", [this](const std::string& text) { m_options.speed = ReadSpeed(text); },
         "times as fast as it was recorded, as in 10 or 0.5 (default: 1), or 'max'")
      ->option_text("SPEED")
      ->check(&CheckSpeed);
  app.add_option_function<std::string>(
         "--max-gap", [this](const std::string& text) { m_options.maxGap = ParseDuration(text); },
         "shorten longer pauses to this time, as in 500ms or 10s")
      ->option_text("TIME")
      ->check(&CheckGap);
  app.add_flag("--loop", m_options.loops, "begin again at the end, forever");
}

// Empty when there is none.
std::string C_ReplayCommand::Objection() const {
  if (!m_to.empty() && !m_output.empty()) return "-o and --to exclude each other; write --to raw:FILE in place of -o";
  const auto isPush = [](const std::string& to) { return InLowerCase(to).find("ntrip-push://") != std::string::npos; };
  if (!m_mayPush && std::any_of(m_to.begin(), m_to.end(), isPush))
    return "readers of a caster would take a replay for live data; --allow-push permits it";
  if (std::any_of(m_options.files.begin(), m_options.files.end(), &IsLive))
    return "replay sends recordings; to hand a live source on, use 'velagnss relay'";
  return {};
}

eExitCode C_ReplayCommand::CheckFiles(const C_Destinations& destinations) const {
  S_InputOptions input;
  input.names = m_options.files;
  for (const std::string& file : destinations.Files())
    if (const eExitCode code = CheckOutput(file, input); code != eExitOk) return code;
  return CanBeOpened(input) ? eExitOk : eExitInput;
}

int C_ReplayCommand::Run() {
  if (const std::string objection = Objection(); !objection.empty()) return ReportUsage("replay", objection);
  if (m_to.empty()) m_to.push_back("raw:" + (m_output.empty() ? "-" : m_output));
  C_Destinations destinations;
  S_RelaySource source;
  source.isLive = m_options.speed.has_value();
  if (const std::string error = destinations.Read(m_to, source); !error.empty()) return ReportUsage("replay", error);
  if (const eExitCode code = CheckFiles(destinations); code != eExitOk) return code;
  return destinations.Open() ? Replay(destinations) : eExitOutput;
}

int C_ReplayCommand::Replay(C_Destinations& destinations) {
  S_RelayOptions options{RunOptions({}), {}, false};
  options.filter.AcceptUnlisted(true);
  C_RelayJob job(options, destinations);
  C_ReplaySource source(m_options);
  const S_SourceAndJob stream = {source, job};
  const bool isGood = C_SourceLoop(kPieceSize).Run({&stream, 1});
  job.Finish();
  destinations.Finish();
  return std::max(destinations.Judge(), isGood ? eExitOk : eExitInput);
}

}  // namespace

const S_CommandEntry kReplayCommand = {
    "replay",
    "Play recordings with their original timing.\n\n"
    "The times are those of the index beside a recording, FILE.idx, or else those in the data.\n\n"
    "Examples:\n"
    "  velagnss replay rover_20260501_120000Z.bin | velagnss decode   as it was recorded\n"
    "  velagnss replay --speed 10 --max-gap 5s --to tcp-listen://:2947 a.bin    faster, without long pauses\n"
    "  velagnss replay --speed max --loop session.bin | ...           forever, as fast as it is read\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_ReplayCommand>(); }};

}  // namespace Host
