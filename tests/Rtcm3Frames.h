// RTCM 3 frames, written bit by bit.
#ifndef VELAGNSS_TESTS_RTCM3_FRAMES_H
#define VELAGNSS_TESTS_RTCM3_FRAMES_H

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

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

// CRC-24Q by its definition, bit by bit.
inline std::uint32_t SlowCrc24(std::string_view bytes) {
  std::uint32_t crc = 0;
  for (const char c : bytes) {
    crc ^= std::uint32_t{static_cast<unsigned char>(c)} << 16;
    for (int bit = 0; bit < 8; ++bit) crc = crc << 1 ^ ((crc & 0x800000) != 0 ? 0x1864CFB : 0);
  }
  return crc & 0xFFFFFF;
}

// A frame with the right length and checksum.
inline std::string Rtcm3Frame(std::string_view payload) {
  std::string frame = {'\xD3', static_cast<char>(payload.size() >> 8), static_cast<char>(payload.size())};
  frame += payload;
  const std::uint32_t crc = SlowCrc24(frame);
  for (const int shift : {16, 8, 0}) frame += static_cast<char>(crc >> shift);
  return frame;
}

#endif  // VELAGNSS_TESTS_RTCM3_FRAMES_H
