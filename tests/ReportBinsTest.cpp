#include <cmath>
#include <limits>
#include <map>
#include <random>

#include "Cases.h"
#include "apps/velagnss/report/SeriesJson.h"

namespace {

using namespace Host;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kYear = 366 * 86400.0;

// What came.
struct S_Value {
  double seconds;
  double value;
};

// All values, put into the bins of the axis at the end.
std::map<std::size_t, S_ValueRange> RangesOf(const std::vector<S_Value>& values, const C_TimeBins& axis) {
  std::map<std::size_t, S_ValueRange> ranges;
  for (const S_Value& value : values) {
    const double place = std::floor((value.seconds - axis.Start()) / axis.Step());
    ranges[static_cast<std::size_t>(place)].Add(value.value);
  }
  return ranges;
}

void ExpectAll(const C_Series& series, const C_TimeBins& axis, const std::vector<S_Value>& values) {
  const C_Series::S_Bins bins = series.On(axis);
  std::map<std::size_t, S_ValueRange> expected = RangesOf(values, axis);
  ASSERT_EQ(bins.first, expected.begin()->first);
  ASSERT_EQ(bins.first + bins.ranges.size() - 1, expected.rbegin()->first);
  for (std::size_t i = 0; i < bins.ranges.size(); ++i) {
    const S_ValueRange& range = bins.ranges[i];
    const S_ValueRange& all = expected[bins.first + i];
    ASSERT_EQ(std::tie(range.min, range.max, range.count), std::tie(all.min, all.max, all.count)) << i;
    ASSERT_NEAR(range.sum, all.sum, 1e-6) << i;
  }
}

struct S_PathCase {
  const char* name;
  double start;     // s
  double meanStep;  // s
  double spread;    // s
};
constexpr S_PathCase kPaths[] = {
    {"TenPerSecond", 43200, 0.1, 0}, {"Backward", 1000, -7, 0},   {"Wandering", 0, 0, 90},
    {"Days", 86000.5, 40, 300},      {"AcrossZero", -5000, 3, 1}, {"Months", 7, 8000, 20000},
};

TEST_ROWS(SeriesOnAPath, KeepsTheExtremesOfAllBins, kPaths, row) {
  std::mt19937 random(7);
  std::normal_distribution<double> noise;
  C_TimeBins axis;
  C_Series all, rare;
  std::vector<S_Value> values, rareValues;
  double seconds = row.start;
  for (int i = 0; i < 5000; ++i, seconds += row.meanStep + row.spread * noise(random)) {
    const auto bin = axis.Note(seconds);
    ASSERT_TRUE(bin.has_value());
    values.push_back({seconds, noise(random)});
    all.Add(bin, values.back().value);
    if (i % 701 != 0) continue;
    rareValues.push_back(values.back());
    rare.Add(bin, values.back().value);
    ExpectAll(rare, axis, rareValues);
  }
  EXPECT_LE(axis.Count(), C_TimeBins::kMaxBins);
  EXPECT_GE(axis.Count(), std::min(C_TimeBins::kMaxBins / 2, std::size_t{500}));
  ExpectAll(all, axis, values);
  ExpectAll(rare, axis, rareValues);
}

struct S_VoteCase {
  const char* name;
  std::vector<std::pair<int, double>> runs;  // how many times, the first one of them
  double start;
  std::uint64_t count;  // values left on the axis
};
const S_VoteCase kVotes[] = {
    {"StrayDate", {{100, 0}, {3, 20 * kYear}, {100, 100}}, 0, 200},
    {"WrongAtFirst", {{10, -30 * kYear}, {1000, 50}}, 60, 990},
    {"Sessions", {{10, 90000}, {10, 3600}}, 3584, 20},
    {"NoTimes", {{5, kNaN}, {5, 1e300}, {2, 8}}, 8, 2},
};

TEST_ROWS(TimeAxis, IsWhereMostTimesAre, kVotes, row) {
  C_TimeBins axis;
  C_Series series;
  for (const auto& [count, first] : row.runs)
    for (int i = 0; i < count; ++i) series.Add(axis.Note(first + i), 1);
  EXPECT_EQ(axis.Start(), row.start);
  std::uint64_t count = 0;
  for (const S_ValueRange& range : series.On(axis).ranges) count += range.count;
  EXPECT_EQ(count, row.count);
  EXPECT_EQ(axis.IndexOf(axis.Start()), 0);
  EXPECT_EQ(axis.IndexOf(axis.Start() - 1), std::nullopt);
  EXPECT_EQ(axis.IndexOf(kNaN), std::nullopt);
}

TEST(SeriesWithAnOldBin, PutsItWhereItIsNow) {
  C_TimeBins axis;
  C_Series series;
  const auto old = axis.Note(5);
  series.Add(axis.Note(2 * C_TimeBins::kMaxBins), 1);
  series.Add(old, 2);
  ExpectAll(series, axis, {{5, 2}, {2 * C_TimeBins::kMaxBins, 1}});
}

template <class Write>
std::string TextOf(const Write& write) {
  C_JsonWriter json;
  write(json);
  return std::string(json.Text());
}

TEST(SeriesJson, LeavesOutWhatIsTheSame) {
  C_TimeBins axis;
  C_Series series;
  axis.Note(9);
  const auto text = [&] { return TextOf([&](C_JsonWriter& json) { WriteSeries(json, series, axis, 1); }); };
  EXPECT_EQ(text(), "null");
  series.Add(axis.Note(10), -0.01);
  series.Add(axis.Note(12.5), 41.26);
  EXPECT_EQ(text(), R"({"first":1,"runs":[1,1,1],"max":[0,41.3]})");
  series.Add(axis.Note(12.9), 40);
  EXPECT_EQ(text(), R"({"first":1,"runs":[1,1,1],"max":[0,41.3],"min":[0,40],"mean":[0,40.6]})");
  axis.Note(14);
  EXPECT_EQ(TextOf([&](C_JsonWriter& json) { WriteSums(json, series, axis); }),
            R"({"first":0,"max":[0,-0.01,0,81.26,0,0]})");
}

TEST(SeriesJson, HasTheTimeOfItsStart) {
  C_TimeBins axis;
  velagnss::StreamClock clock;
  const auto text = [&] { return TextOf([&](C_JsonWriter& json) { WriteBins(json, axis, clock); }); };
  EXPECT_EQ(text(), "null");
  axis.Note(86400 + 3600.5);
  axis.Note(86400 + 3601);
  EXPECT_EQ(text(), R"({"start":"01:00:00","start_s":3600,"has_date":false,"step_s":1,"count":2})");
  clock.AssumeFirstDay(60446);
  EXPECT_EQ(text(), R"({"start":"2024-05-17T01:00:00Z","start_s":3600,"has_date":true,"step_s":1,"count":2})");
}

}  // namespace
