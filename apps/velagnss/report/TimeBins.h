// The time axis of a report: bins of equal width that fit the stream, however long it gets.
#ifndef VELAGNSS_APPS_TIME_BINS_H
#define VELAGNSS_APPS_TIME_BINS_H

#include <cstddef>
#include <cstdint>
#include <optional>

namespace Host {

// A bin as it was when a value came. What is kept of it follows later changes of the axis by itself (see Series.h), so
// nothing has to be registered anywhere.
struct S_TimeBin {
  std::int64_t number;      // in units of its width, from the zero of velagnss::StreamClock
  unsigned int level;       // its width is 2^level s
  unsigned int generation;  // of the axis
};

// All times are on the scale of velagnss::StreamClock, so a stream without a date has an axis like any other.
//
// The bins begin at multiples of their width, 1 s at first. Whenever a time makes more than 720 bins necessary, before
// the first one as well as after the last one, the width doubles and pairs are merged. A stream whose time jumps back,
// such as a file of several sessions, is therefore in the order of its times, and what happened at the same time shares
// a bin. NaN is never on the axis.
//
// One wrong date must not press a day of data into a single bin: the axis ends at bins of 65,536 s, 546 days in all. A
// time too far away for that has no bin and is a vote against the axis; each time that has one is a vote for it. When
// as many are against as were for it, the next far time begins a new axis, and the series drop what they had: a
// receiver that begins with the date of its manufacture costs its first seconds, and a stray date is left out.
class C_TimeBins {
 public:
  static constexpr std::size_t kMaxBins = 720;
  static constexpr unsigned int kMaxLevel = 16;

  // The bin of a time, for which the axis grows; nothing for a time that cannot be on it.
  std::optional<S_TimeBin> Note(double seconds);

  // The same without growing: nothing for a time that is not on the axis as it is.
  std::optional<S_TimeBin> Find(double seconds) const;

  // The place of a time on the axis as it is now, from 0 to `Count() - 1`; nothing for a time that is not on it.
  std::optional<std::size_t> IndexOf(double seconds) const;

  bool IsEmpty() const { return m_generation == 0; }
  std::size_t Count() const { return IsEmpty() ? 0 : static_cast<std::size_t>(m_last - m_first) + 1; }
  double Start() const { return static_cast<double>(m_first) * Step(); }  // s, of the first bin
  double Step() const { return static_cast<double>(std::uint64_t{1} << m_level); }

  // The first bin as it is now.
  S_TimeBin First() const { return {m_first, m_level, m_generation}; }

 private:
  bool Reaches(std::int64_t second);

  std::int64_t m_first = 0;  // numbers of bins
  std::int64_t m_last = 0;
  unsigned int m_level = 0;
  unsigned int m_generation = 0;  // 0: no time has come
  std::uint64_t m_votes = 0;      // for the axis, less those against it
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TIME_BINS_H
