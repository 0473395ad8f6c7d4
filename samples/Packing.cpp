#include "samples/Packing.h"

#include <cstdio>
#include <cstdlib>

void Require(bool holds, std::string_view what) {
  if (holds) return;
  std::fprintf(stderr, "make_session: %.*s\n", static_cast<int>(what.size()), what.data());
  std::exit(EXIT_FAILURE);
}

std::uint32_t C_Random::Next() {
  m_state = m_state * 6364136223846793005U + 1442695040888963407U;  // multiplier and increment of Knuth's MMIX
  return static_cast<std::uint32_t>(m_state >> 33);
}

std::uint32_t C_Random::Below(std::uint32_t limit) { return Next() % limit; }

std::int64_t C_Random::Between(std::int64_t least, std::int64_t most) {
  return least + static_cast<std::int64_t>(Next()) % (most - least + 1);
}

std::string C_Random::Bytes(std::size_t count) {
  std::string bytes;
  while (bytes.size() < count) bytes += static_cast<char>(Next() >> 11);
  return bytes;
}

void C_BitString::Put(std::int64_t value, int width) {
  for (int shift = width - 1; shift >= 0; --shift) m_bits += (value >> shift) & 1 ? '\1' : '\0';
}

void C_BitString::PutSignMagnitude(std::int64_t value, int width) {
  Put(value < 0, 1);
  Put(value < 0 ? -value : value, width - 1);
}

std::uint32_t C_BitString::Value(std::size_t first, int count) const {
  std::uint32_t value = 0;
  for (std::size_t index = first; index < first + static_cast<std::size_t>(count); ++index)
    value = value << 1 | (index < Size() && Bit(index) ? 1U : 0U);
  return value;
}

std::string C_BitString::Bytes() const {
  std::string bytes;
  for (std::size_t first = 0; first < Size(); first += 8) bytes += static_cast<char>(Value(first, 8));
  return bytes;
}

std::string LittleEndian(std::uint64_t value, int bytes) {
  std::string packed;
  for (int index = 0; index < bytes; ++index) packed += static_cast<char>(value >> 8 * index);
  return packed;
}

std::string Fixed(std::int64_t value, int decimals, int width) {
  std::string digits = std::to_string(value < 0 ? -value : value);
  const auto places = static_cast<std::size_t>(decimals);
  while (digits.size() <= places) digits.insert(digits.begin(), '0');
  if (decimals > 0) digits.insert(digits.size() - places, 1, '.');
  const std::size_t signs = value < 0 ? 1 : 0;
  while (signs + digits.size() < static_cast<std::size_t>(width)) digits.insert(digits.begin(), '0');
  return std::string(signs, '-') + digits;
}

std::string Hex(std::uint64_t value, int digits) {
  std::string text;
  for (int shift = 4 * (digits - 1); shift >= 0; shift -= 4) text += "0123456789ABCDEF"[(value >> shift) & 0xF];
  return text;
}

void Replace(std::string& text, std::string_view mark, const std::string& by) {
  for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + by.size()))
    text.replace(at, mark.size(), by);
}

std::uint32_t Crc24(std::string_view bytes) {
  std::uint32_t sum = 0;
  for (const char byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) {
      const bool carry = ((sum >> 23) & 1) != ((static_cast<unsigned char>(byte) >> bit) & 1U);
      sum = (sum << 1 & 0xFFFFFF) ^ (carry ? 0x864CFBU : 0U);
    }
  }
  return sum;
}

std::uint16_t ByteSum(std::string_view bytes) {
  unsigned int sum = 0;
  for (const char byte : bytes) sum += static_cast<unsigned char>(byte);
  return static_cast<std::uint16_t>(sum);
}

unsigned char Xor(std::string_view bytes) {
  unsigned int sum = 0;
  for (const char byte : bytes) sum ^= static_cast<unsigned char>(byte);
  return static_cast<unsigned char>(sum);
}

std::string Pack7Of8(std::string_view payload) {
  std::string words(payload);
  if (words.size() % 2 != 0) words += '\0';
  unsigned int sum = 0;
  for (std::size_t index = 0; index < words.size(); index += 2)
    sum += static_cast<unsigned char>(words[index]) | static_cast<unsigned char>(words[index + 1]) << 8;
  words += LittleEndian(sum & 0xFFFF, 2);

  std::string packed;
  for (std::size_t first = 0; first < 8 * words.size(); first += 7) {
    unsigned int group = 0;
    for (std::size_t bit = first; bit < first + 7 && bit < 8 * words.size(); ++bit)
      group |= (static_cast<unsigned char>(words[bit / 8]) >> bit % 8 & 1U) << (bit - first);
    packed += static_cast<char>(0x80 | group);
  }
  return packed;
}
