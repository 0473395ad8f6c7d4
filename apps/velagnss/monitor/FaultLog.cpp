#include "apps/velagnss/monitor/FaultLog.h"

#include <utility>

#include "apps/velagnss/monitor/FrameName.h"
#include "apps/velagnss/pipeline/TagBlock.h"
#include "apps/velagnss/text/Numbers.h"
#include "records/ResultCodes.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr std::size_t kMaxFaults = 100;

}  // namespace

void C_FaultLog::OnWrongContents(const S_FrameRecord& record, const C_TimeText& when) {
  ++m_contentFaults;
  Add({record.frame.offset, record.frame.length, NameOf(record.frame),
       std::string(velagnss::ResultText(record.decoded.result.value_or(eResultOk))), when});
}

void C_FaultLog::OnRejection(const velagnss::RejectedStart& start, const C_TimeText& when) {
  if (!m_run) m_run = S_Run{start.offset, 0, 0, when};
  const bool isChecksum = start.reason == velagnss::RejectedStart::Reason::Checksum;
  ++(isChecksum ? m_run->checksums : m_run->others);
}

// TAG blocks belong to the sentence after them.
void C_FaultLog::OnSkipped(const velagnss::SkippedRange& range, const C_TimeText& when) {
  const std::optional<S_Run> run = std::exchange(m_run, std::nullopt);
  if (IsTagOnly(range)) return;
  m_bytesSkipped += range.length;
  const bool hasDamage = run && run->checksums > 0;
  Add({range.offset, range.length, "skipped", hasDamage ? WhyOf(*run) : std::string(velagnss::ReasonText(range.reason)),
       run ? run->when : when});
}

std::string C_FaultLog::WhyOf(const S_Run& run) {
  if (run.checksums > 0) return run.checksums == 1 ? "checksum error" : Counted(run.checksums, "checksum error");
  return Counted(run.others, "false start");
}

void C_FaultLog::Add(S_FaultView fault) {
  ++m_count;
  m_last.push_front(std::move(fault));
  if (m_last.size() > kMaxFaults) m_last.pop_back();
}

// Noise may go on for long: what is known of it counts already.
void C_FaultLog::Show(S_SourceView& view) const {
  if (m_run) view.faults.push_back({m_run->offset, 0, "skipping", WhyOf(*m_run), m_run->when});
  view.faults.insert(view.faults.end(), m_last.begin(), m_last.end());
  view.faultCount = m_count + (m_run ? 1 : 0);
  view.contentFaults = m_contentFaults;
  view.bytesSkipped = m_bytesSkipped;
}

}  // namespace Host
