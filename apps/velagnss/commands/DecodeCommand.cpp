#include "apps/velagnss/commands/DecodeCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <limits>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/InputLoop.h"
#include "apps/velagnss/json/FrameJson.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/sinks/Output.h"

namespace Host {
namespace {

struct S_DecodeOptions {
  S_InputOptions input;
  S_StreamArguments stream;
  std::string seed;
  std::vector<std::string> protocols;
  std::vector<std::string> messages;
  std::string output = "-";
  std::uint64_t count = std::numeric_limits<std::uint64_t>::max();
  bool events = false;
  bool framesOnly = false;
  bool hex = false;
  bool strict = false;
};

// Frames in, lines of JSON out.
class C_DecodeJob : public C_StreamJob, private C_FrameSink {
 public:
  C_DecodeJob(const S_DecodeOptions& options, const std::vector<C_RawDataMessage::eProtocols>& search,
              const std::optional<C_GnssTime>& seed, C_MessageFilter filter, C_Output& output)
      : m_options(options),
        m_reader(search.data(), *this),
        m_decoder(seed),
        m_filter(std::move(filter)),
        m_lines(m_json),
        m_output(output) {
    m_lines.SetHex(options.hex);
  }

  void BeginInput(const std::string& name) override;
  void Feed(std::span<const unsigned char> bytes) override { m_reader.Feed(bytes); }
  void EndInput() override;
  bool WantsMore() const override { return m_framesWritten < m_options.count && !m_output.HasFailed(); }
  void BeforeWait() override { Flush(); }

  void Flush();
  std::uint64_t BytesRead() const { return m_bytesRead; }
  std::uint64_t FramesFound() const { return m_framesFound; }
  std::uint64_t FramesWritten() const { return m_framesWritten; }
  std::uint64_t DataErrors() const { return m_dataErrors; }

 private:
  static constexpr std::size_t kFlushSize = 1 << 16;

  void OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) override;
  void OnRejection(const S_Rejection& rejection) override;
  void OnSkipped(std::uint64_t offset, std::uint64_t length) override;
  void FlushWhenFull();

  const S_DecodeOptions& m_options;
  C_FrameReader m_reader;
  C_FrameDecoder m_decoder;
  C_MessageFilter m_filter;
  C_JsonWriter m_json;
  C_FrameJson m_lines;
  C_Output& m_output;
  std::uint64_t m_bytesRead = 0;
  std::uint64_t m_framesFound = 0;
  std::uint64_t m_framesWritten = 0;
  std::uint64_t m_dataErrors = 0;
};

void C_DecodeJob::BeginInput(const std::string& name) {
  m_reader.Restart();
  m_decoder.Restart();
  m_filter.Restart();
  if (m_options.input.names.size() > 1) m_lines.SetInput(name);
}

void C_DecodeJob::EndInput() {
  if (WantsMore()) m_reader.Finish();
  m_bytesRead += m_reader.BytesFed();
}

// Decoded is also what does not pass the filter: a date in it may be the one that resolves the weeks of what passes.
void C_DecodeJob::OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) {
  if (!WantsMore()) return;
  ++m_framesFound;
  const bool isDecoded = !m_options.framesOnly || m_filter.UsesTime();
  if (isDecoded) m_decoder.Decode(frame);
  if (isDecoded && m_decoder.HasDataError()) ++m_dataErrors;
  if (!m_filter.Passes(frame.protocol, frame.messageType, m_decoder.Clock().Seconds())) return;
  ++m_framesWritten;
  m_lines.WriteFrame(frame, offset, m_options.framesOnly ? nullptr : &m_decoder);
  FlushWhenFull();
}

void C_DecodeJob::OnRejection(const S_Rejection& rejection) {
  if (!WantsMore()) return;
  ++m_dataErrors;
  if (m_options.events) m_lines.WriteRejection(rejection);
  FlushWhenFull();
}

void C_DecodeJob::OnSkipped(std::uint64_t offset, std::uint64_t length) {
  if (!WantsMore()) return;
  ++m_dataErrors;
  if (m_options.events) m_lines.WriteSkipped(offset, length);
  FlushWhenFull();
}

void C_DecodeJob::FlushWhenFull() {
  if (m_json.Text().size() >= kFlushSize) Flush();
}

void C_DecodeJob::Flush() {
  m_output.Write(m_json.Text());
  m_json.Clear();
}

