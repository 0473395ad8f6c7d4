#include "apps/velagnss/input/FileSource.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

// A shell passes on a pattern that matches no file as it is.
bool IsPattern(const std::string& name) { return name.find_first_of("*?[") != std::string::npos; }

const char* AdviceForOpen(const std::string& name, int error) {
  switch (error) {
    case ENOENT:
      return IsPattern(name) ? "no file matches this pattern" : "check the name";
    case EACCES:
      return "check the permissions; for a serial port, membership of the group that owns it";
    default:
      return "check that it can be read";
  }
}

std::string ShownName(const std::string& name) {
  if (name == "-") return "standard input";
  return name.empty() ? "''" : name;
}

void ReportOpenFailure(const std::string& name, int error) {
  ReportError(
      fmt::format("{}: cannot be opened: {}; {}", ShownName(name), std::strerror(error), AdviceForOpen(name, error)));
}

}  // namespace

bool CanBeOpened(const std::string& name) {
  if (name == "-" || ::access(name.c_str(), R_OK) == 0) return true;
  ReportOpenFailure(name, errno);
  return false;
}

bool C_FileSource::Open(const std::string& name) {
  const bool isStandardInput = name == "-";
  m_name = ShownName(name);
  m_size = m_consumed = 0;
  m_descriptor = C_FileDescriptor(isStandardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                                  : ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (m_descriptor.IsOpen()) return Examine();
  if (SignalReceived() == 0) ReportOpenFailure(name, errno);
  return false;
}

bool C_FileSource::Examine() {
  struct stat status {};
  if (::fstat(m_descriptor.Get(), &status) != 0) return Fail("cannot be examined", "check that it can be read");
  if (S_ISDIR(status.st_mode)) {
    ReportError(fmt::format("{}: is a directory; give the names of the files in it", m_name));
    return false;
  }
  m_isRegular = S_ISREG(status.st_mode);
  if (!m_isRegular) return true;
  // The rest of the file: standard input may be a file that another program has read in part.
  const off_t position = std::max<off_t>(::lseek(m_descriptor.Get(), 0, SEEK_CUR), 0);
  m_size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size - position, 0));
  ::posix_fadvise(m_descriptor.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  return true;
}

C_ByteSource::eRead C_FileSource::Read(std::span<unsigned char> buffer, S_Chunk& chunk) {
  const ssize_t got = ::read(m_descriptor.Get(), buffer.data(), buffer.size());
  if (got < 0 && (errno == EINTR || errno == EAGAIN)) return eRead::Nothing;
  if (got < 0) {
    Fail("reading failed", "what was read before is in the output");
    return eRead::Failed;
  }
  m_consumed += static_cast<std::uint64_t>(got);
  chunk = {buffer.first(static_cast<std::size_t>(got)), S_Chunk::t_Clock::now()};
  return got == 0 ? eRead::End : eRead::Bytes;
}

bool C_FileSource::Fail(const char* what, const char* advice) {
  ReportError(fmt::format("{}: {}: {}; {}", m_name, what, std::strerror(errno), advice));
  return false;
}

bool IsTheFile(const std::string& name, const std::string& input) {
  struct stat file {};
  struct stat other {};
  const int found = name == "-" ? ::fstat(STDOUT_FILENO, &file) : ::stat(name.c_str(), &file);
  if (found != 0 || !S_ISREG(file.st_mode)) return false;
  if ((input == "-" ? ::fstat(STDIN_FILENO, &other) : ::stat(input.c_str(), &other)) != 0) return false;
  return file.st_dev == other.st_dev && file.st_ino == other.st_ino;
}

}  // namespace Host
