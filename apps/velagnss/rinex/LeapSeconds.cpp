#include "apps/velagnss/rinex/RinexHeader.h"
#include "apps/velagnss/text/Units.h"

namespace Host {
namespace {

// GPS time - UTC since the first day of each row, as a Modified Julian Date (IERS Bulletin C).
struct S_LeapRow {
  unsigned int mjd;
  unsigned int seconds;
};
constexpr S_LeapRow kLeapSeconds[] = {{57754, 18}, {57204, 17}, {56109, 16}, {54832, 15}, {53736, 14}, {51179, 13}};

}  // namespace

unsigned int C_StreamFacts::LeapSeconds(double epoch) const {
  if (m_leapSeconds) return *m_leapSeconds;
  const double mjd = kMjdOfGpsEpoch + epoch / kSecondsPerDay;
  for (const S_LeapRow& row : kLeapSeconds)
    if (mjd >= row.mjd) return row.seconds;
  return kLeapSeconds[5].seconds;
}

}  // namespace Host
