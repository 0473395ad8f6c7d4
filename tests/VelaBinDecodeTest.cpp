#include "binproto/VelaBin_Decode.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "records/ResultCodes.h"
#include "tests/Cases.h"

namespace {

// A frame of a message number and its data, with the right checksum.
std::string Frame(unsigned int number, std::string_view data) {
  unsigned int sum = 0;
  for (const char c : data) sum += static_cast<unsigned char>(c);
  std::string frame = "$BIN";
  for (const unsigned int value : {number, static_cast<unsigned int>(data.size())})
    frame += {static_cast<char>(value), static_cast<char>(value >> 8)};
  return (frame += data) += {static_cast<char>(sum), static_cast<char>(sum >> 8)};
}

struct S_FrameCase {
  const char* name;
  std::string bytes;
  unsigned int result;
  unsigned short number, frameLength, position;  // 0xEEEE: not written
};

constexpr unsigned short kKept = 0xEEEE;

std::string Without(std::string frame, std::size_t last) { return frame.substr(0, frame.size() - last); }
std::string With(std::string frame, std::size_t at, char byte) { return frame.replace(at, 1, 1, byte); }

const S_FrameCase kFrames[] = {
    {"NoData", Frame(4, ""), eResultOk, 4, 10, 8},
    {"BytesBehindTheFrame", Frame(209, "ab") + "\r\n", eResultOk, 209, 12, 8},
    {"NineBytes", Without(Frame(1, ""), 1), eResultTooShort, kKept, kKept, kKept},
    {"FirstSyncByte", With(Frame(1, ""), 0, '#'), eResultBadSync, kKept, kKept, 1},
    {"FourthSyncByte", With(Frame(1, ""), 3, 'M'), eResultBadSync, kKept, kKept, 4},
    {"NumberAbove209", Frame(210, "x"), eResultUnknownMessage, 210, 11, 8},
    {"NumberBeforeLength", With(Frame(210, "x"), 7, '\xFF'), eResultUnknownMessage, 210, 0xFF0B, 8},
    {"LengthWraps", With(With(Frame(1, ""), 6, '\xFA'), 7, '\xFF'), eResultBadSync, 1, 4, 8},
    {"LengthWrapsToZero", With(With(Frame(1, ""), 6, '\xF6'), 7, '\xFF'), eResultBadSync, 1, 0, 8},
    {"LongestBeforeTheWrap", With(With(Frame(1, ""), 6, '\xF5'), 7, '\xFF'), eResultTooShort, 1, 65535, 8},
    {"OneByteShort", Without(Frame(1, "abc"), 1), eResultTooShort, 1, 13, 8},
    {"Longest", Frame(1, std::string(2037, 'U')), eResultOk, 1, 2047, 8},
    {"TooLong", Frame(1, std::string(2038, 'U')), eResultTooLong, 1, 2048, 8},
    {"SumWrapsAt65536", Frame(1, std::string(258, '\xFF')), eResultOk, 1, 268, 8},
    {"SumLowByte", With(Frame(1, "abc"), 11, 'z'), eResultChecksum, 1, 13, 8},
    {"SumHighByte", With(Frame(1, "abc"), 12, 'z'), eResultChecksum, 1, 13, 8},
};

class VelaBinFrame : public testing::TestWithParam<S_FrameCase> {};

TEST_P(VelaBinFrame, Validates) {
  ExactCopy frame(GetParam().bytes);
  unsigned short number = kKept, frameLength = kKept, position = kKept;
  EXPECT_EQ(C_VelaBin_Decode::ValidateFrame(frame.Data(), frame.Size(), number, frameLength, position),
            GetParam().result);
  EXPECT_EQ(number, GetParam().number);
  EXPECT_EQ(frameLength, GetParam().frameLength);
  EXPECT_EQ(position, GetParam().position);
}

INSTANTIATE_TEST_SUITE_P(Frames, VelaBinFrame, testing::ValuesIn(kFrames), CaseName<S_FrameCase>);

TEST(VelaBinFrame, NullIsRefused) {
  unsigned short number, frameLength, position;
  EXPECT_EQ(C_VelaBin_Decode::ValidateFrame(nullptr, 20, number, frameLength, position), eResultNull);
}

}  // namespace
