#include "apps/velagnss/account/PositionSummary.h"

#include <cmath>
#include <numbers>

#include "Cases.h"
#include "geo/Geodesy.h"
#include "geo/NotAvailable.h"

namespace {

using Host::C_PositionSummary;
using Host::S_PositionSummary;

constexpr double kRadian = 180 / std::numbers::pi;  // degrees

// Fixes at offsets (north, east, up) in metres from a place in degrees and metres.
struct S_Offset {
  double north, east, up;
};
void AddAround(C_PositionSummary& summary, double latitude, double longitude, const S_Offset& offset) {
  double x = 0, y = 0, z = 0, dx = 0, dy = 0, dz = 0, lat = 0, lon = 0, h = 0;
  ALGO::GeodToCartAF(latitude / kRadian, longitude / kRadian, 100, ALGO::kWgs84A, ALGO::kWgs84F, x, y, z);
  ALGO::LocalToEcefDelta(offset.north, offset.east, offset.up, latitude / kRadian, longitude / kRadian, dx, dy, dz);
  ALGO::CartToGeodOlson(x + dx, y + dy, z + dz, ALGO::kWgs84A, ALGO::kWgs84F, lat, lon, h);
  summary.Add(lat * kRadian, lon * kRadian, h - 47, 47);
}

struct S_PlaceCase {
  const char* name;
  double latitude;
  double longitude;
};
const S_PlaceCase kPlaces[] = {
    {"Plain", 48.2, 11.4},       {"DateLine", -17.5, 180},  {"BesideTheDateLine", 60, -179.9999999},
    {"Greenwich", 51.4778, 0.0}, {"NorthPole", 89.9999, 7}, {"Equator", 0, -78.5},
};

// Eight fixes: 3 m to the north and south, 4 m to the east and west, 6 m up and down, and two on the spot. Their mean
// is the place, the squares add up to 18, 32 and 72; half of the distances are 0, the greatest are 4.
TEST_ROWS(PositionSummary, IsThatOfTheOffsets, kPlaces, row) {
  constexpr S_Offset kOffsets[] = {{3, 0, 0}, {-3, 0, 0}, {0, 4, 0}, {0, -4, 0},
                                   {0, 0, 6}, {0, 0, -6}, {0, 0, 0}, {0, 0, 0}};
  const auto [name, latitude, longitude] = row;
  C_PositionSummary positions;
  for (const S_Offset& offset : kOffsets) AddAround(positions, latitude, longitude, offset);
  const S_PositionSummary summary = *positions.Summary();
  EXPECT_EQ(summary.fixes, 8);
  EXPECT_NEAR(summary.latitude * kRadian, latitude, 1e-11);
  EXPECT_NEAR(std::remainder(summary.longitude * kRadian - longitude, 360) * std::cos(summary.latitude), 0, 1e-11);
  EXPECT_NEAR(summary.height, 100, 1e-6);
  EXPECT_NEAR(summary.altitude, 53, 1e-4);  // a little more: straight ahead leads away from the Earth
  EXPECT_NEAR(summary.spreadNorth, std::sqrt(18.0 / 8), 1e-6);
  EXPECT_NEAR(summary.spreadEast, std::sqrt(32.0 / 8), 1e-6);
  EXPECT_NEAR(summary.spreadUp, std::sqrt(72.0 / 8), 1e-6);
  EXPECT_NEAR(summary.radius50, 0, 1e-6);
  EXPECT_NEAR(summary.radius95, 4, 1e-6);
}

// Fixes 0 to n - 1 at distances that grow evenly to 100 m, to both sides: half are within 50 m, 95 % within 95 m.
TEST(PositionSummaryOfMany, KeepsRadiiWithBoundedMemory) {
  C_PositionSummary positions;
  constexpr int kPairs = 200000;  // twice past the number that is kept
  for (int i = 0; i < kPairs; ++i) {
    const double distance = 100.0 * i / kPairs;
    for (const double side : {distance, -distance}) AddAround(positions, 48.2, 11.4, {0, side, 0});
  }
  const S_PositionSummary summary = *positions.Summary();
  EXPECT_EQ(summary.fixes, 2 * kPairs);
  EXPECT_NEAR(summary.spreadEast, 100 / std::sqrt(3), 1e-3);
  EXPECT_NEAR(summary.radius50, 50, 2e-3);
  EXPECT_NEAR(summary.radius95, 95, 2e-3);
}

TEST(PositionSummaryOfFew, OneFixHasNoSpread) {
  C_PositionSummary positions;
  EXPECT_FALSE(positions.Summary().has_value());
  positions.Add(48.2, 11.4, 500, NA_DOUBLE);
  const S_PositionSummary summary = *positions.Summary();
  EXPECT_EQ(summary.spreadNorth, 0);
  EXPECT_EQ(summary.radius95, 0);
  EXPECT_EQ(summary.altitude, 500);
  EXPECT_TRUE(std::isnan(summary.height)) << "the height above the ellipsoid is not known";
}

// Their mean is the Earth's center, where there is no horizon.
TEST(PositionSummaryOfFew, OppositePlacesHaveNoMean) {
  C_PositionSummary positions;
  positions.Add(0, 0, 0, 0);
  positions.Add(0, 180, 0, 0);
  const S_PositionSummary summary = *positions.Summary();
  EXPECT_EQ(summary.fixes, 2);
  EXPECT_TRUE(std::isnan(summary.latitude) && std::isnan(summary.height));
  EXPECT_TRUE(std::isnan(summary.spreadNorth) && std::isnan(summary.radius50));
}

struct S_SentenceCase {
  const char* name;
  unsigned int quality;
  double timeOfDay;
  double latitude;
  double altitude;
  bool isCounted;
};
const S_SentenceCase kSentences[] = {
    {"Single", 1, 1, 48, 500, true},          {"RtkFloat", 5, 1, 48, 500, true},
    {"NoFix", 0, 1, 48, 500, false},          {"DeadReckoning", 6, 1, 48, 500, false},
    {"Simulated", 8, 1, 48, 500, false},      {"EmptyQuality", 10, 1, 48, 500, false},
    {"SameTime", 1, 0, 48, 500, false},       {"WithoutTime", 1, NA_DOUBLE, 48, 500, true},
    {"NoPlace", 1, 1, NA_DOUBLE, 500, false}, {"NoAltitude", 1, 1, 48, NA_DOUBLE, false},
    {"BeyondThePole", 1, 1, 91, 500, false},
};

// After a GNS of time 0 that is a fix.
TEST_ROWS(PositionSentence, CountsOnlyAFix, kSentences, row) {
  C_PositionSummary positions;
  S_GNS_Data gns{};
  gns.mode[1] = eNmeaModeDifferential;
  positions.Note(gns);
  S_GGA_Data gga{};
  gga.quality = row.quality;
  gga.timeOfDay = row.timeOfDay;
  gga.latitude = row.latitude;
  gga.altitude = row.altitude;
  positions.Note(gga);
  EXPECT_EQ(positions.Summary()->fixes, row.isCounted ? 2 : 1);
}

}  // namespace
