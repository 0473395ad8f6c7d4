// Two ways to sum a run of bytes by CRC-24Q, with the same result. Internal.
#ifndef VELAGNSS_FRAMING_CRC24_SUMS_H
#define VELAGNSS_FRAMING_CRC24_SUMS_H

#include <cstddef>

namespace velagnss::framing {

// By look-ups in tables, 16 bytes at a time. Works on any processor.
unsigned int SumBySlices(const unsigned char* data, std::size_t count);

// By carry-less multiplication, 64 bytes at a time: twice as fast for long runs, but it needs a processor that has it.
// `count` is 16 or more.
bool CanSumByProducts();
unsigned int SumByProducts(const unsigned char* data, std::size_t count);

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_CRC24_SUMS_H
