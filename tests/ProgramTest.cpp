// The built program from outside: its exit codes, its messages, its output.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "HostData.h"
#include "JsonSchema.h"
#include "ProgramRun.h"
#include "Streams.h"
#include "apps/velagnss/input/Progress.h"
#include "apps/velagnss/os/Diagnostics.h"

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
    {"PasswordInTheWrongPlace", "velagnss ports ntrip://me:se/cret@h/M",            2, "not expected: ntrip://me:xxxxxxx@h/M;"},
    {"UnknownCommand",      "velagnss decod x",                                 2, "unknown command 'decod' (did you mean 'decode'?); see 'velagnss --help'"},
    {"UnknownGlobalOption", "velagnss --colour decode $S",                      2, "unknown option '--colour'"},
    {"OptionAlone",         "velagnss -o",                                      2, "unknown option '-o'; see 'velagnss --help'"},
    {"OptionOfGeo",         "velagnss geo -x",                                  2, "unknown option '-x'; see 'velagnss geo --help'"},
    {"HelpAsCommand",       "velagnss help && velagnss help stat",              0, kNone},
    {"VersionAsCommand",    "velagnss version",                                 0, kNone},
    {"SeedAsDate",          "velagnss decode --seed 2024-05-18 $S",             0, kNone},
    {"SeedAsTime",          "velagnss decode --seed 2024-05-18T12:30:00Z $S",   0, kNone},
    {"SeedOfATrack",        "velagnss convert --to csv --seed 2024-05-18 $S",   2, "--seed is not an option of --to csv"},
    {"UnknownOfGeo",        "velagnss geo foo",                                 2, "unknown command 'foo'; see 'velagnss geo --help'"},
    {"HelpOnUnknown",       "velagnss help decod",                              2, "unknown command 'decod' (did you mean 'decode'?)"},
    {"ValueMissing",        "velagnss decode -o",                               2, "--output needs a value; see 'velagnss decode --help'"},
    {"GivenTwice",          "velagnss decode --date 2024-05-18 --date 2024-05-19 $S", 2, "--date is given twice; see 'velagnss decode --help'"},
    {"GivenAgain",          "velagnss geo time --from utc --from gps --from utc", 2, "--from is given 3 times"},
    {"OneFault",            "(head -c 87 $S; echo x; head -c 87 $S) | velagnss decode --strict", 1, "1 fault in the data"},
    {"NoSuchDate",          "velagnss decode --date 2024-13-01 $S",             2, "--date"},
    {"SeedNotADate",        "velagnss decode --seed 2023-02-29 $S",             2, "--seed"},
    {"SearchForNothing",    "velagnss decode --search '' $S",                   2, "no protocol named"},
    {"UnknownOption",       "velagnss decode --nonsense $S",                    2, "velagnss decode --help"},
    {"EnormousCount",       "velagnss decode -n 99999999999999999999999 $S",    2, "-n"},
    {"PercentOfNothing",    "velagnss stat --max-bad nan $S",                   2, "--max-bad"},
    {"CountOfNone",         "velagnss decode -n 0 $S",                          2, "a whole number, 1 or more, not '0'"},
    {"ReadSizeZero",        "velagnss stat --read-size 0 $S",                   2, "--read-size"},
    {"QuietAndVerbose",     "velagnss -q -v decode $S",                         2, "excludes"},
    {"UnknownProtocol",     "velagnss decode --proto xyz $S",                   2, "nmea"},
    {"UnknownMessage",      "velagnss decode --msg GPGGX $S",                   2, "GPGGX"},
    {"UnlistedMessage",     "velagnss decode --listed-only --msg GGX $S",       2, "GGX"},
    {"BadPeriod",           "velagnss decode --msg GGA:fast $S",                2, "GGA:10"},
    {"SeedWithoutSeconds",  "velagnss decode --seed 2300 $S",                   2, "2300:345600"},
    {"SeedBeyondTheWeek",   "velagnss decode --seed 2300:604800 $S",            2, "--seed"},
    {"UnknownSearch",       "velagnss stat --search nmea,xyz $S",               2, "'nmea,xyz'"},
    {"OutputIsInput",       "cp $S a; velagnss decode a -o ./a",                2, "also an input"},
    {"StandardOutputIsInput", "cp $S a; velagnss convert --to nmea a >> a",     2, "standard output: is also an input"},
    {"MissingFile",         "velagnss decode missing",                          3, "missing: cannot be opened: No such file"},
    {"Directory",           "velagnss stat .",                                  3, "is a directory"},
    {"OneOfTwoMissing",     "velagnss decode missing $S",                       3, "missing"},
    {"NoEmptyDocument",     "for f in csv gpx kml geojson; do velagnss convert --to $f missing zip; done | wc -c | grep -qx 0; test ${PIPESTATUS[2]} = 0", 0, "missing"},
    {"NoEmptyGzip",         "velagnss convert --to rinex-nav --gzip missing | wc -c | grep -qx 0", 0, "missing"},
    {"PatternWithoutFile",  "velagnss decode '*.nmea'",                         3, "no file matches this pattern"},
    {"Zip",                 "printf 'PK\\3\\4$GP' | velagnss decode",           3, "is a zip archive; unpack it"},
    {"TarInGzip",           "cp $S s; tar cz s | velagnss decode",              3, "contains a tar archive; unpack it"},
    {"PacketCapture",       "printf '\\xd4\\xc3\\xb2\\xa1 ' > p; velagnss decode p", 3, "p: is a pcap packet capture; save"},
    {"BeginningOfZip",      "(printf P; cat $S) | velagnss decode",             0, kNone},
    {"BehindGzip",          "(gzip -c $S; echo) | velagnss decode",             0, "what follows its gzip data"},
    {"EmptyGzip",           "gzip < /dev/null | velagnss decode",               1, "standard input: is empty"},
    {"EmptyFile",           "touch e; velagnss decode e",                       1, "e: is empty"},
    {"EmptyInput",          "velagnss decode < /dev/null",                      1, "standard input: is empty"},
    {"NoiseOnly",           "head -c 100000 /dev/zero | velagnss decode",       1, "no frame in 100000 bytes"},
    {"NothingPassed",       "velagnss decode --msg ACK $S",                     1, "matches"},
    {"Strict",              "velagnss decode --strict $S",                      1, "faults in the data"},
    {"StrictAndGood",       "head -c 171 $S | velagnss decode --strict",        0, kNone},
    {"PeriodWithoutTime",   "velagnss decode --search jrox --msg JROX:10 $S",    0, "no time came before"},
    {"ExtractsWithoutTime", "velagnss extract --search jrox --msg JROX:10 $S",   0, "no time came before"},
    {"NoEpoch",             "velagnss decode --epochs-only --search jrox $S",   1, "belongs to an epoch"},
    {"NotAChoice",          "velagnss extract --split-by day -o o $S",          2, "must be protocol, not 'day'"},
    {"PeriodWithTime",      "velagnss decode --msg JROX:10,GGA:10 $S",          0, kNone},
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
    {"NoSuchFolder",        "velagnss decode $S -o missing/out",                4, "written: No such file"},
    {"ClosedPipe",          "velagnss decode $S | head -n 1 > one; exit ${PIPESTATUS[0]}", 0, kNone},
    {"ClosedPipeEncode",    "velagnss decode $S > j; velagnss encode j | head -n 1 > one; exit ${PIPESTATUS[0]}", 0, kNone},
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

