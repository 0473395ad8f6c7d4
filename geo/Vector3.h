// A vector of three doubles: a position, velocity or line of sight, usually Earth-centered, Earth-fixed (ECEF) and in
// meters. The class itself has no unit.
#ifndef VELAGNSS_GEO_VECTOR3_H
#define VELAGNSS_GEO_VECTOR3_H

#include "velagnss_export.h"

// A value type: three doubles in the order x, y, z, nothing else. Numbers that are not finite follow IEEE 754 in every
// operation. A null pointer in place of three doubles constructs (0, 0, 0), and leaves a vector unchanged when it is
// set.
class VELAGNSS_API C_Vector3 {
 public:
  // (0, 0, 0), three values, or p[0], p[1], p[2].
  C_Vector3();
  C_Vector3(const double& x, const double& y, const double& z);
  C_Vector3(const double* p);

  // Copies are independent.
  C_Vector3(const C_Vector3& other) = default;
  C_Vector3& operator=(const C_Vector3& other) = default;

  // The components: of an ECEF position towards Greenwich, 90 degrees east and north; of a local vector north, east
  // and up; of a geodetic triple latitude, longitude and height.
  double X() const { return m_component[0]; }
  double Y() const { return m_component[1]; }
  double Z() const { return m_component[2]; }

  // The three components as an array; valid as long as the vector exists.
  const double* Data() const { return m_component; }

  // Replace all three components, or one of them.
  void Set(const double& x, const double& y, const double& z);
  void Set(const double* p);
  void Set(const C_Vector3& other);
  void Set0(const double& x);
  void Set1(const double& y);
  void Set2(const double& z);

  // Sets (0, 0, 0).
  void Zero();

  // Length: sqrt(x^2 + y^2 + z^2). Components beyond 1e154 overflow to infinity.
  double Norm() const;

  // Horizontal length: sqrt(x^2 + y^2), for an ECEF position the distance from the Earth's axis. Not the square of
  // Norm().
  double Norm2() const;

  // Multiplies each component by `s`.
  void Scale(double s);

  // The vector of length 1 in the same direction; (0, 0, 0) when Norm() is 0 or NaN.
  C_Vector3 UnitVec() const;

  // Scalar product: |this| |other| cos(angle).
  double Dot(const C_Vector3& other) const;

  // Right-handed cross product this x other: normal to both, of length |this| |other| sin(angle); (0, 0, 0) for
  // parallel vectors, up to rounding.
  C_Vector3 Cross(const C_Vector3& other) const;

  // Component by component.
  C_Vector3 operator+(const C_Vector3& other) const;
  C_Vector3 operator-(const C_Vector3& other) const;
  C_Vector3& operator+=(const C_Vector3& other);

 private:
  double m_component[3];
};

#endif  // VELAGNSS_GEO_VECTOR3_H
