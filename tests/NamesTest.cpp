#include "stream/Names.h"

#include <gmock/gmock.h>

#include <cctype>
#include <set>
#include <string>

#include "Cases.h"

namespace {

using eProtocols = C_RawDataMessage::eProtocols;

// Names are how users ask for protocols and messages: each is found again, in either case, and none has two meanings.
TEST(Names, NameOneThingEach) {
  std::set<std::string> names;
  for (unsigned int i = 0; i < C_RawDataMessage::eAllProtocols; ++i) {
    const auto protocol = eProtocols{i};
    std::string name(velagnss::ProtocolName(protocol));
    EXPECT_EQ(velagnss::FindProtocol(name), protocol);
    for (char& c : name) c = static_cast<char>(std::toupper(c));
    EXPECT_EQ(velagnss::FindProtocol(name), protocol);
    EXPECT_TRUE(names.insert(name).second);
    std::set<std::string> messages;
    for (unsigned int message = 0; message < velagnss::NumMessages(protocol); ++message)
      EXPECT_TRUE(messages.emplace(velagnss::MessageName(protocol, message).Text()).second);
  }
  EXPECT_EQ(velagnss::ProtocolName(C_RawDataMessage::eAllProtocols), "none");
  EXPECT_EQ(velagnss::FindProtocol("nme"), std::nullopt);
  EXPECT_TRUE(velagnss::IsCalledByNumber(C_RawDataMessage::eRTCM3_x));
  EXPECT_FALSE(velagnss::IsCalledByNumber(C_RawDataMessage::eVelaRD));
  EXPECT_FALSE(velagnss::IsCalledByNumber(C_RawDataMessage::eNoProtocol));
  EXPECT_EQ(velagnss::NumMessages(C_RawDataMessage::eNoProtocol), 0U);
}

struct S_NameCase {
  const char* name;
  eProtocols protocol;
  unsigned int message;
  const char* text;
};
const S_NameCase kNames[] = {
    {"Sentence", C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaZDA, "ZDA"},
    {"UnknownSentence", C_RawDataMessage::eNMEA0183, C_RawDataMessage::eNmeaUnknown, ""},
    {"Rtcm", C_RawDataMessage::eRTCM3_x, 4095, "RTCM4095"},
    {"LongestNumber", C_RawDataMessage::eRTCM3_x, 0xFFFFFFFF, "RTCM4294967295"},
    {"Block", C_RawDataMessage::eVelaBIN, 209, "BIN209"},
    {"LongestName", C_RawDataMessage::ePKVN, 9, "TEMPERATURE"},
    {"Diagnostics", C_RawDataMessage::eVelaRD, 1, "RD1"},
    {"SiteRecord", C_RawDataMessage::eJSITERECORD, 0xFFFFFFFF, "JSITERECORD"},
    {"NoProtocol", C_RawDataMessage::eNoProtocol, 1, ""},
};
struct S_UnlistedCase {
  const char* name;
  const char* sentence;
  const char* text;
};
const S_UnlistedCase kUnlisted[] = {
    {"Formatter", "$GPTXT,1*00", "TXT"},     {"Encapsulated", "!AIVDM,1*00", "VDM"},
    {"Proprietary", "$PGRME,1*00", "PGRME"}, {"LongAddress", "$PABCANTENNASTATUS,0*00", "PABCANTENNASTATUS"},
    {"TalkerAlone", "$GP,1*00", "GP"},
};
TEST_ROWS(UnlistedNames, ComeFromTheAddress, kUnlisted, row) {
  velagnss::Frame frame;
  frame.data = reinterpret_cast<const unsigned char*>(row.sentence);
  frame.length = static_cast<unsigned short>(std::string(row.sentence).size());
  frame.protocol = C_RawDataMessage::eNMEA0183;
  frame.message = C_RawDataMessage::eNmeaUnknown;
  EXPECT_EQ(velagnss::UnlistedName(frame), row.text);
  EXPECT_EQ(velagnss::MessageNumber(frame), std::nullopt);
  frame.message = C_RawDataMessage::eNmeaHDT;
  EXPECT_EQ(velagnss::UnlistedName(frame), "");
  EXPECT_EQ(velagnss::MessageNumber(frame), C_RawDataMessage::eNmeaHDT);
  frame.message = 0xFFFFFFFF;  // of protocols without numbers
  EXPECT_EQ(velagnss::MessageNumber(frame), std::nullopt);
  frame.data = nullptr;
  frame.message = C_RawDataMessage::eNmeaUnknown;
  EXPECT_EQ(velagnss::UnlistedName(frame), "");
}

TEST_ROWS(MessageNames, AreAsDocumented, kNames, row) {
  EXPECT_EQ(velagnss::MessageName(row.protocol, row.message).Text(), row.text);
}

TEST(Names, OfNumbersOutOfRangeAreEmpty) {
  EXPECT_EQ(velagnss::SystemName(ALGO::GNSS_QZSS), "qzss");
  EXPECT_EQ(velagnss::SystemName(ALGO::GNSS_UNKNOWN), "");
  EXPECT_EQ(velagnss::FrequencyName(ALGO::FREQ_E6), "E6");
  EXPECT_EQ(velagnss::FrequencyName(ALGO::FREQ_ALL), "");
  EXPECT_EQ(velagnss::TrackTypeName(ALGO::TRACK_BC), "BC");
  EXPECT_EQ(velagnss::TrackTypeName(ALGO::TRACK_UNKNOWN), "");
  EXPECT_EQ(velagnss::ResultText(4), "checksum missing or wrong");
  for (const unsigned int unused : {10U, 12U, 15U, 23U}) EXPECT_EQ(velagnss::ResultText(unused), "not decoded");
  EXPECT_EQ(velagnss::ReasonText(velagnss::RejectedStart::Reason::Checksum), "checksum error");
  EXPECT_NE(velagnss::ReasonText(velagnss::RejectedStart::Reason::NotAFrame), "checksum error");
  using Skipped = velagnss::SkippedRange::Reason;
  const std::set<std::string_view> reasons = {velagnss::ReasonText(Skipped::Noise),
                                              velagnss::ReasonText(Skipped::FalseStarts),
                                              velagnss::ReasonText(Skipped::EndOfStream)};
  EXPECT_EQ(reasons.size(), 3U);
  for (const unsigned int code : {1U, 6U, 16U, 22U}) EXPECT_NE(velagnss::ResultText(code), "not decoded");
}

}  // namespace
