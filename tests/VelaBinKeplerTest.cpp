// GPS and QZSS ephemerides: messages 95 and 25.

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "binproto/VelaBin_Decode.h"
#include "records/ResultCodes.h"
#include "tests/BinaryFrames.h"
#include "tests/Cases.h"

namespace {

using R = S_IFKeplerEphRec;

constexpr double kPi = 3.141592653589793;

// Decodes message 25 or 95; `seedWeek` 0: without a seed.
unsigned int Decode(const Subframes& subframes, unsigned int prn, bool qzss, unsigned short seedWeek, R& record) {
  C_VelaBin_Decode decoder(nullptr);
  decoder.SeedTime(seedWeek, 0.0, ALGO::GNSS_GPS);
  ExactCopy frame(BinFrame(qzss ? 25 : 95, subframes.Data(prn)));
  return qzss ? decoder.Decode_Bin25(frame.Data(), frame.Size(), record)
              : decoder.Decode_Bin95(frame.Data(), frame.Size(), record, false);
}

// What words of nothing but zeroes give.
R Zeroes(bool qzss) {
  R record;
  EXPECT_EQ(Decode(Subframes(), qzss ? 193 : 1, qzss, 2048, record), eResultOk);
  return record;
}

// A piece of a field: word and bits as IS-GPS-200, figure 20-1, counts them, and what is sent there.
struct S_Piece {
  int subframe, word, first, last;
  std::uint32_t sent;
};

struct S_FieldCase {
  const char* name;
  std::vector<S_Piece> pieces;
  void (*expect)(R&);  // writes the one value that must follow into the record of zeroes
};

// Signed fields are sent as the least number but one: sign and last bit set. Scale factors: tables 20-I and 20-III.
// clang-format off
const S_FieldCase kFields[] = {
    {"TxTime",      {{1, 2, 1, 17, 100799 - 50400 + 1}}, [](R& r) { r.TxTime = 302400.0; }},
    {"CodeOnL2",    {{1, 3, 11, 12, 2}},        [](R& r) { r.CodeOnL2 = 2; }},
    {"Ura1",        {{1, 3, 13, 16, 1}},        [](R& r) { r.Ura = 2.8284271247461903; }},
    {"Ura6",        {{1, 3, 13, 16, 6}},        [](R& r) { r.Ura = 16; }},
    {"Ura7",        {{1, 3, 13, 16, 7}},        [](R& r) { r.Ura = 32; }},
    {"Ura15",       {{1, 3, 13, 16, 15}},       [](R& r) { r.Ura = 1e99; }},
    {"Health",      {{1, 3, 17, 22, 0x21}},     [](R& r) { r.Health = r.SvHealth = 0x21; }},
    {"Iodc",        {{1, 3, 23, 24, 1}, {1, 8, 1, 8, 240}}, [](R& r) { r.Iodc = 496; }},
    {"L2PDataFlag", {{1, 4, 1, 1, 1}},          [](R& r) { r.L2PDataFlag = 1; }},
    {"Tgd",         {{1, 7, 17, 24, 0x81}},     [](R& r) { r.Tgd = -127 * 0x1p-31; }},
    {"Toc",         {{1, 8, 9, 24, 0x2001}},    [](R& r) { r.Toc = 0x2001 * 16.0; }},
    {"Af2",         {{1, 9, 1, 8, 0x81}},       [](R& r) { r.Af2 = -127 * 0x1p-55; }},
    {"Af1",         {{1, 9, 9, 24, 0x8001}},    [](R& r) { r.Af1 = -32767 * 0x1p-43; }},
    {"Af0",         {{1, 10, 1, 22, 0x200001}}, [](R& r) { r.Af0 = -2097151 * 0x1p-31; }},
    {"Iode",        {{2, 3, 1, 8, 0x81}},       [](R& r) { r.Iode = r.Iode2 = 0x81; }},
    {"Crs",         {{2, 3, 9, 24, 0x8001}},    [](R& r) { r.Crs = -32767 * 0x1p-5; }},
    {"DeltaN",      {{2, 4, 1, 16, 0x8001}},    [](R& r) { r.DeltaN = -32767 * 0x1p-43 * kPi; }},
    {"M0",          {{2, 4, 17, 24, 0x80}, {2, 5, 1, 24, 1}}, [](R& r) { r.M0 = -2147483647 * 0x1p-31 * kPi; }},
    {"Cuc",         {{2, 6, 1, 16, 0x8001}},    [](R& r) { r.Cuc = -32767 * 0x1p-29; }},
    {"Ecc",         {{2, 6, 17, 24, 0x80}, {2, 7, 1, 24, 1}}, [](R& r) { r.Ecc = 2147483649 * 0x1p-33; }},
    {"Cus",         {{2, 8, 1, 16, 0x8001}},    [](R& r) { r.Cus = -32767 * 0x1p-29; }},
    {"SqrtA",       {{2, 8, 17, 24, 0xA1}, {2, 9, 1, 24, 0x0D4AF1}}, [](R& r) { r.SqrtA = 2702002929 * 0x1p-19; }},
    {"Toe",         {{2, 10, 1, 16, 0x4001}},   [](R& r) { r.Toe = 0x4001 * 16.0; }},
    {"Cic",         {{3, 3, 1, 16, 0x8001}},    [](R& r) { r.Cic = -32767 * 0x1p-29; }},
    {"Omega0",      {{3, 3, 17, 24, 0x80}, {3, 4, 1, 24, 1}}, [](R& r) { r.Omega0 = -2147483647 * 0x1p-31 * kPi; }},
    {"Cis",         {{3, 5, 1, 16, 0x8001}},    [](R& r) { r.Cis = -32767 * 0x1p-29; }},
    {"I0",          {{3, 5, 17, 24, 0x27}, {3, 6, 1, 24, 0x4D31AB}}, [](R& r) { r.I0 = 659370411 * 0x1p-31 * kPi; }},
    {"Crc",         {{3, 7, 1, 16, 0x8001}},    [](R& r) { r.Crc = -32767 * 0x1p-5; }},
    {"Omega",       {{3, 7, 17, 24, 0xFF}, {3, 8, 1, 24, 0xFFFFFF}}, [](R& r) { r.Omega = -0x1p-31 * kPi; }},
    {"OmegaDot",    {{3, 9, 1, 24, 0x800001}},  [](R& r) { r.OmegaDot = -8388607 * 0x1p-43 * kPi; }},
    {"IDot",        {{3, 10, 9, 22, 0x2001}},   [](R& r) { r.IDot = -8191 * 0x1p-43 * kPi; }},
    {"FitAndIodc",  {{1, 3, 23, 24, 2}, {1, 8, 1, 8, 245}, {2, 10, 17, 17, 1}},
                    [](R& r) { r.Iodc = 757, r.FitInterval = r.System == ALGO::GNSS_QZSS ? 1 : 98; }},
    {"ReadPast",    {{1, 1, 1, 24, 0xFFFFFF}, {1, 2, 18, 24, 0x7F}, {1, 4, 2, 24, 0x7FFFFF}, {1, 5, 1, 24, 0xFFFFFF},
                     {1, 6, 1, 24, 0xFFFFFF}, {1, 7, 1, 16, 0xFFFF}, {1, 10, 23, 24, 3}, {2, 1, 1, 24, 0xFFFFFF},
                     {2, 2, 1, 24, 0xFFFFFF}, {2, 10, 18, 24, 0x7F}, {3, 1, 1, 24, 0xFFFFFF}, {3, 2, 1, 24, 0xFFFFFF},
                     {3, 10, 1, 8, 0xFF}, {3, 10, 23, 24, 3}}, [](R&) {}},
    {"Parity",      {{1, 3, 25, 30, 63}, {2, 5, 25, 30, 63}, {3, 8, 25, 30, 63}, {1, 8, -1, 0, 3}, {3, 9, -1, 0, 3}}, [](R&) {}},
};
// clang-format on

TEST_ROWS(KeplerField, ChangesNothingElse, kFields, row) {
  for (const bool qzss : {false, true}) {
    R expected = Zeroes(qzss);
    row.expect(expected);
    Subframes subframes;
    for (const S_Piece& p : row.pieces) subframes.Set(p.subframe, p.word, p.first, p.last, p.sent);
    R record;
    std::memset(&record, 0x5A, sizeof record);
    EXPECT_EQ(Decode(subframes, qzss ? 193 : 1, qzss, 2048, record), eResultOk);
    EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0) << (qzss ? "QZSS" : "GPS");
  }
}

