#include "apps/velagnss/sinks/Output.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Utf8.h"

namespace Host {
namespace {

constexpr int kStalledReaderMilliseconds = 500;

const char* Advice(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "free some space, or name another file";
    case EFBIG:
      return "the file is at its size limit (ulimit -f): name another file";
    default:
      return "name another file";
  }
}

// After a signal, a reader that has stopped reading must not hold the program up.
bool MayGoOnWriting(int descriptor) {
  if (SignalReceived() == 0) return true;
  pollfd waiting{descriptor, POLLOUT, 0};
  return ::poll(&waiting, 1, kStalledReaderMilliseconds) == 1;
}

// Another program may have made a shared pipe or terminal non-blocking.
void WaitForReader(int descriptor) {
  pollfd waiting[] = {{descriptor, POLLOUT, 0}, {SignalDescriptor(), POLLIN, 0}};
  ::poll(waiting, SignalReceived() == 0 ? 2 : 1, SignalReceived() == 0 ? -1 : kStalledReaderMilliseconds);
}

bool IsPipe(int descriptor) {
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && S_ISFIFO(status.st_mode);
}

// On several cores any thread may write, but a signal wakes only the main thread: none may wait in a write for a reader
// that has stopped reading. The pipe is opened anew, because others may share the descriptor and expect it to block.
C_FileDescriptor StandardOutput() {
  const std::string path = fmt::format("/proc/self/fd/{}", STDOUT_FILENO);
  C_FileDescriptor anew(IsPipe(STDOUT_FILENO) ? ::open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK) : -1);
  return anew.IsOpen() ? std::move(anew) : C_FileDescriptor(::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 0));
}

}  // namespace

// Standard output is duplicated: closing the duplicate reports a late loss and leaves the descriptor to the C library.
bool C_Output::Open(const std::string& name, eWriting writing) {
  const bool isStandardOutput = name == "-";
  m_name = isStandardOutput ? "standard output" : name;
  m_descriptor = isStandardOutput ? StandardOutput() : OpenFile(name, writing);
  if (m_descriptor.IsOpen()) {
    m_isTerminal = ::isatty(m_descriptor.Get()) == 1;
    m_state = eState::Good;
    return true;
  }
  ReportError(fmt::format("{}: cannot be written: {}; {}", m_name, std::strerror(errno), Advice(errno)));
  return false;
}

C_FileDescriptor C_Output::OpenFile(const std::string& name, eWriting writing) {
  if (writing == eWriting::Replacement && C_FileReplacement::CanReplace(name)) {
    m_replacement = std::make_unique<C_FileReplacement>();
    if (C_FileDescriptor contents = m_replacement->Begin(name); contents.IsOpen()) return contents;
    m_replacement.reset();
  }
  C_FileDescriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (file.IsOpen() && IsPipe(file.Get())) ::fcntl(file.Get(), F_SETFL, O_NONBLOCK);
  return file;
}

void C_Output::Compress() {
  m_gzip = std::make_unique<C_GzipStream>([this](std::string_view bytes) { return WriteBytes(bytes); });
}

bool C_Output::Write(std::string_view text) {
  if (m_gzip != nullptr) return m_gzip->Write(text) && !HasFailed();
  return m_isTerminal ? WriteBytes(PrintableText(text)) : WriteBytes(text);
}

bool C_Output::WriteBytes(std::string_view bytes) {
  while (!bytes.empty() && !HasFailed()) {
    if (!MayGoOnWriting(m_descriptor.Get())) return Fail(EPIPE);
    const ssize_t written = ::write(m_descriptor.Get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EAGAIN) {
      WaitForReader(m_descriptor.Get());
      continue;
    }
    if (written < 0) return Fail(errno);
    m_written += static_cast<std::uint64_t>(written);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return !HasFailed();
}

void C_Output::Flush(C_TextMaker& text) {
  Write(text.Text());
  text.ClearText();
}

bool C_Output::Close() {
  if (m_gzip != nullptr && !HasFailed() && !m_gzip->Finish() && !HasFailed()) return Fail(ENOMEM);
  if (m_replacement != nullptr && !HasFailed() && !m_replacement->Commit(m_descriptor)) Fail(errno);
  if (!m_descriptor.Close() && !HasFailed()) return Fail(errno);
  return !HasFailed();
}

bool C_Output::Fail(int error) {
  // A reader that leaves, as `head` does, has what it wanted: no error.
  m_state = error == EPIPE ? eState::ReaderLeft : eState::Failed;
  if (m_state == eState::Failed)
    ReportError(
        fmt::format("{}: {} after {}; {}", m_name, std::strerror(error), Counted(m_written, "byte"), Advice(error)));
  return false;
}

}  // namespace Host
