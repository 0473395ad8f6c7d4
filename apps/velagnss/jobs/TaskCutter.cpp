#include "apps/velagnss/jobs/TaskCutter.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "apps/velagnss/input/FileKinds.h"
#include "apps/velagnss/input/FileSource.h"
#include "apps/velagnss/input/HttpSource.h"
#include "apps/velagnss/input/InputIdentity.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

struct S_Beginning {
  std::vector<unsigned char> bytes;
  std::uint64_t size = 0;  // of the input; 0: unknown, or empty
};

// Nothing, reported, after a failure; and after a signal.
std::optional<S_Beginning> ReadBeginning(C_ByteSource& source) {
  S_Beginning beginning;
  beginning.bytes.resize(kIdentityHead);
  std::size_t size = 0;
  while (size < beginning.bytes.size()) {
    S_Chunk chunk;
    const C_ByteSource::eRead read = source.Read(std::span(beginning.bytes).subspan(size), chunk);
    if (read == C_ByteSource::eRead::Failed || SignalReceived() != 0) return std::nullopt;
    if (read == C_ByteSource::eRead::End) break;
    if (read == C_ByteSource::eRead::Nothing) continue;
    std::copy(chunk.bytes.begin(), chunk.bytes.end(), beginning.bytes.begin() + static_cast<std::ptrdiff_t>(size));
    size += chunk.bytes.size();
  }
  beginning.bytes.resize(size);
  beginning.size = source.Size();
  return beginning;
}

std::optional<S_Beginning> BeginningOf(const std::string& name, const S_LiveOptions& access) {
  if (IsHttp(name)) {
    C_HttpSource source;
    return source.Open(name, access) ? ReadBeginning(source) : std::nullopt;
  }
  C_FileSource source;
  std::error_code none;
  const bool isFifo = std::filesystem::is_fifo(name, none);  // opening it would wait for a writer
  if (!isFifo && !source.Open(name)) return std::nullopt;
  if (!isFifo && source.Descriptor() < 0) return ReadBeginning(source);
  ReportError(fmt::format("{}: is not a regular file; other machines could not read the same bytes", name));
  return std::nullopt;
}

// Zero when it is not to be cut.
std::uint64_t SplitOf(const std::string& name, const S_Beginning& beginning, std::uint64_t split) {
  if (split == 0 || beginning.size <= split) {
    if (split > 0 && beginning.size == 0 && !beginning.bytes.empty())
      ReportWarning(fmt::format("{}: is not cut, because the server does not say how long it is", name));
    return 0;
  }
  if (GuessKind(beginning.bytes).kind == nullptr) return split;
  ReportWarning(fmt::format("{}: is not cut, because it is compressed", name));
  return 0;
}

}  // namespace

std::optional<std::vector<S_Task>> CutInput(const std::string& name, const S_CutOptions& options) {
  const std::optional<S_Beginning> beginning = BeginningOf(name, options.access);
  if (!beginning) return std::nullopt;
  S_Task task = options.task;
  task.input = IsHttp(name) ? name : std::filesystem::absolute(name).lexically_normal().native();
  task.identity = IdentityOfHead(beginning->bytes);
  const std::uint64_t split = SplitOf(name, *beginning, options.split);
  if (split == 0) return std::vector{task};
  std::vector<S_Task> tasks;
  for (std::uint64_t begin = 0; begin < beginning->size; begin += split) {
    task.range = {begin, std::min(begin + split, beginning->size)};
    tasks.push_back(task);
  }
  return tasks;
}

}  // namespace Host
