// The arithmetic of CRC-24Q: polynomials over GF(2), modulo the generator, as 24-bit numbers. Internal.
#ifndef VELAGNSS_FRAMING_CRC24_FIELD_H
#define VELAGNSS_FRAMING_CRC24_FIELD_H

namespace velagnss::framing::Crc24Field {

// x^24 + x^23 + x^18 + x^17 + x^14 + x^11 + x^10 + x^7 + x^6 + x^5 + x^4 + x^3 + x + 1
inline constexpr unsigned int kPolynomial = 0x1864CFB;

// One step of the shift register: the bit that leaves at the top brings in the polynomial.
constexpr unsigned int TimesX(unsigned int a) { return (a << 1) ^ ((a >> 23 & 1) * kPolynomial); }

// Multiplication by x^8: what a sum becomes when a zero byte follows.
constexpr unsigned int TimesX8(unsigned int a) {
  for (int bit = 0; bit < 8; ++bit) a = TimesX(a);
  return a;
}

}  // namespace velagnss::framing::Crc24Field

#endif  // VELAGNSS_FRAMING_CRC24_FIELD_H
