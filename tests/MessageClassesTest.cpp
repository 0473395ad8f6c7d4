// The questions about message classes, asked for every protocol and every number, against the lists of RTCM 10403 and
// of the receiver's replies; and the helpers that hosts may call on bytes of their own.
#include <algorithm>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/Streams.h"

namespace {

using Raw = C_RawDataMessage;
using Recognizer = C_FrameRecognizer;
using t_Ranges = std::vector<std::pair<unsigned, unsigned>>;  // first and last

bool IsIn(const t_Ranges& ranges, unsigned number) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [number](const auto& range) { return range.first <= number && number <= range.second; });
}

struct S_ClassCase {
  const char* name;
  bool (*isIt)(Raw::eProtocols protocol, unsigned number);
  Raw::eProtocols protocol;
  t_Ranges numbers;
};

const S_ClassCase kClasses[] = {
    {"HighRateClock", &Recognizer::IsAHighRateSsrClockMsg, Raw::eRTCM3_x, {{1062, 1062}, {1068, 1068}}},
    {"CodeBias",
     &Recognizer::IsAnRtcmSsrCodeBiasMsg,
     Raw::eRTCM3_x,
     {{1059, 1059}, {1065, 1065}, {1242, 1242}, {1260, 1260}}},
    {"PhaseBias", &Recognizer::IsAnRtcmSsrPhaseBiasMsg, Raw::eRTCM3_x, {{1265, 1270}}},
    {"Vtec", &Recognizer::IsAnRtcmSsrVtecMsg, Raw::eRTCM3_x, {{1264, 1264}}},
    {"Gga", &Recognizer::IsAnNmeaGgaMsg, Raw::eNMEA0183, {{8, 8}}},
    {"Rd", &Recognizer::IsAVelaRDMsg, Raw::eVelaRD, {{0, 999}}},
    {"Ji", &Recognizer::IsAVelaJIMsg, Raw::eVelaJI, {{0, 999}}},
    {"Jquery", &Recognizer::IsAVelaJQUERYMsg, Raw::eVelaJQUERY, {{0, 999}}},
    {"Geo", &Recognizer::IsAVelaGEOMsg, Raw::eVelaGEO, {{0, 999}}},
};

TEST_ROWS(MessageClass, HasTheseNumbersAndNoOthers, kClasses, row) {
  for (unsigned protocol = 0; protocol <= Raw::eNoProtocol; ++protocol) {
    for (unsigned i = 0; i <= 5000; ++i) {
      const unsigned number = i < 5000 ? i : ~0U;
      const bool expected = protocol == row.protocol && IsIn(row.numbers, number);
      ASSERT_EQ(row.isIt(Raw::eProtocols{protocol}, number), expected) << protocol << " " << number;
    }
  }
}

TEST(MessageClassSystem, IsThatOfTheOrbitAndClockMessages) {
  const std::pair<ALGO::eGNSSSystem, t_Ranges> systems[] = {
      {ALGO::GNSS_GPS, {{1057, 1058}, {1060, 1060}, {1062, 1062}}},
      {ALGO::GNSS_GLONASS, {{1063, 1064}, {1066, 1066}, {1068, 1068}}},
      {ALGO::GNSS_GALILEO, {{1240, 1241}, {1243, 1243}, {1245, 1245}}},
      {ALGO::GNSS_BEIDOU, {{1258, 1259}, {1261, 1261}, {1263, 1263}, {1303, 1303}}},
  };
  for (unsigned number = 0; number < 5000; ++number) {
    ALGO::eGNSSSystem expected = ALGO::GNSS_UNKNOWN;
    for (const auto& [system, numbers] : systems)
      if (IsIn(numbers, number)) expected = system;
    ASSERT_EQ(Recognizer::GetRtcmSsrOrbitClockMsgSys(number), expected) << number;
    for (unsigned protocol = 0; protocol <= Raw::eNoProtocol; ++protocol)
      ASSERT_EQ(Recognizer::IsAnRtcmSsrOrbitClockMsg(Raw::eProtocols{protocol}, number),
                protocol == Raw::eRTCM3_x && expected != ALGO::GNSS_UNKNOWN);
  }
}

TEST(FrameHelpers, ReadDigitsAndSumThem) {
  const Recognizer recognizer(nullptr, eCircBufOvrflowRejectNew, false);
  const std::string text = "GPGGA,123519,4807.038,N,01131.000,E";
  unsigned char sum = 0;
  for (unsigned short length = 0; length <= text.size(); sum ^= static_cast<unsigned char>(text[length++])) {
    ExactCopy copy(text.substr(0, length));
    EXPECT_EQ(recognizer.Compute_ByteXOR(copy.Data(), length), sum) << length;
  }
  EXPECT_EQ(recognizer.Compute_ByteXOR(nullptr, 3), 0);
  unsigned value = 99;
  EXPECT_TRUE(recognizer.ExtractHexValue(reinterpret_cast<const unsigned char*>("89ABCDEFx"), 8, value));
  EXPECT_EQ(value, 0x89ABCDEF);
}

// Byte by byte: each word appears with the packed byte that holds its last bit, and what is left over stays.
TEST(FrameHelpers, UnwindsAWordAtATime) {
  unsigned accumulator = ~0U;
  unsigned char bitCount = 99;
  EXPECT_FALSE(Recognizer::Unwind7of8_Byte(nullptr, 0xFF, accumulator, bitCount));
  EXPECT_EQ(accumulator, 0U);
  EXPECT_EQ(bitCount, 0);
  std::string words;
  std::string whenComplete;
  for (const char packed : Packed("abcdef")) {  // and their sum: 64 bits in ten bytes
    unsigned short word = 0;
    const bool isComplete =
        Recognizer::Unwind7of8_Byte(&word, static_cast<unsigned char>(packed), accumulator, bitCount);
    whenComplete += isComplete ? '1' : '0';
    if (isComplete) words += {static_cast<char>(word), static_cast<char>(word >> 8)};
  }
  EXPECT_EQ(whenComplete, "0010101001");
  EXPECT_EQ(words.substr(0, 6), "abcdef");
  EXPECT_EQ(bitCount, 6);
  EXPECT_EQ(Recognizer::UnwindVela7of8Message(nullptr, &bitCount, 1), 0U);
  EXPECT_EQ(Recognizer::UnwindVela7of8Message(&bitCount, nullptr, 1), 0U);
}

}  // namespace
