#include "geo/LeapSeconds.h"

#include <erfa.h>
#include <gtest/gtest.h>

namespace {

using namespace velagnss;

constexpr unsigned int kMjdOfGpsEpoch = 44244;

// ERFA has TAI - UTC, which was 19 s when GPS time began.
TEST(LeapSeconds, AreThoseOfErfa) {
  for (unsigned int mjd = kMjdOfGpsEpoch; mjd < 61000; ++mjd) {
    int year = 0;
    int month = 0;
    int day = 0;
    double fraction = 0;
    double taiMinusUtc = 0;
    ASSERT_EQ(eraJd2cal(2400000.5, mjd, &year, &month, &day, &fraction), 0);
    ASSERT_GE(eraDat(year, month, day, 0, &taiMinusUtc), 0);
    ASSERT_EQ(LeapSecondsOn(mjd) + 19, taiMinusUtc) << mjd;
  }
}

// Around each midnight of both scales, leap seconds included.
TEST(LeapSeconds, ThereAndBack) {
  for (unsigned int mjd = kMjdOfGpsEpoch; mjd < 61000; ++mjd) {
    const unsigned int leap = LeapSecondsOn(mjd + 1) - LeapSecondsOn(mjd);
    for (const double seconds : {0.0, 0.25, 43200.0, 86399.75, 86399.75 + leap}) {
      const C_GnssTime gps = GpsOfUtc({mjd, seconds});
      const UtcTime utc = UtcOfGps(gps);
      ASSERT_EQ(utc.mjd, mjd) << seconds;
      ASSERT_EQ(utc.secondsOfDay, seconds) << mjd;
      ASSERT_EQ(gps - C_GnssTime(0, 0.0, ALGO::GNSS_GPS),
                (mjd - kMjdOfGpsEpoch) * ALGO::kSecondsPerDay + seconds + LeapSecondsOn(mjd));
    }
  }
}

}  // namespace
