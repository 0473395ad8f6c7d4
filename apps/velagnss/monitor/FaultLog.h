// What was wrong in a stream: how often, and the last of it.
#ifndef VELAGNSS_APPS_FAULT_LOG_H
#define VELAGNSS_APPS_FAULT_LOG_H

#include <cstdint>
#include <deque>
#include <optional>

#include "apps/velagnss/monitor/SourceView.h"
#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// A run of bytes that belong to no frame is one fault, however many false starts are in it: noise must not push
// everything else out of the list. So is a frame with wrong contents. Keeps the last 100.
class C_FaultLog {
 public:
  void OnWrongContents(const S_FrameRecord& record, const C_TimeText& when);
  void OnRejection(const velagnss::RejectedStart& start, const C_TimeText& when);
  void OnSkipped(const velagnss::SkippedRange& range, const C_TimeText& when);

  void Show(S_SourceView& view) const;

 private:
  // A run that has begun, as far as its false starts tell.
  struct S_Run {
    std::uint64_t offset;
    std::uint64_t checksums;  // frames with a wrong checksum
    std::uint64_t others;
    C_TimeText when;
  };
  void Add(S_FaultView fault);
  static std::string WhyOf(const S_Run& run);

  std::deque<S_FaultView> m_last;  // the newest first
  std::optional<S_Run> m_run;
  std::uint64_t m_count = 0;
  std::uint64_t m_contentFaults = 0;
  std::uint64_t m_bytesSkipped = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FAULT_LOG_H
