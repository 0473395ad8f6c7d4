// The built program from outside: its exit codes, its messages, its output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "HostData.h"
#include "JsonSchema.h"
#include "ProgramRun.h"
#include "apps/velagnss/input/Progress.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<json> Lines(const std::string& text) {
  std::vector<json> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(json::parse(line));
  return lines;
}

struct S_ExitCase {
  const char* name;
  const char* command;
  int code;
  const char* message;  // part of standard error
};
constexpr char kNone[] = "";

// clang-format off
const S_ExitCase kExits[] = {
    {"AllGood",             "velagnss decode $S",                               0, kNone},
    {"Help",                "velagnss decode --help",                           0, kNone},
    {"Version",             "velagnss --version",                               0, kNone},
    {"NoCommand",           "velagnss",                                         2, "--help"},
    {"UnknownCommand",      "velagnss dekode $S",                               2, "velagnss --help"},
    {"UnknownOption",       "velagnss decode --nonsense $S",                    2, "velagnss decode --help"},
    {"EnormousCount",       "velagnss decode -n 99999999999999999999999 $S",    2, "-n"},
    {"PercentOfNothing",    "velagnss stat --max-bad nan $S",                   2, "--max-bad"},
    {"CountOfNone",         "velagnss decode -n 0 $S",                          2, "a whole number, 1 or more, not '0'"},
    {"ReadSizeZero",        "velagnss stat --read-size 0 $S",                   2, "--read-size"},
    {"QuietAndVerbose",     "velagnss -q -v decode $S",                         2, "excludes"},
    {"UnknownProtocol",     "velagnss decode --proto ubx $S",                   2, "nmea"},
    {"UnknownMessage",      "velagnss decode --msg GGX $S",                     2, "GGX"},
    {"BadPeriod",           "velagnss decode --msg GGA:fast $S",                2, "GGA:10"},
    {"SeedWithoutSeconds",  "velagnss decode --seed 2300 $S",                   2, "2300:345600"},
    {"SeedBeyondTheWeek",   "velagnss decode --seed 2300:604800 $S",            2, "--seed"},
    {"UnknownSearch",       "velagnss stat --search nmea,ubx $S",               2, "'nmea,ubx'"},
    {"OutputIsInput",       "cp $S a; velagnss decode a -o ./a",                2, "also an input"},
    {"MissingFile",         "velagnss decode missing",                          3, "missing: cannot be opened: No such file"},
    {"Directory",           "velagnss stat .",                                  3, "is a directory"},
    {"OneOfTwoMissing",     "velagnss decode missing $S",                       3, "missing"},
    {"PatternWithoutFile",  "velagnss decode '*.nmea'",                         3, "no file matches this pattern"},
    {"EmptyFile",           "touch e; velagnss decode e",                       1, "e: is empty"},
    {"EmptyInput",          "velagnss decode < /dev/null",                      1, "standard input: is empty"},
    {"NoiseOnly",           "head -c 100000 /dev/zero | velagnss decode",       1, "no frame in 100000 bytes"},
    {"NothingPassed",       "velagnss decode --msg ACK $S",                     1, "passed"},
    {"Strict",              "velagnss decode --strict $S",                      1, "faults in the data"},
    {"StrictAndGood",       "head -c 171 $S | velagnss decode --strict",        0, kNone},
    {"StatNoise",           "head -c 1000 /dev/zero | velagnss stat",           1, "no frame in 1000 bytes"},
    {"TooBad",              "velagnss stat --max-bad 0.1 $S",                   1, "--max-bad"},
    {"NotTooBad",           "velagnss stat --max-bad 5 $S",                     0, kNone},
    {"EncodesAll",          "velagnss decode --msg GGA,RMC $S | velagnss encode --strict", 0, kNone},
    {"EncodeNames",         "printf '\\n[]\\n' | velagnss encode",                1, "standard input, line 2: not a JSON object"},
    {"EncodeNothing",       "velagnss decode --msg BIN95 $S | velagnss encode", 1, "objects skipped"},
    {"EncodeStrict",        "velagnss decode $S | velagnss encode --strict",    1, "line 5: protocol: \"bin\" is not encoded"},
    {"EncodeLongLine",      "head -c 3000000 /dev/zero | tr '\\0' '[' | velagnss encode", 1, "line 1: longer"},
    {"EncodeFullDisk",      "velagnss decode $S | velagnss -q encode > /dev/full", 4, "No space left on device"},
    {"GeoWithoutCommand",   "velagnss geo",                                     2, "velagnss geo --help"},
    {"GeoUnknownForm",      "velagnss geo convert --from utm 1 2 3",            2, "velagnss geo convert --help"},
    {"GeoEmpty",            "velagnss geo convert < /dev/null",                 1, "standard input: is empty"},
    {"GeoFullDisk",         "velagnss geo convert 0 0 0 > /dev/full",           4, "No space left on device"},
    {"NoStandardInput",     "velagnss decode <&-",                              3, "standard input"},
    {"NoStandardOutput",    "velagnss decode $S >&-",                           4, "standard output"},
    {"NoneNeeded",          "velagnss decode $S -o o <&- >&-",                  0, kNone},
    {"FullDisk",            "velagnss decode $S > /dev/full",                   4, "No space left on device"},
    {"FullDiskStat",        "velagnss stat $S > /dev/full",                     4, "No space left on device"},
    {"FullDiskHelp",        "velagnss --help > /dev/full",                      4, "No space left on device"},
    {"FileSizeLimit",       "ulimit -f 8; velagnss decode $S -o limited",       4, "ulimit"},
    {"NoSuchFolder",        "velagnss decode $S -o missing/out",                4, "cannot be written"},
    {"ClosedPipe",          "velagnss decode $S | head -n 1 > one; exit ${PIPESTATUS[0]}", 0, kNone},
    {"ClosedFromTheStart",  "velagnss decode $S | true; exit ${PIPESTATUS[0]}", 0, kNone},
};
// clang-format on

