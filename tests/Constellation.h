// Ephemerides of satellites all around the Earth, and the pseudoranges that a receiver would measure.
#ifndef VELAGNSS_TESTS_CONSTELLATION_H
#define VELAGNSS_TESTS_CONSTELLATION_H

#include <cmath>
#include <numbers>
#include <vector>

#include "geo/PointCoordinate.h"
#include "positioning/EphemerisStore.h"
#include "positioning/PointEpochs.h"
#include "positioning/Troposphere.h"

namespace constellation {

inline constexpr double kPi = std::numbers::pi;
inline constexpr double kC = 299792458.0;
inline constexpr double kOmega = 7.2921151467e-5;
inline constexpr unsigned short kWeek = 2314;
inline constexpr double kToe = 345600;  // GPS time
inline constexpr unsigned char kLeap = 18;

// A satellite in one of six planes. Reference times are those of the system's own clock.
inline velagnss::Rtcm3KeplerEphemeris Kepler(ALGO::eGNSSSystem system, unsigned char svId) {
  velagnss::Rtcm3KeplerEphemeris record;
  S_IFKeplerEphRec& e = record.ephemeris;
  SetEmpty_IFEphRec(e);
  e.System = static_cast<unsigned char>(system);
  e.SvId = svId;
  e.Health = e.SvHealth = 0;
  e.Iode = svId;
  e.ToeWeek = e.TocWeek = kWeek;
  e.Toe = kToe - (system == ALGO::GNSS_BEIDOU ? 14 : 0);
  e.Toc = e.Toe - 600;
  e.SqrtA = system == ALGO::GNSS_GALILEO ? 5440.6 : system == ALGO::GNSS_BEIDOU ? 5282.6 : 5153.7;
  e.Ecc = 0.01 + 0.0001 * svId;
  e.I0 = 0.96;
  e.Omega0 = kPi / 3 * svId + 0.2 * static_cast<int>(system);
  e.Omega = 0.7;
  e.M0 = 2.2 * svId + static_cast<int>(system);
  e.DeltaN = 4.5e-9;
  e.OmegaDot = -8e-9;
  e.IDot = 2e-10;
  e.Cuc = -2e-6, e.Cus = 4e-6, e.Crc = 250, e.Crs = -60, e.Cic = 1e-7, e.Cis = -9e-8;
  e.Af0 = 1e-5 * svId, e.Af1 = 1e-11, e.Af2 = 0;
  e.Ura = 2;
  e.Tgd = 1e-9 * svId;
  record.groupDelay2 = -2e-9 * svId;
  record.dataSource = 517;
  return record;
}

// The same motion as position and velocity.
inline S_IFPvaEphRec Glonass(unsigned char slot) {
  velagnss::SatelliteState state;
  const C_GnssTime reference(kWeek, kToe, ALGO::GNSS_GPS);
  velagnss::StateAt(Kepler(ALGO::GNSS_GPS, slot).ephemeris, reference, state);
  S_IFPvaEphRec e;
  SetEmpty_IFEphRec(e);
  e.System = ALGO::GNSS_GLONASS;
  e.SvId = slot;
  e.Health = 0;
  e.RefWeek = kWeek;
  e.RefTime = kToe + 10800 - kLeap;
  e.PosX = state.position.X(), e.PosY = state.position.Y(), e.PosZ = state.position.Z();
  e.VelX = state.velocity.X(), e.VelY = state.velocity.Y(), e.VelZ = state.velocity.Z();
  e.AccX = 1e-6, e.AccY = -2e-6, e.AccZ = 1e-6;
  e.TauN = -1e-5 * slot;
  e.GammaN = 1e-12;
  return e;
}

// The two signals of each system.
struct Carriers {
  ALGO::eGNSSSystem system;
  const char* first;
  double f1;
  const char* second;
  double f2;
};
inline constexpr Carriers kCarriers[] = {
    {ALGO::GNSS_GPS, "1C", 1575.42e6, "2W", 1227.60e6},
    {ALGO::GNSS_GLONASS, "1C", 1602e6, "2C", 1246e6},
    {ALGO::GNSS_BEIDOU, "2I", 1561.098e6, "6I", 1268.52e6},
    {ALGO::GNSS_GALILEO, "1C", 1575.42e6, "5Q", 1176.45e6},
};

// A receiver at a place, its clock `kClock` s ahead of GPS, and another 10 ns times the number of the system.
class Receiver {
 public:
  static constexpr double kClock = 3e-4;

