// Whole weeks between a week number and the seconds of week that belong to it.
#ifndef VELAGNSS_GEO_WEEK_CARRY_H
#define VELAGNSS_GEO_WEEK_CARRY_H

namespace ALGO {

inline constexpr double kSecondsPerDay = 86400.0;
inline constexpr double kSecondsPerWeek = 7 * 86400.0;

// The whole part of a number modulo 65536; 0 for NaN and infinities.
unsigned short WholePart16(double value);

// Negative seconds become positive by as many weeks as it takes, or one more: (0, 604800]. The week number wraps. Takes
// the same time however far back the seconds lie, and with whole weeks carried gives the bits of adding one week after
// the other. NaN and infinities are left alone.
void BorrowWeeks(unsigned short& week, double& seconds);

// Seconds into [0, 604800): `BorrowWeeks`, then all whole weeks are carried into the week number, which wraps.
void CarryWeeks(unsigned short& week, double& seconds);

}  // namespace ALGO

#endif  // VELAGNSS_GEO_WEEK_CARRY_H
