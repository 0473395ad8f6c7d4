#include "apps/velagnss/account/ObservationSummary.h"

#include <gmock/gmock.h>

#include <cstring>

namespace {

using namespace velagnss;

class Summary {
 public:
  template <class Record>
  void Note(const Record& record, WeekSource week = WeekSource::Stream) {
    DecodedFrame decoded;
    decoded.record = record;
    decoded.week = week;
    if constexpr (requires { m_clock.Note(record); }) m_clock.Note(record);
    summary.Note({Frame{}, decoded, m_clock});
  }

  Host::C_ObservationSummary summary;

 private:
  StreamClock m_clock;
};

// One signal of a satellite; slot 255 is not known.
Rtcm3Observations Observed(ALGO::eGNSSSystem system, unsigned char sv, const char* code, double seconds) {
  Rtcm3Observations record;
  record.time.week = 2314;
  record.time.seconds = seconds;
  record.numSatellites = record.numSignals = 1;
  record.satellites[0].system = system;
  record.satellites[0].svId = sv;
  SetEmpty_IFGnssObsData(record.signals[0].data, 1);
  record.signals[0].phaseRange = 2e7;
  std::memcpy(record.signals[0].code, code, std::strlen(code));
  return record;
}

TEST(ObservationSummary, CountsSatellitesAndSignals) {
  Summary stream;
  for (const double seconds : {100.0, 101.0, 102.0, 106.0}) {
    stream.Note(Observed(ALGO::GNSS_GPS, 4, "1C", seconds));
    stream.Note(Observed(ALGO::GNSS_GPS, 5, "1C", seconds));
    stream.Note(Observed(ALGO::GNSS_GPS, 5, "", seconds));
    stream.Note(Observed(ALGO::GNSS_GLONASS, NA_U8, "1P", seconds + 0.003));  // clocks of systems differ
  }
  Rtcm3Observations nothing = Observed(ALGO::GNSS_GALILEO, 1, "1C", 106);
  nothing.signals[0].phaseRange = NA_DOUBLE;
  stream.Note(nothing);
  ASSERT_EQ(stream.summary.Systems().size(), 2U);
  const auto& gps = stream.summary.Systems()[0];
  EXPECT_EQ(gps.satellites.count(), 2U);
  ASSERT_EQ(gps.signals.size(), 1U);
  EXPECT_EQ(gps.signals[0].observations, 8U);
  const auto& glonass = stream.summary.Systems()[1];
  EXPECT_EQ(glonass.satellites.count(), 0U);
  EXPECT_EQ(glonass.signals[0].Code(), "1P");
  EXPECT_EQ(stream.summary.Epochs().Interval(), 1);
  EXPECT_EQ(stream.summary.Epochs().GapCount(), 1U);
}

TEST(ObservationSummary, KeepsWhatAStationSentLast) {
  Summary stream;
  Rtcm3Station station;
  station.station = 7;
  station.x = station.y = station.z = 1;
  station.antennaHeight = 1.5;
  Rtcm3Antenna antenna;
  antenna.station = 7;
  antenna.antenna.size = 5;
  std::memcpy(antenna.antenna.bytes, "ANT  ", 5);
  stream.Note(antenna);
  stream.Note(station);
  antenna.antenna.size = 0;
  stream.Note(antenna);
  station.x = 2;
  station.antennaHeight = NA_DOUBLE;  // a 1005 after a 1006
  stream.Note(station);
  station.station = 3;
  stream.Note(station);
  ASSERT_EQ(stream.summary.Stations().size(), 2U);
  EXPECT_EQ(stream.summary.Stations()[0].id, 3);
  EXPECT_EQ(stream.summary.Stations()[1].x, 2);
  EXPECT_EQ(stream.summary.Stations()[1].antennaHeight, 1.5);
  EXPECT_EQ(stream.summary.Stations()[1].antenna, "ANT");
}

// The same moment in the time scales of three systems: GPS week 2314, 7200 s.
TEST(ObservationSummary, ComparesTimesOfAllSystems) {
  Summary stream;
  Rtcm3KeplerEphemeris kepler;
  const auto note = [&](ALGO::eGNSSSystem system, double toe, WeekSource week) {
    SetEmpty_IFEphRec(kepler.ephemeris);
    kepler.ephemeris.System = kepler.ephemeris.TimeSystem = static_cast<std::uint8_t>(system);
    kepler.ephemeris.SvId = 9;
    kepler.ephemeris.ToeWeek = 2314;
    kepler.ephemeris.Toe = toe;
    stream.Note(kepler, week);
  };
  note(ALGO::GNSS_GPS, 7200, WeekSource::Stream);
  note(ALGO::GNSS_GPS, 3600, WeekSource::Stream);
  note(ALGO::GNSS_BEIDOU, 7186, WeekSource::Stream);
  note(ALGO::GNSS_GALILEO, 7200, WeekSource::None);
  S_IFPvaEphRec glonass;
  SetEmpty_IFEphRec(glonass);
  glonass.System = glonass.TimeSystem = ALGO::GNSS_GLONASS;
  glonass.RefWeek = 2314;
  glonass.RefTime = 7200 - 18 + 10800;
  stream.Note(glonass);
  const auto& found = stream.summary.Ephemerides();
  ASSERT_EQ(found.size(), 4U);
  EXPECT_EQ(stream.summary.AgeOf(found[0]), std::nullopt) << "no observation yet";
  stream.Note(Observed(ALGO::GNSS_GPS, 4, "1C", 7000));
  for (const auto& entry : found) {
    const std::optional<double> age = stream.summary.AgeOf(entry);
    EXPECT_EQ(age, entry.system == ALGO::GNSS_GALILEO ? std::nullopt : std::optional(-200.0)) << entry.system;
  }
  EXPECT_EQ(found[0].count, 2U);
}

}  // namespace
