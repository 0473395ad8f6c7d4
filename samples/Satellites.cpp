#include "samples/Satellites.h"

#include <algorithm>
#include <iterator>

namespace {

// The orbits are chosen to spread the satellites over the sky of Greenwich. Those of QZSS stay over the western
// Pacific.
// clang-format off
constexpr S_Satellite kSatellites[] = {
    {eGps,       4, eUsed,        -46,   68,  0},
    {eGps,       5, eUsed,       -162, -153,  0},
    {eGps,       7, eUnhealthy,   155,   17,  0},
    {eGps,      12, eUsed,        -67,  -56,  0},
    {eGps,      13, eUsed,       -133, -151,  0},
    {eGps,      15, eUsed,        169,  -99,  0},
    {eGps,      18, eNotTracked,  123,  110,  0},
    {eGps,      20, eUsed,        169,  137,  0},
    {eGps,      25, eUsed,       -158,  156,  0},
    {eGps,      29, eUsed,       -109,   49,  0},
    {eGlonass,   3, eUsed,        -39,  108,  5},
    {eGlonass,   4, eUsed,       -149,  114,  6},
    {eGlonass,   5, eUsed,        -44,   15,  1},
    {eGlonass,  13, eUsed,         14,  107, -2},
    {eGlonass,  14, eUnhealthy,   -91,  128, -7},
    {eGlonass,  19, eNotTracked,  -87,   22,  3},
    {eGlonass,  24, eUsed,        160,  104,  2},
    {eGalileo,   3, eUsed,        -44,   85,  0},
    {eGalileo,   5, eUsed,          1,   63,  0},
    {eGalileo,   9, eUsed,        -30,  102,  0},
    {eGalileo,  31, eUsed,        -60,   72,  0},
    {eGalileo,  34, eNotTracked,  149,  121,  0},
    {eBeidou,   11, eUsed,         21,   55,  0},
    {eBeidou,   14, eUsed,        -88,  -37,  0},
    {eBeidou,   19, eUsed,        140,  178,  0},
    {eBeidou,   21, eUsed,       -141,  100,  0},
    {eBeidou,   22, eUsed,        -54,   83,  0},
    {eBeidou,   26, eUsed,          1,  -81,  0},
    {eBeidou,   33, eUsed,        -99,  121,  0},
    {eBeidou,   35, eUsed,         37,   54,  0},
    {eQzss,    194, eUsed,         85,   57,  0},
    {eQzss,    195, eUsed,        -46,  125,  0},
    {eQzss,    199, eUsed,        161,  -29,  0},
};
// clang-format on

}  // namespace

std::vector<S_Satellite> SatellitesInView(eSystem system) {
  std::vector<S_Satellite> found;
  std::copy_if(std::begin(kSatellites), std::end(kSatellites), std::back_inserter(found),
               [system](const S_Satellite& satellite) { return satellite.system == system; });
  return found;
}

std::vector<S_Satellite> TrackedSatellites(eSystem system) {
  std::vector<S_Satellite> satellites = SatellitesInView(system);
  std::erase_if(satellites, [](const S_Satellite& satellite) { return satellite.use == eNotTracked; });
  return satellites;
}

S_Satellite SatelliteOfRound(eSystem system, unsigned int round) {
  const std::vector<S_Satellite> satellites = TrackedSatellites(system);
  return satellites[round % satellites.size()];
}
