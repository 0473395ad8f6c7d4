#include "apps/velagnss/commands/EncodeCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/json/LineEncoder.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/LineSplitter.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

// Lines of JSON in, sentences out.
class C_EncodeJob : public C_StreamJob, public C_TextBuffer {
 public:
  explicit C_EncodeJob(bool isStrict) : m_isStrict(isStrict) {}

  void BeginInput(const std::string& name) override;
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;

  eExitCode Judge() const;

 private:
  static constexpr std::size_t kMaxLine = 1 << 20;  // some fifty times the longest that `decode` writes
  static constexpr std::uint64_t kMaxErrorsShown = 20;

  void TakeLine(bool isCutOff = false);
  void EncodeLine(bool isCutOff);
  void NoteError(std::string_view what);

  bool m_isStrict;
  C_LineEncoder m_encoder;
  std::string m_input;
  C_LineSplitter m_line{kMaxLine};
  std::uint64_t m_encoded = 0;
  std::uint64_t m_skipped = 0;
  std::uint64_t m_errors = 0;
};

void C_EncodeJob::BeginInput(const std::string& name) {
  m_input = name;
  m_line.Restart();
}

void C_EncodeJob::Feed(const S_Chunk& chunk) {
  for (std::span<const unsigned char> rest = chunk.bytes; m_line.Take(rest);) TakeLine();
}

// The last line may have no end.
void C_EncodeJob::EndInput() {
  if (m_line.End()) TakeLine(true);
}

// Blank lines are ignored.
void C_EncodeJob::TakeLine(bool isCutOff) {
  if (m_line.IsTooLong())
    NoteError(fmt::format("longer than {} characters", kMaxLine));
  else if (m_line.Text().find_first_not_of(" \t\r") != std::string_view::npos)
    EncodeLine(isCutOff);
}

void C_EncodeJob::EncodeLine(bool isCutOff) {
  switch (m_encoder.Encode(m_line.Text(), isCutOff)) {
    case C_LineEncoder::eOutcome::Encoded:
      ++m_encoded;
      m_text += m_encoder.Sentence();
      break;
    case C_LineEncoder::eOutcome::Skipped:
      ++m_skipped;
      if (m_isStrict) NoteError(m_encoder.Reason());
      break;
    case C_LineEncoder::eOutcome::Refused:
      NoteError(m_encoder.Reason());
      break;
  }
}

void C_EncodeJob::NoteError(std::string_view what) {
  if (++m_errors <= kMaxErrorsShown) ReportError(fmt::format("{}, line {}: {}", m_input, m_line.Number(), what));
}

eExitCode C_EncodeJob::Judge() const {
  if (m_errors > kMaxErrorsShown)
    ReportError(fmt::format("{} cannot be encoded", Counted(m_errors - kMaxErrorsShown, "more line")));
  ReportDetail(fmt::format("{} written, {} skipped, {} rejected", Counted(m_encoded, "sentence"),
                           Counted(m_skipped, "object"), Counted(m_errors, "line")));
  if (m_skipped > 0 && !m_isStrict)
    ReportWarning(Counted(m_skipped, "object") + " skipped: other protocols, or not decoded");
  if (m_encoder.ModesLeftOut() > 0)
    ReportWarning(fmt::format("modes left out of {}: only talkers that end in N have them",
                              Counted(m_encoder.ModesLeftOut(), "GNS sentence")));
  return m_errors == 0 && m_encoded > 0 ? eExitOk : eExitData;
}

class C_EncodeCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  S_InputOptions m_input;
  std::string m_output = "-";
  bool m_isStrict = false;
};

void C_EncodeCommand::Declare(CLI::App& app) {
  app.add_option("INPUT", m_input.names, "files of JSON Lines; '-' or nothing for standard input")->option_text("...");
  DeclareOutput(app, m_output);
  app.add_flag("--strict", m_isStrict, "fail on objects that are not decoded sentences instead of skipping them");
}

int C_EncodeCommand::Run() {
  C_OutputRun output;
  if (const eExitCode code = output.Open(m_output, m_input); code != eExitOk) return code;
  C_EncodeJob job(m_isStrict);
  return output.Run(m_input, job, job, [&] { return job.Judge(); });
}

}  // namespace

const S_CommandEntry kEncodeCommand = {
    "encode",
    "Encode the JSON Lines that 'decode' writes as NMEA 0183 sentences.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin | velagnss encode      its NMEA sentences, byte for byte\n"
    "  velagnss decode --msg GGA a.bin | jq -c '.fields.hdop = 1' | velagnss encode      edited\n"
    "  velagnss encode --strict -o out.nmea records.json  nothing may be skipped\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_EncodeCommand>(); }};

}  // namespace Host
