// The part of a stream that the program reads: windows of time, talkers, and what `extract` takes out of it.
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "ProgramRun.h"
#include "Streams.h"
#include "apps/velagnss/text/TimeRead.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

// --- Times as users write them ---

struct S_TimeCase {
  const char* name;
  const char* text;
  std::optional<unsigned int> mjd;
  double seconds;  // below 0: not a time
};
// clang-format off
const S_TimeCase kTimes[] = {
    {"DateTime",      "2024-05-18T12:00:01.25Z", 60448,        43201.25},
    {"WithoutZ",      "2000-01-01T00:00:00",     51544,        0},
    {"TimeOfDay",     "23:59:59.9999",           std::nullopt, 86399.9999},
    {"LeapDay",       "2023-02-29T00:00:00",     std::nullopt, -1},
    {"LeapSecond",    "23:59:60",                std::nullopt, -1},
    {"Hour24",        "24:00:00",                std::nullopt, -1},
    {"Signed",        "-1:00:00",                std::nullopt, -1},
    {"WithoutDigits", "12:00:00.",               std::nullopt, -1},
    {"Exponent",      "12:00:00.1e1",            std::nullopt, -1},
    {"DateAlone",     "2024-05-18",              std::nullopt, -1},
    {"Empty",         "",                        std::nullopt, -1},
};
// clang-format on
TEST_ROWS(UtcTime, IsRead, kTimes, row) {
  const std::optional<Host::S_UtcTime> time = Host::ParseUtc(row.text);
  ASSERT_EQ(time.has_value(), row.seconds >= 0);
  if (!time) return;
  EXPECT_EQ(time->mjd, row.mjd);
  EXPECT_EQ(time->ofDay, std::llround(row.seconds * 1e6));
}

// --- Windows and talkers ---

// A text before the first time, two epochs before midnight, the date, and two epochs after it, noise before the last.
std::string Night() {
  return Sentence("GNTXT,01,01,02,on") + Sentence("GPGGA,235958,,,,,0,,,,M,,M,,") + Sentence("GLGSV,1,1,00") +
         Sentence("GPZDA,235959.5,17,05,2024,00,00") + Sentence("PGRME,3.0,M,4.0,M,5.0,M") +
         Sentence("GPGGA,000000,,,,,0,,,,M,,M,,") + "noise" + Sentence("GPGGA,000001,,,,,0,,,,M,,M,,") +
         RtcmFrame(RtcmPayload(1006, 21));
}

struct S_SelectionCase {
  const char* name;
  const char* options;
  const char* messages;  // of those that pass
};
// clang-format off
const S_SelectionCase kSelections[] = {
    {"All",             "",                                                        "TXT GGA GSV ZDA PGRME GGA GGA RTCM1006 "},
    {"FromTime",        "--from 23:59:59",                                         "ZDA PGRME "},
    {"UntilTime",       "--until 23:59:59",                                        "TXT GGA GSV GGA GGA RTCM1006 "},
    {"EndIsExcluded",   "--from 00:00:00 --to 00:00:01Z",                          "GGA "},
    {"OverMidnight",    "--from 23:59:59.5 --until 00:00:00.001",                  "ZDA PGRME GGA "},
    {"FromDate",        "--from 2024-05-17",                                       "ZDA PGRME GGA GGA RTCM1006 "},
    {"UntilDate",       "--until 2024-05-18T00:00:00Z",                            "TXT GGA GSV ZDA PGRME "},
    {"DateOfTheUser",   "--from 2020-01-01 --until 2020-01-02T00:00:00 --date 2020-01-01", "GGA GSV "},
    {"DateTimes",       "--from 2024-05-17T23:59:59.5 --to 2024-05-18T00:00:01",   "ZDA PGRME GGA "},
    {"Talkers",         "--talker gl --talker gn,GX",                              "TXT GSV RTCM1006 "},
    {"Proprietary",     "--talker P --proto nmea",                                 "PGRME "},
    {"TalkerInAWindow", "--talker GP --from 23:59:58 --until 23:59:59.6",          "GGA ZDA "},
};
// clang-format on
TEST_ROWS_F(Selection, LetsPass, Program, kSelections, row) {
  Write("in", Night());
  const std::string options = row.options;
  std::string messages;
  std::istringstream lines(Run("velagnss decode in " + options).output);
  for (std::string line; std::getline(lines, line);)
    messages += json::parse(line).at("message").get<std::string>() + " ";
  EXPECT_EQ(messages, row.messages);
}

