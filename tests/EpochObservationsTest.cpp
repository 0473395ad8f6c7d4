// Epoch objects of `velagnss decode` from observations of RTCM 3, alone and together with sentences.
#include <fmt/core.h>
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "Cases.h"
#include "Constellation.h"
#include "ObservationFrames.h"
#include "ProgramRun.h"
#include "apps/velagnss/epoch/NmeaSatellites.h"
#include "apps/velagnss/epoch/ObservationEpochs.h"

namespace {

using nlohmann::json;

// --- Streams ---

// 11:59:42 UTC and some seconds. Signal 2 is 1C, 17 is 2X of GPS.
std::string Gps(std::uint32_t second, unsigned int station = 7, unsigned int signal = 2) {
  return Msm(1077, kNoon + 1000 * second, {{}}, signal, station);
}
std::string Galileo(std::uint32_t second, unsigned int station = 7) {
  return Msm(1097, kNoon + 1000 * second + 4, {{11}}, 2, station);
}
std::string Glonass(std::uint32_t second) { return Msm(1087, kNoon + 1000 * second, {{3}}); }
std::string Faint(std::uint32_t second) { return Msm(1076, kNoon + 1000 * second, {{5, 600, 0, 0, 5, 0}}); }

// 18 m from the station that Position() gives.
std::string Rmc(int second, const char* latitude = "0000.01") {
  return Sentence(fmt::format("GNRMC,1159{},A,{},N,00000.00,E,,,160524,,,A,V", second, latitude));
}
std::string Gga(int second, const char* station) {
  return Sentence(fmt::format("GNGGA,1159{},0000.01,N,00000.00,E,2,05,,,M,,M,1,{}", second, station));
}
const std::string kZda = Sentence("GNZDA,115942,16,05,2024,,");
const std::string kGsa = Sentence("GNGSA,A,3,05,,,,,,,,,,,,1.5,1.0,1.1,1");
const std::string kGsv = Sentence("GPGSV,1,1,01,05,40,083,46,1");
const std::string kGsv5 = Sentence("GPGSV,1,1,01,05,40,083,41,8");
const std::string kGsv2 = Sentence("GPGSV,1,1,01,05,40,083,42,6");
const std::string kOldGsv = Sentence("GPGSV,1,1,01,05,40,083,46");

std::string SilentStation() {
  std::string stream = Date() + Gps(0, 8);
  for (std::uint32_t second = 0; second < 23; ++second) stream += Gps(second);
  return stream + Gps(2, 8);
}

std::string ManyStations() {
  std::string stream;
  for (std::uint32_t second = 0; second < 2; ++second) {
    for (unsigned int station = 0; station < 64; ++station) stream += Gps(second, station);
    for (unsigned int station = 0; station < 64; ++station) stream += Galileo(second, station);
  }
  return stream;
}

// The message that comes 20 epochs late is of an epoch that is one with its sentences.
std::string LateStation() {
  std::string stream = Rmc(30) + Msm(1077, kNoon - 12000, {{}}, 2, 8);
  for (int second = 31; second < 55; ++second) stream += Rmc(second);
  return stream + Msm(1097, kNoon - 12000 + 4, {{11}}, 2, 8);
}

// Time, station, and the satellites with their signals of each epoch.
std::string Text(const json& epoch) {
  std::string text = fmt::format("{} {}", epoch["utc"].is_null() ? "-" : epoch["utc"].get<std::string>().substr(14),
                                 epoch["station"].is_null() ? "-" : epoch["station"]["number"].dump());
  for (const json& satellite : epoch["satellites"]) {
    text += fmt::format(" {}{}", satellite["system"].get<std::string>().substr(0, 3), satellite["number"].dump());
    for (const json& signal : satellite["signals"])
      text += fmt::format(":{}/{}/{}", signal["signal_id"].dump(), signal["code"].is_null() ? "-" : signal["code"],
                          signal["cn0_dbhz"].dump());
  }
  return text + "\n";
}

struct S_StreamCase {
  const char* name;
  std::string stream;
  const char* epochs;
};
// clang-format off
const S_StreamCase kStreams[] = {
    {"EndsWithTheTime", Date() + Gps(0) + Galileo(0) + Gps(1),
     "59:42Z 7 gps5:1/1C/45 gal11:7/1C/45\n59:43Z 7 gps5:1/1C/45\n"},
    {"StationsApart", Date() + Gps(0) + Gps(0, 8) + Galileo(0) + Galileo(0, 8),
     "59:42Z 7 gps5:1/1C/45 gal11:7/1C/45\n59:42Z 8 gps5:1/1C/45 gal11:7/1C/45\n"},
    {"StationBehind", Date() + Gps(1) + Gps(0, 8) + Galileo(1) + Galileo(0, 8),
     "59:43Z 7 gps5:1/1C/45 gal11:7/1C/45\n59:42Z 8 gps5:1/1C/45 gal11:7/1C/45\n"},
    {"LateMessage", Date() + Gps(1) + Gps(0) + Galileo(1), "59:43Z 7 gps5:1/1C/45 gal11:7/1C/45\n"},
    {"FirstOfASignal", Date() + Gps(0) + Faint(0), "59:42Z 7 gps5:1/1C/45\n"},
    {"FirstWithStrength", Date() + Faint(0) + Gps(0), "59:42Z 7 gps5:1/1C/45\n"},
    {"GlonassAloneWithoutDate", Glonass(0) + Gps(1), "- 7 gps5:1/1C/45\n"},
    {"GlonassAheadWithoutDate", Gps(0) + Glonass(1) + Gps(1), "- 7 gps5:1/1C/45\n- 7 gps5:1/1C/45\n"},
    {"GlonassWithGps", Gps(0) + Glonass(0), "- 7 gps5:1/1C/45 glo3:1/1C/45\n"},
    {"LeapSecondsOfTheDate", Gps(0) + Date(57485) + Gps(1), "59:43Z 7 gps5:1/1C/45\n59:44Z 7 gps5:1/1C/45\n"},
    {"ObservationsFirst", Gps(0) + Rmc(42) + kGsv + kGsv5 + Gps(1) + Rmc(43),
     "59:42Z 7 gps5:1/1C/45:8/-/41\n59:43Z 7 gps5:1/1C/45\n"},
    {"GsvAfterBoth", Rmc(42) + Gps(0) + Gps(1) + kGsv, "59:42Z 7 gps5:1/1C/45\n59:43Z 7 gps5:1/1C/45\n"},
    {"OldGsvAfterBoth", Rmc(42) + Gps(0) + Gps(1) + kOldGsv, "59:42Z 7 gps5:1/1C/45\n59:43Z 7 gps5:1/1C/45\n"},
    {"ComponentsAfterBoth", Rmc(42) + Gps(0, 7, 17) + Gps(1) + kGsv2, "59:42Z 7 gps5:6/2X/45\n59:43Z 7 gps5:1/1C/45\n"},
    {"SentencesFirst", Rmc(42) + kGsa + kGsv + Gps(0) + Rmc(43) + Gps(1),
     "59:42Z 7 gps5:1/1C/45\n59:43Z 7 gps5:1/1C/45\n"},
    {"SkyFirst", kGsv + Rmc(42) + Gps(0) + kGsv + Gps(1) + Rmc(43), "59:42Z 7 gps5:1/1C/45\n59:43Z 7 gps5:1/1C/45\n"},
    {"AfterItsObject", Rmc(42) + Gps(0) + Rmc(43) + Galileo(0) + Galileo(1), "59:42Z 7 gps5:1/1C/45\n59:43Z 7 gal11:7/1C/45\n"},
    {"OneStationOfTwo", Rmc(42) + Gps(0) + Gps(0, 8) + Gps(1) + Gps(1, 8),
     "59:42Z 8 gps5:1/1C/45\n59:42Z 7 gps5:1/1C/45\n59:43Z 7 gps5:1/1C/45\n59:43Z 8 gps5:1/1C/45\n"},
    {"OtherTime", Rmc(42) + kGsv + Gps(1), "59:42Z - gps5:1/-/46\n59:43Z 7 gps5:1/1C/45\n"},
    {"GsvWithoutId", Rmc(42) + kOldGsv + Gps(0), "59:42Z 7 gps5:1/1C/45\n"},
    {"TwoComponents", Rmc(42) + kGsv2 + Gps(0, 7, 17), "59:42Z 7 gps5:6/2X/45\n"},
    {"StrengthOfGsv", Rmc(42) + kGsv + Faint(0), "59:42Z 7 gps5:1/1C/46\n"},
    {"Corrections", Gga(42, "0007") + kGsv + Rmc(42) + Gps(0), "59:42Z - gps5:1/-/46\n59:42Z 7 gps5:1/1C/45\n"},
    {"NoNumberOfCorrections", Gga(42, "0000") + kGsv + Rmc(42) + Gps(0, 0), "59:42Z 0 gps5:1/1C/45\n"},
    {"StationNear", Position() + Rmc(42) + kGsv + Gps(0), "59:42Z 7 gps5:1/1C/45\n"},
    {"StationFar", Position() + Rmc(42, "0000.10") + kGsv + Gps(0), "59:42Z - gps5:1/-/46\n59:42Z 7 gps5:1/1C/45\n"},
    {"CorrectionsAfterBoth", Rmc(42) + Gps(0) + Gps(1) + Gga(42, "0007"), "59:42Z 7 gps5:1/1C/45\n59:42Z -\n59:43Z 7 gps5:1/1C/45\n"},
    {"FarAfterBoth", Position() + kZda + Gps(0) + Gps(1) + Rmc(42, "0000.10"), "59:42Z 7 gps5:1/1C/45\n59:42Z -\n59:43Z 7 gps5:1/1C/45\n"},
};
// clang-format on

std::vector<json> Epochs(const std::string& output) {
  std::vector<json> epochs;
  std::istringstream lines(output);
  for (std::string line; std::getline(lines, line);) epochs.push_back(json::parse(line));
  return epochs;
}

TEST_ROWS_F(ObservedEpoch, KeepsTogether, Program, kStreams, row) {
  Write("in", row.stream);
  std::string text;
  for (const json& epoch : Epochs(Run("velagnss decode --epochs-only in").output)) text += Text(epoch);
  EXPECT_EQ(text, row.epochs);
}

TEST_F(Program, EndsTheEpochOfASilentStation) {
  Write("in", SilentStation());
  const std::vector<json> epochs = Epochs(Run("velagnss decode --epochs-only in").output);
  ASSERT_EQ(epochs.size(), 25U);
  EXPECT_EQ(Text(epochs[20]), "59:42Z 8 gps5:1/1C/45\n");
}

TEST_F(Program, KeepsTheEpochsOfManyStationsTogether) {
  Write("in", ManyStations());
  const std::vector<json> epochs = Epochs(Run("velagnss decode --epochs-only in").output);
  ASSERT_EQ(epochs.size(), 128U);
  for (const json& epoch : epochs) EXPECT_EQ(epoch["satellites"].size(), 2U) << epoch["station"]["number"];
}

TEST_F(Program, LeavesOutWhatIsLateForAnEpochOfSentences) {
  Write("in", LateStation());
  EXPECT_EQ(Epochs(Run("velagnss decode --epochs-only in").output).size(), 25U);
}

TEST_F(Program, ShowsAnEpochOfAStation) {
  Write("in", Date() + Position() + Gps(0) + Galileo(0));
  const json epoch = json::parse(Run("velagnss decode --epochs-only in").output);
  EXPECT_EQ(epoch["utc"], "2024-05-16T11:59:42Z");
  EXPECT_EQ(epoch["offset"], Date().size() + Position().size());
  EXPECT_TRUE(epoch["latitude_deg"].is_null());
  EXPECT_NEAR(epoch["station"]["height_m"], 0, 1e-3);
  EXPECT_NEAR(epoch["station"]["longitude_deg"], 0, 1e-6);
  EXPECT_EQ(epoch["station"]["messages"], json::parse(R"(["RTCM1077", "RTCM1097"])"));
  EXPECT_EQ(epoch["satellites"][0], json::parse(R"({"system":"gps","number":5,"nmea_id":null,"elevation_deg":null,
    "azimuth_deg":null,"used":null,"signals":[{"signal":"L1 C/A","signal_id":1,"code":"1C","cn0_dbhz":45.0}]})"));
}

// --- Directions ---

velagnss::Rtcm3Observations ObservedGps5() {
  velagnss::Rtcm3Observations observations;
  observations.time.week = constellation::kWeek;
  observations.time.seconds = constellation::kToe;
  observations.numSatellites = observations.numSignals = 1;
  observations.satellites[0].system = ALGO::GNSS_GPS;
  observations.satellites[0].svId = 5;
  observations.signals[0].phaseRange = 2e7;
  observations.signals[0].code[0] = '1', observations.signals[0].code[1] = 'C';
  return observations;
}

// An antenna on the line from the center of the Earth to a satellite, `side` 1 below it and -1 on the other side.
Host::S_Epoch SeenFrom(int side) {
  velagnss::StreamClock clock;
  velagnss::DecodedFrame decoded;
  velagnss::Frame frame{};
  frame.protocol = C_RawDataMessage::eRTCM3_x;
  Host::S_Epoch seen;
  Host::C_ObservationEpochs epochs([&](const Host::S_Epoch& epoch) { seen = epoch; });
  const auto take = [&](const auto& record) {
    decoded.record = record;
    if constexpr (requires { clock.Note(record); }) clock.Note(record);
    epochs.Take({frame, decoded, clock});
  };
  const auto ephemeris = constellation::Kepler(ALGO::GNSS_GPS, 5);
  velagnss::SatelliteState state;
  StateAt(ephemeris.ephemeris, {constellation::kWeek, constellation::kToe, ALGO::GNSS_GPS}, state);
  const double scale = side * 6378137.0 / state.position.Norm();
  velagnss::Rtcm3Station station;
  station.x = scale * state.position.X(), station.y = scale * state.position.Y(),
  station.z = scale * state.position.Z();
  take(ObservedGps5());
  take(ephemeris);
  take(station);
  epochs.Finish(clock);
  return seen;
}

TEST(ObservedEpoch, HasElevations) {
  ASSERT_EQ(SeenFrom(1).satellites.size(), 1U);
  EXPECT_EQ(SeenFrom(1).satellites[0].elevation, 90);
  EXPECT_LT(SeenFrom(1).satellites[0].azimuth, 360);
  EXPECT_TRUE(IsNotAvailable(SeenFrom(-1).satellites[0].elevation)) << "below the horizon";
}

// --- Signals ---

struct S_SignalCase {
  const char* name;
  ALGO::eGNSSSystem system;
  const char* code;
  unsigned char id;
  const char* signal;
};
const S_SignalCase kSignals[] = {
    {"GpsP", ALGO::GNSS_GPS, "2W", 4, "L2 P(Y)"},       {"GpsL1c", ALGO::GNSS_GPS, "1X", NA_U8, ""},
    {"TwoComponents", ALGO::GNSS_GPS, "5X", NA_U8, ""}, {"GlonassP", ALGO::GNSS_GLONASS, "2P", 4, "G2 P"},
    {"GalileoE5a", ALGO::GNSS_GALILEO, "5X", 1, "E5a"}, {"GalileoE1", ALGO::GNSS_GALILEO, "1B", 7, "L1-BC"},
    {"BeidouB2I", ALGO::GNSS_BEIDOU, "7I", 11, "B2I"},  {"BeidouB2b", ALGO::GNSS_BEIDOU, "7D", 6, "B2b"},
    {"QzssL1c", ALGO::GNSS_QZSS, "1L", 3, "L1C-P"},     {"Sbas", ALGO::GNSS_SBAS, "5I", 7, "L5-I"},
    {"Navic", ALGO::GNSS_RESERVED6, "9A", 2, "S-SPS"},
};

TEST_ROWS(RinexSignal, HasItsNmeaId, kSignals, row) {
  EXPECT_EQ(Host::SignalIdOf(row.system, row.code), row.id);
  EXPECT_EQ(Host::NameOfSignal(row.system, row.id), row.signal);
}

}  // namespace