TEST_ROWS_F(ProgramExits, WithCodeAndMessage, Program, kExits, row) {
  const Outcome outcome = Run(row.command);
  EXPECT_EQ(outcome.code, row.code) << outcome.messages;
  if (*row.message == '\0')
    EXPECT_THAT(outcome.messages, IsEmpty());
  else
    EXPECT_THAT(outcome.messages, HasSubstr(row.message));
}

// Signals come while the program waits for more input: what came before is complete in the output.
class ProgramSignal : public Program, public testing::WithParamInterface<const char*> {};
TEST_P(ProgramSignal, EndsWithWholeLines) {
  const std::string wait = "for i in {1..100}; do [ $(wc -l < o) = 3 ] && break; sleep 0.1; done; ";
  const Outcome outcome =
      Run("mkfifo f; touch o; " VELAGNSS_PROGRAM " decode f > o & P=$!; exec 3> f; head -c 230 $S >&3; " + wait +
          "kill -" + GetParam() + " $P; wait $P; echo $?; cat o");
  const std::vector<json> lines = Lines(outcome.output);
  ASSERT_EQ(lines.size(), 4) << outcome.messages;
  EXPECT_EQ(lines[0], json(GetParam() == std::string("INT") ? 130 : GetParam() == std::string("TERM") ? 143 : 129));
  EXPECT_EQ(lines[3]["offset"], 172);
}
TEST_P(ProgramSignal, LeavesAWholeTrack) {
  const std::string wait = "for i in {1..100}; do [ -s o ] && break; sleep 0.1; done; ";
  const Outcome outcome =
      Run("mkfifo f; touch o; " VELAGNSS_PROGRAM " convert --to gpx f > o & P=$!; exec 3> f; cat $S >&3; " + wait +
          "kill -" + GetParam() + " $P; SECONDS=0; wait $P; echo $SECONDS; tail -n 1 o");
  EXPECT_THAT(outcome.output, testing::MatchesRegex("[01]\n</gpx>\n")) << outcome.messages;
}

INSTANTIATE_TEST_SUITE_P(Signals, ProgramSignal, testing::Values("INT", "TERM", "HUP"));

// What a person at a terminal sees: a pseudo-terminal of 80 columns, and an input that comes late.
struct S_TerminalCase {
  const char* name;
  const char* command;
  const char* shown;  // POSIX expression
};
#define CLEAR "\r\x1b\\[K"
// clang-format off
const S_TerminalCase kTerminals[] = {
    {"Progress",        "slow | velagnss stat > o",               "(" CLEAR "standard input: 0.[0-9] MB, 0.[0-9] MB/s)+" CLEAR},
    {"NarrowTerminal",  "stty cols 20; slow | velagnss stat > o", "(" CLEAR ".{19})+" CLEAR},
    {"Quiet",           "slow | velagnss -q stat > o",            ""},
    {"Log",             "slow | velagnss stat > o 2> l; cat l",   ""},
    {"DumbTerminal",    "export TERM=dumb; slow | velagnss stat > o; velagnss stat m", "velagnss: error: m: .*"},
    {"Color",          "NO_COLOR= velagnss stat m",              "velagnss: \x1b\\[1;31merror: \x1b\\[0mm: .*"},
    {"NoColor",        "NO_COLOR=0 velagnss stat m",             "velagnss: error: m: .*"},
};
// clang-format on
TEST_ROWS_F(ProgramTerminal, Shows, Program, kTerminals, row) {
  const Outcome outcome =
      Run("slow() { head -c 9 $S; sleep 2; cat $S; }; export -f slow velagnss; export S; unset NO_COLOR; "
          "TERM=xterm SHELL=$BASH script -qec '" +
          std::string(row.command) + "' /dev/null");
  EXPECT_THAT(outcome.output, testing::MatchesRegex(row.shown)) << outcome.messages;
}

