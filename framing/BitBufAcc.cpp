#include "framing/BitBufAcc.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

constexpr int kWordBits = 32;

// Whether `bits` bits from `position` on can be addressed, and the position after them too.
constexpr bool IsRun(int position, int bits) {
  return position >= 0 && bits > 0 && bits <= std::numeric_limits<int>::max() - position;
}

constexpr bool IsField(int position, int bits) { return bits <= kWordBits && IsRun(position, bits); }

// Bits between the end of the field that ends at `end` and the end of its last byte.
constexpr int BitsBehind(int end) { return 7 - (end - 1) % 8; }

constexpr unsigned int LowBits(unsigned int value, int bits) { return value & (0xFFFFFFFFU >> (kWordBits - bits)); }

}  // namespace

// The field as a whole lies in at most five bytes: they are joined in one word and shifted once, so that no bit is
// handled by itself and no byte outside of the field is read.
unsigned int C_BitBufAcc::UnpackU32(const unsigned char* buffer, int& position, int bits) {
  if (buffer == nullptr || !IsField(position, bits)) return 0;
  const int end = position + bits;
  std::uint64_t window = 0;  // the bytes that hold the field: 32 bits at an odd position take five
  for (int byte = position / 8; byte <= (end - 1) / 8; ++byte) window = window << 8 | buffer[byte];
  position = end;
  return LowBits(static_cast<unsigned int>(window >> BitsBehind(end)), bits);
}

int C_BitBufAcc::UnpackS32(const unsigned char* buffer, int& position, int bits) {
  if (bits < 2 || bits > kWordBits) return 0;
  unsigned int value = UnpackU32(buffer, position, bits);
  if ((value >> (bits - 1)) != 0) value |= mu32HighMask[kWordBits - bits];
  return static_cast<int>(value);
}

// From the last byte to the first: what is left of the window then always starts at its low bits.
void C_BitBufAcc::PackU32(unsigned char* buffer, int& position, int bits, unsigned int value) {
  if (buffer == nullptr || !IsField(position, bits)) return;
  const int end = position + bits;
  std::uint64_t window = std::uint64_t{LowBits(value, bits)} << BitsBehind(end);
  for (int byte = (end - 1) / 8; byte >= position / 8; --byte, window >>= 8)
    buffer[byte] = static_cast<unsigned char>(buffer[byte] | (window & 0xFF));
  position = end;
}

void C_BitBufAcc::ClearBits(unsigned char* buffer, const int& position, int bits) {
  if (buffer == nullptr || !IsRun(position, bits)) return;
  const int end = position + bits;
  const int first = position / 8;
  const int last = (end - 1) / 8;
  // Bits of the first and the last byte that are outside the run and stay.
  const auto before = static_cast<unsigned char>(~(0xFFU >> (position % 8)));
  const auto after = static_cast<unsigned char>((1U << BitsBehind(end)) - 1);
  if (first == last) {
    buffer[first] = static_cast<unsigned char>(buffer[first] & (before | after));
    return;
  }
  buffer[first] = static_cast<unsigned char>(buffer[first] & before);
  std::memset(buffer + first + 1, 0, static_cast<std::size_t>(last - first - 1));
  buffer[last] = static_cast<unsigned char>(buffer[last] & after);
}

void C_BitBufAcc::CopyBits(const unsigned char* source, int sourcePosition, unsigned char* destination,
                           int destinationPosition, int bits) {
  if (source == nullptr || destination == nullptr) return;
  if (!IsRun(sourcePosition, bits) || !IsRun(destinationPosition, bits)) return;
  ClearBits(destination, destinationPosition, bits);
  while (bits > 0) {
    const int piece = std::min(bits, kWordBits);
    PackU32(destination, destinationPosition, piece, UnpackU32(source, sourcePosition, piece));
    bits -= piece;
  }
}

// clang-format off
const unsigned int C_BitBufAcc::mu32HighMask[32] = {
    0x00000000, 0x80000000, 0xC0000000, 0xE0000000, 0xF0000000, 0xF8000000, 0xFC000000, 0xFE000000,
    0xFF000000, 0xFF800000, 0xFFC00000, 0xFFE00000, 0xFFF00000, 0xFFF80000, 0xFFFC0000, 0xFFFE0000,
    0xFFFF0000, 0xFFFF8000, 0xFFFFC000, 0xFFFFE000, 0xFFFFF000, 0xFFFFF800, 0xFFFFFC00, 0xFFFFFE00,
    0xFFFFFF00, 0xFFFFFF80, 0xFFFFFFC0, 0xFFFFFFE0, 0xFFFFFFF0, 0xFFFFFFF8, 0xFFFFFFFC, 0xFFFFFFFE,
};
// clang-format on
