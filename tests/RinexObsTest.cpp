// RINEX observation files of `velagnss convert`, compared with lines worked out by hand.
#include <gmock/gmock.h>

#include <sstream>
#include <vector>

#include "Cases.h"
#include "ObservationFrames.h"
#include "ProgramRun.h"
#include "RinexReader.h"
#include "Rtcm3Bits.h"
#include "Streams.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

// --- Streams ---

// GPS L1 of 1002, 75.5 light-milliseconds as well: 149896.22 m in units of 0.02 m beside the whole ones.
std::string Legacy(std::uint32_t time) {
  Rtcm3Bits bits{{1002, 12}, {7, 12}, {time, 30}, {0, 1}, {1, 5}, {0, 4}};
  bits.Put({{5, 6}, {0, 1}, {7494811, 24}, {0, 20}, {127, 7}, {75, 8}, {180, 8}});
  return RtcmFrame(bits.Payload());
}

std::string Antenna(std::string_view name) {
  Rtcm3Bits bits{{1008, 12}, {7, 12}, {static_cast<std::int64_t>(name.size()), 8}};
  return RtcmFrame(bits.PutText(name).Put(0, 8).Put(2, 8).PutText("42").Payload());
}
std::string Biases(unsigned int isAligned) {
  return RtcmFrame(Rtcm3Bits{{1230, 12}, {7, 12}, {isAligned, 1}, {0, 3}, {8, 4}, {-100, 16}}.Payload());
}

// --- Bodies worked out by hand ---

std::string Epoch(const char* time, unsigned int satellites) {
  return "> 2024 05 16 12 00 " + std::string(time) + "  0  " + std::to_string(satellites) + "\n";
}
// Pseudorange, phase with its indicators, Doppler, strength.
std::string Line(const char* satellite, const char* phase = "118944210.000 7") {
  return std::string(satellite) + "  22634330.579   " + phase + "      5255.035          45.000\n";
}
const std::string kG05 = Line("G05"), kG05Slip = Line("G05", "118944210.00017");
// 1602 MHz - 2 * 0.5625 MHz = 1600.875 MHz: 75.5 * 1600875 = 120866062.5 cycles, 1000 / c * f = 5339.944 Hz.
const std::string kR03 = "R03  22634330.579   120866062.500 7      5339.944          45.000\n";
// -2 m of the bias are -10.680 cycles.
const std::string kR03Biased = "R03  22634330.579   120866051.820 7      5339.944          45.000\n";
const std::string kR03NoDoppler = "R03  22634330.579   120866062.500 7                        45.000\n";
const std::string kE11 = "E11  22634330.579   118944210.000 7      5255.035          45.000\n";

std::string Gps(std::uint32_t second, const S_Cell& cell = {}) { return Msm(1077, kNoon + 1000 * second, {cell}); }
std::string Gps6(std::uint32_t second) { return Msm(1076, kNoon + 1000 * second, {{}}); }
std::string Glonass(std::uint32_t second, unsigned int number = 1087) {
  return Msm(number, kNoon + 1000 * second, {{3, 600, 0, 0, 5}});
}
const std::string kUnlocked = Gps(1, {5, 5});  // locked for 5 ms only

struct S_ObsCase {
  const char* name;
  std::string stream;
  std::string body;
  int code = 0;
  const char* message = "";  // part of standard error
  const char* arguments = "";
};
constexpr char k0[] = " 0.0000000", k1[] = " 1.0000000", k2[] = " 2.0000000";

