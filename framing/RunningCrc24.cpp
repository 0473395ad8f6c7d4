#include "framing/RunningCrc24.h"

#include "framing/CRC24.h"

namespace {

constexpr unsigned int kPolynomial = 0x1864CFB;  // of CRC-24Q

constexpr unsigned int TimesX(unsigned int sum) { return (sum << 1) ^ ((sum >> 23 & 1) * kPolynomial); }

// Product of two sums as polynomials over GF(2), modulo the polynomial of the CRC.
constexpr unsigned int Product(unsigned int a, unsigned int b) {
  unsigned int product = 0;
  for (unsigned int bit = 1U << 23; bit != 0; bit >>= 1) {
    product = TimesX(product) ^ ((b & bit) != 0 ? a : 0);
  }
  return product;
}

// x to the power of 8 n: what a sum is multiplied by when n zero bytes follow.
constexpr auto kZeroBytes = [] {
  std::array<unsigned int, C_RunningCrc24::kMaxCount + 1> powers = {1};
  for (unsigned int n = 1; n < powers.size(); ++n) powers[n] = Product(powers[n - 1], 1U << 8);
  return powers;
}();
static_assert(kZeroBytes[3] == 0x864CFB, "x to the power of 24");

}  // namespace

unsigned int C_RunningCrc24::Sum(std::uint64_t position, const unsigned char* bytes, unsigned int count) {
  if (position < m_begin || position > m_end) {
    m_begin = m_end = position;
    At(position) = 0;
  }
  for (; m_end < position + count; ++m_end) {
    const unsigned int sum = At(m_end);
    At(m_end + 1) = ((sum << 8) ^ C_CRC24::mu32CRC_Table[(sum >> 16) ^ bytes[m_end - position]]) & 0xFFFFFF;
  }
  return At(position + count) ^ Product(At(position), kZeroBytes[count]);
}
