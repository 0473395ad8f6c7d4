// The covariance of a position, from the local frame to the Earth's axes and back, and its inverse.
#include <cstdio>

#include "geo/Geodesy.h"
#include "geo/Matrix.h"

int main() {
  const double latitude = ALGO::DmsToRad(48, 7, 2.28);
  const double longitude = ALGO::DmsToRad(11, 31, 0.0);

  // North, east and up, in m^2: nn ee uu ne nu eu.
  const double local[6] = {0.0004, 0.0009, 0.0025, 0.0001, 0.0, 0.0};
  double ecef[6];
  ALGO::CovLocalToEcef(latitude, longitude, 0.0, local, ecef);

  C_Matrix covariance(3, 3), inverse(3, 3), product(3, 3);
  const int at[3][3] = {{0, 3, 4}, {3, 1, 5}, {4, 5, 2}};
  for (unsigned int i = 0; i < 3; ++i)
    for (unsigned int j = 0; j < 3; ++j) covariance(i, j) = ecef[at[i][j]];

  inverse = covariance;
  if (inverse.SymInv() == 0) return 1;  // singular: also reported on standard output
  C_Matrix::Multiply(covariance, inverse, product, false);
  std::printf("trace %.6f m^2, C times its inverse: %.6f %.6f %.6f\n",
              covariance(0, 0) + covariance(1, 1) + covariance(2, 2), product(0, 0), product(1, 1), product(2, 2));

  // The rotation done step by step: R C R', with R = R2 R3, whose rows are up, east and north.
  C_Matrix r3(3, 3), r2(3, 3), turned(3, 3);
  r3.SetR3(longitude);
  r2.SetR2(-latitude);
  C_Matrix::Multiply(r2, r3, product, false);  // up, east, north
  C_Matrix::Multiply(product, covariance, turned, false);
  C_Matrix::MultiplyByTranspose(turned, product, covariance, false);
  std::printf("up %.6f, east %.6f, north %.6f m^2\n", covariance(0, 0), covariance(1, 1), covariance(2, 2));
}
