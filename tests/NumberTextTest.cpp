#include "textproto/NumberText.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include "geo/NotAvailable.h"
#include "tests/CLocale.h"
#include "tests/Cases.h"

namespace {

using namespace velagnss::textproto::NumberText;

constexpr double kInf = std::numeric_limits<double>::infinity();

template <class Value>
struct S_ScanCase {
  const char* name;
  std::string text;
  std::size_t used;
  Value value;
};

// clang-format off
const S_ScanCase<double> kDoubleCases[] = {
    {"Blanks",               " \t\n 2.0,",             7,   2.0},
    {"Sign",                 "+1.5",                   4,   1.5},
    {"NegativeZero",         "-0",                     2,   -0.0},
    {"NoIntegerDigits",      ".5",                     2,   0.5},
    {"NoFractionDigits",     "5.",                     2,   5.0},
    {"ExponentBothCases",    "1e2 ",                   3,   100.0},
    {"ExponentSigned",       "1E-2",                   4,   0.01},
    {"SecondPointEnds",      "1.2.3",                  3,   1.2},
    {"LetterDEnds",          "1.5d3",                  3,   1.5},
    {"Comma",                "1,5",                    1,   1.0},
    {"CutExponent",          "1e",                     0,   0},
    {"CutSignedExponent",    "1.5E+",                  0,   0},
    {"TwoExponentLetters",   "1ee5",                   0,   0},
    {"LonePoint",            ".",                      0,   0},
    {"LoneSign",             "-",                      0,   0},
    {"BlankBehindSign",      "+ 5",                    0,   0},
    {"Empty",                "",                       0,   0},
    {"LargestFinite",        "1.7976931348623157e308", 22,  0x1.fffffffffffffp1023},
    {"RoundsDownToLargest",  "1.7976931348623158e308", 22,  0x1.fffffffffffffp1023},
    {"Overflow",             "1.7976931348623159e308", 0,   0},
    {"FarOverflow",          "1e99999999999999999999", 0,   0},
    {"ZeroTimesAnything",    "0e999999999999999999",   20,  0.0},
    {"Subnormal",            "4e-320",                 6,   4e-320},
    {"Underflow",            "-2e-324",                7,   -0.0},
    {"FarUnderflow",         "1e-9999999999999",       16,  0.0},
    {"ManyZerosMadeUpFor",   "0." + std::string(400, '0') + "1e401",  407, 1.0},
    {"ManyDigits",           std::string(400, '9') + "e-400",         405, 1.0},
    {"TwentyDigits",         "12345678901234567890",   20,  12345678901234567890.0},
    {"HalfwayByTheLastDigit", "9007199254740993.00000000000000000000000001", 43, 9007199254740994.0},
    {"Hexadecimal",          "0x1.8p3",                7,   12.0},
    {"HexadecimalNoExponent", "-0XAg",                 4,   -10.0},
    {"HexadecimalOverflow",  "0x1p1024",               0,   0},
    {"HexadecimalUnderflow", "0x1p-1076",              9,   0.0},
    {"HexadecimalCut",       "0x",                     0,   0},
    {"HexadecimalCutExponent", "0x1p",                 0,   0},
    {"Infinity",             "-Infinity",              9,   -kInf},
    {"InfinityShort",        "INF.",                   3,   kInf},
    {"InfinityCut",          "infin",                  0,   0},
    {"NotATen",              "\x10" "x1",              0,   0},
};

const S_ScanCase<unsigned int> kHexCases[] = {
    {"Digits",        "5c*",        2,  0x5C},
    {"Prefix",        "0X5C",       4,  0x5C},
    {"PrefixOnly",    "0x",         0,  0},
    {"PrefixNoDigit", "0xG",        0,  0},
    {"Blank",         " 5",         2,  5},
    {"EndsAtLetter",  "5G",         1,  5},
    {"Largest",       "00FFFFFFFF", 10, 0xFFFFFFFF},
    {"TooLarge",      "100000000",  0,  0},
    {"Negative",      "-1",         2,  0xFFFFFFFF},
    {"No",            "G5",         0,  0},
};

const S_ScanCase<long long> kS64Cases[] = {
    {"Largest",    "9223372036854775807",   19, 9223372036854775807},
    {"Smallest",   "-9223372036854775808",  20, -9223372036854775807 - 1},
    {"TooLarge",   "9223372036854775808",   0,  0},
    {"TooSmall",   "-9223372036854775809",  0,  0},
    {"FarTooLong", "99999999999999999999999", 0, 0},
    {"EndsAtDash", "12-34",                 2,  12},
};
// clang-format on

template <class Value>
void ExpectScan(std::size_t (*scan)(std::string_view, Value&), const S_ScanCase<Value>& c) {
  ExactCopy copy(c.text);
  Value value = 77;
  EXPECT_EQ(scan({reinterpret_cast<const char*>(copy.Data()), copy.Size()}, value), c.used);
  if (c.used == 0)
    EXPECT_EQ(value, 77) << "written on failure";
  else
    EXPECT_EQ(std::memcmp(&value, &c.value, sizeof value), 0) << value;
}

TEST_ROWS(Double, Scan, kDoubleCases, row) { ExpectScan(ScanDouble, row); }

TEST_ROWS(Hex32, Scan, kHexCases, row) { ExpectScan(ScanHex32, row); }

TEST_ROWS(Signed64, Scan, kS64Cases, row) { ExpectScan(ScanS64, row); }

// Random texts of numbers: digits with a point somewhere, sometimes with an exponent.
std::string RandomNumber(std::mt19937_64& random) {
  std::string text = random() % 4 == 0 ? "-" : "";
  const std::uint64_t whole = random() % 20;
  const std::uint64_t fraction = random() % 20;
  for (std::uint64_t i = 0; i < whole; ++i) text += static_cast<char>('0' + random() % 10);
  if (fraction > 0) text += '.';
  for (std::uint64_t i = 0; i < fraction; ++i) text += static_cast<char>('0' + random() % 10);
  if (random() % 3 == 0) text.append("e").append(std::to_string(static_cast<int>(random() % 680) - 340));
  return text;
}

TEST(NumberText, ReadsDoublesAsTheCLibraryDoes) {
  const CLocale locale;
  std::mt19937_64 random(20240601);
  for (int i = 0; i < 200000; ++i) {
    const std::string text = RandomNumber(random);
    char* end;
    const double expected = std::strtod(text.c_str(), &end);
    const bool isRefused = end == text.c_str() || std::isinf(expected);
    double value = 0;
    ASSERT_EQ(ScanDouble(text, value), isRefused ? 0 : end - text.c_str()) << text;
    if (!isRefused) {
      ASSERT_EQ(std::memcmp(&value, &expected, sizeof value), 0) << text;
    }
  }
}

TEST(NumberText, WritesAsTheCLibraryDoes) {
  const CLocale locale;
  std::mt19937_64 random(20240602);
  const double kSpecial[] = {
      0.0,  -0.0,  0.5,     1.5,     2.5,    0.125,     0.375, 0.05, 59.999999995, 999999999.99999999,
      1e9,  1e308, -1e308,  5e-324,  kInf,   -kInf,     0.25,  0.75, -0.001,       -0.5,
      9.95, 99.95, 0x1p-80, 0x1p-81, 0x1p63, NA_DOUBLE, 1e22,  -1.5, 1e15,         -2.5};
  char expected[512];
  char actual[512];
  for (int i = 0; i < 200000; ++i) {
    const double scale = std::pow(10.0, static_cast<int>(random() % 24) - 12);
    double value = static_cast<double>(static_cast<long long>(random())) * 0x1p-63 * scale;
    if (i % 5 == 0) value = static_cast<double>(random() % 20000) / 16 - 600;  // halves
    if (i < 30 * 9) value = kSpecial[i / 9];
    const int decimals = i % 9;
    const int width = std::isfinite(value) ? static_cast<int>(random() % 14) : 0;
    std::snprintf(expected, sizeof expected, "%0*.*f", width, decimals, value);
    *WriteFixed(actual, value, decimals, width) = '\0';
    ASSERT_STREQ(actual, expected) << "decimals " << decimals << " width " << width;
    const long long integer = static_cast<long long>(random()) >> (random() % 64);
    std::snprintf(expected, sizeof expected, "%0*lld", width, integer);
    *WriteInteger(actual, integer, width) = '\0';
    ASSERT_STREQ(actual, expected);
  }
}

}  // namespace
