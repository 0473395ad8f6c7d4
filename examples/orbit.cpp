// Coordinate frames of a satellite: along its orbit, and along the axes of its body, whose panels face the Sun.
#include <cstdio>

#include "geo/Geodesy.h"

static void Show(const char* name, const C_Vector3& v) {
  std::printf("%s (%.4f, %.4f, %.4f)\n", name, v.X(), v.Y(), v.Z());
}

int main() {
  const C_Vector3 satellite(26560e3, 0.0, 0.0);   // m
  const C_Vector3 velocity(0.0, 2200.0, 3200.0);  // m/s
  const C_Vector3 sun(0.0, 1.5e11, 0.0);

  C_Vector3 radial, along, normal;
  ALGO::OrbitFrame(velocity, satellite, radial, along, normal);
  Show("along the orbit", along);
  // 2 m along the orbit and 1 m outward, in ECEF coordinates.
  Show("an offset", ALGO::OrbitFrameToGlobal(velocity, satellite, C_Vector3(2.0, 1.0, 0.0)));

  C_Vector3 x, y, z;
  ALGO::SatBodyAxes(satellite, sun, x, y, z);
  Show("antenna", z);
  Show("panels", y);
  Show("to the Sun", ALGO::UnitFromTo(sun, satellite));
}
