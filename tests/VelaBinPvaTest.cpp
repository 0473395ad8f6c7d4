// GLONASS and SBAS ephemerides: messages 65 and 93.
#include <erfa.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "binproto/VelaBin_Decode.h"
#include "records/ResultCodes.h"
#include "tests/BinaryFrames.h"
#include "tests/Cases.h"

namespace {

using VelaBIN_Messages::S_GLONavString;
using R = S_IFPvaEphRec;
using D = C_VelaBin_Decode;

// --- bits of GLONASS strings ---------------------------------------------------------------------------------------

// Bit by bit, where the record says that it stands; 0 for the bits that a string does not have.
unsigned int BitOf(const S_GLONavString& string, int bit) {
  if (bit > 85) return 0;
  if (bit >= 54) return string.Word[0] >> (bit - 54) & 1;
  if (bit >= 22) return string.Word[1] >> (bit - 22) & 1;
  return string.Word[2] >> (bit + 10) & 1;
}

TEST(GlonassBits, FieldsAtEveryPlace) {
  std::mt19937 random(85);
  for (int round = 0; round < 20; ++round) {
    S_GLONavString string;
    for (auto& word : string.Word) word = static_cast<std::uint32_t>(random());
    for (int first = 0; first < 256; ++first)
      for (int count = 0; count < 40; ++count) {
        const bool exists = first >= 1 && first <= 85 && count >= 1 && count <= 32;
        unsigned int expected = 0;
        for (int i = 0; exists && i < count; ++i) expected |= BitOf(string, first + i) << i;
        const auto firstBit = static_cast<unsigned char>(first);
        const auto bits = static_cast<unsigned char>(count);
        ASSERT_EQ(D::DecodeGloStringBits(string, firstBit, bits), expected) << first << "+" << count;
        const int magnitude = static_cast<int>(expected & ~(count > 0 ? 1ULL << (count - 1) : 0));
        const bool negative = exists && expected >> (count - 1) != 0;
        ASSERT_EQ(D::GloNavStrBitsToS32(&string, 1, firstBit, bits), negative ? -magnitude : magnitude);
      }
  }
}

TEST(GlonassBits, OfStringsThatDoNotExist) {
  S_GLONavString strings[5];
  std::memset(strings, 0xFF, sizeof strings);
  strings[4].Word[2] = 0x9CFFFFFF;  // bits 17 to 21 are 10011
  EXPECT_EQ(D::GloNavStrBitsToU32(strings, 5, 17, 5), 0b10011U);
  EXPECT_EQ(D::GloNavStrBitsToS32(strings, 5, 17, 5), -3);
  for (const unsigned char stringNo : {'\0', '\x06', '\xFF'}) {
    EXPECT_EQ(D::GloNavStrBitsToU32(strings, stringNo, 1, 8), 0U);
    EXPECT_EQ(D::GloNavStrBitsToS32(strings, stringNo, 1, 8), 0);
  }
  EXPECT_EQ(D::GloNavStrBitsToU32(nullptr, 1, 1, 8), 0U);
}

// --- message 65 ----------------------------------------------------------------------------------------------------

unsigned int Decode65(D& decoder, const std::string& body, R& record) {
  ExactCopy frame(BinFrame(65, body));
  return decoder.Decode_Bin65(frame.Data(), frame.Size(), record);
}

// 1 January 2024 and nothing else. 2024 is the first year of the interval 8 (1996 + 4 * 7), so N4 = 8, NT = 1; the day
// is a Monday of GPS week 2295.
GlonassStrings NewYear() {
  GlonassStrings s;
  s.Set(4, 16, 11, 1);
  s.Set(5, 32, 5, 8);
  return s;
}

// On slot 5, channel +1.
R NewYearRecord() {
  R r;
  SetEmpty_IFEphRec(r);
  r.System = r.TimeSystem = 1;
  r.SvId = 5;
  r.FreqChannel = 1;
  r.Spare = 0;
  r.Health = r.Bn = r.Iod = r.Tb = r.En = r.Ft = 0;
  r.FrameWeek = r.RefWeek = 2295;
  r.FrameTime = r.RefTime = 86400;
  for (double* const value : {&r.TauN, &r.GammaN, &r.PosX, &r.PosY, &r.PosZ, &r.VelX, &r.VelY, &r.VelZ, &r.AccX,
                              &r.AccY, &r.AccZ, &r.DeltaTauN, &r.TauGps, &r.TauC})
    *value = 0;
  r.Valid = 1;
  r.N4 = 8;
  r.Nt = 1;
  return r;
}

// A piece of a string as GLONASS ICD, table 4.5, counts its bits, and what is sent there.
struct S_Piece {
  int string, first, count;
  std::uint32_t sent;
};

struct S_FieldCase {
  const char* name;
  std::vector<S_Piece> pieces;
  void (*expect)(R&);  // writes what must follow into the record of New Year
};

// Signed fields are sent with the sign, the highest and the lowest bit of the magnitude set.
// clang-format off
const S_FieldCase kFields[] = {
    {"PosX",      {{1, 9, 27, 0x6000001}},   [](R& r) { r.PosX = -33554433000 * 0x1p-11; }},
    {"AccX",      {{1, 36, 5, 0x19}},        [](R& r) { r.AccX = -9000 * 0x1p-30; }},
    {"VelX",      {{1, 41, 24, 0xC00001}},   [](R& r) { r.VelX = -4194305000 * 0x1p-20; }},
    {"Tk063030",  {{1, 65, 12, 829}},        [](R& r) { r.FrameTime = 86400 + 23430; }},  // 6 * 128 + 30 * 2 + 1
    {"P1",        {{1, 77, 2, 2}},           [](R& r) { r.P1 = 2; }},
    {"PosY",      {{2, 9, 27, 0x6000001}},   [](R& r) { r.PosY = -33554433000 * 0x1p-11; }},
    {"AccY",      {{2, 36, 5, 0x19}},        [](R& r) { r.AccY = -9000 * 0x1p-30; }},
    {"VelY",      {{2, 41, 24, 0xC00001}},   [](R& r) { r.VelY = -4194305000 * 0x1p-20; }},
    {"Tb0615",    {{2, 70, 7, 25}},          [](R& r) { r.Tb = r.Iod = 25, r.RefTime = 86400 + 22500; }},
    {"P2",        {{2, 77, 1, 1}},           [](R& r) { r.P2 = 1; }},
    {"BnBad",     {{2, 78, 3, 0b101}},       [](R& r) { r.BnBits = 5, r.Bn = r.Health = 1; }},
    {"BnGood",    {{2, 78, 3, 0b011}},       [](R& r) { r.BnBits = 3; }},
    {"PosZ",      {{3, 9, 27, 0x6000001}},   [](R& r) { r.PosZ = -33554433000 * 0x1p-11; }},
    {"Greatest",  {{3, 9, 27, 0x3FFFFFF}},   [](R& r) { r.PosZ = 32767999.51171875; }},
    {"AccZ",      {{3, 36, 5, 0x19}},        [](R& r) { r.AccZ = -9000 * 0x1p-30; }},
    {"MinusZero", {{3, 36, 5, 0x10}},        [](R&) {}},
    {"VelZ",      {{3, 41, 24, 0xC00001}},   [](R& r) { r.VelZ = -4194305000 * 0x1p-20; }},
    {"Ln",        {{3, 65, 1, 1}},           [](R& r) { r.Ln = 1; }},
    {"P",         {{3, 66, 2, 2}},           [](R& r) { r.P = 2; }},
    {"GammaN",    {{3, 69, 11, 0x601}},      [](R& r) { r.GammaN = -513 * 0x1p-40; }},
    {"P3",        {{3, 80, 1, 1}},           [](R& r) { r.P3 = 1; }},
    {"M",         {{4, 9, 2, 2}},            [](R& r) { r.M = 2; }},
    {"N24",       {{4, 11, 5, 24}},          [](R& r) { r.N = 24; }},
    {"Nt1025",    {{4, 16, 11, 1024}},       [](R& r) { r.Nt = 1025, r.FrameWeek = r.RefWeek = 2441, r.FrameTime = r.RefTime = 259200; }},
    {"Ft8",       {{4, 30, 4, 8}},           [](R& r) { r.Ft = 8; }},
    {"Ft15",      {{4, 30, 4, 15}},          [](R& r) { r.Ft = 15; }},
    {"P4",        {{4, 34, 1, 1}},           [](R& r) { r.P4 = 1; }},
    {"En",        {{4, 49, 5, 17}},          [](R& r) { r.En = 17; }},
    {"DeltaTauN", {{4, 54, 5, 0x19}},        [](R& r) { r.DeltaTauN = -9 * 0x1p-30; }},
    {"TauN",      {{4, 59, 22, 0x300001}},   [](R& r) { r.TauN = -1048577 * 0x1p-30; }},
    {"TauGps",    {{5, 10, 22, 0x300001}},   [](R& r) { r.TauGps = -1048577 * 0x1p-30; }},
    {"N4in2088",  {{5, 32, 5, 16}},          [](R& r) { r.N4 = 24, r.FrameWeek = r.RefWeek = 5634, r.FrameTime = r.RefTime = 345600; }},
    {"TauC",      {{5, 38, 32, 0xC0000001}}, [](R& r) { r.TauC = -1073741825 * 0x1p-31; }},
    {"ReadPast",  {{1, 1, 8, ~0U}, {2, 1, 8, ~0U}, {3, 1, 8, ~0U}, {4, 1, 8, ~0U}, {5, 1, 9, ~0U}, {1, 79, 7, ~0U},
                   {2, 65, 5, ~0U}, {2, 81, 5, ~0U}, {3, 68, 1, 1}, {3, 81, 5, ~0U}, {4, 27, 3, ~0U}, {4, 35, 14, ~0U},
                   {4, 81, 5, ~0U}, {5, 37, 1, 1}, {5, 70, 16, ~0U}, {1, -10, 11, ~0U}, {5, -10, 11, ~0U}}, [](R&) {}},
};
// clang-format on

TEST_ROWS(GlonassField, ChangesNothingElse, kFields, row) {
  R expected = NewYearRecord();
  row.expect(expected);
  GlonassStrings strings = NewYear();
  for (const S_Piece& p : row.pieces) strings.Set(p.string, p.first, p.count, p.sent);
  D decoder(nullptr);  // GLONASS sends whole dates: no seed is needed
  R record;
  std::memset(&record, 0x5A, sizeof record);
  EXPECT_EQ(Decode65(decoder, strings.Data(5, 9), record), eResultOk);
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
}

TEST(Glonass, SlotsAndChannels) {
  for (unsigned int slot = 0; slot < 256; ++slot)
    for (const unsigned int channelByte : {0U, 1U, 14U, 15U, 127U, 128U, 135U, 136U, 137U, 255U}) {
      D decoder(nullptr);
      ASSERT_TRUE(decoder.SetGlonassSvChannelId(7, 3));
      R record;
      const bool accepted = slot >= 1 && slot <= 24 && (channelByte == 136 || (channelByte >= 1 && channelByte <= 14));
      ASSERT_EQ(Decode65(decoder, NewYear().Data(slot, channelByte), record),
                accepted ? eResultOk : eResultWrongMessage)
          << slot << " " << channelByte;
      const auto channel = static_cast<signed char>(channelByte - 8);
      ASSERT_EQ(record.SvId, slot);
      ASSERT_EQ(record.FreqChannel, channel);
      ASSERT_EQ(record.Valid, accepted ? 1U : 0U);
      ASSERT_EQ(decoder.GetGlonassSvChannelId(static_cast<unsigned char>(slot)), accepted    ? channel
                                                                                 : slot == 7 ? 3
                                                                                             : -128);
    }
}

struct S_FrameTimeCase {
  const char* name;
  std::uint32_t nt, hours, minutes, half, tb;  // of N4 = 8: day 1 is Monday, 1 January 2024, GPS week 2295
  unsigned short refWeek;
  double refTime;
  unsigned short frameWeek;
  double frameTime;
};

// The two times of day may lie half a day apart at most, else a day is added or taken off: added when the frame's time
// of day is greater than the reference time of *week*, which after Sunday it never is.
const S_FrameTimeCase kFrameTimes[] = {
    {"SameDay", 1, 6, 30, 1, 25, 2295, 108900, 2295, 109830},
    {"HalfADayApart", 1, 12, 0, 0, 0, 2295, 86400, 2295, 129600},
    {"MoreThanHalfADay", 1, 12, 0, 1, 0, 2295, 86400, 2295, 43230},
    {"EveningBefore", 1, 23, 59, 1, 1, 2295, 87300, 2295, 86370},
    {"EveningBeforeSunday", 7, 23, 59, 1, 1, 2296, 900, 2296, 172770},
    {"MorningAfterIsTakenForTheDayBefore", 1, 0, 0, 0, 95, 2295, 171900, 2295, 0},
    {"MorningAfterSunday", 7, 0, 0, 0, 95, 2296, 85500, 2295, 518400},
    {"PastTheWeekIsNotCarried", 6, 31, 63, 1, 127, 2296, 27900, 2296, 115410},
    {"ReferenceBeyondTheDay", 1, 31, 0, 0, 127, 2295, 200700, 2295, 284400},
    {"BeyondTheEndOfTheWeek", 6, 25, 0, 0, 95, 2295, 603900, 2295, 608400},
};

TEST_ROWS(GlonassFrameTime, LiesAtTheReferenceTime, kFrameTimes, c) {
  GlonassStrings strings;
  strings.Set(1, 65, 12, c.hours << 7 | c.minutes << 1 | c.half);
  strings.Set(2, 70, 7, c.tb);
  strings.Set(4, 16, 11, c.nt);
  strings.Set(5, 32, 5, 8);
  D decoder(nullptr);
  R record;
  EXPECT_EQ(Decode65(decoder, strings.Data(1, 8), record), eResultOk);
  EXPECT_EQ(record.RefWeek, c.refWeek);
  EXPECT_EQ(record.RefTime, c.refTime);
  EXPECT_EQ(record.FrameWeek, c.frameWeek);
  EXPECT_EQ(record.FrameTime, c.frameTime);
}

TEST(Glonass, DatesAgreeWithErfa) {
  for (unsigned short n4 = 1; n4 <= 26; ++n4)  // 1996 to 2099
    for (unsigned short nt = 1; nt <= 1461; ++nt) {
      double epoch, mjd;
      ASSERT_EQ(eraCal2jd(1992 + 4 * n4, 1, 1, &epoch, &mjd), 0);
      const auto days = static_cast<unsigned int>(mjd) + nt - 1 - 44244;
      C_GnssTime time;
      D::ResolveGstTb(n4, nt, 900.25, time);
      ASSERT_EQ(time.m_system, ALGO::GNSS_GLONASS);
      ASSERT_EQ(time.m_week, days / 7);
      ASSERT_EQ(time.m_secOfWeek, days % 7 * 86400 + 900.25);
    }
}

struct S_GstCase {
  const char* name;
  unsigned short n4, nt;
  double tb;
  unsigned short week;
  double seconds;
};

const S_GstCase kGst[] = {
    {"BeforeTheDay", 8, 7, -900, 2295, 603900},
    {"WeeksAhead", 8, 1, 604800.0 * 40000 + 1, 42295, 86401},
    {"DayZero", 8, 0, 0, 2295, 0},
    {"DayAbove32767", 8, 32768, 0, (16065 + 32768) / 7, (16065 + 32768) % 7 * 86400},
    {"MostPositiveDay", 8, 32767, 0, (16065 + 32767) / 7, (16065 + 32767) % 7 * 86400},
};

TEST_ROWS(GlonassDate, OutOfTheOrdinary, kGst, row) {
  C_GnssTime time;
  D::ResolveGstTb(row.n4, row.nt, row.tb, time);
  EXPECT_EQ(time.m_week, row.week);
  EXPECT_EQ(time.m_secOfWeek, row.seconds);
}

// --- message 93 ----------------------------------------------------------------------------------------------------

std::string SbasBody(unsigned int week, unsigned int timeOfWeek, unsigned int t0) {
  std::string body = LittleEndian(131 + 256, 2) + LittleEndian(week, 2) + LittleEndian(timeOfWeek, 4);
  body += LittleEndian(77, 2) + LittleEndian(9, 2) + LittleEndian(t0, 4);
  // x, y, z, velocity, acceleration
  for (const int value : {-303456789, 411234567, -1, 1234, -1234, 250, -200, 200, -2147483647 - 1})
    body += LittleEndian(static_cast<std::uint32_t>(value), 4);
  return body + LittleEndian(0x8000, 2) + LittleEndian(0x7FFF, 2);  // clock offset and drift: the least, the greatest
}

unsigned int Decode93(unsigned short seedWeek, const std::string& body, R& record) {
  D decoder(nullptr);
  decoder.SeedTime(seedWeek, 0.0, ALGO::GNSS_GPS);
  ExactCopy frame(BinFrame(93, body));
  return decoder.Decode_Bin93(frame.Data(), frame.Size(), record);
}

// PRN 131, week 252 of the third period, worked by hand from the units of RTCA DO-229, message 9:
//   x = -303456789 * 0.08 m = -24276543.12 m;  y = 411234567 * 0.08 m = 32898765.36 m;  z = -0.4 m
//   x' = 1234 * 0.000625 m/s = 0.77125 m/s;    y' = -0.77125 m/s;                       z' = 250 * 0.004 m/s = 1 m/s
//   x" = -200 * 0.0000125 m/s^2 = -0.0025;     y" = 0.0025;    z" = -2^31 * 0.0000625 m/s^2 = -134217.728 m/s^2
//   clock offset -2^15 * 2^-31 s = -2^-16 s; drift 32767 * 2^-40
TEST(Sbas, HandWorkedExample) {
  R r;
  SetEmpty_IFEphRec(r);
  r.System = 4;
  r.SvId = 131;
  r.Spare = r.TimeSystem = 0;
  r.Health = r.Bn = 0;
  r.Tb = r.Iod = 77;
  r.Ft = 9;
  r.RefWeek = r.FrameWeek = 2300;
  r.RefTime = 345600;
  r.FrameTime = 345500;
  r.TauN = -0x1p-16;
  r.GammaN = 32767 * 0x1p-40;
  R record;
  std::memset(&record, 0x5A, sizeof record);
  EXPECT_EQ(Decode93(2300, SbasBody(252, 345500, 345600), record), eResultOk);
  EXPECT_DOUBLE_EQ(record.PosX, -24276543.12);
  EXPECT_DOUBLE_EQ(record.PosY, 32898765.36);
  EXPECT_DOUBLE_EQ(record.PosZ, -0.4);
  EXPECT_DOUBLE_EQ(record.VelX, 0.77125);
  EXPECT_DOUBLE_EQ(record.VelY, -0.77125);
  EXPECT_DOUBLE_EQ(record.VelZ, 1);
  EXPECT_DOUBLE_EQ(record.AccX, -0.0025);
  EXPECT_DOUBLE_EQ(record.AccY, 0.0025);
  EXPECT_DOUBLE_EQ(record.AccZ, -134217.728);
  std::memcpy(&r.PosX, &record.PosX, 9 * sizeof(double));
  EXPECT_EQ(std::memcmp(&record, &r, sizeof record), 0) << "anything but position, velocity, acceleration";
}

struct S_SbasWeekCase {
  const char* name;
  unsigned int week, timeOfWeek, t0;
  unsigned short seedWeek;
  unsigned int result;
  unsigned short refWeek, frameWeek;
};

const S_SbasWeekCase kSbasWeeks[] = {
    {"FullWeek", 2300, 345500, 345600, 2300, eResultOk, 2300, 2300},
    {"ReferenceInTheWeekBefore", 252, 10, 604790, 2300, eResultOk, 2300, 2301},
    {"ReferenceInTheNextWeek", 252, 604790, 10, 2300, eResultOk, 2300, 2299},
    {"ExactlyHalfAWeek", 252, 302410, 10, 2300, eResultOk, 2300, 2300},
    {"JustOverHalfAWeek", 252, 302411, 10, 2300, eResultOk, 2300, 2299},
    {"TimeAtHalfAWeek", 252, 302400, 4294967295, 2300, eResultOk, 2300, 2301},
    {"TimeBehindHalfAWeek", 252, 302401, 4294967295, 2300, eResultOk, 2300, 2299},
    {"NoSeed", 252, 10, 10, 0, eResultWrongMessage, 252, 0},
};

TEST_ROWS(SbasWeeks, AreCompletedAgainstTheSeed, kSbasWeeks, c) {
  R record;
  EXPECT_EQ(Decode93(c.seedWeek, SbasBody(c.week, c.timeOfWeek, c.t0), record), c.result);
  EXPECT_EQ(record.RefWeek, c.refWeek);
  EXPECT_EQ(record.RefTime, c.t0);
  EXPECT_EQ(record.FrameWeek, c.frameWeek);
  EXPECT_EQ(record.FrameTime, c.result == eResultOk ? c.timeOfWeek : 0);
}

TEST(Pva, ConversionsRefuseTheHeaderOfAnotherMessage) {
  D decoder(nullptr);
  decoder.SeedTime(2300, 0.0, ALGO::GNSS_GPS);
  R empty, record;
  SetEmpty_IFEphRec(empty);
  VelaBIN_Messages::S_BinMsg65 glonass{};
  glonass.Header.BlockId = 93;
  glonass.Slot = glonass.Channel = 1;
  EXPECT_FALSE(decoder.Bin65ToIFPvaEphRec(glonass, record));
  EXPECT_EQ(std::memcmp(&record, &empty, sizeof record), 0);
  VelaBIN_Messages::S_BinMsg93 sbas{};
  sbas.Header.BlockId = 65;
  EXPECT_FALSE(decoder.Bin93ToIFPvaEphRec(sbas, record));
  EXPECT_EQ(std::memcmp(&record, &empty, sizeof record), 0);
}

}  // namespace
