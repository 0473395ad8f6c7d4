// RINEX navigation files of `velagnss convert`, read back by columns and compared with what the satellites sent.
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "BinaryFrames.h"
#include "Cases.h"
#include "HostData.h"
#include "ProgramRun.h"
#include "RinexReader.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr double kDay = 86400;
constexpr double kWeek = 7 * kDay;

// --- The sample session against the numbers that its generator packed ---

constexpr double kPi = 3.14159265358979323846;
constexpr double kFirstWeek = 2314;  // the session ends in the next one
double WeekOf(double second) { return second > kWeek / 2 ? kFirstWeek : kFirstWeek + 1; }

// A number of the file: one of the manifest in units of `scale`, or derived from several; null for a blank.
struct S_Field {
  const char* pointer;
  double scale = 1;
  double (*derived)(const json& numbers) = nullptr;
};
constexpr S_Field kBlank{nullptr};
constexpr S_Field Derived(double (*derived)(const json& numbers)) { return {"", 1, derived}; }

double ToeWeek(const json& n) { return WeekOf(n.at("toe").get<double>() * 16); }
double KeplerSent(const json& n) {
  return n.at("sixSecondCount").get<double>() * 6 + (n.at("week").get<double>() + 2048 - ToeWeek(n)) * kWeek;
}

double KeplerAccuracy(const json& n) {  // IS-GPS-200, 20.3.3.3.1.3
  constexpr double kMetres[] = {2, 2.8, 4, 5.7, 8, 11.3, 16, 32, 64, 128, 256, 512, 1024, 2048, 4096};
  return kMetres[n.at("ura").get<int>()];
}

double FitInterval(const json& n) { return n.at("message") == "25" ? n.at("fitFlag").get<double>() : 4; }

double GlonassSent(const json& n) {  // the session's Sunday in Moscow begins on Saturday, 21 h UTC
  const int tk = n.at("tk");
  return (tk / 128 * 3600 + tk / 2 % 64 * 60 + tk % 2 * 30) + kWeek - 3 * 3600;
}

double GlonassStatus(const json& n) {
  const auto part = [&n](const char* name, int weight) { return n.at(name).get<int>() * weight; };
  return part("m", 128) + part("p4", 64) + part("p3", 32) + part("p2", 16) + part("p1", 4) + part("p", 1);
}

double GlonassHealth(const json& n) { return n.at("bn").get<int>() >= 4 ? 1 : 0; }

double SbasSent(const json& n) {
  const double second = n.at("second");
  return second + (WeekOf(second) - n.at("week").get<double>()) * kWeek;
}

double SbasAccuracy(const json& n) { return std::vector<double>{2, 2.8, 4, 5.7, 8, 11.3}.at(n.at("accuracy")); }

// clang-format off
const std::vector<S_Field> kKepler = {
    {"/af0", 0x1p-31}, {"/af1", 0x1p-43}, {"/af2", 0x1p-55},
    {"/iode"}, {"/crs", 0x1p-5}, {"/deltaN", 0x1p-43 * kPi}, {"/m0", 0x1p-31 * kPi},
    {"/cuc", 0x1p-29}, {"/eccentricity", 0x1p-33}, {"/cus", 0x1p-29}, {"/sqrtA", 0x1p-19},
    {"/toe", 16}, {"/cic", 0x1p-29}, {"/omega0", 0x1p-31 * kPi}, {"/cis", 0x1p-29},
    {"/i0", 0x1p-31 * kPi}, {"/crc", 0x1p-5}, {"/omega", 0x1p-31 * kPi}, {"/omegaDot", 0x1p-43 * kPi},
    {"/iDot", 0x1p-43 * kPi}, {"/codeOnL2"}, Derived(&ToeWeek), {"/l2Flag"},
    Derived(&KeplerAccuracy), {"/health"}, {"/tgd", 0x1p-31}, {"/iodc"},
    Derived(&KeplerSent), Derived(&FitInterval), kBlank, kBlank};
