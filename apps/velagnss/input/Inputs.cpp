#include "apps/velagnss/input/Inputs.h"

#include <fmt/core.h>

#include <algorithm>
#include <deque>
#include <span>

#include "apps/velagnss/input/FileSource.h"
#include "apps/velagnss/input/HttpSource.h"
#include "apps/velagnss/input/SourceLoop.h"
#include "apps/velagnss/input/UnpackingSource.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

bool RunBytes(C_ByteSource& source, C_SourceLoop& loop, C_StreamJob& job) {
  C_UnpackingSource unpacked(source);
  C_UnpackingSource again(unpacked, C_UnpackingSource::eLayer::Inner);  // compressed twice
  C_UnpackingSource checked(again, C_UnpackingSource::eLayer::Last);
  const S_SourceAndJob stream = {checked, job};
  return loop.Run({&stream, 1});
}

bool RunFile(const std::string& name, const S_LiveOptions& options, C_SourceLoop& loop, C_StreamJob& job) {
  C_FileSource file;
  C_HttpSource remote;
  if (IsHttp(name)) return remote.Open(name, options) && RunBytes(remote, loop, job);
  return file.Open(name) && RunBytes(file, loop, job);
}

struct S_LiveRun {
  C_SourceLoop& loop;
  C_StreamJob& firstJob;
  const t_NextJob& nextJob;
};

bool RunLive(std::span<const std::string> names, const S_LiveOptions& options, const S_LiveRun& run) {
  std::deque<C_LiveSource> sources;
  std::vector<S_SourceAndJob> streams;
  for (const std::string& name : names) {
    C_StreamJob& job = streams.empty() ? run.firstJob : run.nextJob();
    sources.emplace_back(ShownLive(name), options,
                         [&name, &options](C_Await& await) { return MakeLink(name, options, await); });
    streams.push_back({sources.back(), job});
  }
  return run.loop.Run(streams);
}

}  // namespace

bool IsAnInput(const S_InputOptions& options, const std::string& output) {
  if (options.names.empty()) return IsTheFile(output, "-");
  return std::any_of(options.names.begin(), options.names.end(),
                     [&output](const std::string& name) { return IsTheFile(output, name); });
}

std::string InputsText(const S_InputOptions& options) {
  if (options.names.size() > 1) return fmt::format("{} inputs", options.names.size());
  if (options.names.empty() || options.names[0] == "-") return "standard input";
  return ShownLive(options.names[0]);
}

bool CanBeOpened(const S_InputOptions& options) {
  bool areAll = true;
  for (const std::string& name : options.names) areAll = (IsLive(name) || IsHttp(name) || CanBeOpened(name)) && areAll;
  return areAll;
}

std::size_t CountLive(const S_InputOptions& options) {
  return static_cast<std::size_t>(std::count_if(options.names.begin(), options.names.end(), &IsLive));
}

namespace {

// An input that cannot be read does not keep the others from being processed; the exit code shows it.
eExitCode ReadInputs(const S_InputOptions& options, bool showProgress, C_StreamJob& job, const t_NextJob& nextJob) {
  C_SourceLoop loop(options.readSize);
  loop.ShowProgress(showProgress);
  std::vector<std::string> names = options.names;
  if (names.empty()) names.emplace_back("-");
  const auto live = std::stable_partition(names.begin(), names.end(), [](const auto& name) { return !IsLive(name); });
  bool isAllGood = true;
  for (const std::string& name : std::span(names.begin(), live)) {
    if (SignalReceived() != 0 || !job.WantsMoreInputs()) break;
    isAllGood = RunFile(name, options.live, loop, job) && isAllGood;
  }
  if (live != names.end() && SignalReceived() == 0)
    isAllGood = RunLive({live, names.end()}, options.live, {loop, job, nextJob}) && isAllGood;
  return isAllGood ? eExitOk : eExitInput;
}

}  // namespace

eExitCode RunInputs(const S_InputOptions& options, bool showProgress, C_StreamJob& job, const t_NextJob& nextJob) {
  if (options.tee == nullptr) return ReadInputs(options, showProgress, job, nextJob);
  std::deque<C_TeeJob> jobs;
  const auto add = [&](C_StreamJob& other) -> C_StreamJob& { return jobs.emplace_back(options.tee->Next(), other); };
  const eExitCode code = ReadInputs(options, showProgress, add(job), [&]() -> C_StreamJob& { return add(nextJob()); });
  return std::max(code, options.tee->Judge());
}

}  // namespace Host
