#include "geo/PointCoordinate.h"

#include <cmath>

#include "geo/Angle.h"
#include "geo/Geodesy.h"
#include "geo/LocalFrame.h"
#include "geo/NotAvailable.h"

namespace {

using velagnss::geo::EcefToLocalRotation;
using velagnss::geo::kPi;
using velagnss::geo::RotateCovariance;

// m. No latitude and longitude in radians reaches it, and of positions on Earth only those close to the poles do not.
constexpr double kShortestHorizontal = 1000.0;

C_Vector3 NotSetVector() { return C_Vector3(NA_DOUBLE, NA_DOUBLE, NA_DOUBLE); }

// A marker stays a marker: cast to float, that of double is another number.
float ToFloat(double value) { return IsNotAvailable(value) ? NA_FLOAT : static_cast<float>(value); }

}  // namespace

// ---- the two forms -------------------------------------------------------------------------------------------------

C_PointCoordinate::C_PointCoordinate() { Reset(); }

C_PointCoordinate::C_PointCoordinate(eCoordType type, const double* coordinates) : C_PointCoordinate() {
  Set(type, coordinates);
}

C_PointCoordinate::C_PointCoordinate(eCoordType type, const C_Vector3& coordinates) : C_PointCoordinate() {
  Set(type, coordinates);
}

C_PointCoordinate::C_PointCoordinate(eCoordType type, const double& c0, const double& c1, const double& c2)
    : C_PointCoordinate() {
  Set(type, c0, c1, c2);
}

void C_PointCoordinate::Reset() {
  m_cartValid = m_geodValid = m_trigValid = false;
  m_cart = m_geod = NotSetVector();
  m_cosLat = m_sinLat = m_cosLon = m_sinLon = NA_DOUBLE;
}

void C_PointCoordinate::Set(eCoordType type, const double* coordinates) {
  if (coordinates != nullptr) Set(type, C_Vector3(coordinates));
}

void C_PointCoordinate::Set(eCoordType type, const C_Vector3& coordinates) {
  m_cartValid = type == COORD_CARTESIAN;
  m_geodValid = !m_cartValid;
  m_trigValid = false;
  (m_cartValid ? m_cart : m_geod) = coordinates;
}

void C_PointCoordinate::Set(eCoordType type, const double& c0, const double& c1, const double& c2) {
  Set(type, C_Vector3(c0, c1, c2));
}

// Unlike the assignment, which copies the flag as well.
void C_PointCoordinate::Copy(const C_PointCoordinate& other) {
  const bool trigValid = m_trigValid;
  *this = other;
  m_trigValid = trigValid;
}

bool C_PointCoordinate::PossibleCartesian(const C_Vector3& triple) { return !(triple.Norm2() < kShortestHorizontal); }

// The Cartesian form decides when both are valid: the geodetic one is computed again, and its last bits may change.
void C_PointCoordinate::ConvertToAllInternal() {
  double c0, c1, c2;
  if (m_cartValid) {
    ALGO::CartToGeodOlson(m_cart.X(), m_cart.Y(), m_cart.Z(), ALGO::kWgs84A, ALGO::kWgs84F, c0, c1, c2);
    m_geod.Set(c0, c1, c2);
    m_geodValid = true;
  } else if (m_geodValid) {
    ALGO::GeodToCartAB(m_geod.X(), m_geod.Y(), m_geod.Z(), ALGO::kWgs84A, ALGO::kWgs84B, c0, c1, c2);
    m_cart.Set(c0, c1, c2);
    m_cartValid = true;
  }
  Set_CosSin_LatLon();
}

void C_PointCoordinate::Set_CosSin_LatLon() {
  if (!m_geodValid && m_cartValid) ConvertToAllInternal();
  if (!m_geodValid) {
    m_cosLat = m_sinLat = m_cosLon = m_sinLon = NA_DOUBLE;
    m_trigValid = false;
    return;
  }
  if (m_trigValid) return;  // these four calls are what the cache saves
  m_cosLat = std::cos(m_geod.X());
  m_sinLat = std::sin(m_geod.X());
  m_cosLon = std::cos(m_geod.Y());
  m_sinLon = std::sin(m_geod.Y());
  m_trigValid = true;
}

