#include "apps/velagnss/input/FileSource.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

const char* AdviceForOpen(int error) {
  switch (error) {
    case ENOENT:
      return "check the name; a wildcard that matches nothing is passed on as it is";
    case EACCES:
      return "check the permissions; for a serial port, membership of the group that owns it";
    default:
      return "check that it can be read";
  }
}

}  // namespace

bool C_Input::Open(const std::string& name) {
  const bool isStandardInput = name == "-";
  m_name = isStandardInput ? "standard input" : name.empty() ? "''" : name;
  m_size = 0;
  m_descriptor = C_FileDescriptor(isStandardInput ? ::fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0)
                                                  : ::open(name.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY));
  if (m_descriptor.IsOpen()) return Prepare();
  return SignalReceived() == 0 && Fail("cannot be opened", AdviceForOpen(errno));
}

bool C_Input::Prepare() {
  struct stat status {};
  if (::fstat(m_descriptor.Get(), &status) != 0) return Fail("cannot be examined", "check that it can be read");
  if (S_ISDIR(status.st_mode)) {
    ReportError(fmt::format("{}: is a directory; name the files in it", m_name));
    return false;
  }
  m_isRegular = S_ISREG(status.st_mode);
  if (!m_isRegular) return true;
  const off_t position = std::max<off_t>(::lseek(m_descriptor.Get(), 0, SEEK_CUR), 0);
  m_size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size - position, 0));
  ::posix_fadvise(m_descriptor.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  return true;
}

C_Input::eRead C_Input::Read(std::span<unsigned char> buffer, std::size_t& count) {
  count = 0;
  while (SignalReceived() == 0) {
    if (!m_isRegular && !WaitForBytes()) continue;
    const ssize_t got = ::read(m_descriptor.Get(), buffer.data(), buffer.size());
    if (got < 0 && (errno == EINTR || errno == EAGAIN)) continue;
    if (got < 0) {
      Fail("reading failed", "what was read before is in the output");
      return eRead::Failed;
    }
    count = static_cast<std::size_t>(got);
    return got == 0 ? eRead::End : eRead::Bytes;
  }
  return eRead::Interrupted;
}

// The signals' descriptor is polled as well: a signal that comes just before the wait still ends it.
bool C_Input::WaitForBytes() const {
  pollfd waiting[] = {{m_descriptor.Get(), POLLIN, 0}, {SignalDescriptor(), POLLIN, 0}};
  return ::poll(waiting, std::size(waiting), -1) > 0 && waiting[0].revents != 0;
}

bool C_Input::WouldWait() const {
  if (m_isRegular) return false;
  pollfd waiting{m_descriptor.Get(), POLLIN, 0};
  return ::poll(&waiting, 1, 0) == 0;
}

bool C_Input::Fail(const char* what, const char* advice) {
  ReportError(fmt::format("{}: {}: {}; {}", m_name, what, std::strerror(errno), advice));
  return false;
}

bool IsTheFile(const std::string& name, const std::string& input) {
  struct stat file {};
  struct stat other {};
  if (::stat(name.c_str(), &file) != 0 || !S_ISREG(file.st_mode)) return false;
  if ((input == "-" ? ::fstat(STDIN_FILENO, &other) : ::stat(input.c_str(), &other)) != 0) return false;
  return file.st_dev == other.st_dev && file.st_ino == other.st_ino;
}

}  // namespace Host
