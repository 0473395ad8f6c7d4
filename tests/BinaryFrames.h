// Frames of the receiver's binary protocol and the navigation data in them, written bit by bit.
#ifndef VELAGNSS_TESTS_BINARY_FRAMES_H
#define VELAGNSS_TESTS_BINARY_FRAMES_H

#include <cstdint>
#include <string>
#include <string_view>

// A number as `bytes` bytes, lowest first.
inline std::string LittleEndian(std::uint64_t value, unsigned int bytes) {
  std::string text;
  for (; bytes > 0; --bytes, value >>= 8) text += static_cast<char>(value);
  return text;
}

// A frame of a message number and its data, with the right checksum.
inline std::string BinFrame(unsigned int number, std::string_view data) {
  unsigned int sum = 0;
  for (const char c : data) sum += static_cast<unsigned char>(c);
  return "$BIN" + LittleEndian(number, 2) + LittleEndian(data.size(), 2) + std::string(data) + LittleEndian(sum, 2);
}

// Three subframes of ten words of 30 bits each, as messages 25 and 95 carry them.
class Subframes {
 public:
  // Writes the low bits of `value` into bits first ... last of a word; all counted from 1, bit 1 is sent first.
  void Set(int subframe, int word, int first, int last, std::uint32_t value) {
    for (int bit = last; bit >= first; --bit, value >>= 1) m_words[subframe - 1][word - 1] |= (value & 1) << (30 - bit);
  }
  // The 128 bytes of a message's data.
  std::string Data(unsigned int prn) const {
    std::string data = LittleEndian(prn, 2) + std::string(6, '\x5A');
    for (const auto& subframe : m_words)
      for (const std::uint32_t word : subframe) data += LittleEndian(word, 4);
    return data;
  }

 private:
  std::uint32_t m_words[3][10] = {};
};

// Five GLONASS strings of 85 bits, as message 65 carries them.
class GlonassStrings {
 public:
  // Writes the low bits of `value` from bit `first` on, counted from 1 as in the interface document.
  void Set(int string, int first, int count, std::uint32_t value) {
    for (int bit = first; bit < first + count; ++bit, value >>= 1) {
      const int word = bit >= 54 ? 0 : bit >= 22 ? 1 : 2;
      const int lowest = bit >= 54 ? 54 : bit >= 22 ? 22 : -10;
      m_words[string - 1][word] |= (value & 1) << (bit - lowest);
    }
  }
  // The same for a number with a sign, which goes into the highest bit.
  void SetSigned(int string, int first, int count, int value) {
    Set(string, first, count, value < 0 ? static_cast<std::uint32_t>(-value) | 1U << (count - 1) : value);
  }
  // The 68 bytes of a message's data.
  std::string Data(unsigned int slot, unsigned int channelByte) const {
    std::string data = LittleEndian(slot, 1) + LittleEndian(channelByte, 1) + std::string(6, '\x5A');
    for (const auto& string : m_words)
      for (const std::uint32_t word : string) data += LittleEndian(word, 4);
    return data;
  }

 private:
  std::uint32_t m_words[5][3] = {};
};

#endif  // VELAGNSS_TESTS_BINARY_FRAMES_H
