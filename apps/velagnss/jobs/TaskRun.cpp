#include "apps/velagnss/jobs/TaskRun.h"

#include <unistd.h>

#include <utility>

#include "apps/velagnss/input/HttpSource.h"
#include "apps/velagnss/input/InputIdentity.h"
#include "apps/velagnss/input/Inputs.h"
#include "apps/velagnss/jobs/TaskOutput.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

using eKind = S_TaskOutcome::eKind;

// Keeps the messages of a task, whose last error is the reason for its failure. A terminal gets them at the end.
class C_MessageKeeper {
 public:
  C_MessageKeeper() {
    SetMessageTaker([this](eMessage kind, const std::string& text) { m_messages.emplace_back(kind, text); });
  }
  ~C_MessageKeeper() {
    SetMessageTaker({});
    if (::isatty(STDERR_FILENO) == 0) return;
    for (const auto& [kind, text] : m_messages) ReportMessage(kind, text);
  }
  C_MessageKeeper(const C_MessageKeeper&) = delete;
  C_MessageKeeper& operator=(const C_MessageKeeper&) = delete;

  std::string LastError() const {
    std::string error;
    for (const auto& [kind, text] : m_messages)
      if (kind == eMessage::Error) error = text;
    return error;
  }

 private:
  std::vector<std::pair<eMessage, std::string>> m_messages;
};

// Goes on only with the contents that were submitted.
class C_TaskJob : public C_RelayJob {
 public:
  C_TaskJob(const S_RelayOptions& options, C_Destinations& destinations, const std::string& identity)
      : C_RelayJob(options, destinations), m_wanted(identity) {}

  void OnSource(const C_ByteSource& source) override {
    const std::string identity = source.Identity();
    m_isUnchecked = !IsOfContents(identity);
    m_isOther = !m_isUnchecked && identity != m_wanted;
    SetIdentity(m_wanted);
  }
  bool WantsMore() const override { return !m_isOther && C_RelayJob::WantsMore(); }

  bool IsOther() const { return m_isOther; }
  bool IsUnchecked() const { return m_isUnchecked; }

 private:
  const std::string m_wanted;
  bool m_isOther = false;
  bool m_isUnchecked = false;
};

// What has an end was that long when it was submitted. A run over less may have ended because it wanted no more.
bool IsCutShort(const S_Task& task, const C_TaskJob& job) {
  return task.range.end != S_ByteRange().end && job.Run().BytesRead() < task.range.end && job.WantsMore();
}

// A file that cannot be opened is not there; a web server that does not answer may be back later.
S_TaskOutcome Judge(const S_Task& task, const C_TaskJob& job, eExitCode input, const C_MessageKeeper& messages) {
  S_TaskOutcome outcome{eKind::Done, "", job.Run().BytesRead(), job.Run().FramesSelected()};
  if (job.IsOther() || (input == eExitOk && IsCutShort(task, job)))
    return {eKind::Hopeless, "its contents are not those that were submitted", 0, 0};
  if (input == eExitOk && !job.IsUnchecked()) return outcome;
  outcome.error =
      input == eExitOk ? "its contents could not be compared with those that were submitted" : messages.LastError();
  outcome.kind = outcome.bytes == 0 && !IsHttp(task.input) ? eKind::Hopeless : eKind::Failed;
  return outcome;
}

}  // namespace

S_TaskOutcome RunTask(const S_Task& task, const S_TaskRunOptions& options) {
  const C_MessageKeeper messages;
  S_RelayOptions relay;
  if (std::string error = options.readOptions(task.options, relay); !error.empty())
    return {eKind::Hopeless, "its options are not understood: " + error, 0, 0};
  if (!task.input.starts_with('/') && !IsHttp(task.input))  // by another program; a live source would never end
    return {eKind::Hopeless, "its input is neither a full path nor the address of a file on a web server", 0, 0};
  relay.run.range = task.range;
  relay.namesInput = task.namesInput;
  C_TaskOutput output(options.to, task, options.worker);
  C_Destinations destinations;
  S_RelaySource source;
  source.isSelected = true;  // a task is a part of a stream
  source.isInOrder = false;
  source.credentials = options.access.credentials;
  if (std::string error = destinations.Read(output.Destinations(), source); !error.empty()) {
    ReportError(error);
    return {eKind::OutputFailed, error, 0, 0};
  }
  if (!destinations.Open()) return {eKind::OutputFailed, messages.LastError(), 0, 0};
  S_InputOptions input;
  input.names = {task.input};
  input.live = options.access;
  C_TaskJob job(relay, destinations, task.identity);
  const eExitCode code = RunInputs(input, false, job);
  job.Finish();
  destinations.Finish();
  if (SignalReceived() != 0) return {eKind::Interrupted, "", 0, 0};
  const bool isDelivered = destinations.Judge() == eExitOk;
  S_TaskOutcome outcome = Judge(task, job, code, messages);
  if (outcome.kind != eKind::Done) return outcome;
  if (!isDelivered || !output.Commit()) return {eKind::OutputFailed, messages.LastError(), 0, 0};
  return outcome;
}

}  // namespace Host
