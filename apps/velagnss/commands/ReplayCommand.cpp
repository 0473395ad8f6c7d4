#include "apps/velagnss/commands/ReplayCommand.h"

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/SourceLoop.h"
#include "apps/velagnss/record/ReplaySource.h"
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

// Bytes to an output as they come.
class C_CopyJob : public C_StreamJob {
 public:
  explicit C_CopyJob(C_Output& output) : m_output(output) {}

  void BeginInput(const std::string&) override {}
  void Feed(const S_Chunk& chunk) override {
    m_output.Write({reinterpret_cast<const char*>(chunk.bytes.data()), chunk.bytes.size()});
  }
  void EndInput() override {}
  bool WantsMore() const override { return !m_output.HasFailed(); }

 private:
  C_Output& m_output;
};

class C_ReplayCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  S_ReplayOptions m_options;
  std::string m_output = "-";
};

void C_ReplayCommand::Declare(CLI::App& app) {
  app.add_option("FILE", m_options.files, "recordings, in this order; compressed ones as well")
      ->option_text("...")
      ->required();
  DeclareOutput(app, m_output);
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
  app.add_flag("--loop", m_options.loops, "begin again at the end, for ever");
}

int C_ReplayCommand::Run() {
  C_OutputRun run;
  S_InputOptions files;
  files.names = m_options.files;
  if (const eExitCode code = run.Open(m_output, files); code != eExitOk) return code;
  C_ReplaySource source(m_options);
  C_CopyJob job(run.Output());
  const S_SourceAndJob stream = {source, job};
  const bool isGood = C_SourceLoop(kPieceSize).Run({&stream, 1});
  run.Output().Close();
  if (run.Output().HasFailed() && !run.Output().HasReaderLeft()) return eExitOutput;
  return isGood ? eExitOk : eExitInput;
}

}  // namespace

const S_CommandEntry kReplayCommand = {
    "replay",
    "Send recordings with the rhythm in which they came.\n\n"
    "The times are those of the index beside a recording, FILE.idx, or else those in the data.\n\n"
    "Examples:\n"
    "  velagnss replay rover_20260501_120000Z.bin | velagnss decode   as it was recorded\n"
    "  velagnss replay --speed 10 --max-gap 5s -o /dev/pts/3 a.bin    faster, without long pauses\n"
    "  velagnss replay --speed max --loop session.bin | ...           for ever, as fast as it is read\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_ReplayCommand>(); }};

}  // namespace Host
