// How the bytes of a session are packed: numbers, bit strings, checksums.
//
// Written for the session generator alone and on purpose without the library, bit by bit where the library has tables:
// a fault there must not find its twin here.
#ifndef VELAGNSS_SAMPLES_PACKING_H
#define VELAGNSS_SAMPLES_PACKING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// Ends the generator with `what` on standard error unless `holds`: the session would break a rule of its own format.
void Require(bool holds, std::string_view what);

// A sequence of numbers that is the same on every machine. Draw one per expression: C++ leaves the order of two open.
class C_Random {
 public:
  explicit C_Random(std::uint64_t seed) : m_state(seed) {}
  std::uint32_t Next();                                         // 31 bits
  std::uint32_t Below(std::uint32_t limit);                     // 0 to limit - 1
  std::int64_t Between(std::int64_t least, std::int64_t most);  // both ends included, at most 2^31 - 1 apart
  std::string Bytes(std::size_t count);

 private:
  std::uint64_t m_state;
};

// Bits in the order of transmission, the high bit of each value first.
class C_BitString {
 public:
  // Appends the low `width` bits of `value`, 0 to 64: two's complement for negative ones.
  void Put(std::int64_t value, int width);
  // Appends a sign bit (1 for negative values) and the magnitude, `width` bits together.
  void PutSignMagnitude(std::int64_t value, int width);

  std::size_t Size() const { return m_bits.size(); }
  bool Bit(std::size_t index) const { return m_bits[index] != 0; }
  void SetBit(std::size_t index, bool bit) { m_bits[index] = bit ? '\1' : '\0'; }
  // `count` bits from `first`, at most 32; bits beyond the end are 0.
  std::uint32_t Value(std::size_t first, int count) const;
  std::string Bytes() const;  // the last byte filled up with 0

 private:
  std::string m_bits;  // one character per bit, 0 or 1
};

std::string LittleEndian(std::uint64_t value, int bytes);

// `value` / 10^`decimals`, filled with zeros on the left to `width` characters.
std::string Fixed(std::int64_t value, int decimals = 0, int width = 0);
std::string Hex(std::uint64_t value, int digits);  // upper case

// Every `mark` in the text by something else.
void Replace(std::string& text, std::string_view mark, const std::string& by);

// CRC-24Q (polynomial 0x1864CFB, start 0), the last 24 bits of an RTCM 3 frame.
std::uint32_t Crc24(std::string_view bytes);
// Sum of the bytes in 16 bits, the check of a binary block.
std::uint16_t ByteSum(std::string_view bytes);
// XOR of the bytes, the check of a text sentence.
unsigned char Xor(std::string_view bytes);

// Seven bits to a byte with its top bit set, the low bits first. `payload` is filled up with 0 to 16-bit words, low
// byte first, and the 16-bit sum of these words follows as the last one.
std::string Pack7Of8(std::string_view payload);

#endif  // VELAGNSS_SAMPLES_PACKING_H
