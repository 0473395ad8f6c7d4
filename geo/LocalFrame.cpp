#include "geo/LocalFrame.h"

#include <cmath>

#include "geo/Angle.h"

namespace velagnss::geo {
namespace {

C_Matrix FromRows(const double (&rows)[3][3]) {
  C_Matrix matrix(3, 3);
  for (unsigned int i = 0; i < 3; ++i)
    for (unsigned int j = 0; j < 3; ++j) matrix(i, j) = rows[i][j];
  return matrix;
}

}  // namespace

// The product of the three factors, written out. Every element is a product of at most two of their elements, so that
// multiplying the matrices would give the same bits, only slower.
C_Matrix EcefToLocalRotation(double lat, double lon) {
  // Not sin(lat) for c2 and so on, although that is the same angle: the last bits would differ.
  const double c2 = std::cos(lat - kPi / 2);
  const double s2 = std::sin(lat - kPi / 2);
  const double c3 = std::cos(lon - kPi);
  const double s3 = std::sin(lon - kPi);
  return FromRows({
      {c2 * c3, c2 * s3, -s2},  // north
      {s3, -c3, 0.0},           // east
      {s2 * c3, s2 * s3, c2},   // up
  });
}

C_Matrix LocalToEcefRotation(double lat, double lon) {
  const double cosLat = std::cos(lat);
  const double sinLat = std::sin(lat);
  const double cosLon = std::cos(lon);
  const double sinLon = std::sin(lon);
  return FromRows({
      {-sinLat * cosLon, -sinLon, cosLat * cosLon},
      {-sinLat * sinLon, cosLon, cosLat * sinLon},
      {cosLat, 0.0, sinLat},
  });
}

// By components: turning the vector into a matrix would cost more than the product.
C_Vector3 Rotate(const C_Matrix& rotation, const C_Vector3& v) {
  const auto row = [&](unsigned int i) {
    return rotation(i, 0) * v.X() + rotation(i, 1) * v.Y() + rotation(i, 2) * v.Z();
  };
  return C_Vector3(row(0), row(1), row(2));
}

C_Matrix RotateCovariance(const C_Matrix& rotation, const C_Matrix& covariance) {
  C_Matrix product(3, 3);
  C_Matrix rotated(3, 3);
  C_Matrix::Multiply(rotation, covariance, product, false);
  C_Matrix::MultiplyByTranspose(product, rotation, rotated, false);
  return rotated;
}

}  // namespace velagnss::geo
