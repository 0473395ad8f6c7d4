// An evenly chosen part of a stream of values, in bounded memory, and the quantiles of values.
#ifndef VELAGNSS_APPS_EVEN_SAMPLE_H
#define VELAGNSS_APPS_EVEN_SAMPLE_H

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace Host {

// All of up to 131,072 values; of these every second one is then dropped, and from then on only every second (fourth,
// ...) is kept: at least 65,536.
template <class Value>
class C_EvenSample {
 public:
  void Add(const Value& value) {
    if (m_count++ % m_stride != 0) return;
    if (m_kept.size() == kMaxKept) {
      for (std::size_t i = 0; i < kMaxKept / 2; ++i) m_kept[i] = m_kept[2 * i];
      m_kept.resize(kMaxKept / 2);
      m_stride *= 2;
    }
    m_kept.push_back(value);  // after an even number of kept ones: also a multiple of the doubled stride
  }
  const std::vector<Value>& Kept() const { return m_kept; }

 private:
  static constexpr std::size_t kMaxKept = std::size_t{1} << 17;

  std::vector<Value> m_kept;  // every `m_stride`th value, from the first
  std::uint64_t m_count = 0;
  std::uint64_t m_stride = 1;
};

// The smallest value that `share` of the values do not exceed. There must be one.
inline double Quantile(std::vector<double>& values, double share) {
  const auto rank = static_cast<std::size_t>(std::ceil(share * static_cast<double>(values.size())));
  const auto place = values.begin() + static_cast<std::ptrdiff_t>(std::max<std::size_t>(rank, 1) - 1);
  std::nth_element(values.begin(), place, values.end());
  return *place;
}

}  // namespace Host

#endif  // VELAGNSS_APPS_EVEN_SAMPLE_H