  Receiver() { place.ConvertToAllInternal(); }

  velagnss::EphemerisStore store;
  C_PointCoordinate place{C_PointCoordinate::COORD_GEODETIC, 0.8, 0.2, 400.0};
  double ionosphere = 8;  // m on L1

  void NoteAll() {
    for (unsigned char number = 1; number <= 24; ++number) {
      for (const auto system : {ALGO::GNSS_GPS, ALGO::GNSS_GALILEO, ALGO::GNSS_BEIDOU})
        if (system != ALGO::GNSS_BEIDOU || number > 5) store.Note(Kepler(system, number));
      store.Note(Glonass(number));
    }
  }

  // What it measures when its clock shows `seconds`: all satellites above `mask` rad.
  std::vector<velagnss::PointRanges> Measure(double seconds, double mask = 0.1) {
    std::vector<velagnss::PointRanges> all;
    for (const Carriers& carriers : kCarriers)
      for (unsigned char number = 1; number <= 24; ++number) Measure(carriers, number, seconds, mask, all);
    return all;
  }

 private:
  void Measure(const Carriers& carriers, unsigned char number, double seconds, double mask,
               std::vector<velagnss::PointRanges>& all) {
    const double clock = kClock + 1e-8 * static_cast<int>(carriers.system);
    velagnss::SatelliteOrbit orbit;
    double flight = 0.07;
    C_Vector3 sent;
    for (int i = 0; i < 6; ++i) {  // the satellite moves by 4 km/s: each round gains five digits
      const C_GnssTime time(kWeek, seconds - clock - flight, ALGO::GNSS_GPS);
      if (store.Find(carriers.system, number, time, kLeap, orbit) != velagnss::OrbitResult::Ok) return;
      const double turned = std::atan2(orbit.state.position.Y(), orbit.state.position.X()) - kOmega * flight;
      const double axis = orbit.state.position.Norm2();
      sent.Set(axis * std::cos(turned), axis * std::sin(turned), orbit.state.position.Z());
      flight = (sent - place.Cartesian()).Norm() / kC;
    }
    double elevation = 0, azimuth = 0;
    place.ElevationAndAzimuth(orbit.state.position, false, elevation, azimuth);
    if (elevation < mask) return;
    const double range =
        (flight + clock - orbit.state.clockOffset) * kC + velagnss::TroposphericDelay(0.8, 400, elevation);
    const auto measured = [&](const char* code, double f) {
      velagnss::PointRange result;
      result.code[0] = code[0], result.code[1] = code[1];
      result.frequency = f;
      result.range = range + ionosphere * (carriers.f1 / f) * (carriers.f1 / f);
      if (orbit.kepler != nullptr) result.range += kC * velagnss::GroupDelay(*orbit.kepler, code[0], f);
      return result;
    };
    all.push_back(
        {carriers.system, number, measured(carriers.first, carriers.f1), measured(carriers.second, carriers.f2)});
  }
};

inline velagnss::PointEpoch EpochOf(const std::vector<velagnss::PointRanges>& ranges, double seconds,
                                    unsigned short week = kWeek) {
  velagnss::PointEpoch epoch;
  epoch.time.Set(week, seconds, ALGO::GNSS_GPS);
  epoch.leapSeconds = kLeap;
  epoch.satellites = ranges.data();
  epoch.numSatellites = ranges.size();
  return epoch;
}

}  // namespace constellation

#endif  // VELAGNSS_TESTS_CONSTELLATION_H
