// Where the satellites of the session are.
//
// Computed without the library, like the packing, so that a fault there has no twin here. Square roots and remainders
// are exact to the last bit by IEEE 754, sines and cosines are computed here: every machine gets the same bits.
#ifndef VELAGNSS_SAMPLES_ORBITS_H
#define VELAGNSS_SAMPLES_ORBITS_H

#include "samples/Moment.h"
#include "samples/Satellites.h"

constexpr double kPi = 3.14159265358979323846;
constexpr double kLight = 299792458;           // m/s
constexpr double kTurnRate = 7.2921151467e-5;  // of the Earth, rad/s (IS-GPS-200)

// An angle by its cosine and sine.
struct S_Turn {
  double cosine;
  double sine;
};

S_Turn TurnOf(double radians);
// The sum of both angles.
inline S_Turn operator*(const S_Turn& a, const S_Turn& b) {
  return {a.cosine * b.cosine - a.sine * b.sine, a.sine * b.cosine + a.cosine * b.sine};
}

struct S_Vector {
  double x;
  double y;
  double z;
};

inline S_Vector operator+(const S_Vector& a, const S_Vector& b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline S_Vector operator*(double factor, const S_Vector& v) { return {factor * v.x, factor * v.y, factor * v.z}; }
inline double Product(const S_Vector& a, const S_Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

// About the axis of the Earth, eastwards.
inline S_Vector Turned(const S_Vector& v, const S_Turn& turn) {
  return {v.x * turn.cosine - v.y * turn.sine, v.x * turn.sine + v.y * turn.cosine, v.z};
}

// From an orbital plane into the frame of the Earth.
S_Vector FromPlane(double x, double y, const S_Turn& inclination, const S_Turn& node);

struct S_State {
  S_Vector position;  // m, earth-centered, turning with the Earth
  double clock;       // s, ahead of the time of its system
};

// GPS time in s, counted from the end of the session's first week, that is, from midnight.
double TimeOf(const S_Moment& now);

// As the ephemeris of the satellite has it at `time`.
S_State StateOf(const S_Satellite& satellite, double time);

#endif  // VELAGNSS_SAMPLES_ORBITS_H
