// A file that gets new contents all at once: they are written beside it, and take its place when they are complete.
#ifndef VELAGNSS_APPS_FILE_REPLACEMENT_H
#define VELAGNSS_APPS_FILE_REPLACEMENT_H

#include <filesystem>

#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

// Where the file system allows it, the new contents have no name until they are complete: whatever ends the program
// leaves nothing behind. Elsewhere they are called ".NAME.velagnss-XXXXXX" meanwhile.
class C_FileReplacement {
 public:
  // What `name` is, all symbolic links followed. Only a regular file can be replaced, and only where no file is yet can
  // one be created; everything else, such as a device or a pipe, is written to directly.
  static bool CanReplace(const std::filesystem::path& name);

  // A descriptor for the new contents of `name`, which is left alone. Not open when that is not possible (`errno`).
  C_FileDescriptor Begin(const std::filesystem::path& name);

  // Puts what was written to `contents` in the place of the file. False when that fails (`errno`): it is as before.
  bool Commit(const C_FileDescriptor& contents);

  C_FileReplacement() = default;
  C_FileReplacement(const C_FileReplacement&) = delete;
  C_FileReplacement& operator=(const C_FileReplacement&) = delete;
  ~C_FileReplacement();  // without `Commit`: the file is as before, and nothing is left beside it

 private:
  bool GiveName(const C_FileDescriptor& contents);

  std::filesystem::path m_target;
  std::filesystem::path m_temporary;  // empty as long as the contents have no name
  bool m_replaces = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_REPLACEMENT_H
