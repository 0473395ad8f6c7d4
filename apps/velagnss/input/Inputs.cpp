#include "apps/velagnss/input/Inputs.h"

#include <fmt/format.h>

#include <algorithm>

#include "apps/velagnss/input/FileSource.h"
#include "apps/velagnss/input/SourceLoop.h"
#include "apps/velagnss/input/UnpackingSource.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

bool RunInput(const std::string& name, C_SourceLoop& loop, C_StreamJob& job) {
  C_FileSource source;
  if (!source.Open(name)) return false;
  C_UnpackingSource unpacked(source);
  C_UnpackingSource again(unpacked, C_UnpackingSource::eLayer::Inner);  // compressed twice
  C_UnpackingSource checked(again, C_UnpackingSource::eLayer::Last);
  const S_SourceAndJob stream = {checked, job};
  return loop.Run({&stream, 1});
}

}  // namespace

bool IsAnInput(const S_InputOptions& options, const std::string& output) {
  if (options.names.empty()) return IsTheFile(output, "-");
  return std::any_of(options.names.begin(), options.names.end(),
                     [&output](const std::string& name) { return IsTheFile(output, name); });
}

std::string InputsText(const S_InputOptions& options) {
  if (options.names.size() > 1) return fmt::format("{} inputs", options.names.size());
  return options.names.empty() || options.names[0] == "-" ? "standard input" : options.names[0];
}

bool CanBeOpened(const S_InputOptions& options) {
  bool areAll = true;
  for (const std::string& name : options.names) areAll = CanBeOpened(name) && areAll;
  return areAll;
}

// An input that cannot be read does not keep the others from being processed; the exit code tells.
eExitCode RunInputs(const S_InputOptions& options, bool showProgress, C_StreamJob& job) {
  C_SourceLoop loop(options.readSize);
  loop.ShowProgress(showProgress);
  std::vector<std::string> names = options.names;
  if (names.empty()) names.emplace_back("-");
  eExitCode code = eExitOk;
  for (const std::string& name : names) {
    if (SignalReceived() != 0 || !job.WantsMore()) break;
    if (!RunInput(name, loop, job)) code = eExitInput;
  }
  return code;
}

}  // namespace Host