// What is at the name of an output, whatever happens to the program.
struct S_OutputCase {
  const char* name;
  const char* command;
  const char* listing;  // then: name, permissions and beginning of each file
};
// clang-format off
const S_OutputCase kOutputs[] = {
    {"NoSuchInput",      "velagnss convert --to gpx -o o missing",                    "o 644 old\n"},
    {"OneInputMissing",  "velagnss convert --to gpx -o o $S missing",                 "o 644 old\n"},
    {"WriteFails",       "(ulimit -f 1; velagnss decode $S -o o)",                    "o 644 old\n"},
    {"Killed",           VELAGNSS_PROGRAM " decode -o o ../f & exec 3> ../f; cat $S >&3; sleep 0.2; kill -9 $!; wait", "o 644 old\n"},
    {"Interrupted",      VELAGNSS_PROGRAM " convert --to nmea -o o ../f & exec 3> ../f; head -c 300 $S >&3; sleep 0.2; kill -INT $!; wait",
                                                                                      "o 644 $GNGGA,\n"},
    {"NewName",          "rm o; velagnss convert --to nmea $S -o p",                  "p 644 $GNGGA,\n"},
    {"KeepsPermissions", "chmod 640 o; velagnss convert --to nmea $S -o o",           "o 640 $GNGGA,\n"},
    {"FollowsLinks",     "ln -s o l; velagnss convert --to nmea $S -o l; readlink l", "o\nl 777 $GNGGA,\no 644 $GNGGA,\n"},
    {"FollowsToNothing", "rm o; ln -s o l; velagnss convert --to nmea $S -o l; rm l", "o 644 $GNGGA,\n"},
    {"Pipe",             "cat ../f > o & velagnss convert --to nmea $S -o ../f; wait", "o 644 $GNGGA,\n"},
    {"StandardOutput",   "velagnss convert --to nmea -o /dev/stdout $S > o",          "o 644 $GNGGA,\n"},
};
// clang-format on
TEST_ROWS_F(ProgramOutput, IsWholeOrAsBefore, Program, kOutputs, row) {
  const Outcome outcome = Run("umask 022; mkfifo f; mkdir w; cd w; echo old > o; " + std::string(row.command) +
                              "; for i in $(ls -A); do echo $i $(stat -c %a $i) $(head -n 1 $i | cut -c 1-7); done");
  EXPECT_EQ(outcome.output, row.listing) << outcome.messages;
}