// clang-format off
const S_ObsCase kObsCases[] = {
    {"OneEpochOfAllSystems",    Date() + Glonass(0) + Msm(1097, kNoon, {{11}}) + Gps(0),
     Epoch(k0, 3) + kG05 + kR03 + kE11},
    {"LockLost",                Date() + Gps(0) + kUnlocked + Gps(2), Epoch(k0, 1) + kG05 + Epoch(k1, 1) + kG05Slip + Epoch(k2, 1) + kG05},
    {"HalfCycle",               Date() + Gps(0, {5, 600, 1}) + Gps(1, {5, 5, 1}),
     Epoch(k0, 1) + Line("G05", "118944210.00027") + Epoch(k1, 1) + Line("G05", "118944210.00037")},
    {"SlipBetweenEpochs",       Date() + Gps(0) + kUnlocked + Gps(2), Epoch(k0, 1) + kG05 + Epoch(k2, 1) + kG05Slip, 0, "", "--interval 2"},
    {"SlipWithoutPhase",        Date() + Gps(0) + Gps(1, {5, 5, 0, -8388608}) + Gps(2),
     Epoch(k0, 1) + kG05 + Epoch(k1, 1) + "G05  22634330.579 7                      5255.035          45.000\n" + Epoch(k2, 1) + kG05Slip},
    {"MsmBeforeLegacy",         Date() + Legacy(kNoon) + Gps(0), Epoch(k0, 1) + kG05},
    {"OtherSeriesOfPhases",     Date() + Gps6(0) + Legacy(kNoon + 1000),
     Epoch(k0, 1) + "G05  22634330.579   118944210.000 7        45.000\n" + Epoch(k1, 1) + "G05  22634330.570   118944209.95317        45.000\n"},
    {"ChannelKnownLater",       Date() + Glonass(0, 1086) + Glonass(1), Epoch(k0, 1) + kR03NoDoppler + Epoch(k1, 1) + kR03},
    {"ChannelNeverKnown",       Date() + Glonass(0, 1086) + Gps(0), Epoch(k0, 1) + kG05, 1, "channel"},
    {"BiasAdded",               Date() + Glonass(0) + Biases(0), Epoch(k0, 1) + kR03Biased},
    {"Aligned",                 Date() + Glonass(0) + Biases(1), Epoch(k0, 1) + kR03},
    {"DateComesLater",          Gps(0) + Date() + Gps(1), Epoch(k0, 1) + kG05 + Epoch(k1, 1) + kG05},
    {"DateComesLast",           Gps(0) + Date(), Epoch(k0, 1) + kG05},
    {"DateOfNextWeek",          Msm(1077, 604799000, {{}}) + Date(60449) + Msm(1077, 43200000, {{}}),
     "> 2024 05 18 23 59 59.0000000  0  1\n" + kG05 + "> 2024 05 19 12 00  0.0000000  0  1\n" + kG05Slip},
    {"DateFromSeed",            Gps(0), Epoch(k0, 1) + kG05, 0, "", "--seed 2314:345600"},
    {"NoDate",                  Gps(0), "", 1, "date is not known"},
    {"DateFromUser",            Gps(0), Epoch(k0, 1) + kG05, 0, "", "--date 2024-05-16"},
    {"DateOfStreamWins",        Gps(0) + Date() + Gps(1), Epoch(k0, 1) + kG05 + Epoch(k1, 1) + kG05, 0, "", "--date 2019-05-16"},
    {"DateOfStreamComesLast",   Gps(0) + Date(), Epoch(k0, 1) + kG05, 0, "", "--date 2019-05-16"},
    {"SeedStaysHard",           Date() + Gps(0), "> 2019 05 16 12 00  0.0000000  0  1\n" + kG05, 0, "", "--seed 2019-05-16"},
    {"SentencesGoOnAlone",      Sentence("GPZDA,120000,16,05,2024,00,00") + Gps(0) + Sentence("GPZDA,120000,28,05,2024,00,00") + Msm(1077, kNoon - 172800000, {{}}),
     Epoch(k0, 1) + kG05 + "> 2024 05 28 12 00  0.0000000  0  1\n" + kG05Slip},
    {"GlonassFirstWithoutDate", Glonass(0) + Gps(0) + Date() + Gps(1), Epoch(k0, 1) + kG05 + Epoch(k1, 1) + kG05, 1, "leap seconds"},
    {"GlonassOfAnotherEra",     Glonass(0) + Gps(0) + Date() + Gps(1), Epoch(k0, 1) + kG05 + Epoch(k1, 1) + kG05, 1, "leap seconds", "--date 2014-05-15"},
    {"StationMoves",            Date() + Position() + Gps(0) + Position(63781380000) + Position(63781380000) + Gps(1),
     Epoch(k0, 1) + kG05 + ">                              4  1\n"
     "  6378138.0000        0.0001       -0.0002                  APPROX POSITION XYZ \n" + Epoch(k1, 1) + kG05},
    {"NewSite",                 Date() + Position() + Gps(0) + Position(63783380000) + Gps(1),
     Epoch(k0, 1) + kG05 + ">                              3  2\n"
     "  6378338.0000        0.0001       -0.0002                  APPROX POSITION XYZ \n"
     "Here                                                        MARKER NAME         \n" + Epoch(k1, 1) + kG05, 0, "", "--marker Here"},
    {"SiteOfTheUser",           Date() + Position() + Gps(0) + Position(63783380000) + Gps(1),
     Epoch(k0, 1) + kG05 + Epoch(k1, 1) + kG05, 0, "", "--position 6378137,0,0"},
    {"OtherStation",            Date() + Gps(0) + Msm(1077, kNoon, {{9}}, 2, 8), Epoch(k0, 1) + kG05, 1, "station 8"},
    {"ChosenStation",           Date() + Gps(0) + Msm(1077, kNoon, {{9}}, 2, 8), Epoch(k0, 1) + Line("G09"), 0, "", "--station 8"},
    {"SameEpochAgain",          Date() + Gps(1) + Gps(0), Epoch(k1, 1) + kG05, 1, "not later"},
    {"OnlyThisSystem",          Date() + Gps(0) + Glonass(0), Epoch(k0, 1) + kR03, 0, "", "--system glonass"},
    {"OnlyTheseTypes",          Date() + Gps(0), Epoch(k0, 1) + "G05        45.000   118944210.000 7\n", 0, "", "--obs-types G:S1C,L1C"},
    {"PartsOfRanges",           Date() + Msm(1073, kNoon, {{}}) + Gps(0), Epoch(k0, 1) + kG05, 1, "1073 has only parts"},
    {"Empty",                   Date(), "", 1, "no observation"},
    {"NoSuchCode",              "", "", 2, "'C1Q' is not", "--obs-types G:C1Q"},
    {"NoSuchPlace",             "", "", 2, "on the Earth", "--position 1,2,3"},
    {"OptionOfNav",             "", "", 2, "--rinex is not", "--rinex 4.00"},
    {"SplitWithoutNames", "", "", 2, "needs --auto-name", "--split 1h"},
    {"NoSuchDirectory", Date(), "", 4, "not a directory", "--auto-name -o none"},
    {"AgencyTooLong",           "", "", 2, "at most 40", "--agency $(printf %041d 0)"},
};
// clang-format on

