#include "apps/velagnss/commands/StatCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/account/StreamReport.h"
#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/InputLoop.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/Output.h"

namespace Host {
namespace {

struct S_StatOptions {
  S_InputOptions input;
  S_StreamArguments stream;
  bool json = false;
  double maxBadPercent = 100;
};

// One report per input, shown when the input ends.
class C_StatJob : public C_StreamJob {
 public:
  C_StatJob(const S_StatOptions& options, const std::vector<C_RawDataMessage::eProtocols>& search, C_Output& output)
      : m_options(options), m_search(search), m_output(output) {}

  void BeginInput(const std::string& name) override {
    m_report = std::make_unique<C_StreamReport>(name);
    m_reader = std::make_unique<C_FrameReader>(m_search.data(), *m_report);
  }
  void Feed(std::span<const unsigned char> bytes) override { m_reader->Feed(bytes); }
  void EndInput() override;
  bool WantsMore() const override { return !m_output.HasFailed(); }

  bool IsAllGood() const { return m_isAllGood; }

 private:
  void Show();
  void ShowJson();
  void Judge();

  const S_StatOptions& m_options;
  const std::vector<C_RawDataMessage::eProtocols>& m_search;
  C_Output& m_output;
  std::unique_ptr<C_StreamReport> m_report;
  std::unique_ptr<C_FrameReader> m_reader;
  bool m_isFirst = true;
  bool m_isAllGood = true;
};

void C_StatJob::EndInput() {
  m_reader->Finish();
  m_report->Close(*m_reader);
  Show();
  Judge();
}

void C_StatJob::Show() {
  if (m_options.json) return ShowJson();
  const std::string table = m_report->Table(Verbosity() == eVerbosity::Verbose);
  m_output.Write(m_isFirst ? table : "\n" + table);
  m_isFirst = false;
}

void C_StatJob::ShowJson() {
  C_JsonWriter json;
  m_report->WriteJson(json);
  m_output.Write(json.Text());
}

void C_StatJob::Judge() {
  if (m_report->FramesGood() == 0 && m_report->BytesRead() > 0) ReportNoFrame(m_report->Input(), m_report->BytesRead());
  const bool isTooBad = m_report->BadPercent() > m_options.maxBadPercent;
  if (isTooBad) {
    ReportError(fmt::format("{}: {:.2f} % of the frames are damaged, more than the {} % of --max-bad; -v shows where",
                            m_report->Input(), m_report->BadPercent(), m_options.maxBadPercent));
  }
  m_isAllGood = m_isAllGood && !isTooBad && m_report->FramesGood() > 0;
}

class C_StatCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override {
    DeclareStreamArguments(app, m_options.stream, m_options.input);
    app.add_flag("--json", m_options.json, "one JSON object per input instead of a table");
    app.add_option("--max-bad", m_options.maxBadPercent,
                   "exit with 1 when more than this share of an input's frames is damaged")
        ->option_text("PERCENT")
        ->check(NumberBetween(0.0, 100.0));
  }

  int Run() override {
    const auto search = SearchList(m_options.stream);
    C_Output output;
    if (!output.Open("-")) return eExitOutput;
    m_options.input.showProgress = true;
    C_StatJob job(m_options, search, output);
    const eExitCode inputCode = RunInputs(m_options.input, job);
    output.Close();
    if (output.HasFailed() && !output.HasReaderLeft()) return eExitOutput;
    if (inputCode != eExitOk) return inputCode;
    return job.IsAllGood() ? eExitOk : eExitData;
  }

 private:
  S_StatOptions m_options;
};

}  // namespace

const S_CommandEntry kStatCommand = {
    "stat",
    "What is in the inputs, how much of it is damaged, and where.\n\n"
    "Examples:\n"
    "  velagnss stat session.bin                   counts, rates, gaps, mean position, damage\n"
    "  velagnss -v stat session.bin                with all the places\n"
    "  velagnss stat --json --max-bad 1 *.bin      for scripts: exit code 1 when more than 1 % is damaged\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_StatCommand>(); }};

}  // namespace Host
