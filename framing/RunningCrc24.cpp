#include "framing/RunningCrc24.h"

#include "framing/CRC24.h"
#include "framing/Crc24Field.h"

namespace velagnss::framing {

namespace {

// x to the power of 8 n: what a sum is multiplied by when n zero bytes follow.
constexpr auto kZeroBytes = [] {
  std::array<unsigned int, C_RunningCrc24::kMaxCount + 1> powers = {1};
  for (unsigned int n = 1; n < powers.size(); ++n) powers[n] = Crc24Field::TimesX8(powers[n - 1]);
  return powers;
}();
static_assert(kZeroBytes[3] == 0x864CFB);

// The sum after one more byte.
unsigned int Next(unsigned int sum, unsigned char byte) {
  return ((sum << 8) ^ C_CRC24::mu32CRC_Table[(sum >> 16) ^ byte]) & 0xFFFFFF;
}

// Of two polynomials modulo the generator. Four bits of `b` at a time, for which the multiples of `a` are laid out. The
// bits above 23 are reduced as if they were bytes to be summed.
unsigned int Product(unsigned int a, unsigned int b) {
  std::array<unsigned int, 16> multiples = {0, a};
  for (unsigned int i = 2; i < multiples.size(); i += 2) {
    multiples[i] = multiples[i / 2] << 1;
    multiples[i + 1] = multiples[i] ^ a;
  }
  std::uint64_t product = 0;
  for (unsigned int bit = 0; bit < 24; bit += 4) product ^= std::uint64_t{multiples[b >> bit & 15]} << bit;
  unsigned int sum = 0;
  for (const unsigned int shift : {40, 32, 24}) sum = Next(sum, static_cast<unsigned char>(product >> shift));
  return sum ^ (product & 0xFFFFFF);
}

}  // namespace

unsigned int C_RunningCrc24::Sum(std::uint64_t position, const unsigned char* bytes, unsigned int count) {
  if (position < m_begin || position > m_end) {
    m_begin = m_end = position;
    At(position) = 0;
  }
  for (; m_end < position + count; ++m_end) At(m_end + 1) = Next(At(m_end), bytes[m_end - position]);
  return At(position + count) ^ Product(At(position), kZeroBytes[count]);
}

}  // namespace velagnss::framing
