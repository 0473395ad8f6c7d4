// Copies of a few dozen bytes, the size of most frames and of many pieces. Internal.
#ifndef VELAGNSS_FRAMING_BYTE_COPY_H
#define VELAGNSS_FRAMING_BYTE_COPY_H

#include <cstddef>
#include <cstring>

namespace velagnss::framing {

// By blocks of a fixed size, which compilers turn into single moves; the last block overlaps the one before it. The
// function of the C library costs more to call than a short copy takes.
inline void CopyBytes(unsigned char* to, const unsigned char* from, std::size_t count) {
  constexpr std::size_t kBlock = 16;
  constexpr std::size_t kLongest = 16 * kBlock;
  if (count == 1) {
    *to = *from;  // a stream that comes byte by byte
    return;
  }
  if (count < kBlock || count > kLongest) {
    std::memcpy(to, from, count);
    return;
  }
  for (std::size_t at = 0; at + kBlock < count; at += kBlock) std::memcpy(to + at, from + at, kBlock);
  std::memcpy(to + count - kBlock, from + count - kBlock, kBlock);
}

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BYTE_COPY_H
