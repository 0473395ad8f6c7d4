// Scans over runs of bytes, sixteen at a time where the processor can. Internal.
#ifndef VELAGNSS_FRAMING_BYTE_SCAN_H
#define VELAGNSS_FRAMING_BYTE_SCAN_H

#include <bit>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

#include "framing/SevenOfEight.h"

namespace velagnss::framing {

// What a scan looks for.
enum class eMark : unsigned char {
  Control,  // a byte below 32
  LineEnd,  // CR or LF
  CrLf,     // the LF of a CR LF; the byte before the scanned ones is read
  Plain,    // a byte below 128: not of a 7-of-8 packed stream
};
// Of the enumerators above: callers keep one position per mark.
inline constexpr unsigned int kNumMarks = 4;

// As numbers: the bytes of a stream are ASCII whatever the execution character set is.
inline constexpr unsigned char kCr = 13;
inline constexpr unsigned char kLf = 10;
inline constexpr unsigned char kFirstPrintable = 32;

// The definition of each mark, one byte at a time: for the last bytes of a run, and for processors without SSE2.
template <eMark kMark>
bool IsMark(const unsigned char* byte) {
  switch (kMark) {
    case eMark::Control:
      return *byte < kFirstPrintable;
    case eMark::LineEnd:
      return *byte == kCr || *byte == kLf;
    case eMark::CrLf:
      return *byte == kLf && byte[-1] == kCr;
    case eMark::Plain:
      return *byte < kPackedBit;
  }
}

#ifdef __SSE2__
// Which of 16 bytes are marks: bit i for byte i.
template <eMark kMark>
unsigned int MarksOf16(const unsigned char* bytes) {
  // Unaligned loads: a frame begins anywhere in the queue.
  const auto load = [](const unsigned char* from) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from)); };
  const auto equals = [](__m128i block, unsigned char byte) {
    return _mm_cmpeq_epi8(block, _mm_set1_epi8(static_cast<char>(byte)));
  };
  const auto bits = [](__m128i block) { return static_cast<unsigned int>(_mm_movemask_epi8(block)); };
  const __m128i block = load(bytes);
  switch (kMark) {
    case eMark::Control:  // a saturated subtraction leaves nothing of them
      return bits(equals(_mm_subs_epu8(block, _mm_set1_epi8(kFirstPrintable - 1)), 0));
    case eMark::LineEnd:
      return bits(_mm_or_si128(equals(block, kCr), equals(block, kLf)));
    // The same bytes one place earlier show which LF follows a CR.
    case eMark::CrLf:
      return bits(_mm_and_si128(equals(load(bytes - 1), kCr), equals(block, kLf)));
    case eMark::Plain:
      // The sign bits are what is asked for, so no comparison is needed.
      return bits(block) ^ 0xFFFF;
  }
}
#endif

// Position of the first mark in [from, to); `to` or more when there is none.
template <eMark kMark>
// The mark is a template argument, so that each scan is a loop of its own without a branch on what it looks for.
unsigned int Find(const unsigned char* bytes, unsigned int from, unsigned int to) {
#ifdef __SSE2__
  // Only whole blocks: nothing at or after `to` is read.
  for (; from + 16 <= to; from += 16) {
    const unsigned int marks = MarksOf16<kMark>(bytes + from);
    if (marks != 0) return from + static_cast<unsigned int>(std::countr_zero(marks));
  }
#endif
  while (from < to && !IsMark<kMark>(bytes + from)) ++from;
  return from;
}

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BYTE_SCAN_H
