// The formulas are written in the order of operations of their papers. Another order gives other last bits, and results
// are to be the same on every machine, so that simplifying an expression is a change of behavior.
#include "geo/Geodesy.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geo/Angle.h"
#include "geo/LocalFrame.h"
#include "geo/Matrix.h"
#include "geo/NotAvailable.h"

namespace ALGO {
namespace {

using velagnss::geo::EcefToLocalRotation;
using velagnss::geo::kDegreesPerRadian;
using velagnss::geo::kPi;
using velagnss::geo::kRadiansPerDegree;

// Where the six elements of a covariance, xx yy zz xy xz yz, are in the matrix.
constexpr unsigned char kCovarianceElements[6][2] = {{0, 0}, {1, 1}, {2, 2}, {0, 1}, {0, 2}, {1, 2}};

// Through matrices: `from` and `to` may be one array, and the elements below the diagonal are only implied.
void RotateSixElements(const C_Matrix& rotation, const double from[6], double to[6]) {
  C_Matrix covariance(3, 3);
  for (unsigned int k = 0; k < 6; ++k) {
    const auto [i, j] = kCovarianceElements[k];
    covariance(i, j) = covariance(j, i) = from[k];
  }
  const C_Matrix rotated = velagnss::geo::RotateCovariance(rotation, covariance);
  for (unsigned int k = 0; k < 6; ++k) to[k] = rotated(kCovarianceElements[k][0], kCovarianceElements[k][1]);
}

}  // namespace

// ---- conversions ---------------------------------------------------------------------------------------------------

void GeodToCartAF(double lat, double lon, double h, double a, double f, double& x, double& y, double& z) {
  const double e2 = (2 - f) * f;  // eccentricity squared
  const double cosLat = std::cos(lat);
  const double sinLat = std::sin(lat);
  const double n = a / std::sqrt(1 - e2 * (sinLat * sinLat));  // radius of curvature in the prime vertical
  x = (n + h) * cosLat * std::cos(lon);
  y = (n + h) * cosLat * std::sin(lon);
  z = (n * (1 - e2) + h) * sinLat;
}

void GeodToCartAB(double lat, double lon, double h, double a, double b, double& x, double& y, double& z) {
  const double a2 = a * a;
  const double b2 = b * b;
  // No eccentricity: it would have to be made from a and b with a loss of digits.
  const double cosLat = std::cos(lat);
  const double sinLat = std::sin(lat);
  const double n = std::sqrt(a2 * (cosLat * cosLat) + b2 * (sinLat * sinLat));  // a^2 over the radius of curvature
  x = (h + a2 / n) * cosLat * std::cos(lon);
  y = (h + a2 / n) * cosLat * std::sin(lon);
  z = (b2 / n + h) * sinLat;
}

namespace {

// m. Newton's method divides by the cosine and by the sine of the latitude: closer than this to the axis or to the
// plane of the equator one of them is lost in rounding.
constexpr double kOnAxis = 0.0001;

struct S_LatHeight {
  double lat;
  double h;
};

// The latitude is the zero of F = p/cos - Z/sin - a e^2 w, with w = 1/sqrt(1 - e^2 sin^2). After the last round the
// latitude is new, but w is still that of the round: the height's error is of second order.
S_LatHeight NewtonLatHeight(double p, double z, double a, double e2) {
  constexpr int kRounds = 3;
  double lat = std::atan(z / ((1 - e2) * p));
  double c = std::cos(lat);
  double s = std::sin(lat);
  double w = 0.0;
  for (int round = 0; round < kRounds; ++round) {
    w = 1 / std::sqrt(1 - e2 * (s * s));
    const double value = p / c - z / s - a * e2 * w;
    const double slope = p * s / (c * c) + z * c / (s * s) - a * (e2 * e2) * s * c * (w * w * w);
    lat -= value / slope;
    c = std::cos(lat);
    s = std::sin(lat);
  }
  // Of the two forms of the height the one that divides by the larger of cosine and sine.
  return {lat, c >= 0.707 ? p / c - a * w : z / s - a * (1 - e2) * w};
}

// From the distances to the axis and to the plane of the equator; the center of the Earth counts as the north pole.
S_LatHeight LatHeightFromProfile(double p, double z, double a, double e2) {
  if (p < kOnAxis) return {z < 0 ? -kPi / 2 : kPi / 2, std::fabs(z) - a * std::sqrt(1 - e2)};
  if (std::fabs(z) < kOnAxis) return {0.0, p - a};
  return NewtonLatHeight(p, z, a, e2);
}

// Brings an angle of [-2 pi, 2 pi) into [0, 2 pi).
double NotNegative(double angle) { return angle < 0 ? angle + 2 * kPi : angle; }

}  // namespace

void CartToGeodIter(double x, double y, double z, double a, double f, double& lat, double& lon, double& h) {
  const S_LatHeight result = LatHeightFromProfile(std::sqrt(x * x + y * y), z, a, (2 - f) * f);
  lat = result.lat;
  h = result.h;
  if (std::fabs(x) >= kOnAxis)
    lon = NotNegative(std::atan2(y, x));
  else
    lon = y < 0 ? 3 * kPi / 2 : kPi / 2;  // what a division by X would have given, for the poles too
}

namespace {

struct S_SinCosLat {
  double lat, s, c;
};

// The start of Olson's method for a point `w` from the axis and `absZ` from the plane of the equator, `w2` and `z2`
// being their squares: a series for the sine of the latitude, or for its cosine near the poles.
S_SinCosLat SeriesLatitude(double w, double w2, double absZ, double z2, double a, double e2) {
  // The coefficients of the paper, under its names.
  const double a1 = a * e2;
  const double a2 = a1 * a1;
  const double a3 = a1 * e2 / 2;
  const double a4 = 2.5 * a2;
  const double a5 = a1 + a3;
  const double r2 = w2 + z2;
  const double r = std::sqrt(r2);
  const double s2 = z2 / r2;
  const double c2 = w2 / r2;
  const double u = a2 / r;
  const double v = a3 - a4 / r;
  // Whichever of sine and cosine is small has the smaller absolute error, and the angle comes from it.
  if (c2 > 0.3) {
    const double s = absZ / r * (1 + c2 * (a1 + u + s2 * v) / r);
    return {std::asin(s), s, std::sqrt(1 - s * s)};
  }
  const double c = w / r * (1 - s2 * (a5 - u - c2 * v) / r);
  return {std::acos(c), std::sqrt(1 - c * c), c};
}

}  // namespace

void CartToGeodOlson(double x, double y, double z, double a, double f, double& lat, double& lon, double& h) {
  const double e2 = 2 * f - f * f;
  const double w2 = x * x + y * y;
  const double w = std::sqrt(w2);
  const double absZ = std::fabs(z);  // the southern hemisphere mirrors the northern one
  const auto [phi, s, c] = SeriesLatitude(w, w2, absZ, z * z, a, e2);

  // One Newton step from the point of the ellipsoid at that latitude: (u, v) is the way from there, which is split into
  // the part along the normal, the height, and the part `m` along the meridian, which corrects the latitude.
  const double g = 1 - e2 * (s * s);
  const double rg = a / std::sqrt(g);
  const double rf = (1 - e2) * rg;
  const double u = w - rg * c;
  const double v = absZ - rf * s;
  const double along = c * u + s * v;
  const double m = c * v - s * u;
  const double p = m / (rf / g + along);

  lat = z < 0 ? -(phi + p) : phi + p;
  lon = std::atan2(y, x);
  h = along + m * p / 2;
}

// ---- look angles and local vectors ---------------------------------------------------------------------------------

namespace {

constexpr double kSamePoint = 1e-9;       // m; what rounding leaves of coordinates on Earth
constexpr double kNoDirection = 0.00001;  // m: below it an angle would be rounding noise

// By the arc cosine, not by atan2: due north is then exactly 0, and rounding cannot give 2 pi. NaN gives 0, as the
// first comparison is false for it.
double AzimuthOf(double north, double east) {
  const double horizontal = std::sqrt(north * north + east * east);
  if (!(horizontal > kNoDirection)) return 0.0;
  const double c = north / horizontal;
  if (c > 1) return 0.0;
  const double azimuth = std::acos(c < -1 ? -1.0 : c);
  return east < 0 && c < 1 ? 2 * kPi - azimuth : azimuth;
}

}  // namespace

S_LookAngles GeodLookAngles(double lat1, double lon1, double h1, double lat2, double lon2, double h2, double a,
                            double f) {
  // By the difference of the ECEF positions, which loses nothing that the positions have.
  double x1, y1, z1, x2, y2, z2;
  GeodToCartAF(lat1, lon1, h1, a, f, x1, y1, z1);
  GeodToCartAF(lat2, lon2, h2, a, f, x2, y2, z2);
  const double dx = x2 - x1;
  const double dy = y2 - y1;
  const double dz = z2 - z1;

  S_LookAngles look{};
  const double range = std::sqrt(dx * dx + dy * dy + dz * dz);
  if (range < kSamePoint) return look;
  const double c = std::cos(lat1);
  const double s = std::sin(lat1);
  const double cosLon = std::cos(lon1);
  const double sinLon = std::sin(lon1);
  look.range = range;
  look.up = c * cosLon * dx + c * sinLon * dy + s * dz;
  look.east = -sinLon * dx + cosLon * dy;
  look.north = -s * cosLon * dx - s * sinLon * dy + c * dz;
  if (range > kNoDirection) look.elevation = std::asin(std::clamp(look.up / range, -1.0, 1.0));
  look.azimuth = AzimuthOf(look.north, look.east);
  return look;
}

void LocalToEcefDelta(double n, double e, double u, double lat, double lon, double& dx, double& dy, double& dz) {
  const double c = std::cos(lat);
  const double s = std::sin(lat);
  const double cosLon = std::cos(lon);
  const double sinLon = std::sin(lon);
  dx = -s * cosLon * n - sinLon * e + c * cosLon * u;
  dy = -s * sinLon * n + cosLon * e + c * sinLon * u;
  dz = c * n + s * u;
}

// ---- inverse problem -----------------------------------------------------------------------------------------------

namespace {

constexpr double kSameAngle = 1e-15;      // rad
constexpr double kLongitudeDone = 5e-14;  // rad, change of the longitude difference in a round
constexpr double kNoAzimuth = 1e-7;       // m
constexpr int kMaxRounds = 1000;          // a converging case takes fewer than 40

// Vincenty's iteration for the difference of longitude on the auxiliary sphere. The names are those of the NGS routine:
// U is a reduced latitude, sigma the arc between the points, alpha the azimuth of the geodesic at the equator.
class C_VincentyInverse {
 public:
  C_VincentyInverse(double lat1, double lon1, double lat2, double lon2, double f)
      : m_f(f), m_lon1(lon1), m_lon2(lon2), m_x(lon2 - lon1) {
    const double r = 1 - f;
    const double tanU1 = r * std::tan(lat1);
    const double tanU2 = r * std::tan(lat2);
    m_cosU1 = 1 / std::sqrt(tanU1 * tanU1 + 1);
    m_sinU1 = m_cosU1 * tanU1;
    m_cosU2 = 1 / std::sqrt(tanU2 * tanU2 + 1);
    m_cosCos = m_cosU1 * m_cosU2;
    m_cosSin = m_cosCos * tanU2;
    m_sinSin = m_cosSin * tanU1;
  }

