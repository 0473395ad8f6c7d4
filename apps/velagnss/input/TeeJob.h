// Two jobs for the bytes of an input.
#ifndef VELAGNSS_APPS_TEE_JOB_H
#define VELAGNSS_APPS_TEE_JOB_H

#include <optional>
#include <string>

#include "apps/velagnss/input/StreamJob.h"
#include "apps/velagnss/os/ExitCodes.h"

namespace Host {

// The first one sees the bytes before the second, which decides how many of them are read.
class C_TeeJob : public C_StreamJob {
 public:
  C_TeeJob(C_StreamJob& first, C_StreamJob& second) : m_first(first), m_second(second) {}

  void OnSource(const C_ByteSource& source) override {
    m_first.OnSource(source);
    m_second.OnSource(source);
  }
  void BeginInput(const std::string& name) override {
    m_first.BeginInput(name);
    m_second.BeginInput(name);
  }
  void Feed(const S_Chunk& chunk) override {
    m_first.Feed(chunk);
    m_second.Feed(chunk);
  }
  void EndInput() override {
    m_first.EndInput();
    m_second.EndInput();
  }
  bool WantsMore() const override { return m_second.WantsMore(); }
  bool WantsMoreInputs() const override { return m_second.WantsMoreInputs(); }
  void BeforeWait() override {
    m_first.BeforeWait();
    m_second.BeforeWait();
  }
  std::optional<std::chrono::milliseconds> LongestWait() const override { return m_first.LongestWait(); }
  int WakeDescriptor() const override { return m_second.WakeDescriptor(); }
  void OnQuiet() override {
    m_first.OnQuiet();
    m_second.OnQuiet();
  }
  void OnLink(const S_LinkChange& change) override {
    m_first.OnLink(change);
    m_second.OnLink(change);
  }

 private:
  C_StreamJob& m_first;
  C_StreamJob& m_second;
};

// Makes the first of two jobs, for each source that is read at the same time.
class C_TeeJobs {
 public:
  virtual ~C_TeeJobs() = default;
  virtual C_StreamJob& Next() = 0;

  // What they came to, after the last input; reported.
  virtual eExitCode Judge() = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TEE_JOB_H
