#include "geo/GnssTables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using namespace ALGO;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

TEST(GnssTables, UserRangeAccuracy) {
  // IS-GPS-200, 20.3.3.3.1.3: "0.00 < URA <= 2.40", "2.40 < URA <= 3.40" ... "6144.00 < URA"
  constexpr double kUpper[] = {2.4, 3.4, 4.85, 6.85, 9.65, 13.65, 24, 48, 96, 192, 384, 768, 1536, 3072, 6144};
  for (int i = 0; i < 15; ++i) {
    EXPECT_EQ(UraMetresToIndex(kUpper[i]), i);
    EXPECT_EQ(UraMetresToIndex(std::nextafter(kUpper[i], kInf)), i + 1);
  }
  EXPECT_EQ(UraMetresToIndex(-1), 0);
  EXPECT_EQ(UraMetresToIndex(7000), 15);
  EXPECT_EQ(UraMetresToIndex(kNaN), 15);
  // the same paragraph: X = 2^(1 + N/2) up to 6, 2^(N - 2) from 7 on
  for (unsigned char n = 0; n < 15; ++n)
    EXPECT_EQ(UraIndexToMetres(n), n < 7 ? std::pow(2, 1 + n / 2.0) : 1 << (n - 2));
  EXPECT_EQ(UraIndexToMetres(15), 1e99);
  EXPECT_EQ(UraIndexToMetres(255), 1e99);
}

TEST(GnssTables, FitIntervals) {
  // IS-GPS-200, table 20-XII; at the ends of each range and beyond
  constexpr struct {
    unsigned short iodc;
    float hours;
  } kCases[] = {{0, 6},    {239, 6},  {240, 8},  {247, 8},  {248, 14},  {255, 14},  {256, 4},  {495, 4},  {496, 14},
                {497, 26}, {503, 26}, {504, 50}, {510, 50}, {511, 74},  {512, 4},   {751, 4},  {752, 74}, {756, 74},
                {757, 98}, {758, 4},  {1000, 4}, {1020, 4}, {1021, 26}, {1023, 26}, {1024, 4}, {65535, 4}};
  for (const auto& c : kCases) {
    EXPECT_EQ(FitIntervalFromIodc(1, c.iodc), c.hours) << c.iodc;
    EXPECT_EQ(FitIntervalFromIodc(255, c.iodc), c.hours) << c.iodc;
    EXPECT_EQ(FitIntervalFromIodc(0, c.iodc), 4) << c.iodc;
    EXPECT_EQ(IsExtendedFitInterval(c.hours), c.hours != 4) << c.iodc;
  }
}

TEST(GnssTables, SignalInSpaceAccuracy) {
  constexpr struct {
    double metres;
    int index;
  } kCases[] = {{-1e-300, -1},       {0, 0},      {0.004, 0}, {0.006, 1},  {0.4949, 49}, {0.4949999999, 49},
                {0.49499999995, 50}, {0.495, 50}, {0.5, 50},  {0.52, 51},  {0.9899, 74}, {0.9899999999, 74},
                {0.98999999995, 75}, {0.99, 75},  {1.0, 75},  {1.98, 100}, {1.99, 100},  {2.0, 100},
                {2.08001, 101},      {5.93, 125}, {6.0, 125}, {6.01, -1},  {kInf, -1},   {kNaN, -1}};
  for (const auto& c : kCases) EXPECT_EQ(SisaMetresToIndex(c.metres), c.index) << c.metres;
  for (unsigned char i = 0; i < 126; ++i) {
    // Galileo OS SIS ICD, table of the signal-in-space accuracy, in hundredths of a metre
    const int centimetres = i < 50    ? i
                            : i < 75  ? 50 + (i - 50) * 2
                            : i < 100 ? 100 + (i - 75) * 4
                                      : 200 + (i - 100) * 16;
    EXPECT_DOUBLE_EQ(SisaIndexToMetres(i), centimetres / 100.0);
    EXPECT_EQ(SisaMetresToIndex(SisaIndexToMetres(i)), i);
  }
  EXPECT_EQ(SisaIndexToMetres(35), 0.35) << "not 35 * 0.01, which is another double";
  EXPECT_EQ(SisaIndexToMetres(126), 1e99);
  EXPECT_EQ(SisaIndexToMetres(255), 1e99);
}

TEST(GnssTables, DayPeriods) {
  constexpr struct {
    double seconds;
    unsigned int index;
  } kCases[] = {{719.4, 0},      {719.5, 1}, {172799.4, 239}, {172799.5, 0}, {4294967294.5, 4294967295U / 720 % 240},
                {4294968016, 0}, {-0.4, 0},  {-1e9, 0},       {1e300, 0},    {kNaN, 0}};
  for (const auto& c : kCases) EXPECT_EQ(DayPeriodIndex(c.seconds), c.index) << c.seconds;
}

TEST(GnssTables, KindsOfFix) {
  constexpr unsigned int kOfMode[] = {18, 10, 7, 11, 8, 9, 18};
  for (int code = 0; code < 7; ++code) EXPECT_EQ(ModeCodeToFixType(code), kOfMode[code]);
  EXPECT_EQ(FixTypeName(9), std::string("Zenlink"));
  EXPECT_EQ(FixTypeName(10), std::string("UNKNOWN"));
}

TEST(GnssTables, RangesOfValues) {
  constexpr struct {
    double value;
    bool bounded, inRange;
  } kCases[] = {{0, true, true},        {-0.0, true, true},  {-5e-324, false, false}, {30000, true, true},
                {30000.1, true, false}, {kInf, true, false}, {-kInf, false, false},   {kNaN, false, false}};
  for (const auto& c : kCases) {
    EXPECT_EQ(IsBoundedValue(c.value), c.bounded) << c.value;
    EXPECT_EQ(IsInRangeValue(c.value), c.inRange) << c.value;
  }
}

// Bit by bit: bit n of a word is bit position 30 - n.
unsigned int FieldBitByBit(unsigned int word, unsigned int first, unsigned int last) {
  unsigned int field = 0;
  for (unsigned int bit = first; bit <= std::min(last, 30U); ++bit) field = field << 1 | (word >> (30 - bit) & 1);
  return field;
}

TEST(GnssTables, WordFields) {
  for (const unsigned int word : {0U, 0xFFFFFFFFU, 0x22C0DE55U, 0x955B1A2CU})
    for (unsigned int first = 0; first < 40; ++first)
      for (unsigned int last = 0; last < 40; ++last) {
        const unsigned int field = FieldBitByBit(word, first, last);
        ASSERT_EQ(NavWordFieldU(word, first, last), field) << first << ".." << last;
        const int width = static_cast<int>(std::min(last, 30U)) - static_cast<int>(first) + 1;
        const bool negative = width > 0 && field >> (width - 1) != 0;
        ASSERT_EQ(NavWordFieldS(word, first, last), static_cast<long long>(field) - (negative ? 1LL << width : 0));
      }
  EXPECT_EQ(NavWordFieldU(0x3FFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF), 0U);
}

}  // namespace
