#include "framing/Base64.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "tests/Cases.h"

namespace {

using namespace std::string_view_literals;

constexpr char kUntouched = '~';

struct S_TextCase {
  const char* name;
  std::string_view bytes;
  const char* text;
};

constexpr S_TextCase kTexts[] = {
    {"Empty", "", ""},  // RFC 4648, section 10, as the six that follow
    {"F", "f", "Zg=="},
    {"Fo", "fo", "Zm8="},
    {"Foo", "foo", "Zm9v"},
    {"Foob", "foob", "Zm9vYg=="},
    {"Fooba", "fooba", "Zm9vYmE="},
    {"Foobar", "foobar", "Zm9vYmFy"},
    {"M", "M", "TQ=="},
    {"Ma", "Ma", "TWE="},
    {"AllOnes", "\xFF\xFF\xFF", "////"},
    {"LastOfTheAlphabet", "\xFB\xEF\xBE", "++++"},
    {"Zeros", "\0\0\0\0"sv, "AAAAAA=="},
};

class Base64 : public testing::TestWithParam<S_TextCase> {};

TEST_P(Base64, EncodesIntoEveryCapacity) {
  const S_TextCase& row = GetParam();
  const std::string text = row.text;
  ExactCopy source(row.bytes);
  for (unsigned int capacity = 1; capacity < text.size() + 6; ++capacity) {
    std::vector<char> dest(capacity, kUntouched);
    const unsigned int written = UTIL::Base64Encode(source.Data(), source.Size(), dest.data(), capacity);
    if (capacity > text.size()) {
      EXPECT_EQ(written, text.size());
      EXPECT_STREQ(dest.data(), row.text) << "capacity " << capacity;
    } else {
      EXPECT_EQ(written, 0U) << "capacity " << capacity;
      EXPECT_EQ(std::count(dest.begin(), dest.end(), kUntouched), capacity);
    }
  }
}

TEST_P(Base64, DecodesWithAndWithoutPadding) {
  const S_TextCase& row = GetParam();
  std::string text = row.text;
  for (;; text.pop_back()) {
    std::string dest(row.bytes.size(), kUntouched);
    EXPECT_EQ(UTIL::Base64Decode(text.c_str(), reinterpret_cast<unsigned char*>(dest.data()),
                                 static_cast<unsigned int>(dest.size())),
              row.bytes.size());
    EXPECT_EQ(dest, row.bytes) << text;
    if (text.empty() || text.back() != '=') break;
  }
}

INSTANTIATE_TEST_SUITE_P(Rfc4648, Base64, testing::ValuesIn(kTexts), CaseName<S_TextCase>);

struct S_DecodeCase {
  const char* name;
  const char* text;
  unsigned int capacity;
  unsigned int written;
  std::string_view dest;  // what the buffer of eight holds afterwards
};

constexpr S_DecodeCase kDecodes[] = {
    {"SingleLeftover", "T", 8, 0, "~~~~~~~~"},
    {"SingleLeftoverBehindAGroup", "Zm9vY", 8, 3, "foo~~~~~"},
    {"PadAfterOne", "Zm9vY===", 8, 3, "foo~~~~~"},
    {"PadFirst", "=Zm9v", 8, 0, "~~~~~~~~"},
    {"NothingCountsBehindThePad", "TWE=#\n", 8, 2, "Ma~~~~~~"},
    {"PadInsideAGroupEndsIt", "TW=E", 8, 1, "M~~~~~~~"},
    {"ForeignCharacterLater", "Zm9vZ-==", 8, 0, "foo~~~~~"},
    {"UnusedBitsDoNotCount", "Zh==", 8, 1, "f~~~~~~~"},
    {"OneByteTooMany", "Zm9vYg==", 3, 0, "~~~~~~~~"},
    {"ExactCapacity", "Zm9vYg==", 4, 4, "foob~~~~"},
    {"CapacityCountsBadCharactersToo", "####", 2, 0, "~~~~~~~~"},
};

TEST_ROWS(Base64Decode, WritesWholeGroupsOnly, kDecodes, row) {
  std::string dest(8, kUntouched);
  EXPECT_EQ(UTIL::Base64Decode(row.text, reinterpret_cast<unsigned char*>(dest.data()), row.capacity), row.written);
  EXPECT_EQ(dest, row.dest);
}

TEST(Base64Alphabet, TakesNothingElse) {
  const std::string_view alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int c = 1; c < 256; ++c) {
    unsigned char dest[3] = {};
    const char text[] = {'Z', 'm', '9', static_cast<char>(c), 0};
    const bool isGood = alphabet.find(text[3]) != std::string_view::npos;
    EXPECT_EQ(UTIL::Base64Decode(text, dest, 3), isGood ? 3U : c == '=' ? 2U : 0U) << c;
  }
}

TEST(Base64Limits, NullAndLengthsBeyondAnyBufferAreRefused) {
  unsigned char byte = 'x';
  char text[8] = "~~~~~~~";
  EXPECT_EQ(UTIL::Base64Encode(nullptr, 0, text, sizeof text), 0U);
  EXPECT_EQ(UTIL::Base64Encode(&byte, 1, nullptr, 8), 0U);
  EXPECT_EQ(UTIL::Base64Encode(&byte, 0xFFFFFFFF, text, sizeof text), 0U);
  EXPECT_EQ(UTIL::Base64Decode(nullptr, &byte, 1), 0U);
  EXPECT_EQ(UTIL::Base64Decode("TQ==", nullptr, 1), 0U);
  EXPECT_STREQ(text, "~~~~~~~");
  EXPECT_EQ(byte, 'x');
}

}  // namespace
