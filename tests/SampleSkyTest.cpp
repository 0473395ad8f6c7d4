// The satellites of the sample session. Its generator computes orbits and ranges without the library, so this compares
// two implementations.
#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

#include "ProgramRun.h"

namespace {

using nlohmann::json;

class SampleSky : public Program {
 protected:
  const json m_positions = json::parse(Run("velagnss stat --positions --json $S").output).at("positions");

  // Calls `take` with the members of each such record of the last five seconds.
  template <class Take>
  void ReadLast(const std::string& message, const Take& take) {
    std::istringstream lines(Run("velagnss decode --from 2024-05-19T00:02:19 --msg GGA,GSA,GSV,ZDA $S").output);
    for (std::string line; std::getline(lines, line);)
      if (const json record = json::parse(line); record.at("message") == message) take(record.at("fields"));
  }
};

TEST_F(SampleSky, GivesThePositionOfTheStation) {
  EXPECT_EQ(m_positions["solved"], 81);
  EXPECT_LT(m_positions["errors"]["horizontal_50_m"], 0.5);
  EXPECT_LT(m_positions["errors"]["vertical_50_m"], 1.0);
  EXPECT_LT(m_positions["residual_rms_m"], 1.0);
}

TEST_F(SampleSky, HasItsSatellitesWhereGsvSays) {
  const std::map<std::string, char> letters = {{"GP", 'G'}, {"GL", 'R'}, {"GA", 'E'}, {"GB", 'C'}};
  std::map<std::string, json> inView;
  ReadLast("GSV", [&](const json& fields) {
    const char letter = letters.at(fields["talker"]);
    for (const json& satellite : fields["satellites"]) {
      const int number = satellite["id"].get<int>() - (letter == 'R' ? 64 : 0);
      inView[letter + std::string(number < 10 ? "0" : "") + std::to_string(number)] = satellite;
    }
  });
  ASSERT_EQ(m_positions["satellites"].size(), 27);
  for (const json& satellite : m_positions["satellites"]) {
    const json& seen = inView[satellite["satellite"]];
    const double azimuth = seen["azimuth_deg"].get<double>() - satellite["azimuth_deg"].get<double>();
    EXPECT_LT(std::fabs(std::remainder(azimuth, 360)), 1) << satellite << seen;
    EXPECT_NEAR(seen["elevation_deg"], satellite["elevation_deg"].get<double>(), 1) << satellite << seen;
  }
}

// GGA counts them, GSA lists them.
TEST_F(SampleSky, HasTheSatellitesThatAreUsed) {
  std::size_t used = 0, listed = 0, counted = 0;
  for (const json& satellite : m_positions["satellites"]) used += satellite["used"] == 81 ? 1U : 0U;
  ReadLast("GSA",
           [&](const json& fields) { listed += fields.contains("system_id") ? fields["satellite_ids"].size() : 0; });
  ReadLast("GGA", [&](const json& fields) { counted = fields["satellites"]; });
  EXPECT_EQ(listed, used);
  EXPECT_EQ(counted, used);
}

}  // namespace
