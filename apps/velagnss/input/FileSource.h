// Where the bytes come from: a file, a device, a pipe or standard input.
#ifndef VELAGNSS_APPS_FILE_SOURCE_H
#define VELAGNSS_APPS_FILE_SOURCE_H

#include <cstdint>
#include <span>
#include <string>

#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

// Failures are reported to the user here, with what to do about them.
class C_Input {
 public:
  enum class eRead { Bytes, End, Interrupted, Failed };

  // "-" is standard input. False, reported, when it cannot be opened or is a directory.
  bool Open(const std::string& name);

  // Waits for bytes and reads up to `buffer.size()` of them; `count` tells how many. A signal ends the wait.
  eRead Read(std::span<unsigned char> buffer, std::size_t& count);

  // True when the next `Read` may have to wait for whoever writes to the other end.
  bool WouldWait() const;

  // Bytes in a regular file, from where it is read; 0 when that cannot be known.
  std::uint64_t Size() const { return m_size; }

  // The name for messages and records.
  const std::string& Name() const { return m_name; }

 private:
  bool Fail(const char* what, const char* advice);
  bool Prepare();
  bool WaitForBytes() const;

  C_FileDescriptor m_descriptor;
  std::string m_name;
  std::uint64_t m_size = 0;
  bool m_isRegular = false;
};

// True when `name` is the regular file that the input `input` ("-" for standard input) reads, by whatever path.
bool IsTheFile(const std::string& name, const std::string& input);

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_SOURCE_H
