#include "textproto/FieldTokenizer.h"

#include <string>
#include <vector>

#include "tests/Cases.h"

namespace {

using t_Fields = std::vector<std::string>;

// All fields that the tokenizer hands out with the given buffer size, without the zeros behind them.
t_Fields Drain(C_FieldTokenizer& tokenizer, unsigned int outSize) {
  t_Fields fields;
  std::string out(outSize, 'x');
  while (tokenizer.GetNextField(out.data(), outSize) == 1) fields.push_back(out.substr(0, out.find('\0')));
  return fields;
}

const std::string kLongest(511, 'a');
const std::string kTooLong(512, 'a');

struct S_SplitCase {
  const char* name;
  std::string text;
  const char* delimiters;
  int count;
  t_Fields fields;
};

// clang-format off
const S_SplitCase kSplitCases[] = {
    {"Sentence",             "A,B*5C",               ",*", 3, {"A", "B", "5C"}},
    {"EmptyInTheMiddle",     "A,,B",                 ",*", 3, {"A", "", "B"}},
    {"EmptyFirst",           ",A",                   ",*", 2, {"", "A"}},
    {"EmptyLast",            "A,",                   ",*", 2, {"A", ""}},
    {"OneDelimiter",         ",",                    ",*", 2, {"", ""}},
    {"DelimitersOnly",       ",*,",                  ",*", 4, {"", "", "", ""}},
    {"Empty",                "",                     ",*", 0, {}},
    {"NoDelimiters",         "A,B",                  "",   1, {"A,B"}},
    {"TooManyDelimiters",    "A,B", "0123456789012345678901234567890123456789012345678901234,", 1, {"A,B"}},
    {"MostDelimiters",       "A,B", "012345678901234567890123456789012345678901234567890123,",  2, {"A", "B"}},
    {"LongestCountedField",  "A," + kLongest + ",B", ",*", 3, {"A", kLongest, "B"}},
    {"TooLongEndsTheCount",  "A," + kTooLong + ",B", ",*", 1, {"A", kTooLong, "B"}},
    {"JustBelowCapacity",    std::string(1023, 'a'), ",*", 0, {std::string(1023, 'a')}},
    {"AtCapacityIsEmpty",    std::string(1024, 'a'), ",*", 0, {}},
    {"HighBytes",            "\xFF,\x80",            ",*", 2, {"\xFF", "\x80"}},
};
// clang-format on

TEST_ROWS(Split, GivesCountAndFieldsHoweverTheTextIsSet, kSplitCases, c) {
  C_FieldTokenizer tokenizer(1024, 1);
  tokenizer.SetText(c.text.c_str());
  EXPECT_EQ(tokenizer.GetFieldCount(), -1) << "before delimiters are set";
  tokenizer.SetDelimiters(c.delimiters);
  EXPECT_EQ(tokenizer.GetFieldCount(), c.count);
  EXPECT_EQ(Drain(tokenizer, 1024), c.fields);

  ExactCopy copy(c.text);  // not NUL-terminated
  tokenizer.SetText(reinterpret_cast<const char*>(copy.Data()), copy.Size());
  EXPECT_EQ(tokenizer.GetFieldCount(), c.count);
  EXPECT_EQ(Drain(tokenizer, 1024), c.fields);

  C_FieldTokenizer uncounted(c.text.c_str(), c.delimiters, 1024, 0);
  EXPECT_EQ(uncounted.GetFieldCount(), -1);
  EXPECT_EQ(Drain(uncounted, 1024), c.fields);
}

TEST(FieldTokenizer, NulInsideEndsTheText) {
  C_FieldTokenizer tokenizer("", ",*", 64, 1);
  tokenizer.SetText("A,B\0C,D", 7);
  EXPECT_EQ(Drain(tokenizer, 8), (t_Fields{"A", "B"}));
}

TEST(FieldTokenizer, FieldOfTheBuffersSizeHasNoNulAndALongerOneIsPassedOver) {
  C_FieldTokenizer tokenizer("abcd,abcde,f", ",*", 64, 1);
  char out[] = "xxxxx";
  EXPECT_EQ(tokenizer.GetNextField(out, 4), 1);
  EXPECT_EQ(std::string(out), "abcdx");
  EXPECT_EQ(tokenizer.GetNextField(out, 4), 0);
  EXPECT_EQ(std::string(out, 5), std::string("\0\0\0\0x", 5));
  EXPECT_EQ(tokenizer.GetNextField(out, 4), 1);
  EXPECT_EQ(std::string(out), "f");
}

TEST(FieldTokenizer, NullKeepsCountAndDropsTheText) {
  C_FieldTokenizer tokenizer("A,B", ",*", 64, 1);
  tokenizer.SetText(nullptr);
  EXPECT_EQ(tokenizer.GetFieldCount(), 2);
  EXPECT_EQ(Drain(tokenizer, 8), t_Fields{});
  tokenizer.SetDelimiters(nullptr);
  EXPECT_EQ(tokenizer.GetFieldCount(), 2);
  EXPECT_EQ(tokenizer.IsDelimiter(','), 0);
  tokenizer.SetText("A,B");
  EXPECT_EQ(tokenizer.GetFieldCount(), 1);
  tokenizer.Clear();
  EXPECT_EQ(tokenizer.GetFieldCount(), -1);
}

TEST(FieldTokenizer, StopsAfter65535Fields) {
  const std::string commas(70000, ',');
  C_FieldTokenizer tokenizer(commas.c_str(), ",", 80000, 1);
  EXPECT_EQ(tokenizer.GetFieldCount(), 65535);
  EXPECT_EQ(Drain(tokenizer, 1).size(), 65535U);
}

TEST(FieldTokenizer, WithoutCapacityHoldsNoText) {
  C_FieldTokenizer tokenizer("A,B", ",", 0, 1);
  EXPECT_EQ(tokenizer.GetFieldCount(), 0);
  EXPECT_EQ(Drain(tokenizer, 8), t_Fields{});
}

}  // namespace