class C_DecodeCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  int Decode(const std::vector<C_RawDataMessage::eProtocols>& search, const std::optional<C_GnssTime>& seed,
             const C_MessageFilter& filter);
  int Judge(const C_DecodeJob& job) const;
  void WarnOfNothing(const C_DecodeJob& job) const;
  std::optional<std::string> FillFilter(C_MessageFilter& filter) const;

  S_DecodeOptions m_options;
};

void C_DecodeCommand::Declare(CLI::App& app) {
  DeclareStreamArguments(app, m_options.stream, m_options.input);
  app.add_option("-o,--output", m_options.output, "write to this file, not to standard output")->option_text("FILE");
  app.add_option("--proto", m_options.protocols, "show these protocols only; names as for --search")
      ->option_text("LIST")
      ->allow_extra_args(false);
  app.add_option("--msg", m_options.messages, "show these messages only: GGA,BIN95,1077, or every 10 s: GGA:10")
      ->option_text("LIST")
      ->allow_extra_args(false);
  app.add_option("-n", m_options.count, "stop after this many frames")
      ->option_text("COUNT")
      ->check(NumberBetween(std::uint64_t{1}, std::numeric_limits<std::uint64_t>::max()));
  DeclareSeed(app, m_options.seed);
  app.add_flag("--frames", m_options.framesOnly, "envelopes only: decode nothing");
  app.add_flag("--hex", m_options.hex, "add the bytes of each frame");
  app.add_flag("--events", m_options.events, "add an object for each rejected start and each skipped range");
  app.add_flag("--strict", m_options.strict, "exit with 1 when anything in the inputs is damaged or skipped");
}

int C_DecodeCommand::Run() {
  const auto search = SearchList(m_options.stream);
  C_MessageFilter filter;
  if (const std::optional<std::string> error = FillFilter(filter)) return ReportUsage("decode", *error);
  if (IsAnInput(m_options.input, m_options.output))
    return ReportUsage("decode", m_options.output + ": is an input as well; name another file to write to");
  return Decode(search, ParseSeed(m_options.seed), filter);
}

std::optional<std::string> C_DecodeCommand::FillFilter(C_MessageFilter& filter) const {
  for (const std::string& list : m_options.protocols)
    if (std::optional<std::string> error = filter.AddProtocols(list)) return "--proto: " + *error;
  for (const std::string& list : m_options.messages)
    if (std::optional<std::string> error = filter.AddMessages(list)) return "--msg: " + *error;
  return std::nullopt;
}

int C_DecodeCommand::Decode(const std::vector<C_RawDataMessage::eProtocols>& search,
                            const std::optional<C_GnssTime>& seed, const C_MessageFilter& filter) {
  C_Output output;
  if (!output.Open(m_options.output)) return eExitOutput;
  m_options.input.showProgress = !output.IsATerminal();
  C_DecodeJob job(m_options, search, seed, filter, output);
  const eExitCode inputCode = RunInputs(m_options.input, job);
  job.Flush();
  output.Close();
  if (output.HasReaderLeft()) return inputCode;
  if (output.HasFailed()) return eExitOutput;
  return inputCode != eExitOk ? inputCode : Judge(job);
}

void C_DecodeCommand::WarnOfNothing(const C_DecodeJob& job) const {
  if (job.FramesFound() > 0) {
    ReportWarning(fmt::format("none of {} frames passed --proto and --msg", job.FramesFound()));
  } else if (job.BytesRead() > 0) {
    ReportNoFrame(InputsText(m_options.input), job.BytesRead());
  }
}

int C_DecodeCommand::Judge(const C_DecodeJob& job) const {
  ReportDetail(fmt::format("{} frames found, {} written, {} faults in the data", job.FramesFound(), job.FramesWritten(),
                           job.DataErrors()));
  if (job.FramesWritten() == 0) {
    WarnOfNothing(job);
    return eExitData;
  }
  if (!m_options.strict || job.DataErrors() == 0) return eExitOk;
  ReportError(fmt::format("{} faults in the data: --events shows what was skipped, \"error\" what does not decode",
                          job.DataErrors()));
  return eExitData;
}

}  // namespace

const S_CommandEntry kDecodeCommand = {
    "decode",
    "Every frame as one JSON object per line.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin                        all frames, all fields\n"
    "  velagnss decode --msg RMC:60,BIN95 session.bin     a position per minute, and GPS ephemerides\n"
    "  velagnss decode --events --hex -o all.json a.bin   with what was skipped and why, and with the bytes\n"
    "  cat /dev/ttyUSB0 | velagnss decode | jq .fields    live\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_DecodeCommand>(); }};

}  // namespace Host
