#include "textproto/FieldTokenizer.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/LibraryTwins.h"

namespace {

std::string Next(C_FieldTokenizer& tokenizer) {
  char out[9] = "--------";
  return tokenizer.GetNextField(out, 8) == 1 ? out : "none";
}

TEST(FieldTokenizer, SplitsAsTheCLibraryDoes) {
  // clang-format off
  const std::string kTexts[] = {
      "A,B*5C", "A,,B", ",A", "A,", ",", ",*,", "", "\xFF,\x80", "A," + std::string(511, 'a') + ",B",
      "A," + std::string(512, 'a') + ",B", std::string(1023, 'a'), std::string(1024, 'a'), "abcd,abcde,f",
  };
  // clang-format on
  const std::string kMostDelimiters = "012345678901234567890123456789012345678901234567890123,";
  for (const std::string& text : kTexts)
    for (const std::string& delimiters : {std::string(",*"), std::string(), kMostDelimiters, "4" + kMostDelimiters})
      for (const unsigned int outSize : {1U, 4U, 1024U})
        for (const unsigned int capacity : {0U, 64U, 1024U})
          for (const bool isCounting : {false, true})
            EXPECT_EQ(LibraryTwins::TokenizerDiffers(text, delimiters, capacity, isCounting, outSize), "") << text;
}

TEST(FieldTokenizer, NulInsideEndsTheText) {
  C_FieldTokenizer tokenizer("", ",*", 64, 1);
  tokenizer.SetText("A,B\0C,D", 7);
  EXPECT_EQ(tokenizer.GetFieldCount(), 2);
  EXPECT_EQ(Next(tokenizer), "A");
  EXPECT_EQ(Next(tokenizer), "B");
  EXPECT_EQ(Next(tokenizer), "none");
}

TEST(FieldTokenizer, NullKeepsCountAndDropsTheText) {
  C_FieldTokenizer tokenizer("A,B", ",*", 64, 1);
  tokenizer.SetText(nullptr);
  EXPECT_EQ(tokenizer.GetFieldCount(), 2);
  EXPECT_EQ(Next(tokenizer), "none");
  tokenizer.SetDelimiters(nullptr);
  EXPECT_EQ(tokenizer.GetFieldCount(), 2);
  EXPECT_EQ(tokenizer.IsDelimiter(','), 0);
  tokenizer.SetText("A,B");
  EXPECT_EQ(tokenizer.GetFieldCount(), 1);
  tokenizer.Clear();
  EXPECT_EQ(tokenizer.GetFieldCount(), -1);
  tokenizer.SetText("A,B");
  EXPECT_EQ(tokenizer.GetFieldCount(), -1) << "before delimiters are set";
  tokenizer.SetDelimiters(",");
  EXPECT_EQ(tokenizer.GetFieldCount(), 2);
}

TEST(FieldTokenizer, StopsAfter65535Fields) {
  const std::string commas(70000, ',');
  C_FieldTokenizer tokenizer(commas.c_str(), ",", 80000, 1);
  EXPECT_EQ(tokenizer.GetFieldCount(), 65535);
  for (int i = 0; i < 65535; ++i) ASSERT_EQ(Next(tokenizer), "");
  EXPECT_EQ(Next(tokenizer), "none");
}

}  // namespace
