// How many per second, over the last ten seconds.
#ifndef VELAGNSS_APPS_RATE_H
#define VELAGNSS_APPS_RATE_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "apps/velagnss/monitor/SourceView.h"

namespace Host {

// Counts by whole seconds of any scale. A time that is up to ten seconds late counts in the last second; an earlier one
// begins anew.
class C_Rate {
 public:
  static constexpr std::size_t kSeconds = 10;

  // Nothing happens without a time (NaN).
  void Add(double now, std::uint64_t count = 1) {
    if (!std::isfinite(now)) return;
    MoveTo(std::floor(now));
    m_counts[SlotOf(m_second)] += count;
  }

  // Over the whole seconds before this one, ten or those since the first count; NaN when there is none.
  double PerSecond(double now) const {
    C_Rate moved = *this;
    if (!std::isfinite(now) || !std::isfinite(m_second)) return kNoAge;
    moved.MoveTo(std::floor(now));
    const double seconds = std::min(moved.m_second - moved.m_first, double{kSeconds});
    const std::uint64_t all = std::accumulate(moved.m_counts.begin(), moved.m_counts.end(), std::uint64_t{0});
    return seconds < 1 ? kNoAge : static_cast<double>(all - moved.m_counts[SlotOf(moved.m_second)]) / seconds;
  }

 private:
  static constexpr std::size_t kSlots = kSeconds + 1;  // the second that has begun is not counted yet

  static std::size_t SlotOf(double second) {
    const double slot = std::fmod(second, double{kSlots});
    return static_cast<std::size_t>(slot < 0 ? slot + double{kSlots} : slot);
  }
  void MoveTo(double second) {
    if (!(second >= m_second - double{kSeconds})) {  // also the first time
      m_counts = {};
      m_first = m_second = second;
    }
    for (std::size_t step = 0; step < kSlots && m_second + static_cast<double>(step) < second; ++step)
      m_counts[SlotOf(second - static_cast<double>(step))] = 0;
    m_second = std::max(m_second, second);
  }

  double m_first = kNoAge;   // second in which the first count came
  double m_second = kNoAge;  // the last one
  std::array<std::uint64_t, kSlots> m_counts{};
};

}  // namespace Host

#endif  // VELAGNSS_APPS_RATE_H
