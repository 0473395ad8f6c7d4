#include "apps/velagnss/sinks/OutputRun.h"

#include <fmt/core.h>

#include <algorithm>
#include <deque>
#include <filesystem>

#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/net/Address.h"
#include "apps/velagnss/os/Diagnostics.h"

namespace Host {
namespace {

constexpr std::size_t kFlushSize = 1 << 16;  // bytes of text to write at once

// Between the inputs and a job: takes the job's text to the output.
class C_WritingJob : public C_StreamJob {
 public:
  C_WritingJob(C_StreamJob& job, C_TextMaker& text, C_Output& output) : m_job(job), m_text(text), m_output(output) {}

  void BeginInput(const std::string& name) override {
    m_hasBegun = true;
    m_job.BeginInput(name);
  }
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;
  bool WantsMore() const override { return m_job.WantsMore() && !m_output.HasFailed(); }
  bool WantsMoreInputs() const override { return m_job.WantsMoreInputs() && !m_output.HasFailed(); }
  void BeforeWait() override {
    m_job.BeforeWait();
    m_output.Flush(m_text);
  }
  void OnQuiet() override { m_job.OnQuiet(); }
  void OnLink(const S_LinkChange& change) override { m_job.OnLink(change); }
  void Finish() override {
    m_job.Finish();
    m_output.Flush(m_text);
  }

  bool HasBegun() const { return m_hasBegun; }
  bool HasBytes() const { return m_hasBytes; }

 private:
  C_StreamJob& m_job;
  C_TextMaker& m_text;
  C_Output& m_output;
  bool m_hasBegun = false;
  bool m_hasBytes = false;
};

// With --read-size 1073741824 the text must not grow as large as that.
void C_WritingJob::Feed(const S_Chunk& chunk) {
  std::span<const unsigned char> rest = chunk.bytes;
  m_hasBytes = m_hasBytes || !rest.empty();
  while (!rest.empty() && WantsMore()) {
    const std::size_t size = std::min(rest.size(), m_job.FeedSize());
    m_job.Feed({rest.first(size), chunk.arrival, chunk.isLive});
    if (m_text.Text().size() >= kFlushSize) m_output.Flush(m_text);
    rest = rest.subspan(size);
  }
}

// An output that has failed ends an input early: its last line is not one that somebody cut off.
void C_WritingJob::EndInput() {
  if (!m_output.HasFailed()) m_job.EndInput();
}

bool IsProgressWanted(S_InputOptions::eProgress progress, const C_Output& output) {
  if (progress == S_InputOptions::eProgress::AsideOfOutput) return !output.IsATerminal();
  return progress == S_InputOptions::eProgress::Always;
}

}  // namespace

eExitCode CheckOutput(const std::string& name, const S_InputOptions& input) {
  if (IsAnInput(input, name)) {
    ReportError(fmt::format("{}: is also an input; write to another file", name == "-" ? "standard output" : name));
    return eExitUsage;
  }
  // A regular file in its place would be read as the port later on.
  if (IsLive(name) && !IsAddress(name) && !std::filesystem::exists(name)) {
    ReportError(fmt::format("{}: there is no such device; 'velagnss ports' lists those of this machine", name));
    return eExitOutput;
  }
  return name != "-" && !CanBeOpened(input) ? eExitInput : eExitOk;
}

eExitCode C_OutputRun::Open(const std::string& name, const S_InputOptions& input) {
  if (const eExitCode code = CheckOutput(name, input); code != eExitOk) return code;
  const auto writing = CountLive(input) > 0 ? C_Output::eWriting::Direct : C_Output::eWriting::Replacement;
  return m_output.Open(name, writing) ? eExitOk : eExitOutput;
}

// There is no text before the first file begins.
eExitCode C_OutputRun::OpenFiles(const std::string& directory, bool areCompressed, const S_InputOptions& input) {
  m_directory = directory;
  m_areCompressed = areCompressed;
  if (!std::filesystem::is_directory(directory)) {
    ReportError(fmt::format("{}: is not a directory; create it, or give another one with -o", directory));
    return eExitOutput;
  }
  return Open("/dev/null", input);
}

void C_OutputRun::BeginFile(C_TextMaker& text, const std::string& name) {
  m_output.Flush(text);
  m_output.Close();
  if (m_output.HasFailed()) return;
  m_output = C_Output();
  const std::string path = (std::filesystem::path(m_directory) / (name + (m_areCompressed ? ".gz" : ""))).native();
  if (m_output.Open(path) && m_areCompressed) m_output.Compress();
}

// When the reader of the output has gone, nobody wants to know what the data came to.
int C_OutputRun::Run(const S_InputOptions& input, S_Maker first, const t_NextMaker& next, const t_Judge& judge) {
  std::deque<C_WritingJob> jobs;
  const auto add = [&](S_Maker maker) -> C_StreamJob& {
    maker.text.SetDrain([this](std::string_view text) { m_output.Write(text); });
    return jobs.emplace_back(maker.job, maker.text, m_output);
  };
  add(first);
  if (!m_directory.empty())
    first.text.SetNextFile([this, &first](const std::string& name) { BeginFile(first.text, name); });
  const eExitCode inputCode = RunInputs(input, IsProgressWanted(input.progress, m_output), jobs.front(),
                                        [&]() -> C_StreamJob& { return add(next()); });
  const auto isAny = [&jobs](bool (C_WritingJob::*has)() const) {
    return std::any_of(jobs.begin(), jobs.end(), [has](const C_WritingJob& job) { return (job.*has)(); });
  };
  const bool isNothingRead = inputCode != eExitOk && !isAny(&C_WritingJob::HasBytes);
  if (isNothingRead || (!isAny(&C_WritingJob::HasBegun) && m_output.IsReplacement())) return inputCode;
  for (C_WritingJob& job : jobs) job.Finish();
  m_output.Close();
  if (m_output.HasReaderLeft()) return inputCode;
  if (m_output.HasFailed()) return eExitOutput;
  return inputCode != eExitOk ? inputCode : judge();
}

int C_OutputRun::Write(C_TextMaker& text) {
  m_output.Flush(text);
  m_output.Close();
  return m_output.HasFailed() && !m_output.HasReaderLeft() ? eExitOutput : eExitOk;
}

}  // namespace Host
