// Payloads of RTCM 3 messages, written bit by bit.
#ifndef VELAGNSS_TESTS_RTCM3_BITS_H
#define VELAGNSS_TESTS_RTCM3_BITS_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

#include "tests/Streams.h"

// The payload of a message.
class Rtcm3Bits {
 public:
  struct Field {
    std::int64_t value;
    unsigned int bits;
  };

  Rtcm3Bits() = default;
  Rtcm3Bits(std::initializer_list<Field> fields) { Put(fields); }

  // Appends the low bits of numbers, highest first: negative ones in two's complement.
  Rtcm3Bits& Put(std::int64_t value, unsigned int bits) {
    for (; bits > 64; --bits) m_bits += value < 0 ? '1' : '0';
    while (bits > 0) m_bits += (value >> --bits & 1) != 0 ? '1' : '0';
    return *this;
  }
  Rtcm3Bits& Put(std::initializer_list<Field> fields) {
    for (const Field& field : fields) Put(field.value, field.bits);
    return *this;
  }
  Rtcm3Bits& PutText(std::string_view text) {
    for (const char c : text) Put(static_cast<unsigned char>(c), 8);
    return *this;
  }

  std::size_t Size() const { return m_bits.size(); }

  // Filled up to whole bytes with zeros.
  std::string Payload() const {
    std::string bytes((m_bits.size() + 7) / 8, '\0');
    for (std::size_t i = 0; i < m_bits.size(); ++i)
      if (m_bits[i] == '1') bytes[i / 8] = static_cast<char>(bytes[i / 8] | 0x80 >> i % 8);
    return bytes;
  }

 private:
  std::string m_bits;
};

#endif  // VELAGNSS_TESTS_RTCM3_BITS_H
