#include "textproto/NumberText.h"

#include <gtest/gtest.h>

#include <random>

#include "geo/NotAvailable.h"
#include "tests/LibraryTwins.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

// Signs, blanks, points, exponents, halves and limits of every type; what is cut off, too large, too small or too long.
// clang-format off
const std::string kOddTexts[] = {
    "", " ", "   ", "12", " 12", "+12", "-1", "\t1", " \t\n 2.0,", "1.0", "5 5", "12+3", "+ 5", "+", "-", ".", "12A",
    "127", "128", "-128", "-129", "255", "256", "65535", "65536", "2147483647", "2147483648", "-2147483648",
    "-2147483649", "4294967295", "4294967296", "9223372036854775807", "-9223372036854775808", "9223372036854775808",
    "-9223372036854775809", "99999999999999999999999", "12-34", "5c*", "0X5C", "0x", "0xG", "5G", "00FFFFFFFF",
    "100000000", "G5", "-0", "+1.5", ".5", "5.", "1e2 ", "1E-2", "1.2.3", "1.5d3", "1,5", "1e", "1.5E+", "1ee5",
    "1.7976931348623157e308", "1.7976931348623158e308", "1.7976931348623159e308", "1e99999999999999999999",
    "0e999999999999999999", "4e-320", "-2e-324", "1e-9999999999999", "0." + std::string(400, '0') + "1e401",
    std::string(400, '9') + "e-400", "12345678901234567890", "9007199254740993.00000000000000000000000001", "0x1.8p3",
    "-0XAg", "0x1p1024", "0x1p-1076", "0x1p", "-Infinity", "INF.", "infin", "nan", "\x10" "x1",
    std::string(300, '0') + "12",
};
// clang-format on

// Digits with a point somewhere, sometimes with an exponent.
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

// The characters that pass the check of a number's field, in any order.
std::string RandomField(std::mt19937_64& random) {
  constexpr std::string_view kAllowed = " +-.0123456789DEde";
  std::string text(1 + random() % 12, ' ');
  for (char& c : text) c = kAllowed[random() % kAllowed.size()];
  return text;
}

TEST(NumberText, ReadsAsTheCLibraryDoes) {
  std::vector<std::string> texts(std::begin(kOddTexts), std::end(kOddTexts));
  std::mt19937_64 random(20240601);
  for (int i = 0; i < 100000; ++i) texts.push_back(i % 2 == 0 ? RandomNumber(random) : RandomField(random));
  for (const std::string& text : texts) {
    ASSERT_EQ(LibraryTwins::ScansDiffer(text), "") << text;
    ASSERT_EQ(LibraryTwins::FieldsDiffer(text), "") << text;
  }
}

TEST(NumberText, WritesAsTheCLibraryDoes) {
  std::mt19937_64 random(20240602);
  const double kSpecial[] = {
      0.0,  -0.0,  0.5,     1.5,     2.5,    0.125,     0.375, 0.05, 59.999999995, 999999999.99999999,
      1e9,  1e308, -1e308,  5e-324,  kInf,   -kInf,     0.25,  0.75, -0.001,       -0.5,
      9.95, 99.95, 0x1p-80, 0x1p-81, 0x1p63, NA_DOUBLE, 1e22,  -1.5, 1e15,         -2.5};
  for (unsigned int i = 0; i < 200000; ++i) {
    const double scale = std::pow(10.0, static_cast<int>(random() % 24) - 12);
    double value = static_cast<double>(static_cast<long long>(random())) * 0x1p-63 * scale;
    if (i % 5 == 0) value = static_cast<double>(random() % 20000) / 16 - 600;  // halves
    if (i < 30 * 9) value = kSpecial[i / 9];
    const long long integer = static_cast<long long>(random()) >> (random() % 64);
    const auto width = static_cast<unsigned int>(random() % 14);
    ASSERT_EQ(LibraryTwins::WritersDiffer(value, integer, i % 9, width), "") << value << ' ' << integer;
  }
}

}  // namespace
