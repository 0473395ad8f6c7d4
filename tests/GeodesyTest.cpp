#include "geo/Geodesy.h"

#include <GeographicLib/Geocentric.hpp>
#include <GeographicLib/Geodesic.hpp>
#include <GeographicLib/LocalCartesian.hpp>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <random>
#include <utility>
#include <vector>

#include "geo/NotAvailable.h"
#include "tests/Cases.h"

namespace {

using namespace ALGO;

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegree = kPi / 180;
constexpr double kArcSecond = kDegree / 3600;
const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

static_assert(kWgs84F == 0.0033528106647474805);

class C_Uniform {
 public:
  double operator()(double low, double high) {
    return low + (high - low) * static_cast<double>(m_generator() >> 11) * 0x1p-53;
  }

 private:
  std::mt19937_64 m_generator{20240601};
};

double AngleBetween(double one, double other) { return std::fabs(std::remainder(one - other, 2 * kPi)); }

// ---- conversions ---------------------------------------------------------------------------------------------------

struct S_HeightBand {
  const char* name;
  double low, high;                   // height, m
  double forward;                     // bounds: error of the position, m,
  double olsonLatitude, olsonHeight;  // rad, m
  double newtonLatitude, newtonHeight;
};

// clang-format off
constexpr S_HeightBand kHeightBands[] = {
    // name                   heights          forward  Olson            Newton
    {"DeepEarth",         -5000e3,  -100e3,     4e-9,   2e-12,  6e-9,    8e-11, 1e-3},
    {"Crust",              -100e3,   -10e3,     4e-9,   7e-16,  6e-9,    2e-11, 6e-9},
    {"Surface",             -10e3,    10e3,     4e-9,   7e-16,  6e-9,    2e-11, 6e-9},
    {"Air",                  10e3,   100e3,     4e-9,   7e-16,  6e-9,    2e-11, 6e-9},
    {"LowOrbit",            100e3,  1000e3,     4e-9,   7e-16,  6e-9,    2e-11, 6e-9},
    {"MediumOrbit",        1000e3, 10000e3,     6e-9,   7e-16,  1e-8,    2e-11, 1e-6},
    {"NavigationOrbit",   10000e3, 40000e3,    20e-9,   7e-16, 23e-9,    2e-11, 2.5e-6},
};
// clang-format on

TEST_ROWS(GeodesyByHeight, ConversionsKeepTheirBounds, kHeightBands, band) {
  const GeographicLib::Geocentric& reference = GeographicLib::Geocentric::WGS84();
  C_Uniform uniform;
  double forward = 0, olsonLatitude = 0, olsonHeight = 0, newtonLatitude = 0, newtonHeight = 0;
  for (int round = 0; round < 30000; ++round) {
    const double sign = round % 2 == 0 ? 1 : -1, tiny = std::pow(10, uniform(-12, 0));
    const double lat = round % 10 < 2 ? sign * (90 - tiny) : round % 10 < 4 ? sign * tiny : uniform(-90, 90);
    const double lon = round % 7 == 0 ? sign * (180 - tiny) : uniform(-180, 180), h = uniform(band.low, band.high);
    double x, y, z, ax, ay, az, bx, by, bz, latitude, longitude, height, referenceLat, referenceLon, referenceHeight;
    reference.Forward(lat, lon, h, x, y, z);
    GeodToCartAF(lat * kDegree, lon * kDegree, h, kWgs84A, kWgs84F, ax, ay, az);
    GeodToCartAB(lat * kDegree, lon * kDegree, h, kWgs84A, kWgs84B, bx, by, bz);
    forward = std::max({forward, C_Vector3(ax - x, ay - y, az - z).Norm(), C_Vector3(bx - x, by - y, bz - z).Norm()});

    reference.Reverse(x, y, z, referenceLat, referenceLon, referenceHeight);
    CartToGeodOlson(x, y, z, kWgs84A, kWgs84F, latitude, longitude, height);
    olsonLatitude = std::max(olsonLatitude, std::fabs(latitude - referenceLat * kDegree));
    olsonHeight = std::max(olsonHeight, std::fabs(height - referenceHeight));
    ASSERT_NEAR(longitude, referenceLon * kDegree, 5e-16);
    CartToGeodIter(x, y, z, kWgs84A, kWgs84F, latitude, longitude, height);
    newtonLatitude = std::max(newtonLatitude, std::fabs(latitude - referenceLat * kDegree));
    newtonHeight = std::max(newtonHeight, std::fabs(height - referenceHeight));
    ASSERT_TRUE(longitude >= 0 && longitude <= 2 * kPi);
    ASSERT_LT(AngleBetween(longitude, referenceLon * kDegree), std::fabs(x) < 1e-4 ? 4 : 1e-15);
  }
  EXPECT_LT(forward, band.forward);
  EXPECT_LT(olsonLatitude, band.olsonLatitude);
  EXPECT_LT(olsonHeight, band.olsonHeight);
  EXPECT_LT(newtonLatitude, band.newtonLatitude);
  EXPECT_LT(newtonHeight, band.newtonHeight);
}

TEST(Geodesy, OlsonHoldsAMillimetreFrom500km) {
  C_Uniform uniform;
  for (int round = 0; round < 20000; ++round) {
    const double radius = uniform(500e3, 2000e3), beta = uniform(-kPi / 2, kPi / 2), z = radius * std::sin(beta);
    double lat, lon, h, referenceLat, referenceLon, referenceHeight;
    GeographicLib::Geocentric::WGS84().Reverse(radius * std::cos(beta), 0, z, referenceLat, referenceLon,
                                               referenceHeight);
    CartToGeodOlson(radius * std::cos(beta), 0, z, kWgs84A, kWgs84F, lat, lon, h);
    ASSERT_LT(std::fabs(lat - referenceLat * kDegree) * radius, 1e-3);
    ASSERT_NEAR(h, referenceHeight, 1e-3);
  }
}

struct S_AxisCase {
  const char* name;
  double x, y, z;
  double lat, h;
  double newtonLon, olsonLon;
};

const S_AxisCase kAxisCases[] = {
    {"Greenwich", kWgs84A, 0, 0, 0, 0, 0, 0},
    {"DateLine", -kWgs84A, 0, 0, 0, 0, kPi, kPi},
    {"DateLineFromTheWest", -kWgs84A, -0.0, 0, 0, 0, kPi, -kPi},
    {"West", 0, -kWgs84A, 0, 0, 0, 3 * kPi / 2, -kPi / 2},
    {"NorthPole", 0, 0, kWgs84B, kPi / 2, 0, kPi / 2, 0},
    {"SouthPole", 0, 0, -kWgs84B, -kPi / 2, 0, kPi / 2, 0},
    {"BesideTheSouthPole", 0, -0.00005, -kWgs84B - 10, -kPi / 2, 10, 3 * kPi / 2, -kPi / 2},
    {"BesideTheEquator", kWgs84A + 5, 0, 0.00009, 0, 5, 0, 0},
    {"NearlyOnTheZeroMeridiansPlane", 0.00009, -1e7, 0, 0, 1e7 - kWgs84A, 3 * kPi / 2, -kPi / 2},
};

TEST_ROWS(GeodesyOnAxis, BothMethods, kAxisCases, c) {
  double lat, lon, h;
  CartToGeodIter(c.x, c.y, c.z, kWgs84A, kWgs84F, lat, lon, h);
  EXPECT_EQ(lat, c.lat);
  EXPECT_EQ(lon, c.newtonLon);
  EXPECT_NEAR(h, c.h, 2e-9);
  CartToGeodOlson(c.x, c.y, c.z, kWgs84A, kWgs84F, lat, lon, h);
  EXPECT_NEAR(lat, c.lat, 2e-11);
  EXPECT_NEAR(lon, c.olsonLon, 2e-11);
  EXPECT_NEAR(h, c.h, 2e-9);
}

TEST(Geodesy, EarthsCentre) {
  double lat, lon, h;
  CartToGeodIter(0, 0, 0, kWgs84A, kWgs84F, lat, lon, h);
  EXPECT_EQ(lat, kPi / 2);  // on the axis, not south
  EXPECT_NEAR(h, -kWgs84B, 1e-8);
  CartToGeodOlson(0, 0, 0, kWgs84A, kWgs84F, lat, lon, h);
  EXPECT_TRUE(std::isnan(lat) && std::isnan(h));
  EXPECT_EQ(lon, 0);
}

TEST(Geodesy, HugeHeights) {
  for (const double h : {1e9, 1e12, 1e15}) {
    double x, y, z, lat, lon, height;
    GeodToCartAF(0.7, -2, h, kWgs84A, kWgs84F, x, y, z);
    for (const auto convert : {CartToGeodOlson, CartToGeodIter}) {
      convert(x, y, z, kWgs84A, kWgs84F, lat, lon, height);
      EXPECT_NEAR(lat, 0.7, 1e-14);
      EXPECT_LT(AngleBetween(lon, -2), 1e-15);
      EXPECT_NEAR(height, h, 1e-15 * h);
    }
  }
}

// ---- arguments that are not finite ---------------------------------------------------------------------------------

struct S_NonFiniteCase {
  const char* name;
  std::vector<double> arguments;
  void (*run)(const double* i, double* o);  // up to six results; what is not written stays 0
};

constexpr auto kLook = [](const double* i, double* o) {
  const S_LookAngles look = GeodLookAngles(i[0], i[1], i[2], i[3], i[4], i[5], i[6], i[7]);
  o[0] = look.range + look.north + look.east + look.up;
};
constexpr auto kDms = [](const double* i, double* o) {
  short degrees, minutes;
  RadToDms(i[0], degrees, minutes, o[0]);
  EXPECT_TRUE(degrees == 0 && minutes == 0);
};

// clang-format off
const S_NonFiniteCase kNonFiniteCases[] = {
    {"GeodToCartAF", {1, 2, 3, kWgs84A, kWgs84F}, [](auto* i, auto* o) { GeodToCartAF(i[0], i[1], i[2], i[3], i[4], o[0], o[1], o[2]); }},
    {"GeodToCartAB", {1, 2, 3, kWgs84A, kWgs84B}, [](auto* i, auto* o) { GeodToCartAB(i[0], i[1], i[2], i[3], i[4], o[0], o[1], o[2]); }},
    {"CartToGeodIter", {1e6, 2e6, 6e6, kWgs84A, kWgs84F}, [](auto* i, auto* o) { CartToGeodIter(i[0], i[1], i[2], i[3], i[4], o[0], o[1], o[2]); }},
    {"CartToGeodOlson", {1e6, 2e6, 6e6, kWgs84A, kWgs84F}, [](auto* i, auto* o) { CartToGeodOlson(i[0], i[1], i[2], i[3], i[4], o[0], o[1], o[2]); }},
    {"GeodLookAngles", {1, 2, 3, 0.9, 2.1, 4, kWgs84A, kWgs84F}, kLook},
    {"LocalToEcefDelta", {1, 2, 3, 1, 2}, [](auto* i, auto* o) { LocalToEcefDelta(i[0], i[1], i[2], i[3], i[4], o[0], o[1], o[2]); }},
    {"GeodesicInverse", {1, 2, 0.9, 2.1, kWgs84A, kWgs84F}, [](auto* i, auto* o) { GeodesicInverse(i[0], i[1], i[2], i[3], i[4], i[5], o[0], o[1], o[2]); }},
    {"RadToDms", {1}, kDms},
    {"DmsToRad", {1}, [](auto* i, auto* o) { o[0] = DmsToRad(1, 2, i[0]); }},
    {"PointDistance", {1e6, 2e6, 6e6, 1, 2, 3}, [](auto* i, auto* o) { o[0] = PointDistance(C_Vector3(i), C_Vector3(i + 3), false); }},
    {"PointDistanceHorizontal", {1e6, 2e6, 6e6, 1, 2, 3}, [](auto* i, auto* o) { o[0] = PointDistance(C_Vector3(i), C_Vector3(i + 3), true); }},
    {"CovEcefToLocal", {1, 2, 1, 2, 3, 4, 5, 6}, [](auto* i, auto* o) { CovEcefToLocal(i[0], i[1], 0, i + 2, o); }},
    {"CovLocalToEcef", {1, 2, 1, 2, 3, 4, 5, 6}, [](auto* i, auto* o) { CovLocalToEcef(i[0], i[1], 0, i + 2, o); }},
};
// clang-format on

TEST_ROWS(GeodesyNonFinite, ShowsInTheResult, kNonFiniteCases, row) {
  for (const double odd : {kNan, kInfinity, -kInfinity}) {
    for (std::size_t i = 0; i < row.arguments.size(); ++i) {
      std::vector<double> arguments = row.arguments;
      arguments[i] = odd;
      double results[6] = {};
      row.run(arguments.data(), results);
      EXPECT_FALSE(std::isfinite(std::accumulate(results, results + 6, 0.0))) << "argument " << i << " = " << odd;
    }
  }
}

// ---- look angles ---------------------------------------------------------------------------------------------------

TEST(Geodesy, LookAnglesOfSatellitesAndNeighbours) {
  C_Uniform uniform;
  double distances = 0, zenith = 0, elevation = 0, azimuth = 0;
  for (int round = 0; round < 30000; ++round) {
    const bool satellite = round % 2 == 0;
    const double lat = round % 10 < 2 ? (round % 20 < 10 ? 89.9999 : -89.9999) : uniform(-89, 89);
    const double lon = uniform(-180, 180), h = uniform(-500, 9000);
    const double lat2 = satellite ? uniform(-90, 90) : lat + uniform(-1e-4, 1e-4) * std::pow(10, uniform(-2, 0));
    const double lon2 = satellite ? uniform(-180, 180) : lon + uniform(-1, 1);
    const double h2 = satellite ? uniform(20000e3, 36000e3) : uniform(0, 20000);
    double east, north, up;
    GeographicLib::LocalCartesian(lat, lon, h).Forward(lat2, lon2, h2, east, north, up);
    const double range = std::hypot(east, north, up), horizontal = std::hypot(east, north);
    const double expectedElevation = std::atan2(up, horizontal);
    const S_LookAngles look =
        GeodLookAngles(lat * kDegree, lon * kDegree, h, lat2 * kDegree, lon2 * kDegree, h2, kWgs84A, kWgs84F);
    distances = std::max({distances, std::fabs(look.range - range), std::fabs(look.north - north),
                          std::fabs(look.east - east), std::fabs(look.up - up)});
    const double error = std::fabs(look.elevation - expectedElevation);
    zenith = std::max(zenith, error - 1e-8 / range);
    if (std::fabs(expectedElevation) < 80 * kDegree) elevation = std::max(elevation, error * range);
    if (horizontal > 1)
      azimuth = std::max(azimuth, AngleBetween(look.azimuth, std::atan2(east, north)) - 1e-8 / horizontal);
  }
  EXPECT_LT(distances, 3e-8);
  EXPECT_LT(zenith, 3e-8);
  EXPECT_LT(elevation, 1e-7);
  EXPECT_LT(azimuth, 3e-8);
}

struct S_LookCase {
  const char* name;
  double lat2, lon2, h2;  // seen from (0, 0, 0) on a sphere of radius 1 m
  double azimuth, elevation, range;
};

constexpr S_LookCase kLookCases[] = {
    {"Itself", 0, 0, 0, 0, 0, 0},
    {"NearerThanANanometre", 0, 0, 9e-10, 0, 0, 0},
    {"Up", 0, 0, 2, 0, kPi / 2, 2},
    {"Down", 0, 0, -0.5, 0, -kPi / 2, 0.5},
    {"UpWithoutElevation", 0, 0, 9e-6, 0, 0, 9e-6},
    {"UpWithElevation", 0, 0, 1.1e-5, 0, kPi / 2, 1.1e-5},
    {"WestWithoutAzimuth", 0, -9e-6, 0, 0, 0, 9e-6},
    {"WestWithAzimuth", 0, -1.1e-5, 0, 3 * kPi / 2, -5.5e-6, 1.1e-5},
    {"East", 0, 1e-3, 0, kPi / 2, -5e-4, 1e-3},
    {"North", 1e-3, 0, 0, 0, -5e-4, 1e-3},
    {"South", -1e-3, 0, 0, kPi, -5e-4, 1e-3},
    {"SouthWest", -1e-3, -1e-3, 0, 5 * kPi / 4, -7.0710678e-4, 1.41421356e-3},
    {"OverTheNorthPole", kPi / 2, 0, 0, 0, -kPi / 4, 1.41421356},
};

TEST_ROWS(GeodesyLook, OnTheUnitSphere, kLookCases, c) {
  const S_LookAngles look = GeodLookAngles(0, 0, 0, c.lat2, c.lon2, c.h2, 1, 0);
  EXPECT_NEAR(look.azimuth, c.azimuth, 1e-6);
  EXPECT_NEAR(look.elevation, c.elevation, 1e-6);
  EXPECT_NEAR(look.range, c.range, 1e-8);
  EXPECT_NEAR(look.range, std::hypot(look.north, look.east, look.up), 1e-15);
}

// ---- inverse problem -----------------------------------------------------------------------------------------------

struct S_ArcBand {
  const char* name;
  double low, high;  // arc between the points, degrees
  double azimuths;   // bound across the track, m
  bool converges;
};

constexpr S_ArcBand kArcBands[] = {
    {"Metres", 1e-6, 1e-3, 100e-6, true},         {"Kilometres", 1e-3, 1, 100e-6, true},
    {"Continents", 1, 90, 100e-6, true},          {"Hemispheres", 90, 179, 100e-6, true},
    {"UpTo0p7Degrees", 179, 179.3, 100e-6, true}, {"NearTheAntipode", 179.3, 180, 300e-6, false},
};

TEST_ROWS(GeodesyInverse, AgreesWithGeographicLib, kArcBands, band) {
  C_Uniform uniform;
  int failures = 0;
  double distances = 0, azimuths = 0;
  for (int round = 0; round < 30000; ++round) {
    const double lat1 = round % 5 == 0 ? uniform(-1e-3, 1e-3) : uniform(-90, 90), lon1 = uniform(-180, 180);
    const double arc = uniform(band.low, band.high) * kDegree, direction = uniform(-kPi, kPi), phi = lat1 * kDegree;
    const double sine = std::sin(phi) * std::cos(arc) + std::cos(phi) * std::sin(arc) * std::cos(direction);
    const double lat2 = std::asin(std::clamp(sine, -1.0, 1.0)) / kDegree;
    const double lon2 = lon1 + std::atan2(std::sin(direction) * std::sin(arc) * std::cos(phi),
                                          std::cos(arc) - std::sin(phi) * sine) /
                                   kDegree;  // across the date line
    double expected, forward, atEnd, there, back, distance;
    GeographicLib::Geodesic::WGS84().Inverse(lat1, lon1, lat2, lon2, expected, forward, atEnd);
    GeodesicInverse(phi, lon1 * kDegree, lat2 * kDegree, lon2 * kDegree, kWgs84A, kWgs84F, there, back, distance);
    if (distance == NA_DOUBLE) {
      EXPECT_TRUE(there == NA_DOUBLE && back == NA_DOUBLE);
      ++failures;
      continue;
    }
    ASSERT_TRUE(there >= 0 && there < 2 * kPi && back >= 0 && back < 2 * kPi);
    distances = std::max(distances, std::fabs(distance - expected));
    const double width = std::fabs(std::sin(arc)) * kWgs84A;
    azimuths = std::max(
        {azimuths, AngleBetween(there, forward * kDegree) * width, AngleBetween(back, atEnd * kDegree + kPi) * width});
  }
  EXPECT_LT(distances, 76e-6);
  EXPECT_LT(azimuths, band.azimuths);
  EXPECT_EQ(failures == 0, band.converges) << failures;
}

struct S_InverseCase {
  const char* name;
  double lat1, lon1, lat2, lon2, a, f;
  double forward, back, distance;
  double angleTolerance, tolerance;
};

const double kGrs80F = 1 / 298.257222101;

const S_InverseCase kInverseCases[] = {
    {"Itself", 1, 2, 1, 2, kWgs84A, kWgs84F, 0, kPi, 0, 0, 0},
    {"ItselfWithinRounding", 1, 2, 1 + 8e-16, 2, kWgs84A, kWgs84F, 0, kPi, 0, 0, 0},
    {"NearerThanATenthOfAMicrometre", 0, 0, 0, 1e-14, kWgs84A, kWgs84F, 0, kPi, 6.4e-8, 0, 1e-9},
    {"OneDegreeOfTheEquator", 0, 0, 0, kDegree, kWgs84A, kWgs84F, kPi / 2, 3 * kPi / 2, 111319.4908, 1e-15, 1e-4},
    {"AcrossTheDateLine", 0, kPi, 0, -kPi + kDegree, kWgs84A, kWgs84F, kPi / 2, 3 * kPi / 2, 111319.4908, 1e-13, 1e-4},
    {"PoleToPole", kPi / 2, 0, -kPi / 2, 0, kWgs84A, kWgs84F, kPi, 0, 20003931.4586, 1e-9, 1e-4},
    {"Antipodes", 0, 0, 0, kPi, kWgs84A, kWgs84F, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, 0, 0},
    // Flinders Peak to Buninyong, the example of the GDA technical manual, on GRS 80.
    {"FlindersPeakToBuninyong", -(37 * 3600 + 57 * 60 + 3.72030) * kArcSecond,
     (144 * 3600 + 25 * 60 + 29.52440) * kArcSecond, -(37 * 3600 + 39 * 60 + 10.15610) * kArcSecond,
     (143 * 3600 + 55 * 60 + 35.38390) * kArcSecond, 6378137, kGrs80F, (306 * 3600 + 52 * 60 + 5.37) * kArcSecond,
     (127 * 3600 + 10 * 60 + 25.07) * kArcSecond, 54972.271, 0.005 * kArcSecond, 5e-4},
};

TEST_ROWS(GeodesyInverseCase, Gives, kInverseCases, c) {
  double forward, back, distance;
  GeodesicInverse(c.lat1, c.lon1, c.lat2, c.lon2, c.a, c.f, forward, back, distance);
  EXPECT_NEAR(forward, c.forward, c.angleTolerance);
  EXPECT_NEAR(back, c.back, c.angleTolerance);
  EXPECT_NEAR(distance, c.distance, c.tolerance);
}

// ---- angles and distances ------------------------------------------------------------------------------------------

struct S_DmsCase {
  const char* name;
  double angle;  // rad
  short degrees, minutes;
  double seconds;
};

constexpr S_DmsCase kDmsCases[] = {
    {"Zero", 0, 0, 0, 0},
    {"HalfARadianNegative", -0.5, -28, -38, -52.4031235},
    {"Pi", kPi, 180, 0, 0},
    {"MinutesOnly", -30.5 * kDegree / 60, 0, -30, -30},
    {"SecondsOnly", 12.25 * kArcSecond, 0, 0, 12.25},
    {"LargestDegrees", 571.9, 32767, 27, 22.6927},
    {"BeyondTheLargestDegrees", 572, 32767, 11, 9.1733},
    {"BeyondTheLargestDegreesNegative", -1e300, -32767, 0, 0},
    {"LargestDouble", std::numeric_limits<double>::max(), 32767, 0, 0},
};

TEST_ROWS(GeodesyDms, Splits, kDmsCases, c) {
  short degrees, minutes;
  double seconds;
  RadToDms(c.angle, degrees, minutes, seconds);
  EXPECT_EQ(degrees, c.degrees);
  EXPECT_EQ(minutes, c.minutes);
  EXPECT_NEAR(seconds, c.seconds, 1e-3);
  if (std::fabs(c.angle) < 571.9) {
    EXPECT_NEAR(DmsToRad(degrees, minutes, seconds), c.angle, 1e-13);
  }
}

TEST(Geodesy, OneNegativePartMakesAnAngleNegative) {
  const double size = (10 + 20.0 / 60 + 30.0 / 3600) * kDegree;
  EXPECT_NEAR(DmsToRad(10, 20, 30), size, 1e-16);
  EXPECT_NEAR(DmsToRad(-10, 20, 30), -size, 1e-16);
  EXPECT_NEAR(DmsToRad(10, -20, 30), -size, 1e-16);
  EXPECT_NEAR(DmsToRad(10, 20, -30), -size, 1e-16);
  EXPECT_NEAR(DmsToRad(-32768, -32768, -30), -(32768 + 32768 / 60.0 + 30 / 3600.0) * kDegree, 1e-12);
}

TEST(Geodesy, PointDistances) {
  const C_Vector3 p(4000e3, 1000e3, 4850e3);
  double lat, lon, h, east, north, up;
  CartToGeodOlson(p.X(), p.Y(), p.Z(), kWgs84A, kWgs84F, lat, lon, h);
  const GeographicLib::LocalCartesian frame(lat / kDegree, lon / kDegree, h);
  for (const C_Vector3& offset : {C_Vector3(3, 4, 12), C_Vector3(-5e3, 2e3, 1e2), C_Vector3(0, 0, 0)}) {
    double x, y, z, lat2, lon2, h2;
    LocalToEcefDelta(offset.X(), offset.Y(), offset.Z(), lat, lon, x, y, z);
    const C_Vector3 q = p + C_Vector3(x, y, z);
    CartToGeodOlson(q.X(), q.Y(), q.Z(), kWgs84A, kWgs84F, lat2, lon2, h2);
    frame.Forward(lat2 / kDegree, lon2 / kDegree, h2, east, north, up);
    EXPECT_NEAR(north, offset.X(), 2e-8);
    EXPECT_NEAR(east, offset.Y(), 2e-8);
    EXPECT_NEAR(up, offset.Z(), 2e-8);
    EXPECT_NEAR(PointDistance(p, q, false), offset.Norm(), 4e-9);
    EXPECT_NEAR(PointDistance(p, q, true), offset.Norm2(), 4e-9);
  }
}

// ---- covariances ---------------------------------------------------------------------------------------------------

// At (0, 0) north, east and up are Z, Y and X; at (0, 90 degrees east) they are Z, -X and Y.
TEST(Geodesy, CovariancesOnTheEquator) {
  const double ecef[6] = {1, 2, 3, 0.1, 0.2, 0.3};  // xx yy zz xy xz yz
  const double atGreenwich[6] = {3, 2, 1, 0.3, 0.2, 0.1};
  const double atNinetyEast[6] = {3, 1, 2, -0.2, 0.3, -0.1};
  for (const auto& [lon, expected] : {std::pair(0.0, atGreenwich), {kPi / 2, atNinetyEast}}) {
    double local[6], back[6];
    CovEcefToLocal(0, lon, 1e9, ecef, local);
    CovLocalToEcef(0, lon, -1e9, expected, back);
    for (int i = 0; i < 6; ++i) {
      EXPECT_NEAR(local[i], expected[i], 1e-15) << i;
      EXPECT_NEAR(back[i], ecef[i], 1e-15) << i;
    }
  }
}

TEST(Geodesy, CovariancesReturnInPlace) {
  const double lat = 0.7, lon = -2.5, original[6] = {0.4, 1, 2, -0.9, 0.3, 0.7};
  double rotated[6];
  std::copy_n(original, 6, rotated);
  CovEcefToLocal(lat, lon, 0, rotated, rotated);
  for (const auto rotate : {CovEcefToLocal, CovLocalToEcef}) {  // refused
    rotate(lat, lon, 0, nullptr, rotated);
    rotate(lat, lon, 0, rotated, nullptr);
  }
  CovLocalToEcef(lat, lon, 0, rotated, rotated);
  for (int i = 0; i < 6; ++i) EXPECT_NEAR(rotated[i], original[i], 8e-15);
}

// ---- satellite geometry --------------------------------------------------------------------------------------------

void ExpectVector(const C_Vector3& actual, double x, double y, double z) {
  EXPECT_NEAR(actual.X(), x, 1e-15);
  EXPECT_NEAR(actual.Y(), y, 1e-15);
  EXPECT_NEAR(actual.Z(), z, 1e-15);
}

// Orthonormal and oriented.
TEST(Geodesy, OrbitFrameOfAnyOrbit) {
  const C_Vector3 velocity(1500, -2500, 900), position(12e6, 15e6, -18e6);
  C_Vector3 e1, e2, e3;
  OrbitFrame(velocity, position, e1, e2, e3);
  ExpectVector(C_Vector3(e1.Dot(e1), e2.Dot(e2), e3.Dot(e3)), 1, 1, 1);
  ExpectVector(C_Vector3(e1.Dot(e2), e2.Dot(e3), e3.Dot(e1)), 0, 0, 0);
  EXPECT_NEAR(e1.Dot(position), position.Norm(), 1e-7);
  EXPECT_NEAR(e3.Dot(velocity), 0, 1e-12);
  EXPECT_GT(e2.Dot(velocity), 0);
  ExpectVector(e1.Cross(e3) + C_Vector3(-e2.X(), -e2.Y(), -e2.Z()), 0, 0, 0);
  const C_Vector3 global = OrbitFrameToGlobal(velocity, position, C_Vector3(0.1, 0.2, 0.3));
  ExpectVector(C_Vector3(global.Dot(e2), global.Dot(e1), global.Dot(e3)), 0.1, 0.2, 0.3);
  C_Vector3 a = velocity, b = position, c;
  OrbitFrame(a, b, a, b, c);  // results over the arguments
  ExpectVector(a - e1, 0, 0, 0);
  ExpectVector(b - e2, 0, 0, 0);
  OrbitFrame(position, position, e1, e2, e3);
  ExpectVector(e2 + e3, 0, 0, 0);
  OrbitFrame(position, C_Vector3(), e1, e2, e3);
  EXPECT_TRUE(std::isnan(e1.X()) && std::isnan(e2.Y()));
  ExpectVector(e3, 0, 0, 0);
}

TEST(Geodesy, UnitVectors) {
  const C_Vector3 a(3, 4, 0), b(3, 0, 0);
  ExpectVector(UnitFromTo(a, b), 0, 1, 0);
  ExpectVector(UnitToFrom(a, b), 0, -1, 0);
  ExpectVector(NegUnit(a), -0.6, -0.8, 0);
  ExpectVector(UnitFromTo(a, a) + UnitToFrom(b, b) + NegUnit(C_Vector3()), 0, 0, 0);
}

TEST(Geodesy, SatelliteBodyAxes) {
  C_Vector3 x, y, z;
  SatBodyAxes(C_Vector3(26e6, 0, 0), C_Vector3(0, 1.5e11, 0), x, y, z);
  ExpectVector(z, -1, 0, 0);  // towards the Earth
  ExpectVector(y, 0, 0, -1);
  ExpectVector(x, 0, 1, 0);  // the Sun's side
  SatBodyAxes(C_Vector3(26e6, 0, 0), C_Vector3(1.5e11, 0, 0), x, y, z);
  ExpectVector(z, -1, 0, 0);
  ExpectVector(x, 0, 0, 0);  // Earth, satellite and Sun in line
}

}  // namespace