// Makes both forms and the cache valid; false when there are no coordinates to compute them from.
bool C_PointCoordinate::MakeCurrent() {
  if (!m_cartValid || !m_geodValid) ConvertToAllInternal();
  Set_CosSin_LatLon();
  return m_cartValid && m_geodValid;
}

void C_PointCoordinate::AddDeltaXYZ(C_Vector3 d) {
  if (!m_cartValid) ConvertToAllInternal();
  if (!m_cartValid) return Reset();  // so that nothing of an earlier point is left
  m_cart += d;
  m_geodValid = m_trigValid = false;
}

// ---- seen from the point -------------------------------------------------------------------------------------------

void C_PointCoordinate::ElevationAndAzimuth(const C_Vector3& target, bool wantAzimuth, double& elev, double& azim,
                                            C_Vector3* los) {
  // Only the marker for an undefined point. `los` is left alone, as there is no vector.
  if (!MakeCurrent()) {
    elev = NA_DOUBLE;
    if (wantAzimuth) azim = NA_DOUBLE;
    return;
  }
  const C_Vector3 d = target - m_cart;
  if (los != nullptr) *los = d;
  // The up component of the unit vector. Rounding takes it above 1 for many targets at the zenith, and
  // their elevation would be NaN.
  const double sinElev = (m_cosLat * (m_cosLon * d.X() + m_sinLon * d.Y()) + m_sinLat * d.Z()) / d.Norm();
  elev = kPi / 2 - std::acos(sinElev > 1.0 ? 1.0 : sinElev);
  if (!wantAzimuth) return;
  const double e = -m_sinLon * d.X() + m_cosLon * d.Y();
  const double n = (-d.X() * m_cosLon - d.Y() * m_sinLon) * m_sinLat + d.Z() * m_cosLat;
  azim = std::atan2(e, n);  // (-pi, pi]
  if (azim < 0) azim += 2 * kPi;
}

void C_PointCoordinate::ElevationAndAzimuth(const C_Vector3& target, bool wantAzimuth, float& elev, float& azim,
                                            C_Vector3* los) {
  // Computed in double: in float the difference of two ECEF positions would be off by meters.
  double elevation;
  double azimuth = 0.0;
  ElevationAndAzimuth(target, wantAzimuth, elevation, azimuth, los);
  elev = ToFloat(elevation);
  azim = ToFloat(azimuth);
}

C_Vector3 C_PointCoordinate::RangeLocal(const C_Vector3& target) {
  if (!MakeCurrent()) return NotSetVector();
  return velagnss::geo::Rotate(EcefToLocalRotation(m_geod.X(), m_geod.Y()), target - m_cart);
}

C_Vector3 C_PointCoordinate::Cart2GeodSigma(const C_Vector3& cartVar) {
  if (!MakeCurrent()) return NotSetVector();
  // Only the diagonal is known: the correlations are taken to be 0.
  C_Matrix covariance(3, 3);
  covariance(0, 0) = cartVar.X();
  covariance(1, 1) = cartVar.Y();
  covariance(2, 2) = cartVar.Z();
  const C_Matrix local = RotateCovariance(EcefToLocalRotation(m_geod.X(), m_geod.Y()), covariance);
  return C_Vector3(std::sqrt(local(0, 0)), std::sqrt(local(1, 1)), std::sqrt(local(2, 2)));
}

C_Matrix C_PointCoordinate::Cart2GeodCovariance(const C_Matrix& cov) {
  if (!MakeCurrent() || cov.Rows() != 3 || cov.Cols() != 3) return C_Matrix(3, 3);
  return RotateCovariance(EcefToLocalRotation(m_geod.X(), m_geod.Y()), cov);
}
