#include "apps/velagnss/commands/ReportCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <deque>
#include <string>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/report/InputReport.h"
#include "apps/velagnss/report/ReportJson.h"
#include "apps/velagnss/report/ReportPage.h"
#include "apps/velagnss/sinks/OutputRun.h"

namespace Host {
namespace {

// The text of the report: that of all inputs, which is complete when the last of them has ended.
class C_ReportText : public C_TextMaker {
 public:
  explicit C_ReportText(bool isJson) : m_isJson(isJson) { BeginReport(m_json); }

  std::string_view Text() const override {
    if (!m_isFinished) return {};
    return m_isJson ? m_json.Text() : std::string_view(m_page);
  }
  void ClearText() override {
    if (m_isFinished) m_json.ClearText();
    m_page.clear();
  }

  void Add(const C_InputReport& input) { input.Write(m_json); }

  // Further calls do nothing: several runs share one text.
  void Finish() {
    if (m_isFinished) return;
    m_isFinished = true;
    EndReport(m_json);
    if (!m_isJson) m_page = ReportPage(m_json.Text());
  }

 private:
  const bool m_isJson;
  C_JsonWriter m_json;
  std::string m_page;
  bool m_isFinished = false;
};

// Adds each input to the text when it has ended. It comes last among the consumers.
class C_ReportWriter : public C_RecordConsumer {
 public:
  C_ReportWriter(const C_InputReport& input, C_ReportText& text) : m_input(input), m_text(text) {}

  bool WantsMore() const override { return false; }
  void OnFrame(const S_FrameRecord&) override {}
  void EndInput(const S_InputEnd& end) override;
  void Finish() override { m_text.Finish(); }
  eExitCode Judge() const override { return m_haveAllFrames ? eExitOk : eExitData; }

 private:
  const C_InputReport& m_input;
  C_ReportText& m_text;
  bool m_haveAllFrames = true;  // the inputs so far
};

void C_ReportWriter::EndInput(const S_InputEnd& end) {
  m_text.Add(m_input);
  const bool hasFrames = end.reader.Totals().framesGood > 0;
  if (!hasFrames && end.reader.BytesFed() > 0) ReportNoFrame(m_input.Account().Input(), end.reader.BytesFed());
  m_haveAllFrames = m_haveAllFrames && hasFrames;
}

// A stream and its report. Live sources have one each, because they are read at the same time.
struct S_Reporting {
  S_Reporting(const S_RunOptions& options, C_ReportText& text) : writer(input, text), run(options, Consumers()) {}

  std::vector<C_RecordConsumer*> Consumers() {
    std::vector<C_RecordConsumer*> consumers = input.Consumers();
    consumers.push_back(&writer);
    return consumers;
  }

  C_InputReport input;
  C_ReportWriter writer;
  C_RecordRun run;
};

class C_ReportCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override {
    DeclareStreamArguments(app, m_stream);
    DeclareRange(app, m_stream);
    DeclareCores(app, m_stream);
    DeclareOutput(app, m_output);
    app.add_flag("--json", m_isJson, "the numbers of the page as one JSON object");
    m_stream.input.progress = S_InputOptions::eProgress::Always;
  }

  int Run() override;

 private:
  S_StreamArguments m_stream;
  std::string m_output = "-";
  bool m_isJson = false;
};

// A report is complete only at the end, even that of a live source: until then a file keeps its contents.
int C_ReportCommand::Run() {
  if (const eExitCode code = CheckOutput(m_output, m_stream.input); code != eExitOk) return code;
  C_OutputRun output;
  if (!output.Open(m_output)) return eExitOutput;
  if (!m_isJson && output.Output().IsATerminal())
    return ReportUsage("report", "a report is a page for a browser: write it to a file, -o report.html");
  C_ReportText text(m_isJson);
  std::deque<S_Reporting> reportings;
  const auto next = [&]() -> C_OutputRun::S_Maker {
    return {reportings.emplace_back(RunOptions(m_stream), text).run, text};
  };
  return output.Run(m_stream.input, next(), next, [&] {
    eExitCode worst = eExitOk;
    for (const S_Reporting& reporting : reportings) worst = std::max(worst, reporting.run.Judge());
    return worst;
  });
}

}  // namespace

const S_CommandEntry kReportCommand = {
    "report",
    "Show what the inputs contain as a page with charts.\n\n"
    "The page is one HTML file that needs no network. It contains positions.\n\n"
    "Examples:\n"
    "  velagnss report session.bin -o report.html              sky, signals, fixes, track, messages, damage\n"
    "  velagnss report before.bin after.bin -o both.html       compared side by side\n"
    "  velagnss report -o now.html tcp://10.0.0.5:5015         live: Ctrl-C writes the page\n"
    "  velagnss report --json session.bin                      the numbers of the page, for scripts\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_ReportCommand>(); }};

}  // namespace Host
