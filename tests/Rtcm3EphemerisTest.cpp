// Ephemerides: every field of every message, weeks, and the same satellite through the binary protocol.
#include <cstring>
#include <map>
#include <tuple>
#include <vector>

#include "binproto/VelaBin_Decode.h"
#include "stream/FrameReader.h"
#include "tests/Cases.h"
#include "tests/HostData.h"
#include "tests/Rtcm3Records.h"

namespace {

using namespace velagnss;
using K = S_IFKeplerEphRec;
using P = S_IFPvaEphRec;

constexpr double kPi = 3.141592653589793;
const C_GnssTime kSeed(2314, 345600.0, ALGO::GNSS_GPS);

// One field as sent. Without a member it is looked at elsewhere, or must leave no trace.
template <class Record>
struct S_Sent {
  unsigned int bits;
  std::int64_t value;
  double Record::*member = nullptr;
  double expected = 0;
};

template <class Record>
Rtcm3Bits Message(const std::vector<S_Sent<Record>>& fields) {
  Rtcm3Bits bits;
  for (const auto& field : fields) bits.Put(field.value, field.bits);
  return bits;
}

template <class Record>
void ExpectMembers(const std::vector<S_Sent<Record>>& fields, const Record& record) {
  unsigned int at = 0;
  for (const auto& field : fields) {
    if (field.member != nullptr) {
      EXPECT_EQ(record.*field.member, field.expected) << "field at bit " << at;
    }
    at += field.bits;
  }
}

// Fields in the order of the standard. Signed ones are sent as the least number but one, or near it; scale factors are
// those of the systems' interface documents. Elements have the units of the record: angles in semicircles become rad.
// clang-format off
const std::vector<S_Sent<K>> kNavic1041 = {
    {12, 1041}, {6, 14}, {10, 266}, {22, -2097151, &K::Af0, -2097151 * 0x1p-31}, {16, -32767, &K::Af1, -32767 * 0x1p-43},
    {8, -127, &K::Af2, -127 * 0x1p-55}, {4, 5, &K::Ura, 11.313708498984761}, {16, 21601, &K::Toc, 345616},
    {8, -127, &K::Tgd, -127 * 0x1p-31}, {22, -2097151, &K::DeltaN, -2097151 * 0x1p-41 * kPi}, {8, 0xA1}, {10, -1}, {1, 1}, {1, 0},
    {15, -16383, &K::Cuc, -16383 * 0x1p-28}, {15, -16382, &K::Cus, -16382 * 0x1p-28}, {15, -16381, &K::Cic, -16381 * 0x1p-28},
    {15, -16380, &K::Cis, -16380 * 0x1p-28}, {15, -16379, &K::Crc, -16379 / 16.0}, {15, -16378, &K::Crs, -16378 / 16.0},
    {14, -8191, &K::IDot, -8191 * 0x1p-43 * kPi}, {32, -2147483647, &K::M0, -2147483647 * 0x1p-31 * kPi},
    {16, 21600, &K::Toe, 345600}, {32, 2147483649, &K::Ecc, 2147483649 * 0x1p-33}, {32, 3402002929, &K::SqrtA, 3402002929 * 0x1p-19},
    {32, -2147483646, &K::Omega0, -2147483646 * 0x1p-31 * kPi}, {32, -2147483645, &K::Omega, -2147483645 * 0x1p-31 * kPi},
    {22, -2097150, &K::OmegaDot, -2097150 * 0x1p-41 * kPi}, {32, 659370411, &K::I0, 659370411 * 0x1p-31 * kPi}, {4, -1},
};
const std::vector<S_Sent<K>> kBeidou1042 = {
    {12, 1042}, {6, 63}, {13, 958}, {4, 1, &K::Ura, 2.8284271247461903}, {14, -8191, &K::IDot, -8191 * 0x1p-43 * kPi}, {5, 17},
    {17, 43201, &K::Toc, 345608}, {11, -1023, &K::Af2, -1023 * 0x1p-66}, {22, -2097151, &K::Af1, -2097151 * 0x1p-50},
    {24, -8388607, &K::Af0, -8388607 * 0x1p-33}, {5, 30}, {18, -131071, &K::Crs, -131071 / 64.0},
    {16, -32767, &K::DeltaN, -32767 * 0x1p-43 * kPi}, {32, -2147483647, &K::M0, -2147483647 * 0x1p-31 * kPi},
    {18, -131070, &K::Cuc, -131070 * 0x1p-31}, {32, 2147483649, &K::Ecc, 2147483649 * 0x1p-33}, {18, -131069, &K::Cus, -131069 * 0x1p-31},
    {32, 2769002929, &K::SqrtA, 2769002929 * 0x1p-19}, {17, 43200, &K::Toe, 345600}, {18, -131068, &K::Cic, -131068 * 0x1p-31},
    {32, -2147483646, &K::Omega0, -2147483646 * 0x1p-31 * kPi}, {18, -131067, &K::Cis, -131067 * 0x1p-31},
    {32, 659370411, &K::I0, 659370411 * 0x1p-31 * kPi}, {18, -131066, &K::Crc, -131066 / 64.0},
    {32, -2147483645, &K::Omega, -2147483645 * 0x1p-31 * kPi}, {24, -8388606, &K::OmegaDot, -8388606 * 0x1p-43 * kPi},
    {10, -511, &K::Tgd, -5.11e-8}, {10, 503}, {1, 1},
};
const std::vector<S_Sent<K>> kQzss1044 = {
    {12, 1044}, {4, 2}, {16, 21601, &K::Toc, 345616}, {8, -127, &K::Af2, -127 * 0x1p-55}, {16, -32767, &K::Af1, -32767 * 0x1p-43},
    {22, -2097151, &K::Af0, -2097151 * 0x1p-31}, {8, 0xA1}, {16, -32766, &K::Crs, -32766 / 32.0},
    {16, -32765, &K::DeltaN, -32765 * 0x1p-43 * kPi}, {32, -2147483647, &K::M0, -2147483647 * 0x1p-31 * kPi},
    {16, -32764, &K::Cuc, -32764 * 0x1p-29}, {32, 2147483649, &K::Ecc, 2147483649 * 0x1p-33}, {16, -32763, &K::Cus, -32763 * 0x1p-29},
    {32, 3402002929, &K::SqrtA, 3402002929 * 0x1p-19}, {16, 21600, &K::Toe, 345600}, {16, -32762, &K::Cic, -32762 * 0x1p-29},
    {32, -2147483646, &K::Omega0, -2147483646 * 0x1p-31 * kPi}, {16, -32761, &K::Cis, -32761 * 0x1p-29},
    {32, 659370411, &K::I0, 659370411 * 0x1p-31 * kPi}, {16, -32760, &K::Crc, -32760 / 32.0},
    {32, -2147483645, &K::Omega, -2147483645 * 0x1p-31 * kPi}, {24, -8388606, &K::OmegaDot, -8388606 * 0x1p-43 * kPi},
    {14, -8191, &K::IDot, -8191 * 0x1p-43 * kPi}, {2, 2}, {10, 266}, {4, 15, &K::Ura, 1e99}, {6, 0x21}, {8, -127, &K::Tgd, -127 * 0x1p-31},
    {10, 0x2A5}, {1, 1, &K::FitInterval, 1},
};
// What 1045 and 1046 have in common, from the satellite on.
const std::vector<S_Sent<K>> kGalileo = {
    {6, 36}, {12, 1290}, {10, 0x3A5}, {8, 107, &K::Ura, 3.12}, {14, -8191, &K::IDot, -8191 * 0x1p-43 * kPi},
    {14, 5761, &K::Toc, 345660}, {6, -31, &K::Af2, -31 * 0x1p-59}, {21, -1048575, &K::Af1, -1048575 * 0x1p-46},
    {31, -1073741823, &K::Af0, -1073741823 * 0x1p-34}, {16, -32767, &K::Crs, -32767 / 32.0},
    {16, -32766, &K::DeltaN, -32766 * 0x1p-43 * kPi}, {32, -2147483647, &K::M0, -2147483647 * 0x1p-31 * kPi},
    {16, -32765, &K::Cuc, -32765 * 0x1p-29}, {32, 2147483649, &K::Ecc, 2147483649 * 0x1p-33}, {16, -32764, &K::Cus, -32764 * 0x1p-29},
    {32, 2852002929, &K::SqrtA, 2852002929 * 0x1p-19}, {14, 5760, &K::Toe, 345600}, {16, -32763, &K::Cic, -32763 * 0x1p-29},
    {32, -2147483646, &K::Omega0, -2147483646 * 0x1p-31 * kPi}, {16, -32762, &K::Cis, -32762 * 0x1p-29},
    {32, 659370411, &K::I0, 659370411 * 0x1p-31 * kPi}, {16, -32761, &K::Crc, -32761 / 32.0},
    {32, -2147483645, &K::Omega, -2147483645 * 0x1p-31 * kPi}, {24, -8388606, &K::OmegaDot, -8388606 * 0x1p-43 * kPi},
    {10, -511, &K::Tgd, -511 * 0x1p-32},
};
// clang-format on

std::vector<S_Sent<K>> Galileo(std::int64_t number, const std::vector<S_Sent<K>>& tail) {
  std::vector<S_Sent<K>> fields = {{12, number}};
  fields.insert(fields.end(), kGalileo.begin(), kGalileo.end());
  fields.insert(fields.end(), tail.begin(), tail.end());
  return fields;
}

// Members that are not doubles, and those outside of `ephemeris`.
struct S_KeplerCase {
  const char* name;
  std::vector<S_Sent<K>> fields;
  unsigned int system, timeSystem, svId, health, iode, iodc, codeOnL2;
  unsigned int accuracyIndex, dataSource;
  double groupDelay2;
};
const S_KeplerCase kKeplers[] = {
    {"Navic1041", kNavic1041, 6, 6, 14, 2, 0xA1, NA_U32, NA_U16, 5, NA_U16, NA_DOUBLE},
    {"Beidou1042", kBeidou1042, 2, 2, 63, 1, 17, 30, NA_U16, 1, NA_U16, 5.03e-8},
    {"Qzss1044", kQzss1044, 5, 0, 194, 0x21, 0xA1, 0x2A5, 2, 15, NA_U16, NA_DOUBLE},
    {"Fnav1045", Galileo(1045, {{2, 2}, {1, 1}, {7, -1}}), 3, 3, 36, 0b0'0010'1000, 0x3A5, NA_U32, NA_U16, 107, 258,
     NA_DOUBLE},
    {"Inav1046", Galileo(1046, {{10, -510}, {2, 2}, {1, 1}, {2, 1}, {1, 1}, {2, -1}}), 3, 3, 36, 0b1'0100'0011, 0x3A5,
     NA_U32, NA_U16, 107, 517, -510 * 0x1p-32},
};

TEST_ROWS(Rtcm3Kepler, HasEveryField, kKeplers, row) {
  const auto out = Rtcm3Payloads(kSeed).Get<Rtcm3KeplerEphemeris>(Message(row.fields));
  const K& eph = out.ephemeris;
  ExpectMembers(row.fields, eph);
  EXPECT_EQ(eph.System, row.system);
  EXPECT_EQ(eph.TimeSystem, row.timeSystem);
  EXPECT_EQ(eph.SvId, row.svId);
  EXPECT_EQ(eph.Health, row.health);
  EXPECT_EQ(eph.SvHealth, row.health);
  EXPECT_EQ(eph.Iode, row.iode);
  EXPECT_EQ(eph.Iode2, row.iode);
  EXPECT_EQ(eph.Iodc, row.iodc);
  EXPECT_EQ(eph.CodeOnL2, row.codeOnL2);
  EXPECT_EQ(eph.L2PDataFlag, NA_U16);
  EXPECT_EQ(eph.TxTime, NA_DOUBLE);
  EXPECT_EQ(out.accuracyIndex, row.accuracyIndex);
  EXPECT_EQ(out.dataSource, row.dataSource);
  EXPECT_EQ(out.groupDelay2, row.groupDelay2);
  EXPECT_EQ(std::make_tuple(eph.TxWeek, eph.ToeWeek, eph.TocWeek), std::make_tuple(2314, 2314, 2314));
}

TEST(Rtcm3Kepler, Message63Is1042) {
  auto fields = kBeidou1042;
  fields[0].value = 63;
  const auto out = Rtcm3Payloads(kSeed).Get<Rtcm3KeplerEphemeris>(Message(fields));
  ExpectMembers(fields, out.ephemeris);
  EXPECT_EQ(out.message, 63);
}

TEST(Rtcm3Kepler, WhatIsNotAvailable) {
  auto fields = kQzss1044;
  fields[27].value = -128;  // group delay
  EXPECT_TRUE(IsNotAvailable(Rtcm3Payloads(kSeed).Get<Rtcm3KeplerEphemeris>(Message(fields)).ephemeris.Tgd));
  fields[1].value = 0;  // satellite
  EXPECT_EQ(Rtcm3Payloads(kSeed).Result(Message(fields)), eResultOutOfRange);
}

// --- Weeks and days -------------------------------------------------------------------------------------------------

struct S_WeekCase {
  const char* name;
  unsigned int seedWeek;  // 0: no seed
  double seedSeconds;
  std::int64_t weekSent, toe, toc;  // times in 16 s
  unsigned int result;
  int txWeek, toeWeek, tocWeek;
};
constexpr std::int64_t kTwoHoursBeforeEnd = 597600 / 16;
const S_WeekCase kWeeks[] = {
    {"NoSeed", 0, 0, 266, 0, 0, eResultNoSeed, 266, 266, 266},
    {"NineYearsLater", 2314 + 511, 0, 266, 21600, 21600, eResultOk, 2314, 2314, 2314},
    {"NineYearsEarlier", 2314 - 511, 0, 266, 21600, 21600, eResultOk, 2314, 2314, 2314},
    {"RollOver", 2047, 604799, 0, 21600, 21600, eResultOk, 2048, 2048, 2048},
    {"ToeInNextWeek", 2314, 604000, 266, 0, 0, eResultOk, 2314, 2315, 2315},
    {"WeekOfToeWasSent", 2314, 604000, 267, 0, 0, eResultOk, 2315, 2315, 2315},
    {"TocStillInThisWeek", 2314, 604000, 266, 0, kTwoHoursBeforeEnd, eResultOk, 2314, 2315, 2314},
    {"ToeInLastWeek", 2315, 100, 267, kTwoHoursBeforeEnd, 0, eResultOk, 2315, 2314, 2315},
    {"ToeFarFromNow", 2314, 345600, 266, 0, 0, eResultOk, 2314, 2314, 2314},
};

TEST_ROWS(Rtcm3Week, IsNearestToTheSeed, kWeeks, row) {
  auto fields = kQzss1044;
  fields[2].value = row.toc;
  fields[14].value = row.toe;
  fields[24].value = row.weekSent;
  const C_GnssTime seed(static_cast<unsigned short>(row.seedWeek), row.seedSeconds, ALGO::GNSS_GPS);
  const auto out = Rtcm3Payloads(seed).Get<Rtcm3KeplerEphemeris>(Message(fields), row.result);
  EXPECT_EQ(std::make_tuple(out.ephemeris.TxWeek, out.ephemeris.ToeWeek, out.ephemeris.TocWeek),
            std::make_tuple(row.txWeek, row.toeWeek, row.tocWeek));
  EXPECT_EQ(out.weekSent, row.weekSent);
}

TEST(Rtcm3Week, ComesFromHealthySatellitesWithoutASeed) {
  Rtcm3Payloads payloads;
  payloads.Get<Rtcm3KeplerEphemeris>(Message(Galileo(1045, {{2, 1}, {1, 0}, {7, 0}})));
  payloads.Get<Rtcm3KeplerEphemeris>(Message(kQzss1044), eResultNoSeed);
  const auto galileo = payloads.Get<Rtcm3KeplerEphemeris>(Message(Galileo(1045, {{2, 0}, {1, 0}, {7, 0}})));
  EXPECT_EQ(galileo.ephemeris.ToeWeek, 2314);
  EXPECT_EQ(payloads.Get<Rtcm3KeplerEphemeris>(Message(kQzss1044)).ephemeris.ToeWeek, 2314);
}

// 18 May 2024 is a Saturday, day 139 of the interval from 2024 on, N4 8.
struct S_DayCase {
  const char* name;
  unsigned int seedWeek;  // seed on its Saturday, 6 h; 0: none
  unsigned int tb;        // 15 min
  unsigned int tk;        // min
  unsigned int nt, n4, hasMore;
  unsigned int result;
  int refWeek;
  double refTime;
  int frameWeek;
  double frameTime;
};
const S_DayCase kDays[] = {
    {"SameDay", 0, 3, 30, 139, 8, 1, eResultOk, 2314, 518400 + 2700, 2314, 518400 + 1800},
    {"FrameOfTheDayBefore", 0, 0, 1425, 139, 8, 1, eResultOk, 2314, 518400, 2314, 518400 - 900},
    {"FrameOfTheDayAfter", 0, 95, 0, 139, 8, 1, eResultOk, 2314, 518400 + 85500, 2315, 0},
    {"LastDayOfInterval", 0, 0, 0, 1461, 8, 1, eResultOk, 2503, 432000, 2503, 432000},
    {"NoInterval", 2314, 3, 30, 139, 0, 1, eResultOk, 2314, 518400 + 2700, 2314, 518400 + 1800},
    {"IntervalNotValid", 2314, 3, 30, 139, 2, 0, eResultOk, 2314, 518400 + 2700, 2314, 518400 + 1800},
    {"NoDay", 2314, 3, 30, 0, 8, 1, eResultOk, 2314, 518400 + 2700, 2314, 518400 + 1800},
    {"NoDayNoSeed", 0, 3, 30, 0, 8, 1, eResultNoSeed, 0, 2700, 0, 1800},
    {"NoIntervalNoSeed", 0, 3, 30, 139, 8, 0, eResultNoSeed, 0, 2700, 0, 1800},
};

TEST_ROWS(Rtcm3Day, OfGlonassIsResolved, kDays, row) {
  const unsigned int tk = row.tk / 60 << 7 | row.tk % 60 << 1;
  Rtcm3Bits bits{{1020, 12}, {24, 6}, {13, 5}, {0b10, 2}, {0, 2}, {tk, 12}, {1, 1}, {0, 1}, {row.tb, 7}, {0, 3 * 56}};
  bits.Put({{0, 1 + 11 + 2 + 1 + 22 + 5 + 5 + 1 + 4}, {row.nt, 11}, {1, 2}, {row.hasMore, 1}, {0, 11}});
  bits.Put({{0x80000001, 32}, {row.n4, 5}, {3, 22}, {1, 1}, {0, 7}});
  const C_GnssTime seed(static_cast<unsigned short>(row.seedWeek), row.seedWeek == 0 ? 0 : 540000, ALGO::GNSS_GPS);
  Rtcm3Payloads payloads(seed);
  const auto out = payloads.Get<Rtcm3PvaEphemeris>(bits, row.result);
  const P& eph = out.ephemeris;
  EXPECT_EQ(std::make_tuple(eph.RefWeek, eph.RefTime), std::make_tuple(row.refWeek, row.refTime));
  EXPECT_EQ(std::make_tuple(eph.FrameWeek, eph.FrameTime), std::make_tuple(row.frameWeek, row.frameTime));
  EXPECT_EQ(eph.FreqChannel, 6);
  EXPECT_EQ(payloads.decoder.GlonassChannel(24), 6);
  EXPECT_EQ(eph.Health, 1U);
  EXPECT_EQ(eph.TauC, row.hasMore != 0 ? -0x1p-31 : NA_DOUBLE);
  EXPECT_EQ(eph.TauGps, row.hasMore != 0 ? 3 * 0x1p-30 : NA_DOUBLE);
  EXPECT_EQ(out.almanacHealth, NA_U8);
  EXPECT_EQ(out.frameTimeSent, tk);
}

// --- The sample session ---------------------------------------------------------------------------------------------

// GPS and GLONASS satellites of the sample session, which sends them by both protocols over the end of a week: the
// records differ in nothing but what RTCM 3 does not carry.
class SampleSession {
 public:
  SampleSession() {
    const C_GnssTime start(2314, 604638.0, ALGO::GNSS_GPS);
    m_rtcm.SeedTime(start);
    m_binary.SeedTime(start);
    const std::string session = ReadHostFile("samples/session.bin");
    FrameReader reader;
    reader.Feed(reinterpret_cast<const unsigned char*>(session.data()), session.size());
    while (const Frame* frame = reader.NextFrame()) Take(*frame);
  }

