#include "apps/velagnss/input/live/RetryPauses.h"

#include <algorithm>

namespace Host {

// Up to half as much again at random, so that many readers of a server that was away do not come back all at once.
std::chrono::milliseconds C_RetryPauses::Next(const S_LinkFailure& failure, std::chrono::milliseconds goodFor) {
  if (goodFor >= m_rules.goodAfter) m_failures = 0;
  const bool isRefused = failure.kind == S_LinkFailure::eKind::Refused;
  std::chrono::milliseconds pause = isRefused ? m_rules.firstRefused : m_rules.first;
  const std::chrono::milliseconds longest = isRefused ? m_rules.longestRefused : m_rules.longest;
  for (unsigned int i = 0; i < m_failures && pause < longest; ++i) pause *= 2;
  pause = std::min(pause, longest);
  if (failure.retryAfter) pause = std::max<std::chrono::milliseconds>(pause, *failure.retryAfter);
  m_failures = pause.count() == 0 ? 0 : m_failures + 1;
  using t_Count = std::chrono::milliseconds::rep;
  return pause + std::chrono::milliseconds(std::uniform_int_distribution<t_Count>(0, pause.count() / 2)(m_random));
}

}  // namespace Host