struct S_RefusedCase {
  const char* name;
  const char* command;
  int code;
  const char* message;
};
const S_RefusedCase kRefused[] = {
    {"NotATime", "velagnss stat --from noon in", 2, "--from: 'noon' is not a time; write 2024-"},
    {"DateAndTime", "velagnss stat --from 12:00:00 --to 2024-05-18T13:00:00 in", 2, "both have a date, or neither"},
    {"Backward", "velagnss decode --from 2024-05-18T12:00:00 --to 2024-05-18T11:00:00 in", 2, "later than --from"},
    {"SameDay", "velagnss stat --from 2024-05-18 --until 2024-05-18 in", 2, "a date alone is its 00:00:00"},
    {"NoSuchDay", "velagnss extract --until 2024-02-30 in", 2, "'2024-02-30' is not a time; write 2024-"},
    {"NotATalker", "velagnss convert --to nmea --talker GPS in", 2, "'GPS' is not a talker"},
    {"NothingWithin", "velagnss stat --from 05:00:00 --until 06:00:00 in", 1, "8 frames found, none within"},
    {"NothingConverted", "velagnss convert --to nmea --talker XX --from 23:59:58 in", 1, "8 frames found, none within"},
    {"NoTime", "tail -c 27 in | velagnss decode --until 12:00:00", 0, "the input carries no time"},
    {"NoDate", "head -c 60 in | velagnss decode --from 2024-05-18T12:00:00", 1, "the input carries no date"},
};
TEST_ROWS_F(SelectionOf, Nothing, Program, kRefused, row) {
  Write("in", Night());
  const Outcome outcome = Run(row.command);
  EXPECT_EQ(outcome.code, row.code);
  EXPECT_THAT(outcome.messages, HasSubstr(row.message));
}

// Windows side by side share nothing and lose nothing: their counts add up to those of the whole, damage included.
TEST_F(Program, WindowsAddUp) {
  const auto stat = [this](const std::string& window) {
    const json report = json::parse(Run("velagnss stat --json $S " + window).output);
    std::vector<long> counts;
    for (const char* path : {"/bytes/total", "/bytes/accepted", "/bytes/discarded", "/bytes/damaged", "/frames/good",
                             "/frames/bad", "/frames/decoded", "/integrity/skipped_ranges"})
      counts.push_back(report.at(json::json_pointer(path)).get<long>());
    return counts;
  };
  std::vector<long> sum = stat("--until 2024-05-18T23:59:00");
  const std::vector<long> rest = stat("--from 2024-05-18T23:59:00");
  for (std::size_t i = 0; i < sum.size(); ++i) {
    EXPECT_GT(rest[i], 0);
    sum[i] += rest[i];
  }
  EXPECT_EQ(sum, stat(""));
}

// The pieces of a stream, cut in the middle of a frame, together.
TEST_F(Program, StatAddsUpInputs) {
  const Outcome outcome =
      Run("head -c 200000 $S > a; tail -c +200001 $S > b; velagnss stat --json a b; velagnss stat --json $S");
  std::vector<json> reports;
  std::istringstream lines(outcome.output);
  for (std::string line; std::getline(lines, line);) reports.push_back(json::parse(line));
  ASSERT_EQ(reports.size(), 4);
  const json& total = reports[2];
  EXPECT_EQ(total["report"], "total");
  EXPECT_EQ(total["inputs"], 2);
  EXPECT_EQ(total["bytes"]["total"], reports[3]["bytes"]["total"]);
  EXPECT_EQ(total["frames"]["good"].get<int>() + 1, reports[3]["frames"]["good"]) << "the frame that was cut";
  EXPECT_EQ(total["messages"].size(), reports[3]["messages"].size());
  for (const char* path :
       {"/bytes/accepted", "/bytes/discarded", "/bytes/queued", "/bytes/damaged", "/frames/bad", "/frames/decoded",
        "/messages/0/count", "/integrity/checksum_errors", "/integrity/rejected_starts", "/integrity/skipped_ranges"}) {
    const json::json_pointer at(path);
    EXPECT_EQ(total[at], reports[0][at].get<int>() + reports[1][at].get<int>()) << path;
  }
  EXPECT_THAT(Run("velagnss stat a b").output, HasSubstr("\ntotal of 2 inputs\n  bytes                   372291\n"));
  EXPECT_THAT(Run("velagnss stat a -o o; cat o").output, testing::Not(HasSubstr("total")));
}

