// Scans over runs of bytes, eight and sixteen at a time. Internal.
#ifndef VELAGNSS_FRAMING_BYTE_SCAN_H
#define VELAGNSS_FRAMING_BYTE_SCAN_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace UTIL {

// The top bit of each byte of `word` that is below `bound` (1 to 128); a borrow can set more of them, but only behind
// the first such byte.
inline std::uint64_t BytesBelow(const unsigned char* bytes, unsigned int bound) {
  constexpr std::uint64_t kOnes = 0x0101010101010101;
  std::uint64_t word = 0;
  std::memcpy(&word, bytes, sizeof word);
  return (word - kOnes * bound) & ~word & (kOnes << 7);
}

// Position of the first byte below `bound` (1 to 128) in [from, to); `to` or more when there is none.
inline unsigned int FindBelow(const unsigned char* bytes, unsigned int from, unsigned int to, unsigned int bound) {
  if constexpr (std::endian::native == std::endian::little) {
    while (from + 16 <= to && (BytesBelow(bytes + from, bound) | BytesBelow(bytes + from + 8, bound)) == 0) from += 16;
    for (; from + 8 <= to; from += 8) {
      const std::uint64_t below = BytesBelow(bytes + from, bound);
      if (below != 0) return from + static_cast<unsigned int>(std::countr_zero(below)) / 8;
    }
  }
  while (from < to && bytes[from] >= bound) ++from;
  return from;
}

// Exclusive or of `count` bytes.
inline unsigned char XorOf(const unsigned char* bytes, unsigned int count) {
  std::uint64_t folded = 0;
  constexpr unsigned int kWord = sizeof folded;
  for (; count >= kWord; bytes += kWord, count -= kWord) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    folded ^= word;
  }
  for (; count > 0; ++bytes, --count) folded ^= *bytes;
  folded ^= folded >> 32;
  folded ^= folded >> 16;
  return static_cast<unsigned char>(folded ^ (folded >> 8));
}

}  // namespace UTIL

#endif  // VELAGNSS_FRAMING_BYTE_SCAN_H
