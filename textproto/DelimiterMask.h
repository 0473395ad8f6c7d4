// Where the fields of a sentence end, found for many characters at a time. Internal.
#ifndef VELAGNSS_TEXTPROTO_DELIMITER_MASK_H
#define VELAGNSS_TEXTPROTO_DELIMITER_MASK_H

#include <cstddef>
#include <cstdint>

#include "textproto/CharSet.h"

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace velagnss::textproto {

// The asterisk separates too: the checksum digits are a sentence's last field.
inline constexpr C_CharSet kSentenceDelimiters(",*");

namespace DelimiterMask {

inline constexpr std::size_t kBlock = 64;

// Which of the 64 characters from `block` on are delimiters: bit i for character i.
inline std::uint64_t OneByOne(const char* block) {
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kBlock; ++i) mask |= std::uint64_t{kSentenceDelimiters.Contains(block[i])} << i;
  return mask;
}

// The same, by 16 characters at a time where the processor can.
inline std::uint64_t Of(const char* block) {
#ifdef __SSE2__
  std::uint64_t mask = 0;
  for (std::size_t i = 0; i < kBlock; i += sizeof(__m128i)) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + i));
    const __m128i commas = _mm_cmpeq_epi8(bytes, _mm_set1_epi8(','));
    const __m128i stars = _mm_cmpeq_epi8(bytes, _mm_set1_epi8('*'));
    mask |= static_cast<std::uint64_t>(_mm_movemask_epi8(_mm_or_si128(commas, stars))) << i;
  }
  return mask;
#else
  return OneByOne(block);
#endif
}

}  // namespace DelimiterMask

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_DELIMITER_MASK_H