// --- The bytes of what is selected ---

// What comes out is a stream again: its records are those that went in, whatever the line ends were.
struct S_ExtractCase {
  const char* name;
  const char* options;
};
const S_ExtractCase kExtracts[] = {
    {"All", ""},
    {"Acknowledgements", "--acks --search nmea"},
    {"Sentences", "--proto nmea --talker GL"},
    {"Periods", "--msg GGA:30,BIN95"},
    {"OddLineEnds", "--search rd,pkvn"},
    {"Window", "--from 23:59:00 --until 00:01:00 --proto rtcm3,jrox,pkvn"},
};
TEST_ROWS_F(Extract, DecodesToTheSame, Program, kExtracts, row) {
  const std::string options = row.options;
  // What earlier frames say of a record may be gone with them.
  const std::string records = " | sed 's/\"offset\":[0-9]*,//; s/\"\\(lock\\|utc\\)\":[^,]*,//g'";
  const std::string input = row.name == std::string("OddLineEnds") ? "<(sed 's/\\r$//' $S)" : "$S";
  const std::string search = options.starts_with("--acks") ? options : "";
  const std::string expected = Run("velagnss decode --seed 2024-05-18 " + input + " " + options + records).output;
  EXPECT_GT(std::count(expected.begin(), expected.end(), '\n'), 50);
  EXPECT_EQ(
      Run("velagnss extract " + input + " " + options + " | velagnss decode --seed 2024-05-18 " + search + records)
          .output,
      expected);
}

TEST_F(Program, ExtractsAFileForEachProtocol) {
  Write("in", "\r\n" + Night() + Sentence("GPGLL,,,,,,V").replace(16, 2, "\n"));
  EXPECT_EQ(Run("velagnss extract in --split-by protocol -o o; ls").output, "err\nin\no.nmea\no.rtcm3\nout\nscript\n");
  EXPECT_EQ(Run("cat o.rtcm3").output, RtcmFrame(RtcmPayload(1006, 21)));
  EXPECT_EQ(Run("cat o.nmea").output, Run("velagnss convert --to nmea in").output);
  EXPECT_THAT(Run("cat o.nmea").output, testing::EndsWith(Sentence("GPGLL,,,,,,V")));
}

const S_RefusedCase kExtractFaults[] = {
    {"WithoutName", "velagnss extract --split-by protocol in", 2, "--split-by needs -o"},
    {"OverAnInput", "cp in o.nmea; velagnss extract --split-by protocol -o o o.nmea", 2, "o.nmea: is also an input"},
    {"NoFolder", "velagnss extract --split-by protocol -o missing/o in", 4, "missing/o.nmea: cannot be written"},
    {"NoInput", "velagnss extract --split-by protocol -o o missing", 3, "missing: cannot be opened"},
    {"NothingChosen", "velagnss extract --proto rd in", 1, "8 frames found, none matches"},
    {"Noise", "head -c 99 /dev/zero | velagnss extract", 1, "no frame in 99 bytes"},
    {"FullDisk", "velagnss extract in > /dev/full", 4, "No space left"},
};
TEST_ROWS_F(ExtractFaults, AreReported, Program, kExtractFaults, row) {
  Write("in", Night());
  const Outcome outcome = Run(row.command);
  EXPECT_EQ(outcome.code, row.code);
  EXPECT_THAT(outcome.messages, HasSubstr(row.message));
}

}  // namespace
