// Bytes from a file, a device, a pipe or standard input.
#ifndef VELAGNSS_APPS_FILE_SOURCE_H
#define VELAGNSS_APPS_FILE_SOURCE_H

#include <string>

#include "apps/velagnss/input/ByteSource.h"
#include "apps/velagnss/os/FileDescriptor.h"

namespace Host {

class C_FileSource : public C_ByteSource {
 public:
  // "-" is standard input. False, reported, when it cannot be opened or is a directory.
  bool Open(const std::string& name);

  const std::string& Name() const override { return m_name; }
  int Descriptor() const override { return m_isRegular ? -1 : m_descriptor.Get(); }
  eRead Read(std::span<unsigned char> buffer, S_Chunk& chunk) override;
  std::uint64_t Size() const override { return m_size; }
  std::uint64_t Consumed() const override { return m_consumed; }

 private:
  bool Fail(const char* what, const char* advice);
  bool Examine();

  C_FileDescriptor m_descriptor;
  std::string m_name;
  std::uint64_t m_size = 0;  // from where it is read
  std::uint64_t m_consumed = 0;
  bool m_isRegular = false;
};

// Whether `Open` can be expected to succeed; otherwise it has been reported. Opens nothing: that alone would have
// effects on a device.
bool CanBeOpened(const std::string& name);

// True when `name` ("-" for standard output) is the regular file that the input `input` ("-" for standard input) reads,
// by whatever path.
bool IsTheFile(const std::string& name, const std::string& input);

}  // namespace Host

#endif  // VELAGNSS_APPS_FILE_SOURCE_H
