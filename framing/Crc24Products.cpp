// CRC-24Q by carry-less multiplication (PCLMULQDQ). The bytes are the coefficients of a polynomial, high bit first. A
// block that is followed by n bits may be replaced by its product with x^n modulo the generator, which is a much
// shorter polynomial: so each block is folded into a later one, until only the last 16 bytes are left.
#include "framing/Crc24Sums.h"

#if defined(__x86_64__) && defined(__GNUC__)

#include <immintrin.h>

#include "framing/Crc24Field.h"

// Compiled for processors that may lack these instructions: only SumByProducts() uses them.
#define VELAGNSS_WITH_PRODUCTS __attribute__((target("pclmul,ssse3")))

namespace velagnss::framing {

namespace {

constexpr std::size_t kBlock = 16;  // bytes
constexpr std::size_t kLanes = 4;   // blocks that are folded side by side, as a product takes several cycles

// x to that power, modulo the generator.
constexpr unsigned int PowerOfX(unsigned int power) {
  unsigned int result = 1;
  for (; power > 0; --power) result = Crc24Field::TimesX(result);
  return result;
}

// What the two halves of a block are multiplied by when it moves that many blocks: 8 bytes follow the high half.
template <unsigned int kBlocks>
VELAGNSS_WITH_PRODUCTS inline __m128i Powers() {
  constexpr unsigned int kOfHigh = PowerOfX(128 * kBlocks + 64), kOfLow = PowerOfX(128 * kBlocks);
  return _mm_set_epi64x(kOfHigh, kOfLow);
}

// The first `count` bytes of a block in reverse order, after zeros: the first byte of the stream has the highest
// powers, that of a register the lowest.
VELAGNSS_WITH_PRODUCTS inline __m128i Reversed(__m128i block, std::size_t count) {
  // A negative place gives a zero.
  static constexpr signed char kPlaces[] = {15, 14, 13, 12, 11, 10, 9,  8,  7,  6,   5,   4,   3,   2,   1,   0,
                                            -1, -2, -3, -4, -5, -6, -7, -8, -9, -10, -11, -12, -13, -14, -15, -16};
  const auto* const places = reinterpret_cast<const __m128i*>(kPlaces + kBlock - count);
  return _mm_shuffle_epi8(block, _mm_loadu_si128(places));
}

VELAGNSS_WITH_PRODUCTS inline __m128i Load(const unsigned char* bytes, std::size_t count = kBlock) {
  return Reversed(_mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes)), count);
}

// Adds a block to one further on, by as many blocks as `powers` says. Each half has 64 bits and a power 24, so both
// products fit.
VELAGNSS_WITH_PRODUCTS inline __m128i Folded(__m128i block, __m128i powers, __m128i into) {
  const __m128i high = _mm_clmulepi64_si128(block, powers, 0x11);
  const __m128i low = _mm_clmulepi64_si128(block, powers, 0x00);
  return _mm_xor_si128(into, _mm_xor_si128(high, low));
}

}  // namespace

bool CanSumByProducts() { return __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("ssse3"); }

VELAGNSS_WITH_PRODUCTS unsigned int SumByProducts(const unsigned char* data, std::size_t count) {
  const unsigned char* const end = data + count;
  // The bytes that make no whole block come first: zeros in front of them change nothing.
  const std::size_t head = count % kBlock;
  __m128i sum = Load(data, head);
  data += head;
  // Blocks until what is left is a multiple of the lanes.
  for (; (end - data) % (kLanes * kBlock) != 0; data += kBlock) sum = Folded(sum, Powers<1>(), Load(data));
  if (data != end) {
    __m128i lanes[kLanes] = {Folded(sum, Powers<1>(), Load(data)), Load(data + kBlock), Load(data + 2 * kBlock),
                             Load(data + 3 * kBlock)};
    while ((data += kLanes * kBlock) != end)
      for (std::size_t lane = 0; lane < kLanes; ++lane)
        lanes[lane] = Folded(lanes[lane], Powers<kLanes>(), Load(data + lane * kBlock));
    sum = lanes[0];
    for (std::size_t lane = 1; lane < kLanes; ++lane) sum = Folded(sum, Powers<1>(), lanes[lane]);
  }
  unsigned char bytes[kBlock];
  _mm_storeu_si128(reinterpret_cast<__m128i*>(bytes), Reversed(sum, kBlock));
  return SumBySlices(bytes, kBlock);
}

}  // namespace velagnss::framing

#else

namespace velagnss::framing {

bool CanSumByProducts() { return false; }
unsigned int SumByProducts(const unsigned char* data, std::size_t count) { return SumBySlices(data, count); }

}  // namespace velagnss::framing

#endif
