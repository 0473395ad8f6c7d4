#include "textproto/VelaRD_Decode.h"

#include <gmock/gmock.h>

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/RecordLine.h"

namespace {

using namespace std::string_literals;

std::string LineOf(const S_IntSignalDiagMsg& r) {
  return RecordLine(r.timeOfWeek, r.field2, r.field3, r.field5a, r.field5b, r.field6, r.field7, r.field8, r.field9,
                    r.field10, r.field11, r.field12);
}

const char* const kNothing = "0 0 0 0 0 0 0 0 0 0 0 0";

// ---- the frame check

struct S_FrameCase {
  const char* name;
  std::string frame;
  unsigned int result;
  unsigned int version = 77;  // left alone
};

const S_FrameCase kFrames[] = {
    {"Version1", "$RD1,12345\r", 0, 1},
    {"CrLf", "$RD1,12345\r\n", 0, 1},
    {"Version0", "$RD0,12345\r", 0, 0},
    {"MinusZero", "$RD-0,1234\r", 3},  // the comma is not at index 4
    {"Version2", "$RD2,12345\r", 5},
    {"Version9LooksOnePlaceFurther", "$RD9,12345\r", 3},
    {"Version9WithTwoCommas", "$RD9,,1234\r", 5},
    {"Version10", "$RD10,1234\r", 5},
    {"Version99LooksOnePlaceFurther", "$RD99,1234\r", 3},
    {"Version100", "$RD100,123\r", 5},
    {"Version1000", "$RD1000,12\r", 3},
    {"VersionOf64Bits", "$RD9223372036854775808,\r", 3},
    {"LeadingZero", "$RD01,1234\r", 3},
    {"NoVersion", "$RD,123456\r", 3},
    {"Prefix", "$RX1,12345\r", 3},
    {"NoComma", "$RD1;12345\r", 3},
    {"LfAlone", "$RD1,12345\n", 3},
    {"LfCr", "$RD1,12345\n\r", 0, 1},
    {"LfBehindText", "$RD1,\r12345\n", 3},
    {"NoLineEnd", "$RD1,123456", 3},
    {"LineEndIsSeenBeforeTheVersion", "$RD2,123456", 3},
    {"TenBytes", "$RD1,1234\r", 0, 1},
    {"NineBytes", "$RD1,123\r", 20},
    {"NoBytes", "", 20},
    {"Longest", "$RD1," + std::string(506, 'x') + "\r", 0, 1},
    {"TooLong", "$RD1," + std::string(507, 'x') + "\r", 20},
};

TEST_ROWS(RdFrame, IsCheckedUpToItsLastByte, kFrames, row) {
  GuardedPage page(1024);
  unsigned short version = 77;
  EXPECT_EQ(
      C_VelaRD_Decode::ValidateFrame(page.AtEnd(row.frame), static_cast<unsigned short>(row.frame.size()), version),
      row.result);
  EXPECT_EQ(version, row.version);
}

// ---- the fields

// Decodes at the end of a readable page into a union that holds something else.
std::string Decode(C_VelaRD_Decode& decoder, std::string_view frame) {
  static GuardedPage page(1024);
  U_VelaRD_EcdDcdData data;
  std::memset(&data, 0xA5, sizeof data);
  unsigned short version = 77;
  const unsigned int result =
      decoder.Decode(page.AtEnd(frame), static_cast<unsigned short>(frame.size()), version, data);
  EXPECT_EQ(decoder.GetLastResult(), result);
  if (result != 0) {
    EXPECT_EQ(LineOf(data.signalDiag), kNothing);
  }
  return std::to_string(result) + (result == 0 ? ": " + LineOf(data.signalDiag) : "");
}

const std::vector<std::string> kFields = {"345600.5", "12",  "1575.42", "x",  "3-17", "44.5",
                                          "-0.25",    "1e3", "1F",      "a0", "7",    "DEADBEEF"};
const char* const kGoodLine = "345600.5 12 1575.42 3 17 44.5 -0.25 1000 31 160 7 3735928559";

std::string Sentence(const std::vector<std::string>& fields) {
  std::string text = "$RD1";
  for (const std::string& field : fields) text += ',' + field;
  return text + "\r\n";
}

struct S_FieldCase {
  const char* name;
  std::size_t position;
  std::string text;
  unsigned int result;
  std::string value = "";  // of the member, in a good sentence
};

const S_FieldCase kFieldCases[] = {
    {"WeekBegins", 1, "0", 0, "0"},
    {"WeekEnds", 1, "604799.9", 0, "604799.9"},
    {"NextWeek", 1, "604800", 8},
    {"BeforeTheWeek", 1, "-0.001", 8},
    {"NotANumber", 1, "nan", 8},
    {"Infinite", 1, "inf", 8},
    {"TimeWithTail", 1, " +5.5abc", 0, "5.5"},
    {"Zero", 2, "0", 0, "0"},
    {"MinusOne", 2, "-1", 8},
    {"Largest", 2, "9223372036854775807", 0, "9223372036854775807"},
    {"PointEndsAnInteger", 2, "12.9", 0, "12"},
    {"BelowTheBand", 3, "1299.9", 8},
    {"BandBegins", 3, "1300", 0, "1300"},
    {"BandEnds", 3, "1700", 0, "1700"},
    {"AboveTheBand", 3, "1700.0001", 8},
    {"NoPair", 5, "12", 11},
    {"PairWithoutASecond", 5, "12-", 11},
    {"PairWithoutAFirst", 5, "-34", 11},
    {"BlankBehindTheDash", 5, "12- 34", 0, "12 34"},
    {"Pair", 5, "12-34", 0, "12 34"},
    {"PairWithTail", 5, "12-34-56", 0, "12 34"},
    {"NegativeFirst", 5, "-12-34", 8},
    {"BadSecondIsSeenBeforeANegativeFirst", 5, "-12-x", 11},
    {"Below0", 6, "-0.1", 8},
    {"MinusZero", 6, "-0", 0, "-0"},
    {"At200", 6, "200", 0, "200"},
    {"Above200", 6, "200.1", 8},
    {"DoubleTooLarge", 7, "1e309", 11},
    {"InfiniteIsTaken", 8, "-inf", 0, "-inf"},
    {"HexWithPrefix", 9, "0xfF", 0, "255"},
    {"Hex63Bits", 9, "7FFFFFFFFFFFFFFF", 0, "9223372036854775807"},
    {"Hex64BitsAreNegative", 10, "8000000000000000", 8},
    {"HexTooWide", 10, "10000000000000000", 11},
    {"DecimalTail", 11, "7F", 0, "7"},
    {"Negative11", 11, "-7", 8},
    {"Hex32Bits", 12, "FFFFFFFE", 0, "4294967294"},
    {"Hex33Bits", 12, "100000000", 11},
    {"HexMinusOneOf32", 12, "-1", 11},
};

TEST_ROWS(RdField, GivesItsResultAndValue, kFieldCases, row) {
  std::vector<std::string> fields = kFields;
  fields[row.position - 1] = row.text;
  C_VelaRD_Decode decoder;
  const std::string decoded = Decode(decoder, Sentence(fields));
  EXPECT_EQ(decoded.substr(0, decoded.find(':')), std::to_string(row.result));
  EXPECT_THAT(decoded + ' ', testing::HasSubstr(row.value + ' '));
}

TEST(RdSentence, DecodesWithFieldsBehindTheLast) {
  C_VelaRD_Decode decoder;
  EXPECT_EQ(Decode(decoder, Sentence(kFields)), "0: "s + kGoodLine);
  std::vector<std::string> more = kFields;
  for (const char* field : {"", "x", "-1"}) more.emplace_back(field);
  EXPECT_EQ(Decode(decoder, Sentence(more)), "0: "s + kGoodLine);
  EXPECT_EQ(LineOf(decoder.GetLastRecord()), kGoodLine);
  decoder.Reset();
  EXPECT_EQ(LineOf(decoder.GetLastRecord()), kNothing);
}

TEST(RdSentence, AnAsteriskSeparatesToo) {
  C_VelaRD_Decode decoder;
  EXPECT_EQ(Decode(decoder, "$RD1,1.5*2,1500\r"), "0: 1.5 2 1500 0 0 0 0 0 0 0 0 0");
}

TEST(RdSentence, MayEndBehindEachField) {
  C_VelaRD_Decode decoder;
  EXPECT_EQ(Decode(decoder, Sentence(kFields)), "0: "s + kGoodLine) << "nothing of it stays";
  const char* const kLines[] = {"1 0 0 0 0 0 0 0 0 0 0 0", "1 12 0 0 0 0 0 0 0 0 0 0", "1 12 1575.42 0 0 0 0 0 0 0 0 0",
                                "1 12 1575.42 0 0 0 0 0 0 0 0 0", "1 12 1575.42 3 17 0 0 0 0 0 0 0"};
  std::vector<std::string> fields = {"1.00000"};
  for (std::size_t i = 0; i < std::size(kLines); ++i) {
    if (i > 0) fields.push_back(kFields[i]);
    EXPECT_EQ(Decode(decoder, Sentence(fields)), "0: "s + kLines[i]);
  }
}

TEST(RdSentence, EveryFieldEmptyOrTooLong) {
  for (std::size_t i = 0; i < kFields.size(); ++i) {
    C_VelaRD_Decode decoder;
    std::vector<std::string> fields = kFields;
    fields.emplace_back("behind");
    for (const std::string& nothing : {""s, "\0"s}) {
      fields[i] = nothing;
      EXPECT_EQ(Decode(decoder, Sentence(fields)), "11") << i + 1;
    }
    fields[i] = kFields[i] + std::string(64 - kFields[i].size(), ' ');
    EXPECT_EQ(Decode(decoder, Sentence(fields)), "0: "s + kGoodLine) << i + 1;
    fields[i] += ' ';
    const std::vector<std::string> before(kFields.begin(), kFields.begin() + i);
    EXPECT_EQ(Decode(decoder, Sentence(fields)), i == 0 ? "0: "s + kNothing : Decode(decoder, Sentence(before)));
  }
}

// ---- without the frame check

struct S_DirectCase {
  const char* name;
  std::string frame;
  unsigned int result;
};

const S_DirectCase kDirect[] = {
    {"NoLineEnd", "$RD1,123456", 0},
    {"NineBytes", "$RD1,1234", 3},
    {"Longest", "$RD1,1,2," + std::string(503, ','), 11},
    {"TooLong", "$RD1,1,2," + std::string(504, ','), 9},
    {"OtherName", "$RD2,123456", 2},
    {"NameWithBlank", "$RD1 ,12345", 2},
    {"EmptyName", ",$RD1,12345", 11},
    {"NameTooLong", std::string(65, 'x') + ",1", 2},
    {"NoText", std::string(12, '\0'), 2},
    {"NameOnly", "$RD1\0******"s, 0},
};

TEST_ROWS(RdDirect, LeavesTheRecordAloneUnlessItIsGood, kDirect, row) {
  ExactCopy frame(row.frame);
  C_VelaRD_Decode decoder;
  S_IntSignalDiagMsg record{};
  record.field12 = 77;
  EXPECT_EQ(decoder.Decode_RD1(frame.Data(), frame.Size(), record), row.result);
  EXPECT_EQ(decoder.GetLastResult(), row.result);
  EXPECT_EQ(record.field12, row.result == 0 ? 0U : 77U);
}

TEST(RdNull, IsRefused) {
  C_VelaRD_Decode decoder;
  unsigned short version = 77;
  U_VelaRD_EcdDcdData data;
  S_IntSignalDiagMsg record{};
  EXPECT_EQ(C_VelaRD_Decode::ValidateFrame(nullptr, 0, version), 1U);
  EXPECT_EQ(decoder.Decode(nullptr, 20, version, data), 1U);
  EXPECT_EQ(decoder.Decode_RD1(nullptr, 5, record), 1U);
  EXPECT_EQ(version, 77);
}

}  // namespace