TEST(ProgressText, TellsTheTimeLeft) {
  EXPECT_EQ(Host::ProgressText("f", 45'000'000, 100'000'000, 0.5), "f: 45 %, 90.0 MB/s, 1 s left");
}

struct S_PlaceCase {
  const char* name;
  const char* environment;
  const char* date;  // what `date` says there
};
const S_PlaceCase kPlaces[] = {
    {"Kiritimati", "TZ=UTC-14 OTHER_CLOCK=1700000000", "2023-11-15T12:13:20"},
    {"StJohns", "TZ=NST3:30 OTHER_CLOCK=1700000000", "2023-11-14T18:43:20"},
    {"EndOf1999", "OTHER_CLOCK=946684799", "1999-12-31T23:59:59"},
    {"EndOf32Bits", "OTHER_CLOCK=2147483648", "2038-01-19T03:14:08"},
    {"Year2106", "OTHER_CLOCK=4294967296", "2106-02-07T06:28:16"},
};
TEST_ROWS_F(ProgramPlace, MakesNoDifference, Program, kPlaces, row) {
  const std::string all =
      "for c in decode stat 'convert --to rinex-nav' 'convert --to gpx' 'convert --to csv'; do velagnss $c $S; done | "
      "md5sum";
  const Outcome outcome =
      Run("export ASAN_OPTIONS=verify_asan_link_order=0 LD_PRELOAD=" VELAGNSS_OTHER_CLOCK " TZ=UTC; export " +
          std::string(row.environment) + "; date +%FT%T; " + all);
  EXPECT_EQ(outcome.output, row.date + ("\n" + Run(all).output)) << outcome.messages;
}

// A port that carries nothing but false starts: the peak of all programs run, in KiB, stays where a little of it was.
TEST_F(Program, ReadsNoiseInBoundedMemory) {
  const auto peak = [this](const std::string& size) {
    EXPECT_THAT(Run("yes '$GPGGA,1' | head -c " + size + " | velagnss stat").messages, HasSubstr("no frame in"));
    rusage usage;
    getrusage(RUSAGE_CHILDREN, &usage);
    return usage.ru_maxrss;
  };
  const long little = peak("1M");
  EXPECT_LT(peak("64M"), little + 1024);
}

TEST_F(Program, WritesTheSameForAnyReadSize) {
  const std::string options = " --events --hex $S | md5sum";
  const std::string whole = Run("velagnss decode" + options).output;
  for (const char* size : {"1", "7", "997", "65537"})
    EXPECT_EQ(Run(std::string("velagnss decode --read-size ") + size + options).output, whole) << size;
  EXPECT_EQ(Run("cat $S | velagnss decode" + options).output, whole) << "pipe";
}

TEST_F(Program, KeepsInputsApart) {
  Run("head -c 200 $S > a; tail -c +201 $S > b");
  const std::vector<json> lines = Lines(Run("velagnss decode --frames a b").output);
  EXPECT_EQ(lines[0]["input"], "a");
  EXPECT_EQ(lines.back()["input"], "b");
  EXPECT_EQ(lines.back()["offset"].get<int>() + 200, Lines(Run("velagnss decode --frames $S").output).back()["offset"]);
}

struct S_FilterCase {
  const char* name;
  const char* arguments;
  std::vector<std::string> messages;  // that come, each at least once
  std::size_t count;                  // objects
};
const S_FilterCase kFilters[] = {
    {"ByName", "--msg hdt", {"HDT"}, 5},
    {"ByNumber", "--msg 1005", {"RTCM1005"}, 17},
    {"ByProtocolAndMessage", "--proto site --msg 1006", {"JSITERECORD", "RTCM1006"}, 16 + 8},
    {"StopsAfter", "-n 3", {"GGA", "RMC", "ZDA"}, 3},
    {"EnvelopeOnly", "--frames --msg RMC", {"RMC"}, 356},
};
TEST_ROWS_F(ProgramFilters, LetPass, Program, kFilters, row) {
  std::set<std::string> messages;
  const std::vector<json> lines = Lines(Run(std::string("velagnss decode $S ") + row.arguments).output);
  for (const json& line : lines) messages.insert(line["message"].get<std::string>());
  EXPECT_THAT(messages, testing::ElementsAreArray(row.messages));
  EXPECT_EQ(lines.size(), row.count);
}

