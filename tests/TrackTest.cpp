// Tracks of `velagnss convert`: what a point is made of, and each format read back.
#include <gmock/gmock.h>

#include <regex>

#include "Cases.h"
#include "HostData.h"
#include "ProgramRun.h"
#include "Streams.h"
#include "TrackReader.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

// Each line of `bodies` as a sentence: with "$", checksum and line end.
std::string Sentences(const std::string& bodies) {
  std::string text;
  std::istringstream stream(bodies);
  for (std::string body; std::getline(stream, body);) text += Sentence(body);
  return text;
}

// --- What a point is made of ---

struct S_EpochCase {
  const char* name;
  const char* bodies;
  const char*
      rows;  // of CSV: segment, time, latitude, longitude, altitude, separation, fix, satellites, hdop, speed, course
};
// clang-format off
const S_EpochCase kEpochs[] = {
    {"BestOfAnEpoch",
     "GPGLL,0100.00,N,00200.00,E,120000,A,A\n"
     "GPRMC,120000,A,0300.00,N,00400.00,E,5.5,90.5,190524,,,D\n"
     "GNGNS,120000,0500.00,N,00600.00,E,RN,11,1.5,20.5,40.5,,\n"
     "GNGGA,120000.00,0700.00,S,00800.00,W,5,12,0.5,10.5,M,40.25,M,,",
     "1,2024-05-19T12:00:00Z,-7.000000000,-8.000000000,10.5,40.25,rtk float,12,0.5,5.5,90.5\n"},
    {"FilledFromOthers",
     "GNGNS,120000,0500.00,N,00600.00,E,RN,11,1.5,20.5,40.5,,\n"
     "GPGGA,120000,0700.00,N,00800.00,E,1,,,,M,,M,,",
     "1,12:00:00,7.000000000,8.000000000,20.5,40.5,autonomous,11,1.5,,\n"},
    {"TheFixWins",
     "GPGGA,120000,0700.00,N,00800.00,E,0,12,0.5,10.5,M,40.25,M,,\n"
     "GPGLL,0100.00,N,00200.00,E,120000,A,A",
     "1,12:00:00,1.000000000,2.000000000,,,autonomous,,,,\n"},
    {"BestSystemOfGns", "GNGNS,120000.25,0500.00,N,00600.00,E,NAFD,11,,,,,", "1,12:00:00.25,5.000000000,6.000000000,,,rtk float,11,,,\n"},
    {"UnknownQuality",  "GPGGA,120000,0700.00,N,00800.00,E,9,,,,M,,M,,",     "1,12:00:00,7.000000000,8.000000000,,,,,,,\n"},
    {"Simulated",       "GPGGA,120000,0700.00,N,00800.00,E,8,,,,M,,M,,",     "1,12:00:00,7.000000000,8.000000000,,,simulator,,,,\n"},
    {"LossBreaksTheTrack",
     "GPGGA,120000,0700.00,N,00800.00,E,1,,,,M,,M,,\n"
     "GPGGA,120001,0700.00,N,00800.00,E,0,,,,M,,M,,\nGPRMC,120001,V,0700.00,N,00800.00,E,,,190524,,,N\n"
     "GPGLL,0700.00,N,00800.00,E,120001,V,N\nGNGNS,120001,0700.00,N,00800.00,E,NN,0,,,,,\n"
     "GPGGA,120002,0700.00,N,00800.00,E,2,,,,M,,M,,",
     "1,12:00:00,7.000000000,8.000000000,,,autonomous,,,,\n"
     "2,12:00:02,7.000000000,8.000000000,,,differential,,,,\n"},
    {"LossWithoutTime",
     "GPGGA,120000,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPGGA,,,,,,0,,,,M,,M,,\nGPGGA,120002,0700.00,N,00800.00,E,1,,,,M,,M,,",
     "1,12:00:00,7.000000000,8.000000000,,,autonomous,,,,\n"
     "2,12:00:02,7.000000000,8.000000000,,,autonomous,,,,\n"},
    {"WithoutAnyTime",
     "GPGLL,4900.00,N,12300.00,W\nGPGLL,4930.00,N,12330.00,W",
     "1,,49.000000000,-123.000000000,,,,,,,\n"
     "1,,49.500000000,-123.500000000,,,,,,,\n"},
    {"SpeedOfVtg",
     "GPGGA,120000,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPVTG,90.5,T,,M,5.5,N,,K,A\n"
     "GPGGA,120001,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPVTG,,T,,M,,N,18.52,K,D\n"
     "GPGGA,120002,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPVTG,90.5,T,,M,5.5,N,,K,N\n"
     "GPVTG,80.5,T,,M,4.5,N,,K,A\nGPRMC,120002,A,0300.00,N,00400.00,E,6.5,,,,,D",
     "1,12:00:00,7.000000000,8.000000000,,,autonomous,,,5.5,90.5\n"
     "1,12:00:01,7.000000000,8.000000000,,,autonomous,,,10,\n"
     "1,12:00:02,7.000000000,8.000000000,,,autonomous,,,6.5,80.5\n"},
    {"TwoInAHundredthOfASecond",
     "GPGGA,120000.250,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPGGA,120000.255,0700.00,N,00800.00,E,1,,,,M,,M,,",
     "1,12:00:00.25,7.000000000,8.000000000,,,autonomous,,,,\n"
     "1,12:00:00.255,7.000000000,8.000000000,,,autonomous,,,,\n"},
    {"PositionBeyondThePole", "GPGGA,120000,9100.00,N,00800.00,E,1,,,,M,,M,,", ""},
    {"PositionMissing",       "GPGGA,120000,,,,,1,,,,M,,M,,",                  ""},
    {"LateSentence",  // has only its date
     "GPGGA,120010,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPGGA,120011,0700.00,N,00800.00,E,1,,,,M,,M,,\n"
     "GPRMC,120010,A,0300.00,N,00400.00,E,5.5,90.5,190524,,,D",
     "1,12:00:10,7.000000000,8.000000000,,,autonomous,,,,\n"
     "1,2024-05-19T12:00:11Z,7.000000000,8.000000000,,,autonomous,,,,\n"},
    {"TimeStepsBack",
     "GPGGA,120010,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPGGA,110000,0700.00,N,00800.00,E,1,,,,M,,M,,",
     "1,12:00:10,7.000000000,8.000000000,,,autonomous,,,,\n"
     "2,11:00:00,7.000000000,8.000000000,,,autonomous,,,,\n"},
    {"OverMidnight",
     "GPGGA,235959.5,0700.00,N,00800.00,E,1,,,,M,,M,,\nGPZDA,235959.5,31,12,2024,00,00\n"
     "GPGGA,000000.5,0700.00,N,00800.00,E,1,,,,M,,M,,",
     "1,2024-12-31T23:59:59.5Z,7.000000000,8.000000000,,,autonomous,,,,\n"
     "1,2025-01-01T00:00:00.5Z,7.000000000,8.000000000,,,autonomous,,,,\n"},
    {"NumbersWithExponent",
     "GPGGA,120000,0000.000001,N,00000.000001,W,1,,1e-7,1e20,M,,M,,",
     "1,12:00:00,0.000000017,-0.000000017,100000000000000000000,,autonomous,,0.0000001,,\n"},
};
// clang-format on