  // False when the iteration does not converge. A NaN ends it at once: the comparison is written so that it counts as
  // settled, and the NaN shows in the results.
  bool Iterate() {
    for (int round = 0; round < kMaxRounds; ++round) {
      const double previous = m_x;
      Improve();
      if (!(std::fabs(previous - m_x) > kLongitudeDone)) return true;
    }
    return false;
  }

  // Of the last round. Both can be negative, the caller brings them into a full circle.
  double ForwardAzimuth() const { return std::atan2(m_t1, m_t2); }
  double BackAzimuth() const { return std::atan2(m_cosU1 * m_sinX, m_cosSin * m_cosX - m_sinU1 * m_cosU2) + kPi; }

  // The series of Vincenty with his later coefficients, which converge faster: c is his A, d the negative of his B.
  double Distance(double a) const {
    const double r = 1 - m_f;
    double x = std::sqrt((1 / (r * r) - 1) * m_cos2Alpha + 1) + 1;
    x = (x - 2) / x;
    const double c = (x * x / 4 + 1) / (1 - x);
    const double d = (0.375 * (x * x) - 1) * x;
    x = m_e * m_cosSigma;
    const double s = 1 - 2 * m_e;
    const double sinSigma2 = m_sinSigma * m_sinSigma;
    return ((((4 * sinSigma2 - 3) * s * m_cosMid * d / 6 - x) * d / 4 + m_cosMid) * m_sinSigma * d + m_sigma) * c * a *
           r;
  }

