// Where the results of a task go: a file of its own in a directory, or a destination that knows repeated messages.
#ifndef VELAGNSS_APPS_TASK_OUTPUT_H
#define VELAGNSS_APPS_TASK_OUTPUT_H

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "apps/velagnss/jobs/Task.h"

namespace Host {

// A task may be done more than once, by several workers at the same time. Its files therefore appear with all of their
// contents, and replace those of another try.
class C_TaskOutput {
 public:
  // Returns an error text, empty when results can go to all of `destinations`, as --to names them: "json:DIRECTORY/",
  // or an address whose messages have an identity.
  static std::string Check(const std::vector<std::string>& destinations);

  // `destinations` have been checked. `worker` is a word that no other worker has.
  C_TaskOutput(const std::vector<std::string>& destinations, const S_Task& task, const std::string& worker);
  ~C_TaskOutput();  // without `Commit`: nothing is left of the files
  C_TaskOutput(const C_TaskOutput&) = delete;
  C_TaskOutput& operator=(const C_TaskOutput&) = delete;

  // The destinations of this task, for C_Destinations.
  const std::vector<std::string>& Destinations() const { return m_destinations; }

  // Puts the files, which are complete, in their places: they are on the disk then. False, reported, when that fails.
  bool Commit();

 private:
  struct S_File {
    std::filesystem::path hidden;
    std::filesystem::path file;
  };

  std::vector<std::string> m_destinations;
  std::vector<S_File> m_files;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TASK_OUTPUT_H
