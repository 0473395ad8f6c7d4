// `velagnss report` as users run it.
#include <gmock/gmock.h>

#include <map>
#include <nlohmann/json.hpp>
#include <tuple>

#include "Cases.h"
#include "HostData.h"
#include "JsonSchema.h"
#include "ProgramRun.h"
#include "Recordings.h"
#include "Streams.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class Report : public Program {
 protected:
  json Json(const std::string& arguments) const {
    return json::parse(Run("velagnss report --json " + arguments).output);
  }
};

// The rest is compared with `stat` in the same way on the page.
TEST_F(Report, HasTheAccountOfStat) {
  const JsonSchema schema(json::parse(ReadHostFile("docs/velagnss.schema.json")));
  std::string damaged = ReadHostFile("samples/session.bin");
  for (std::size_t i = 50; i < damaged.size(); i += 397) damaged[i] ^= '\x10';
  Write("damaged", damaged);
  Write("empty", "");
  const json report = Json("$S damaged empty");
  EXPECT_EQ(schema.Check(report), "");
  ASSERT_EQ(report["inputs"].size(), 3);
  std::istringstream lines(Run("velagnss stat --json --positions $S damaged empty").output);
  for (const json& input : report["inputs"]) {
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(input["stat"], json::parse(line));
    EXPECT_EQ(input["name"], input["stat"]["input"]);
  }
}

// Beside the account, other counts of the same things.
TEST_F(Report, AgreesWithTheAccount) {
  const json input = Json("$S")["inputs"][0];
  const json& account = input["stat"];
  std::map<std::string, std::uint64_t> counts, ephemerides;
  for (const json& message : account["messages"]) counts[message["message"]] = message["count"];
  for (const json& message : input["messages"])
    EXPECT_EQ(message["count"], counts[message["message"]]) << message["message"];
  for (const json& row : input["ephemerides"]) ephemerides[row["message"]] += row["count"].get<std::uint64_t>();
  for (const auto& [message, count] : ephemerides) EXPECT_EQ(count, counts[message]) << message;
  std::uint64_t notDecoded = 0;
  for (const json& row : input["not_decoded"]) notDecoded += row["count"].get<std::uint64_t>();
  EXPECT_EQ(notDecoded, account["frames"]["not_decoded"]);
  EXPECT_EQ(input["integrity"]["count"], account["integrity"]["checksum_errors"].get<int>() +
                                             account["integrity"]["rejected_starts"].get<int>() +
                                             account["integrity"]["skipped_ranges"].get<int>());
}

// GPS 7 and GLONASS 14 are unhealthy in the sample.
TEST_F(Report, ListsTheEphemerides) {
  const json report = Json("$S");
  std::map<std::string, json> rows;
  for (const json& row : report["inputs"][0]["ephemerides"])
    rows[row["message"].get<std::string>() + " " + row["name"].get<std::string>()] = row;
  EXPECT_EQ(rows["RTCM1019 G07"]["healthy"], false);
  EXPECT_EQ(rows["RTCM1020 R14"]["healthy"], false);
  const json& row = rows["BIN95 G04"];
  EXPECT_EQ(row["healthy"], true);
  EXPECT_EQ(row["reference_time"], "2024-05-18T22:59:42Z");
  EXPECT_EQ(row["issue"], 25);
}

struct S_RunCase {
  const char* name;
  const char* command;
  int code;
  const char* message;  // part of it
};
const S_RunCase kRuns[] = {
    {"Empty", ": > a; velagnss report --json a", 1, ""},
    {"Garbage", "head -c 5000 /dev/zero > a; velagnss report --json a", 1, "a: no frame"},
    {"Missing", "velagnss report --json missing", 3, "missing: "},
    {"OneOfTwoMissing", "velagnss report --json $S missing | grep -c session.bin; exit ${PIPESTATUS[0]}", 3,
     "missing: "},
    {"OutputIsInput", "cp $S a; velagnss report --json a -o a", 2, "is also an input"},
    {"NothingSelected", "velagnss report --json --from 2030-01-01 $S", 1, "none within --from"},
};
TEST_ROWS_F(ReportRun, EndsWithTheCodeOfStat, Report, kRuns, row) {
  const Outcome outcome = Run(row.command);
  EXPECT_EQ(outcome.code, row.code) << outcome.messages;
  EXPECT_THAT(outcome.messages, HasSubstr(row.message));
}

TEST_F(Report, TakesPartOfAStream) {
  const json input = Json("--from 2024-05-19 --until 2024-05-19T00:01:00 --talker GP $S")["inputs"][0];
  EXPECT_EQ(input["bins"]["start"], "2024-05-19T00:00:00Z");
  EXPECT_EQ(input["bins"]["count"], 60);
}

// Sentences that came 0.3 s and 1.3 s late, with the times in the index beside the recording; the one before came when
// the clock of the recorder was not set, and is in a file of its own.
TEST_F(Recordings, HaveTheLatencyOfTheirArrivals) {
  using namespace std::chrono_literals;
  m_now.utc = Host::t_RecordTime(5h);
  Begin(Options("a.bin"));
  Send(Sentence("GPZDA,115959,01,05,2026,00,00"));
  Pass(1300ms);
  m_now.utc = kNoon + 300ms;
  Send(Sentence("GPZDA,120000,01,05,2026,00,00"));
  Pass(2s);
  Send(Sentence("GPZDA,120001,01,05,2026,00,00"));
  End();
  Run("mv unsynced-*a.bin u.bin; mv unsynced-*.idx u.bin.idx; gzip -k a.bin; cp a.bin.idx a.bin.gz.idx");
  EXPECT_EQ(json::parse(Run("velagnss report --json u.bin").output)["inputs"][0]["latency"], nullptr);
  const json report = json::parse(Run("velagnss report --json a.bin a.bin.gz").output);
  for (const json& input : report["inputs"]) {
    EXPECT_EQ(input["latency"]["count"], 2);
    EXPECT_EQ(input["latency"]["min_s"], 0.3);
    EXPECT_EQ(input["latency"]["max_s"], 1.3);
  }
}

}  // namespace
