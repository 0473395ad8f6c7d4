// The dates of sentences: from the stream, from --date, across midnight.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "ProgramRun.h"
#include "Streams.h"

namespace {

struct S_DateCase {
  const char* name;
  const char* options;
  std::vector<const char*> sentences;
  std::vector<const char*> utc;  // of each; null for none
};
// clang-format off
const S_DateCase kDates[] = {
    {"NoDate",         "", {"GPGGA,120000.5,,,,,0,,,,M,,M,,"}, {nullptr}},
    {"AllDigits",      "", {"GPZDA,120000.1234,18,05,24,00,00", "GPGST,120000.1234,,,,,,,"},
                           {"2024-05-18T12:00:00.1234Z", "2024-05-18T12:00:00.1234Z"}},
    {"NotBeforeIt",    "", {"GPGLL,,,,,115959,V,N", "GPZDA,120000,18,05,2024,00,00", "GPHDT,1.5,T"}, {nullptr, "2024-05-18T12:00:00Z", nullptr}},
    {"VoidRmc",        "", {"GPRMC,120000,V,,,,,,,180524,,,N"}, {nullptr}},
    {"OverMidnight",   "", {"GPZDA,235959,31,12,2024,00,00", "GPGST,000000,,,,,,,", "GPGGA,000001,,,,,0,,,,M,,M,,", "GPGBS,235959,,,,,,,"},
                           {"2024-12-31T23:59:59Z", "2025-01-01T00:00:00Z", "2025-01-01T00:00:01Z", "2024-12-31T23:59:59Z"}},
    {"LeapSecond",     "", {"GPZDA,235960.5,31,12,2016,00,00"}, {"2016-12-31T23:59:60.5Z"}},
    {"GivenDate",      "--date 2024-02-28", {"GPGGA,235959,,,,,0,,,,M,,M,,", "GPGGA,000000,,,,,0,,,,M,,M,,"}, {"2024-02-28T23:59:59Z", "2024-02-29T00:00:00Z"}},
    {"StreamKnowsBetter", "--date 2024-02-28", {"GPGGA,235959,,,,,0,,,,M,,M,,", "GPZDA,000000,01,06,2020,,"}, {"2024-02-28T23:59:59Z", "2020-06-01T00:00:00Z"}},
};
// clang-format on

TEST_ROWS_F(SentenceDates, AreThoseOfTheStream, Program, kDates, row) {
  std::string stream;
  for (const char* sentence : row.sentences) stream += Sentence(sentence);
  Write("in", stream);
  std::istringstream lines(Run(std::string("velagnss decode in ") + row.options).output);
  std::string line;
  for (const char* utc : row.utc) {
    std::getline(lines, line);
    EXPECT_EQ(nlohmann::json::parse(line).value("utc", "none"), utc == nullptr ? "none" : utc) << line;
  }
}

// The weeks of ephemerides as well as the points of a track.
TEST_F(Program, DatesWeeksAndTracks) {
  EXPECT_EQ(Run("velagnss decode --search bin --msg BIN95 --date 2024-05-18 $S").output,
            Run("velagnss decode --search bin --msg BIN95 --seed 2024-05-18 $S").output);
  Write("in", Sentence("GPGLL,0100.00,N,00200.00,E,120000,A,A"));
  EXPECT_THAT(Run("velagnss convert --to gpx --date 2024-05-18 in").output,
              testing::HasSubstr("<time>2024-05-18T12:00:00Z</time>"));
}

}  // namespace