 private:
  void Improve() {
    m_sinX = std::sin(m_x);
    m_cosX = std::cos(m_x);
    m_t1 = m_cosU2 * m_sinX;
    m_t2 = m_cosSin - m_sinU1 * m_cosU2 * m_cosX;
    m_sinSigma = std::sqrt(m_t1 * m_t1 + m_t2 * m_t2);
    m_cosSigma = m_cosCos * m_cosX + m_sinSin;
    m_sigma = std::atan2(m_sinSigma, m_cosSigma);
    const double sinAlpha = m_cosCos * m_sinX / m_sinSigma;
    m_cos2Alpha = 1 - sinAlpha * sinAlpha;
    m_cosMid = 2 * m_sinSin;
    // On the equator cos2Alpha is 0, or by rounding less: a geodesic along it has no middle latitude.
    if (m_cos2Alpha > 0) m_cosMid = m_cosSigma - m_cosMid / m_cos2Alpha;
    m_e = 2 * (m_cosMid * m_cosMid) - 1;
    const double c = ((-3 * m_cos2Alpha + 4) * m_f + 4) * m_cos2Alpha * m_f / 16;
    m_x = ((m_e * m_cosSigma * c + m_cosMid) * m_sinSigma * c + m_sigma) * sinAlpha;
    m_x = (1 - c) * m_x * m_f + m_lon2 - m_lon1;
  }

