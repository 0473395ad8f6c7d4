#include "apps/velagnss/commands/ExtractCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/pipeline/TextConsumer.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/sinks/SplitOutput.h"
#include "apps/velagnss/text/FrameBytes.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"
#include "stream/Names.h"

namespace Host {
namespace {

// The frames that the filter lets pass: all of them into its text, or into a file for each protocol.
class C_FrameExtractor : public C_TextConsumer {
 public:
  C_FrameExtractor(const C_MessageFilter& filter, C_SplitOutput* files) : m_filter(filter), m_files(files) {}

  bool NeedsRecords() const override { return m_filter.UsesTime(); }
  void BeginInput(const std::string&) override { m_filter.Restart(); }
  void OnFrame(const S_FrameRecord& record) override;
  bool WantsMore() const override { return m_files == nullptr || !m_files->HasFailed(); }
  void BeforeWait() override {
    if (m_files != nullptr) m_files->Flush();
  }
  eExitCode Judge() const override;

 private:
  C_MessageFilter m_filter;
  C_SplitOutput* m_files;
  std::uint64_t m_found = 0;
  std::uint64_t m_extracted = 0;
};

void C_FrameExtractor::OnFrame(const S_FrameRecord& record) {
  ++m_found;
  if (!m_filter.Passes(record.frame, record.clock.Seconds())) return;
  ++m_extracted;
  AppendFrame(record.frame, m_files == nullptr ? m_text : m_files->Part(velagnss::ProtocolName(record.frame.protocol)));
}

eExitCode C_FrameExtractor::Judge() const {
  ReportDetail(fmt::format("{} of {} extracted", m_extracted, Counted(m_found, "frame")));
  ReportIgnoredPeriod(m_filter);
  if (m_extracted > 0) return eExitOk;
  if (m_found > 0) ReportWarning(Counted(m_found, "frame") + " found, none matches --proto or --msg");
  return eExitData;
}

class C_ExtractCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  int ToOneFile(const C_MessageFilter& filter) const;
  int ToFiles(const C_MessageFilter& filter) const;
  eExitCode CheckNames(const C_SplitOutput& files) const;

  S_StreamArguments m_stream;
  S_FilterArguments m_filter;
  std::string m_output = "-";
  std::string m_splitBy;
};

void C_ExtractCommand::Declare(CLI::App& app) {
  DeclareStreamArguments(app, m_stream);
  DeclareOutput(app, m_output);
  DeclareFilter(app, m_filter);
  app.add_option("--split-by", m_splitBy, "a file for each protocol: with -o out, out.nmea and out.rtcm3")
      ->option_text("WHAT")
      ->check(OneOf({"protocol"}));
}

int C_ExtractCommand::Run() {
  if (HasTooManyLive("extract", m_stream.input)) return eExitUsage;
  C_MessageFilter filter;
  if (const std::string error = FillFilter(m_filter, m_stream, filter); !error.empty())
    return ReportUsage("extract", error);
  if (m_splitBy.empty()) return ToOneFile(filter);
  if (m_output == "-") return ReportUsage("extract", "--split-by needs -o: the names of the files begin with it");
  return ToFiles(filter);
}

int C_ExtractCommand::ToOneFile(const C_MessageFilter& filter) const {
  C_OutputRun output;
  if (const eExitCode code = output.Open(m_output, m_stream.input); code != eExitOk) return code;
  C_NoFrameWarning warning(InputsText(m_stream.input));
  C_FrameExtractor extractor(filter, nullptr);
  C_RecordRun run(RunOptions(m_stream), {&warning, &extractor});
  return output.Run(m_stream.input, run, extractor, [&] { return run.Judge(); });
}

int C_ExtractCommand::ToFiles(const C_MessageFilter& filter) const {
  C_SplitOutput files(m_output);
  if (const eExitCode code = CheckNames(files); code != eExitOk) return code;
  C_NoFrameWarning warning(InputsText(m_stream.input));
  C_FrameExtractor extractor(filter, &files);
  C_RecordRun run(RunOptions(m_stream), {&warning, &extractor});
  const eExitCode inputCode = RunInputs(m_stream.input, true, run);
  run.Finish();
  files.Close();
  if (files.HasFailed()) return eExitOutput;
  return inputCode != eExitOk ? inputCode : run.Judge();
}

// Which of the files there will be is not known yet.
eExitCode C_ExtractCommand::CheckNames(const C_SplitOutput& files) const {
  for (unsigned int i = 0; i < kNumProtocols; ++i) {
    const std::string name = files.NameOf(velagnss::ProtocolName(C_RawDataMessage::eProtocols{i}));
    if (const eExitCode code = CheckOutput(name, m_stream.input); code != eExitOk) return code;
  }
  return eExitOk;
}

}  // namespace

const S_CommandEntry kExtractCommand = {
    "extract",
    "Copy the selected frames, byte for byte, to a new stream.\n\n"
    "Examples:\n"
    "  velagnss extract --proto rtcm3 -o out.rtcm3 session.bin             its corrections\n"
    "  velagnss extract --split-by protocol -o out session.bin             out.nmea, out.rtcm3, ...\n"
    "  velagnss extract --from 12:00:00 --to 12:10:00 session.bin > ten    ten minutes of it\n"
    "  velagnss extract --proto nmea --talker GN session.bin | less        some of its sentences\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_ExtractCommand>(); }};

}  // namespace Host
