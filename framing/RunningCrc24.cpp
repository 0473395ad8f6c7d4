#include "framing/RunningCrc24.h"

#include "framing/CRC24.h"
#include "framing/Crc24Field.h"

namespace {

// x to the power of 8 n: what a sum is multiplied by when n zero bytes follow.
constexpr auto kZeroBytes = [] {
  std::array<unsigned int, C_RunningCrc24::kMaxCount + 1> powers = {1};
  for (unsigned int n = 1; n < powers.size(); ++n) powers[n] = Crc24Field::TimesX8(powers[n - 1]);
  return powers;
}();
static_assert(kZeroBytes[3] == 0x864CFB);

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
  return At(position + count) ^ Crc24Field::Product(At(position), kZeroBytes[count]);
}
