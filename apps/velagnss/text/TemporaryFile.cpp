#include "apps/velagnss/text/TemporaryFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

namespace Host {
namespace {

// A file without a name in `directory`; -1 when that is not possible.
int OpenUnnamed(std::string directory) {
  const int unnamed = ::open(directory.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600);
  if (unnamed >= 0) return unnamed;
  directory += "/velagnss-XXXXXX";
  const int named = ::mkostemp(directory.data(), O_CLOEXEC);
  if (named >= 0) ::unlink(directory.c_str());
  return named;
}

}  // namespace

// /var/tmp, because /tmp may itself be in memory.
bool C_TemporaryFile::Open() {
  if (m_file != nullptr) return true;
  const char* const directory = std::getenv("TMPDIR");
  int descriptor = OpenUnnamed(directory != nullptr && *directory != '\0' ? directory : "/var/tmp");
  if (descriptor < 0) descriptor = OpenUnnamed("/tmp");
  if (descriptor >= 0) m_file.reset(::fdopen(descriptor, "w+b"));
  return m_file != nullptr && std::setvbuf(m_file.get(), nullptr, _IONBF, 0) == 0;
}

// Of a write that fails half way nothing counts, and the next one would come after what it left.
bool C_TemporaryFile::Append(std::string_view bytes) {
  if (m_hasFailed) return false;
  m_hasFailed = !Open() || ::fseeko(m_file.get(), static_cast<off_t>(m_size), SEEK_SET) != 0 ||
                std::fwrite(bytes.data(), 1, bytes.size(), m_file.get()) != bytes.size();
  if (!m_hasFailed) m_size += bytes.size();
  return !m_hasFailed;
}

void C_TemporaryFile::Read(std::uint64_t offset, char* bytes, std::size_t size) {
  if (::fseeko(m_file.get(), static_cast<off_t>(offset), SEEK_SET) != 0 ||
      std::fread(bytes, 1, size, m_file.get()) != size)
    throw S_SpillLost();
}

void C_TemporaryFile::Close() {
  m_file.reset();
  m_size = 0;
  m_hasFailed = false;
}

}  // namespace Host
