// Reads sources, one or several at once, and feeds each to its job.
#ifndef VELAGNSS_APPS_SOURCE_LOOP_H
#define VELAGNSS_APPS_SOURCE_LOOP_H

#include <algorithm>
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
  // Jobs get at most `pieceSize` bytes at a time. A smaller piece than usual saves no memory and costs no system calls.
  explicit C_SourceLoop(std::size_t pieceSize)
      : m_pieceSize(pieceSize), m_buffer(std::max(pieceSize, kLeastReadSize)) {}

  // On a terminal, while a single source is read.
  void ShowProgress(bool isWanted) { m_showProgress = isWanted; }

  // Begins each job with its source and feeds it until the source ends, the job wants no more, or a signal comes. False
  // when a source failed; the others are read all the same.
  bool Run(std::span<const S_SourceAndJob> streams);

 private:
  static constexpr std::size_t kLeastReadSize = 1 << 16;

  std::size_t m_pieceSize;
  std::vector<unsigned char> m_buffer;
  bool m_showProgress = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_LOOP_H
