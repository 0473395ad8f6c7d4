#include "apps/velagnss/text/JsonWriter.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

#include "Cases.h"

namespace {

using nlohmann::json;

// What a reader of JSON makes of each byte: the character of the same number, in UTF-8.
std::string AsUtf8(unsigned char byte) {
  if (byte < 0x80) return {static_cast<char>(byte)};
  return {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
}

// At every place: long texts are looked at eight bytes at a time.
TEST(JsonWriter, EveryByteReadsBack) {
  const std::string plain = "abcdefghi";
  for (unsigned int byte = 0; byte < 256; ++byte) {
    for (std::size_t at = 0; at < plain.size(); ++at) {
      std::string wire = plain;
      wire[at] = static_cast<char>(byte);
      Host::C_JsonWriter writer;
      writer.String(wire);
      for (const char c : writer.Text()) EXPECT_TRUE(c >= 0x20 && c < 0x7F) << byte;
      const std::string expected = std::string(plain).replace(at, 1, AsUtf8(static_cast<unsigned char>(byte)));
      EXPECT_EQ(json::parse(writer.Text()).get<std::string>(), expected);
    }
  }
}

struct S_NameCase {
  const char* name;
  std::string_view text;
  const char* json;
};
constexpr S_NameCase kNames[] = {
    {"Ascii", "a\"b\n", R"("a\"b\n")"},
    {"TwoBytes",
     "Stra\xC3\x9F"
     "e",
     R"("Stra\u00dfe")"},
    {"ThreeBytes", "\xE6\xB8\xAC.bin", R"("\u6e2c.bin")"},
    {"FourBytes", "\xF0\x9F\x9B\xB0", R"("\ud83d\udef0")"},
    {"ControlOfUnicode", "\xC2\x9B", R"("\u009b")"},
    {"Latin1", "\xDF\xC3\x9F", R"("\u00df\u00c3\u009f")"},
    {"CutOff", "a\xC3", R"("a\u00c3")"},
    {"Overlong", "\xC0\xAF", R"("\u00c0\u00af")"},
    {"Surrogate", "\xED\xA0\x80", R"("\u00ed\u00a0\u0080")"},
    {"BeyondUnicode", "\xF4\x90\x80\x80", R"("\u00f4\u0090\u0080\u0080")"},
};
TEST_ROWS(JsonUtf8, Text, kNames, row) {
  Host::C_JsonWriter writer;
  writer.Utf8(row.text);
  EXPECT_EQ(writer.Text(), row.json);
}

struct S_NumberCase {
  const char* name;
  double value;
  const char* text;
};
constexpr S_NumberCase kNumbers[] = {
    {"MinusZero", -0.0, "-0"},
    {"Tenth", 0.1, "0.1"},
    {"ShortestOfManyDigits", 51.477893333333334, "51.477893333333334"},
    {"Infinity", std::numeric_limits<double>::infinity(), "null"},
    {"NotANumber", std::numeric_limits<double>::quiet_NaN(), "null"},
};
TEST_ROWS(JsonNumber, Text, kNumbers, row) {
  Host::C_JsonWriter writer;
  writer.Number(row.value);
  EXPECT_EQ(writer.Text(), row.text);
}

void ExpectShortest(double value) {
  char expected[32];
  Host::C_JsonWriter writer;
  writer.Number(value);
  EXPECT_EQ(writer.Text(), std::string_view(expected, std::to_chars(expected, std::end(expected), value).ptr));
}

// Powers of two have a neighbor at half the distance, numbers with few bits lie halfway between decimals.
TEST(JsonWriter, NumbersAreTheShortestThatReadBack) {
  std::mt19937_64 random(1);
  for (int exponent = -60; exponent < 70; ++exponent) {
    for (unsigned int bits = 0; bits <= 52; ++bits) {
      const double value = std::ldexp(static_cast<double>(1 + (random() >> 12 >> (52 - bits))), exponent);
      for (const double near : {value, std::nextafter(value, 0), -std::nextafter(value, 2 * value)})
        ExpectShortest(near);
    }
  }
  for (int i = 0; i < 20000; ++i) {
    const auto any = std::bit_cast<double>(random());
    if (std::isfinite(any)) ExpectShortest(any);
    ExpectShortest(static_cast<double>(random() % 100'000'000'000) / std::pow(10, i % 12));
    ExpectShortest(static_cast<double>(i) * std::pow(10, i % 7));
  }
}

TEST(JsonWriter, GrowsBeyondItsFirstBuffer) {
  Host::C_JsonWriter writer;
  const std::string text(3'000'000, '\x01');
  writer.String(text);
  EXPECT_EQ(json::parse(writer.Text()).get<std::string>(), text);
}

}  // namespace
