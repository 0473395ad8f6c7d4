// Observations: values of every kind of message, satellites and signals of every system, times, locks.
#include <cmath>
#include <string>
#include <vector>

#include "tests/Cases.h"
#include "tests/Rtcm3Records.h"

namespace {

using namespace velagnss;
using O = Rtcm3Observations;

constexpr double kNone = NA_DOUBLE;
const C_GnssTime kSeed(2314, 345600.0, ALGO::GNSS_GPS);

// --- MSM ------------------------------------------------------------------------------------------------------------

// An MSM as far as its masks: one station, everything beside the time 0.
Rtcm3Bits MsmHead(unsigned int number, std::uint32_t time, std::uint64_t satellites, std::uint32_t signals) {
  Rtcm3Bits bits{{number, 12}, {1, 12}};
  if (number / 10 == 108)
    bits.Put(time / 86400000, 3).Put(time % 86400000, 27);
  else
    bits.Put(time, 30);
  return bits.Put(0, 1 + 18).Put(static_cast<std::int64_t>(satellites), 64).Put(signals, 32);
}

constexpr std::uint64_t Satellite(unsigned int number) { return 1ULL << (64 - number); }
constexpr std::uint32_t Signal(unsigned int number) { return 1U << (32 - number); }

// What is sent of one satellite with one signal.
struct S_Cell {
  std::int64_t whole = 75, extended = 5, rest = 512, rate = -579;
  std::int64_t range = -1234, phase = 654321, fineRate = 2391;
  std::int64_t lock = 3, half = 1, strength = 45;
};

// The bits that follow the cell mask in each kind, for one satellite with one signal.
void PutCell(Rtcm3Bits& bits, unsigned int kind, const S_Cell& c) {
  const bool hasRate = kind == 5 || kind == 7;
  const bool isHigh = kind >= 6;
  if (kind >= 4) bits.Put(c.whole, 8);
  if (hasRate) bits.Put(c.extended, 4);
  bits.Put(c.rest, 10);
  if (hasRate) bits.Put(c.rate, 14);
  if (kind != 2) bits.Put(c.range, isHigh ? 20 : 15);
  if (kind != 1) bits.Put(c.phase, isHigh ? 24 : 22).Put(c.lock, isHigh ? 10 : 4).Put(c.half, 1);
  if (kind >= 4) bits.Put(c.strength, isHigh ? 10 : 6);
  if (hasRate) bits.Put(c.fineRate, 15);
}

O DecodeCell(unsigned int number, const S_Cell& cell, std::uint64_t satellite = Satellite(5),
             std::uint32_t signal = Signal(2)) {
  Rtcm3Bits bits = MsmHead(number, 345600000, satellite, signal);
  PutCell(bits.Put(1, 1), number % 10, cell);
  return Rtcm3Payloads(kSeed).Get<O>(bits);
}

// A satellite at 75.5 light-milliseconds and its signal on L1, 1575.42 MHz. The expected values are fractions of
// integers, computed to the last digit: (75.5 + phase / 2^29) ms times 299792.458 m and 1575420 cycles a millisecond,
// and so on.
struct S_MsmCase {
  const char* name;
  unsigned int kind;
  S_Cell sent;
  double modulus, pseudorange, phaseRange, cycles, rangeRate, doppler, strength, lockTime;
};
S_Cell High() {
  S_Cell cell;
  cell.range = -123456;
  cell.phase = 7654321;
  cell.lock = 97;
  cell.strength = 725;
  return cell;
}
S_Cell Without(std::int64_t S_Cell::*member, std::int64_t value) {
  S_Cell cell = High();
  cell.*member = value;
  return cell;
}
constexpr double kLms = 299792.458;
// clang-format off
const S_MsmCase kMsms[] = {
    {"Msm1", 1, {},     kLms, 149874.17862566066, kNone, kNone, kNone, kNone, kNone, kNone},
    {"Msm2", 2, {},     kLms, kNone, 150261.6064054926, 789630.0712252781, kNone, kNone, kNone, 0.128},
    {"Msm3", 3, {},     kLms, 149874.17862566066, 150261.6064054926, 789630.0712252781, kNone, kNone, kNone, 0.128},
    {"Msm4", 4, {},     0, 22634308.52862566, 22634695.956405494, 118946130.07122529, kNone, kNone, 45, 0.128},
    {"Msm5", 5, {},     0, 22634308.52862566, 22634695.956405494, 118946130.07122529, -578.7609, 3041.4090573219155, 45, 0.128},
    {"Msm6", 6, High(), 0, 22634261.6403094, 22635399.135544796, 118949825.30254307, kNone, kNone, 45.3125, 0.132},
    {"Msm7", 7, High(), 0, 22634261.6403094, 22635399.135544796, 118949825.30254307, -578.7609, 3041.4090573219155, 45.3125, 0.132},
    {"NoRange",    7, Without(&S_Cell::range, -524288), 0, kNone, 22635399.135544796, 118949825.30254307, -578.7609, 3041.4090573219155, 45.3125, 0.132},
    {"NoPhase",    7, Without(&S_Cell::phase, -8388608), 0, 22634261.6403094, kNone, kNone, -578.7609, 3041.4090573219155, 45.3125, 0.132},
    {"NoRough",    7, Without(&S_Cell::whole, 255),     0, kNone, kNone, kNone, -578.7609, 3041.4090573219155, 45.3125, 0.132},
    {"NoRoughRate", 7, Without(&S_Cell::rate, -8192),   0, 22634261.6403094, 22635399.135544796, 118949825.30254307, kNone, kNone, 45.3125, 0.132},
    {"NoFineRate", 7, Without(&S_Cell::fineRate, -16384), 0, 22634261.6403094, 22635399.135544796, 118949825.30254307, kNone, kNone, 45.3125, 0.132},
    {"NoStrength", 7, Without(&S_Cell::strength, 0),    0, 22634261.6403094, 22635399.135544796, 118949825.30254307, -578.7609, 3041.4090573219155, kNone, 0.132},
    {"ReservedLock", 7, Without(&S_Cell::lock, 705),    0, 22634261.6403094, 22635399.135544796, 118949825.30254307, -578.7609, 3041.4090573219155, 45.3125, kNone},
};
// clang-format on

TEST_ROWS(Rtcm3Msm, HasItsValues, kMsms, row) {
  const O out = DecodeCell(1070 + row.kind, row.sent);
  ASSERT_EQ(out.numSatellites, 1);
  ASSERT_EQ(out.numSignals, 1);
  const Rtcm3Signal& signal = out.signals[0];
  EXPECT_EQ(out.msm, row.kind);
  EXPECT_EQ((t_Values{out.rangeModulus, signal.data.Pseudorange, signal.phaseRange, signal.data.CarrierPhase}),
            (t_Values{row.modulus, row.pseudorange, row.phaseRange, row.cycles}));
  EXPECT_EQ((t_Values{signal.rangeRate, signal.data.Measurement3, signal.data.SignalStrength, signal.lockTime}),
            (t_Values{row.rangeRate, row.doppler, row.strength, row.lockTime}));
  EXPECT_EQ(signal.data.LockCount, row.kind == 1 ? NA_U32 : static_cast<unsigned int>(row.sent.lock));
  EXPECT_EQ(signal.halfCycle, row.kind == 1 ? NA_U8 : 1);
  EXPECT_EQ(signal.data.Flags, NA_U32);
  EXPECT_EQ(out.satellites[0].extended, row.kind == 5 || row.kind == 7 ? 5 : NA_U8);
}

// Satellite and signal of each system: number in the mask, and what it is. Frequencies: RINEX 3.05, tables 4 to 10.
struct S_SignalCase {
  const char* name;
  unsigned int number, satellite, signal;
  unsigned int system, svId;
  const char* code;
  double frequency;
  unsigned int band, track;
};
const S_SignalCase kSignals[] = {
    {"Gps", 1077, 32, 16, 0, 32, "2L", 1227.60e6, ALGO::FREQ_L2, ALGO::TRACK_L},
    {"Glonass", 1087, 24, 8, 1, 24, "2C", 1245.125e6, ALGO::FREQ_G2, ALGO::TRACK_CA},
    {"GlonassP", 1087, 1, 3, 1, 1, "1P", 1600.875e6, ALGO::FREQ_G1, ALGO::TRACK_P},
    {"Galileo", 1097, 36, 20, 3, 36, "8X", 1191.795e6, ALGO::FREQ_E5, ALGO::TRACK_ALTBOC},
    {"Sbas", 1107, 39, 24, 4, 158, "5X", 1176.45e6, ALGO::FREQ_L5, ALGO::TRACK_ALL},
    {"Qzss", 1117, 10, 11, 5, 202, "6X", 1278.75e6, ALGO::FREQ_E6, ALGO::TRACK_ALL},
    {"Beidou", 1127, 63, 2, 2, 63, "2I", 1561.098e6, ALGO::FREQ_B1, ALGO::TRACK_I},
    {"BeidouB1c", 1127, 30, 31, 2, 30, "1P", 1575.42e6, ALGO::FREQ_L1, ALGO::TRACK_UNKNOWN},
    {"Navic", 1137, 14, 8, 6, 14, "9A", 2492.028e6, ALGO::FREQ_UNKNOWN, ALGO::TRACK_UNKNOWN},
    {"Reserved", 1077, 1, 1, 0, 1, "", kNone, ALGO::FREQ_UNKNOWN, ALGO::TRACK_UNKNOWN},
};

TEST_ROWS(Rtcm3MsmSignal, IsNamed, kSignals, row) {
  const O out = DecodeCell(row.number, High(), Satellite(row.satellite), Signal(row.signal));
  EXPECT_EQ(out.satellites[0].system, row.system);
  EXPECT_EQ(out.satellites[0].svId, row.svId);
  EXPECT_EQ(out.signals[0].number, row.signal);
  EXPECT_STREQ(out.signals[0].code, row.code);
  EXPECT_EQ(out.signals[0].frequency, row.frequency);
  EXPECT_EQ(out.signals[0].data.Frequency, row.band);
  EXPECT_EQ(out.signals[0].data.TrackType, row.track);
  EXPECT_EQ(IsNotAvailable(out.signals[0].data.CarrierPhase), row.frequency == kNone);
  EXPECT_FALSE(IsNotAvailable(out.signals[0].phaseRange));
}

struct S_MaskCase {
  const char* name;
  std::uint64_t satellites;
  std::uint32_t signals;
  unsigned int numSatellites, numSignals;
  unsigned int result;
};
const S_MaskCase kMasks[] = {
    {"Nothing", 0, 0, 0, 0, eResultOk},
    {"NoSatellites", 0, ~0U, 0, 0, eResultOk},
    {"NoSignals", ~0ULL, 0, 64, 0, eResultOk},
    {"AllSatellites", ~0ULL, 1, 64, 64, eResultOk},
    {"AllSignals", 0b11, ~0U, 2, 64, eResultOk},
    {"Square", 0xFFULL << 28, 0xFFU << 12, 8, 64, eResultOk},
    {"OneMore", 0x1FFFULL << 28, 0x1FU << 12, 0, 0, eResultOutOfRange},
    {"All", ~0ULL, ~0U, 0, 0, eResultOutOfRange},
};

TEST_ROWS(Rtcm3MsmMasks, AreFull, kMasks, row) {
  for (unsigned int kind = 1; kind <= 7; ++kind) {
    Rtcm3Bits bits = MsmHead(1120 + kind, 1000, row.satellites, row.signals);
    bits.Put(-1, row.numSignals);  // every cell of the mask, then bits that are all set
    for (unsigned int i = 0; i < 64 * (36 + 80) && bits.Size() < 8 * 1023; ++i) bits.Put(1, 1);
    Rtcm3Payloads payloads;
    const Rtcm3Decoded& decoded = payloads.Decode(bits.Payload());
    ASSERT_EQ(decoded.result, row.result) << "MSM" << kind;
    if (row.result != eResultOk) continue;
    const O& out = std::get<O>(decoded.record);
    EXPECT_EQ(out.numSatellites, row.numSatellites);
    EXPECT_EQ(out.numSignals, row.numSignals);
  }
}

TEST(Rtcm3Msm, CellsFollowTheirMask) {
  // Satellites 2, 40 and 64, signals 3, 15 and 32; of nine cells there are four.
  Rtcm3Bits bits = MsmHead(1091, 0, Satellite(2) | Satellite(40) | Satellite(64), Signal(3) | Signal(15) | Signal(32));
  bits.Put(0b010'000'101, 9).Put({{1, 10}, {2, 10}, {3, 10}});
  bits.Put({{100, 15}, {200, 15}, {300, 15}});
  const O out = Rtcm3Payloads().Get<O>(bits);
  ASSERT_EQ(out.numSignals, 3);
  std::string cells;
  for (unsigned int i = 0; i < out.numSignals; ++i)
    cells += std::to_string(out.satellites[out.signals[i].satellite].svId) + "/" +
             std::to_string(out.signals[i].number) + " ";
  EXPECT_EQ(cells, "2/15 64/3 64/32 ");
  EXPECT_EQ(out.signals[0].data.Pseudorange, (1 / 1024.0 + 100 * 0x1p-24) * 299792.458);
}

TEST(Rtcm3Msm, HeadIsRead) {
  Rtcm3Bits bits{{1074, 12}, {4095, 12}, {604799999, 30}, {1, 1}, {5, 3}, {0, 7}, {1, 2}, {2, 2}, {1, 1}, {7, 3}};
  const O out = Rtcm3Payloads(kSeed).Get<O>(bits.Put(0, 64).Put(0, 32));
  EXPECT_EQ(out.station, 4095);
  EXPECT_TRUE(out.isMoreToCome);
  EXPECT_EQ(out.stationIssue, 5);
  EXPECT_EQ(out.clockSteering, 1);
  EXPECT_EQ(out.externalClock, 2);
  EXPECT_EQ(out.isSmoothed, 1);
  EXPECT_EQ(out.smoothingInterval, 7);
}

// --- 1001 to 1004, 1009 to 1012 -------------------------------------------------------------------------------------

struct S_LegacyCase {
  const char* name;
  unsigned int number;
  double pseudorange1, cycles1, strength1;
  double pseudorange2, cycles2, strength2;  // not available where the message has one signal
};
// The ranges of GPS are 75 light-milliseconds and 24691.34 m, those of GLONASS 74 and 446913.56 m; phases differ by
// -0.617 and 2.1605 m, the second range by -6.42 m. GLONASS has channel -4.
// clang-format off
const S_LegacyCase kLegacy[] = {
    {"Gps1001", 1001, 24691.34, 129750.62510965503, kNone, kNone, kNone, kNone},
    {"Gps1002", 1002, 22509125.69, 118286250.62510966, 45.25, kNone, kNone, kNone},
    {"Gps1003", 1003, 24691.34, 129750.62510965503, kNone, 24684.92, 101115.75660052129, kNone},
    {"Gps1004", 1004, 22509125.69, 118286250.62510966, 45.25, 22509119.27, 92171115.75660051, 39.75},
    {"Glonass1009", 1009, 446913.56, 2384813.0981475525, kNone, kNone, kNone, kNone},
    {"Glonass1010", 1010, 22631555.452, 120766313.09814756, 45.25, kNone, kNone, kNone},
    {"Glonass1011", 1011, 446913.56, 2384813.0981475525, kNone, 446907.14, 1854866.1595487, kNone},
    {"Glonass1012", 1012, 22631555.452, 120766313.09814756, 45.25, 22631549.032, 93929366.1595487, 39.75},
};
// clang-format on

struct S_LegacySatellite {
  std::int64_t satellite = 7, range = -1, phase1 = -1234, range2 = -321, phase2 = 4321;  // range -1: the usual one
};

Rtcm3Bits Legacy(unsigned int number, std::uint32_t time, const std::vector<S_LegacySatellite>& satellites,
                 std::int64_t lock = 60) {
  const bool isGps = number < 1009;
  const unsigned int contents = number - (isGps ? 1001 : 1009);
  const bool hasWhole = contents % 2 != 0, hasSecond = contents >= 2;
  Rtcm3Bits bits{{number, 12}, {1, 12}, {time, isGps ? 30U : 27U}, {1, 1}};
  bits.Put({{static_cast<std::int64_t>(satellites.size()), 5}, {1, 1}, {2, 3}});
  for (const S_LegacySatellite& s : satellites) {
    bits.Put({{s.satellite, 6}, {0, 1}});
    if (!isGps) bits.Put(3, 5);
    bits.Put(s.range >= 0 ? s.range : isGps ? 1234567 : 22345678, isGps ? 24 : 25).Put(s.phase1, 20).Put(lock, 7);
    if (hasWhole) bits.Put({{isGps ? 75 : 37, isGps ? 8U : 7U}, {181, 8}});
    if (hasSecond) bits.Put({{0, 2}, {s.range2, 14}, {s.phase2, 20}, {lock, 7}});
    if (hasWhole && hasSecond) bits.Put(159, 8);
  }
  return bits;
}

TEST_ROWS(Rtcm3Legacy, HasItsValues, kLegacy, row) {
  const O out = Rtcm3Payloads(kSeed).Get<O>(Legacy(row.number, 345600, {{}, {8}, {45}}));
  const bool hasSecond = row.pseudorange2 != kNone;
  ASSERT_EQ(out.numSatellites, 3);
  ASSERT_EQ(out.numSignals, hasSecond ? 6 : 3);
  EXPECT_TRUE(out.isMoreToCome);
  EXPECT_EQ(out.rangeModulus, row.strength1 != kNone ? 0 : row.number < 1009 ? 299792.458 : 599584.916);
  EXPECT_EQ(out.satellites[0].svId, 7);
  EXPECT_EQ(out.satellites[2].svId, row.number < 1009 ? 125 : 45);
  EXPECT_EQ(out.satellites[2].system, row.number < 1009 ? ALGO::GNSS_SBAS : ALGO::GNSS_GLONASS);
  const auto ValuesOf = [&out](unsigned int i) {
    const S_IFGnssObsData& data = out.signals[i].data;
    return t_Values{data.Pseudorange, data.CarrierPhase, data.SignalStrength};
  };
  EXPECT_EQ(ValuesOf(0), (t_Values{row.pseudorange1, row.cycles1, row.strength1}));
  EXPECT_STREQ(out.signals[0].code, "1C");
  EXPECT_STREQ(out.signals[hasSecond ? 4 : 2].code, "1C");  // of satellites[2]
  EXPECT_EQ(out.signals[0].lockTime, 120);
  if (!hasSecond) return;
  EXPECT_EQ(ValuesOf(1), (t_Values{row.pseudorange2, row.cycles2, row.strength2}));
  EXPECT_STREQ(out.signals[1].code, "2C");
}

TEST(Rtcm3Legacy, WhatIsNotAvailable) {
  constexpr std::int64_t kNoPhase = -524288, kNoRange2 = -8192, kNoRange = 0xFFFFFF;
  const O out = Rtcm3Payloads().Get<O>(Legacy(
      1004, 0, {{1, -1, kNoPhase, -321, kNoPhase}, {2, -1, -1234, kNoRange2, 4321}, {3, kNoRange}, {4, 0x80000}}));
  std::string available;  // pseudorange, phase of each signal
  for (unsigned int i = 0; i < out.numSignals; ++i) {
    available += IsNotAvailable(out.signals[i].data.Pseudorange) ? '-' : 'P';
    available += IsNotAvailable(out.signals[i].data.CarrierPhase) ? '-' : 'L';
  }
  EXPECT_EQ(available,
            "P-P-"
            "PL-L"
            "----"
            "PLPL");
}

TEST(Rtcm3Legacy, MostSatellites) {
  std::vector<S_LegacySatellite> satellites;
  for (std::int64_t i = 1; i <= 31; ++i) satellites.push_back({i});
  const O out = Rtcm3Payloads().Get<O>(Legacy(1012, 0, satellites));
  EXPECT_EQ(out.numSatellites, 31);
  EXPECT_EQ(out.numSignals, 62);
  EXPECT_EQ(out.satellites[30].svId, 31);
}

// --- Channels of GLONASS --------------------------------------------------------------------------------------------

TEST(Rtcm3Glonass, ChannelsComeFromEarlierMessages) {
  Rtcm3Payloads payloads;
  const auto channelOf = [&payloads](unsigned int kind, std::int64_t extended) {
    Rtcm3Bits bits = MsmHead(1080 + kind, 0, Satellite(7), Signal(2));
    S_Cell cell;
    cell.extended = extended;
    PutCell(bits.Put(1, 1), kind, cell);
    const O out = payloads.Get<O>(bits);
    EXPECT_EQ(IsNotAvailable(out.signals[0].data.CarrierPhase), IsNotAvailable(out.satellites[0].channel));
    return int{out.satellites[0].channel};
  };
  EXPECT_EQ(channelOf(4, 0), NA_CHANNEL);
  EXPECT_EQ(channelOf(5, 15), NA_CHANNEL);
  EXPECT_EQ(channelOf(5, 13), 6);
  EXPECT_EQ(channelOf(4, 0), 6);
  EXPECT_EQ(channelOf(7, 14), 6);
  payloads.Get<O>(Legacy(1009, 0, {{}}));  // channel -4
  EXPECT_EQ(channelOf(6, 0), -4);
  EXPECT_EQ(payloads.decoder.GlonassChannel(7), -4);
  EXPECT_TRUE(payloads.decoder.SetGlonassChannel(7, 1));
  EXPECT_EQ(channelOf(4, 0), 1);
  for (const auto& [slot, channel] : {std::pair{0, 1}, {25, 1}, {7, -8}, {7, 14}})
    EXPECT_FALSE(
        payloads.decoder.SetGlonassChannel(static_cast<unsigned char>(slot), static_cast<signed char>(channel)));
  payloads.decoder.Reset();
  EXPECT_EQ(channelOf(4, 0), NA_CHANNEL);
}

// --- Times ----------------------------------------------------------------------------------------------------------

constexpr double kDay = 86400;
struct S_TimeCase {
  const char* name;
  unsigned int number;
  unsigned int seedWeek;
  double seedSeconds;
  std::uint32_t sent;
  unsigned int dayOfWeek;  // of GLONASS MSM
  unsigned int week;
  double seconds;
};
// Leap seconds: 18 in week 2314, 17 in week 1900.
const S_TimeCase kTimes[] = {
    {"SameWeek", 1077, 2314, 345600, 345601500, 0, 2314, 345601.5},
    {"NextWeek", 1077, 2314, 604799, 0, 0, 2315, 0},
    {"LastWeek", 1077, 2315, 1, 604799000, 0, 2314, 604799},
    {"NoClockShowsThis", 1077, 2314, 0, 604800000, 0, NA_U16, kNone},
    {"GalileoWeek", 1097, 2314, 604799, 1000, 0, 2315, 1},
    {"Beidou", 1127, 2314, 345600, 345586000, 0, 2314, 345600},
    {"BeidouEndOfWeek", 1127, 2314, 604799, 604786000, 0, 2315, 0},
    {"BeidouCut", 1127, 2314, 604799, (1U << 30) - 14000, 0, 2315, 0},
    {"BeidouTooFar", 1127, 2314, 604799, (1U << 30) - 14001, 0, NA_U16, kNone},
    {"GlonassDay", 1087, 2314, 345600, 10800000, 4, 2314, 345618},
    {"GlonassSundayIsSaturday", 1087, 2314, 604799, 10000000, 0, 2314, 604018},
    {"GlonassOldLeap", 1087, 1900, 345600, 10800000, 4, 1900, 345617},
    {"GlonassUnknownDay", 1087, 2314, 4 * kDay + 100, 10900000, 7, 2314, 4 * kDay + 118},
    {"GlonassUnknownNextDay", 1087, 2314, 5 * kDay - 100, 10900000, 7, 2314, 5 * kDay + 118},
    {"GlonassLegacy", 1012, 2314, 4 * kDay + 100, 10900000, 0, 2314, 4 * kDay + 118},
    {"GlonassLegacyOverWeek", 1012, 2314, 604799, 10801000, 0, 2315, 19},
    {"GlonassLeapSecond", 1012, 2314, 345600, 86400999, 0, 2314, 345600 - 10800 + 18.999},
    {"GlonassTooLate", 1012, 2314, 345600, 86401000, 0, NA_U16, kNone},
};

Rtcm3Bits Epoch(unsigned int number, std::uint32_t sent, unsigned int dayOfWeek) {
  if (number < 1071) return Legacy(number, sent, {});
  Rtcm3Bits bits{{number, 12}, {1, 12}};
  if (number / 10 == 108)
    bits.Put({{dayOfWeek, 3}, {sent, 27}});
  else
    bits.Put(sent, 30);
  return bits.Put(0, 19).Put(0, 64).Put(0, 32);
}

TEST_ROWS(Rtcm3Time, IsResolved, kTimes, row) {
  const C_GnssTime seed(static_cast<unsigned short>(row.seedWeek), row.seedSeconds, ALGO::GNSS_GPS);
  const O out = Rtcm3Payloads(seed).Get<O>(Epoch(row.number, row.sent, row.dayOfWeek));
  EXPECT_EQ(out.time.sent, row.sent);
  EXPECT_EQ(out.time.week, row.week);
  EXPECT_EQ(out.time.seconds, row.seconds);
}

// The week of an observation at its beginning turns where the seed is half a week away.
struct S_SeedCase {
  const char* name;
  C_GnssTime seed;
  unsigned int week;
};
constexpr double kHalfWeek = 302400;
const S_SeedCase kSeeds[] = {
    {"Gps", {2314, kHalfWeek + 1, ALGO::GNSS_GPS}, 2315},
    {"GpsBefore", {2314, kHalfWeek - 1, ALGO::GNSS_GPS}, 2314},
    {"Navic", {2314, kHalfWeek + 1, kNavic}, 2315},
    {"Beidou", {2314, kHalfWeek - 14 + 1, ALGO::GNSS_BEIDOU}, 2315},
    {"BeidouBefore", {2314, kHalfWeek - 14 - 1, ALGO::GNSS_BEIDOU}, 2314},
    {"Glonass", {2314, kHalfWeek + 10800 - 18 + 1, ALGO::GNSS_GLONASS}, 2315},
    {"GlonassBefore", {2314, kHalfWeek + 10800 - 18 - 1, ALGO::GNSS_GLONASS}, 2314},
    {"OfNoSystem", {2314, kHalfWeek, ALGO::GNSS_UNKNOWN}, NA_U16},
    {"NotFinite", {2314, std::nan(""), ALGO::GNSS_GPS}, NA_U16},
    {"Nothing", {0, 0.0, ALGO::GNSS_GPS}, NA_U16},
};
TEST_ROWS(Rtcm3Seed, IsOfItsSystem, kSeeds, row) {
  EXPECT_EQ(Rtcm3Payloads(row.seed).Get<O>(Epoch(1077, 0, 0)).time.week, row.week);
}

TEST(Rtcm3Time, GoesOnWithTheStream) {
  Rtcm3Payloads payloads;
  // Without any time, the day of GLONASS is unknown. An epoch of another system gives it, but not the week.
  EXPECT_EQ(payloads.Get<O>(Epoch(1012, 10900000, 0)).time.seconds, kNone);
  EXPECT_EQ(payloads.Get<O>(Epoch(1077, 518400000, 0)).time.week, NA_U16);
  EXPECT_EQ(payloads.Get<O>(Epoch(1012, 10900000, 0)).time.seconds, 518518);
  // 18 May 2024, a Saturday, 23:59:30 UTC; the week turns 12 s later.
  payloads.Get<Rtcm3SystemParameters>(Rtcm3Bits{{1013, 12}, {1, 12}, {60448, 16}, {86370, 17}, {0, 5}, {18, 8}});
  EXPECT_EQ(payloads.Get<O>(Epoch(1077, 604799000, 0)).time.week, 2314);
  EXPECT_EQ(payloads.Get<O>(Epoch(1127, 604786000, 0)).time.week, 2315);
  EXPECT_EQ(payloads.Get<O>(Epoch(1012, 10800000, 0)).time.seconds, 18);
  // A seed goes before the dates of the stream.
  Rtcm3Payloads seeded(kSeed);
  seeded.Get<Rtcm3SystemParameters>(Rtcm3Bits{{1013, 12}, {1, 12}, {60000, 16}, {0, 17}, {0, 5}, {18, 8}});
  EXPECT_EQ(seeded.Get<O>(Epoch(1077, 345600000, 0)).time.week, 2314);
  payloads.decoder.SetLeapSeconds(19);
  EXPECT_EQ(payloads.Get<O>(Epoch(1012, 10800000, 0)).time.seconds, 19);
}

// --- Locks ----------------------------------------------------------------------------------------------------------

struct S_LockCase {
  const char* name;
  unsigned int number;    // 1004, 1077 or 1074
  std::uint32_t elapsed;  // ms
  unsigned int before, after;
  Rtcm3Lock expected;
};
const S_LockCase kLocks[] = {
    {"KeptHigh", 1077, 1000, 320, 325, Rtcm3Lock::Kept},    // 16.4 s, 18.9 s
    {"FellHigh", 1077, 1000, 320, 319, Rtcm3Lock::Lost},    // 16.4 s, 16.1 s
    {"TooYoungHigh", 1077, 3000, 0, 223, Rtcm3Lock::Lost},  // 2.016 s to 2.048 s
    {"LastHigh", 1077, 1000, 704, 704, Rtcm3Lock::Kept},
    {"ReservedHigh", 1077, 1000, 704, 705, Rtcm3Lock::Unknown},
    {"Kept", 1074, 1000, 6, 6, Rtcm3Lock::Kept},  // 1.024 s to 2.048 s
    {"MaybeLost", 1074, 1500, 5, 6, Rtcm3Lock::MaybeLost},
    {"TooYoung", 1074, 2048, 5, 6, Rtcm3Lock::Lost},
    {"Backwards", 1074, 604800000 - 1000, 6, 6, Rtcm3Lock::Unknown},
    {"KeptLegacy", 1004, 1000, 127, 127, Rtcm3Lock::Kept},        // 937 s and more
    {"FellLegacy", 1004, 1000, 127, 126, Rtcm3Lock::Lost},        // 936 s
    {"TooYoungLegacy", 1004, 937000, 126, 126, Rtcm3Lock::Lost},  // below 937 s
    {"StepLegacy", 1004, 73000, 10, 48, Rtcm3Lock::MaybeLost},    // 72 s to 76 s
};

TEST_ROWS(Rtcm3Locks, TellOfLoss, kLocks, row) {
  Rtcm3Payloads payloads;
  const auto lockAt = [&](std::uint32_t time, unsigned int lock) {
    if (row.number == 1004) return payloads.Get<O>(Legacy(1004, time, {{}}, lock)).signals[0].lock;
    Rtcm3Bits bits = MsmHead(row.number, time, Satellite(5), Signal(2));
    S_Cell cell;
    cell.lock = lock;
    PutCell(bits.Put(1, 1), row.number % 10, cell);
    return payloads.Get<O>(bits).signals[0].lock;
  };
  constexpr std::uint32_t kWeek = 604800000;
  constexpr std::uint32_t kStart = kWeek - 500;  // the week turns in between
  EXPECT_EQ(lockAt(kStart, row.before), Rtcm3Lock::Unknown);
  EXPECT_EQ(lockAt((kStart + row.elapsed) % kWeek, row.after), row.expected);
}

TEST(Rtcm3Locks, AreNotComparedWithoutATimeOrASlot) {
  constexpr std::uint32_t kNoTime = 604800000;
  Rtcm3Bits msm = MsmHead(1077, kNoTime, Satellite(5), Signal(2));
  PutCell(msm.Put(1, 1), 7, {});
  Rtcm3Payloads payloads;
  for (const Rtcm3Bits& bits : {msm, Legacy(1004, kNoTime, {{}}), Legacy(1012, 0, {{0}})}) {
    payloads.Get<O>(bits);
    const O again = payloads.Get<O>(bits);
    EXPECT_EQ(again.signals[0].lock, Rtcm3Lock::Unknown) << again.message;
    EXPECT_EQ(again.signals[0].lockTime, kNone) << again.message;
  }
}

}  // namespace