  double m_f, m_lon1, m_lon2;
  double m_cosU1, m_sinU1, m_cosU2;
  double m_cosCos, m_cosSin, m_sinSin;  // cos U1 cos U2, cos U1 sin U2, sin U1 sin U2
  double m_x;                           // difference of longitude on the sphere
  double m_sinX = 0, m_cosX = 0;
  double m_t1 = 0, m_t2 = 0;  // sine of sigma times sine and cosine of the forward azimuth
  double m_sinSigma = 0, m_cosSigma = 0, m_sigma = 0;
  double m_cos2Alpha = 0;  // squared cosine of alpha
  double m_cosMid = 0;     // cosine of twice the arc from the equator to the geodesic's middle
  double m_e = 0;          // 2 cosMid^2 - 1
};

}  // namespace

void GeodesicInverse(double lat1, double lon1, double lat2, double lon2, double a, double f, double& forwardAzimuth,
                     double& backAzimuth, double& distance) {
  forwardAzimuth = 0.0;
  backAzimuth = kPi;
  distance = 0.0;
  if (std::fabs(lat1 - lat2) < kSameAngle && std::fabs(lon1 - lon2) < kSameAngle) return;
  C_VincentyInverse inverse(lat1, lon1, lat2, lon2, f);
  if (!inverse.Iterate()) {  // near the antipode, where the geodesic is not even unique
    forwardAzimuth = backAzimuth = distance = NA_DOUBLE;
    return;
  }
  distance = inverse.Distance(a);
  if (std::fabs(distance) < kNoAzimuth) return;
  forwardAzimuth = std::fmod(inverse.ForwardAzimuth() + 2 * kPi, 2 * kPi);
  backAzimuth = std::fmod(inverse.BackAzimuth() + 2 * kPi, 2 * kPi);
}

// ---- angles and distances ------------------------------------------------------------------------------------------

void RadToDms(double angle, short& degrees, short& minutes, double& seconds) {
  degrees = minutes = 0;
  seconds = NAN;
  if (!std::isfinite(angle)) return;
  // The largest doubles overflow when they become degrees; infinity minus infinity would then be NaN seconds.
  const double value = std::min(std::fabs(angle) * kDegreesPerRadian, std::numeric_limits<double>::max());
  const double wholeDegrees = std::trunc(value);
  const double inMinutes = (value - wholeDegrees) * 60;
  const double wholeMinutes = std::trunc(inMinutes);
  const double sign = angle < 0 ? -1.0 : 1.0;
  degrees = static_cast<short>(sign * std::min(wholeDegrees, 32767.0));
  minutes = static_cast<short>(sign * wholeMinutes);
  seconds = sign * (60 * (inMinutes - wholeMinutes));
}

double DmsToRad(short degrees, short minutes, double seconds) {
  const double size = std::fabs(degrees) + std::fabs(minutes) / 60 + std::fabs(seconds) / 3600;
  const double angle = size * kRadiansPerDegree;
  return degrees < 0 || minutes < 0 || seconds < 0 ? -angle : angle;
}

double PointDistance(const C_Vector3& p, const C_Vector3& q, bool horizontal) {
  // Signs do not matter to a length, so that the difference may be taken either way.
  const C_Vector3 difference = p - q;
  if (!horizontal) return difference.Norm();
  double lat, lon, h;
  CartToGeodOlson(p.X(), p.Y(), p.Z(), kWgs84A, kWgs84F, lat, lon, h);
  return velagnss::geo::Rotate(EcefToLocalRotation(lat, lon), difference).Norm2();
}

void CovEcefToLocal(double lat, double lon, [[maybe_unused]] double h, const double ecef[6], double local[6]) {
  if (ecef != nullptr && local != nullptr) RotateSixElements(EcefToLocalRotation(lat, lon), ecef, local);
}

void CovLocalToEcef(double lat, double lon, [[maybe_unused]] double h, const double local[6], double ecef[6]) {
  if (ecef != nullptr && local != nullptr) RotateSixElements(velagnss::geo::LocalToEcefRotation(lat, lon), local, ecef);
}

// ---- satellite geometry --------------------------------------------------------------------------------------------

void OrbitFrame(const C_Vector3& a, const C_Vector3& b, C_Vector3& e1, C_Vector3& e2, C_Vector3& e3) {
  // The arguments are read before the first result is written, because the results may be the arguments.
  const double length = b.Norm();
  const C_Vector3 normal = a.Cross(b).UnitVec();
  e1.Set(b.X() / length, b.Y() / length, b.Z() / length);
  e2 = e1.Cross(normal);
  e3 = normal;
}

C_Vector3 OrbitFrameToGlobal(const C_Vector3& a, const C_Vector3& b, const C_Vector3& v) {
  C_Vector3 e1, e2, e3;
  OrbitFrame(a, b, e1, e2, e3);
  e2.Scale(v.X());
  e1.Scale(v.Y());
  e3.Scale(v.Z());
  return e2 + e1 + e3;
}

C_Vector3 UnitFromTo(const C_Vector3& a, const C_Vector3& b) { return (a - b).UnitVec(); }

C_Vector3 UnitToFrom(const C_Vector3& a, const C_Vector3& b) { return (b - a).UnitVec(); }

C_Vector3 NegUnit(const C_Vector3& a) {
  C_Vector3 result = a.UnitVec();
  result.Scale(-1.0);
  return result;
}

void SatBodyAxes(const C_Vector3& r, const C_Vector3& s, C_Vector3& x, C_Vector3& y, C_Vector3& z) {
  const C_Vector3 toSun = UnitToFrom(r, s);
  z = NegUnit(r);
  // The product of unit vectors is short when the angle between them is small: it needs its own scaling.
  y = z.Cross(toSun).UnitVec();
  x = y.Cross(z).UnitVec();
}

}  // namespace ALGO
