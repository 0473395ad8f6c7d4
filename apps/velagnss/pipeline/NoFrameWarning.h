// The warning that the inputs held no frame.
#ifndef VELAGNSS_APPS_NO_FRAME_WARNING_H
#define VELAGNSS_APPS_NO_FRAME_WARNING_H

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "apps/velagnss/pipeline/RecordConsumer.h"

namespace Host {

// Warns that `bytes` of `where` held no frame, and names likely reasons.
void ReportNoFrame(std::string_view where, std::uint64_t bytes);

// Warns at the end when there were bytes, but no frame.
class C_NoFrameWarning : public C_RecordConsumer {
 public:
  // `where` names the inputs in the message.
  explicit C_NoFrameWarning(std::string where) : m_where(std::move(where)) {}

  bool NeedsRecords() const override { return false; }
  bool WantsMore() const override { return false; }
  void OnFrame(const S_FrameRecord&) override {}
  void EndInput(const S_InputEnd& end) override {
    m_bytes += end.reader.BytesFed();
    m_frames += end.reader.Totals().framesGood;
  }
  void Finish() override {
    if (m_frames == 0 && m_bytes > 0) ReportNoFrame(m_where, m_bytes);
  }

 private:
  std::string m_where;
  std::uint64_t m_bytes = 0;
  std::uint64_t m_frames = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_NO_FRAME_WARNING_H