TEST_ROWS_F(TrackEpochs, MakeThePoints, Program, kEpochs, row) {
  Write("in", Sentences(row.bodies));
  std::string text = Run("velagnss convert --to csv in").output;
  text = text.substr(text.find('\n') + 1);
  EXPECT_EQ(std::regex_replace(text, std::regex("\r"), ""), row.rows);
}

// --- Formats ---

class Tracks : public Program {
 protected:
  std::string Convert(const std::string& format, const std::string& inputs) const {
    return Run("velagnss -q convert --to " + format + " " + inputs).output;
  }
};

// A trip with losses, without and with dates, without altitude, with every kind of fix.
std::string Trip() {
  std::string bodies;
  for (int i = 0; i < 40; ++i) {
    const std::string place = fmt::format("{:02}{:02}.5,N,{:03}15.25,W", i, i, 2 * i);
    bodies += fmt::format("GPGGA,1200{:02},{},{},{:02},1.{},{},M,46.9,M,,\n", i, place, i % 9, i, i % 3,
                          i % 4 == 0 ? "" : std::to_string(i * 100 - 700));
    if (i >= 10) bodies += fmt::format("GPRMC,1200{:02},A,{},5.5,90.5,190524,,,D\n", i, place);
  }
  return Sentences(bodies);
}

