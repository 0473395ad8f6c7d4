// Orbits and positions from ephemerides with any values and ranges of any length. What is answered as good is finite:
// a satellite is where satellites are, a position belongs to as many satellites as say so.
#include <array>
#include <cmath>

#include "fuzz/Fuzz.h"
#include "positioning/EphemerisStore.h"
#include "positioning/PointSolver.h"
#include "positioning/SatelliteOrbit.h"

namespace {

using namespace velagnss;

constexpr std::uint16_t kWeek = 2400;
constexpr double kTime = 345600;  // s of the week

// A number of any kind: near the good one, or any bits.
double Varied(Fuzz::C_Input& input, double good) {
  const unsigned int kind = input.Below(8);
  if (kind == 0) return input.Value<double>();
  return kind == 1 ? good * input.Value<std::int8_t>() : good;
}

S_IFKeplerEphRec Kepler(Fuzz::C_Input& input, ALGO::eGNSSSystem system, std::uint8_t svId) {
  S_IFKeplerEphRec eph{};
  eph.System = static_cast<std::uint8_t>(system);
  eph.SvId = svId;
  eph.ToeWeek = eph.TocWeek = eph.TxWeek = input.Below(16) == 0 ? input.Value<std::uint16_t>() : kWeek;
  eph.Toe = eph.Toc = eph.TxTime = Varied(input, kTime);
  eph.SqrtA = Varied(input, 5153.6);
  eph.Ecc = Varied(input, 0.01);
  eph.I0 = Varied(input, 0.96);
  eph.M0 = Varied(input, svId * 0.7);
  eph.Omega0 = Varied(input, svId * 1.1);
  eph.OmegaDot = Varied(input, -8e-9);
  eph.Crs = Varied(input, 50);
  eph.Af0 = Varied(input, 1e-4);
  eph.Health = eph.SvHealth = input.Below(16) == 0 ? 1U : 0U;
  return eph;
}

S_IFPvaEphRec Pva(Fuzz::C_Input& input, ALGO::eGNSSSystem system, std::uint8_t svId) {
  S_IFPvaEphRec eph{};
  eph.System = eph.TimeSystem = static_cast<std::uint8_t>(system);
  eph.SvId = svId;
  eph.RefWeek = eph.FrameWeek = kWeek;
  eph.RefTime = eph.FrameTime = Varied(input, kTime);
  const double angle = svId * 0.9;
  eph.PosX = Varied(input, 25.5e6 * std::cos(angle));
  eph.PosY = Varied(input, 25.5e6 * std::sin(angle));
  eph.VelZ = Varied(input, 3950);
  eph.AccX = Varied(input, 1e-6);
  eph.TauN = Varied(input, 1e-4);
  return eph;
}

void RequireState(OrbitResult result, const SatelliteState& state) {
  if (result != OrbitResult::Ok) return;
  const C_Vector3& p = state.position;
  const double radius = std::hypot(p.X(), p.Y(), p.Z());
  Fuzz::Require(radius > 20e6 && radius < 50e6, "a satellite is where satellites are");
  Fuzz::Require(std::isfinite(state.clockOffset) && std::isfinite(state.clockDrift), "a clock is finite");
  Fuzz::Require(std::isfinite(state.velocity.X() + state.velocity.Y() + state.velocity.Z()), "a velocity is finite");
}

struct S_Sky {
  EphemerisStore ephemerides;
  std::array<PointRanges, 40> satellites;
  PointEpoch epoch;
};

void AddSatellite(Fuzz::C_Input& input, S_Sky& sky) {
  const auto system = ALGO::eGNSSSystem(input.Below(7));
  const auto svId = static_cast<std::uint8_t>(1 + input.Below(32));
  const C_GnssTime time(kWeek, Varied(input, kTime), ALGO::GNSS_GPS);
  SatelliteState state;
  if (system == ALGO::GNSS_GLONASS || system == ALGO::GNSS_SBAS) {
    const S_IFPvaEphRec eph = Pva(input, system, svId);
    RequireState(StateAt(eph, time, 18, state), state);
    sky.ephemerides.Note(eph);
  } else {
    const S_IFKeplerEphRec eph = Kepler(input, system, svId);
    RequireState(StateAt(eph, time, state), state);
    sky.ephemerides.Note(eph);
  }
  PointRanges& ranges = sky.satellites[sky.epoch.numSatellites++];
  ranges.system = system;
  ranges.svId = svId;
  ranges.first = {"1C", Varied(input, 21e6 + 1e5 * input.Below(40)), 1575.42e6};
  if (input.Below(2) == 0) ranges.second = {"2W", Varied(input, ranges.first.range), 1227.60e6};
}

void RequireSolution(const PointSolution& solution, const PointEpoch& epoch) {
  Fuzz::Require(solution.numSatellites == epoch.numSatellites, "each satellite has its use");
  if (solution.result != PointResult::Ok) return;
  std::size_t used = 0;
  for (std::size_t i = 0; i < solution.numSatellites; ++i) used += solution.satellites[i].use == PointUse::Used;
  Fuzz::Require(used == solution.numUsed && used >= 4, "as many satellites are used as it says");
  const C_Vector3& p = solution.position;
  Fuzz::Require(std::isfinite(p.X() + p.Y() + p.Z() + solution.pdop + solution.residualRms), "a position is finite");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4000) return 0;
  Fuzz::C_Input input(data, size);
  S_Sky sky;
  sky.epoch.time = C_GnssTime(kWeek, Varied(input, kTime), ALGO::GNSS_GPS);
  sky.epoch.leapSeconds = static_cast<unsigned char>(input.Below(256));
  sky.epoch.satellites = sky.satellites.data();
  PointSolver solver;
  while (!input.IsEmpty() && sky.epoch.numSatellites < sky.satellites.size()) {
    AddSatellite(input, sky);
    RequireSolution(solver.Solve(sky.epoch, sky.ephemerides), sky.epoch);
  }
  return 0;
}