const std::vector<S_Field> kGlonass = {
    {"/tauN", -0x1p-30}, {"/gammaN", 0x1p-40}, Derived(&GlonassSent),
    {"/position/0", 0x1p-11}, {"/velocity/0", 0x1p-20}, {"/acceleration/0", 0x1p-30}, Derived(&GlonassHealth),
    {"/position/1", 0x1p-11}, {"/velocity/1", 0x1p-20}, {"/acceleration/1", 0x1p-30}, {"/channel"},
    {"/position/2", 0x1p-11}, {"/velocity/2", 0x1p-20}, {"/acceleration/2", 0x1p-30}, {"/en"},
    Derived(&GlonassStatus), {"/deltaTauN", 0x1p-30}, {"/ft"}, {"/ln", 4}};
const std::vector<S_Field> kSbas = {
    {"/clock/0", 0x1p-31}, {"/clock/1", 0x1p-40}, Derived(&SbasSent),
    {"/motion/0", 0.08e-3}, {"/motion/3", 0.000625e-3}, {"/motion/6", 0.0000125e-3},
    Derived([](const json&) { return 31.0; }),
    {"/motion/1", 0.08e-3}, {"/motion/4", 0.000625e-3}, {"/motion/7", 0.0000125e-3}, Derived(&SbasAccuracy),
    {"/motion/2", 0.4e-3}, {"/motion/5", 0.004e-3}, {"/motion/8", 0.0000625e-3}, {"/issue"}};

struct S_System {
  char letter;
  const char* number;
  int offset;
  std::size_t transmission;
  const std::vector<S_Field>& fields;
  double (*epoch)(const json& numbers);
};
double Toc(const json& n) { const double toc = n.at("toc").get<double>() * 16; return WeekOf(toc) * kWeek + toc; }
double Tb(const json& n) {  // day 140 of 2024 is 19 May, a Sunday; UTC is 3 h behind
  EXPECT_EQ(n.at("nt"), 140);
  return (kFirstWeek + 1) * kWeek + n.at("tb").get<double>() * 900 - 3 * 3600;
}

double T0(const json& n) { return n.at("week").get<double>() * kWeek + n.at("reference").get<double>(); }
const std::map<std::string, S_System> kSystems = {
    {"95", {'G', "satellite",   0, 27, kKepler,  &Toc}},
    {"25", {'J', "satellite", 192, 27, kKepler,  &Toc}},
    {"65", {'R', "slot",        0,  2, kGlonass, &Tb}},
    {"93", {'S', "satellite", 100,  2, kSbas,    &T0}}};
// clang-format on

struct S_Expected {
  std::string satellite;
  double epoch;
  std::vector<std::optional<double>> values;
  std::size_t transmission;

  // All but the transmission time.
  auto Key() const {
    auto content = values;
    content[transmission].reset();
    return std::tuple(epoch, satellite, content);
  }
};

S_Expected ExpectedOf(const json& numbers) {
  const S_System& system = kSystems.at(numbers.at("message"));
  S_Expected expected{fmt::format("{}{:02}", system.letter, numbers.at(system.number).get<int>() - system.offset),
                      system.epoch(numbers),
                      {},
                      system.transmission};
  for (const S_Field& field : system.fields)
    if (field.pointer == nullptr)
      expected.values.push_back(std::nullopt);
    else if (field.derived != nullptr)
      expected.values.push_back(field.derived(numbers));
    else
      expected.values.push_back(numbers.at(json::json_pointer(field.pointer)).get<double>() * field.scale);
  return expected;
}

// What the session carries, each ephemeris once as it came first, in the order of satellites and times.
std::vector<S_Expected> ExpectedOfSession(const std::string& letters) {
  std::vector<S_Expected> all;
  const json manifest = json::parse(ReadHostFile("samples/session.json"));
  for (const json& numbers : manifest.at("numbers"))
    if (numbers.at("message") != "GGA") all.push_back(ExpectedOf(numbers));
  std::erase_if(all, [&](const S_Expected& e) { return letters.find(e.satellite[0]) == std::string::npos; });
  const auto before = [](const S_Expected& a, const S_Expected& b) { return a.Key() < b.Key(); };
  const auto equal = [](const S_Expected& a, const S_Expected& b) { return a.Key() == b.Key(); };
  std::stable_sort(all.begin(), all.end(), before);
  all.erase(std::unique(all.begin(), all.end(), equal), all.end());
  return all;
}

