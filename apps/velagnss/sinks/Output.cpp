#include "apps/velagnss/sinks/Output.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"

namespace Host {
namespace {

constexpr int kStalledReaderMilliseconds = 500;

const char* Advice(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "free some space, or write elsewhere with -o";
    case EFBIG:
      return "the file is at its size limit (ulimit -f): write elsewhere with -o";
    default:
      return "write elsewhere with -o";
  }
}

// After a signal, a reader that has stopped reading must not hold the program up.
bool MayGoOnWriting(int descriptor) {
  if (SignalReceived() == 0) return true;
  pollfd waiting{descriptor, POLLOUT, 0};
  return ::poll(&waiting, 1, kStalledReaderMilliseconds) == 1;
}

}  // namespace

// Standard output is duplicated: closing the duplicate reports a late loss and leaves the descriptor to the C library.
bool C_Output::Open(const std::string& name) {
  const bool isStandardOutput = name == "-";
  m_name = isStandardOutput ? "standard output" : name;
  m_descriptor =
      C_FileDescriptor(isStandardOutput ? ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0)
                                        : ::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (m_descriptor.IsOpen()) {
    m_state = eState::Good;
    return true;
  }
  ReportError(fmt::format("{}: cannot be written: {}; {}", m_name, std::strerror(errno), Advice(errno)));
  return false;
}

bool C_Output::Write(std::string_view text) {
  while (!text.empty() && !HasFailed()) {
    if (!MayGoOnWriting(m_descriptor.Get())) return Fail(EPIPE);
    const ssize_t written = ::write(m_descriptor.Get(), text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return Fail(errno);
    m_written += static_cast<std::uint64_t>(written);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return !HasFailed();
}

void C_Output::Flush(C_TextMaker& text) {
  Write(text.Text());
  text.ClearText();
}

bool C_Output::Close() {
  if (!m_descriptor.Close() && !HasFailed()) return Fail(errno);
  return !HasFailed();
}

bool C_Output::IsATerminal() const { return m_descriptor.IsOpen() && ::isatty(m_descriptor.Get()) == 1; }

bool C_Output::Fail(int error) {
  // A reader that leaves, as `head` does, has what it wanted: no error.
  m_state = error == EPIPE ? eState::ReaderLeft : eState::Failed;
  if (m_state == eState::Failed)
    ReportError(fmt::format("{}: {} after {} bytes; {}", m_name, std::strerror(error), m_written, Advice(error)));
  return false;
}

}  // namespace Host
