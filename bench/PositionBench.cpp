// Positions: of a satellite by each kind of ephemeris, and of a receiver.
#include <benchmark/benchmark.h>

#include "positioning/PointSolver.h"
#include "tests/Constellation.h"

namespace {

using namespace velagnss;
using namespace constellation;

// At a time that is never the same.
void Orbit(benchmark::State& state, ALGO::eGNSSSystem system, double age) {
  const S_IFKeplerEphRec kepler = Kepler(system, 7).ephemeris;
  const S_IFPvaEphRec glonass = Glonass(7);
  SatelliteState result;
  double seconds = kToe + age;
  for (auto _ : state) {
    const C_GnssTime time(kWeek, seconds += 1e-6, ALGO::GNSS_GPS);
    const OrbitResult code =
        system == ALGO::GNSS_GLONASS ? StateAt(glonass, time, kLeap, result) : StateAt(kepler, time, result);
    if (code != OrbitResult::Ok) state.SkipWithError("refused");
    benchmark::DoNotOptimize(result);
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK_CAPTURE(Orbit, Gps, ALGO::GNSS_GPS, 3000);
BENCHMARK_CAPTURE(Orbit, Beidou, ALGO::GNSS_BEIDOU, 3000);
BENCHMARK_CAPTURE(Orbit, Glonass60s, ALGO::GNSS_GLONASS, 50);
BENCHMARK_CAPTURE(Orbit, Glonass900s, ALGO::GNSS_GLONASS, 890);

void Position(benchmark::State& state) {
  Receiver receiver;
  receiver.NoteAll();
  const auto ranges = receiver.Measure(kToe + 600);
  const PointEpoch epoch = EpochOf(ranges, kToe + 600);
  PointSolver solver;
  for (auto _ : state)
    if (solver.Solve(epoch, receiver.store).result != PointResult::Ok) state.SkipWithError("not solved");
  state.counters["satellites"] = static_cast<double>(ranges.size());
}
BENCHMARK(Position);

}  // namespace

BENCHMARK_MAIN();
