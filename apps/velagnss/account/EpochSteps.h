// The steps from one epoch of a stream to the next, and the gaps among them.
#ifndef VELAGNSS_APPS_EPOCH_STEPS_H
#define VELAGNSS_APPS_EPOCH_STEPS_H

#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <vector>

namespace Host {

struct S_TimeGap {
  std::uint64_t offset;  // of the frame that ended it
  double from;           // s, on the scale of velagnss::StreamClock
  double to;             // s, likewise

  long Milliseconds() const { return std::lround((to - from) * 1000); }
};

// A message that is up to 10 s late is not a step. Nor is a difference of up to 4 ms: receivers send the systems of one
// epoch with times that differ by some milliseconds.
class C_EpochSteps {
 public:
  // Bounds of the memory: different lengths that are counted, and steps that are kept because they may be gaps.
  struct S_Limits {
    std::size_t lengths = 10000;
    std::size_t kept = 1000;
  };
  explicit C_EpochSteps(const S_Limits& limits) : m_limits(limits) {}
  C_EpochSteps() = default;

  void Note(std::uint64_t offset, double seconds);

  std::optional<double> First() const { return m_first; }
  std::optional<double> Last() const { return m_last; }

  // The step that occurs most often, in s; the shortest one of several; 0 with fewer than two epochs.
  double Interval() const { return static_cast<double>(m_interval) / 1000; }

  // The longest step, in s; 0 with fewer than two epochs.
  double Longest() const { return static_cast<double>(m_longest) / 1000; }

  // Steps of more than one and a half intervals: how many, and of them the first ones.
  std::uint64_t GapCount() const;
  std::vector<S_TimeGap> Gaps() const;

 private:
  void Count(long step);
  void Keep(const S_TimeGap& step);
  bool IsGap(long step) const;

  S_Limits m_limits;
  std::optional<double> m_first;
  std::optional<double> m_last;
  std::map<long, std::uint64_t> m_counts;  // by step in ms
  long m_longest = 0;                      // ms
  long m_interval = 0;                     // of them the most frequent, ms
  long m_fullAt = 0;                       // the interval with which all kept steps were gaps, ms
  std::vector<S_TimeGap> m_steps;          // that may be gaps: the interval is only known at the end
};

}  // namespace Host

#endif  // VELAGNSS_APPS_EPOCH_STEPS_H