TEST_F(Program, PeriodKeepsWholeEpochs) {
  std::vector<double> times;
  int next = 1;  // sentence of a GSV group
  for (const json& line : Lines(Run("velagnss decode --msg GGA:30,GSV:30 $S").output)) {
    const json& fields = line["fields"];
    if (line["message"] == "GGA") times.push_back(fields["time_of_day_s"]);
    if (line["message"] != "GSV") continue;
    EXPECT_EQ(fields["sentence_number"], next) << line;
    next = fields["sentence_number"] == fields["total_sentences"] ? 1 : next + 1;
  }
  ASSERT_EQ(times.size(), 11);
  for (std::size_t i = 1; i < times.size(); ++i) EXPECT_EQ(std::fmod(times[i] - times[i - 1] + 86400, 86400), 30);
}

// Folded on the way are only the modes of a GNS of one system, and digits beyond those that the standard prints.
TEST_F(Program, EncodesWhatItDecoded) {
  Run("velagnss decode --proto nmea $S > all; velagnss convert --to nmea $S > sentences");
  EXPECT_EQ(Run("velagnss encode all").output, Run("cat sentences").output);
  Run("velagnss decode --msg GGA,GLL,GNS,GSA,GSV,RMC,VTG,ZDA $S | sed 's/,.text.:\"[^\"]*\"}$/}/' > first");
  Run("velagnss encode first > nmea");
  const std::vector<json> first = Lines(Run("cat first").output);
  const std::vector<json> second = Lines(Run("velagnss decode nmea").output);
  ASSERT_EQ(first.size(), second.size());
  ASSERT_GT(first.size(), 2000);
  for (std::size_t i = 0; i < first.size(); ++i) {
    json before = first[i]["fields"];
    json after = second[i]["fields"];
    if (first[i]["message"] == "GNS" && before["talker"] != "GN") before["modes"] = json::array();
    if (before.contains("speed_kmh") && !before["speed_kmh"].is_null()) {
      EXPECT_NEAR(before["speed_kmh"], after["speed_kmh"], 0.0051);
      after["speed_kmh"] = before["speed_kmh"];
    }
    EXPECT_EQ(first[i]["message"], second[i]["message"]);
    EXPECT_EQ(before, after) << first[i];
  }
}

// Text from the wire and from the command line reaches no terminal with a control character.
TEST_F(Program, ShowsNoControlCharacters) {
  Write("\x1b[31mred",
        "$>JI,\x1f"
        "111111111111111111111111111111111111111\r\n$>JI,\xff\x9b[31m1111111111111111111111111111\r\n");
  const Outcome outcome = Run("velagnss decode --events *red; velagnss stat *red missing$'\\e'");
  for (const char c : outcome.output + outcome.messages) EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7F));
  EXPECT_THAT(outcome.output, HasSubstr("\\u00ff\\u009b[31m"));
}

std::string Damaged(std::string bytes) {
  for (std::size_t i = 50; i < bytes.size(); i += 397) bytes[i] = static_cast<char>(bytes[i] ^ (1 << i % 8));
  return bytes;
}

TEST_F(Program, WritesWhatTheSchemaAllows) {
  const JsonSchema schema(json::parse(ReadHostFile("docs/velagnss.schema.json")));
  Write("damaged", Damaged(ReadHostFile("samples/session.bin")));
  const std::string runs[] = {"velagnss decode --events $S damaged",  "velagnss decode --acks --hex --seed 2314:0 $S",
                              "velagnss decode --frames --hex $S",    "velagnss decode --msg BIN95,BIN25,BIN93 $S",
                              "tail -c 5000 $S | velagnss decode",    "velagnss stat --json $S damaged",
                              "velagnss geo convert --json 1 2 3",    "velagnss geo inverse --json --radians 1 0 1 1",
                              "velagnss geo look --json 1 2 3 4 5 6", "echo 2024-05-06 | velagnss geo time --json"};
  for (const std::string& run : runs)
    for (const json& line : Lines(Run(run).output)) ASSERT_EQ(schema.Check(line), "") << run << "\n" << line;
}

TEST(JsonDocument, NamesEveryMemberOfTheSchema) {
  const std::string document = ReadHostFile("docs/json.md");
  const json schema = json::parse(ReadHostFile("docs/velagnss.schema.json"));
  for (const auto& definition : schema["$defs"])
    for (const auto& [name, rules] : definition["properties"].items())
      EXPECT_THAT(document, HasSubstr("`" + name + "`"));
}

}  // namespace
