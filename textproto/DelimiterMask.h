// Where the fields of a sentence end, found for many characters at a time. Internal.
#ifndef VELAGNSS_TEXTPROTO_DELIMITER_MASK_H
#define VELAGNSS_TEXTPROTO_DELIMITER_MASK_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "textproto/CharSet.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace velagnss::textproto {

// The asterisk separates too: the checksum digits are a sentence's last field.
inline constexpr C_CharSet kSentenceDelimiters(",*");

namespace DelimiterMask {

// As many as a mask has bits; most sentences are one or two blocks.
inline constexpr std::size_t kBlock = 64;

// Which of the 64 characters from `block` on are delimiters: bit i for character i.
inline std::uint64_t OneByOne(const char* block) {
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kBlock; ++i) mask |= std::uint64_t{kSentenceDelimiters.Contains(block[i])} << i;
  return mask;
}

#ifdef __SSE2__
inline constexpr std::size_t kStep = sizeof(__m128i);

// Of 16 characters.
inline std::uint64_t OfStep(const char* step) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(step));
  const __m128i commas = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(','));
  const __m128i stars = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('*'));
  return static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_or_si128(commas, stars)));
}
#endif

// The same, by 16 characters at a time where the processor can.
inline std::uint64_t Of(const char* block) {
#ifdef __SSE2__
  return OfStep(block) | OfStep(block + kStep) << kStep | OfStep(block + 2 * kStep) << (2 * kStep) |
         OfStep(block + 3 * kStep) << (3 * kStep);
#else
  return OneByOne(block);
#endif
}

// Of the last `count` characters of a text, fewer than a block; the bits beyond are 0. Nothing outside the text is
// read.
inline std::uint64_t OfTail(std::string_view text, std::size_t count) {
  const char* const tail = text.data() + text.size() - count;
#ifdef __SSE2__
  if (text.size() >= kStep) {  // the last step is taken from the end of the text, and overlaps with the step before it
    std::uint64_t mask = 0;
    std::size_t at = 0;
    for (; at + kStep <= count; at += kStep) mask |= OfStep(tail + at) << at;
    const std::size_t rest = count - at;
    return rest == 0 ? mask : mask | OfStep(tail + count - kStep) >> (kStep - rest) << at;
  }
#endif
  // Texts of fewer than 16 characters: their memory may end right after them.
  char block[kBlock] = {};
  std::copy_n(tail, count, block);
  return Of(block);
}

}  // namespace DelimiterMask

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_DELIMITER_MASK_H
