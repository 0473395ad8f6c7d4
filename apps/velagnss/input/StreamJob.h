// What is done with the bytes of inputs.
#ifndef VELAGNSS_APPS_STREAM_JOB_H
#define VELAGNSS_APPS_STREAM_JOB_H

#include <string>

#include "apps/velagnss/input/ByteSource.h"

namespace Host {

// Each input is a stream of its own: what is cut off at the end of one is not completed by the next. The calls come in
// this order: for each input `BeginInput`, `Feed` any number of times, `EndInput`; after the last input `Finish`.
class C_StreamJob {
 public:
  virtual ~C_StreamJob() = default;

  // Comes first, for jobs that want to know more about the input than its name.
  virtual void OnSource(const C_ByteSource&) {}

  virtual void BeginInput(const std::string& name) = 0;
  virtual void Feed(const S_Chunk& chunk) = 0;
  virtual void EndInput() = 0;

  // False ends the input early: everything asked for has been done.
  virtual bool WantsMore() const { return true; }

  // The same for the inputs after the one that is fed.
  virtual bool WantsMoreInputs() const { return WantsMore(); }

  // The most bytes to feed at once where somebody looks at what has been made of them in between.
  virtual std::size_t FeedSize() const { return 1 << 13; }

  // The input may have to be waited for: what is ready should be shown now.
  virtual void BeforeWait() {}

  // Becomes readable when `BeforeWait` has something to do although no source has; -1 for never. All jobs that are fed
  // at the same time have the same.
  virtual int WakeDescriptor() const { return -1; }

  // `BeforeWait` is wanted at least this often. None: only when there is news.
  virtual std::optional<std::chrono::milliseconds> LongestWait() const { return std::nullopt; }

  // The source had no byte for its quiet time.
  virtual void OnQuiet() {}

  // A live source was connected, lost, refused. Bytes after a loss continue the stream, but not what was cut off by it.
  virtual void OnLink(const S_LinkChange&) {}

  // The end of everything: the last of the output is made here.
  virtual void Finish() {}
};

}  // namespace Host

#endif  // VELAGNSS_APPS_STREAM_JOB_H