std::string BodyOf(const std::string& file) {
  const std::size_t end = file.find("END OF HEADER");
  return end == std::string::npos ? file : file.substr(file.find('\n', end) + 1);
}

TEST_ROWS_F(RinexObs, HasTheBody, Program, kObsCases, row) {
  Write("in", row.stream);
  const Outcome outcome = Run(std::string("velagnss convert --to rinex-obs in ") + row.arguments);
  EXPECT_EQ(BodyOf(outcome.output), row.body);
  EXPECT_EQ(outcome.code, row.code);
  EXPECT_THAT(outcome.messages, HasSubstr(row.message));
  if (outcome.output.empty()) return;
  EXPECT_THAT(RinexReader(outcome.output).faults, IsEmpty());
}

// --- Headers ---

struct S_HeaderCase {
  const char* name;
  std::string stream;
  const char* arguments;
  std::vector<std::string> lines;  // parts of the header
};
const std::string kStream = Date() + Position() + Antenna("ADVNULLANTENNA\xE9") + Gps(0) + Gps(1) + Glonass(1) + Gps(3);

// clang-format off
const S_HeaderCase kHeaderCases[] = {
    {"FromTheStream", kStream + Biases(1), "--observer me --agency us --run-by you",
     {"\nvelagnss 1.0.0      you                 20240516 115945 UTC PGM / RUN BY",
      "\n0007                                                        MARKER NAME",
      "\nme                  us                                      OBSERVER / AGENCY",
      "\n42                  ADVNULLANTENNA?                         ANT # / TYPE",
      "\n  6378137.0000        0.0001       -0.0002                  APPROX POSITION XYZ",
      "\n        1.5000        0.0000        0.0000                  ANTENNA: DELTA H/E/N",
      "\nG    4 C1C L1C D1C S1C                                      SYS / # / OBS TYPES",
      "\n     1.000                                                  INTERVAL",
      "\n  2024     5    16    12     0    0.0000000     GPS         TIME OF FIRST OBS",
      "\n  2024     5    16    12     0    3.0000000     GPS         TIME OF LAST OBS",
      "\nG L1C                                                       SYS / PHASE SHIFT",
      "\n  1 R03 -2                                                  GLONASS SLOT / FRQ #",
      "\n C1C    0.000 C1P    0.000 C2C    0.000 C2P    0.000        GLONASS COD/PHS/BIS",
      "\n    18                                                      LEAP SECONDS"}},
    {"FromTheUser", kStream, "--marker Here --antenna 1,A --receiver ',R,2' --position -6378137,0,0",
     {"\nHere                                                        MARKER NAME",
      "\n                    R                   2                   REC # / TYPE / VERS",
      "\n1                   A                                       ANT # / TYPE",
      "\n -6378137.0000        0.0000        0.0000                  APPROX POSITION XYZ"}},
    {"Unaligned", kStream + Biases(0), "", {"\n C1C   -2.000                                               GLONASS COD/PHS/BIS"}},
    {"BiasUnknown", kStream, "", {"\n                                                            GLONASS COD/PHS/BIS"}},
    {"AnotherSignal", Date() + Msm(1077, kNoon, {{}}, 10) + Msm(1077, kNoon, {{}}, 15), "",
     {"\nG L2S  0.00000                                              SYS / PHASE SHIFT",
      "\nG L2W                                                       SYS / PHASE SHIFT"}},
};
// clang-format on

