#include "apps/velagnss/text/JsonWriter.h"

#include <bit>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <random>

#include "Cases.h"

namespace {

using nlohmann::json;

// What a reader of JSON makes of each byte: the character of the same number, in UTF-8.
std::string AsUtf8(unsigned char byte) {
  if (byte < 0x80) return {static_cast<char>(byte)};
  return {static_cast<char>(0xC0 | byte >> 6), static_cast<char>(0x80 | (byte & 0x3F))};
}

TEST(JsonWriter, EveryByteReadsBack) {
  for (unsigned int byte = 0; byte < 256; ++byte) {
    const char wire[] = {'a', static_cast<char>(byte), 'z'};
    Host::C_JsonWriter writer;
    writer.String({wire, 3});
    for (const char c : writer.Text()) EXPECT_TRUE(c >= 0x20 && c < 0x7F) << byte;
    EXPECT_EQ(json::parse(writer.Text()).get<std::string>(),
              AsUtf8('a').append(AsUtf8(static_cast<unsigned char>(byte))).append("z"));
  }
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

TEST(JsonWriter, AnyDoubleReadsBackTheSame) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 20000; ++i) {
    const auto value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    Host::C_JsonWriter writer;
    writer.Number(value);
    EXPECT_EQ(std::bit_cast<std::uint64_t>(json::parse(writer.Text()).get<double>()),
              std::bit_cast<std::uint64_t>(value));
  }
}

TEST(JsonWriter, GrowsBeyondItsFirstBuffer) {
  Host::C_JsonWriter writer;
  const std::string text(3'000'000, '\x01');
  writer.String(text);
  EXPECT_EQ(json::parse(writer.Text()).get<std::string>(), text);
}

}  // namespace
