// The local frame (north, east, up) of a point: the one place that builds its rotation and applies it.
#ifndef VELAGNSS_GEO_LOCAL_FRAME_H
#define VELAGNSS_GEO_LOCAL_FRAME_H

#include "geo/Matrix.h"
#include "geo/Vector3.h"

namespace ALGO {

// The rotation F R2(lat - pi/2) R3(lon - pi) from ECEF into the local frame, F = diag(1, -1, 1): its rows are the unit
// vectors north, east and up. 3x3; angles in radians.
C_Matrix EcefToLocalRotation(double lat, double lon);

// The matrix whose columns are the unit vectors north, east and up in ECEF: the rotation back.
C_Matrix LocalToEcefRotation(double lat, double lon);

// `rotation` * `v`.
C_Vector3 Rotate(const C_Matrix& rotation, const C_Vector3& v);

// `rotation` * `covariance` * transpose of `rotation`, 3x3 all of them.
C_Matrix RotateCovariance(const C_Matrix& rotation, const C_Matrix& covariance);

}  // namespace ALGO

#endif  // VELAGNSS_GEO_LOCAL_FRAME_H