  std::map<std::tuple<int, double, int>, K> keplerOfBinary, keplerOfRtcm;  // by satellite, toe, week
  std::map<std::tuple<int, double, int>, P> pvaOfBinary, pvaOfRtcm;        // by satellite, reference time, frame time

 private:
  void Take(const Frame& frame) {
    if (frame.protocol == C_RawDataMessage::eRTCM3_x) {
      const Rtcm3Decoded& decoded = m_rtcm.Decode(frame.data, frame.length);
      EXPECT_EQ(decoded.result, eResultOk);
      const auto* const k = std::get_if<Rtcm3KeplerEphemeris>(&decoded.record);
      if (k != nullptr && k->ephemeris.System == ALGO::GNSS_GPS) Add(k->ephemeris, keplerOfRtcm);
      if (const auto* p = std::get_if<Rtcm3PvaEphemeris>(&decoded.record)) Add(p->ephemeris, pvaOfRtcm);
    }
    if (frame.protocol != C_RawDataMessage::eVelaBIN) return;
    unsigned short number = 0;
    const auto out = std::make_unique<U_VelaBIN_EcdDcdData>();
    if (m_binary.Decode(const_cast<unsigned char*>(frame.data), frame.length, number, *out) != eResultOk) return;
    if (number == VelaBIN_Messages::eBin95) Add(out->keplerEph, keplerOfBinary);
    if (number == VelaBIN_Messages::eBin65) Add(out->pvaEph, pvaOfBinary);
  }
  static void Add(const K& record, std::map<std::tuple<int, double, int>, K>& records) {
    records[{record.SvId, record.Toe, record.TxWeek}] = record;
  }
  static void Add(const P& record, std::map<std::tuple<int, double, int>, P>& records) {
    records[{record.SvId, record.RefTime, static_cast<int>(record.FrameTime)}] = record;
  }

