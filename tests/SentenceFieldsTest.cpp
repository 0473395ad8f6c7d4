#include "textproto/SentenceFields.h"

#include <random>
#include <string>

#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "textproto/FieldTokenizer.h"

namespace {

using namespace velagnss::textproto;

constexpr std::size_t kMaxFields = 30;
constexpr std::size_t kMaxField = 64;
using t_Fields = C_SentenceFields<S_FieldLimits{kMaxFields, 1023, kMaxField}>;

// Texts with delimiters here and there, some of them with very long fields.
std::string RandomText(std::mt19937& random) {
  const std::size_t spacing = 1 + random() % (random() % 8 == 0 ? 700 : 20);
  std::string text(random() % (random() % 8 == 0 ? 20 : 1100), 'x');
  for (char& c : text)
    if (random() % spacing == 0) c = random() % 4 == 0 ? '*' : ',';
  return text;
}

// A decoder sees what the tokenizer hands out, until it hands out nothing.
TEST(SentenceFields, AreThoseOfTheTokenizer) {
  std::mt19937 random(20240606);
  GuardedPage page(2048);
  C_FieldTokenizer tokenizer("", ",*", 1024, 1);
  for (int i = 0; i < 20000; ++i) {
    const std::string text = RandomText(random);
    tokenizer.SetText(text.c_str());
    const std::size_t count = static_cast<std::size_t>(tokenizer.GetFieldCount());
    const unsigned char* const bytes = i % 2 == 0 ? page.AtEnd(text) : page.AtStart(text);
    const t_Fields fields({reinterpret_cast<const char*>(bytes), text.size()});
    ASSERT_EQ(fields.Count(), std::min(count, kMaxFields)) << text;
    std::size_t at = 0;
    char out[kMaxField + 1] = {};
    while (at < kMaxFields && tokenizer.GetNextField(out, kMaxField) == 1) {
      ASSERT_GT(fields.Readable(), at) << text;
      ASSERT_EQ(fields[at++], out) << text;
    }
    ASSERT_EQ(std::min(fields.Readable(), fields.Count()), at) << text;
  }
}

TEST(DelimiterMask, IsTheSameOnEveryProcessor) {
  std::mt19937 random(20240607);
  for (int i = 0; i < 1000; ++i) {
    char block[DelimiterMask::kBlock];
    for (char& c : block) c = static_cast<char>(random() % 3 == 0 ? "*+,-"[random() % 4] : random());
    ASSERT_EQ(DelimiterMask::Of(block), DelimiterMask::OneByOne(block));
  }
}

}  // namespace
