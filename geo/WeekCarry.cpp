#include "geo/WeekCarry.h"

#include <cmath>

namespace ALGO {

unsigned short WholePart16(double value) {
  if (!std::isfinite(value)) return 0;
  return static_cast<unsigned short>(static_cast<int>(std::fmod(std::trunc(value), 65536.0)));
}

void BorrowWeeks(unsigned short& week, double& seconds) {
  if (!(seconds < 0) || std::isinf(seconds)) return;
  // Week after week is added without rounding until less than a week is missing: a week is a multiple of 128 s, and the
  // sums only lose magnitude. So the remainders are exact, and the last addition alone may round.
  const double within65536Weeks = std::fmod(seconds, 65536 * kSecondsPerWeek);
  const double missing = std::fmod(within65536Weeks, kSecondsPerWeek);
  week = static_cast<unsigned short>(week - WholePart16((missing - within65536Weeks) / kSecondsPerWeek));
  seconds = missing + kSecondsPerWeek;
  --week;
}

void CarryWeeks(unsigned short& week, double& seconds) {
  BorrowWeeks(week, seconds);
  const double weeks = std::trunc(seconds / kSecondsPerWeek);
  if (weeks == 0 || !std::isfinite(weeks)) return;
  week = static_cast<unsigned short>(week + WholePart16(weeks));
  seconds -= kSecondsPerWeek * weeks;
}

}  // namespace ALGO
