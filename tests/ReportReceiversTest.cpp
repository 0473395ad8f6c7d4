// The receivers of a report: against the epochs that `decode` shows, and under hostile input.
#include <fmt/core.h>
#include <gmock/gmock.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <numbers>
#include <random>
#include <set>
#include <sstream>

#include "Cases.h"
#include "HostData.h"
#include "ObservationFrames.h"
#include "ProgramRun.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/report/ReceiverJson.h"

namespace {

using namespace Host;
using nlohmann::json;
using testing::ElementsAre;

// A stream through the consumers of a report.
class Reported {
 public:
  explicit Reported(const std::string& bytes, C_RawDataMessage::eProtocols protocol = C_RawDataMessage::eAllProtocols)
      : m_run({.search = {protocol}, .seed = {}},
              {&m_account, &m_points, &m_receivers.Epochs(), &m_receivers.Errors(), &m_receivers}) {
    m_run.BeginInput("input");
    m_run.Feed({{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, {}, false});
    m_run.EndInput();
    C_JsonWriter text;
    text.BeginObject();
    WriteReceivers(text, m_receivers);
    text.EndObject();
    all = json::parse(text.Text());
  }
  const json& At(std::size_t receiver) const { return all.at("receivers").at(receiver); }

  json all;

 private:
  C_TimeBins m_axis;
  C_StreamAccount m_account;
  C_PointReport m_points;
  C_ReceiverReports m_receivers{m_axis, m_account, m_points};
  C_RecordRun m_run;
};

// --- Against the epochs of `decode` ---

// Values of a bin, or of all bins, as a report shows them.
struct S_Range {
  void Add(double value) {
    min = count == 0 ? value : std::min(min, value);
    max = count == 0 ? value : std::max(max, value);
    ++count;
  }
  double min = 0, max = 0;
  int count = 0;
};
using t_Bins = std::map<std::size_t, S_Range>;

double Tenth(double value) { return std::round(value * 10) / 10; }

void ExpectRange(const json& reported, const S_Range& range) {
  EXPECT_EQ(reported["count"], range.count);
  EXPECT_EQ(reported["min"], Tenth(range.min));
  EXPECT_EQ(reported["max"], Tenth(range.max));
}

// The bins of a series that have values.
std::vector<std::size_t> BinsOf(const json& series) {
  std::vector<std::size_t> bins;
  std::size_t bin = series["first"];
  bool hasValues = true;
  for (const std::size_t length : series.value("runs", std::vector<std::size_t>{series["max"].size()})) {
    for (std::size_t i = 0; i < length && hasValues; ++i) bins.push_back(bin + i);
    bin += length;
    hasValues = !hasValues;
  }
  return bins;
}

void ExpectSeries(const json& series, const t_Bins& expected) {
  ASSERT_EQ(series.is_null(), expected.empty());
  if (expected.empty()) return;
  const std::vector<std::size_t> bins = BinsOf(series);
  ASSERT_EQ(bins.size(), expected.size());
  for (std::size_t i = 0; i < bins.size(); ++i) {
    const S_Range& range = expected.at(bins[i]);
    EXPECT_EQ(series["max"][i], Tenth(range.max));
    EXPECT_EQ(series.contains("min") ? series["min"][i] : series["max"][i], Tenth(range.min));
  }
}

// What a report must say of a receiver, from its epochs. The sample is shorter than 720 s: a bin is a second.
struct S_Expected {
  struct S_Signal {
    S_Range all;
    t_Bins bins;
  };
  struct S_Satellite {
    int epochs = 0, used = 0;
    bool saysUse = false;
    std::map<std::size_t, json> places;  // by bin
    std::map<std::string, S_Signal> signals;
  };

  using t_Last = std::map<std::string, std::pair<std::size_t, int>>;  // bin and number of a system's satellites

  void Add(const json& epoch);
  static double Together(const std::map<std::string, int>& numbers, std::size_t bin, t_Last& last);
  void AddSatellite(const json& seen, std::size_t bin);
  void Compare(const json& receiver) const;
  void CompareSatellite(const json& satellite) const;