// Standard output is a pipe that another program has made non-blocking, and its reader is slow.
TEST_F(Program, WaitsForASlowReader) {
  Write("run.py",
        "import fcntl, os, subprocess, sys, time\n"
        "r, w = os.pipe()\n"
        "fcntl.fcntl(w, fcntl.F_SETFL, os.O_NONBLOCK | fcntl.fcntl(w, fcntl.F_GETFL))\n"
        "p = subprocess.Popen([sys.argv[1], 'decode', sys.argv[2]], stdout=w)\n"
        "os.close(w)\n"
        "time.sleep(0.3)\n"
        "sys.stdout.buffer.write(os.fdopen(r, 'rb').read())\n"
        "sys.exit(p.wait())\n");
  const Outcome outcome = Run("python3 run.py " VELAGNSS_PROGRAM " $S | md5sum; echo ${PIPESTATUS[0]}");
  EXPECT_EQ(outcome.output, Run("velagnss decode $S | md5sum; echo 0").output) << outcome.messages;
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
    {"RawSentence",     "velagnss convert --to nmea c",           "\\$GPGLL,\\\\x7f\\\\xc2\\\\x9b\\\\x9b31m\xe2\x82\xac[*]62\r\r\n"},
    {"DumbTerminal",    "export TERM=dumb; slow | velagnss stat > o; velagnss stat m", "velagnss: error: m: .*"},
    {"Color",          "NO_COLOR= velagnss stat m",              "velagnss: \x1b\\[1;31merror: \x1b\\[0mm: .*"},
    {"NoColor",        "NO_COLOR=0 velagnss stat m",             "velagnss: error: m: .*"},
};
// clang-format on
TEST_ROWS_F(ProgramTerminal, Shows, Program, kTerminals, row) {
  Write("c", Sentence("GPGLL,\x7f\xc2\x9b\x9b"
                      "31m\xe2\x82\xac"));
  const Outcome outcome =
      Run("slow() { head -c 9 $S; sleep 2; cat $S; }; export -f slow velagnss; export S; unset NO_COLOR; "
          "TERM=xterm SHELL=$BASH script -qec '" +
          std::string(row.command) + "' /dev/null");
  EXPECT_THAT(outcome.output, testing::MatchesRegex(row.shown)) << outcome.messages;
}

