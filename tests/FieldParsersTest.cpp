#include "textproto/FieldParsers.h"

#include <climits>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "geo/NotAvailable.h"
#include "tests/CLocale.h"
#include "tests/Cases.h"

namespace {

using namespace UTIL;

const std::string kLongZeros(65533, '0');

struct S_IntegerCase {
  const char* name;
  std::string text;
  // What each parser reads; kNo: refused.
  long long u32, u16, u8, s32, s8;
};
constexpr long long kNo = LLONG_MIN;

// clang-format off
const S_IntegerCase kIntegerCases[] = {
    //                                      u32         u16    u8    s32         s8
    {"Digits",      "12",                   12,         12,    12,   12,         12},
    {"Letter",      "12A",                  kNo,        kNo,   kNo,  kNo,        kNo},
    {"Blank",       " 12",                  12,         12,    12,   12,         12},
    {"Plus",        "+12",                  12,         12,    12,   12,         12},
    {"Minus",       "-1",                   kNo,        kNo,   kNo,  -1,         -1},
    {"Tab",         "\t1",                  kNo,        kNo,   kNo,  kNo,        kNo},
    {"Point",       "1.0",                  kNo,        kNo,   kNo,  kNo,        kNo},
    {"SecondNumber", "5 5",                 5,          5,     5,    5,          5},
    {"Sum",         "12+3",                 12,         12,    12,   12,         12},
    {"PlusBlank",   "+ 5",                  kNo,        kNo,   kNo,  kNo,        kNo},
    {"LonePlus",    "+",                    kNo,        kNo,   kNo,  kNo,        kNo},
    {"Blanks",      "   ",                  kNo,        kNo,   kNo,  kNo,        kNo},
    {"127",         "127",                  127,        127,   127,  127,        127},
    {"128",         "128",                  128,        128,   128,  128,        kNo},
    {"Minus128",    "-128",                 kNo,        kNo,   kNo,  -128,       -128},
    {"Minus129",    "-129",                 kNo,        kNo,   kNo,  -129,       kNo},
    {"255",         "255",                  255,        255,   255,  255,        kNo},
    {"256",         "256",                  256,        256,   kNo,  256,        kNo},
    {"65535",       "65535",                65535,      65535, kNo,  65535,      kNo},
    {"65536",       "65536",                65536,      kNo,   kNo,  65536,      kNo},
    {"MaxS32",      "2147483647",           2147483647, kNo,   kNo,  2147483647, kNo},
    {"OverS32",     "2147483648",           2147483648, kNo,   kNo,  kNo,        kNo},
    {"MinS32",      "-2147483648",          kNo,        kNo,   kNo,  INT_MIN,    kNo},
    {"UnderS32",    "-2147483649",          kNo,        kNo,   kNo,  kNo,        kNo},
    {"MaxU32",      "4294967295",           4294967295, kNo,   kNo,  kNo,        kNo},
    {"OverU32",     "4294967296",           kNo,        kNo,   kNo,  kNo,        kNo},
    {"FarOver",     "99999999999999999999999", kNo,     kNo,   kNo,  kNo,        kNo},
    {"Length65535", kLongZeros + "12",      12,         12,    12,   12,         12},
    {"Length65536CountsAsEmpty", kLongZeros + "512", 0, 0,     0,    0,          0},
    {"Length65537", kLongZeros + "0012",    12,         12,    12,   12,         12},
};
// clang-format on

template <class Value>
long long Read(bool (*parse)(const char*, Value&, unsigned char), const std::string& text) {
  Value value = 99;
  if (parse(text.c_str(), value, 1)) return value;
  EXPECT_EQ(value, 99) << "written on failure";
  return kNo;
}

TEST_ROWS(Integers, AreReadInTheRangeOfTheirType, kIntegerCases, c) {
  EXPECT_EQ(Read<unsigned int>(StrToU32, c.text), c.u32);
  EXPECT_EQ(Read<unsigned short>(StrToU16, c.text), c.u16);
  EXPECT_EQ(Read<unsigned char>(StrToU8, c.text), c.u8);
  EXPECT_EQ(Read<int>(StrToS32, c.text), c.s32);
  EXPECT_EQ(Read<signed char>(StrToS8, c.text), c.s8);
  EXPECT_EQ(Read<short>(StrToS16, c.text), c.s32 == kNo ? 0 : kNo) << "inverted";
  unsigned char u8;
  EXPECT_EQ(ParseFieldU8(c.text.c_str(), 7, u8), c.u8 != kNo);
  EXPECT_EQ(u8, c.u8 == kNo ? 7 : c.u8);
}

TEST(FieldParsers, EmptyAndNull) {
  unsigned int u32 = 9;
  double dbl = 9;
  EXPECT_FALSE(StrToU32(static_cast<const char*>(nullptr), u32, 1));
  EXPECT_FALSE(StrToU32("", u32, 0));
  EXPECT_EQ(u32, 9U);
  EXPECT_TRUE(StrToU32("", u32, 1));
  EXPECT_EQ(u32, 0U);
  EXPECT_TRUE(StrToDBL("", dbl, 1));
  EXPECT_EQ(dbl, 0.0);
  for (const char* const field : {static_cast<const char*>(nullptr), ""}) {
    EXPECT_TRUE(ParseFieldDBL(field, 2.5, dbl));
    EXPECT_EQ(dbl, 2.5);
    EXPECT_TRUE(ParseFieldHex32(field, 5, u32));
    EXPECT_EQ(u32, 5U);
  }
}

TEST(FieldParsers, HexadecimalKeepsTheValueOnFailure) {
  unsigned int value = 9;
  EXPECT_FALSE(ParseFieldHex32("G5", 5, value));
  EXPECT_EQ(value, 9U);
  EXPECT_TRUE(ParseFieldHex32("5G", 5, value));
  EXPECT_EQ(value, 5U);
}

// Texts made of the characters that pass the check, in any order, against the C library's scan. A number cut off in
// its exponent is skipped: there the C library's own answers differ.
TEST(FieldParsers, DoublesAgreeWithTheCLibraryOnAnyAllowedText) {
  const CLocale locale;
  constexpr std::string_view kAllowed = " +-.0123456789DEde";
  std::mt19937 random(20240603);
  int compared = 0;
  for (int i = 0; i < 300000; ++i) {
    std::string text(1 + random() % 12, ' ');
    for (char& c : text) c = kAllowed[random() % kAllowed.size()];
    double expected;
    int used = 0;
    const bool isNumber = std::sscanf(text.c_str(), "%lf%n", &expected, &used) == 1 && !std::isinf(expected);
    double value = 77;
    const bool isRead = StrToDBL(text.c_str(), value, 1);
    const std::size_t letter = text.find_first_of("eE");
    if (letter != std::string::npos && !isRead) continue;
    ++compared;
    ASSERT_EQ(isRead, isNumber) << text;
    ASSERT_EQ(value, isNumber ? expected : 77) << text;
  }
  EXPECT_GT(compared, 100000);
}

struct S_TimeCase {
  const char* name;
  const char* field;
  bool isSuccess;
  unsigned int hours, minutes;
  double seconds, secondsOfDay;
};

// clang-format off
constexpr S_TimeCase kTimeCases[] = {
    {"Full",           "123456.78",  true,  12, 34, 56.78,     45296.78},
    {"NoFraction",     "123456",     true,  12, 34, 56.0,      45296.0},
    {"LaterDecimals",  "123456.789", true,  12, 34, 56.78,     45296.78},
    {"Empty",          "",           true,  0,  0,  NA_DOUBLE, NA_DOUBLE},
    {"Null",           nullptr,      false, 0,  0,  0.0,       0.0},
    {"Four",           "1234",       false, 0,  0,  0.0,       0.0},
    {"Five",           "12345",      false, 0,  0,  0.0,       0.0},
    {"BadHours",       "1x3456",     false, 0,  0,  0.0,       0.0},
    {"BadMinutes",     "123x56",     false, 12, 0,  0.0,       0.0},
    {"BadSeconds",     "12345x.1",   false, 12, 34, 0.0,       0.0},
    {"NoRangeCheck",   "996099",     true,  99, 60, 99.0,      360099.0},
};
// clang-format on

TEST_ROWS(TimeOfDay, Parse, kTimeCases, c) {
  unsigned int hours = 1;
  unsigned int minutes = 1;
  double seconds = 1;
  EXPECT_EQ(ParseTimeOfDay(c.field, hours, minutes, seconds), c.isSuccess);
  EXPECT_EQ(std::tie(hours, minutes, seconds), std::tie(c.hours, c.minutes, c.seconds));
  EXPECT_EQ(ParseTimeOfDaySeconds(c.field, seconds), c.isSuccess);
  EXPECT_DOUBLE_EQ(seconds, c.secondsOfDay);
}

struct S_DateCase {
  const char* name;
  const char* field;
  bool isSuccess;
  unsigned short year;
  unsigned char month, day;
};

// clang-format off
constexpr S_DateCase kDateCases[] = {
    {"Date",       "010324",  true,  2024, 3, 1},
    {"Longer",     "0103249", true,  2024, 3, 1},
    {"Empty",      "",        true,  1,    2, 3},
    {"Null",       nullptr,   false, 1,    2, 3},
    {"Five",       "01032",   false, 1,    2, 3},
    {"BadDay",     "0x0324",  false, 1,    2, 3},
    {"BadMonth",   "010x24",  false, 1,    2, 1},
    {"BadYear",    "01032x",  false, 1,    3, 1},
};
// clang-format on

TEST_ROWS(Date, Parse, kDateCases, c) {
  unsigned short year = 9;
  unsigned char month = 9;
  unsigned char day = 9;
  EXPECT_EQ(ParseDate(c.field, 1, 2, 3, year, month, day), c.isSuccess);
  EXPECT_EQ(std::tie(year, month, day), std::tie(c.year, c.month, c.day));
}

TEST(FieldParsers, FormatDate) {
  char out[8] = "xxxxxxx";
  EXPECT_TRUE(FormatDate(2024, 12, 31, NA_U16, NA_U8, NA_U8, out));
  EXPECT_STREQ(out, "311224");
  for (const auto& [month, day] : {std::pair(13, 1), std::pair(0, 1), std::pair(1, 0), std::pair(1, 32)}) {
    EXPECT_FALSE(FormatDate(2024, static_cast<unsigned char>(month), static_cast<unsigned char>(day), NA_U16, NA_U8,
                            NA_U8, out));
    EXPECT_STREQ(out, "");
  }
  EXPECT_TRUE(FormatDate(NA_U16, 13, 31, NA_U16, NA_U8, NA_U8, out)) << "any part not available";
}

struct S_SplitTimeCase {
  const char* name;
  double secondsOfDay;
  int hours, minutes;
  double seconds;
};

// clang-format off
constexpr S_SplitTimeCase kSplitTimeCases[] = {
    {"Midnight",         0.0,       0,  0,  0.0},
    {"CarriesToMinutes", 59.996,    0,  1,  0.0},
    {"StaysBelow",       59.994,    0,  0,  59.99},
    {"HoursToo",         45296.784, 12, 34, 56.78},
    {"RoundsTo24Hours",  86399.996, 24, 0,  0.0},
    {"Enormous",         1e300,     0,  0,  0.0},
    {"NotANumber",       std::numeric_limits<double>::quiet_NaN(), 0, 0, 0.0},
};
// clang-format on

TEST_ROWS(SplitTime, RoundsToHundredthsFirst, kSplitTimeCases, c) {
  unsigned char hours;
  unsigned char minutes;
  double seconds;
  SplitTimeOfDay(c.secondsOfDay, hours, minutes, seconds);
  EXPECT_EQ(hours, c.hours);
  EXPECT_EQ(minutes, c.minutes);
  EXPECT_NEAR(seconds, c.seconds, 1e-9);
}

TEST(FieldParsers, Strings) {
  unsigned char bytes[] = {1, 2, 3};
  EXPECT_TRUE(ReverseBytes(bytes, 3));
  EXPECT_EQ(bytes[0] * 100 + bytes[1] * 10 + bytes[2], 321);
  EXPECT_FALSE(ReverseBytes(nullptr, 3));
  char dest[4] = "xyz";
  CopyStringBounded(dest, "abcdef", nullptr, 4);
  EXPECT_STREQ(dest, "abc");
  CopyStringBounded(dest, nullptr, "f", 4);
  EXPECT_STREQ(dest, "f");
  CopyStringBounded(dest, nullptr, nullptr, 4);
  EXPECT_STREQ(dest, "f");
  EXPECT_STREQ(FindLastChar("a*b*c", '*'), "*c");
  EXPECT_EQ(FindLastChar("abc", '*'), nullptr);
  EXPECT_EQ(FindLastChar("", '*'), nullptr);
}

}  // namespace
