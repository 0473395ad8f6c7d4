#include "apps/velagnss/account/EpochSteps.h"

#include <gmock/gmock.h>

#include "Cases.h"

namespace {

// `count` steps of `step` seconds, from where the list ends.
std::vector<double> Then(std::vector<double> times, double step, int count = 1) {
  for (int i = 0; i < count; ++i) times.push_back(times.back() + step);
  return times;
}

struct S_StepsCase {
  const char* name;
  std::vector<double> times;
  double interval;
  std::vector<double> gaps;  // where each ends
};
const S_StepsCase kSteps[] = {
    {"OneEpoch", {5}, 0, {}},
    {"Gap", {0, 1, 1, 2, 4, 5}, 1, {4}},
    {"OneAndAHalfIsNone", {0, 1, 2, 3.5, 5.002}, 1, {5.002}},
    {"LateSentence", {10, 11, 12, 2, 13}, 1, {}},
    {"StartsOver", {100, 101, 102, 91.9, 92.9, 95}, 1, {95}},
    {"SlowAtFirst", Then({0, 10, 20}, 1, 5), 1, {10, 20}},
    {"AfterOneShortStep", Then(Then({0, 0.25}, 1, 3000), 5), 1, {3005.25}},
};
TEST_ROWS(EpochSteps, FindGaps, kSteps, row) {
  Host::C_EpochSteps steps;
  for (const double time : row.times) steps.Note(0, time);
  EXPECT_EQ(steps.Interval(), row.interval);
  std::vector<double> ends;
  for (const Host::S_TimeGap& gap : steps.Gaps()) ends.push_back(gap.to);
  EXPECT_EQ(ends, row.gaps);
  EXPECT_EQ(steps.GapCount(), ends.size());
}

}  // namespace
