// A point on or near the Earth, held at once in Cartesian and in geodetic form on WGS-84.
//
// The main header of the geometry: from a receiver's position in either form it computes the other form, elevation and
// azimuth of satellites, and positions and accuracies in the local frame (north, east, up). The underlying functions,
// for any ellipsoid, are in geo/Geodesy.h.
//
//   const double site[3] = {0.8422, 0.1989, 560.0};                          // rad, rad, m
//   C_PointCoordinate station(C_PointCoordinate::COORD_GEODETIC, site);
//   double elevation, azimuth;
//   station.ElevationAndAzimuth(satellite, true, elevation, azimuth);        // `satellite`: ECEF, m
//
// The Cartesian form is Earth-centered, Earth-fixed (ECEF) X, Y, Z in meters. The geodetic form is latitude and
// longitude in radians, north and east positive, and the height above the ellipsoid in meters.
#ifndef VELAGNSS_GEO_POINT_COORDINATE_H
#define VELAGNSS_GEO_POINT_COORDINATE_H

#include "geo/Matrix.h"
#include "geo/Vector3.h"
#include "velagnss_export.h"

// Setting one form invalidates the other, which is computed when an operation needs it and then cached. Sines and
// cosines of latitude and longitude are cached as well. A value that is not set is NA_DOUBLE (geo/NotAvailable.h),
// compared by value.
//
// No operation allocates memory or reports an error: on a point without coordinates the results are NA_DOUBLE,
// coordinates that are not finite give NaN.
class VELAGNSS_API C_PointCoordinate {
 public:
  // Which form three numbers are in.
  enum eCoordType : unsigned int {
    COORD_CARTESIAN = 0,  // X, Y, Z in meters, ECEF
    COORD_GEODETIC = 1,   // latitude and longitude in radians, height in meters; so is every other number but 0
  };

  // A point without coordinates.
  C_PointCoordinate();

  // The same, followed by Set().
  C_PointCoordinate(eCoordType type, const double* coordinates);
  C_PointCoordinate(eCoordType type, const C_Vector3& coordinates);
  C_PointCoordinate(eCoordType type, const double& c0, const double& c1, const double& c2);

  // Memberwise, the caches included.
  C_PointCoordinate(const C_PointCoordinate& other) = default;
  C_PointCoordinate& operator=(const C_PointCoordinate& other) = default;
  ~C_PointCoordinate() = default;

  // Returns to a point without coordinates: everything is NA_DOUBLE.
  void Reset();

  // Stores one form without checking its range, and invalidates the other. Nothing is converted yet. With a null
  // pointer nothing is done.
  void Set(eCoordType type, const double* coordinates);
  void Set(eCoordType type, const C_Vector3& coordinates);
  void Set(eCoordType type, const double& c0, const double& c1, const double& c2);

  // Copies both forms, their validity, and the cached sines and cosines, but not whether that cache is valid: this
  // point keeps its own flag. Known oddity, kept. Later operations are certain to give the results of `other` only if
  // the flag is not set, as after Set(), Reset() or AddDeltaXYZ(). Assignment copies everything.
  void Copy(const C_PointCoordinate& other);

  // The two forms; a form is meaningful while it is valid. ConvertToAllInternal() makes both valid.
  const C_Vector3& Cartesian() const { return m_cart; }
  const C_Vector3& Geodetic() const { return m_geod; }
  bool IsCartesianValid() const { return m_cartValid; }
  bool IsGeodeticValid() const { return m_geodValid; }

  // True when the horizontal part of the triple is 1000 m or more (or NaN). A shorter one cannot be an ECEF position on
  // Earth, except within a kilometer of the poles: it is latitude, longitude and height.
  static bool PossibleCartesian(const C_Vector3& triple);

  // Makes both forms and the cache valid. Computes the geodetic form from the Cartesian one whenever that is valid (by
  // ALGO::CartToGeodOlson), else the Cartesian form from the geodetic one (by ALGO::GeodToCartAB).
  void ConvertToAllInternal();

  // Makes the cached sines and cosines valid, and the geodetic form first if necessary. Without coordinates they become
  // NA_DOUBLE.
  void Set_CosSin_LatLon();

  // Moves the point by an ECEF offset in meters. A point without coordinates is reset.
  void AddDeltaXYZ(C_Vector3 d);

  // Elevation above the horizon, [-pi/2, pi/2], and azimuth from north through east, [0, 2 pi), both in radians, of an
  // ECEF position seen from this point. Without `wantAzimuth` the azimuth is not computed and `azim` stays unchanged.
  // `los`, if not null, receives target - point in meters, not a unit vector. Without coordinates elevation and azimuth
  // (if wanted) are NA_DOUBLE and `los` stays unchanged.
  //
  // The elevation is NaN for the point itself and can be NaN for a target straight down. A negative azimuth so small
  // that adding 2 pi rounds it away gives 2 pi.
  //
  // Accuracy: elevation 3e-8 rad at the zenith, up to 80 degrees 0.1 um across the line of sight; azimuth 40 nm across
  // the line of sight.
  void ElevationAndAzimuth(const C_Vector3& target, bool wantAzimuth, double& elev, double& azim,
                           C_Vector3* los = nullptr);

  // The same in single precision, -3.4e38 (NA_FLOAT) for NA_DOUBLE. Without `wantAzimuth` the azimuth is 0.
  void ElevationAndAzimuth(const C_Vector3& target, bool wantAzimuth, float& elev, float& azim,
                           C_Vector3* los = nullptr);

  // target - point in the local frame of this point: (north, east, up) in meters, from an ECEF target. Three times
  // NA_DOUBLE without coordinates.
  C_Vector3 RangeLocal(const C_Vector3& target);

  // Standard deviations (north, east, up) in meters of a position, from the diagonal of its ECEF covariance: the square
  // roots of the rotated diagonal. `cartVar` holds variances in m^2, not standard deviations; a negative result under
  // the root gives NaN. Three times NA_DOUBLE without coordinates.
  C_Vector3 Cart2GeodSigma(const C_Vector3& cartVar);

  // A 3x3 ECEF covariance in the local frame (north, east, up). The 3x3 zero matrix without coordinates or when `cov`
  // is not 3x3.
  C_Matrix Cart2GeodCovariance(const C_Matrix& cov);

 private:
  bool MakeCurrent();

  bool m_cartValid;
  C_Vector3 m_cart;  // ECEF, m
  bool m_geodValid;
  C_Vector3 m_geod;  // latitude and longitude, rad; height, m
  bool m_trigValid;
  double m_cosLat;
  double m_sinLat;
  double m_cosLon;
  double m_sinLon;
};

#endif  // VELAGNSS_GEO_POINT_COORDINATE_H
