// A point on or near the Earth, held at once in Cartesian and in geodetic form on WGS-84.
//
// This is the chief header of the geometry: a receiver's position goes in in either form, and out come the other form,
// elevation and azimuth of satellites, and positions and accuracies in the local frame (north, east, up). The bare
// functions behind it, for any ellipsoid, are in geo/Geodesy.h.
//
//   const double site[3] = {0.8422, 0.1989, 560.0};                          // rad, rad, m
//   C_PointCoordinate station(C_PointCoordinate::COORD_GEODETIC, site);
//   double elevation, azimuth;
//   station.ElevationAndAzimuth(satellite, true, elevation, azimuth);        // `satellite`: ECEF, m
//
// The Cartesian form is Earth-centred, Earth-fixed (ECEF) X, Y, Z in metres. The geodetic form is latitude and
// longitude in radians, north and east positive, and the height above the ellipsoid in metres.
#ifndef VELAGNSS_GEO_POINT_COORDINATE_H
#define VELAGNSS_GEO_POINT_COORDINATE_H

#include "geo/Matrix.h"
#include "geo/Vector3.h"
#include "velagnss_export.h"

// Setting a form makes the other one stale; it is computed when an operation needs it, and kept. Sines and cosines of
// latitude and longitude are kept likewise. What is not set holds NA_DOUBLE (geo/NotAvailable.h), compared by value.
//
// Nothing allocates, nothing reports an error: an operation on a point without coordinates gives NA_DOUBLE, coordinates
// that are not finite give NaN.
class VELAGNSS_API C_PointCoordinate {
 public:
  // Which form three numbers are in.
  enum eCoordType : unsigned int {
    COORD_CARTESIAN = 0,  // X, Y, Z in metres, ECEF
    COORD_GEODETIC = 1,   // latitude and longitude in radians, height in metres; and every other number that is not 0
  };

  // A point without coordinates.
  C_PointCoordinate();

  // As Set() on such a point.
  C_PointCoordinate(eCoordType type, const double* coordinates);
  C_PointCoordinate(eCoordType type, const C_Vector3& coordinates);
  C_PointCoordinate(eCoordType type, const double& c0, const double& c1, const double& c2);

  // Memberwise, the caches included.
  C_PointCoordinate(const C_PointCoordinate& other) = default;
  C_PointCoordinate& operator=(const C_PointCoordinate& other) = default;
  ~C_PointCoordinate() = default;

  // Back to a point without coordinates: everything NA_DOUBLE.
  void Reset();

  // Stores one form as it is, without a check of its range, and makes the other one stale. Nothing is converted yet. A
  // null pointer is refused and nothing done.
  void Set(eCoordType type, const double* coordinates);
  void Set(eCoordType type, const C_Vector3& coordinates);
  void Set(eCoordType type, const double& c0, const double& c1, const double& c2);

  // Copies both forms, which of them are current, and the values of the trigonometric cache, but not whether that cache
  // is current: this point keeps its own answer to that. Only after Set(), Reset() or AddDeltaXYZ(), when it is not,
  // are the results of later operations sure to be those of `other`; assignment copies everything.
  void Copy(const C_PointCoordinate& other);

  // The forms as they stand; meaningful while current. ConvertToAllInternal() makes them current.
  const C_Vector3& Cartesian() const { return m_cart; }
  const C_Vector3& Geodetic() const { return m_geod; }
  bool IsCartesianValid() const { return m_cartValid; }
  bool IsGeodeticValid() const { return m_geodValid; }

  // True when the horizontal part of the triple is 1000 m or more (or NaN). One that is shorter cannot be an ECEF
  // position on Earth, outside the last kilometre around the poles: it is latitude, longitude and height.
  static bool PossibleCartesian(const C_Vector3& triple);

  // Brings both forms and the cache up to date: the geodetic form from the Cartesian one whenever that is current (by
  // ALGO::CartToGeodOlson), else the Cartesian form from the geodetic one (by ALGO::GeodToCartAB).
  void ConvertToAllInternal();

  // Brings the sines and cosines up to date, the geodetic form first where it takes that. Without coordinates they
  // become NA_DOUBLE.
  void Set_CosSin_LatLon();

  // Moves the point by an ECEF offset in metres. A point without coordinates is reset.
  void AddDeltaXYZ(C_Vector3 d);

  // Elevation above the horizon, [-pi/2, pi/2], and azimuth from north through east, [0, 2 pi), both in radians, of an
  // ECEF position seen from here. Without `wantAzimuth` the azimuth is not computed and `azim` left alone. `los`, when
  // not null, receives target - point in metres, not a unit vector. Without coordinates elevation and azimuth (when
  // wanted) are NA_DOUBLE and `los` is left alone.
  //
  // The elevation is NaN for the point itself and can be for a target straight down. An azimuth that is negative but
  // lost against 2 pi comes out as 2 pi.
  //
  // Accuracy: elevation 3e-8 rad at the zenith, up to 80 degrees 0.1 um across the line of sight; azimuth 40 nm
  // likewise.
  void ElevationAndAzimuth(const C_Vector3& target, bool wantAzimuth, double& elev, double& azim,
                           C_Vector3* los = nullptr);

  // The same in single precision, -3.4e38 (NA_FLOAT) for NA_DOUBLE. Without `wantAzimuth` the azimuth is 0.
  void ElevationAndAzimuth(const C_Vector3& target, bool wantAzimuth, float& elev, float& azim,
                           C_Vector3* los = nullptr);

  // target - point in the local frame of this point: (north, east, up) in metres, from an ECEF target. Three times
  // NA_DOUBLE without coordinates.
  C_Vector3 RangeLocal(const C_Vector3& target);

  // Standard deviations (north, east, up) of a position from the diagonal of its ECEF covariance: the square roots of
  // the rotated diagonal. `cartVar` is taken as it is, as variances in m^2; a negative result under the root gives NaN.
  // Three times NA_DOUBLE without coordinates.
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