void ExpectRecord(const RinexRecord& record, const S_Expected& expected) {
  const std::string what = expected.satellite + " at " + std::to_string(expected.epoch);
  ASSERT_EQ(record.satellite, expected.satellite) << what;
  ASSERT_EQ(record.epoch, expected.epoch) << what;
  ASSERT_EQ(record.values.size(), expected.values.size()) << what;
  for (std::size_t i = 0; i < record.values.size(); ++i) {
    ASSERT_EQ(record.values[i].has_value(), expected.values[i].has_value()) << what << ", number " << i;
    if (!record.values[i]) continue;
    EXPECT_NEAR(record.values[i]->value, *expected.values[i], 0.501 * record.values[i]->unit) << what << " " << i;
  }
}

struct S_SessionCase {
  const char* name;
  const char* arguments;
  const char* systems;  // first letters of the satellites
  const char* title;
};
const S_SessionCase kSessions[] = {
    {"AllSystems", "", "GJRS", "M: Mixed"},
    {"Gps", "--system gps", "G", "G: GPS"},
    {"Glonass", "--system glonass", "R", "R: GLONASS"},
    {"Qzss", "--system qzss", "J", "J: QZSS"},
    {"Sbas", "--system sbas", "S", "S: SBAS Payload"},
    {"ListOfTwo", "--system gps,sbas", "GS", "M: Mixed"},
    {"OptionTwice", "--system qzss --system glonass", "JR", "M: Mixed"},
    {"SameInputTwice", "$S", "GJRS", "M: Mixed"},
};

TEST_ROWS_F(RinexSession, HoldsWhatTheSatellitesSent, Program, kSessions, row) {
  const Outcome outcome = Run(std::string("velagnss convert --to rinex-nav $S ") + row.arguments);
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.messages, "");
  RinexReader file(outcome.output);
  EXPECT_EQ(file.Header("RINEX VERSION / TYPE").substr(0, 40), "     3.05           N: GNSS NAV DATA    ");
  EXPECT_EQ(file.Header("RINEX VERSION / TYPE").substr(40).find(row.title), 0U);
  EXPECT_TRUE(std::is_sorted(file.Records().begin(), file.Records().end(),
                             [](const RinexRecord& a, const RinexRecord& b) { return a.epoch < b.epoch; }));
  std::vector<RinexRecord> records = file.Records();
  const std::vector<S_Expected> expected = ExpectedOfSession(row.systems);
  ASSERT_EQ(records.size(), expected.size());
  const auto before = [](const RinexRecord& a, const RinexRecord& b) {
    return std::tie(a.epoch, a.satellite) < std::tie(b.epoch, b.satellite);
  };
  std::stable_sort(records.begin(), records.end(), before);  // several of a satellite at one epoch: by their numbers
  for (std::size_t i = 0; i < records.size(); ++i) ExpectRecord(records[i], expected[i]);
}

// --- Records worked out by hand ---

constexpr char kPlainHeaderEnd[] = "END OF HEADER       \n";

std::string RecordsOf(const std::string& file) {
  const std::size_t end = file.find(kPlainHeaderEnd);
  return end == std::string::npos ? file : file.substr(end + sizeof kPlainHeaderEnd - 1);
}

