#include "apps/velagnss/account/PointReport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "Constellation.h"
#include "apps/velagnss/account/PointReportJson.h"
#include "apps/velagnss/account/PointReportTable.h"
#include "geo/Geodesy.h"

namespace {

using namespace velagnss;
using namespace constellation;
using Host::C_PointReport;
using nlohmann::json;

// A report that is given records as if they came from a stream.
class Stream {
 public:
  Stream() { report.BeginInput("input"); }

  template <class T>
  void Give(const T& record) {
    m_decoded.record.emplace<T>(record);
    report.OnFrame({m_frame, m_decoded, m_clock});
  }
  void End() { report.EndInput({m_reader, m_clock, {}}); }

  void GiveEphemerides() {
    for (unsigned char number = 1; number <= 24; ++number) {
      Give(Kepler(ALGO::GNSS_GPS, number));
      Give(Kepler(ALGO::GNSS_GALILEO, number));
      if (number > 5) Give(Kepler(ALGO::GNSS_BEIDOU, number));
      Rtcm3PvaEphemeris glonass;
      glonass.ephemeris = Glonass(number);
      Give(glonass);
    }
  }
  void GiveStation(const C_Vector3& position) {
    Rtcm3Station station;
    station.station = 7;
    station.x = position.X(), station.y = position.Y(), station.z = position.Z();
    Give(station);
  }
  void GiveEpoch(const std::vector<PointRanges>& ranges, double seconds, unsigned short station = 7) {
    for (const auto& carriers : kCarriers) {
      auto message = std::make_unique<Rtcm3Observations>();
      message->station = station;
      message->system = carriers.system;
      message->time.week = kWeek;
      message->time.seconds = seconds;
      message->time.sent = static_cast<std::uint32_t>(std::fmod(seconds - kLeap + 10800, 86400) * 1000);
      for (const PointRanges& satellite : ranges) {
        if (satellite.system != carriers.system) continue;
        Rtcm3Satellite& sent = message->satellites[message->numSatellites++];
        sent.system = carriers.system;
        sent.svId = satellite.svId;
        for (const PointRange* range : {&satellite.first, &satellite.second}) {
          Rtcm3Signal& signal = message->signals[message->numSignals++];
          SetEmpty_IFGnssObsData(signal.data, 1);
          signal.data.Pseudorange = range->range;
          signal.frequency = range->frequency;
          signal.satellite = static_cast<unsigned char>(message->numSatellites - 1);
          std::copy(std::begin(range->code), std::end(range->code), signal.code);
        }
      }
      Give(*message);
    }
  }

  C_PointReport report;

 private:
  Frame m_frame;
  DecodedFrame m_decoded;
  StreamClock m_clock;
  FrameReader m_reader;
};

// Everything that an epoch needs may come after it: 1100 epochs, then the ephemerides and, 3 m north of the receiver,
// the station. The first 76 epochs could not wait any longer; nor have they a station.
TEST(PointReport, EpochsWaitForWhatTheyNeed) {
  Receiver receiver;
  receiver.NoteAll();
  const auto ranges = receiver.Measure(kToe + 600);
  Stream stream;
  for (int i = 0; i < 1100; ++i) stream.GiveEpoch(ranges, kToe + 600 + i * 1e-2);
  stream.GiveEpoch(ranges, kToe + 700, 8);
  stream.GiveEphemerides();
  C_Vector3 station;
  double dx = 0, dy = 0, dz = 0;
  ALGO::LocalToEcefDelta(3, 0, 0, 0.8, 0.2, dx, dy, dz);
  stream.GiveStation(receiver.place.Cartesian() + C_Vector3(dx, dy, dz));
  stream.End();
  const C_PointReport& report = stream.report;
  EXPECT_EQ(report.Epochs(), 1100U);
  EXPECT_EQ(report.OtherStations(), 1U);
  EXPECT_EQ(report.EpochsOf(PointResult::TooFew), 76U);
  EXPECT_EQ(report.EpochsOf(PointResult::Ok), 1024U);
  ASSERT_TRUE(report.Errors().has_value());
  EXPECT_EQ(report.Errors()->epochs, 1024U);
}

// A station that says it is 3 m too far north, 4 m east and 2 m down, and a satellite whose ranges are 200 m too long.
void GiveErrors(Stream& stream) {
  Receiver receiver;
  receiver.NoteAll();
  stream.GiveEphemerides();
  double dx = 0, dy = 0, dz = 0;
  ALGO::LocalToEcefDelta(3, 4, -2, 0.8, 0.2, dx, dy, dz);
  stream.GiveStation(receiver.place.Cartesian() + C_Vector3(dx, dy, dz));
  for (int i = 0; i < 3; ++i) {
    auto ranges = receiver.Measure(kToe + 600 + i, 0.25);
    ranges[0].first.range += 200;
    stream.GiveEpoch(ranges, kToe + 600 + i);
  }
  stream.End();
}

TEST(PointReport, JsonAndTable) {
  Stream stream;
  GiveErrors(stream);
  Host::C_JsonWriter writer;
  writer.BeginObject();
  Host::WritePoints(writer, stream.report);
  writer.EndObject();
  const json points = json::parse(writer.Text())["positions"];
  EXPECT_EQ(points["epochs"], 3);
  EXPECT_EQ(points["solved"], 3);
  EXPECT_EQ(points["station"]["number"], 7);
  EXPECT_NEAR(points["mean"]["latitude_deg"].get<double>(), 0.8 * 180 / kPi, 1e-8);
  EXPECT_NEAR(points["mean"]["height_m"].get<double>(), 400, 1e-3);
  const json& errors = points["errors"];
  EXPECT_NEAR(errors["north_m"].get<double>(), -3, 1e-3);
  EXPECT_NEAR(errors["east_m"].get<double>(), -4, 1e-3);
  EXPECT_NEAR(errors["up_m"].get<double>(), 2, 1e-3);
  EXPECT_NEAR(errors["horizontal_50_m"].get<double>(), 5, 1e-3);
  EXPECT_NEAR(errors["vertical_95_m"].get<double>(), 2, 1e-3);
  ASSERT_EQ(points["systems"].size(), 4U);
  EXPECT_EQ(points["systems"][0]["system"], "gps");
  EXPECT_EQ(points["systems"][0]["ionosphere_free"], 3);
  const json& first = points["satellites"][0];
  EXPECT_EQ(first["satellite"].get<std::string>()[0], 'G');
  EXPECT_EQ(first["used"], 0);
  EXPECT_EQ(first["unused"], "outlier");
  EXPECT_TRUE(first["residual_rms_m"].is_null());
  EXPECT_GT(first["elevation_deg"].get<double>(), 5);
  const std::string table = Host::PointTable(stream.report, true);
  for (const char* part : {"3 of 3 epochs", "-3.00 m north", "95 % within 5.00 m", "outlier", "beidou"})
    EXPECT_NE(table.find(part), std::string::npos) << part << '\n' << table;
}

}  // namespace
