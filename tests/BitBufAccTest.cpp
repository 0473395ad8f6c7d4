#include "framing/BitBufAcc.h"

#include <array>
#include <bitset>
#include <climits>
#include <string>

#include "tests/Cases.h"
#include "tests/GuardedPage.h"

namespace {

// The buffer as a row of '0' and '1': what the operations are held against, bit by bit.
using t_Buffer = std::array<unsigned char, 12>;
constexpr int kBufferBits = 8 * 12;

std::string BitsOf(const t_Buffer& buffer) {
  std::string bits;
  for (const unsigned char byte : buffer) bits += std::bitset<8>(byte).to_string();
  return bits;
}

unsigned int ValueOf(const std::string& bits) { return static_cast<unsigned int>(std::stoul(bits, nullptr, 2)); }

constexpr t_Buffer kMixed = {0x9E, 0x37, 0x79, 0xB9, 0x7F, 0x4A, 0x7C, 0x15, 0xF3, 0x9C, 0xC0, 0x60};

// Runs `check` for every field of 1 to 32 bits at every position that lies in the buffer.
template <class Check>
void ForEachField(Check check) {
  for (int bits = 1; bits <= 32; ++bits)
    for (int position = 0; position + bits <= kBufferBits; ++position) check(position, bits);
}

TEST(BitBufAcc, ReadsEveryFieldAtEveryPosition) {
  const std::string all = BitsOf(kMixed);
  ForEachField([&](int position, int bits) {
    const std::string field = all.substr(position, bits);
    int walk = position;
    EXPECT_EQ(C_BitBufAcc::UnpackU32(kMixed.data(), walk, bits), ValueOf(field)) << bits << " bits at " << position;
    EXPECT_EQ(walk, position + bits);
    if (bits == 1) return;
    const long long weight = 1LL << bits;
    walk = position;
    EXPECT_EQ(C_BitBufAcc::UnpackS32(kMixed.data(), walk, bits), ValueOf(field) - (field[0] == '1' ? weight : 0));
    EXPECT_EQ(walk, position + bits);
  });
}

// By OR: ones that are there stay.
TEST(BitBufAcc, WritesEveryFieldAtEveryPosition) {
  constexpr unsigned int kValue = 0xC0FFEE35;  // more bits than the narrow fields take
  ForEachField([](int position, int bits) {
    t_Buffer buffer = kMixed;
    int walk = position;
    C_BitBufAcc::PackU32(buffer.data(), walk, bits, kValue);
    const std::string value = std::bitset<32>(kValue).to_string().substr(32 - bits);
    std::string expected = BitsOf(kMixed);
    for (int i = 0; i < bits; ++i) expected[position + i] |= value[i];  // '0' | '1' is '1'
    EXPECT_EQ(BitsOf(buffer), expected) << bits << " bits at " << position;
    EXPECT_EQ(walk, position + bits);
  });
}

TEST(BitBufAcc, ClearsEveryRunAndNothingElse) {
  for (int position = 0; position < kBufferBits; ++position)
    for (int bits = 1; position + bits <= kBufferBits; ++bits) {
      t_Buffer buffer;
      buffer.fill(0xFF);
      C_BitBufAcc::ClearBits(buffer.data(), position, bits);
      std::string expected(kBufferBits, '1');
      expected.replace(position, bits, std::string(bits, '0'));
      ASSERT_EQ(BitsOf(buffer), expected) << bits << " bits at " << position;
    }
}

TEST(BitBufAcc, CopiesEveryLengthBetweenOddPositions) {
  for (int from : {0, 1, 7, 8, 13})
    for (int to : {0, 3, 8, 11})
      for (int bits = 1; bits <= kBufferBits - 13; ++bits) {
        t_Buffer buffer;
        buffer.fill(0xFF);
        C_BitBufAcc::CopyBits(kMixed.data(), from, buffer.data(), to, bits);
        std::string expected(kBufferBits, '1');
        expected.replace(to, bits, BitsOf(kMixed).substr(from, bits));
        ASSERT_EQ(BitsOf(buffer), expected) << bits << " bits from " << from << " to " << to;
      }
}

struct S_RefusedCase {
  const char* name;
  int position;
  int bits;
  bool isReadRefused;  // by the unsigned reader and the writer
  bool isRunRefused;   // by ClearBits and CopyBits
};

constexpr S_RefusedCase kRefused[] = {
    {"NoBits", 3, 0, true, true},
    {"NegativeCount", 3, -1, true, true},
    {"LeastCount", 3, INT_MIN, true, true},
    {"MoreThanAWord", 3, 33, true, false},
    {"SignedFieldOfOneBit", 3, 1, false, false},
    {"NegativePosition", -1, 8, true, true},
    {"LeastPosition", INT_MIN, 8, true, true},
    {"EndsBehindTheLastPosition", INT_MAX - 7, 8, true, true},
};

TEST_ROWS(BitBufAccRefuses, WithoutAnyEffect, kRefused, row) {
  t_Buffer buffer = kMixed;
  int position = row.position;
  EXPECT_EQ(C_BitBufAcc::UnpackS32(buffer.data(), position, row.bits), 0);
  EXPECT_EQ(position, row.position);
  if (row.isReadRefused) {
    EXPECT_EQ(C_BitBufAcc::UnpackU32(buffer.data(), position, row.bits), 0U);
    C_BitBufAcc::PackU32(buffer.data(), position, row.bits, 0xFFFFFFFF);
    EXPECT_EQ(position, row.position);
    EXPECT_EQ(buffer, kMixed);
  }
  if (row.isRunRefused) {
    C_BitBufAcc::ClearBits(buffer.data(), position, row.bits);
    C_BitBufAcc::CopyBits(t_Buffer{}.data(), position, buffer.data(), 0, row.bits);
    C_BitBufAcc::CopyBits(t_Buffer{}.data(), 0, buffer.data(), position, row.bits);
    EXPECT_EQ(buffer, kMixed);
  }
}

TEST(BitBufAcc, NullHasNoEffect) {
  t_Buffer buffer = kMixed;
  int position = 4;
  EXPECT_EQ(C_BitBufAcc::UnpackU32(nullptr, position, 8), 0U);
  EXPECT_EQ(C_BitBufAcc::UnpackS32(nullptr, position, 8), 0);
  C_BitBufAcc::PackU32(nullptr, position, 8, 1);
  C_BitBufAcc::ClearBits(nullptr, position, 8);
  C_BitBufAcc::CopyBits(nullptr, 0, buffer.data(), 0, 8);
  C_BitBufAcc::CopyBits(buffer.data(), 0, nullptr, 0, 8);
  EXPECT_EQ(position, 4);
  EXPECT_EQ(buffer, kMixed);
}

// The destination is cleared before the source is read, also where both are the same bits.
TEST(BitBufAcc, OverlappingCopyTakesClearedBits) {
  t_Buffer buffer;
  buffer.fill(0xFF);
  C_BitBufAcc::CopyBits(buffer.data(), 0, buffer.data(), 4, 40);
  EXPECT_EQ(BitsOf(buffer).substr(0, 48), "111111110000000000000000000000000000000000001111");
}

TEST(BitBufAcc, TouchesOnlyTheBytesOfTheField) {
  GuardedPage page(4);
  ForEachField([&](int position, int bits) {
    position %= 8;
    const int bytes = (position + bits + 7) / 8;
    unsigned char* const buffer = page.AtEnd(std::string(bytes, '\0'));
    int walk = position;
    C_BitBufAcc::PackU32(buffer, walk, bits, 0xFFFFFFFF);
    walk = position;
    EXPECT_EQ(C_BitBufAcc::UnpackU32(buffer, walk, bits), 0xFFFFFFFFU >> (32 - bits));
    C_BitBufAcc::ClearBits(buffer, position, bits);
    EXPECT_EQ(std::string(bytes, '\0'), std::string(reinterpret_cast<const char*>(buffer), bytes));
  });
}

TEST(BitBufAccMasks, EntryHasThatManyHighBits) {
  for (int k = 0; k < 32; ++k)
    EXPECT_EQ(C_BitBufAcc::mu32HighMask[k], ValueOf(std::string(k, '1') + std::string(32 - k, '0'))) << k;
}

}  // namespace
