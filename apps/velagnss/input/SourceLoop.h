// Reads sources, one or several at once, and feeds each to its job.
#ifndef VELAGNSS_APPS_SOURCE_LOOP_H
#define VELAGNSS_APPS_SOURCE_LOOP_H

#include <span>
#include <vector>

#include "apps/velagnss/input/SourceWait.h"
#include "apps/velagnss/input/StreamJob.h"

namespace Host {

struct S_SourceAndJob {
  C_ByteSource& source;
  C_StreamJob& job;
};

class C_SourceLoop {
 public:
  explicit C_SourceLoop(std::size_t readSize) : m_buffer(readSize) {}

  // On a terminal, while a single source is read.
  void ShowProgress(bool isWanted) { m_showProgress = isWanted; }

  // After this long without a byte from any source, `OnQuiet` of each job is called. Never by default.
  void SetQuietTime(C_SourceWait::t_Limit limit) { m_quietTime = limit; }

  // Begins each job with its source and feeds it until the source ends, the job wants no more, or a signal comes. False
  // when a source failed; the others are read all the same.
  bool Run(std::span<const S_SourceAndJob> streams);

 private:
  std::vector<unsigned char> m_buffer;
  bool m_showProgress = false;
  C_SourceWait::t_Limit m_quietTime;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_LOOP_H
