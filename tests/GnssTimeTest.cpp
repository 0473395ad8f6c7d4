#include "geo/GnssTime.h"

#include <erfa.h>

#include <cmath>
#include <limits>
#include <tuple>
#include <vector>

#include "tests/Cases.h"

namespace {

using ALGO::GNSS_GALILEO;
using ALGO::GNSS_GPS;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kWeek = 604800;

// Equal bit for bit; NaN is equal to itself.
void ExpectSame(double value, double expected) {
  if (std::isnan(expected))
    EXPECT_TRUE(std::isnan(value));
  else
    EXPECT_EQ(value, expected);
}

struct S_NormaliseCase {
  const char* name;
  unsigned short week;
  double seconds;
  unsigned short expectedWeek;
  double expectedSeconds;
};

const S_NormaliseCase kNormalise[] = {
    {"WithinTheWeek", 100, 604799.999, 100, 604799.999},
    {"ASecondBefore", 100, -1, 99, 604799},
    {"TwoWeeksLater", 100, 1209600.5, 102, 0.5},
    {"ExactlyAWeek", 100, kWeek, 101, 0},
    {"ExactlyAWeekBefore", 100, -kWeek, 99, 0},
    {"AHairBefore", 100, -1e-20, 100, 0},  // -1e-20 s + a week rounds to a week, which is carried again
    {"AHairBelowTheWeek", 100, std::nextafter(kWeek, 0), 100, std::nextafter(kWeek, 0)},
    {"BelowWeekZero", 0, -1, 65535, 604799},
    {"BeyondTheLastWeek", 65535, kWeek + 1, 0, 1},
    {"FarBack", 5, -604800.0 * 40000 - 0.25, 65536 + 5 - 40001, 604799.75},
    {"ExactlyFarBack", 5, -604800.0 * 40000, 65536 + 5 - 40000, 0},
    {"MostWeeksCarried", 0, kWeek * 32767 + 5, 32767, 5},
    {"QuotientWrapsTo16Bits", 0, kWeek * 32768, 32768, kWeek * 65536},  // carried are -32768 weeks
    {"QuotientWrapsToNothing", 7, kWeek * 65536, 7, kWeek * 65536},
    {"NaN", 7, kNaN, 7, kNaN},
    {"Infinity", 7, kInf, 7, kInf},
    {"MinusInfinity", 7, -kInf, 7, -kInf},
};

TEST_ROWS(Normalise, BySumDifferenceAndConstructor, kNormalise, c) {
  C_GnssTime raw;
  raw.Set(c.week, c.seconds, GNSS_GALILEO);
  ExpectSame(raw.m_secOfWeek, c.seconds);
  for (const C_GnssTime& time : {C_GnssTime(c.week, c.seconds, GNSS_GALILEO), raw + 0.0, raw - 0.0}) {
    EXPECT_EQ(time.m_week, c.expectedWeek);
    ExpectSame(time.m_secOfWeek, c.expectedSeconds);
    EXPECT_EQ(time.m_system, GNSS_GALILEO);
  }
}

TEST(GnssTime, GoesBackAsWeekAfterWeekDoes) {
  double seconds = -1;
  for (int i = 0; i < 400; ++i, seconds *= 1.0371) {
    unsigned short week = 1000;
    double rest = seconds;
    for (; rest < 0; rest += kWeek) --week;
    const C_GnssTime time(1000, seconds, GNSS_GPS);
    ASSERT_EQ(time.m_week, rest == kWeek ? week + 1 : week) << seconds;
    ASSERT_EQ(time.m_secOfWeek, rest == kWeek ? 0 : rest) << seconds;
  }
}

struct S_CompareCase {
  const char* name;
  unsigned short weekA;
  double secondsA;
  unsigned short weekB;
  double secondsB;
  double difference;
};

const S_CompareCase kCompare[] = {
    {"Equal", 2000, 10, 2000, 10, 0},
    {"AcrossAWeek", 2000, 10, 1999, 604790, 20},
    {"NotNormalised", 100, 700000, 101, 95200, 0},
    {"Earlier", 0, 0, 65535, 1, -65535 * kWeek - 1},
    {"NaN", 1, kNaN, 1, 0, kNaN},
};

TEST_ROWS(Compare, FollowsTheDifference, kCompare, c) {
  C_GnssTime a, b;
  a.Set(c.weekA, c.secondsA, GNSS_GPS);
  b.Set(c.weekB, c.secondsB, GNSS_GALILEO);  // the system is a label only
  ExpectSame(a - b, c.difference);
  EXPECT_EQ(a == b, c.difference == 0);
  EXPECT_EQ(a != b, !(c.difference == 0));
  EXPECT_EQ(a < b, c.difference < 0);
  EXPECT_EQ(a <= b, c.difference <= 0);
  EXPECT_EQ(a > b, c.difference > 0);
  EXPECT_EQ(a >= b, c.difference >= 0);
  EXPECT_FALSE(a.Equals(b, 1e300)) << "another system";
}

TEST(GnssTime, EqualsWithinATolerance) {
  const C_GnssTime time(2000, 0.5, GNSS_GPS);
  const C_GnssTime later = time + 0x1p-40;
  EXPECT_TRUE(later.Equals(time, 0x1p-40));
  EXPECT_FALSE(later.Equals(time, 0x1p-41));
  EXPECT_FALSE(later.Equals(time, 0));
  EXPECT_FALSE(later.Equals(time, -1));
  EXPECT_TRUE(time.Equals(time, -1));
  EXPECT_FALSE(time.Equals(time, kNaN));
}

struct S_Day {
  unsigned int mjd;
  unsigned short year, doy, week;
  unsigned char month, day;
  double noon;  // s of week
};

// Every day from 6 January 1980 to 31 December 2100. ERFA's calendar is another one than ours: no cycles of four years,
// valid over millennia.
std::vector<S_Day> DaysByErfa() {
  constexpr double kMjdOrigin = 2400000.5;  // Julian Date
  std::vector<S_Day> days;
  for (unsigned int mjd = 44244;; ++mjd) {
    int year, month, day;
    double origin, newYear, fraction;
    EXPECT_EQ(eraJd2cal(kMjdOrigin, mjd, &year, &month, &day, &fraction), 0);
    EXPECT_EQ(eraCal2jd(year, 1, 1, &origin, &newYear), 0);
    if (year > 2100) return days;
    days.push_back({mjd, static_cast<unsigned short>(year), static_cast<unsigned short>(mjd - newYear + 1),
                    static_cast<unsigned short>((mjd - 44244) / 7), static_cast<unsigned char>(month),
                    static_cast<unsigned char>(day), ((mjd - 44244) % 7 + 0.5) * 86400});
  }
}

TEST(GnssTime, CalendarAgreesWithErfa) {
  for (const S_Day& d : DaysByErfa()) {
    ASSERT_EQ(C_GnssTime::GregorianToMJD(d.year, d.month, d.day), d.mjd);
    C_GnssTime byDate, byDoy, byFraction, byMjd;
    byDate.Set(d.year, d.month, d.day, 12, 0, 0.0, GNSS_GPS);
    byDoy.Set(d.year, d.doy, 12, 0, 0.0, GNSS_GPS);
    byFraction.Set(d.doy + 0.5, d.year, GNSS_GPS);
    byMjd.Set_MJD(d.mjd, 0.5, GNSS_GPS);
    for (const C_GnssTime& time : {byDate, byDoy, byFraction, byMjd}) {
      ASSERT_EQ(time.m_week, d.week) << d.mjd;
      ASSERT_EQ(time.m_secOfWeek, d.noon) << d.mjd;
      ASSERT_EQ(time.GetDoy(), d.doy) << d.mjd;
    }
    S_GregorianTime date;
    unsigned short doy;
    unsigned int mjd;
    double fraction;
    C_GnssTime::GpsToOthers(d.week, d.noon + 2096.5, date, doy, mjd, fraction);  // 12:34:56.5
    ASSERT_EQ(mjd, d.mjd);
    ASSERT_EQ(doy, d.doy) << d.mjd;
    ASSERT_EQ(std::tuple(date.year, date.month, date.day, date.hour, date.minute),
              std::tuple(d.year, d.month, d.day, 12, 34));
    ASSERT_NEAR(date.seconds, 56.5, 1e-9) << d.mjd;
    ASSERT_EQ(fraction, 45296.5 / 86400) << d.mjd;
  }
}

// A day beyond the end of its month is counted on, here to 1 February 2024. Without a month there is only the time of
// day.
TEST(GnssTime, DatesThatDoNotExist) {
  for (const auto& [month, day, mjd] : {std::tuple(1, 32, 60341U), {0, 1, 0U}, {13, 1, 0U}, {255, 1, 0U}}) {
    const auto monthByte = static_cast<unsigned char>(month), dayByte = static_cast<unsigned char>(day);
    C_GnssTime time;
    time.Set(2024, monthByte, dayByte, 6, 1, 2.5, GNSS_GALILEO);
    EXPECT_EQ(time.m_week, mjd == 0 ? 0 : 2299);
    EXPECT_NEAR(time.m_secOfWeek, mjd == 0 ? 0 : 4 * 86400 + 21662.5, 1e-9);
    unsigned int result;
    double fraction;
    C_GnssTime::GregorianToMJD(2024, monthByte, dayByte, 6, 1, 2.5, result, fraction);
    EXPECT_EQ(result, mjd);
    EXPECT_DOUBLE_EQ(fraction, 21662.5 / 86400);
  }
}

TEST(GnssTime, ModifiedJulianDatesThatAreRefused) {
  for (const auto& [mjd, fraction] : {std::pair(44243U, 0.5), {50000U, 1.0}, {50000U, -1e-300}}) {
    C_GnssTime time(5, 5.0, GNSS_GPS);
    time.Set_MJD(mjd, fraction, GNSS_GALILEO);
    EXPECT_EQ(time.m_system, GNSS_GALILEO);
    EXPECT_EQ(time.m_week, 0);
    EXPECT_EQ(time.m_secOfWeek, 0);
  }
}

TEST(GnssTime, DaysOfWeek) {
  unsigned char dow;
  double secOfDay;
  C_GnssTime::GetDowAndSecofDay(604799.0, dow, secOfDay);
  EXPECT_EQ(dow, 6);
  EXPECT_EQ(secOfDay, 86399);
  C_GnssTime::GetDowAndSecofDay(-86401.0, dow, secOfDay);  // the quotient is cut to 8 bits
  EXPECT_EQ(dow, 255);
  EXPECT_EQ(secOfDay, -86401.0 - 86400.0 * 255);
  C_GnssTime time;
  time.Set(2300, static_cast<unsigned char>(8), -1.5, GNSS_GPS);
  EXPECT_EQ(time.m_secOfWeek, 8 * 86400 - 1.5) << "not normalised";
}

TEST(GnssTime, ConvertsAnySecondsWithoutHarm) {
  for (const double seconds : {kNaN, kInf, -kInf, 1e300, -1e12, -1e300, kWeek * 65536 * 7, 604799.99999999988}) {
    if (std::isfinite(seconds) && seconds < 0) {
      EXPECT_LE(std::fabs(C_GnssTime(1000, seconds, GNSS_GPS).m_secOfWeek - kWeek / 2), kWeek / 2) << seconds;
    }
    S_GregorianTime date;
    unsigned short doy;
    unsigned int mjd;
    double fraction;
    unsigned char dow;
    double secOfDay;
    C_GnssTime::GpsToOthers(65535, seconds, date, doy, mjd, fraction);
    EXPECT_LE(doy, 366);
    C_GnssTime::GetDowAndSecofDay(seconds, dow, secOfDay);
    C_GnssTime time;
    time.Set(seconds, 2024, GNSS_GPS);
  }
}

}  // namespace