// GLONASS ICD, tables 4.5 and 4.6. N4 8 begins in 2024, N_T 140 is 19 May, a Sunday; t_b 1 is 0:15 in Moscow: on 18 May
// at 21:15 UTC. t_k 23:59:30 is on the evening before, at 20:59:30 UTC: 6 * 86400 + 75570 = 593970 s of the UTC week.
// tau_n 1000 * 2^-30 s = 9.313225746154785e-7 s, in the file with the other sign; gamma_n -3 * 2^-40.
// x 2^25 * 2^-11 km = 16384 km, dx/dt -2^20 * 2^-20 km/s, ddx -1 * 2^-30 km/s^2.
// B_n 4: unhealthy. M 1, P4 1, P3 0, P2 1, P1 2, P 3: 128 + 64 + 0 + 16 + 2 * 4 + 3 = 219. l_n 1: bit 2.
std::string GlonassFrame(unsigned int slot = 7, unsigned int channelByte = 5 + 8, unsigned int day = 140,
                         unsigned int interval = 8) {
  GlonassStrings strings;
  strings.Set(1, 77, 2, 2);
  strings.Set(1, 65, 12, 23 << 7 | 59 << 1 | 1);
  const int motion[3][3] = {{1 << 25, -(1 << 20), -1}, {-12345 << 11, 3 << 19, 0}, {1, 0, 15}};
  for (int i = 0; i < 3; ++i) {
    strings.SetSigned(i + 1, 9, 27, motion[i][0]);
    strings.SetSigned(i + 1, 41, 24, motion[i][1]);
    strings.SetSigned(i + 1, 36, 5, motion[i][2]);
  }
  strings.Set(2, 78, 3, 4);
  strings.Set(2, 77, 1, 1);
  strings.Set(2, 70, 7, 1);
  strings.SetSigned(3, 69, 11, -3);
  strings.Set(3, 66, 2, 3);
  strings.Set(3, 65, 1, 1);
  strings.SetSigned(4, 59, 22, 1000);
  strings.SetSigned(4, 54, 5, -2);
  strings.Set(4, 49, 5, 2);
  strings.Set(4, 34, 1, 1);
  strings.Set(4, 30, 4, 4);
  strings.Set(4, 16, 11, day);
  strings.Set(4, 9, 2, 1);
  strings.Set(5, 32, 5, interval);
  return BinFrame(65, strings.Data(slot, channelByte));
}

constexpr char kGlonassText[] =
    "R07 2024 05 18 21 15 00-9.313225746155D-07-2.728484105319D-12 5.939700000000D+05\n"
    "     1.638400000000D+04-1.000000000000D+00-9.313225746155D-10 1.000000000000D+00\n"
    "    -1.234500000000D+04 1.500000000000D+00 0.000000000000D+00 5.000000000000D+00\n"
    "     4.882812500000D-04 0.000000000000D+00 1.396983861923D-08 2.000000000000D+00\n"
    "     2.190000000000D+02-1.862645149231D-09 4.000000000000D+00 4.000000000000D+00\n";

// RTCA DO-229, message type 9. t0 is 16 s into week 2315, 19 May 2024; the message was sent 10 s before that week.
// X 525000000 * 0.08 m = 42000 km, Z -5 * 0.4 m = -0.002 km; dX 8 * 0.000625 m/s = 5e-6 km/s, dZ -1 * 0.004 m/s;
// ddX 2 * 0.0000125 m/s^2 = 2.5e-8 km/s^2, ddZ 1 * 0.0000625 m/s^2. a_Gf0 -3 * 2^-31 s, a_Gf1 2 * 2^-40.
// Accuracy 15, no prediction: 32767 m, and bit 5 of the health, 32. No message type 17: bit 4 and the bits below, 31.
std::string SbasFrame(unsigned int prn = 120, unsigned int week = 2315, unsigned int accuracy = 15) {
  std::string data = LittleEndian(prn, 2) + LittleEndian(week, 2) + LittleEndian(604790, 4) + LittleEndian(77, 2) +
                     LittleEndian(accuracy, 2) + LittleEndian(16, 4);
  for (const int value : {525000000, -1, -5, 8, 0, -1, 2, 0, 1}) data += LittleEndian(static_cast<unsigned>(value), 4);
  return BinFrame(93, data + LittleEndian(0x10000 - 3, 2) + LittleEndian(2, 2));
}

