// How long to wait before a link is tried again.
#ifndef VELAGNSS_APPS_RETRY_PAUSES_H
#define VELAGNSS_APPS_RETRY_PAUSES_H

#include <random>

#include "apps/velagnss/input/live/Link.h"

namespace Host {

// Every try of every live source waits for one of these: nothing else may decide to connect.
class C_RetryPauses {
 public:
  explicit C_RetryPauses(const S_RetryRules& rules, unsigned int seed = std::random_device{}())
      : m_rules(rules), m_random(seed) {}

  // The pause after `failure`. `goodFor`: how long bytes came before it. Without a pause, by the rules of its kind, it
  // does not count as a failure: a sender that has left is none.
  std::chrono::milliseconds Next(const S_LinkFailure& failure, std::chrono::milliseconds goodFor);

  // In a row, without a good time in between.
  unsigned int Failures() const { return m_failures; }

 private:
  const S_RetryRules m_rules;
  std::minstd_rand m_random;
  unsigned int m_failures = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RETRY_PAUSES_H
