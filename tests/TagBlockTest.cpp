#include "apps/velagnss/pipeline/TagBlock.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "ProgramRun.h"
#include "Streams.h"

namespace {

using nlohmann::json;

// "\\...*hh\\" with the checksum of a sentence.
std::string Tag(const std::string& parameters) {
  const std::string sentence = Sentence(parameters);
  return "\\" + sentence.substr(1, sentence.size() - 3) + "\\";
}

struct S_TagCase {
  const char* name;
  std::string before;
  const char* tag;  // without "raw"
  int strict;       // exit code of --strict
};
const std::string kNoise = "noise";
// clang-format off
const S_TagCase kTags[] = {
    {"All",       Tag("s:r1,d:c2,c:1609459200,g:1-2-34,n:5,r:6,t:a b"),
     R"({"checksum_ok":true,"source":"r1","destination":"c2","utc":"2021-01-01T00:00:00Z","group":"1-2-34","line":5,"relative_time":6,"text":"a b"})", 0},
    {"Milliseconds", Tag("c:1609459200125"),          R"({"checksum_ok":true,"utc":"2021-01-01T00:00:00.125Z"})", 0},
    {"Two",       Tag("s:a,n:1") + Tag("s:b"),        R"({"checksum_ok":true,"source":"b","line":1})",           0},
    {"NoNumber",  Tag("n:x,c:99999999999999999999"),  R"({"checksum_ok":true,"line":null,"utc":null})",          0},
    {"WrongSum",  "\\s:r1*00\\",                      R"({"checksum_ok":false})",                                1},
    {"NoSum",     "\\s:r1\\",                         R"({"checksum_ok":false})",                                1},
    {"AfterNoise", kNoise + Tag("s:r1"),              R"({"checksum_ok":true,"source":"r1"})",                   1},
    {"BeforeNoise", Tag("s:r1") + kNoise,             nullptr,                                                   1},
    {"OneDelimiter", "s:r1*00\\",                     nullptr,                                                   1},
    {"Control",   Tag("s:r\x01"),                     nullptr,                                                   1},
};
// clang-format on

TEST_ROWS_F(TagBlock, IsShownWithItsSentence, Program, kTags, row) {
  const std::string hdt = Sentence("GPHDT,1.5,T");
  Write("in", hdt + row.before + hdt);
  const Outcome outcome = Run("velagnss decode --strict in");
  EXPECT_EQ(outcome.code, row.strict);
  const json first = json::parse(outcome.output.substr(0, outcome.output.find('\n')));
  json second = json::parse(outcome.output.substr(outcome.output.find('\n')));
  EXPECT_FALSE(first.contains("tag"));
  ASSERT_EQ(second.contains("tag"), row.tag != nullptr);
  if (row.tag == nullptr) return;
  EXPECT_TRUE(row.before.ends_with(second["tag"]["raw"].get<std::string>()));
  second["tag"].erase("raw");
  EXPECT_EQ(second["tag"], json::parse(row.tag));
}

TEST_F(Program, DoesNotCountTagBlocksAsDamage) {
  Write("in", Tag("s:r1") + Sentence("GPHDT,1.5,T") + "noise" + Sentence("GPHDT,1.5,T"));
  const json stat = json::parse(Run("velagnss stat --json in").output);
  EXPECT_EQ(stat["bytes"]["damaged"], 5);
  EXPECT_EQ(Run("velagnss decode --events in | grep -o '\"why\":.*\"'").output,
            "\"why\":\"TAG blocks\"\n\"why\":\"noise\"\n");
}

}  // namespace
