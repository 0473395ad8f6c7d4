// Out of line, because hosts link against these operations.
#include "geo/Vector3.h"

#include <cmath>

C_Vector3::C_Vector3() : m_component{0.0, 0.0, 0.0} {}

C_Vector3::C_Vector3(const double& x, const double& y, const double& z) : m_component{x, y, z} {}

C_Vector3::C_Vector3(const double* p) : C_Vector3() { Set(p); }

// The arguments may be components of this very vector, so that all are read before the first is written.
void C_Vector3::Set(const double& x, const double& y, const double& z) { *this = C_Vector3(x, y, z); }

void C_Vector3::Set(const double* p) {
  if (p != nullptr) Set(p[0], p[1], p[2]);
}

void C_Vector3::Set(const C_Vector3& other) { *this = other; }

void C_Vector3::Set0(const double& x) { m_component[0] = x; }
void C_Vector3::Set1(const double& y) { m_component[1] = y; }
void C_Vector3::Set2(const double& z) { m_component[2] = z; }

void C_Vector3::Zero() { *this = C_Vector3(); }

double C_Vector3::Norm() const { return std::sqrt(X() * X() + Y() * Y() + Z() * Z()); }

double C_Vector3::Norm2() const { return std::sqrt(X() * X() + Y() * Y()); }

void C_Vector3::Scale(double s) {
  for (double& component : m_component) component *= s;
}

C_Vector3 C_Vector3::UnitVec() const {
  // Also false for NaN, so that a vector without a direction is (0, 0, 0) and not NaN.
  const double norm = Norm();
  if (!(norm > 0.0)) return C_Vector3();
  return C_Vector3(X() / norm, Y() / norm, Z() / norm);
}

double C_Vector3::Dot(const C_Vector3& other) const { return X() * other.X() + Y() * other.Y() + Z() * other.Z(); }

C_Vector3 C_Vector3::Cross(const C_Vector3& other) const {
  return C_Vector3(Y() * other.Z() - Z() * other.Y(),  //
                   Z() * other.X() - X() * other.Z(),  //
                   X() * other.Y() - Y() * other.X());
}

C_Vector3 C_Vector3::operator+(const C_Vector3& other) const {
  return C_Vector3(X() + other.X(), Y() + other.Y(), Z() + other.Z());
}

C_Vector3 C_Vector3::operator-(const C_Vector3& other) const {
  return C_Vector3(X() - other.X(), Y() - other.Y(), Z() - other.Z());
}

C_Vector3& C_Vector3::operator+=(const C_Vector3& other) { return *this = *this + other; }
