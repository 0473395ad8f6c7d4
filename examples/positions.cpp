// Where a satellite is, and where it is seen from a station.
#include <cstdio>

#include "geo/PointCoordinate.h"
#include "positioning/PointSolver.h"

namespace {

constexpr double kDegrees = 57.29577951308232;

// As a decoder delivers it.
S_IFKeplerEphRec Ephemeris() {
  S_IFKeplerEphRec ephemeris;
  SetEmpty_IFEphRec(ephemeris);
  ephemeris.System = ALGO::GNSS_GPS;
  ephemeris.SvId = 5;
  ephemeris.SvHealth = 0;
  ephemeris.ToeWeek = ephemeris.TocWeek = 2314;
  ephemeris.Toe = ephemeris.Toc = 345600;
  ephemeris.Af0 = -1.3e-4, ephemeris.Af1 = 3.2e-12, ephemeris.Af2 = 0;
  ephemeris.SqrtA = 5153.78, ephemeris.Ecc = 0.0046, ephemeris.I0 = 0.9468, ephemeris.M0 = 2.07;
  ephemeris.Omega0 = -0.25, ephemeris.Omega = 0.47, ephemeris.OmegaDot = -8.0e-9, ephemeris.IDot = -3.8e-10;
  ephemeris.DeltaN = 4.4e-9, ephemeris.Cuc = -2.6e-6, ephemeris.Cus = 1.43e-5, ephemeris.Crc = 97.5;
  ephemeris.Crs = -45.4, ephemeris.Cic = -3.0e-8, ephemeris.Cis = -4.1e-8;
  ephemeris.Ura = 2, ephemeris.Tgd = -1.07e-8, ephemeris.FitInterval = 4;
  return ephemeris;
}

void ShowSatellite() {
  velagnss::EphemerisStore store;
  store.Note(Ephemeris());
  const C_GnssTime time(2314, 343800.0, ALGO::GNSS_GPS);
  velagnss::SatelliteOrbit orbit;
  if (store.Find(ALGO::GNSS_GPS, 5, time, 18, orbit) != velagnss::OrbitResult::Ok) return;
  const C_Vector3& position = orbit.state.position;
  std::printf("G05 at %.1f %.1f %.1f m, clock %.6f ms\n", position.X(), position.Y(), position.Z(),
              orbit.state.clockOffset * 1e3);
  C_PointCoordinate station(C_PointCoordinate::COORD_GEODETIC, 36 / kDegrees, 140 / kDegrees, 50.0);
  double elevation = 0;
  double azimuth = 0;
  station.ElevationAndAzimuth(position, true, elevation, azimuth);
  std::printf("seen at azimuth %.2f, elevation %.2f degrees\n", azimuth * kDegrees, elevation * kDegrees);
}

// What a program does with a stream: messages in, a position for each epoch out.
class Positions {
 public:
  void Take(const velagnss::Rtcm3KeplerEphemeris& ephemeris) { m_store.Note(ephemeris); }
  void Take(const velagnss::Rtcm3Observations& observations) { Solve(m_epochs.Note(observations)); }
  void Finish() { Solve(m_epochs.Flush()); }  // an epoch ends when the next one begins; nothing ends the last one

 private:
  void Solve(const velagnss::PointEpoch* epoch) {
    if (epoch == nullptr) return;
    const velagnss::PointSolution& solution = m_solver.Solve(*epoch, m_store);
    const C_Vector3& position = solution.position;
    if (solution.result == velagnss::PointResult::Ok)
      std::printf("%.1f s: %.1f %.1f %.1f m\n", epoch->time.m_secOfWeek, position.X(), position.Y(), position.Z());
    else
      std::printf("%.1f s: no position, satellites with range and ephemeris: %zu\n", epoch->time.m_secOfWeek,
                  Usable(solution));
  }

  static std::size_t Usable(const velagnss::PointSolution& solution) {
    std::size_t count = 0;
    for (std::size_t i = 0; i < solution.numSatellites; ++i)
      if (solution.satellites[i].use != velagnss::PointUse::NoEphemeris) ++count;
    return count;
  }

  velagnss::EphemerisStore m_store;
  velagnss::PointEpochs m_epochs;
  velagnss::PointSolver m_solver;
};

// As a decoder delivers them: the C/A code of a single satellite.
void Observe(double seconds, velagnss::Rtcm3Observations& observations) {
  observations.system = ALGO::GNSS_GPS;
  observations.time.week = 2314;
  observations.time.seconds = seconds;
  observations.numSatellites = observations.numSignals = 1;
  observations.satellites[0].system = ALGO::GNSS_GPS;
  observations.satellites[0].svId = 5;
  velagnss::Rtcm3Signal& signal = observations.signals[0];
  signal.code[0] = '1', signal.code[1] = 'C';
  signal.frequency = 1575.42e6;
  signal.satellite = 0;
  signal.data.Pseudorange = 20.3e6;
}

}  // namespace

int main() {
  ShowSatellite();
  Positions positions;
  velagnss::Rtcm3KeplerEphemeris ephemeris;
  ephemeris.ephemeris = Ephemeris();
  positions.Take(ephemeris);
  static velagnss::Rtcm3Observations observations;
  for (const double seconds : {343800.0, 343801.0}) {
    Observe(seconds, observations);
    positions.Take(observations);
  }
  positions.Finish();
}
