// Position, velocity and clock of a satellite from its broadcast ephemeris.
//
//   velagnss::SatelliteState state;
//   if (velagnss::StateAt(ephemeris, time, state) == velagnss::OrbitResult::Ok) Use(state.position);
//
// Positions are Earth-centered, Earth-fixed at the time asked for: while a signal travels, the Earth rotates on, by
// some 30 m at the equator. The frames of the systems (WGS-84, PZ-90, GTRF, CGCS2000) are taken as one; since 2014 they
// agree within some centimeters. Times are GPS time. The functions keep no state, allocate nothing and throw nothing.
#ifndef VELAGNSS_POSITIONING_SATELLITE_ORBIT_H
#define VELAGNSS_POSITIONING_SATELLITE_ORBIT_H

#include "geo/GnssTime.h"
#include "geo/Vector3.h"
#include "records/InterfaceRecords.h"
#include "rtcm3/Rtcm3Records.h"
#include "velagnss_export.h"

namespace velagnss {

// Where a satellite is, and how far its clock is off.
struct SatelliteState {
  C_Vector3 position;      // m, ECEF
  C_Vector3 velocity;      // m/s, relative to the rotating Earth
  double clockOffset = 0;  // s, satellite clock - time of its system; with relativity, without group delays
  double clockDrift = 0;   // s/s
};

// Whether an ephemeris gives a state at a time.
enum class OrbitResult : unsigned char {
  Ok,           // the state is set
  Missing,      // there is no ephemeris of this satellite
  Outdated,     // the time is too far from the reference time
  Unhealthy,    // it is flagged unhealthy, or a signal that its clock refers to is
  Implausible,  // not the orbit of a navigation satellite, or a value is not available
};

// Reference time of an ephemeris as GPS time. GLONASS needs the leap seconds, GPS time - UTC.
VELAGNSS_API C_GnssTime ReferenceTime(const S_IFKeplerEphRec& ephemeris);
VELAGNSS_API C_GnssTime ReferenceTime(const S_IFPvaEphRec& ephemeris, unsigned char leapSeconds);

// Whether the satellite may be used: its health word, and for GPS, QZSS, NavIC and BeiDou an accuracy other than "no
// prediction".
VELAGNSS_API bool IsHealthy(const S_IFKeplerEphRec& ephemeris);
VELAGNSS_API bool IsHealthy(const S_IFPvaEphRec& ephemeris);

// State by Keplerian elements: IS-GPS-200, table 20-IV and 20.3.3.3.3.1; Galileo OS SIS ICD, 5.1.1 and 5.1.4;
// BDS-SIS-ICD B1I, 5.2.4.12, with the rotation for geostationary satellites (1 to 5 and from 59); IS-QZSS-PNT, 5.5;
// NavIC ICD, appendix A. Each system has its own gravitational constant and Earth rotation rate.
//
// Validity: half the fit interval of GPS, 4 h for Galileo, 2 h for the others before and after the reference time.
// Health is not checked. Results: `Ok`, `Outdated`, `Implausible`.
VELAGNSS_API OrbitResult StateAt(const S_IFKeplerEphRec& ephemeris, const C_GnssTime& time, SatelliteState& state);

// State by position, velocity and acceleration. GLONASS: the equations of motion of the GLONASS ICD, appendix 3.1.2
// with the gravity of a flattened Earth (PZ-90) and the acceleration by Sun and Moon that is broadcast, integrated with
// the fourth-order Runge-Kutta method in steps of at most 60 s. SBAS: the polynomial of RTCA DO-229, A.4.4.11.
//
// Validity: 30 min for GLONASS, 6 min for SBAS. `leapSeconds` (GPS time - UTC) matters for GLONASS only.
VELAGNSS_API OrbitResult StateAt(const S_IFPvaEphRec& ephemeris, const C_GnssTime& time, unsigned char leapSeconds,
                                 SatelliteState& state);

// How much later than its clock says a satellite sends a signal, in s: `c` times this is to be subtracted from a
// pseudorange before `clockOffset` is applied. `band` is the digit of the RINEX code, `frequency` in Hz.
//
// GPS, QZSS, NavIC: the group delay times the squared ratio of frequencies (IS-GPS-200, 20.3.3.3.3.2). BeiDou: TGD1 on
// B1I, TGD2 on B2I, none on B3I (BDS-SIS-ICD, 5.2.4.10). Galileo: from both group delays (OS SIS ICD, 5.1.5),
// depending on the signals that the clock refers to. Other delays between the codes of a band are not broadcast in
// these messages; a delay that is not available counts as 0.
VELAGNSS_API double GroupDelay(const Rtcm3KeplerEphemeris& ephemeris, char band, double frequency);

}  // namespace velagnss

#endif  // VELAGNSS_POSITIONING_SATELLITE_ORBIT_H
