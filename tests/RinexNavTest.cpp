// RINEX navigation files of `velagnss convert`, compared with records worked out by hand.
#include <fmt/core.h>
#include <gmock/gmock.h>

#include <map>
#include <sstream>

#include "BinaryFrames.h"
#include "Cases.h"
#include "ProgramRun.h"
#include "RinexReader.h"
#include "Rtcm3Bits.h"

namespace {

using testing::HasSubstr;

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
// B_n 4: unhealthy. M 1, P4 1, P3 1, P2 1, P1 2, P 3: 128 + 64 + 32 + 16 + 2 * 4 + 3 = 251. l_n 1: bit 2.
std::string GlonassFrame(unsigned int slot = 7, unsigned int channelByte = 5 + 8, unsigned int day = 140,
                         unsigned int interval = 8) {
  GlonassStrings strings;
  strings.Set(1, 77, 2, 2);
  strings.Set(1, 65, 12, 23 << 7 | 59 << 1 | 1);
  const int motion[3][3] = {{1 << 25, -(1 << 20), -1}, {-12345 << 11, 3 << 19, 2}, {1, 5 << 18, 15}};
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
  strings.Set(3, 80, 1, 1);
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
    "    -1.234500000000D+04 1.500000000000D+00 1.862645149231D-09 5.000000000000D+00\n"
    "     4.882812500000D-04 1.250000000000D+00 1.396983861923D-08 2.000000000000D+00\n"
    "     2.510000000000D+02-1.862645149231D-09 4.000000000000D+00 4.000000000000D+00\n";

// RTCA DO-229, message type 9. t0 is 16 s into week 2315, 19 May 2024; the message was sent 10 s before that week.
// X 525000000 * 0.08 m = 42000 km, Z -5 * 0.4 m = -0.002 km; dX 8 * 0.000625 m/s = 5e-6 km/s, dY 16, dZ -1 * 0.004 m/s;
// ddX 2 * 0.0000125 m/s^2 = 2.5e-8 km/s^2, ddY 4, ddZ 1 * 0.0000625 m/s^2. a_Gf0 -3 * 2^-31 s, a_Gf1 2 * 2^-40.
// Accuracy 15, no prediction: 32767 m, and bit 5 of the health, 32. No message type 17: bit 4 and the bits below, 31.
std::string SbasFrame(unsigned int prn = 120, unsigned int week = 2315, unsigned int accuracy = 15) {
  std::string data = LittleEndian(prn, 2) + LittleEndian(week, 2) + LittleEndian(604790, 4) + LittleEndian(77, 2) +
                     LittleEndian(accuracy, 2) + LittleEndian(16, 4);
  for (const int value : {525000000, -1, -5, 8, 16, -1, 2, 4, 1}) data += LittleEndian(static_cast<unsigned>(value), 4);
  return BinFrame(93, data + LittleEndian(0x10000 - 3, 2) + LittleEndian(2, 2));
}

std::string SbasText(const std::string& health, const std::string& accuracy) {
  // clang-format off
  return
    "S20 2024 05 19 00 00 16-1.396983861923D-09 1.818989403546D-12-1.000000000000D+01\n"
    "     4.200000000000D+04 5.000000000000D-06 2.500000000000D-08" + health + "\n"
    "    -8.000000000000D-05 1.000000000000D-05 5.000000000000D-08" + accuracy + "\n"
    "    -2.000000000000D-03-4.000000000000D-06 6.250000000000D-08 7.700000000000D+01\n";
  // clang-format on
}

// IS-GPS-200, tables 20-I and 20-III. Sent at 100799 * 6 = 604794 s of week 265 + 2 * 1024 = 2313, 6 s before the week
// of t_oe, 8000 s into 12 May 2024; t_oc is 600000 s of week 2313. Accuracy 15: 8192 m. Fit interval flag and IODC
// 757: 98 h (table 20-XII); QZSS has the flag itself. T_GD 128 is -128 * 2^-31 s, for QZSS "not available".
std::string KeplerFrame(unsigned int message, unsigned int prn) {
  // clang-format off
  constexpr struct { int subframe, word, first, last, value; } kPieces[] = {
      {1, 2, 1, 17, 100799}, {1, 3, 1, 10, 265}, {1, 3, 11, 12, 2}, {1, 3, 13, 16, 15},      // sent, code on L2, URA
      {1, 3, 17, 22, 63}, {1, 3, 23, 24, 2}, {1, 8, 1, 8, 245}, {1, 4, 1, 1, 1},             // health, IODC, P on L2
      {1, 7, 17, 24, 128}, {1, 8, 9, 24, 37500}, {1, 9, 1, 8, -3}, {1, 9, 9, 24, 2000},      // T_GD, t_oc, a_f2, a_f1
      {1, 10, 1, 22, -1000}, {2, 3, 1, 8, 245}, {2, 3, 9, 24, -320}, {2, 4, 1, 16, 1000},    // a_f0, IODE, C_rs, delta n
      {2, 4, 17, 24, 0x40}, {2, 6, 1, 16, -100}, {2, 6, 17, 24, 2}, {2, 8, 1, 16, 200}, // M_0, C_uc, e, C_us
      {2, 8, 17, 24, 161}, {2, 10, 1, 16, 500}, {2, 10, 17, 17, 1}, {3, 3, 1, 16, 7},        // root of A, t_oe, fit, C_ic
      {3, 3, 17, 24, 0x80}, {3, 5, 1, 16, -8}, {3, 5, 17, 24, 0x20}, {3, 7, 1, 16, 9600},    // Omega_0, C_is, i_0, C_rc
      {3, 7, 17, 24, 0xE0}, {3, 9, 1, 24, -20000}, {3, 10, 9, 22, 300}};                     // omega, Omega dot, IDOT
  // clang-format on
  Subframes subframes;
  for (const auto& p : kPieces) subframes.Set(p.subframe, p.word, p.first, p.last, static_cast<unsigned int>(p.value));
  return BinFrame(message, subframes.Data(prn));
}

std::string KeplerText(const std::string& satellite, const std::string& delay, const std::string& fit) {
  return satellite +
         " 2024 05 11 22 40 00-4.656612873077D-07 2.273736754432D-10-8.326672684689D-17\n"
         "     2.450000000000D+02-1.000000000000D+01 3.571577341961D-10 1.570796326795D+00\n"
         "    -1.862645149231D-07 3.906250000000D-03 3.725290298462D-07 5.152000000000D+03\n"
         "     8.000000000000D+03 1.303851604462D-08-3.141592653590D+00-1.490116119385D-08\n"
         "     7.853981633974D-01 3.000000000000D+02-7.853981633974D-01-7.143154683922D-09\n"
         "     1.071473202588D-10 2.000000000000D+00 2.314000000000D+03 1.000000000000D+00\n"
         "     8.192000000000D+03 6.300000000000D+01" +
         delay + " 7.570000000000D+02\n    -6.000000000000D+00" + fit + "\n";
}

const std::string kSbasText = SbasText(" 6.300000000000D+01", " 3.276700000000D+04");

// Ephemerides of RTCM 3 for 6000 s of week 2314, 12 May 2024, in the order of RTCM 10403; most elements are 0. Galileo:
// week 1290 of its own, a_f0 -2^30 * 2^-34 s, t_oc and t_oe in minutes, accuracy 107: 3.12 m. Group delays -512 and 256
// times 2^-32 s. Signal health 1 of E5b (bit 7) and invalid data of E1-B (bit 0).
std::string GalileoFrame(unsigned int number) {
  Rtcm3Bits bits{{number, 12}, {11, 6}, {1290, 12}, {77, 10}, {107, 8}, {0, 14}, {100, 14}, {0, 6 + 21}};
  bits.Put({{-(1 << 30), 31}, {0, 16 + 16 + 32 + 16 + 32 + 16 + 32}, {100, 14}, {0, 16 + 32 + 16 + 32 + 16 + 32 + 24}});
  bits.Put(-512, 10);
  if (number == 1046) bits.Put({{256, 10}, {1, 2}, {0, 1}, {0, 2}, {1, 1}, {0, 2}});
  if (number == 1045) bits.Put({{2, 2}, {1, 1}, {0, 7}});
  return RtcmFrame(bits.Payload());
}

// Week 958 of BeiDou time; accuracy 1: 2.8 m. Delays in units of 0.1 ns.
std::string BeidouFrame(unsigned int satellite = 21) {
  Rtcm3Bits bits{{1042, 12}, {satellite, 6}, {958, 13},         {1, 4}, {0, 14},
                 {17, 5},    {750, 17},      {0, 11 + 22 + 24}, {30, 5}};
  bits.Put({{0, 18 + 16 + 32 + 18 + 32 + 18 + 32}, {750, 17}, {0, 18 + 32 + 18 + 32 + 18 + 32 + 24}});
  return RtcmFrame(bits.Put({{-511, 10}, {10, 10}, {1, 1}}).Payload());
}

// Accuracy 15: 8192 m. L5 is unhealthy.
std::string NavicFrame() {
  Rtcm3Bits bits{{1041, 12}, {6, 6},    {266, 10}, {0, 22 + 16 + 8}, {15, 4},
                 {375, 16},  {-128, 8}, {0, 22},   {9, 8},           {0, 10}};
  bits.Put({{1, 1}, {0, 1}, {0, 6 * 15 + 14 + 32}, {375, 16}, {0, 32 + 32 + 32 + 32 + 22 + 32 + 4}});
  return RtcmFrame(bits.Payload());
}

std::string RtcmText(const std::string& satellite, const std::string& clock, const std::string& issue,
                     const std::string& tail) {
  const std::string zero = " 0.000000000000D+00";
  return satellite + " 2024 05 12 01 40 00" + clock + zero + zero + "\n    " + issue + zero + zero + zero + "\n    " +
         zero + zero + zero + zero + "\n     6.000000000000D+03" + zero + zero + zero + "\n    " + zero + zero + zero +
         zero + "\n    " + zero + tail;
}
const std::string kBlank(19, ' ');
std::string GalileoText(const std::string& source, const std::string& healthAndDelays) {
  return RtcmText("E11", "-6.250000000000D-02", " 7.700000000000D+01",
                  source + " 2.314000000000D+03" + kBlank + "\n     3.120000000000D+00" + healthAndDelays +
                      "\n     9.999000000000D+08" + kBlank + kBlank + kBlank + "\n");
}
const std::string kInavText =
    GalileoText(" 5.170000000000D+02", " 1.290000000000D+02-1.192092895508D-07 5.960464477539D-08");
const std::string kFnavText =
    GalileoText(" 2.580000000000D+02", " 4.000000000000D+01-1.192092895508D-07 0.000000000000D+00");
const std::string kBeidouText =
    RtcmText("C21", " 0.000000000000D+00", " 1.700000000000D+01",
             kBlank + " 9.580000000000D+02" + kBlank +
                 "\n     2.800000000000D+00 1.000000000000D+00-5.110000000000D-08 1.000000000000D-09\n"
                 "     9.999000000000D+08 3.000000000000D+01" +
                 kBlank + kBlank + "\n");
const std::string kNavicText = RtcmText("I06", " 0.000000000000D+00", " 9.000000000000D+00",
                                        kBlank + " 2.314000000000D+03" + kBlank +
                                            "\n     8.192000000000D+03 2.000000000000D+00-5.960464477539D-08" + kBlank +
                                            "\n     9.999000000000D+08" + kBlank + kBlank + kBlank + "\n");

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
    {"SbasAccuracy5",           SbasFrame(120, 2315, 5),     SbasText(" 3.100000000000D+01", " 1.130000000000D+01")},
    {"Galileo",                 GalileoFrame(1046) + GalileoFrame(1045),         kFnavText + kInavText},
    {"Beidou",                  BeidouFrame(),                               kBeidouText},
    {"Navic",                   NavicFrame(),                                kNavicText},
    {"RtcmWeekUnknown",         NavicFrame(),                                "", 1, "(result 22); give", ""},
    {"Version4",                BeidouFrame(3),  "> EPH C03 D2\nC03" + kBeidouText.substr(3), 0, "", "--seed 2314:0 --rinex 4.00"},
    {"Once",                    SbasFrame() + SbasFrame(),                   kSbasText},
    {"InTimeOrder",             SbasFrame() + GlonassFrame() + KeplerFrame(95, 5), kGps + kGlonassText + kSbasText},
    {"GlonassNeedsNoSeed",      GlonassFrame(),                              kGlonassText, 0, "", ""},
    {"GpsWeekUnknown",          KeplerFrame(95, 5),                          "", 1, "(result 22); give the date", ""},
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
  if (outcome.output.empty()) return;
  EXPECT_THAT(RinexReader(outcome.output).faults, testing::IsEmpty());
}

// --- The sample session ---

struct S_SessionCase {
  const char* name;
  const char* arguments;
  std::map<char, int> satellites;  // records by the first letter
  const char* title;
};
const S_SessionCase kSessions[] = {
    {"AllSystems", "", {{'C', 8}, {'E', 4}, {'G', 9}, {'J', 3}, {'R', 6}, {'S', 27}}, "M: Mixed "},
    {"Gps", "--system gps", {{'G', 9}}, "G: GPS "},
    {"Glonass", "--system glonass", {{'R', 6}}, "R: GLONASS "},
    {"Qzss", "--system qzss", {{'J', 3}}, "J: QZSS "},
    {"Sbas", "--system sbas", {{'S', 27}}, "S: SBAS Payload "},
    {"ListOfTwo", "--system gps,sbas", {{'G', 9}, {'S', 27}}, "M: Mixed "},
    {"OptionTwice", "--system qzss --system glonass", {{'J', 3}, {'R', 6}}, "M: Mixed "},
    {"SameInputTwice", "$S", {{'C', 8}, {'E', 4}, {'G', 9}, {'J', 3}, {'R', 6}, {'S', 27}}, "M: Mixed "},
};

TEST_ROWS_F(RinexSession, HoldsEachEphemerisOnce, Program, kSessions, row) {
  const Outcome outcome = Run(std::string("velagnss convert --to rinex-nav $S ") + row.arguments);
  EXPECT_EQ(outcome.messages, "");
  EXPECT_EQ(outcome.output.find(row.title), 40U);
  std::map<char, int> satellites;
  std::istringstream lines(RecordsOf(outcome.output));
  std::string before;
  for (std::string line; std::getline(lines, line);) {
    if (line[0] == ' ') continue;
    ++satellites[line[0]];
    const std::string epoch = line.substr(4, 19);
    EXPECT_LE(before, epoch);
    before = epoch;
  }
  EXPECT_EQ(satellites, row.satellites);
}

// The last date and time of the session is 143 s into 19 May.
TEST_F(Program, RinexHeaderTellsWhatWasAsked) {
  const auto line = [](std::string_view text, std::string_view label) {
    return fmt::format("{:60}{:20}\n", text, label);
  };
  const std::string file =
      Run("velagnss convert --to rinex-nav --marker 'A 1' --agency 'An agency' --run-by me $S").output;
  const std::string program = Run("printf %-20s \"$(velagnss --version)\"").output;
  EXPECT_EQ(file.substr(0, file.find(RecordsOf(file))),
            line("     3.05           N: GNSS NAV DATA    M: Mixed", "RINEX VERSION / TYPE") +
                line(program + "me                  20240519 000223 UTC", "PGM / RUN BY / DATE") +
                line("MARKER NAME: A 1", "COMMENT") + line("AGENCY: An agency", "COMMENT") +
                line("    18", "LEAP SECONDS") + line("", "END OF HEADER"));
}

// Without a dated sentence it is the last reference time.
TEST_F(Program, RinexRunDateComesFromTheRecordsOrTheClock) {
  Write("in", KeplerFrame(95, 5) + SbasFrame());
  const auto date = [this](const char* option) {
    return Run(std::string("velagnss convert --to rinex-nav --seed 2314:0 in ") + option).output.substr(81 + 40, 20);
  };
  EXPECT_EQ(date(""), "20240519 000016 UTC ");
  const std::string before = Run("date -u '+%Y%m%d %H%M%S UTC '").output.substr(0, 20);
  const std::string now = date("--run-date now");
  EXPECT_LE(before, now);
  EXPECT_LE(now, Run("date -u '+%Y%m%d %H%M%S UTC '").output.substr(0, 20));
}

}  // namespace