constexpr char kSbasText[] =
    "S20 2024 05 19 00 00 16-1.396983861923D-09 1.818989403546D-12-1.000000000000D+01\n"
    "     4.200000000000D+04 5.000000000000D-06 2.500000000000D-08 6.300000000000D+01\n"
    "    -8.000000000000D-05 0.000000000000D+00 0.000000000000D+00 3.276700000000D+04\n"
    "    -2.000000000000D-03-4.000000000000D-06 6.250000000000D-08 7.700000000000D+01\n";

// IS-GPS-200, table 20-I. Sent at 100799 * 6 = 604794 s of week 265 + 2 * 1024 = 2313, 6 s before the week of t_oe 0,
// 12 May 2024. Accuracy 15: 32767 m. Fit interval flag and IODC 757: 98 h (table 20-XII); QZSS has the flag itself.
// T_GD 128 is -128 * 2^-31 s, for QZSS "not available".
std::string KeplerFrame(unsigned int message, unsigned int prn) {
  Subframes subframes;
  subframes.Set(1, 2, 1, 17, 100799);
  subframes.Set(1, 3, 1, 10, 265);
  subframes.Set(1, 3, 11, 12, 2);
  subframes.Set(1, 3, 13, 16, 15);
  subframes.Set(1, 3, 17, 22, 63);
  subframes.Set(1, 3, 23, 24, 757 >> 8);
  subframes.Set(1, 8, 1, 8, 757 & 0xFF);
  subframes.Set(1, 4, 1, 1, 1);
  subframes.Set(1, 7, 17, 24, 128);
  subframes.Set(2, 3, 1, 8, 245);
  subframes.Set(2, 10, 17, 17, 1);
  return BinFrame(message, subframes.Data(prn));
}

std::string KeplerText(const char* satellite, const char* delay, const char* fit) {
  const std::string zeros = " 0.000000000000D+00 0.000000000000D+00 0.000000000000D+00";
  const std::string zeroLine = "     0.000000000000D+00" + zeros + "\n";
  return std::string(satellite) + " 2024 05 12 00 00 00" + zeros + "\n     2.450000000000D+02" + zeros + "\n" +
         zeroLine + zeroLine + zeroLine +
         "     0.000000000000D+00 2.000000000000D+00 2.314000000000D+03 1.000000000000D+00\n"
         "     3.276700000000D+04 6.300000000000D+01" +
         delay + " 7.570000000000D+02\n    -6.000000000000D+00" + fit + "\n";
}

struct S_HandCase {
  const char* name;
  std::string bytes;
  std::string expected;  // records
  int code = 0;
  const char* message = "";  // part of standard error
  const char* arguments = "--seed 2314:0";
};
const std::string kGps = KeplerText("G05", "-5.960464477539D-08", " 9.800000000000D+01");
const std::string kQzss = KeplerText("J01", "                   ", " 1.000000000000D+00");

