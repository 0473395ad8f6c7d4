#include "textproto/FieldParsers.h"

#include <limits>
#include <string>
#include <tuple>
#include <utility>

#include "geo/NotAvailable.h"
#include "tests/Cases.h"

namespace {

using namespace UTIL;

// In the range of each type as tests/LibraryTwins.h compares them; here what differs from reading one text.
TEST(Integers, DefaultsLengthsAndTheInvertedResult) {
  short s16 = 99;
  EXPECT_FALSE(StrToS16("65536", s16, 1)) << "inverted";
  EXPECT_EQ(s16, 99);
  EXPECT_TRUE(StrToS16("2147483648", s16, 1)) << "inverted";
  EXPECT_EQ(s16, 0);
  const std::string zeros(65533, '0');
  const std::pair<const char*, unsigned int> kRows[] = {{"12", 12}, {"512", 0}, {"0012", 12}};
  for (const auto& [last, expected] : kRows) {  // of 65,535, 65,536 and 65,537 characters; the second counts as empty
    unsigned int u32 = 99;
    EXPECT_TRUE(StrToU32((zeros + last).c_str(), u32, 1)) << last;
    EXPECT_EQ(u32, expected) << last;
  }
}

// The greatest number of a type, the one after it, and nothing at all.
template <class T>
void ExpectLimit(bool (*parse)(const char*, T, T&), const char* greatest, const char* beyond) {
  T value = 99;
  EXPECT_TRUE(parse(greatest, 7, value));
  EXPECT_EQ(value, std::numeric_limits<T>::max());
  EXPECT_FALSE(parse(beyond, 7, value));
  EXPECT_EQ(value, 7);
  EXPECT_TRUE(parse(nullptr, 5, value));
  EXPECT_EQ(value, 5);
}

TEST(Integers, OfFieldsHaveTheLimitsOfTheirTypes) {
  ExpectLimit<unsigned char>(ParseFieldU8, "255", "256");
  ExpectLimit<signed char>(ParseFieldS8, "127", "128");
  ExpectLimit<unsigned short>(ParseFieldU16, "65535", "65536");
  ExpectLimit<unsigned int>(ParseFieldU32, "4294967295", "4294967296");
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
  EXPECT_TRUE(FormatDate(2024, 12, NA_U8, NA_U16, NA_U8, NA_U8, out));
  EXPECT_STREQ(out, "");
  EXPECT_FALSE(FormatDate(2024, 12, 31, NA_U16, NA_U8, NA_U8, nullptr));
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
  CopyStringBounded(dest, "g", nullptr, 0);
  CopyStringBounded(nullptr, "g", nullptr, 4);
  EXPECT_STREQ(dest, "f");
  EXPECT_STREQ(FindLastChar("a*b*c", '*'), "*c");
  EXPECT_EQ(FindLastChar("abc", '*'), nullptr);
  EXPECT_EQ(FindLastChar("", '*'), nullptr);
  EXPECT_EQ(FindLastChar(nullptr, '*'), nullptr);
  EXPECT_EQ(FindLastChar("abc", '\0'), nullptr);
}

}  // namespace
