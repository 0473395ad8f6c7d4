#include "geo/PointCoordinate.h"

#include <Eigen/Dense>
#include <GeographicLib/Geocentric.hpp>
#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "geo/Geodesy.h"
#include "geo/NotAvailable.h"
#include "tests/Cases.h"

namespace {

using C = C_PointCoordinate;

constexpr double kPi = 3.14159265358979323846;
constexpr double kDegree = kPi / 180;
constexpr double kA = 6378137.0;
constexpr double kB = 6356752.314245179;
const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

void ExpectNear(const C_Vector3& actual, double x, double y, double z, double tolerance) {
  EXPECT_NEAR(actual.X(), x, tolerance);
  EXPECT_NEAR(actual.Y(), y, tolerance);
  EXPECT_NEAR(actual.Z(), z, tolerance);
}

void ExpectNotSet(const C_Vector3& actual) { ExpectNear(actual, NA_DOUBLE, NA_DOUBLE, NA_DOUBLE, 0); }

// ---- the two forms -------------------------------------------------------------------------------------------------

TEST(PointCoordinate, EachFormGivesTheOther) {
  double x, y, z;
  ALGO::GeodToCartAB(-0.5, 2.5, 50.0, kA, kB, x, y, z);
  C point(C::COORD_GEODETIC, -0.5, 2.5, 50.0);
  EXPECT_TRUE(point.IsGeodeticValid() && !point.IsCartesianValid());
  point.ConvertToAllInternal();
  EXPECT_TRUE(point.IsGeodeticValid() && point.IsCartesianValid());
  ExpectNear(point.Cartesian(), x, y, z, 0);

  const C_Vector3 cartesian(z, x, y);
  point.Set(C::COORD_CARTESIAN, cartesian);
  EXPECT_TRUE(point.IsCartesianValid() && !point.IsGeodeticValid());
  ExpectNear(point.Geodetic(), -0.5, 2.5, 50.0, 0);  // nothing is converted, nor cleared, before it is asked for
  point.ConvertToAllInternal();
  EXPECT_TRUE(point.IsGeodeticValid() && point.IsCartesianValid());
  double lat, lon, h;
  ALGO::CartToGeodOlson(z, x, y, kA, ALGO::kWgs84F, lat, lon, h);
  ExpectNear(point.Geodetic(), lat, lon, h, 0);
  ExpectNear(point.Cartesian(), z, x, y, 0);
}

TEST(PointCoordinate, StartsWithoutCoordinates) {
  C point;
  for (int round = 0; round < 2; ++round) {
    EXPECT_FALSE(point.IsCartesianValid() || point.IsGeodeticValid());
    ExpectNotSet(point.Cartesian());
    ExpectNotSet(point.Geodetic());
    point.ConvertToAllInternal();
    point.Set_CosSin_LatLon();
    point.AddDeltaXYZ(C_Vector3(1, 2, 3));
    const double* const null = nullptr;
    point.Set(C::COORD_CARTESIAN, null);
    EXPECT_FALSE(point.IsCartesianValid() || point.IsGeodeticValid());
    point.Set(C::COORD_CARTESIAN, kA, 0, 0);
    point.ConvertToAllInternal();
    point.Reset();
  }
}

TEST(PointCoordinate, LastFormSetIsTheOneThatCounts) {
  const double geodetic[] = {0.5, 1.0, 50.0};
  C point(C::COORD_CARTESIAN, kA, 0, 0);
  point.Set(static_cast<C::eCoordType>(77), geodetic);  // whatever is not Cartesian is geodetic
  EXPECT_TRUE(point.IsGeodeticValid() && !point.IsCartesianValid());
  point.ConvertToAllInternal();
  double x, y, z;
  ALGO::GeodToCartAB(0.5, 1.0, 50.0, kA, kB, x, y, z);
  ExpectNear(point.Cartesian(), x, y, z, 0);
  point.ConvertToAllInternal();  // now the Cartesian form wins: the geodetic one is computed anew
  ExpectNear(point.Geodetic(), 0.5, 1.0, 50.0, 5e-9);
}

TEST(PointCoordinate, PossibleCartesianLooksAtTheHorizontalPart) {
  EXPECT_FALSE(C::PossibleCartesian(C_Vector3(999.9, 0, 6.4e6)));
  EXPECT_TRUE(C::PossibleCartesian(C_Vector3(1000, 0, 0)));
  EXPECT_TRUE(C::PossibleCartesian(C_Vector3(-600, 800, 0)));
  EXPECT_TRUE(C::PossibleCartesian(C_Vector3(kNan, 0, 0)));
  EXPECT_FALSE(C::PossibleCartesian(C_Vector3(kPi, kPi, 9000)));
}

TEST(PointCoordinate, AddDeltaMovesTheCartesianForm) {
  C point(C::COORD_GEODETIC, 0, 0, 0);
  point.AddDeltaXYZ(C_Vector3(10, 20, 30));
  EXPECT_TRUE(point.IsCartesianValid() && !point.IsGeodeticValid());
  ExpectNear(point.Cartesian(), kA + 10, 20, 30, 1e-9);
  point.Set(C::COORD_CARTESIAN, 1e6, 2e6, 3e6);
  point.AddDeltaXYZ(point.Cartesian());  // its own vector as the offset
  ExpectNear(point.Cartesian(), 2e6, 4e6, 6e6, 0);
  double elevation, azimuth;
  point.ElevationAndAzimuth(C_Vector3(4e6, 8e6, 12e6), true, elevation, azimuth);  // with the new place's sines
  EXPECT_NEAR(elevation, kPi / 2, 0.01);
}

// Copy() takes the cached sines over but not whether they are current. A point whose cache is current then goes on with
// the values of the other one, even if that never had any.
TEST(PointCoordinate, CopyKeepsItsOwnCacheFlag) {
  const C_Vector3 target(2e7, 2e7, 2e7);
  double expected, elevation, azimuth;
  C unconverted(C::COORD_GEODETIC, 0.5, 1.0, 0);
  C converted(unconverted);
  converted.ElevationAndAzimuth(target, false, expected, azimuth);

  C fresh;
  fresh.Copy(unconverted);
  EXPECT_TRUE(fresh.IsGeodeticValid() && !fresh.IsCartesianValid());
  fresh.ElevationAndAzimuth(target, false, elevation, azimuth);
  EXPECT_EQ(elevation, expected);

  C used(C::COORD_GEODETIC, 0.1, 0.1, 0);
  used.ConvertToAllInternal();
  used.Copy(converted);
  used.ElevationAndAzimuth(target, false, elevation, azimuth);
  EXPECT_EQ(elevation, expected);
  used.Copy(unconverted);
  used.ElevationAndAzimuth(target, false, elevation, azimuth);
  EXPECT_EQ(elevation, kPi / 2);  // a huge "sine" from cached values that are not set, clamped
}

// ---- seen from the point -------------------------------------------------------------------------------------------

TEST(PointCoordinate, ViewWithoutCoordinatesOrAzimuth) {
  C empty, point(C::COORD_CARTESIAN, kA, 0, 0);
  const C_Vector3 target(kA, 1e6, 0);
  double elevation = 1, azimuth = 2;
  float narrowElevation = 1, narrowAzimuth = 2;
  C_Vector3 lineOfSight(7, 7, 7);
  empty.ElevationAndAzimuth(target, false, elevation, azimuth, &lineOfSight);
  EXPECT_EQ(elevation, NA_DOUBLE);
  EXPECT_EQ(azimuth, 2);
  ExpectNear(lineOfSight, 7, 7, 7, 0);
  empty.ElevationAndAzimuth(target, true, elevation, azimuth);
  EXPECT_EQ(azimuth, NA_DOUBLE);
  empty.ElevationAndAzimuth(target, true, narrowElevation, narrowAzimuth);
  EXPECT_EQ(narrowElevation, NA_FLOAT);
  EXPECT_EQ(narrowAzimuth, NA_FLOAT);
  empty.ElevationAndAzimuth(target, false, narrowElevation, narrowAzimuth);
  EXPECT_EQ(narrowAzimuth, 0);
  ExpectNotSet(empty.RangeLocal(target));
  ExpectNotSet(empty.Cart2GeodSigma(target));
  azimuth = 2;
  point.ElevationAndAzimuth(target, false, elevation, azimuth);
  EXPECT_EQ(azimuth, 2);
}

// No clamp from below, no direction to the point itself, nothing but NaN from what is not finite; no hang in any case.
TEST(PointCoordinate, ViewOfOddTargets) {
  C point(C::COORD_CARTESIAN, kA, 0, 0);
  double elevation, azimuth;
  point.ElevationAndAzimuth(C_Vector3(0, 0, 0), true, elevation, azimuth);
  EXPECT_EQ(elevation, -kPi / 2);
  point.ElevationAndAzimuth(point.Cartesian(), true, elevation, azimuth);
  EXPECT_TRUE(std::isnan(elevation));
  EXPECT_EQ(azimuth, 0);
  for (const double odd : {kNan, kInfinity, -kInfinity}) {
    for (int i = 0; i < 3; ++i) {
      double place[] = {kA, 1, 1}, far[] = {2 * kA, 1, 1};
      place[i] = far[i] = odd;
      point.ElevationAndAzimuth(C_Vector3(far), true, elevation, azimuth);
      EXPECT_TRUE(std::isnan(elevation));
      C(C::COORD_CARTESIAN, place).ElevationAndAzimuth(C_Vector3(far), true, elevation, azimuth);
      EXPECT_TRUE(std::isnan(elevation));
      C(C::COORD_GEODETIC, place).ElevationAndAzimuth(C_Vector3(1, 2, 3), true, elevation, azimuth);
      EXPECT_TRUE(std::isnan(elevation));
    }
  }
  C(C::COORD_CARTESIAN, 0, 0, 0).ElevationAndAzimuth(C_Vector3(1, 2, 3), true, elevation, azimuth);
  EXPECT_TRUE(std::isnan(elevation));  // the Earth's centre has no latitude
}

TEST(PointCoordinate, SinesNeedTheGeodeticForm) {
  C cartesian(C::COORD_CARTESIAN, 0, kA, 0);
  cartesian.Set_CosSin_LatLon();
  EXPECT_TRUE(cartesian.IsGeodeticValid());
}

// ---- against GeographicLib -----------------------------------------------------------------------------------------

class PointReference : public testing::Test {
 protected:
  double Uniform(double low, double high) {
    return low + (high - low) * static_cast<double>(m_generator() >> 11) * 0x1p-53;
  }

