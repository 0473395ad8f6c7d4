#include "apps/velagnss/sinks/live/PipeSink.h"

#include <fcntl.h>
#include <fmt/core.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/live/Connection.h"

namespace Host {
namespace {

// The path of standard output opens the pipe anew: other programs that share it must not find it non-blocking.
std::string PathOf(const std::string& name) {
  return name == "-" ? fmt::format("/proc/self/fd/{}", STDOUT_FILENO) : name;
}

class C_PipeSink : public C_NetSink {
 public:
  C_PipeSink(C_SinkThread& thread, const std::string& name, const S_QueueLimits& limits)
      : C_NetSink(thread, name == "-" ? "standard output" : name, limits), m_path(PathOf(name)) {}

  bool HasEnded() const override { return m_hasReaderLeft; }

 protected:
  bool Prepare() override;
  void Begin() override;
  void OnPiece(const t_Piece& piece) override {
    if (m_connection != nullptr) m_connection->Put(piece);
  }
  void OnTick(t_Clock::time_point now) override {
    if (m_connection != nullptr) m_connection->CheckProgress(now);
  }
  void BeginFinish() override;

 private:
  void OnEnd();

  const std::string m_path;
  C_FileDescriptor m_descriptor;
  std::shared_ptr<C_Connection> m_connection;
  std::atomic<bool> m_hasReaderLeft = false;
};

// A pipe with a name waits for its reader here, as every program does that writes to one.
bool C_PipeSink::Prepare() {
  m_descriptor = C_FileDescriptor(::open(m_path.c_str(), O_WRONLY | O_CLOEXEC));
  const bool isOpen = m_descriptor.IsOpen() && ::fcntl(m_descriptor.Get(), F_SETFL, O_NONBLOCK) == 0;
  if (!isOpen) ReportError(fmt::format("{}: cannot be written: {}", Name(), std::strerror(errno)));
  return isOpen;
}

void C_PipeSink::Begin() {
  m_connection = std::make_shared<C_Connection>(Context(), std::move(m_descriptor), Limits(), Counters(),
                                                std::make_shared<C_SendQueue>(Limits(), Counters()));
  m_connection->UsePipe();
  m_connection->Begin({}, [this](const std::string&) { OnEnd(); });
}

void C_PipeSink::BeginFinish() {
  if (m_connection == nullptr) return NoteFinished();
  m_connection->Finish();
}

void C_PipeSink::OnEnd() {
  m_connection.reset();
  m_hasReaderLeft = true;
  Thread().Wake();
  if (IsFinishing()) NoteFinished();
}

}  // namespace

bool IsPipe(const std::string& name) {
  struct stat status {};
  const int result = name == "-" ? ::fstat(STDOUT_FILENO, &status) : ::stat(name.c_str(), &status);
  return result == 0 && S_ISFIFO(status.st_mode);
}

std::unique_ptr<C_NetSink> MakePipeSink(C_SinkThread& thread, const std::string& name, const S_QueueLimits& limits) {
  return std::make_unique<C_PipeSink>(thread, name, limits);
}

}  // namespace Host
