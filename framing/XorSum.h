// The checksum that ends a text sentence, "*hh" (NMEA 0183): its two digits, and the exclusive or that they must equal.
// Internal.
#ifndef VELAGNSS_FRAMING_XOR_SUM_H
#define VELAGNSS_FRAMING_XOR_SUM_H

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>

namespace velagnss::framing {

// The value of `count` (1 to 8) upper-case hexadecimal digits, the most significant first. False, with the digits read
// so far, at any other character; false and 0 for a null text or another count.
inline bool ReadHex(const unsigned char* text, unsigned int count, unsigned int& value) {
  static constexpr unsigned char kNone = 0xFF;
  // A table rather than comparisons: this runs for every text frame, and no locale has a say in it.
  static constexpr auto kDigits = [] {
    std::array<unsigned char, 256> digits = {};
    digits.fill(kNone);
    for (unsigned char digit = 0; digit < 16; ++digit)
      digits[static_cast<unsigned char>("0123456789ABCDEF"[digit])] = digit;
    return digits;
  }();
  value = 0;
  if (text == nullptr || count < 1 || count > 8) return false;
  for (unsigned int i = 0; i < count; ++i) {
    const unsigned char digit = kDigits[text[i]];
    if (digit == kNone) return false;
    value = value << 4 | digit;
  }
  return true;
}

// Exclusive or of `count` bytes, a machine word at a time. The last word overlaps the one before it, and the bytes
// already counted are shifted out: a loop over up to seven single bytes would cost more than all the words of a
// sentence.
inline unsigned char XorOf(const unsigned char* bytes, unsigned int count) {
  constexpr unsigned int kWord = sizeof(std::uint64_t);
  // By memcpy: the bytes have no alignment.
  const auto word = [](const unsigned char* from) {
    std::uint64_t value = 0;
    std::memcpy(&value, from, kWord);
    return value;
  };
  // On a big-endian machine the shift would drop the wrong bytes, so it takes the plain loop.
  std::uint64_t folded = 0;
  if (count < kWord || std::endian::native != std::endian::little) {
    for (; count > 0; ++bytes, --count) folded ^= *bytes;
  } else {
    for (; count > kWord; bytes += kWord, count -= kWord) folded ^= word(bytes);
    folded ^= word(bytes + count - kWord) >> (8 * (kWord - count));
  }
  // The order of bytes in a word does not matter to an exclusive or, so the halves are folded together.
  folded ^= folded >> 32;
  folded ^= folded >> 16;
  return static_cast<unsigned char>(folded ^ (folded >> 8));
}

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_XOR_SUM_H
