#include "apps/velagnss/commands/DecodeCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <deque>
#include <limits>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/json/JsonLines.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// All files, or a live source.
struct S_Decoding {
  S_Decoding(const S_JsonLinesOptions& options, const S_RunOptions& runOptions)
      : lines(options), run(runOptions, {&lines}) {}

  C_JsonLines lines;
  C_RecordRun run;
};

struct S_Counts {
  std::uint64_t bytes = 0;
  std::uint64_t found = 0;  // frames
  std::uint64_t selected = 0;
  std::uint64_t written = 0;
  std::uint64_t faults = 0;
};

class C_DecodeCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  int Decode(const S_JsonLinesOptions& options) const;
  eExitCode Judge(const std::deque<S_Decoding>& decodings) const;
  eExitCode ExplainNothing(const S_Counts& all) const;

  S_StreamArguments m_stream;
  S_FilterArguments m_filter;
  std::string m_output = "-";
  S_JsonLinesOptions m_lines;
  bool m_isStrict = false;
};

void C_DecodeCommand::Declare(CLI::App& app) {
  DeclareStreamArguments(app, m_stream);
  DeclareRange(app, m_stream);
  DeclareCores(app, m_stream);
  DeclareOutput(app, m_output);
  DeclareFilter(app, m_filter);
  app.add_option("-n", m_lines.count, "stop after this many frames, of each live source")
      ->option_text("COUNT")
      ->check(NumberBetween(std::uint64_t{1}, std::numeric_limits<std::uint64_t>::max(), "a whole number, 1 or more"));
  DeclareSeed(app, m_stream);
  app.add_flag("--frames", m_lines.framesOnly, "envelopes only: decode nothing");
  app.add_flag("--hex", m_lines.hex, "add the bytes of frames and events");
  app.add_flag(
      "--events", m_lines.events,
      "add an object for each rejected start, each skipped range, and each change\nof the state of a live source");
  app.add_flag("--epochs", m_lines.epochs, "add an object for each epoch: time, position, accuracy, satellites");
  app.add_flag("--epochs-only", m_lines.epochsOnly, "write epochs instead of frames; -n counts them");
  app.add_flag("--strict", m_isStrict, "exit with 1 when anything in the inputs is damaged or skipped");
}

int C_DecodeCommand::Run() {
  S_JsonLinesOptions options = m_lines;
  if (const std::string error = FillFilter(m_filter, m_stream, options.filter); !error.empty())
    return ReportUsage("decode", error);
  options.epochs = options.epochs || options.epochsOnly;
  options.namesInput = m_stream.input.names.size() > 1;
  return Decode(options);
}

int C_DecodeCommand::Decode(const S_JsonLinesOptions& options) const {
  C_OutputRun output;
  if (const eExitCode code = output.Open(m_output, m_stream.input); code != eExitOk) return code;
  std::deque<S_Decoding> decodings;
  S_RunOptions run = RunOptions(m_stream);
  // Blocks that are under way when the last frame has come would be found and decoded for nothing, and be counted.
  if (options.count != S_JsonLinesOptions().count) run.cores = 1;
  const auto next = [&]() -> C_OutputRun::S_Maker {
    S_Decoding& decoding = decodings.emplace_back(options, run);
    return {decoding.run, decoding.lines.Text()};
  };
  return output.Run(m_stream.input, next(), next, [&] { return Judge(decodings); });
}

// An empty output is explained: a filter that lets nothing pass and a wrong baud rate look alike otherwise.
eExitCode C_DecodeCommand::Judge(const std::deque<S_Decoding>& decodings) const {
  S_Counts all;
  for (const S_Decoding& decoding : decodings) {
    all.bytes += decoding.run.BytesRead();
    all.found += decoding.run.FramesFound();
    all.selected += decoding.run.FramesSelected();
    all.written += decoding.lines.FramesWritten();
    all.faults += decoding.lines.DataErrors();
    ReportIgnoredPeriod(decoding.lines.Filter());
  }
  ReportDetail(fmt::format("{} found, {} written, {} in the data", Counted(all.found, "frame"), all.written,
                           Counted(all.faults, "fault")));
  if (all.written == 0) return ExplainNothing(all);
  if (!m_isStrict || all.faults == 0) return eExitOk;
  ReportError(fmt::format("{} in the data: --events shows what was skipped, \"error\" what cannot be decoded",
                          Counted(all.faults, "fault")));
  return eExitData;
}

eExitCode C_DecodeCommand::ExplainNothing(const S_Counts& all) const {
  constexpr std::string_view kNoEpoch = "belongs to an epoch, as GGA, RMC, GSV and RTCM 3 observations do";
  if (all.selected > 0)
    ReportWarning(fmt::format("{} found, none {}", Counted(all.selected, "frame"),
                              m_lines.epochsOnly ? kNoEpoch : "matches --proto or --msg"));
  else if (all.found == 0 && all.bytes > 0)
    ReportNoFrame(InputsText(m_stream.input), all.bytes);
  return eExitData;
}

}  // namespace

const S_CommandEntry kDecodeCommand = {
    "decode",
    "Decode every frame to one JSON object per line.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin                        all frames, all fields\n"
    "  velagnss decode --msg RMC:60,BIN95 session.bin     a position per minute, and GPS ephemerides\n"
    "  velagnss decode --events --hex -o all.json a.bin   also what was skipped and why, and the bytes\n"
    "  velagnss decode --events tcp://10.0.0.5:5015       live, with what becomes of the connection\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_DecodeCommand>(); }};

}  // namespace Host
