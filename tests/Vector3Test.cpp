#include "geo/Vector3.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <type_traits>

namespace {

const double kNan = std::numeric_limits<double>::quiet_NaN();
const double kInfinity = std::numeric_limits<double>::infinity();

void ExpectVector(const C_Vector3& actual, double x, double y, double z) {
  const double expected[3] = {x, y, z};
  for (int i = 0; i < 3; ++i) {
    if (std::isnan(expected[i])) {
      EXPECT_TRUE(std::isnan(actual.Data()[i])) << "component " << i;
    } else {
      EXPECT_EQ(actual.Data()[i], expected[i]) << "component " << i;
    }
  }
}

static_assert(std::is_trivially_copyable_v<C_Vector3> && sizeof(C_Vector3) == 3 * sizeof(double));

TEST(Vector3, ConstructionAndAssignment) {
  const double numbers[] = {1, 2, 3}, *const null = nullptr;
  ExpectVector(C_Vector3(numbers), 1, 2, 3);
  ExpectVector(C_Vector3(null), 0, 0, 0);
  C_Vector3 v(4, 5, 6);
  v.Set(null);
  ExpectVector(v, 4, 5, 6);
  v.Set(C_Vector3(numbers));
  v.Set(v.Data()[2], v.Data()[0], v.Data()[1]);  // arguments that are components of the vector itself
  ExpectVector(v, 3, 1, 2);
  v.Set0(-7);
  v.Set1(-8);
  v.Set2(-9);
  ExpectVector(v, -7, -8, -9);
  v.Zero();
  ExpectVector(v, 0, 0, 0);
}

TEST(Vector3, Norms) {
  EXPECT_EQ(C_Vector3(3, 4, 12).Norm(), 13.0);
  EXPECT_EQ(C_Vector3(-8, -15, kNan).Norm2(), 17.0);  // horizontal
  EXPECT_EQ(C_Vector3(1e200, 0, 0).Norm(), kInfinity);
}

TEST(Vector3, UnitVectorOfADirection) {
  ExpectVector(C_Vector3(0, -2, 0).UnitVec(), 0, -1, 0);
  ExpectVector(C_Vector3(3, 0, 4).UnitVec(), 3.0 / 5, 0, 4.0 / 5);
  ExpectVector(C_Vector3(0, 0, 0).UnitVec(), 0, 0, 0);
  ExpectVector(C_Vector3(1e-200, 0, 0).UnitVec(), 0, 0, 0);  // the square is below the smallest double
  ExpectVector(C_Vector3(1, kNan, 0).UnitVec(), 0, 0, 0);
  ExpectVector(C_Vector3(kInfinity, 1, 0).UnitVec(), kNan, 0, 0);
}

TEST(Vector3, Arithmetic) {
  const C_Vector3 a(1, 2, 3), b(-4, 5, 0.5);
  EXPECT_EQ(a.Dot(b), 7.5);
  ExpectVector(a.Cross(b), 2 * 0.5 - 3 * 5, 3 * -4 - 1 * 0.5, 1 * 5 - 2 * -4);
  ExpectVector(a + b, -3, 7, 3.5);
  ExpectVector(a - b, 5, -3, 2.5);
  C_Vector3 sum = a;
  (sum += sum) += b;
  ExpectVector(sum, -2, 9, 6.5);
  sum.Scale(-2);
  ExpectVector(sum, 4, -18, -13);
  ExpectVector(sum.Cross(sum), 0, 0, 0);
}

}  // namespace