// On 80 columns it is whole; the last column stays free.
TEST(ProgressText, LosesNoDigitOnANarrowTerminal) {
  const std::string line = "long.bin: 45 %, 120.3 MB/s, 12 s left";
  EXPECT_EQ(Host::CutToColumns(line, 80), line);
  EXPECT_EQ(Host::CutToColumns(line, line.size()), line.substr(1));
  EXPECT_EQ(Host::CutToColumns(line, 30), "45 %, 120.3 MB/s, 12 s left");
  EXPECT_EQ(Host::CutToColumns(line, 27), "120.3 MB/s, 12 s left");
  EXPECT_EQ(Host::CutToColumns(line, 20), "12 s left");
  EXPECT_EQ(Host::CutToColumns(line, 9), "");
  EXPECT_EQ(Host::CutToColumns(line, 0), "");
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

// Compressed inputs, by content: whole, from a pipe, in two members, compressed twice.
struct S_PackerCase {
  const char* name;
  const char* command;
};
const S_PackerCase kPackers[] = {{"gzip", "gzip"}, {"bzip2", "bzip2"}, {"xz", "xz"}, {"zstd", "zstd -q"}};
TEST_ROWS_F(ProgramInput, IsUnpacked, Program, kPackers, row) {
  const std::string pack = std::string(row.command) + " -c ";
  const std::string plain = Run("velagnss decode < $S | md5sum").output;
  for (const std::string& input :
       {pack + "$S > a; velagnss decode --read-size 7 a", pack + "$S | velagnss decode",
        pack + "$S | gzip | velagnss decode",
        "head -c 9999 $S > b; tail -c +10000 $S > c; (" + pack + "b; " + pack + "c) > a; velagnss decode a"})
    EXPECT_EQ(Run("(" + input + ") | md5sum").output, plain) << input;
}

// What the packer itself gets out of data that is cut off is in the output, and so is most of what comes before damage.
TEST_ROWS_F(ProgramFaultyInput, IsUsedAsFarAsItGoes, Program, kPackers, row) {
  const std::string pack = std::string(row.command);
  const Outcome cut = Run("(" + pack + " -c $S; " + pack + " -c $S) > w; head -c 290000 w > a; velagnss decode a");
  EXPECT_EQ(cut.code, 3);
  EXPECT_THAT(cut.messages, HasSubstr(" are cut off after byte 290000;"));
  EXPECT_EQ(cut.output, Run(pack + " -dc a 2> e | velagnss decode").output);
  for (const int place : {100000, 250000}) {
    const Outcome damaged = Run("(head -c " + std::to_string(place) + " w; printf XYZ; tail -c +" +
                                std::to_string(place + 4) + " w) > b; velagnss decode b");
    EXPECT_EQ(damaged.code, 3) << place;
    EXPECT_THAT(damaged.messages, HasSubstr(" data are damaged before byte ")) << place;
  }
  // The last bytes are a checksum, of gzip the length after it, of xz the end of its stream.
  const Outcome checksum = Run("(head -c -7 w; printf XYZ; tail -c 4 w) > b; velagnss decode b");
  EXPECT_EQ(checksum.code, 3);
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
    {"EnvelopeOnly", "--frames --msg RMC", {"RMC"}, 357},
    {"ListedOnly", "--listed-only --frames --msg RMC", {"RMC"}, 356},
    {"Unlisted", "--msg xyz,pkvn", {"PKVN", "XYZ"}, 3},
};
TEST_ROWS_F(ProgramFilters, LetPass, Program, kFilters, row) {
  std::set<std::string> messages;
  const std::vector<json> lines = Lines(Run(std::string("velagnss decode $S ") + row.arguments).output);
  for (const json& line : lines) messages.insert(line["message"].get<std::string>());
  EXPECT_THAT(messages, testing::ElementsAreArray(row.messages));
  EXPECT_EQ(lines.size(), row.count);
}

// Without a date in the stream, only the seed completes the weeks.
TEST_F(Program, TakesADateAsSeed) {
  const std::string ephemerides = "velagnss decode --search bin --msg BIN95 $S --seed ";
  const std::string byWeek = Run(ephemerides + "2314:604638").output;
  EXPECT_THAT(byWeek, HasSubstr("\"toe_week\":2314"));
  EXPECT_EQ(Run(ephemerides + "2024-05-18").output, byWeek);
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
  const std::string runs[] = {"velagnss decode --events --epochs $S damaged",
                              "velagnss decode --acks --hex --seed 2314:0 $S",
                              "velagnss decode --frames --hex $S",
                              "velagnss decode --msg BIN95,BIN25,BIN93 $S",
                              "tail -c 5000 $S | velagnss decode",
                              "velagnss stat --json --positions $S damaged",
                              "velagnss geo convert --json 1 2 3",
                              "velagnss geo inverse --json --radians 1 0 1 1",
                              "velagnss geo look --json 1 2 3 4 5 6",
                              "echo 2024-05-06 | velagnss geo time --json"};
  for (const std::string& run : runs)
    for (const json& line : Lines(Run(run).output)) ASSERT_EQ(schema.Check(line), "") << run << "\n" << line;
}

TEST(JsonDocument, NamesEveryMemberOfTheSchema) {
  const std::string document = ReadHostFile("docs/json.md") + ReadHostFile("docs/report.md");
  const json schema = json::parse(ReadHostFile("docs/velagnss.schema.json"));
  for (const auto& definition : schema["$defs"]) {
    if (!definition.contains("properties")) continue;
    for (const auto& [name, rules] : definition["properties"].items())
      EXPECT_THAT(document, HasSubstr("`" + name + "`"));
  }
}

}  // namespace
