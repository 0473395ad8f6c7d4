// The way of every command through its inputs, one after the other.
#ifndef VELAGNSS_APPS_INPUT_LOOP_H
#define VELAGNSS_APPS_INPUT_LOOP_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/os/ExitCodes.h"

namespace Host {

// What a command does with the bytes of an input. Each input is a stream of its own: what is cut off at the end of one
// is not completed by the next.
class C_StreamJob {
 public:
  virtual ~C_StreamJob() = default;
  virtual void BeginInput(const std::string& name) = 0;
  virtual void Feed(std::span<const unsigned char> bytes) = 0;
  virtual void EndInput() = 0;

  // False ends the loop: everything asked for has been done, or the output is gone.
  virtual bool WantsMore() const { return true; }

  // The input may have to be waited for: what is ready should be shown now.
  virtual void BeforeWait() {}
};

struct S_InputOptions {
  std::vector<std::string> names;  // none: standard input

  // Large reads, not a mapped file: files, pipes and devices go one way, and a file that shrinks meanwhile is a short
  // read, not a SIGBUS. From 64 KiB to 1 MiB no difference in time could be measured.
  std::uint64_t readSize = 1 << 18;

  bool showProgress = false;  // on a terminal, for inputs that take a while
};

// True when `output` ("-" for standard output) is one of the inputs: opening it for writing would empty that.
bool IsAnInput(const S_InputOptions& options, const std::string& output);

// For messages: the input's name, or how many there are.
std::string InputsText(const S_InputOptions& options);

// Warns that nothing was recognised in so many bytes of `where`, and of what may be the reason.
void ReportNoFrame(std::string_view where, std::uint64_t bytes);

// eExitInput when an input failed; the others are read all the same. A signal ends the input it comes in, and the loop.
eExitCode RunInputs(const S_InputOptions& options, C_StreamJob& job);

}  // namespace Host

#endif  // VELAGNSS_APPS_INPUT_LOOP_H
