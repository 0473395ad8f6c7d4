// The payload of a message as a string of bits.
//
// Internal. RTCM 10403 packs fields without gaps, the highest bit first. The reader works on a copy of the payload that
// is followed by zeros, so that any field is a single load of eight bytes, wherever it starts. How many bits are left
// is checked once for each group of fields, not for each field.
#ifndef VELAGNSS_RTCM3_BIT_READER_H
#define VELAGNSS_RTCM3_BIT_READER_H

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace velagnss::rtcm3 {

inline constexpr std::size_t kMaxPayload = 1023;  // the frame has 10 bits for the length

// A payload with eight bytes of zeros after it.
class Payload {
 public:
  Payload(const unsigned char* bytes, std::size_t size) : m_size(size) {
    std::copy_n(bytes, size, m_bytes.begin());
    std::fill_n(m_bytes.begin() + static_cast<std::ptrdiff_t>(size), kPadding, static_cast<unsigned char>(0));
  }

  const unsigned char* Bytes() const { return m_bytes.data(); }
  std::size_t Size() const { return m_size; }

 private:
  static constexpr std::size_t kPadding = 8;

  std::array<unsigned char, kMaxPayload + kPadding> m_bytes;  // clearing all of them would take longer than the copy
  std::size_t m_size;
};

class BitReader {
 public:
  static constexpr unsigned int kMaxBits = 57;  // of one field, in a load of 64 bits that starts at a byte

  explicit BitReader(const Payload& payload)
      : m_bytes(payload.Bytes()), m_end(8 * static_cast<unsigned int>(payload.Size())) {}

  unsigned int BitsLeft() const { return m_end - m_position; }
  unsigned int Position() const { return m_position; }

  // The next 1 to 57 bits. The caller has checked `BitsLeft`.
  std::uint64_t Read(unsigned int bits) {
    const std::uint64_t value = Load(m_bytes + m_position / 8) << m_position % 8 >> (64 - bits);
    m_position += bits;
    return value;
  }

  void Skip(unsigned int bits) { m_position += bits; }

 private:
  static std::uint64_t Load(const unsigned char* b) {  // compilers turn this into a load and a byte swap
    return std::uint64_t{b[0]} << 56 | std::uint64_t{b[1]} << 48 | std::uint64_t{b[2]} << 40 |
           std::uint64_t{b[3]} << 32 | std::uint64_t{b[4]} << 24 | std::uint64_t{b[5]} << 16 |
           std::uint64_t{b[6]} << 8 | std::uint64_t{b[7]};
  }

  const unsigned char* m_bytes;
  unsigned int m_position = 0;
  unsigned int m_end;
};

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_BIT_READER_H
