#include "apps/velagnss/input/InputLoop.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/velagnss/input/FileSource.h"
#include "apps/velagnss/input/Progress.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

// False when reading failed.
bool FeedAll(C_Input& input, std::span<unsigned char> buffer, bool showProgress, C_StreamJob& job) {
  C_Progress progress(showProgress, input.Name(), input.Size());
  std::uint64_t total = 0;
  while (job.WantsMore()) {
    if (input.WouldWait()) job.BeforeWait();
    std::size_t count = 0;
    const C_Input::eRead read = input.Read(buffer, count);
    if (read == C_Input::eRead::Failed) return false;
    if (read != C_Input::eRead::Bytes) break;
    job.Feed(buffer.first(count));
    total += count;
    progress.Update(total);
  }
  if (total == 0 && SignalReceived() == 0) ReportWarning(fmt::format("{}: is empty", input.Name()));
  ReportDetail(fmt::format("{}: {} bytes read", input.Name(), total));
  return true;
}

bool RunInput(const std::string& name, std::span<unsigned char> buffer, bool showProgress, C_StreamJob& job) {
  C_Input input;
  if (!input.Open(name)) return false;
  job.BeginInput(input.Name());
  const bool isRead = FeedAll(input, buffer, showProgress, job);
  job.EndInput();
  return isRead;
}

}  // namespace

bool IsAnInput(const S_InputOptions& options, const std::string& output) {
  if (output == "-") return false;
  if (options.names.empty()) return IsTheFile(output, "-");
  return std::any_of(options.names.begin(), options.names.end(),
                     [&output](const std::string& name) { return IsTheFile(output, name); });
}

std::string InputsText(const S_InputOptions& options) {
  if (options.names.size() > 1) return fmt::format("{} inputs", options.names.size());
  return options.names.empty() || options.names[0] == "-" ? "standard input" : options.names[0];
}

void ReportNoFrame(std::string_view where, std::uint64_t bytes) {
  ReportWarning(
      fmt::format("{}: no frame in {} bytes: check that this is a receiver's output and, for a serial port, its speed",
                  where, bytes));
}

eExitCode RunInputs(const S_InputOptions& options, C_StreamJob& job) {
  std::vector<unsigned char> buffer(options.readSize);
  std::vector<std::string> names = options.names;
  if (names.empty()) names.emplace_back("-");
  eExitCode code = eExitOk;
  for (const std::string& name : names) {
    if (SignalReceived() != 0 || !job.WantsMore()) break;
    if (!RunInput(name, buffer, options.showProgress, job)) code = eExitInput;
  }
  return code;
}

}  // namespace Host
