// A task: a range of an input, and how it is to be decoded.
#ifndef VELAGNSS_APPS_TASK_H
#define VELAGNSS_APPS_TASK_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/pipeline/RecordRun.h"

namespace Host {

struct S_Task {
  std::string input;     // a file by its full path, or an address, without an account
  std::string identity;  // of its contents (InputIdentity.h)
  S_ByteRange range;
  bool namesInput = false;           // in lines of JSON
  unsigned int tries = 0;            // that may fail before it is given up
  std::vector<std::string> options;  // words of the command line

  // The same for the same work, however often it is submitted.
  std::string Key() const;
};

// An object of JSON, and back. Nothing for any other text.
std::string TaskText(const S_Task& task);
std::optional<S_Task> ReadTask(std::string_view text);

// "/data/rover.bin [0, 1000000)", for messages.
std::string ShownTask(const S_Task& task);

// A file name of bounded length that is different for each task. Those of an input sort by their ranges, and inputs by
// their paths.
std::string FileNameOf(const S_Task& task);

// What became of a task.
struct S_TaskResult {
  S_Task task;
  std::string error;          // empty: it is done
  std::string worker;         // "host:1234"
  std::string submission;     // that it answers: the same task may be submitted again
  std::uint64_t bytes = 0;    // that were read
  std::uint64_t frames = 0;   // that were selected
  double seconds = 0;         // that it took
  unsigned int tries = 0;     // that were needed
  std::int64_t finished = 0;  // ms since 1970, by the server's clock; not in the text
};

std::string ResultText(const S_TaskResult& result);
std::optional<S_TaskResult> ReadResult(std::string_view text);

}  // namespace Host

#endif  // VELAGNSS_APPS_TASK_H