std::string WithGpxFix(const std::string& point, bool hasAltitude) {
  std::string text = std::regex_replace(point, std::regex("^\\d\\d:\\S+"), "-");  // no date, no time
  text = std::regex_replace(text, std::regex("autonomous"), hasAltitude ? "3d" : "2d");
  text = std::regex_replace(text, std::regex("differential|rtk float|rtk"), "dgps");
  text = std::regex_replace(text, std::regex("precise"), "pps");
  return std::regex_replace(text, std::regex("estimated|manual|simulator"), "-");
}

TEST_F(Tracks, SayTheSameInAllFormats) {
  Write("trip", Trip());
  for (const auto& [input, count] : {std::pair("$S", 324), {"trip", 38}, {"trip $S", 362}}) {
    const t_Points csv = CsvPoints(Convert("csv", input));
    EXPECT_EQ(csv.size(), count) << input;
    EXPECT_EQ(GeoJsonPoints(Convert("geojson", input)), csv);
    t_Points gpx;
    t_Points kml;
    for (const std::string& point : csv) {
      gpx.push_back(WithGpxFix(point, !std::regex_search(point, std::regex(" - autonomous"))));
      const bool isDated = point[2] != ':';  // a line without dates holds positions only
      kml.push_back(isDated ? point : std::regex_replace(point, std::regex("^\\S+( \\S+ \\S+ \\S+).*"), "-$1 - - -"));
    }
    EXPECT_EQ(GpxPoints(Convert("gpx", input)), gpx);
    EXPECT_EQ(KmlPoints(Convert("kml", input)), kml);
  }
}

// Longer than what is kept in memory.
TEST_F(Tracks, LongSegmentIsWhole) {
  std::string bodies = "GPZDA,000000,19,05,2024,00,00\n";
  for (int i = 0; i < 20000; ++i)
    bodies += fmt::format("GPGGA,{:02}{:02}{:02},4800.{:05},N,18000.0000,{},1,12,0.7,5{}.1,M,46.9,M,,\n", i / 3600,
                          i / 60 % 60, i % 60, i, i < 15000 ? 'E' : 'W', i % 10);
  Write("long", Sentences(bodies));
  t_Points csv = CsvPoints(Convert("csv", "long"));
  ASSERT_EQ(csv.size(), 20000);
  EXPECT_EQ(GeoJsonPoints(Convert("geojson", "long")), csv);
  const std::string kml = Convert("kml", "long");
  EXPECT_EQ(KmlPoints(kml), csv);
  EXPECT_EQ(Run("TMPDIR=/missing velagnss convert --to kml long").output, kml);
}

struct S_EmptyCase {
  const char* name;
  t_Points (*points)(const std::string& text);
};
const S_EmptyCase kFormats[] = {
    {"csv", &CsvPoints}, {"gpx", &GpxPoints}, {"kml", &KmlPoints}, {"geojson", &GeoJsonPoints}};

