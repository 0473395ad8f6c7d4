// One moment in all its forms, and the difference between two.
#include <cstdio>

#include "geo/GnssTime.h"

int main() {
  C_GnssTime time;
  time.Set(2024, 5, 18, 23, 59, 42.0, ALGO::GNSS_GPS);
  std::printf("week %u, %.1f s, day of year %u\n", unsigned{time.m_week}, time.m_secOfWeek, unsigned{time.GetDoy()});

  S_GregorianTime date;
  unsigned short dayOfYear;
  unsigned int mjd;
  double fraction;
  const C_GnssTime later = time + 20.0;  // across the end of the week
  C_GnssTime::GpsToOthers(later.m_week, later.m_secOfWeek, date, dayOfYear, mjd, fraction);
  std::printf("20 s later: week %u, %04u-%02u-%02u %02u:%02u:%04.1f, MJD %u + %.6f\n", unsigned{later.m_week},
              unsigned{date.year}, unsigned{date.month}, unsigned{date.day}, unsigned{date.hour}, unsigned{date.minute},
              date.seconds, mjd, fraction);

  // Time scales are not converted: add the leap seconds to a UTC time first.
  C_GnssTime utc;
  utc.Set(2024, 5, 18, 23, 59, 24.0, ALGO::GNSS_GPS);
  const bool isSame = time.Equals(utc + 18.0, 1e-6);
  std::printf("GPS - UTC %.1f s, the same moment: %s\n", time - utc, isSame ? "yes" : "no");
}