TEST_ROWS_F(RinexObsHeader, HasTheLines, Program, kHeaderCases, row) {
  Write("in", row.stream);
  const Outcome outcome = Run(std::string("velagnss convert --to rinex-obs in ") + row.arguments);
  for (const std::string& line : row.lines) EXPECT_THAT(outcome.output, HasSubstr(line));
  EXPECT_THAT(RinexReader(outcome.output).faults, IsEmpty());
}

// --- The sample session ---

struct S_FileCase {
  const char* name;
  const char* arguments;
  std::size_t satellites;
  unsigned int epochs;
};
const S_FileCase kFiles[] = {
    {"Observations", "rinex-obs", 27, 81},
    {"EveryFiveSeconds", "rinex-obs --interval 5", 27, 16},
    {"Navigation", "rinex-nav", 32, 0},
    {"Version4", "rinex-nav --rinex 4.00", 32, 0},
};

TEST_ROWS_F(RinexFiles, AreFaultless, Program, kFiles, row) {
  const Outcome outcome = Run(std::string("velagnss convert $S --to ") + row.arguments);
  const RinexReader file(outcome.output);
  EXPECT_THAT(file.faults, IsEmpty());
  EXPECT_EQ(file.satellites.size(), row.satellites);
  EXPECT_EQ(file.epochs, row.epochs);
  EXPECT_EQ(outcome.code, 0);
}

// --- Several files, compressed files ---

struct S_NameCase {
  const char* name;
  std::string stream;
  const char* arguments;
  const char* names;
};
const S_NameCase kNames[] = {
    {"Whole", kStream, "", "000700XXX_S_20241371200_01M_01S_MO.rnx\n"},
    {"Station", Date() + Gps(0) + Gps(30), "--marker exmp01deu", "EXMP01DEU_S_20241371200_01M_30S_GO.rnx\n"},
    {"OneEpoch", Date() + Gps(0), "--marker 'A b-c'", "ABC000XXX_S_20241371200_00U_00U_GO.rnx\n"},
    {"Hours", Date() + Gps(0) + Gps(1) + Gps(3600) + Glonass(3600), "--split 1h",
     "000700XXX_S_20241371200_01H_01S_GO.rnx\n000700XXX_S_20241371300_01H_00U_MO.rnx\n"},
    {"Days", Date() + Gps(0) + Gps(1) + Gps(43200), "--split 1d",
     "000700XXX_S_20241370000_01D_01S_GO.rnx\n000700XXX_S_20241380000_01D_00U_GO.rnx\n"},
};

TEST_ROWS_F(RinexNames, AreTheStandardOnes, Program, kNames, row) {
  Write("in", row.stream);
  const std::string convert = "mkdir made; velagnss convert --to rinex-obs --auto-name -o made in ";
  EXPECT_EQ(Run(convert + row.arguments + " && ls made").output, row.names);
  std::istringstream names(row.names);
  for (std::string name; std::getline(names, name);)
    EXPECT_THAT(RinexReader(Slurp(m_directory / "made" / name)).faults, IsEmpty());
}

TEST_F(Program, RinexIsCompressed) {
  const std::string plain = Run("velagnss convert --to rinex-nav $S").output;
  EXPECT_EQ(Run("velagnss convert --to rinex-nav --gzip $S | gzip -dc").output, plain);
  EXPECT_EQ(Run("velagnss convert --to rinex-nav -o a.gz $S; gzip -dc a.gz").output, plain);
  EXPECT_EQ(Run("velagnss convert --to rinex-nav --gzip -o /dev/full $S").code, 4);
}

// The session has the same GPS and GLONASS ephemerides in both protocols. Left out of the comparison is what depends on
// the moment of transmission, and the health flags of GLONASS, some of which only RTCM 3 has.
TEST_F(Program, RinexRecordsAreTheSameFromBothProtocols) {
  const auto records = [this](const std::string& protocol) {
    const Outcome outcome =
        Run("velagnss convert --to rinex-nav --system gps,glonass --seed 2314:604638 $S --search " + protocol);
    std::set<std::string> found;
    for (const std::string& record : RinexReader(outcome.output).records)
      found.insert(record[0] == 'G' ? record.substr(0, 564) + record.substr(583)
                                    : record.substr(0, 61) + record.substr(80, 301));
    return found;
  };
  EXPECT_EQ(records("rtcm3"), records("bin"));
  EXPECT_EQ(records("bin").size(), 15U);
}

}  // namespace
