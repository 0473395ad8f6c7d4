// Scans over runs of bytes, sixteen at a time where the processor can. Internal.
#ifndef VELAGNSS_FRAMING_BYTE_SCAN_H
#define VELAGNSS_FRAMING_BYTE_SCAN_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

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

constexpr bool IsLineEnd(unsigned char byte) { return byte == kCr || byte == kLf; }

// The definition of each mark, one byte at a time: for the last bytes of a run, and for processors without SSE2.
template <eMark kMark>
bool IsMark(const unsigned char* byte) {
  switch (kMark) {
    case eMark::Control:
      return *byte < kFirstPrintable;
    case eMark::LineEnd:
      return IsLineEnd(*byte);
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

// Position of the first mark in [from, to); `to` or more when there is none. The mark is a template argument, so that
// each scan is a loop of its own without a branch on what it looks for.
template <eMark kMark>
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

// How many bytes after the queued ones can be read, of any value: scans look at whole blocks, some at two of them.
inline constexpr unsigned int kReadAhead = 32;

// The same where bytes after `to` can be read.
template <eMark kMark>
unsigned int FindReadingAhead(const unsigned char* bytes, unsigned int from, unsigned int to) {
#ifdef __SSE2__
  for (; from < to; from += 16) {
    const unsigned int marks = MarksOf16<kMark>(bytes + from);
    if (marks != 0) return from + static_cast<unsigned int>(std::countr_zero(marks));
  }
  return from;
#else
  return Find<kMark>(bytes, from, to);
#endif
}

// Whether none of the `count` bytes is below `least`. Reads ahead as well.
inline bool AreAtLeast(unsigned char least, const unsigned char* bytes, unsigned int count) {
  if (least == 0) return true;
#ifdef __SSE2__
  const __m128i bound = _mm_set1_epi8(static_cast<char>(least));
  for (unsigned int at = 0; at < count; at += 16) {
    const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + at));
    const auto less =
        static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(_mm_max_epu8(block, bound), block))) ^ 0xFFFF;
    if (less != 0) return at + static_cast<unsigned int>(std::countr_zero(less)) >= count;
  }
  return true;
#else
  return std::all_of(bytes, bytes + count, [least](unsigned char byte) { return byte >= least; });
#endif
}

#ifdef __SSE2__
// Most sentences are shorter (NMEA 0183 allows 82 characters).
inline constexpr unsigned int kLineWindow = 96;

// The first line of kLineWindow bytes, and the exclusive or that its checksum must equal.
struct S_Line {
  unsigned int end;   // position of the first control character; kLineWindow if there is none
  unsigned char sum;  // of the characters after the first one and before "*hh"; meaningless if `end` is below 4
};

// Reads all of the window, whatever the line's length: without a branch that depends on it, one pass costs less than a
// search for the end and a sum up to it.
inline S_Line ReadLine(const unsigned char* bytes) {
  constexpr std::size_t kBlocks = kLineWindow / 16;
  __m128i blocks[kBlocks];
  unsigned int marks[kBlocks];
  for (std::size_t i = 0; i < kBlocks; ++i) {
    blocks[i] = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + 16 * i));
    const __m128i least = _mm_min_epu8(blocks[i], _mm_set1_epi8(kFirstPrintable - 1));
    marks[i] = static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi8(least, blocks[i])));
  }
  const auto pair = [&marks](std::size_t i) { return std::uint64_t{marks[i] | marks[i + 1] << 16}; };
  const std::uint64_t first = pair(0) | pair(2) << 32;
  const std::uint64_t last = pair(4);
  const int end = first != 0 ? std::countr_zero(first) : 64 + std::min(std::countr_zero(last), 32);
  // Bytes from the star on count as zeros.
  const __m128i star = _mm_set1_epi8(static_cast<char>(end - 3));
  __m128i place = _mm_set_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
  __m128i sum = _mm_setzero_si128();
  for (const __m128i block : blocks) {
    sum = _mm_xor_si128(sum, _mm_and_si128(block, _mm_cmplt_epi8(place, star)));
    place = _mm_add_epi8(place, _mm_set1_epi8(16));
  }
  std::uint64_t folded = 0;
  _mm_storel_epi64(reinterpret_cast<__m128i*>(&folded), _mm_xor_si128(sum, _mm_unpackhi_epi64(sum, sum)));
  folded ^= folded >> 32;
  folded ^= folded >> 16;
  return {static_cast<unsigned int>(end), static_cast<unsigned char>(folded ^ (folded >> 8) ^ bytes[0])};
}
#endif

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_BYTE_SCAN_H
