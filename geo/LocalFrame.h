// The local frame (north, east, up) of a point.
//
// Internal. The one place that builds its rotation and applies it, so that positions, distances and covariances agree
// to the last bit.
#ifndef VELAGNSS_GEO_LOCAL_FRAME_H
#define VELAGNSS_GEO_LOCAL_FRAME_H

#include "geo/Matrix.h"
#include "geo/Vector3.h"

namespace velagnss::geo {

// The rotation F R2(lat - pi/2) R3(lon - pi) from ECEF into the local frame, F = diag(1, -1, 1): its rows are the unit
// vectors north, east and up. 3x3; angles in radians.
C_Matrix EcefToLocalRotation(double lat, double lon);

// The rotation back: its columns are the unit vectors north, east and up in ECEF. Not the transpose bit by bit, because
// it is computed from the sines of the angles themselves.
C_Matrix LocalToEcefRotation(double lat, double lon);

// `rotation` * `v`.
C_Vector3 Rotate(const C_Matrix& rotation, const C_Vector3& v);

// `rotation` * `covariance` * transpose of `rotation`; all are 3x3.
C_Matrix RotateCovariance(const C_Matrix& rotation, const C_Matrix& covariance);

}  // namespace velagnss::geo

#endif  // VELAGNSS_GEO_LOCAL_FRAME_H
