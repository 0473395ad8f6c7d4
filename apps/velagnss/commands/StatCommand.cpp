#include "apps/velagnss/commands/StatCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/account/AccountJson.h"
#include "apps/velagnss/account/AccountTable.h"
#include "apps/velagnss/account/PointReportTable.h"
#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/pipeline/TextConsumer.h"
#include "apps/velagnss/sinks/OutputRun.h"

namespace Host {
namespace {

// Shows the account of an input, and its positions, when it has ended, and the total after several. It comes last among
// the consumers.
class C_AccountWriter : public C_TextConsumer {
 public:
  // `points` may be null.
  C_AccountWriter(const C_StreamAccount& account, const C_PointReport* points, bool isJson, double maxBadPercent,
                  C_Output& output)
      : m_account(account), m_points(points), m_isJson(isJson), m_maxBadPercent(maxBadPercent), m_output(output) {}

  bool WantsMore() const override { return false; }
  void OnFrame(const S_FrameRecord&) override {}
  void EndInput(const S_InputEnd&) override;
  void Finish() override;
  eExitCode Judge() const override { return m_isAllGood ? eExitOk : eExitData; }

 private:
  void Show();
  void JudgeInput(const velagnss::FrameReader& reader);

  const C_StreamAccount& m_account;
  const C_PointReport* m_points;
  bool m_isJson;
  double m_maxBadPercent;
  C_Output& m_output;
  C_StreamAccount m_total;
  std::size_t m_inputs = 0;
  bool m_isAllGood = true;
};

// The account is on the screen before a message about it.
void C_AccountWriter::EndInput(const S_InputEnd& end) {
  Show();
  m_output.Flush(*this);
  JudgeInput(end.reader);
}

void C_AccountWriter::Show() {
  m_total.AddCounts(m_account);
  ++m_inputs;
  if (!m_isJson) {
    m_text += m_inputs == 1 ? "" : "\n";
    const bool isLong = Verbosity() == eVerbosity::Verbose;
    m_text += AccountTable(m_account, isLong);
    if (m_points != nullptr) m_text += PointTable(*m_points, isLong);
    return;
  }
  C_JsonWriter json;
  WriteAccount(json, m_account, m_points);
  json.EndLine();
  m_text += json.Text();
}

void C_AccountWriter::Finish() {
  if (m_inputs < 2) return;
  if (!m_isJson) return void(m_text += "\n" + TotalTable(m_total, m_inputs));
  C_JsonWriter json;
  WriteTotal(json, m_total, m_inputs);
  m_text += json.Text();
}

void C_AccountWriter::JudgeInput(const velagnss::FrameReader& reader) {
  const bool hasFrames = reader.Totals().framesGood > 0;
  if (!hasFrames && reader.BytesFed() > 0) ReportNoFrame(m_account.Input(), reader.BytesFed());
  const bool isTooBad = m_account.BadPercent() > m_maxBadPercent;
  if (isTooBad) {
    ReportError(fmt::format("{}: {:.2f} % of the frames are damaged, more than --max-bad {} %; -v shows where",
                            m_account.Input(), m_account.BadPercent(), m_maxBadPercent));
  }
  // One bad input among several decides the exit code.
  m_isAllGood = m_isAllGood && !isTooBad && hasFrames;
}

class C_StatCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override {
    DeclareStreamArguments(app, m_stream);
    DeclareRange(app, m_stream);
    DeclareCores(app, m_stream);
    DeclareOutput(app, m_output);
    app.add_flag("--json", m_isJson, "one JSON object per input instead of a table, and one for the total of several");
    app.add_flag("--positions", m_hasPositions,
                 "also positions computed from RTCM 3 observations and ephemerides, and their errors");
    app.add_option("--max-bad", m_maxBadPercent,
                   "exit with 1 if more than this percentage of an input's frames is damaged")
        ->option_text("PERCENT")
        ->check(NumberBetween(0.0, 100.0, "a number from 0 to 100"));
    m_stream.input.progress = S_InputOptions::eProgress::Always;
  }

  int Run() override {
    if (HasTooManyLive("stat", m_stream.input)) return eExitUsage;
    C_OutputRun output;
    if (const eExitCode code = output.Open(m_output, m_stream.input); code != eExitOk) return code;
    C_StreamAccount account;
    C_PointReport points;
    C_AccountWriter writer(account, m_hasPositions ? &points : nullptr, m_isJson, m_maxBadPercent, output.Output());
    C_RecordRun run = m_hasPositions ? C_RecordRun(RunOptions(m_stream), {&account, &points, &writer})
                                     : C_RecordRun(RunOptions(m_stream), {&account, &writer});
    return output.Run(m_stream.input, run, writer, [&] { return run.Judge(); });
  }

 private:
  S_StreamArguments m_stream;
  std::string m_output = "-";
  bool m_isJson = false;
  bool m_hasPositions = false;
  double m_maxBadPercent = 100;
};

}  // namespace

const S_CommandEntry kStatCommand = {
    "stat",
    "Report what the inputs contain, how much of it is damaged, and where.\n\n"
    "Examples:\n"
    "  velagnss stat session.bin                   counts, rates, gaps, stations, positions, damage\n"
    "  velagnss stat --positions base.rtcm3        is the base station where it says it is?\n"
    "  velagnss -v stat session.bin                also where each piece of damage is\n"
    "  velagnss stat --json --max-bad 1 *.bin      for scripts: exit code 1 when more than 1 % is damaged\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_StatCommand>(); }};

}  // namespace Host