  // A place anywhere, the poles included, its ECEF position, and the rotation into its local frame (north, east, up).
  void NextPlace(int round) {
    m_lat = round % 50 != 0 ? Uniform(-90, 90) : round % 100 != 0 ? 90 : -90;
    m_lon = Uniform(-180, 180);
    m_h = Uniform(-1e3, 1e4);
    std::vector<double> axes(9);  // a row for each of X, Y, Z; columns east, north, up
    GeographicLib::Geocentric::WGS84().Forward(m_lat, m_lon, m_h, m_position[0], m_position[1], m_position[2], axes);
    const Eigen::Map<const Eigen::Matrix3d> rows(axes.data());  // read column by column: rows east, north, up
    m_rotation << rows.row(1), rows.row(0), rows.row(2);
    m_point.Set(C::COORD_GEODETIC, m_lat * kDegree, m_lon * kDegree, m_h);
  }

  std::mt19937_64 m_generator{7};
  double m_lat, m_lon, m_h;
  Eigen::Vector3d m_position;
  Eigen::Matrix3d m_rotation;
  C m_point;
};

// A quarter of the targets is straight up or nearly so: there the sine of the elevation is 1, by rounding often more.
TEST_F(PointReference, ElevationAzimuthAndLocalRange) {
  for (int round = 0; round < 20000; ++round) {
    NextPlace(round);
    const double distance = std::pow(10, Uniform(3, 7.6));
    const double zenithAngle = round % 8 == 0   ? 0
                               : round % 8 == 4 ? std::pow(10, Uniform(-10, -1))
                                                : Uniform(10 * kDegree, 170 * kDegree);
    const double direction = Uniform(-kPi, kPi), horizontal = distance * std::sin(zenithAngle);
    const Eigen::Vector3d wanted(horizontal * std::cos(direction), horizontal * std::sin(direction),
                                 distance * std::cos(zenithAngle));
    const Eigen::Vector3d target = m_position + m_rotation.transpose() * wanted, offset = target - m_position;
    const Eigen::Vector3d local = m_rotation * offset;
    const double expectedElevation = std::atan2(local[2], std::hypot(local[0], local[1]));

    double elevation, azimuth;
    float narrowElevation, narrowAzimuth;
    C_Vector3 lineOfSight;
    const C_Vector3 given(target[0], target[1], target[2]);
    if (round % 3 == 0 && round % 50 != 0) m_point.Set(C::COORD_CARTESIAN, m_position.data());
    m_point.ElevationAndAzimuth(given, true, elevation, azimuth, &lineOfSight);
    m_point.ElevationAndAzimuth(given, true, narrowElevation, narrowAzimuth);
    EXPECT_EQ(narrowElevation, static_cast<float>(elevation));
    EXPECT_EQ(narrowAzimuth, static_cast<float>(azimuth));
    ExpectNear(lineOfSight, offset[0], offset[1], offset[2], 8e-9);
    ExpectNear(m_point.RangeLocal(given), local[0], local[1], local[2], 4e-8);
    ASSERT_GE(azimuth, 0);
    ASSERT_LT(azimuth, 2 * kPi);
    const double error = std::fabs(elevation - expectedElevation);
    if (round % 4 == 0) {
      EXPECT_LT(error, 3e-8);
    } else {
      EXPECT_LT(error * distance, 1e-7);
      EXPECT_LT(std::fabs(std::remainder(azimuth - std::atan2(local[1], local[0]), 2 * kPi)) * horizontal, 5e-8);
    }
  }
}

TEST_F(PointReference, Covariances) {
  for (int round = 0; round < 2000; ++round) {
    NextPlace(round);
    const Eigen::Matrix3d root = Eigen::Matrix3d::NullaryExpr([this] { return Uniform(-1, 1); });
    const Eigen::Matrix3d covariance = root * root.transpose();
    const Eigen::Matrix3d expected = m_rotation * covariance * m_rotation.transpose();
    C_Matrix given(3, 3);
    for (unsigned int i = 0; i < 9; ++i) given(i / 3, i % 3) = covariance(i / 3, i % 3);
    const C_Matrix result = m_point.Cart2GeodCovariance(given);
    for (unsigned int i = 0; i < 9; ++i) EXPECT_NEAR(result(i / 3, i % 3), expected(i / 3, i % 3), 4e-15);

    const Eigen::Vector3d variances = covariance.diagonal();
    const Eigen::Matrix3d ofDiagonal = m_rotation * variances.asDiagonal() * m_rotation.transpose();
    const Eigen::Vector3d sigmas = ofDiagonal.diagonal().cwiseSqrt();
    ExpectNear(m_point.Cart2GeodSigma(C_Vector3(variances.data())), sigmas[0], sigmas[1], sigmas[2], 4e-15);
  }
}

TEST(PointCoordinate, CovariancesThatCannotBe) {
  C empty, point(C::COORD_CARTESIAN, kA, 0, 0);
  C_Matrix ones(3, 3), oblong(3, 4), roomy(6, 6, 3, 3);
  for (unsigned int i = 0; i < 9; ++i) ones(i / 3, i % 3) = roomy(i / 3, i % 3) = 1;
  for (const C_Matrix& zero : {empty.Cart2GeodCovariance(ones), point.Cart2GeodCovariance(oblong)}) {
    ASSERT_EQ(zero.Rows() * zero.Cols(), 9U);
    for (unsigned int i = 0; i < 9; ++i) EXPECT_EQ(zero(i / 3, i % 3), 0);
  }
  EXPECT_NEAR(point.Cart2GeodCovariance(roomy)(0, 2), 1, 1e-15);
  EXPECT_TRUE(std::isnan(point.Cart2GeodSigma(C_Vector3(-1, 1, 1)).Z()));  // the vertical one is x here
}

}  // namespace
