// CRC-24Q of overlapping ranges of one stream, at a cost that does not depend on how many of them overlap. Internal.
#ifndef VELAGNSS_FRAMING_RUNNING_CRC24_H
#define VELAGNSS_FRAMING_RUNNING_CRC24_H

#include <array>
#include <cstdint>

namespace velagnss::framing {

// Keeps the running sum at each of the last positions of the stream. The sum of a range follows from the running sums
// at its ends: the checksum is linear, so the bytes before the range count as if zeros
// followed them.
//
// A stream that repeats an RTCM 3 start with the greatest length makes a receiver sum every byte 250 times over; here
// each byte is summed once. Slower than C_CRC24 for ranges that do not overlap.
class C_RunningCrc24 {
 public:
  static constexpr unsigned int kMaxCount = 1029;  // the longest RTCM 3 frame

  // Whether the running sum at this position is known.
  bool Knows(std::uint64_t position) const { return position >= m_begin && position < m_end; }

  // The sum of the `count` (at most kMaxCount) bytes at `position` of the stream. From call to call
  // `position` must not decrease, and bytes at the same position must be the same.
  unsigned int Sum(std::uint64_t position, const unsigned char* bytes, unsigned int count);

 private:
  static constexpr unsigned int kKept = 2048;
  static_assert(kKept > kMaxCount);

  unsigned int& At(std::uint64_t position) { return m_sums[position % kKept]; }

  std::uint64_t m_begin = 0;  // first position whose sum is kept
  std::uint64_t m_end = 0;    // last one
  std::array<unsigned int, kKept> m_sums = {};
};

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_RUNNING_CRC24_H
