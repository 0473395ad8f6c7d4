// Values over time, in the bins of a report.
#ifndef VELAGNSS_APPS_SERIES_H
#define VELAGNSS_APPS_SERIES_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <vector>

#include "apps/velagnss/report/TimeBins.h"

namespace Host {

// Of some values: no extreme is lost when two of these are merged.
struct S_ValueRange {
  void Add(double value) { Merge({value, value, value, 1}); }
  void Merge(const S_ValueRange& other) {
    min = std::min(min, other.min);
    max = std::max(max, other.max);
    sum += other.sum;
    count += other.count;
  }
  double Mean() const { return sum / static_cast<double>(count); }

  double min = std::numeric_limits<double>::infinity();
  double max = -std::numeric_limits<double>::infinity();
  double sum = 0;
  std::uint64_t count = 0;
};

// The range of the values in each bin, from the first bin with a value to the last. It costs 32 bytes for each of these
// bins, 23 kB at most.
//
// It catches up with the axis when the next value comes, or when it is read: a series without values costs nothing when
// the bins double.
class C_Series {
 public:
  // Markers of missing values, NaN and infinity are ignored. All bins come from one axis.
  void Add(const S_TimeBin& bin, double value);
  void Add(const std::optional<S_TimeBin>& bin, double value) {
    if (bin) Add(*bin, value);
  }

  // In the bins of the axis as they are now.
  struct S_Bins {
    std::size_t first = 0;             // place of the first one on the axis
    std::vector<S_ValueRange> ranges;  // empty: there are no values on the axis
  };
  S_Bins On(const C_TimeBins& axis) const;

 private:
  void Follow(const S_TimeBin& bin);
  S_ValueRange& RangeOf(std::int64_t number);

  std::int64_t m_first = 0;  // number of the first bin
  unsigned int m_level = 0;
  unsigned int m_generation = 0;
  std::vector<S_ValueRange> m_ranges;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIES_H