// clang-format off
const S_HandCase kHandCases[] = {
    {"Gps",                     KeplerFrame(95, 5),                          kGps},
    {"Qzss",                    KeplerFrame(25, 193),                        kQzss},
    {"Glonass",                 GlonassFrame(),                              kGlonassText},
    {"Sbas",                    SbasFrame(),                                 kSbasText},
    {"Once",                    SbasFrame() + SbasFrame(),                   kSbasText},
    {"InTimeOrder",             SbasFrame() + GlonassFrame() + KeplerFrame(95, 5), kGps + kGlonassText + kSbasText},
    {"GlonassNeedsNoSeed",      GlonassFrame(),                              kGlonassText, 0, "", ""},
    {"GpsWeekUnknown",          KeplerFrame(95, 5),                          "", 1, "(result 22); give the time", ""},
    {"SbasWeekUnknown",         SbasFrame() + GlonassFrame(),                kGlonassText, 1, "(result 7); give", ""},
    {"UnknownButNotWanted",     SbasFrame() + GlonassFrame(),                kGlonassText, 0, "", "--system glonass"},
    {"GlonassSlot25",           GlonassFrame(25) + SbasFrame(),              kSbasText, 1, "ephemerides left out: 1; "},
    {"GlonassWithoutDay",       GlonassFrame(7, 13, 0) + SbasFrame(),        kSbasText, 1, "no date"},
    {"GpsPrn65",                KeplerFrame(95, 65) + SbasFrame(),           kSbasText, 1, "(result 8)"},
    {"NewYear2101",             GlonassFrame(7, 13, 367, 27) + GlonassFrame(),  kGlonassText, 1, "1980 to 2100"},
    {"QzssPrn192",              KeplerFrame(25, 192) + SbasFrame(),          kSbasText, 1, "no number for qzss 192"},
    {"SbasPrn100",              SbasFrame(100) + SbasFrame(),                kSbasText, 1, "no number for sbas 100"},
    {"WeeksOfTheSeed",          SbasFrame(120, 2315 % 1024),                 kSbasText, 0, "", "--seed 2500:0"},
    {"Empty",                   "",                                          "", 1, "no ephemeris"},
    {"NoSuchSystem",            SbasFrame(),                                 "", 1, "no ephemeris", "--system gps"},
    {"Noise",                   std::string(1000, '\0'),                     "", 1, "no frame in 1000 bytes"},
    {"UnknownSystem",           "",                                          "", 2, "gps glonass", "--system gpx"},
    {"UnknownFormat",           "",                                          "", 2, "rinex-nav", "--to rinex"},
    {"MarkerTooLong",           "",                                          "", 2, "at most 47", "--marker $(printf %048d 0)"},
    {"MarkerOfTwoLines",        "",                                          "", 2, "printable", "--marker $'a\\nb'"},
    {"FullDisk",                SbasFrame(),                                 "", 4, "No space", "--seed 2314:0 -o /dev/full"},
};
// clang-format on

TEST_ROWS_F(RinexByHand, GivesTheTextAndTheExitCode, Program, kHandCases, row) {
  Write("in", row.bytes);
  const Outcome outcome = Run(std::string("velagnss convert --to rinex-nav in ") + row.arguments);
  EXPECT_EQ(RecordsOf(outcome.output), row.expected);
  EXPECT_EQ(outcome.code, row.code);
  EXPECT_THAT(outcome.messages, HasSubstr(row.message));
  EXPECT_EQ(outcome.messages.empty(), row.code == 0) << outcome.messages;
}

// --- Header ---

TEST_F(Program, RinexHeaderTellsWhatWasAsked) {
  Write("in", SbasFrame());
  RinexReader file(Run("velagnss convert --to rinex-nav --marker 'A 1' --agency 'An agency' --run-by me $S").output);
  // The last date and time of the session: 143 s into 19 May.
  EXPECT_THAT(file.Header("PGM / RUN BY / DATE"),
              testing::MatchesRegex("velagnss [0-9.]+ +me {18}20240519 000223 UTC "));
  EXPECT_EQ(file.Header("PGM / RUN BY / DATE").find("me"), 20U);
  EXPECT_THAT(file.Header("COMMENT"), testing::MatchesRegex("MARKER NAME: A 1 +\\|AGENCY: An agency +"));
}

// Without a sentence that tells the date it is the last reference time.
TEST_F(Program, RinexRunDateComesFromTheRecordsOrTheClock) {
  Write("in", KeplerFrame(95, 5) + SbasFrame());
  const std::string command = "velagnss convert --to rinex-nav --seed 2314:0 in";
  EXPECT_EQ(RinexReader(Run(command).output).Header("PGM / RUN BY / DATE").substr(40), "20240519 000016 UTC ");
  const std::string before = Run("date -u '+%Y%m%d %H%M%S UTC '").output.substr(0, 20);
  const std::string now = RinexReader(Run(command + " --run-date now").output).Header("PGM / RUN BY / DATE").substr(40);
  EXPECT_LE(before, now);
  EXPECT_LE(now, Run("date -u '+%Y%m%d %H%M%S UTC '").output.substr(0, 20));
}

}  // namespace
