#include "positioning/PointSolver.h"

#include <algorithm>
#include <memory>
#include <tuple>

#include "Cases.h"
#include "Constellation.h"
#include "geo/NotAvailable.h"

namespace {

using namespace velagnss;
using namespace constellation;

constexpr double kTime = kToe + 600;

// ---- ephemerides ---------------------------------------------------------------------------------------------------

TEST(StoredEphemerides, TakesTheNearestAndKeepsFour) {
  EphemerisStore store;
  Rtcm3KeplerEphemeris e = Kepler(ALGO::GNSS_GPS, 7);
  for (int hour = 0; hour < 5; ++hour, e.ephemeris.Toe += 3600, ++e.ephemeris.Iode) store.Note(e);
  SatelliteOrbit orbit;
  const auto find = [&](double seconds) {
    return store.Find(ALGO::GNSS_GPS, 7, C_GnssTime(kWeek, kToe + seconds, ALGO::GNSS_GPS), kLeap, orbit);
  };
  EXPECT_EQ(find(3 * 3600 - 1700), OrbitResult::Ok);
  EXPECT_EQ(orbit.kepler->ephemeris.Toe, kToe + 3 * 3600);
  EXPECT_EQ(find(-3700), OrbitResult::Outdated);  // the first is gone
  e.ephemeris.Toe -= 3600, --e.ephemeris.Iode;
  e.ephemeris.SvHealth = 63;  // the last one again
  store.Note(e);
  EXPECT_EQ(find(4 * 3600), OrbitResult::Unhealthy);
  EXPECT_EQ(find(2 * 3600), OrbitResult::Ok);
  S_IFPvaEphRec glonass = Glonass(7);
  store.Note(glonass);
  glonass.Ln = 1;
  store.Note(glonass);
  EXPECT_EQ(store.Find(ALGO::GNSS_GLONASS, 7, C_GnssTime(kWeek, kToe, ALGO::GNSS_GPS), kLeap, orbit),
            OrbitResult::Unhealthy);
  EXPECT_EQ(store.Find(ALGO::GNSS_UNKNOWN, 7, C_GnssTime(), kLeap, orbit), OrbitResult::Missing);
  EXPECT_EQ(store.Find(ALGO::GNSS_SBAS, 7, C_GnssTime(), kLeap, orbit), OrbitResult::Missing);
  store.Clear();
  EXPECT_EQ(find(0), OrbitResult::Missing);
}

// Weeks of the ephemeris, of the time, of both are unknown: GLONASS then lacks its day, too.
TEST(StoredEphemerides, ServesWithoutADate) {
  const EphemerisStore empty;
  for (const bool hasWeek : {false, true}) {
    EphemerisStore store;
    Rtcm3KeplerEphemeris gps = Kepler(ALGO::GNSS_GPS, 7);
    S_IFPvaEphRec glonass = Glonass(7);
    gps.ephemeris.ToeWeek = 266;
    glonass.RefWeek = 0;
    glonass.RefTime = std::fmod(glonass.RefTime, 86400);
    store.Note(gps, false);
    store.Note(glonass, false);
    SatelliteOrbit orbit;
    C_GnssTime time;
    time.Set(hasWeek ? kWeek : NA_U16, kTime, ALGO::GNSS_GPS);
    SatelliteState expected;
    ASSERT_EQ(store.Find(ALGO::GNSS_GPS, 7, time, kLeap, orbit), OrbitResult::Ok);
    StateAt(Kepler(ALGO::GNSS_GPS, 7).ephemeris, C_GnssTime(kWeek, kTime, ALGO::GNSS_GPS), expected);
    EXPECT_LT((orbit.state.position - expected.position).Norm(), 1e-6);
    ASSERT_EQ(store.Find(ALGO::GNSS_GLONASS, 7, time, kLeap, orbit), OrbitResult::Ok);
    StateAt(Glonass(7), C_GnssTime(kWeek, kTime, ALGO::GNSS_GPS), kLeap, expected);
    EXPECT_LT((orbit.state.position - expected.position).Norm(), 1e-6);
    EXPECT_EQ(orbit.kepler, nullptr);
  }
}

// Decoders deliver such records for messages that they do not read in full.
TEST(StoredEphemerides, AreNotHiddenByOnesWithoutATime) {
  for (const double none : {NA_DOUBLE, std::nan(""), HUGE_VAL, -HUGE_VAL}) {
    EphemerisStore store;
    Rtcm3KeplerEphemeris gps = Kepler(ALGO::GNSS_GPS, 7);
    S_IFPvaEphRec glonass = Glonass(7);
    store.Note(gps), store.Note(glonass);
    gps.ephemeris.Toe = glonass.RefTime = none;
    for (int i = 0; i < 4; ++i) store.Note(gps), store.Note(glonass);
    SatelliteOrbit orbit;
    for (const unsigned short week : {kWeek, NA_U16}) {
      C_GnssTime time;
      time.Set(week, kTime, ALGO::GNSS_GPS);
      EXPECT_EQ(store.Find(ALGO::GNSS_GPS, 7, time, kLeap, orbit), OrbitResult::Ok) << none;
      EXPECT_EQ(store.Find(ALGO::GNSS_GLONASS, 7, time, kLeap, orbit), OrbitResult::Ok) << none;
      time.m_secOfWeek = none;
      EXPECT_EQ(store.Find(ALGO::GNSS_GPS, 7, time, kLeap, orbit), OrbitResult::Missing) << none;
    }
  }
}

// ---- epochs --------------------------------------------------------------------------------------------------------

struct Sent {
  unsigned char svId;
  const char* code;
  double range;
};

std::unique_ptr<Rtcm3Observations> Message(ALGO::eGNSSSystem system, double seconds, std::vector<Sent> signals) {
  auto message = std::make_unique<Rtcm3Observations>();
  message->system = system;
  message->station = 7;
  message->time.week = kWeek;
  message->time.seconds = seconds;
  message->time.sent = static_cast<std::uint32_t>(std::lround(std::fmod(seconds - 18 + 10800, 86400) * 1000));
  for (const Sent& sent : signals) {
    Rtcm3Signal& signal = message->signals[message->numSignals];
    SetEmpty_IFGnssObsData(signal.data, 1);
    signal.data.Pseudorange = sent.range;
    std::copy_n(sent.code, 2, signal.code);
    signal.frequency = 1e9;
    signal.satellite = message->numSignals++;
    message->satellites[message->numSatellites].system = system;
    message->satellites[message->numSatellites++].svId = sent.svId;
  }
  return message;
}

TEST(EpochsOfMessages, JoinsMessagesAndChoosesSignals) {
  PointEpochs epochs;
  EXPECT_EQ(epochs.Note(*Message(ALGO::GNSS_GPS, 100, {{5, "2L", 3}, {5, "1C", 1}, {5, "2W", 2}, {5, "1W", 4}})),
            nullptr);
  EXPECT_EQ(epochs.Note(*Message(ALGO::GNSS_GLONASS, 100.002,
                                 {{5, "2P", 5}, {6, "9X", 6}, {7, "1C", NA_DOUBLE}, {8, "1C", 0}, {NA_U8, "1C", 1}})),
            nullptr);
  EXPECT_EQ(epochs.Note(*Message(ALGO::GNSS_SBAS, 100, {{120, "1C", 9}})), nullptr);
  auto partial = Message(ALGO::GNSS_GALILEO, 100, {{1, "1C", 9}});
  partial->rangeModulus = 299792.458;
  EXPECT_EQ(epochs.Note(*partial), nullptr);
  const PointEpoch* const epoch = epochs.Note(*Message(ALGO::GNSS_GPS, 101, {{9, "1C", 1}}));
  ASSERT_NE(epoch, nullptr);
  EXPECT_EQ(epoch->time.m_secOfWeek, 100);
  EXPECT_EQ(epoch->leapSeconds, 18);
  ASSERT_EQ(epoch->numSatellites, 2U);
  EXPECT_STREQ(epoch->satellites[0].first.code, "1C");
  EXPECT_EQ(epoch->satellites[0].second.range, 2);
  EXPECT_EQ(epoch->satellites[1].second.range, 5);
  EXPECT_STREQ(epoch->satellites[1].first.code, "");
  const PointEpoch* const last = epochs.Flush();
  ASSERT_NE(last, nullptr);
  EXPECT_EQ(last->satellites[0].svId, 9);
  EXPECT_EQ(epochs.Flush(), nullptr);
}

TEST(EpochsOfMessages, AnotherStationIsAnotherEpoch) {
  PointEpochs epochs;
  auto message = Message(ALGO::GNSS_GPS, 100, {{5, "1C", 1}});
  epochs.Note(*message);
  message->station = 8;
  EXPECT_NE(epochs.Note(*message), nullptr);
  message->time.seconds = NA_DOUBLE;
  EXPECT_EQ(epochs.Note(*message), nullptr);
}

// Stations see some fifty; a stream can hold more.
TEST(EpochsOfMessages, LeaveOutWhatDoesNotFit) {
  PointEpochs epochs;
  for (const auto& [system, code, count] :
       {std::tuple(ALGO::GNSS_GPS, "1C", 32), std::tuple(ALGO::GNSS_BEIDOU, "2I", 63),
        std::tuple(ALGO::GNSS_GALILEO, "1C", 36)}) {
    for (int number = 1; number <= count; ++number)
      EXPECT_EQ(epochs.Note(*Message(system, 100, {{static_cast<unsigned char>(number), code, 1}})), nullptr);
  }
  const PointEpoch* const epoch = epochs.Flush();
  ASSERT_EQ(epoch->numSatellites, PointEpochs::kMaxSatellites);
  EXPECT_EQ(epoch->satellites[127].svId, 33);
}

// ---- positions -----------------------------------------------------------------------------------------------------

struct SolverCase {
  const char* name;
  std::function<void(std::vector<PointRanges>&, Receiver&)> change;
  PointResult result;
  double error;  // m, at most
  PointUse use;  // of the first satellite
  unsigned short week = kWeek;
};

void OneFrequency(std::vector<PointRanges>& ranges, Receiver&) {
  for (PointRanges& satellite : ranges) satellite.second = {};
}

const SolverCase kSolved[] = {
    {"TwoFrequencies", [](auto&, auto&) {}, PointResult::Ok, 1e-3, PointUse::Used},
    {"NoDate", [](auto&, auto&) {}, PointResult::Ok, 1e-3, PointUse::Used, NA_U16},
    {"OneFrequency", &OneFrequency, PointResult::Ok, 6, PointUse::Used},
    {"NoSecondOfFew", [](auto& ranges, auto&) { ranges[0].second = {}; }, PointResult::Ok, 1e-3, PointUse::NoRange},
    {"OtherSecond", [](auto& ranges, auto&) { ranges[0].second.code[0] = '5'; }, PointResult::Ok, 1e-3,
     PointUse::NoRange},
    {"WrongRange", [](auto& ranges, auto&) { ranges[0].first.range += 50; }, PointResult::Ok, 1e-3, PointUse::Outlier},
    {"TwoWrongRanges", [](auto& ranges, auto&) { ranges[0].first.range += 1e6, ranges[9].first.range -= 300; },
     PointResult::Ok, 1e-3, PointUse::Outlier},
    {"Unhealthy",
     [](auto& ranges, Receiver& receiver) {
       auto e = Kepler(ALGO::GNSS_GPS, ranges[0].svId);
       e.ephemeris.SvHealth = 1;
       receiver.store.Note(e);
     },
     PointResult::Ok, 1e-3, PointUse::Unhealthy},
    {"Outdated",
     [](auto& ranges, Receiver& receiver) {
       auto e = Kepler(ALGO::GNSS_GPS, ranges[0].svId);
       --e.ephemeris.ToeWeek;
       receiver.store.Note(e.ephemeris), receiver.store.Note(e);
     },
     PointResult::Ok, 1e-3, PointUse::Outdated},
    {"NoOrbit",
     [](auto& ranges, Receiver& receiver) {
       auto e = Kepler(ALGO::GNSS_GPS, ranges[0].svId);
       e.ephemeris.Ecc = 1;
       receiver.store.Note(e);
     },
     PointResult::Ok, 1e-3, PointUse::Implausible},
    {"NoFirstSignal", [](auto& ranges, auto&) { ranges[0].first = {}; }, PointResult::Ok, 1e-3, PointUse::NoRange},
    {"OneOfItsSystem",
     [](auto& ranges, auto&) {
       std::erase_if(ranges, [&](const PointRanges& r) { return r.system == 0 && r.svId != ranges[0].svId; });
     },
     PointResult::Ok, 1e-3, PointUse::OnlyOfSystem},
    {"RangesOfNoPlace",
     [](auto& ranges, auto&) {
       for (std::size_t i = 0; i < ranges.size(); ++i) ranges[i].first.range += 1e9 * static_cast<double>(i);
     },
     PointResult::Diverged, 0, PointUse::Used},
    {"NotASatellite", [](auto& ranges, auto&) { ranges[0].svId = 60; }, PointResult::Ok, 1e-3, PointUse::NoEphemeris},
    {"FourOfOne", [](auto& ranges, auto&) { ranges.resize(4); }, PointResult::Ok, 0.1, PointUse::Used},
    {"ThreeOfOne", [](auto& ranges, auto&) { ranges.resize(3); }, PointResult::TooFew, 0, PointUse::Used},
    {"FiveWithAWrongOne", [](auto& ranges, auto&) { ranges.resize(5), ranges[0].first.range += 500; },
     PointResult::Contradictory, 0, PointUse::Used},
    {"AllInOneDirection", [](auto& ranges, auto&) { ranges.assign(6, ranges[0]); }, PointResult::PoorGeometry, 0,
     PointUse::Used},
    {"Nothing", [](auto& ranges, auto&) { ranges[0].svId = 60, ranges.resize(1); }, PointResult::TooFew, 0,
     PointUse::NoEphemeris},
};
TEST_ROWS(SolvedEpoch, IsThatOfTheReceiver, kSolved, row) {
  Receiver receiver;
  receiver.NoteAll();
  std::vector<PointRanges> ranges = receiver.Measure(kTime, 0.25);
  ASSERT_GT(ranges.size(), 20U);
  row.change(ranges, receiver);
  PointSolver solver;
  for (int again = 0; again < 2; ++again) {  // from the Earth's center, and from the last position
    const PointSolution& solution = solver.Solve(EpochOf(ranges, kTime, row.week), receiver.store);
    EXPECT_EQ(solution.result, row.result);
    EXPECT_EQ(solution.satellites[0].use, row.use);
    if (row.result != PointResult::Ok) {
      EXPECT_EQ(solution.position.X(), NA_DOUBLE);
      EXPECT_EQ(solution.satellites[0].elevation, NA_DOUBLE);
      continue;
    }
    EXPECT_LT((solution.position - receiver.place.Cartesian()).Norm(), row.error);
    if (row.error > 0.1) continue;
    if (solution.systems[0].numUsed > 0) {
      EXPECT_NEAR(solution.systems[0].clockOffset, Receiver::kClock, 1e-9);
    }
    EXPECT_LT(solution.residualRms, 1e-3);
    EXPECT_NEAR(std::hypot(solution.hdop, solution.vdop), solution.pdop, 1e-9);
  }
}

TEST(SolvedSatellites, MaskAnglesAndSystems) {
  Receiver receiver;
  receiver.NoteAll();
  const std::vector<PointRanges> ranges = receiver.Measure(kTime, 0.02);
  PointSolver solver;
  const PointSolution& solution = solver.Solve(EpochOf(ranges, kTime), receiver.store);
  ASSERT_EQ(solution.result, PointResult::Ok);
  unsigned int below = 0;
  for (std::size_t i = 0; i < solution.numSatellites; ++i) {
    const PointSatellite& satellite = solution.satellites[i];
    SatelliteOrbit orbit;
    receiver.store.Find(satellite.system, satellite.svId, C_GnssTime(kWeek, kTime - 0.075, ALGO::GNSS_GPS), kLeap,
                        orbit);
    double elevation = 0, azimuth = 0;
    receiver.place.ElevationAndAzimuth(orbit.state.position, true, elevation, azimuth);
    EXPECT_NEAR(satellite.elevation, elevation, 1e-5);
    EXPECT_NEAR(satellite.azimuth, azimuth, 1e-4);
    EXPECT_EQ(satellite.use == PointUse::BelowMask, elevation < 10 * kPi / 180);
    below += satellite.use == PointUse::BelowMask ? 1 : 0;
  }
  EXPECT_GT(below, 0U);
  EXPECT_EQ(solution.numUsed + below, solution.numSatellites);
  EXPECT_EQ(solution.systems[ALGO::GNSS_BEIDOU].secondBand, '6');
}

// Saastamoinen's hydrostatic delay of a standard atmosphere is 2.31 m at the sea, the rest is vapor; at 10 degrees the
// path is 5.6 times as long as at the zenith (Niell's functions give 5.59).
TEST(Troposphere, HasTheKnownSize) {
  EXPECT_NEAR(TroposphericDelay(kPi / 4, 0, kPi / 2), 2.307 + 0.08, 0.03);
  EXPECT_NEAR(TroposphericDelay(kPi / 4, 0, 10 * kPi / 180) / TroposphericDelay(kPi / 4, 0, kPi / 2), 5.59, 0.03);
  EXPECT_NEAR(TroposphericDelay(kPi / 4, 5500, kPi / 2), 2.307 / 2, 0.03);  // half of the pressure
  EXPECT_EQ(TroposphericDelay(0, -6378137, 1), TroposphericDelay(0, -1000, 1));
}

}  // namespace
