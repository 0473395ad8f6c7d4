// Copies of a few dozen bytes, the size of most frames and of many pieces. Internal.
#ifndef VELAGNSS_FRAMING_BYTE_COPY_H
#define VELAGNSS_FRAMING_BYTE_COPY_H

#include <cstddef>
#include <cstring>

namespace velagnss::framing {

// Longer copies are faster by the function of the C library.
inline constexpr std::size_t kShortCopy = 256;

// Two moves that may overlap: for copies of kBlock to twice as many bytes.
template <std::size_t kBlock>
inline void CopyEnds(unsigned char* to, const unsigned char* from, std::size_t count) {
  std::memcpy(to, from, kBlock);
  std::memcpy(to + count - kBlock, from + count - kBlock, kBlock);
}

// Copies 1 to kShortCopy bytes by blocks of a fixed size, which compilers turn into single moves; the last block
// overlaps the one before it. A call costs more than such a copy takes, and makes the caller save its registers.
inline void CopyShort(unsigned char* to, const unsigned char* from, std::size_t count) {
  constexpr std::size_t kBlock = 16;
  if (count >= kBlock) {
    for (std::size_t at = 0; at + kBlock < count; at += kBlock) std::memcpy(to + at, from + at, kBlock);
    std::memcpy(to + count - kBlock, from + count - kBlock, kBlock);
  } else if (count >= 8) {
    CopyEnds<8>(to, from, count);
  } else if (count >= 4) {
    CopyEnds<4>(to, from, count);
  } else if (count >= 2) {
    CopyEnds<2>(to, from, count);
  } else {
    *to = *from;
  }
}

inline void CopyBytes(unsigned char* to, const unsigned char* from, std::size_t count) {
  if (count - 1 < kShortCopy) {  // not 0: that wraps round
    CopyShort(to, from, count);
  } else {
    std::memcpy(to, from, count);
  }
}

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BYTE_COPY_H
