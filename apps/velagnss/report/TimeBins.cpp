#include "apps/velagnss/report/TimeBins.h"

#include <algorithm>
#include <cmath>

namespace Host {
namespace {

// Beyond any stream; velagnss::StreamClock ends at a million days, too.
constexpr double kMaxSeconds = 1e6 * 86400;

bool IsTime(double seconds) { return std::abs(seconds) <= kMaxSeconds; }  // NaN is none

std::int64_t WholeSecond(double seconds) { return static_cast<std::int64_t>(std::floor(seconds)); }

}  // namespace

std::optional<S_TimeBin> C_TimeBins::Note(double seconds) {
  if (!IsTime(seconds)) return std::nullopt;
  const std::int64_t second = WholeSecond(seconds);
  if (!IsEmpty() && Reaches(second)) {
    ++m_votes;
  } else if (m_votes > 0) {
    --m_votes;
    return std::nullopt;
  } else {
    m_first = m_last = second;
    m_level = 0;
    m_votes = 1;
    ++m_generation;
  }
  return S_TimeBin{second >> m_level, m_level, m_generation};
}

// Whether the axis, widened as necessary, has the time. Shifting a negative number rounds it down, as it must.
bool C_TimeBins::Reaches(std::int64_t second) {
  constexpr auto kMost = static_cast<std::int64_t>(kMaxBins);
  const std::int64_t first = std::min(m_first, second >> m_level);
  const std::int64_t last = std::max(m_last, second >> m_level);
  unsigned int doublings = 0;
  while ((last >> doublings) - (first >> doublings) >= kMost) ++doublings;
  if (m_level + doublings > kMaxLevel) return false;
  m_first = first >> doublings;
  m_last = last >> doublings;
  m_level += doublings;
  return true;
}

std::optional<S_TimeBin> C_TimeBins::Find(double seconds) const {
  if (IsEmpty() || !IsTime(seconds)) return std::nullopt;
  const std::int64_t number = WholeSecond(seconds) >> m_level;
  if (number < m_first || number > m_last) return std::nullopt;
  return S_TimeBin{number, m_level, m_generation};
}

std::optional<std::size_t> C_TimeBins::IndexOf(double seconds) const {
  const std::optional<S_TimeBin> bin = Find(seconds);
  if (!bin) return std::nullopt;
  return static_cast<std::size_t>(bin->number - m_first);
}

}  // namespace Host