  int epochs = 0;
  std::map<std::pair<std::string, int>, S_Satellite> satellites;
  std::map<std::pair<std::string, std::string>, std::map<int, S_Range>> bands;
  t_Bins inView, hdop, used;
  t_Last lastInView, lastUsed;
};

void S_Expected::Add(const json& epoch) {
  const auto bin = static_cast<std::size_t>(std::fmod(epoch["time_of_day_s"].get<double>() - 86220 + 86400, 86400));
  ++epochs;
  if (epoch["hdop"].is_number()) hdop[bin].Add(epoch["hdop"]);
  std::map<std::string, int> seenOf, listedOf;  // by system
  std::set<std::string> inSky;
  for (const json& seen : epoch["satellites"]) {
    ++seenOf[seen["system"]];
    if (seen["elevation_deg"].is_number() || !seen["signals"].empty()) inSky.insert(seen["system"]);
    if (seen["used"].is_boolean()) listedOf[seen["system"]] += seen["used"] == true ? 1 : 0;
    AddSatellite(seen, bin);
  }
  std::erase_if(seenOf, [&](const auto& row) { return !inSky.contains(row.first); });
  if (!seenOf.empty()) inView[bin].Add(Together(seenOf, bin, lastInView));
  if (!listedOf.empty())
    used[bin].Add(Together(listedOf, bin, lastUsed));
  else if (epoch["satellites_used"].is_number())
    used[bin].Add(epoch["satellites_used"]);
}

// Of all systems: what the epoch says, and of those of which it names none what was so up to a minute before.
double S_Expected::Together(const std::map<std::string, int>& numbers, std::size_t bin, t_Last& last) {
  for (const auto& [system, number] : numbers)
    if (number > 0) last[system] = {bin, number};
  double sum = 0;
  for (const auto& [system, one] : last) sum += bin - one.first <= 60 ? one.second : 0;
  return sum;
}

void S_Expected::AddSatellite(const json& seen, std::size_t bin) {
  S_Satellite& satellite = satellites[{seen["system"], seen["number"]}];
  ++satellite.epochs;
  satellite.saysUse = satellite.saysUse || seen["used"].is_boolean();
  satellite.used += seen["used"] == true ? 1 : 0;
  if (seen["azimuth_deg"].is_number()) satellite.places[bin] = {seen["azimuth_deg"], seen["elevation_deg"]};
  for (const json& signal : seen["signals"]) {
    if (!signal["cn0_dbhz"].is_number()) continue;
    const double cn0 = signal["cn0_dbhz"];
    const std::string name = signal["signal"].is_string() ? signal["signal"] : json("unspecified");
    satellite.signals[name].all.Add(cn0);
    satellite.signals[name].bins[bin].Add(cn0);
    if (seen["elevation_deg"].is_number())
      bands[{seen["system"], name}][seen["elevation_deg"].get<int>() / 10].Add(cn0);
  }
}

void S_Expected::Compare(const json& receiver) const {
  EXPECT_EQ(receiver["epochs"], epochs);
  EXPECT_EQ(receiver["satellites"].size(), satellites.size());
  for (const json& satellite : receiver["satellites"]) CompareSatellite(satellite);
  ExpectSeries(receiver["in_view"]["all"], inView);
  ExpectSeries(receiver["used"]["all"], used);
  ExpectSeries(receiver["dop"]["hdop"], hdop);
  EXPECT_EQ(receiver["elevation"].size(), bands.size());
  for (const json& kind : receiver["elevation"]) {
    const std::map<int, S_Range>& expected = bands.at({kind["system"], kind["signal"]});
    EXPECT_EQ(kind["bands"].size(), expected.size());
    for (const json& band : kind["bands"]) ExpectRange(band, expected.at(band["from_deg"].get<int>() / 10));
  }
}

void S_Expected::CompareSatellite(const json& satellite) const {
  const S_Satellite& expected = satellites.at({satellite["system"], satellite["number"]});
  EXPECT_EQ(satellite["epochs"], expected.epochs);
  EXPECT_EQ(satellite["used"], expected.saysUse ? json(expected.used) : json());
  EXPECT_EQ(satellite["track"].empty(), expected.places.empty());
  for (const json& point : satellite["track"])
    EXPECT_EQ(expected.places.at(point[0]), json({point[1], point[2]})) << satellite["name"] << point;
  EXPECT_EQ(satellite["signals"].size(), expected.signals.size());
  for (const json& signal : satellite["signals"]) {
    ExpectRange(signal, expected.signals.at(signal["name"]).all);
    ExpectSeries(signal["cn0"], expected.signals.at(signal["name"]).bins);
  }
}

using ReportOfTheSample = Program;

TEST_F(ReportOfTheSample, HasWhatItsEpochsHave) {
  std::map<json, S_Expected> expected;  // by station
  std::istringstream lines(Run("velagnss decode --epochs-only $S").output);
  for (std::string line; std::getline(lines, line);) {
    const json epoch = json::parse(line);
    expected[epoch["station"].is_null() ? json() : epoch["station"]["number"]].Add(epoch);
  }
  const Reported report(ReadHostFile("samples/session.bin"));
  ASSERT_EQ(report.all["receivers"].size(), expected.size());
  for (const json& receiver : report.all["receivers"]) expected.at(receiver["station"]).Compare(receiver);
  EXPECT_EQ(report.At(0)["station"], nullptr);
}

TEST_F(ReportOfTheSample, HasTheNumbersOfStat) {
  const json stat = json::parse(Run("velagnss stat --json --positions $S").output);
  const Reported report(ReadHostFile("samples/session.bin"));
  const json& position = report.At(0)["position"];
  for (const char* name : {"latitude_deg", "longitude_deg", "height_m", "altitude_m", "radius_50_m", "radius_95_m"})
    EXPECT_EQ(position[name], stat["position"][name]) << name;
  const json& computed = report.At(1)["computed"];
  const json& errors = stat["positions"]["errors"];
  double north = 0;
  std::size_t count = 0;
  for (const json& value : computed["north_m"]["max"])
    if (value.is_number()) north += value.get<double>(), ++count;
  EXPECT_EQ(count, errors["epochs"]);
  EXPECT_NEAR(north / static_cast<double>(count), errors["north_m"], 0.0005);
  EXPECT_EQ(computed["horizontal_95_m"], errors["horizontal_95_m"]);
  EXPECT_EQ(computed["scatter"].size(), count);
}

// The first epoch has no week: the date comes after it.
TEST_F(ReportOfTheSample, HasErrorsOfEpochsBeforeTheFirstDate) {
  const json first = json::parse(Run("velagnss decode --msg RTCM1077 $S | head -n 1").output);
  const Reported report(ReadHostFile("samples/session.bin").substr(first["offset"]));
  const json& computed = report.At(1)["computed"];
  EXPECT_EQ(computed["north_m"]["first"], 0);
  EXPECT_EQ(computed["north_m"]["max"].size(), computed["scatter"].size());
}

// The last point of a track up to a bin; points that are the same as the one before are left out of it.
json PlaceAt(const json& track, std::size_t bin) {
  json place;
  for (const json& point : track)
    if (point[0] <= bin) place = point;
  return place;
}

// Of RTCM 3 alone: the places come from ephemerides and the coordinates of the station, those of GSV from the
// generator's own orbits.
TEST(ReportOfRtcm, HasItsSatellitesWhereGsvSays) {
  const std::string sample = ReadHostFile("samples/session.bin");
  const Reported all(sample);
  const Reported rtcm(sample, C_RawDataMessage::eRTCM3_x);
  ASSERT_EQ(rtcm.all["receivers"].size(), 1);
  std::map<std::string, json> tracks;
  for (const json& satellite : all.At(0)["satellites"]) tracks[satellite["name"]] = satellite["track"];
  std::size_t compared = 0;
  for (const json& satellite : rtcm.At(0)["satellites"]) {
    for (const json& point : satellite["track"]) {
      const json place = PlaceAt(tracks.at(satellite["name"]), point[0]);
      if (place.is_null()) continue;
      const double turn = std::remainder(point[1].get<double>() - place[1].get<double>(), 360);
      EXPECT_LE(std::abs(turn) * std::cos(point[2].get<double>() / 180 * std::numbers::pi), 1.1) << point << place;
      EXPECT_NEAR(point[2], place[2].get<double>(), 1) << satellite["name"] << point << place;
      ++compared;
    }
  }
  EXPECT_GE(compared, 40);
}

// --- Streams of sentences ---

std::string Time(int second) { return fmt::format("{:02}{:02}{:02}", second / 3600, second / 60 % 60, second % 60); }

std::string Gga(int second, int quality, const char* latitude = "4807.038") {
  return Sentence(fmt::format("GPGGA,{},{},N,01131.000,E,{},08,0.9,545.4,M,46.9,M,,", Time(second), latitude, quality));
}

// 18 m from the station of observation frames.
std::string Rmc(unsigned int second) {
  return Sentence(fmt::format("GNRMC,1159{},A,0000.01,N,00000.00,E,,,160524,,,A,V", second));
}

struct S_FixCase {
  const char* name;
  int lost;  // the epoch without a fix
};
constexpr S_FixCase kFixes[] = {{"AtTheStart", 0}, {"Amid", 5000}, {"AtTheEnd", 9999}};

// 10,000 s in bins of 16 s.
TEST_ROWS(ShortLossOfFix, IsShown, kFixes, row) {
  std::string stream;
  for (int second = 0; second < 10000; ++second) stream += Gga(second, second == row.lost || second == 7500 ? 0 : 4);
  const Reported report(stream);
  const json& fix = report.At(0)["fix"];
  EXPECT_EQ(fix["kinds"], json({"none", "rtk"}));
  EXPECT_EQ(fix["epochs"], json({2, 9998}));
  const json lost = {row.lost / 16, row.lost / 16, 0};
  const json always = {0, 624, 1};
  const json other = {7500 / 16, 7500 / 16, 0};
  EXPECT_EQ(fix["periods"], row.lost < 7500 ? json({always, lost, other}) : json({always, other, lost}));
  EXPECT_EQ(report.At(0)["position"]["height"]["max"].size(), 625);
}

TEST(ReportOfPositions, KeepsAStrayFixOnTheTrack) {
  std::string stream;
  for (int second = 0; second < 30000; ++second)
    stream += Gga(second, 1, second == 20001 ? "4807.138" : second % 2 == 0 ? "4807.0381" : "4807.0380");
  const json position = Reported(stream).At(0)["position"];
  EXPECT_LE(position["track"].size(), 4000);
  EXPECT_GE(position["track"].size(), 2000);
  EXPECT_LE(position["scatter"].size(), 2000);
  double farthest = 0;
  for (const json& point : position["track"]) farthest = std::max(farthest, point[2].get<double>());
  EXPECT_NEAR(farthest, 185.3, 0.5);  // 0.1'
}

struct S_StreamCase {
  const char* name;
  std::string bytes;
  const char* pointer;  // into the first receiver
  json expected;
};
const std::string kGsv = Sentence("GPGSV,1,1,01,05,40,083,46,1");
const S_StreamCase kStreams[] = {
    {"WithoutAnyTime", kGsv + kGsv, "/satellites/0/track", {{nullptr, 83, 40, nullptr, 1}}},
    {"RmcHasNoAltitude", Sentence("GPRMC,120000,A,4807.038,N,01131.000,E,010.0,084.4,160524,,,A"), "/position/height_m",
     nullptr},
    {"RmcHasASpeed",
     Sentence("GPRMC,120000,A,4807.038,N,01131.000,E,010.0,084.4,160524,,,A"),
     "/position/speed_m_per_s/max",
     {5.144}},
    {"DeadReckoning", Gga(0, 6), "/fix/kinds", {"estimated"}},
    {"Accuracy", Gga(0, 1) + Sentence("GPGST,000000,,,,,3,4,5"), "/accuracy/horizontal_m/max", {5.0}},
    {"TwoDimensions", Gga(0, 1) + Sentence("GPGSA,A,2,05,,,,,,,,,,,,1.5,1.0,1.1"), "/fix/type/2D", 1},
    {"UseIsKnownFromBefore",
     Gga(0, 1) + Sentence("GPGSA,A,3,05,,,,,,,,,,,,1.5,1.0,1.1") + kGsv + Gga(1, 1) + kGsv,
     "/satellites/0/track",
     {{0, 83, 40, 1, 1}}},
    {"ObservationsGiveTheCodeOfASignal", Date() + Rmc(42) + kGsv + Rmc(43) + Msm(1077, kNoon + 1000, {{}}),
     "/satellites/0/signals/0/code", "1C"},
    {"ALossOfFixBreaksTheTrack", Gga(0, 1) + Gga(1, 0) + Gga(2, 1), "/position/track", {{0, 0, 0, 1}, {2, 0, 0, 1}}},
    {"APauseBreaksTheTrack",
     Gga(0, 1) + Gga(1, 1) + Gga(700, 1),
     "/position/track",
     {{0, 0, 0, 1}, {1, 0, 0}, {700, 0, 0, 1}}},
    {"AcrossMidnightWithoutADate", Gga(86399, 1) + Gga(0, 4) + Gga(1, 4), "/fix/periods", {{1, 2, 1}, {0, 0, 0}}},
    {"AnotherPassBegins",
     Gga(0, 1) + kGsv + Gga(601, 1) + kGsv,
     "/satellites/0/track",
     {{0, 83, 40, nullptr, 1}, {601, 83, 40, nullptr, 1}}},
};

TEST_ROWS(ReportOfAStream, Has, kStreams, row) {
  EXPECT_EQ(Reported(row.bytes).At(0).at(json::json_pointer(row.pointer)), row.expected);
}

// A rover that sends observations twice as often as its sentences is one receiver, not two.
TEST(ReportOfARover, HasItsObservationsBetweenSentences) {
  std::string stream = Date();
  for (unsigned int second = 0; second < 10; ++second) {
    stream += Msm(1077, kNoon + 1000 * second, {{}});
    if (second % 2 == 0) stream += Rmc(42 + second);
  }
  const Reported report(stream);
  ASSERT_EQ(report.all["receivers"].size(), 1);
  EXPECT_EQ(report.At(0)["station"], nullptr);
  EXPECT_EQ(report.At(0)["epochs"], 10);
  EXPECT_EQ(report.At(0)["positions"], 5);
}

// --- Hostile streams ---

TEST(ReportOfManyStations, CountsThoseItLeavesOut) {
  std::string stream = Date();
  for (unsigned int station = 0; station < 40; ++station) stream += Msm(1077, kNoon, {{}}, 2, station);
  const Reported report(stream);
  EXPECT_EQ(report.all["receivers"].size(), 7);
  EXPECT_EQ(report.all["receivers_left_out"], 33);
}

TEST(ReportOfManySatellites, CountsThoseItLeavesOut) {
  std::string stream;
  for (const char* talker : {"GP", "GL", "GA", "GB"})
    for (int number = 1; number <= 99; ++number)
      stream += Sentence(fmt::format("{}GSV,1,1,01,{:02},40,083,46,1", talker, number));
  const json receiver = Reported(stream).At(0);
  EXPECT_EQ(receiver["satellites"].size(), 200);
  EXPECT_GT(receiver["satellites_left_out"], 50);
}

// --- Lines ---

using t_Line = C_ThinnedLine<S_LinePoint, 200>;

TEST(ThinnedLine, KeepsEndsAndExtremesOfAnyWalk) {
  std::mt19937 random(3);
  std::normal_distribution<double> step;
  for (int walk = 0; walk < 20; ++walk) {
    t_Line line;
    std::vector<S_LinePoint> all;
    S_LinePoint point{0, 0, 0, 0, true};
    for (int i = 0; i < 3000; ++i, point.startsPiece = random() % 100 < 60) {
      all.push_back(point);
      line.Add(point);
      ASSERT_LE(line.Points().size(), 200);
      ++point.seconds;
      point.x += step(random);
      point.y += step(random);
    }
    EXPECT_GE(line.Points().size(), 100);
    EXPECT_EQ(line.Points().front().seconds, 0);
    EXPECT_EQ(line.Points().back().seconds, all.back().seconds);
    for (const auto coordinate : {&S_LinePoint::x, &S_LinePoint::y}) {
      const auto isLess = [&](const auto& a, const auto& b) { return a.*coordinate < b.*coordinate; };
      const auto [low, high] = std::minmax_element(all.begin(), all.end(), isLess);
      const auto [least, greatest] = std::minmax_element(line.Points().begin(), line.Points().end(), isLess);
      EXPECT_EQ((*least).*coordinate, (*low).*coordinate);
      EXPECT_EQ((*greatest).*coordinate, (*high).*coordinate);
    }
  }
}

// All triangles of a circle are equally small.
TEST(ThinnedLine, StaysRound) {
  t_Line line;
  for (int i = 0; i <= 10000; ++i) {
    const double angle = 2 * std::numbers::pi * i / 10000;
    line.Add({0, std::cos(angle), std::sin(angle), 0, i == 0});
  }
  for (std::size_t i = 1; i < line.Points().size(); ++i) {
    const S_LinePoint& from = line.Points()[i - 1];
    const S_LinePoint& to = line.Points()[i];
    EXPECT_LT(1 - std::hypot(from.x + to.x, from.y + to.y) / 2, 0.02);
  }
}

}  // namespace
