// Geodesy on an ellipsoid of revolution: conversions between Cartesian and geodetic coordinates, look angles, the
// inverse problem, covariances in the local frame, and the frames of satellite geometry.
//
// The functions keep no state and allocate nothing. Angles are radians, lengths meters. Cartesian coordinates are
// Earth-centered, Earth-fixed (ECEF): X through the Greenwich meridian, Z through the north pole. Geodetic coordinates
// are latitude (north positive), longitude (east positive) and height above the ellipsoid. The local frame of a point
// is (north, east, up), in that order: a left-handed triad.
//
// The ellipsoid is an argument: semi-major axis `a` with flattening `f` or semi-minor axis `b`. Accuracies are stated
// for WGS-84 and were measured against GeographicLib. Results are returned through the references at the end of the
// argument lists. Arguments that are not finite give NaN results unless stated otherwise, in bounded time.
#ifndef VELAGNSS_GEO_GEODESY_H
#define VELAGNSS_GEO_GEODESY_H

#include "geo/Vector3.h"
#include "velagnss_export.h"

namespace ALGO {

// WGS-84 (NIMA TR8350.2): a and f define it, b = a (1 - f).
inline constexpr double kWgs84A = 6378137.0;          // semi-major axis, m
inline constexpr double kWgs84F = 1 / 298.257223563;  // flattening
inline constexpr double kWgs84B = 6356752.314245179;  // semi-minor axis, m

// Geodetic to Cartesian, for (a, f) and for (a, b). The two differ by rounding only. Latitudes beyond +-pi/2 are not
// refused: the point is the one that the formula gives.
//
// Accuracy: 4 nm up to a height of 1000 km, 20 nm to 40,000 km.
VELAGNSS_API void GeodToCartAF(double lat, double lon, double h, double a, double f, double& x, double& y, double& z);
VELAGNSS_API void GeodToCartAB(double lat, double lon, double h, double a, double b, double& x, double& y, double& z);

// Cartesian to geodetic by three rounds of Newton's method on the latitude. The longitude is in [0, 2 pi); a negative
// one so small that adding 2 pi rounds it away gives 2 pi.
//
// Points closer than 0.1 mm to the axis get the latitude of the pole, those closer than 0.1 mm to the equatorial plane
// latitude 0. Where |X| < 0.1 mm, the poles included, the longitude is pi/2, or 3 pi/2 when Y is negative.
//
// Accuracy: latitude 2e-11 rad (0.1 mm; worst close to the poles and the equator) from -100 km upwards; height 6 nm
// from there to 1000 km, 2.5 um to 40,000 km. 8e-11 rad and 1 mm down to -5000 km. CartToGeodOlson() is better
// throughout.
VELAGNSS_API void CartToGeodIter(double x, double y, double z, double a, double f, double& lat, double& lon, double& h);

// Cartesian to geodetic by Olson's closed form (IEEE Transactions on Aerospace and Electronic Systems 32, 1996). The
// longitude is in [-pi, pi].
//
// Accuracy: latitude 7e-16 rad from -100 km upwards; height 6 nm to 1000 km, 23 nm to 40,000 km. Inside the Earth both
// are better than 1 mm from 500 km off its center; closer to it they are meaningless, and NaN at the center itself.
VELAGNSS_API void CartToGeodOlson(double x, double y, double z, double a, double f, double& lat, double& lon,
                                  double& h);

// A target as seen from a station.
struct S_LookAngles {
  double azimuth;    // radians from north through east, [0, 2 pi)
  double elevation;  // radians above the station's horizon (normal to the ellipsoid), [-pi/2, pi/2]
  double range;      // m
  double north;      // m, the target in the station's local frame
  double east;       // m
  double up;         // m
};

// Look angles from the geodetic point 1 (the station) to the geodetic point 2.
//
// Points closer than 1 nm to each other give six zeros. The elevation is 0 up to a range of 0.01 mm, the azimuth 0 up
// to a horizontal distance of 0.01 mm. If an argument is not finite, azimuth and elevation are 0 where the horizontal
// distance or the range is NaN.
//
// Accuracy, to satellites at 36,000 km: distances 30 nm, elevation 3e-8 rad at the zenith and 0.1 um across the line of
// sight up to 80 degrees, azimuth 3e-8 rad towards north and south.
VELAGNSS_API S_LookAngles GeodLookAngles(double lat1, double lon1, double h1, double lat2, double lon2, double h2,
                                         double a, double f);

// The local vector (n, e, u) at a latitude and longitude as an ECEF vector.
VELAGNSS_API void LocalToEcefDelta(double n, double e, double u, double lat, double lon, double& dx, double& dy,
                                   double& dz);

// The inverse problem: length of the geodesic from point 1 to point 2 on the ellipsoid, its azimuth at point 1 and the
// azimuth back to point 1 at point 2, both in [0, 2 pi) from north through east. Vincenty's method (Survey Review 23,
// 1975) in the form of the NGS inverse routine.
//
// Equal points (each angle within 1e-15) give distance 0 and azimuths 0 and pi; the azimuths are the same for points
// whose computed distance is below 0.1 um. Near the antipode of point 1 the method does not converge: after 1000 rounds
// all three results are NA_DOUBLE.
//
// Accuracy: distance 76 um, azimuths 0.1 mm across the track, for points more than 0.7 degrees from each other's
// antipode. Closer to it many pairs do not converge; for those that do, distances are within 76 um and azimuths within
// 0.3 mm.
VELAGNSS_API void GeodesicInverse(double lat1, double lon1, double lat2, double lon2, double a, double f,
                                  double& forwardAzimuth, double& backAzimuth, double& distance);

// An angle in whole degrees, whole minutes and seconds; for a negative angle all three are negative or 0. Rounding can
// turn a whole minute into 60 - 1e-9 seconds or so. Degrees beyond 32767 are given as 32767, with the sign of the
// angle; an angle that is not finite gives 0, 0 and NaN.
VELAGNSS_API void RadToDms(double angle, short& degrees, short& minutes, double& seconds);

// The angle of degrees, minutes and seconds. Their absolute values are added, and the result is negative if any of the
// three is below 0: DmsToRad(0, -30, 0) is minus half a degree.
VELAGNSS_API double DmsToRad(short degrees, short minutes, double seconds);

// Distance between two ECEF points: in space, or its part in the horizontal plane of `p` on WGS-84.
VELAGNSS_API double PointDistance(const C_Vector3& p, const C_Vector3& q, bool horizontal);

// Rotates a covariance matrix between the ECEF and the local frame of a point; the height is not used. The six elements
// are, in order, xx yy zz xy xz yz and nn ee uu ne nu eu (m^2). `ecef` and `local` may be the same array. With a null
// pointer nothing is done.
VELAGNSS_API void CovEcefToLocal(double lat, double lon, double h, const double ecef[6], double local[6]);
VELAGNSS_API void CovLocalToEcef(double lat, double lon, double h, const double local[6], double ecef[6]);

// The orbital frame of a satellite at `b`, with `a` usually its velocity: e1 along b, e3 along a x b, e2 = e1 x e3.
// The results may be the arguments. |b| = 0 gives NaN in e1 and e2; parallel a and b give e2 = e3 = 0.
VELAGNSS_API void OrbitFrame(const C_Vector3& a, const C_Vector3& b, C_Vector3& e1, C_Vector3& e2, C_Vector3& e3);

// The vector v.x e2 + v.y e1 + v.z e3, with the unit vectors of that frame.
VELAGNSS_API C_Vector3 OrbitFrameToGlobal(const C_Vector3& a, const C_Vector3& b, const C_Vector3& v);

// Unit vectors along a - b, b - a and -a; (0, 0, 0) for a vector of length 0.
VELAGNSS_API C_Vector3 UnitFromTo(const C_Vector3& a, const C_Vector3& b);
VELAGNSS_API C_Vector3 UnitToFrom(const C_Vector3& a, const C_Vector3& b);
VELAGNSS_API C_Vector3 NegUnit(const C_Vector3& a);

// The body axes of a navigation satellite at `r` that points its antenna at the Earth and its panels at the Sun at `s`
// (nominal yaw steering): z towards the Earth's center, y along the axis of the panels, x completing the right-handed
// triad on the side of the Sun. y and x are (0, 0, 0) when Earth, satellite and Sun are in line.
VELAGNSS_API void SatBodyAxes(const C_Vector3& r, const C_Vector3& s, C_Vector3& x, C_Vector3& y, C_Vector3& z);

}  // namespace ALGO

using ALGO::S_LookAngles;  // a record, named like the other records

#endif  // VELAGNSS_GEO_GEODESY_H
