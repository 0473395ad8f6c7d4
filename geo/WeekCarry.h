// Whole weeks carried between a week number and the seconds of week that belong to it.
//
// Internal. `C_GnssTime` and the week resolution of the decoders normalize times by the same rule, except for how many
// weeks they carry forward.
#ifndef VELAGNSS_GEO_WEEK_CARRY_H
#define VELAGNSS_GEO_WEEK_CARRY_H

namespace velagnss::geo {

// The whole part of a number modulo 65536; 0 for NaN and infinities. Unlike a cast it is defined for every double.
unsigned short WholePart16(double value);

// Makes negative seconds positive by as many weeks as it takes, or one more: the result is in (0, 604800]. The week
// number wraps. The time it takes does not depend on how negative the seconds are, and the result has the bits of
// adding one week after another. NaN and infinities are left unchanged.
void BorrowWeeks(unsigned short& week, double& seconds);

// Brings seconds into [0, 604800): `BorrowWeeks`, then all whole weeks are carried into the week number, which wraps.
void CarryWeeks(unsigned short& week, double& seconds);

}  // namespace velagnss::geo

#endif  // VELAGNSS_GEO_WEEK_CARRY_H
