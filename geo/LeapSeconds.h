// GPS time and UTC: GPS time has no leap seconds, so it is ahead of UTC by those inserted since 1980.
//
// The table is built in. Its last entry is that of 1 January 2017, 18 s, which holds until the International Earth
// Rotation and Reference Systems Service (IERS) announces another leap second in its Bulletin C, about half a year in
// advance. The table then has to be extended in a new version of this library.
#ifndef VELAGNSS_GEO_LEAP_SECONDS_H
#define VELAGNSS_GEO_LEAP_SECONDS_H

#include "geo/GnssTime.h"
#include "velagnss_export.h"

namespace velagnss {

// The day of the last entry of the table, 1 January 2017, as a Modified Julian Date.
inline constexpr unsigned int kLastLeapSecondMjd = 57754;

// GPS time - UTC, in whole seconds, on a day of UTC given as a Modified Julian Date: 0 before 1 July 1981, 18 from
// 1 January 2017 on.
VELAGNSS_API unsigned int LeapSecondsOn(unsigned int mjd);

// A time in UTC. The leap second at the end of a day is from 86400 s on.
struct UtcTime {
  unsigned int mjd;     // day, Modified Julian Date
  double secondsOfDay;  // s, below 86401
};

// Conversions for times from 6 January 1980 on; the result of an earlier one is meaningless, as is that of seconds that
// are not finite. GPS times are normalized; their system is ignored. The result of `GpsOfUtc` is labeled GPS.
VELAGNSS_API UtcTime UtcOfGps(const C_GnssTime& time);
VELAGNSS_API C_GnssTime GpsOfUtc(const UtcTime& utc);

}  // namespace velagnss

#endif  // VELAGNSS_GEO_LEAP_SECONDS_H
