#include "apps/velagnss/json/JsonLines.h"

#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "Cases.h"
#include "HostData.h"
#include "JsonSchema.h"
#include "Streams.h"
#include "apps/velagnss/pipeline/RecordRun.h"

namespace {

using nlohmann::json;
using namespace std::string_literals;

// The events of a stream, with their bytes.
std::vector<json> Events(std::string_view stream) {
  Host::S_JsonLinesOptions options;
  options.events = options.hex = true;
  Host::C_JsonLines lines(options);
  Host::C_RecordRun run({{C_RawDataMessage::eNMEA0183, C_RawDataMessage::eRTCM3_x}, std::nullopt}, {&lines});
  run.BeginInput("");
  run.Feed({{reinterpret_cast<const unsigned char*>(stream.data()), stream.size()}, {}});
  run.EndInput();
  static const JsonSchema schema(json::parse(ReadHostFile("docs/velagnss.schema.json")));
  std::vector<json> events;
  std::istringstream text{std::string(lines.Text().Text())};
  for (std::string line; std::getline(text, line);) {
    const json& object = events.emplace_back(json::parse(line));
    EXPECT_EQ(schema.Check(object), "") << line;
    if (!object.contains("event")) events.pop_back();
  }
  return events;
}

TEST(JsonEvents, HaveTheirBytes) {
  const std::vector<json> events = Events("\xFF$GPHDT,274.07,T*04\r\n" + Sentence("GPHDT,274.07,T"));
  ASSERT_EQ(events.size(), 2);
  EXPECT_EQ(events[0]["start"], "$GPHD");
  EXPECT_EQ(events[0]["hex"], "2447504844");
  EXPECT_EQ(events[1]["hex"],
            "ff244750484454"
            "2c3237342e30372c542a30340d0a");
}

std::string Repeated(const std::string& text, unsigned times) {
  std::string all;
  for (; times > 0; --times) all += text;
  return all;
}

struct S_FloodCase {
  const char* name;
  std::string stream;
  std::vector<json> shared;  // offset, length and count of the objects for more than one start
  std::size_t events;
};
const std::string kWrong = "$GPHDT,274.07,T*04\r\n";
const S_FloodCase kFloods[] = {
    {"AsManyAsHaveTheirOwn", Repeated(kWrong, 16), {}, 17},
    {"OneMore", Repeated(kWrong, 17), {}, 18},
    {"Many", Repeated(kWrong, 100000), {{320, 1999661, 99984}}, 18},
    {"TwoReasons", Repeated(kWrong + "$GPHDT,\x01", 100), {{224, 2549, 92}, {244, 2549, 92}}, 19},
    {"EachRangeItsOwn",
     Repeated(Repeated(kWrong, 18) + Sentence("GPHDT,274.07,T"), 2),
     {{320, 21, 2}, {700, 21, 2}},
     36},
};
TEST_ROWS(JsonEventsOfAFlood, AreMerged, kFloods, row) {
  const std::vector<json> events = Events(row.stream);
  EXPECT_EQ(events.size(), row.events);
  std::vector<json> shared;
  for (const json& event : events)
    if (event.value("count", 1) > 1) shared.push_back({event["offset"], event["length"], event["count"]});
  EXPECT_EQ(shared, row.shared);
}

// A false start that announces a long frame holds back what follows it, until the source pauses or is lost.
TEST(JsonOfALiveSource, ShowsWhatWaitsWhenItPausesOrIsLost) {
  using namespace std::chrono_literals;
  Host::S_JsonLinesOptions options;
  options.events = true;
  Host::C_JsonLines lines(options);
  Host::C_RecordRun run({{C_RawDataMessage::eNMEA0183, C_RawDataMessage::eRTCM3_x}, std::nullopt}, {&lines});
  const Host::S_Chunk::t_Clock::time_point arrival(1792195200s + 250us);
  const auto feed = [&](const std::string& bytes) {
    run.Feed({{reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()}, arrival, true});
  };
  const std::string announced = "\xD3\x03\xFF\x3E\xD0"s;  // RTCM 3, 1005 in 1029 bytes
  const auto take = [&lines] {
    static const JsonSchema schema(json::parse(ReadHostFile("docs/velagnss.schema.json")));
    std::istringstream text{std::string(lines.Text().Text())};
    lines.Text().ClearText();
    std::string words;
    for (std::string line; std::getline(text, line);) {
      const json object = json::parse(line);
      EXPECT_EQ(schema.Check(object), "") << line;
      EXPECT_EQ(object["arrival"], "2026-10-17T00:00:00.000250Z");
      words += object.value("event", object.value("message", "")) + object.value("state", "") + " ";
    }
    return words;
  };
  run.BeginInput("");
  run.OnLink({Host::S_LinkChange::eState::Connected, "10.0.0.5:5015", {}, 0, arrival});
  feed(announced + Sentence("GPHDT,274.07,T"));
  EXPECT_EQ(take(), "sourceconnected ");
  run.OnQuiet();
  EXPECT_EQ(take(), "skipped HDT ");
  run.OnQuiet();
  feed(Sentence("GPHDT,274.07,T") + announced + Sentence("GPHDT,1.0,T"));
  EXPECT_EQ(take(), "HDT ");
  run.OnLink({Host::S_LinkChange::eState::Lost, "no data for 60 s", 500ms, 1, arrival});
  EXPECT_EQ(take(), "skipped HDT sourcelost ");
  run.EndInput();
  EXPECT_EQ(take(), "");
}

}  // namespace
