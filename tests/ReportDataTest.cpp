// What a report says of one stream, beside its receivers: messages, gaps, latency, damage.
#include <fmt/core.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>

#include "Cases.h"
#include "Streams.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/report/InputReport.h"

namespace {

using nlohmann::json;

// A piece of a stream, and when it came on 2026-05-01, s after noon; not live without that.
struct S_Piece {
  std::string bytes;
  std::optional<double> arrival = {};
};

json ReportOf(const std::vector<S_Piece>& pieces) {
  using namespace std::chrono;
  const Host::S_Chunk::t_Clock::time_point noon = sys_days(2026y / May / 1) + 12h;
  Host::C_InputReport report;
  Host::C_RecordRun run({{C_RawDataMessage::eNMEA0183, C_RawDataMessage::eRTCM3_x}, std::nullopt}, report.Consumers());
  run.BeginInput("test");
  for (const S_Piece& piece : pieces) {
    const auto at = noon + milliseconds(std::lround(piece.arrival.value_or(0) * 1000));
    run.Feed({{reinterpret_cast<const unsigned char*>(piece.bytes.data()), piece.bytes.size()},
              at,
              piece.arrival.has_value()});
  }
  run.EndInput();
  Host::C_JsonWriter text;
  report.Write(text);
  return json::parse(text.Text());
}

std::string Rmc(const std::string& timeOfDay) {
  return Sentence("GPRMC," + timeOfDay + ",A,4916.45,N,12311.12,W,0.1,,010526,,,A");
}

// From so many seconds after noon on, one a second.
std::string Seconds(unsigned int first, unsigned int count) {
  std::string stream;
  for (unsigned int i = first; i < first + count; ++i) stream += Rmc(fmt::format("1200{:02}", i));
  return stream;
}

struct S_LatencyCase {
  const char* name;
  std::vector<S_Piece> pieces;
  std::vector<double> latencies;
};
const std::string kOnTime = Rmc("120000");
const S_LatencyCase kLatencies[] = {
    {"OfEachMessage", {{kOnTime, 0.25}, {Rmc("120001"), 1.5}}, {0.25, 0.5}},
    {"OfItsLastByte", {{kOnTime.substr(0, 9), 0.1}, {kOnTime.substr(9), 0.4}}, {0.4}},
    {"OfASlowClock", {{kOnTime, -1.5}}, {-1.5}},
    {"WithoutADate", {{Sentence("GPGLL,4916.45,N,12311.12,W,115959.5,A,A"), 0.5}}, {1}},
    {"OfADateInThePast", {{Sentence("GPZDA,120000,30,04,2026,00,00"), 1}}, {86401}},
    // What looks like an RTCM 3 message of 128 bytes holds the sentence back.
    {"OfItsBytesNotOfTheDecision",
     {{"\xD3" + std::string("\0\x80", 2) + kOnTime, 0.5}, {Seconds(1, 3), 9}},
     {0.5, 8, 7, 6}},
    {"OfNoFile", {{kOnTime}}, {}},
    {"OfNoMessageWithoutATime", {{Sentence("GPHDT,8.0,T"), 1}}, {}},
};
TEST_ROWS(Latency, IsFromTheTimeInTheMessageToItsArrival, kLatencies, row) {
  const json latency = ReportOf(row.pieces)["latency"];
  ASSERT_EQ(latency.is_null(), row.latencies.empty());
  if (row.latencies.empty()) return;
  EXPECT_EQ(latency["count"], row.latencies.size());
  EXPECT_NEAR(latency["min_s"], std::ranges::min(row.latencies), 1e-9);
  EXPECT_NEAR(latency["max_s"], std::ranges::max(row.latencies), 1e-9);
}

// 1 to 100 ms: the nearest rank.
TEST(Latency, HasPercentiles) {
  std::vector<S_Piece> pieces;
  for (int i = 1; i <= 100; ++i) pieces.push_back({kOnTime, i / 1000.0});
  const json latency = ReportOf(pieces)["latency"];
  EXPECT_EQ((std::vector<double>{latency["p50_s"], latency["p90_s"], latency["p99_s"]}),
            (std::vector<double>{0.05, 0.09, 0.099}));
  EXPECT_EQ(latency["series"]["mean"], json({0.051}));  // 0.0505
}

TEST(ReportMessages, HaveRatesAndGaps) {
  const json report = ReportOf({{Seconds(0, 4) + Sentence("GPHDT,8.0,T") + Seconds(10, 2) + Sentence("GPHDT,8.0,T")}});
  const json& rmc = report["messages"][1];
  EXPECT_EQ(rmc["message"], "RMC");
  EXPECT_EQ(rmc["usual_step_s"], 1);
  EXPECT_EQ(rmc["longest_gap_s"], 7);
  EXPECT_EQ(rmc["gap_count"], 1);
  EXPECT_EQ(rmc["rate"], json::parse(R"({"first":0,"max":[1,1,1,1,0,0,0,0,0,0,1,1]})"));
  EXPECT_EQ(report["messages"][0]["rate"]["max"], json::parse("[0,0,0,1,0,0,0,0,0,0,0,1]"));
  EXPECT_EQ(report["gaps"], json::parse(R"([{"from":"2026-05-01T12:00:03Z","to":"2026-05-01T12:00:10Z",
      "from_bin":3,"to_bin":10,"seconds":7}])"));
}

// A TAG block is not damage.
TEST(ReportDamage, HasATimeAndABin) {
  const json damage =
      ReportOf({{"xy" + Seconds(0, 3) + "\\s:a*28\\" + Seconds(3, 1) + "noise" + Seconds(4, 1)}})["integrity"];
  EXPECT_EQ(damage["count"], 2);
  EXPECT_EQ(damage["events"][0]["time"], nullptr);
  EXPECT_EQ(damage["events"][1]["time"], "2026-05-01T12:00:03Z");
  EXPECT_EQ(damage["events"][1]["bin"], 3);
  EXPECT_EQ(damage["damaged_bytes"]["max"], json::parse("[0,0,0,5,0]"));
}

TEST(ReportNotDecoded, HasBytesAndTheirShare) {
  const std::string unknown = RtcmFrame(RtcmPayload(4072, 94));
  const std::string stream = unknown + Rmc("120000");
  const json report = ReportOf({{stream}})["not_decoded"];
  ASSERT_EQ(report.size(), 1);
  EXPECT_EQ(report[0]["message"], "RTCM4072");
  EXPECT_EQ(report[0]["bytes"], 100);
  EXPECT_NEAR(report[0]["share_percent"], 10000.0 / static_cast<double>(stream.size()), 1e-9);
}

TEST(ReportLimits, HoldForInventedMessages) {
  std::string stream = kOnTime;
  for (int i = 0; i < 300; ++i) stream += Sentence(fmt::format("GPX{}{},1", char('A' + i % 26), char('A' + i / 26)));
  const json report = ReportOf({{stream}});
  EXPECT_EQ(report["messages"].size(), 256);
  EXPECT_EQ(report["messages_left_out"], 45);
}

}  // namespace