TEST(Kepler, WhatZeroesGive) {
  R expected;
  SetEmpty_IFEphRec(expected);
  expected.System = 0;
  expected.SvId = 1;
  expected.Spare = 0;
  expected.TimeSystem = 0;
  expected.Health = expected.SvHealth = expected.Iode2 = 0;
  expected.TxWeek = expected.ToeWeek = expected.TocWeek = 2048;
  for (double* const value :
       {&expected.Af0, &expected.Af1, &expected.Af2, &expected.M0, &expected.DeltaN, &expected.Ecc, &expected.SqrtA,
        &expected.Crc, &expected.Omega0, &expected.I0, &expected.Omega, &expected.OmegaDot, &expected.IDot,
        &expected.Cuc, &expected.Cus, &expected.Crs, &expected.Cic, &expected.Cis, &expected.Tgd})
    *value = 0.0;
  expected.Ura = 2;
  expected.FitInterval = 4;
  const R gps = Zeroes(false), qzss = Zeroes(true);
  EXPECT_EQ(std::memcmp(&gps, &expected, sizeof gps), 0);
  expected.System = 5;
  expected.SvId = 193;
  expected.FitInterval = 0;
  EXPECT_EQ(std::memcmp(&qzss, &expected, sizeof qzss), 0);
}

