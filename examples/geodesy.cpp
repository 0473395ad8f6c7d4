// A receiver and a satellite: both forms of the receiver's position, the direction to the satellite, and the accuracy
// in the local frame.
#include <cstdio>

#include "geo/Geodesy.h"
#include "geo/PointCoordinate.h"

int main() {
  // All angles are in radians; degrees, minutes and seconds are for display.
  const double latitude = ALGO::DmsToRad(48, 7, 2.28);
  const double longitude = ALGO::DmsToRad(11, 31, 0.0);
  C_PointCoordinate receiver(C_PointCoordinate::COORD_GEODETIC, latitude, longitude, 592.3);
  receiver.ConvertToAllInternal();
  const C_Vector3& position = receiver.Cartesian();
  std::printf("receiver: X %.3f m, Y %.3f m, Z %.3f m\n", position.X(), position.Y(), position.Z());

  const C_Vector3 satellite(15600e3, 7540e3, 20140e3);  // ECEF, m
  double elevation, azimuth;
  receiver.ElevationAndAzimuth(satellite, true, elevation, azimuth);
  short degrees, minutes;
  double seconds;
  ALGO::RadToDms(elevation, degrees, minutes, seconds);
  std::printf("satellite: elevation %d deg %d' %.1f\"", degrees, minutes, seconds);
  ALGO::RadToDms(azimuth, degrees, minutes, seconds);
  std::printf(", azimuth %d deg %d' %.1f\"\n", degrees, minutes, seconds);

  // The variances of a fix along X, Y and Z, in m^2, as standard deviations north, east and up.
  const C_Vector3 sigma = receiver.Cart2GeodSigma(C_Vector3(1.0, 0.4, 1.5));
  std::printf("accuracy: north %.2f m, east %.2f m, up %.2f m\n", sigma.X(), sigma.Y(), sigma.Z());

  // From Munich to Quito along the ellipsoid. Points nearly opposite each other on the Earth may have no result.
  double there, back, distance;
  ALGO::GeodesicInverse(latitude, longitude, ALGO::DmsToRad(0, -13, 12.0), ALGO::DmsToRad(-78, 30, 0.0), ALGO::kWgs84A,
                        ALGO::kWgs84F, there, back, distance);
  ALGO::RadToDms(there, degrees, minutes, seconds);
  std::printf("Quito: %.3f km, leaving at %d deg %d' %.1f\"\n", distance / 1000, degrees, minutes, seconds);
}
