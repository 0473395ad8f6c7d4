// A file for what does not fit in memory.
#ifndef VELAGNSS_APPS_TEMPORARY_FILE_H
#define VELAGNSS_APPS_TEMPORARY_FILE_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <string_view>

namespace Host {

// Thrown when data cannot be read back from a temporary file.
struct S_SpillLost {};

// The file is in TMPDIR, else in /var/tmp, and has no name: nothing is left of it, however the program ends. It is
// created by the first `Append`.
class C_TemporaryFile {
 public:
  // False when the file cannot be created or takes no more: nothing of `bytes` is kept, now and later.
  bool Append(std::string_view bytes);
  std::uint64_t Size() const { return m_size; }

  // Fills `size` bytes, all of which have been written before; throws S_SpillLost when that fails.
  void Read(std::uint64_t offset, char* bytes, std::size_t size);

  // Forgets the contents and any failure.
  void Close();

 private:
  bool Open();

  struct S_Close {
    void operator()(std::FILE* file) const { static_cast<void>(std::fclose(file)); }  // only read by then
  };
  std::unique_ptr<std::FILE, S_Close> m_file;
  std::uint64_t m_size = 0;
  bool m_hasFailed = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TEMPORARY_FILE_H
