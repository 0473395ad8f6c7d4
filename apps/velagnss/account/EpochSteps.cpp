#include "apps/velagnss/account/EpochSteps.h"

#include <algorithm>

#include "apps/velagnss/pipeline/Observations.h"

namespace Host {
namespace {

constexpr double kGapFactor = 1.5;  // of the interval
constexpr long kMaxLate = 10000;    // ms that a sentence may be late, as in tracks
constexpr long kMaxApart = kSameEpoch - 1;

}  // namespace

void C_EpochSteps::Note(std::uint64_t offset, double seconds) {
  if (std::isnan(seconds)) return;
  if (!m_first) m_first = m_last = seconds;
  const S_TimeGap step{offset, *m_last, seconds};
  const long length = step.Milliseconds();
  if (length >= -kMaxLate && length <= kMaxApart) return;
  m_last = seconds;
  if (length < 0) return;
  m_longest = std::max(m_longest, length);
  Count(length);
  Keep(step);
}

void C_EpochSteps::Count(long step) {
  if (m_counts.size() == m_limits.lengths && !m_counts.contains(step)) return;
  const std::uint64_t count = ++m_counts[step];
  const std::uint64_t most = m_interval == 0 ? 0 : m_counts[m_interval];
  if (count > most || (count == most && step < m_interval)) m_interval = step;
}

// What looks like a gap takes the place of what does not. When everything kept is a gap, only another interval makes
// room.
void C_EpochSteps::Keep(const S_TimeGap& step) {
  if (m_steps.size() == m_limits.kept && m_interval != m_fullAt && IsGap(step.Milliseconds())) {
    m_steps = Gaps();
    m_fullAt = m_steps.size() == m_limits.kept ? m_interval : 0;
  }
  if (m_steps.size() < m_limits.kept) m_steps.push_back(step);
}

bool C_EpochSteps::IsGap(long step) const {
  return static_cast<double>(step) > kGapFactor * static_cast<double>(m_interval);
}

std::uint64_t C_EpochSteps::GapCount() const {
  std::uint64_t count = 0;
  for (const auto& [step, times] : m_counts) count += IsGap(step) ? times : 0;
  return count;
}

std::vector<S_TimeGap> C_EpochSteps::Gaps() const {
  std::vector<S_TimeGap> gaps = m_steps;
  std::erase_if(gaps, [this](const S_TimeGap& step) { return !IsGap(step.Milliseconds()); });
  return gaps;
}

}  // namespace Host
