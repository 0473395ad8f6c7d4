#include "apps/velagnss/commands/EncodeCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/InputLoop.h"
#include "apps/velagnss/json/LineEncoder.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/Output.h"

namespace Host {
namespace {

struct S_EncodeOptions {
  S_InputOptions input;
  std::string output = "-";
  bool strict = false;
};

// Lines of JSON in, sentences out.
class C_EncodeJob : public C_StreamJob {
 public:
  C_EncodeJob(const S_EncodeOptions& options, C_Output& output) : m_options(options), m_output(output) {}

  void BeginInput(const std::string& name) override;
  void Feed(std::span<const unsigned char> bytes) override;
  void EndInput() override { EndLine(); }
  bool WantsMore() const override { return !m_output.HasFailed(); }
  void BeforeWait() override { Flush(); }

  void Flush();
  eExitCode Judge() const;

 private:
  static constexpr std::size_t kFlushSize = 1 << 16;
  static constexpr std::size_t kMaxLine = 1 << 20;  // some fifty times the longest that `decode` writes
  static constexpr std::uint64_t kMaxErrorsShown = 20;

  void EndLine();
  void EncodeLine();
  void NoteError(std::string_view what);

  const S_EncodeOptions& m_options;
  C_Output& m_output;
  C_LineEncoder m_encoder;
  std::string m_input;
  std::uint64_t m_lineNumber = 0;
  std::string m_line;  // what has come of it; one character more than allowed when it is too long
  std::string m_text;
  std::uint64_t m_encoded = 0;
  std::uint64_t m_skipped = 0;
  std::uint64_t m_errors = 0;
};

void C_EncodeJob::BeginInput(const std::string& name) {
  m_input = name;
  m_lineNumber = 0;
  m_line.clear();
}

void C_EncodeJob::Feed(std::span<const unsigned char> bytes) {
  std::string_view rest(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  while (!rest.empty()) {
    const std::size_t end = rest.find('\n');
    const std::string_view piece = rest.substr(0, end);
    m_line.append(piece.substr(0, kMaxLine + 1 - m_line.size()));
    if (end == std::string_view::npos) return;
    EndLine();
    rest.remove_prefix(end + 1);
  }
}

// Blank lines stand for nothing.
void C_EncodeJob::EndLine() {
  ++m_lineNumber;
  if (m_line.size() > kMaxLine)
    NoteError(fmt::format("is longer than {} characters", kMaxLine));
  else if (m_line.find_first_not_of(" \t\r") != std::string::npos)
    EncodeLine();
  m_line.clear();
}

void C_EncodeJob::EncodeLine() {
  switch (m_encoder.Encode(m_line)) {
    case C_LineEncoder::eOutcome::Encoded:
      ++m_encoded;
      m_text += m_encoder.Sentence();
      break;
    case C_LineEncoder::eOutcome::Skipped:
      ++m_skipped;
      if (m_options.strict) NoteError(m_encoder.Reason());
      break;
    case C_LineEncoder::eOutcome::Refused:
      NoteError(m_encoder.Reason());
      break;
  }
  if (m_text.size() >= kFlushSize) Flush();
}

void C_EncodeJob::NoteError(std::string_view what) {
  if (++m_errors <= kMaxErrorsShown) ReportError(fmt::format("{}, line {}: {}", m_input, m_lineNumber, what));
}

void C_EncodeJob::Flush() {
  m_output.Write(m_text);
  m_text.clear();
}

eExitCode C_EncodeJob::Judge() const {
  if (m_errors > kMaxErrorsShown) ReportError(fmt::format("{} more lines are wrong", m_errors - kMaxErrorsShown));
  ReportDetail(fmt::format("{} sentences written, {} objects skipped, {} lines wrong", m_encoded, m_skipped, m_errors));
  if (m_skipped > 0 && !m_options.strict)
    ReportWarning(fmt::format("{} objects skipped: other protocols, or not decoded", m_skipped));
  if (m_encoder.ModesLeftOut() > 0)
    ReportWarning(fmt::format("modes left out of {} GNS sentences: only a talker that ends in N has them",
                              m_encoder.ModesLeftOut()));
  return m_errors == 0 && m_encoded > 0 ? eExitOk : eExitData;
}

class C_EncodeCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  S_EncodeOptions m_options;
};

void C_EncodeCommand::Declare(CLI::App& app) {
  app.add_option("INPUT", m_options.input.names, "files of JSON Lines; '-' or nothing for standard input")
      ->option_text("...");
  app.add_option("-o,--output", m_options.output, "write to this file, not to standard output")->option_text("FILE");
  app.add_flag("--strict", m_options.strict, "an object that is no decoded sentence is an error, not skipped");
}

int C_EncodeCommand::Run() {
  if (IsAnInput(m_options.input, m_options.output))
    return ReportUsage("encode", m_options.output + ": is an input as well; name another file to write to");
  C_Output output;
  if (!output.Open(m_options.output)) return eExitOutput;
  m_options.input.showProgress = !output.IsATerminal();
  C_EncodeJob job(m_options, output);
  const eExitCode inputCode = RunInputs(m_options.input, job);
  job.Flush();
  output.Close();
  if (output.HasReaderLeft()) return inputCode;
  if (output.HasFailed()) return eExitOutput;
  return inputCode != eExitOk ? inputCode : job.Judge();
}

}  // namespace

const S_CommandEntry kEncodeCommand = {
    "encode",
    "NMEA 0183 sentences out of JSON Lines as 'decode' writes them.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin | velagnss encode      its GGA, GLL, GNS, GSA, GSV, RMC, VTG and ZDA\n"
    "  velagnss decode --msg GGA a.bin | jq -c '.fields.hdop = 1' | velagnss encode      changed on the way\n"
    "  velagnss encode --strict -o out.nmea records.json  nothing may be skipped\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_EncodeCommand>(); }};

}  // namespace Host
