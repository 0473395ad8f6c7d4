#include "framing/CRC24.h"

#include <string>
#include <string_view>
#include <utility>

#include "framing/Crc24Sums.h"
#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/Streams.h"

namespace {

using namespace std::string_view_literals;

unsigned int Sum(std::string_view bytes) {
  ExactCopy copy(bytes);
  return C_CRC24::ComputeCRC(copy.Data(), copy.Size());
}

std::string Noise(std::size_t count) {
  std::string bytes;
  for (unsigned int state = 1; bytes.size() < count; state = state * 1664525 + 1013904223)
    bytes += static_cast<char>(state >> 24);
  return bytes;
}

struct S_SumCase {
  const char* name;
  std::string_view bytes;
  unsigned int expected;
};

constexpr S_SumCase kSums[] = {
    {"Nothing", ""sv, 0x000000},
    {"CheckString", "123456789"sv, 0xCDE703},  // published check value, start 0
    {"OwnChecksum", "123456789\xCD\xE7\x03"sv, 0x000000},
    {"Zeros", "\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0"sv, 0x000000},
    {"OneByte", "\x01"sv, 0x864CFB},                  // the polynomial itself
    {"EmptyRtcmFrame", "\xD3\0\0\x47\xEA\x4B"sv, 0},  // the filler frame that casters send
    // RTCM 10403, the standard's example of a message 1005, checksum included
    {"RtcmExample1005",
     "\xD3\x00\x13\x3E\xD7\xD3\x02\x02\x98\x0E\xDE\xEF\x34\xB4\xBD\x62\xAC\x09\x41\x98\x6F\x33\x36\x0B\x98"sv, 0},
};

TEST_ROWS(Crc24, IsThePublishedSum, kSums, row) { EXPECT_EQ(Sum(row.bytes), row.expected); }

TEST(Crc24Runs, EveryLengthAtEveryAlignment) {
  const std::string noise = Noise(200);
  for (std::size_t first = 0; first < 16; ++first)
    for (std::size_t count = 0; first + count <= noise.size(); ++count)
      ASSERT_EQ(C_CRC24::ComputeCRC(reinterpret_cast<const unsigned char*>(noise.data()) + first,
                                    static_cast<unsigned short>(count)),
                BitwiseCrc24(std::string_view(noise).substr(first, count)))
          << count << " bytes from " << first;
}

TEST(Crc24Runs, LongestRunBetweenUnreadablePages) {
  const std::string noise = Noise(65535);
  GuardedPage page(noise.size());
  EXPECT_EQ(C_CRC24::ComputeCRC(page.AtEnd(noise), 65535), BitwiseCrc24(noise));
  EXPECT_EQ(C_CRC24::ComputeCRC(page.AtStart(noise), 65535), BitwiseCrc24(noise));
  for (std::size_t count = 0; count < 40; ++count)
    EXPECT_EQ(C_CRC24::ComputeCRC(page.AtEnd(noise.substr(0, count)), static_cast<unsigned short>(count)),
              BitwiseCrc24(noise.substr(0, count)));
}

// Each way by itself: which of them ComputeCRC takes depends on the processor.
TEST(Crc24Runs, BothWaysAgree) {
  using namespace velagnss::framing;
  if (!CanSumByProducts()) GTEST_SKIP() << "no carry-less multiplication";
  const std::string noise = Noise(1100);
  for (std::size_t count = 16; count <= noise.size(); ++count) {
    GuardedPage page(count);
    const auto sums = [count](const unsigned char* bytes) {
      return std::pair(SumBySlices(bytes, count), SumByProducts(bytes, count));
    };
    const unsigned int expected = BitwiseCrc24(noise.substr(0, count));
    ASSERT_EQ(sums(page.AtEnd(noise.substr(0, count))), std::pair(expected, expected)) << count;
    ASSERT_EQ(sums(page.AtStart(noise.substr(0, count))), std::pair(expected, expected)) << count;
  }
}

TEST(Crc24Runs, NullIsNoBytes) { EXPECT_EQ(C_CRC24::ComputeCRC(nullptr, 5), 0U); }

TEST(Crc24Table, HoldsTheSumOfEachByte) {
  for (unsigned int byte = 0; byte < 256; ++byte)
    EXPECT_EQ(C_CRC24::mu32CRC_Table[byte], BitwiseCrc24(std::string(1, static_cast<char>(byte)))) << byte;
}

}  // namespace