TEST_ROWS_F(EmptyTrack, IsAValidDocument, Program, kFormats, row) {
  Write("void", Sentences("GPGGA,120000,,,,,0,,,,M,,M,,"));
  for (const char* input : {"/dev/null", "void"}) {
    const Outcome outcome = Run(fmt::format("velagnss convert --to {} {}", row.name, input));
    EXPECT_EQ(outcome.code, 1);
    EXPECT_THAT(outcome.messages, HasSubstr("no position"));
    EXPECT_FALSE(outcome.output.empty());
    EXPECT_EQ(row.points(outcome.output), t_Points{});
  }
}

// Eastward over the antimeridian and back, a quarter and three quarters of the way; then a point on it.
TEST_F(Tracks, CrossTheDateLine) {
  Write("in",
        Sentences("GPGGA,120000,1000.00,N,17959.90,E,1,,,0.0,M,,M,,\nGPGGA,120001,1004.00,N,17959.70,W,1,,,4.0,M,,M,,\n"
                  "GPGGA,120002,1008.00,N,17959.90,E,1,,,,M,,M,,\nGPGGA,120003,1008.00,N,18000.00,E,1,,,,M,,M,,"));
  const json line = json::parse(Convert("geojson", "in")).at("features").back();
  const auto degrees = [](double minutes) { return std::round(minutes / 60 * 1e9) / 1e9; };
  const double east = 180 - degrees(0.1);
  const double west = degrees(0.3) - 180;
  const json expected = {{{east, 10.0, 0}, {180.0, 10 + degrees(1), 1}},
                         {{-180.0, 10 + degrees(1), 1}, {west, 10 + degrees(4), 4}, {-180.0, 10 + degrees(7)}},
                         {{180.0, 10 + degrees(7)}, {east, 10 + degrees(8)}, {180.0, 10 + degrees(8)}}};
  EXPECT_EQ(line["geometry"]["type"], "MultiLineString");
  EXPECT_EQ(line["geometry"]["coordinates"].dump(), expected.dump());
  EXPECT_THAT(GpxPoints(Convert("gpx", "in")).back(), HasSubstr("-180.000000000"));  // 180 itself is no longitude there
}

TEST_F(Tracks, BreakSegmentsAtLosses) {
  Write("trip", Trip());  // its first loss, of GGA alone, is at 12:00:09
  EXPECT_THAT(ReadCsv(Convert("csv", "trip trip")).back()[0], "4");
  tinyxml2::XMLDocument document;
  document.Parse(Convert("gpx", "trip trip").c_str());
  EXPECT_EQ(Elements(document.RootElement(), "trkseg").size(), 4);
  const json geo = json::parse(Convert("geojson", "trip trip"));
  std::vector<int> lines;
  for (const json& feature : geo.at("features"))
    if (feature["geometry"]["type"] == "LineString") lines.push_back(feature["properties"]["segment"]);
  EXPECT_THAT(lines, testing::ElementsAre(1, 2, 3, 4));
}

// All checked sentences, decodable or not, and nothing else.
TEST_F(Tracks, SentencesStayAsTheyAre) {
  const std::string session = ReadHostFile("samples/session.bin");
  std::string expected;
  const json manifest = json::parse(ReadHostFile("samples/session.json"));
  for (const json& frame : manifest.at("frameList")) {
    const std::string bytes = session.substr(frame[0], frame[1]);
    if (frame[2] == 2) expected += bytes.substr(0, bytes.find_first_of("\r\n")) + "\r\n";
  }
  EXPECT_GT(expected.size(), 100000);
  EXPECT_EQ(Convert("nmea", "--listed-only $S"), expected);
  const std::string all = Convert("nmea", "$S");
  for (const char* unlisted : {"$GPXYZ,A,B,111*52\r\n", "R,S*6a\r\n", "$PKVN,HPRX,235934.00,91.27,-1.27,0.55*13\r\n"})
    EXPECT_NE(all.find(unlisted), std::string::npos) << unlisted;
  EXPECT_EQ(Run("velagnss convert --to nmea /dev/null").code, 1);
}

}  // namespace
