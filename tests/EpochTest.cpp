// Epoch objects of `velagnss decode`: which sentences belong together, and what is shown of them.
#include <fmt/core.h>
#include <gmock/gmock.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "Cases.h"
#include "ProgramRun.h"
#include "Streams.h"
#include "apps/velagnss/epoch/NmeaSatellites.h"

namespace {

using nlohmann::json;

const std::string kGga = "GNGGA,12000{},0700.00,N,00800.00,E,1,05,,,M,,M,,|";
const std::string kRmc = "GNRMC,12000{},A,0700.00,N,00800.00,E,,,180524,,,A,V|";
const std::string kGsa = "GNGSA,A,3,0{},,,,,,,,,,,,1.5,1.0,1.1,1|";
const std::string kGsv = "GPGSV,1,1,02,0{0},40,083,46,09,,,,1|";

// The templates in their order, with the number of the epoch in each.
std::string Burst(const std::vector<std::string>& sentences, int epoch) {
  std::string text;
  for (const std::string& sentence : sentences) text += fmt::format(fmt::runtime(sentence), epoch);
  return text;
}

struct S_OrderCase {
  const char* name;
  std::string stream;
  const char* epochs;  // time of day, satellite in use, satellites, fix
};
// clang-format off
const S_OrderCase kOrders[] = {
    {"SkyLast",    Burst({kGga, kRmc, kGsa, kGsv}, 1) + Burst({kGga, kRmc, kGsa, kGsv}, 2), "43201/1/2/3d 43202/2/2/3d "},
    {"SkyFirst",   Burst({kGsv, kGsa, kGga, kRmc}, 1) + Burst({kGsv, kGsa, kGga, kRmc}, 2), "43201/1/2/3d 43202/2/2/3d "},
    {"SkyAround",  Burst({kGsa, kGga, kRmc, kGsv}, 1) + Burst({kGsa, kGga, kRmc, kGsv}, 2), "43201/1/2/3d 43202/2/2/3d "},
    {"SkyBetween", Burst({kRmc, kGsa, kGsv, kGga}, 1) + Burst({kRmc, kGsa, kGsv, kGga}, 2), "43201/1/2/3d 43202/2/2/3d "},
    {"FromMidBurst", "xx|" + Burst({kGsa, kGsv}, 1) + Burst({kGga, kGsa, kGsv}, 2), "-/1/2/3d 43202/2/2/3d "},
    {"FromMidGroup", "GPGSV,2,2,05,01,40,083,46,,,,,1|" + Burst({kGga, kGsa, kGsv}, 2), "-/-/1/- 43202/2/2/3d "},
    {"EndsInMidBurst", Burst({kGsv, kGsa, kGga}, 1) + Burst({kGsv, kGsa}, 2), "43201/1/2/3d -/2/2/3d "},
    {"SkyAlone",   Burst({kGsa, kGsv}, 1) + Burst({kGsa, kGsv}, 2),           "-/1/2/3d -/2/2/3d "},
    {"SentByTheSecond", Burst({kGga}, 1) + Burst({kGga, kGsa, kGsv}, 2) + Burst({kGga}, 3), "43201/-/0/- 43202/2/2/3d 43203/-/0/- "},
    {"TwoGsaInARow", Burst({kGga, kGsa}, 1) + Burst({kGsa, kGsv}, 3) + Burst({kGga}, 2), "43201/1/3/3d 43202/-/0/- "},
    {"LateRmc",    Burst({kGga, kGsa}, 1) + Burst({kGga}, 2) + Burst({kRmc}, 1) + Burst({kGsa}, 2), "43201/1/1/3d 43202/2/1/3d "},
    {"ZdaOfItsSending", Burst({kGga}, 1) + "GNZDA,120001.05,18,05,2024,00,00|" + Burst({kGsa}, 1), "43201/1/1/3d "},
    {"WithoutTimes", "GNGGA,,,,,,0,,,,M,,M,,|" + Burst({kGsa}, 1) + "GNGGA,,,,,,0,,,,M,,M,,|" + Burst({kGsa}, 2), "-/1/1/3d -/2/1/3d "},
};
// clang-format on

std::string Stream(const std::string& bodies) {
  std::string stream;
  std::istringstream lines(bodies);
  for (std::string body; std::getline(lines, body, '|');) stream += body == "xx" ? "garbage\r\n" : Sentence(body);
  return stream;
}

std::string Used(const json& epoch) {
  for (const json& satellite : epoch["satellites"])
    if (satellite["used"] == true) return satellite["number"].dump();
  return "-";
}

std::string Text(const json& value) { return value.is_null() ? "-" : value.is_string() ? value : json(value.dump()); }

TEST_ROWS_F(EpochOrder, KeepsTogether, Program, kOrders, row) {
  Write("in", Stream(row.stream));
  std::istringstream lines(Run("velagnss decode --epochs-only in").output);
  std::string epochs;
  for (std::string line; std::getline(lines, line);) {
    const json epoch = json::parse(line);
    const json time = epoch["time_of_day_s"];
    epochs += fmt::format("{}/{}/{}/{} ", time.is_null() ? "-" : std::to_string(time.get<int>()), Used(epoch),
                          epoch["satellites"].size(), Text(epoch["fix_type"]));
  }
  EXPECT_EQ(epochs, row.epochs);
}

TEST_F(Program, ShowsAnEpoch) {
  Write("in", Stream("GNRMC,235959.125,A,0700.00,N,00800.00,E,5.5,90.5,311224,,,D,V|"
                     "GNGST,235959.125,1.5,2.5,3.5,4.5,5.5,6.5,7.5|GNGSA,A,3,05,33,,,,,,,,,,,1.5,1.0,1.1,1|"
                     "GNGSA,A,3,70,,,,,,,,,,,,1.5,1.0,1.1,2|GPGSV,1,1,01,05,40,083,46,1|GPGSV,1,1,01,05,40,083,41,8|"));
  const json epoch = json::parse(Run("velagnss decode --epochs-only in").output);
  EXPECT_EQ(epoch, json::parse(R"({"schema":1,"event":"epoch","offset":0,"utc":"2024-12-31T23:59:59.125Z",
    "gps_time":"2025-01-01T00:00:17.125","time_of_day_s":86399.125,"latitude_deg":7.0,"longitude_deg":8.0,
    "altitude_m":null,"geoid_separation_m":null,"mode":"differential","satellites_used":null,"speed_knots":5.5,
    "course_true_deg":90.5,"fix_type":"3d","pdop":1.5,"hdop":1.0,"vdop":1.1,"accuracy":{"range_rms_m":1.5,
    "semi_major_m":2.5,"semi_minor_m":3.5,"orientation_deg":4.5,"latitude_deviation_m":5.5,"longitude_deviation_m":6.5,
    "altitude_deviation_m":7.5},"station":null,"satellites":[
    {"system":"gps","number":5,"nmea_id":5,"elevation_deg":40,"azimuth_deg":83,"used":true,"signals":[
      {"signal":"L1 C/A","signal_id":1,"code":null,"cn0_dbhz":46.0},
      {"signal":"L5-Q","signal_id":8,"code":null,"cn0_dbhz":41.0}]},
    {"system":"glonass","number":6,"nmea_id":70,"elevation_deg":null,"azimuth_deg":null,"used":true,"signals":[]},
    {"system":"sbas","number":120,"nmea_id":33,"elevation_deg":null,"azimuth_deg":null,"used":true,"signals":[]}]})"));
}

TEST_F(Program, DatesTheEpochBeforeAGap) {
  Write(
      "in",
      Stream("GNRMC,235900,A,0700.00,N,00800.00,E,,,311224,,,A,V|GNRMC,120000,A,0700.00,N,00800.00,E,,,050125,,,A,V|"));
  EXPECT_THAT(Run("velagnss decode --epochs-only -n 1 in").output, testing::HasSubstr("2024-12-31T23:59:00Z"));
}

struct S_SatelliteCase {
  const char* name;
  const char* talker;
  unsigned char systemId;
  unsigned char id;
  ALGO::eGNSSSystem system;
  unsigned int number;
};
const S_SatelliteCase kSatellites[] = {
    {"Gps", "GP", 255, 32, ALGO::GNSS_GPS, 32},
    {"SbasOfGps", "GP", 255, 33, ALGO::GNSS_SBAS, 120},
    {"GlonassOfNoSystem", "GN", 255, 65, ALGO::GNSS_GLONASS, 1},
    {"GlonassById", "GN", 2, 88, ALGO::GNSS_GLONASS, 24},
    {"GlonassSlot", "GL", 255, 7, ALGO::GNSS_GLONASS, 7},
    {"Galileo", "GA", 255, 36, ALGO::GNSS_GALILEO, 36},
    {"BeidouById", "GN", 4, 44, ALGO::GNSS_BEIDOU, 44},
    {"BeidouOfBd", "BD", 255, 201, ALGO::GNSS_BEIDOU, 1},
    {"QzssOfGps", "GP", 255, 194, ALGO::GNSS_QZSS, 194},
    {"QzssOf411", "GQ", 255, 2, ALGO::GNSS_QZSS, 194},
    {"NavicById", "GN", 6, 3, ALGO::GNSS_RESERVED6, 3},
};

TEST_ROWS(NmeaSatellite, HasItsNumber, kSatellites, row) {
  const Host::S_SatelliteName name = Host::SatelliteOf(Host::SystemOfSentence(row.talker, row.systemId), row.id);
  EXPECT_EQ(name.system, row.system);
  EXPECT_EQ(name.number, row.number);
}

}  // namespace