// Times in units as sent: 6 s for the transmission, 16 s for the reference times. Half a week is 50400 or 18900.
struct S_WeekCase {
  const char* name;
  std::uint32_t txWeek, tx, toe, toc;
  unsigned short seedWeek;
  unsigned int result;
  unsigned short expectedTx, expectedToe, expectedToc;
};

const S_WeekCase kWeeks[] = {
    {"WithinTheWeek", 252, 50000, 18900, 18900, 2300, eResultOk, 2300, 2300, 2300},
    {"EndOfWeekToeNext", 252, 100799, 0, 37350, 2300, eResultOk, 2300, 2301, 2300},
    {"EndOfWeekTocNext", 252, 100799, 37350, 0, 2300, eResultOk, 2300, 2300, 2301},
    {"StartOfWeekToeBefore", 252, 1, 37350, 0, 2300, eResultOk, 2300, 2299, 2300},
    {"StartOfWeekTocBefore", 252, 1, 0, 37350, 2300, eResultOk, 2300, 2300, 2299},
    {"ExactlyHalfAWeekAhead", 252, 0, 18900, 18900, 2300, eResultOk, 2300, 2300, 2300},
    {"ExactlyHalfAWeekBehind", 252, 50400, 0, 0, 2300, eResultOk, 2300, 2300, 2300},
    {"TransmissionBeyondTheWeek", 252, 100801, 18900, 18901, 2300, eResultOk, 2300, 2301, 2300},
    {"SixSecondsMore", 252, 50401, 0, 0, 2300, eResultOk, 2300, 2301, 2301},
    {"LastWeekOfThePeriod", 1023, 100799, 0, 0, 2047, eResultOk, 2047, 2048, 2048},
    {"FirstWeekOfThePeriod", 0, 1, 37350, 37350, 2048, eResultOk, 2048, 2047, 2047},
    {"SeedInTheNextPeriod", 1023, 50000, 18900, 18900, 2300, eResultOk, 2047, 2047, 2047},
    {"SeedInThePeriodBefore", 3, 50000, 18900, 18900, 2040, eResultOk, 2051, 2051, 2051},
    {"NoSeed", 252, 100799, 0, 37350, 0, eResultNoSeed, 252, 253, 252},
    {"NoSeedBelowZero", 0, 1, 37350, 0, 0, eResultNoSeed, 0, 65535, 0},
};

TEST_ROWS(KeplerWeeks, AreCompletedAgainstTheSeed, kWeeks, c) {
  for (const bool qzss : {false, true}) {
    Subframes subframes;
    subframes.Set(1, 2, 1, 17, c.tx);
    subframes.Set(1, 3, 1, 10, c.txWeek);
    subframes.Set(1, 8, 9, 24, c.toc);
    subframes.Set(2, 10, 1, 16, c.toe);
    R record;
    EXPECT_EQ(Decode(subframes, qzss ? 193 : 1, qzss, c.seedWeek, record), c.result);
    EXPECT_EQ(record.TxWeek, c.expectedTx);
    EXPECT_EQ(record.ToeWeek, c.expectedToe);
    EXPECT_EQ(record.TocWeek, c.expectedToc);
    EXPECT_EQ(record.TxTime, c.tx * 6.0);
    EXPECT_EQ(record.Toe, c.toe * 16.0);
    EXPECT_EQ(record.Toc, c.toc * 16.0);
  }
}

TEST(Kepler, SatelliteNumbers) {
  for (unsigned int prn = 0; prn < 1024; ++prn)
    for (const bool qzss : {false, true}) {
      const bool exists = qzss ? 183 <= prn && prn <= 211 : 1 <= prn && prn <= 64;
      R record, expected;
      ASSERT_EQ(Decode(Subframes(), prn, qzss, 2300, record), exists ? eResultOk : eResultOutOfRange) << prn;
      if (exists) continue;
      SetEmpty_IFEphRec(expected);
      expected.System = qzss ? 5 : 0;
      expected.SvId = static_cast<std::uint8_t>(prn);
      expected.Spare = 0;
      ASSERT_EQ(std::memcmp(&record, &expected, sizeof record), 0) << prn;
    }
}

}  // namespace
