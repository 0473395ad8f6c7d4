#include "geo/LeapSeconds.h"

#include <algorithm>
#include <iterator>

namespace velagnss {
namespace {

using ALGO::kMjdOfGpsEpoch;
using ALGO::kSecondsPerDay;

// The days that began right after a leap second (IERS Bulletin C): each is one second more.
constexpr unsigned int kDays[] = {
    44786,  // 1 July 1981
    45151,  // 1 July 1982
    45516,  // 1 July 1983
    46247,  // 1 July 1985
    47161,  // 1 January 1988
    47892,  // 1 January 1990
    48257,  // 1 January 1991
    48804,  // 1 July 1992
    49169,  // 1 July 1993
    49534,  // 1 July 1994
    50083,  // 1 January 1996
    50630,  // 1 July 1997
    51179,  // 1 January 1999
    53736,  // 1 January 2006
    54832,  // 1 January 2009
    56109,  // 1 July 2012
    57204,  // 1 July 2015
    57754,  // 1 January 2017
};
static_assert(std::end(kDays)[-1] == kLastLeapSecondMjd && std::size(kDays) == 18);

}  // namespace

unsigned int LeapSecondsOn(unsigned int mjd) {
  return static_cast<unsigned int>(std::upper_bound(std::begin(kDays), std::end(kDays), mjd) - std::begin(kDays));
}

// A day of UTC begins as many seconds after that of GPS time as there have been leap seconds.
UtcTime UtcOfGps(const C_GnssTime& time) {
  const C_GnssTime normal = time + 0.0;
  unsigned char dayOfWeek = 0;
  double seconds = 0;
  C_GnssTime::GetDowAndSecofDay(normal.m_secOfWeek, dayOfWeek, seconds);
  const unsigned int mjd = kMjdOfGpsEpoch + 7U * normal.m_week + dayOfWeek;
  const double sinceMidnight = seconds - LeapSecondsOn(mjd);
  if (sinceMidnight >= 0) return {mjd, sinceMidnight};
  return {mjd - 1, seconds - LeapSecondsOn(mjd - 1) + kSecondsPerDay};
}

C_GnssTime GpsOfUtc(const UtcTime& utc) {
  const unsigned int days = utc.mjd - kMjdOfGpsEpoch;
  return {static_cast<unsigned short>(days / 7), days % 7 * kSecondsPerDay + utc.secondsOfDay + LeapSecondsOn(utc.mjd),
          ALGO::GNSS_GPS};
}

}  // namespace velagnss