  Rtcm3Decoder m_rtcm;
  C_VelaBin_Decode m_binary{nullptr};
};

TEST(Rtcm3Ephemeris, IsThatOfTheBinaryProtocol) {
  const SampleSession session;
  unsigned int keplers = 0, pvas = 0;
  for (const auto& [key, binary] : session.keplerOfBinary) {
    const auto found = session.keplerOfRtcm.find(key);
    if (found == session.keplerOfRtcm.end()) continue;
    K rtcm = found->second;
    EXPECT_EQ(rtcm.TxTime, NA_DOUBLE);
    rtcm.TxTime = binary.TxTime;
    EXPECT_EQ(std::memcmp(&rtcm, &binary, sizeof rtcm), 0) << "G" << int{binary.SvId} << ", week " << binary.TxWeek;
    ++keplers;
  }
  for (const auto& [key, binary] : session.pvaOfBinary) {
    const auto found = session.pvaOfRtcm.find(key);
    if (found == session.pvaOfRtcm.end()) continue;
    P rtcm = found->second;
    rtcm.N = binary.N;
    rtcm.BnBits = static_cast<std::uint8_t>(rtcm.BnBits | (binary.BnBits & 3));
    EXPECT_EQ(std::memcmp(&rtcm, &binary, sizeof rtcm), 0) << "R" << int{binary.SvId};
    ++pvas;
  }
  EXPECT_GT(keplers, 5U);
  EXPECT_GT(pvas, 3U);
}

}  // namespace
