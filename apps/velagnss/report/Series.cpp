#include "apps/velagnss/report/Series.h"

#include <utility>

#include "apps/velagnss/text/Numbers.h"

namespace Host {

void C_Series::Add(const S_TimeBin& bin, double value) {
  if (!IsKnown(value) || bin.generation < m_generation) return;
  Follow(bin);
  RangeOf(bin.number >> (m_level - bin.level)).Add(value);
}

// Takes over the width of the bin, unless it is an older one. After several doublings at once each bin goes where all
// of them together take it.
void C_Series::Follow(const S_TimeBin& bin) {
  if (m_generation != bin.generation) {
    m_ranges.clear();
    m_generation = bin.generation;
    m_level = bin.level;
  }
  if (m_level >= bin.level) return;
  const unsigned int doublings = bin.level - m_level;
  const std::int64_t first = m_first >> doublings;
  std::size_t last = 0;
  for (std::size_t i = 0; i < m_ranges.size(); ++i) {
    const auto to = static_cast<std::size_t>(((m_first + static_cast<std::int64_t>(i)) >> doublings) - first);
    if (to == i) continue;
    m_ranges[to].Merge(m_ranges[i]);
    m_ranges[i] = {};
    last = to;
  }
  if (!m_ranges.empty()) m_ranges.resize(last + 1);
  m_first = first;
  m_level = bin.level;
}

S_ValueRange& C_Series::RangeOf(std::int64_t number) {
  if (m_ranges.empty()) m_first = number;
  if (number < m_first) {
    m_ranges.insert(m_ranges.begin(), static_cast<std::size_t>(m_first - number), {});
    m_first = number;
  }
  const auto place = static_cast<std::size_t>(number - m_first);
  if (place >= m_ranges.size()) {
    if (place >= m_ranges.capacity()) m_ranges.reserve(std::min(2 * place + 1, C_TimeBins::kMaxBins));
    m_ranges.resize(place + 1);
  }
  return m_ranges[place];
}

C_Series::S_Bins C_Series::On(const C_TimeBins& axis) const {
  const S_TimeBin first = axis.First();
  if (m_ranges.empty() || m_generation != first.generation) return {};
  C_Series now = *this;
  now.Follow(first);
  return {static_cast<std::size_t>(now.m_first - first.number), std::move(now.m_ranges)};
}

}  // namespace Host
