#include "geo/WeekCarry.h"

#include <cmath>

#include "geo/GnssTime.h"

namespace velagnss::geo {

using ALGO::kSecondsPerWeek;

unsigned short WholePart16(double value) {
  if (!std::isfinite(value)) return 0;
  // Through int, because the remainder has a sign: -1 is 65535.
  return static_cast<unsigned short>(static_cast<int>(std::fmod(std::trunc(value), 65536.0)));
}

void BorrowWeeks(unsigned short& week, double& seconds) {
  if (!(seconds < 0) || std::isinf(seconds)) return;
  // Adding one week after another does not round until less than a week is missing: a week is a multiple of 128 s, and
  // the sums only shrink. Remainders are exact as well, so that only the last addition may round, as in the loop.
  const double within65536Weeks = std::fmod(seconds, 65536 * kSecondsPerWeek);
  const double missing = std::fmod(within65536Weeks, kSecondsPerWeek);
  week = static_cast<unsigned short>(week - WholePart16((missing - within65536Weeks) / kSecondsPerWeek));
  seconds = missing + kSecondsPerWeek;
  --week;
}

void CarryWeeks(unsigned short& week, double& seconds) {
  BorrowWeeks(week, seconds);
  // Among them the one that borrowing rounds up to when next to nothing was missing.
  const double weeks = std::trunc(seconds / kSecondsPerWeek);
  if (weeks == 0 || !std::isfinite(weeks)) return;
  week = static_cast<unsigned short>(week + WholePart16(weeks));
  seconds -= kSecondsPerWeek * weeks;
}

}  // namespace velagnss::geo
