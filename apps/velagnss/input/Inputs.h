// The inputs that the arguments name: files one after the other, then all live sources at once.
#ifndef VELAGNSS_APPS_INPUTS_H
#define VELAGNSS_APPS_INPUTS_H

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "apps/velagnss/input/TeeJob.h"
#include "apps/velagnss/input/live/LiveSource.h"
#include "apps/velagnss/os/ExitCodes.h"

namespace Host {

struct S_InputOptions {
  std::vector<std::string> names;  // none: standard input

  // Large reads, not a mapped file: files, pipes and devices are read alike, and a file that shrinks meanwhile is a
  // short read, not a SIGBUS. All stages of a run on several cores are idle between two reads, so larger reads are
  // faster there. On one core no difference in time could be measured from 64 KiB to 1 MiB.
  std::uint64_t readSize = 1 << 20;

  // Of inputs that take a while, on a terminal.
  enum class eProgress {
    None,
    AsideOfOutput,  // unless the output goes to a terminal, too
    Always,
  };
  eProgress progress = eProgress::AsideOfOutput;

  S_LiveOptions live;

  std::shared_ptr<C_TeeJobs> tee;  // what else is done with the bytes; may be null
};

// How many of the inputs are live.
std::size_t CountLive(const S_InputOptions& options);

// True when `output` ("-" for standard output) is one of the inputs, which writing would empty or make endless.
bool IsAnInput(const S_InputOptions& options, const std::string& output);

// False, reported, when one of the inputs cannot be opened.
bool CanBeOpened(const S_InputOptions& options);

// For messages: the input's name, or how many there are.
std::string InputsText(const S_InputOptions& options);

// The job of each further live source, which is read at the same time as the others. None: only one can be read.
using t_NextJob = std::function<C_StreamJob&()>;

// Feeds files to `job` one after the other, and then the first live source; further ones each to a job of its own.
// eExitInput when an input failed; the others are read all the same. A signal ends the inputs it comes in and leaves
// out the rest. What the tee comes to is returned when it is worse.
eExitCode RunInputs(const S_InputOptions& options, bool showProgress, C_StreamJob& job, const t_NextJob& nextJob = {});

}  // namespace Host

#endif  // VELAGNSS_APPS_INPUTS_H
