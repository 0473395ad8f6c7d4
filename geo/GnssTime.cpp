#include "geo/GnssTime.h"

#include <cmath>

#include "geo/WeekCarry.h"

namespace {

using ALGO::kMjdOfGpsEpoch;
using ALGO::kSecondsPerDay;
using ALGO::kSecondsPerWeek;

constexpr unsigned int kMjdOf1901 = 15385;           // 1 January 1901, start of the first four-year cycle
constexpr unsigned int kDaysPerCycle = 4 * 365 + 1;  // right as long as every fourth year is a leap year, to 2100

// Days before the first of a month, by month - 1; the thirteenth entry is the length of the year.
constexpr unsigned short kDaysBefore[2][13] = {
    {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365},
    {0, 31, 60, 91, 121, 152, 182, 213, 244, 274, 305, 335, 366},
};

// The row of the table above. The full Gregorian rule, unlike the four-year cycles below: 2100 is not a leap year here.
constexpr const unsigned short* DaysBeforeMonth(unsigned int year) {
  const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  return kDaysBefore[leap ? 1 : 0];
}

constexpr bool IsMonth(unsigned char month) { return month >= 1 && month <= 12; }

// Days from 31 December 1900 to day `doy` of a year; wraps before 1901.
constexpr unsigned int DaysSince1901(unsigned short year, unsigned int doy) {
  const int years = year - 1901;
  const int cycles = years / 4;
  return static_cast<unsigned int>(cycles * static_cast<int>(kDaysPerCycle) + (years - 4 * cycles) * 365) + doy;
}
static_assert(DaysSince1901(1901, 1) == 1);
static_assert(DaysSince1901(1980, 6) + kMjdOf1901 - 1 == kMjdOfGpsEpoch);

unsigned short DayOfYear(unsigned short year, unsigned char month, unsigned char day) {
  return static_cast<unsigned short>(day + DaysBeforeMonth(year)[month - 1]);
}

// The low 32 bits of a number truncated to 64 bits; 0 for what 64 bits do not hold.
unsigned int WholePart32(double value) {
  if (!(std::fabs(value) < 0x1p63)) return 0;
  return static_cast<unsigned int>(static_cast<long long>(value));
}

// By divisions in this order: the rounding of the chain is part of the results.
double FractionOfDay(unsigned char hour, unsigned char minute, double sec) {
  return ((sec / 60 + minute) / 60 + hour) / 24;
}

// Splits days since the epoch. The days beyond week 65535 stay in the remainder, because the week is stored in 16 bits.
unsigned int DaysIntoWeek(unsigned int daysSinceEpoch, unsigned short& week) {
  week = static_cast<unsigned short>(daysSinceEpoch / 7);
  return daysSinceEpoch - 7U * week;
}

// Seconds into [0, 604800). The carry is a signed 16-bit number, so no more than 32767 weeks move forward.
void Normalize(unsigned short& week, double& sec) {
  velagnss::geo::BorrowWeeks(week, sec);
  const auto weeks = static_cast<short>(velagnss::geo::WholePart16(sec / kSecondsPerWeek));
  if (weeks == 0) return;
  week = static_cast<unsigned short>(week + weeks);
  sec -= kSecondsPerWeek * weeks;
}

// Hour and minute are truncated and the seconds get the rest, so that rounding can leave 59.999... or 60.0 seconds.
void SplitTimeOfDay(double fracOfDay, S_GregorianTime& time) {
  // Each part from the whole fraction, not from the rest of the part before.
  time.hour = static_cast<unsigned char>(WholePart32(fracOfDay * 24));
  time.minute = static_cast<unsigned char>(WholePart32(fracOfDay * 1440 - time.hour * 60));
  time.seconds = kSecondsPerDay * fracOfDay - time.hour * 3600 - 60 * time.minute;
}

// Year and day of year from days since 1 January 1901, day 0; returns the day of year.
unsigned short SplitCycles(unsigned int days, unsigned short& year) {
  const unsigned int inCycle = days % kDaysPerCycle;
  const unsigned int yearInCycle = inCycle / 365 - inCycle / 1460;  // the last day of a leap year stays in its year
  year = static_cast<unsigned short>(yearInCycle + 4 * (days / kDaysPerCycle) + 1901);
  return static_cast<unsigned short>(inCycle + 1 - 365 * yearInCycle);
}

// Estimates the month: 0.032 months per day are never a month too many and at most one too few.
void SplitDayOfYear(unsigned short doy, S_GregorianTime& date) {
  const unsigned short* daysBefore = DaysBeforeMonth(date.year);
  const auto estimate = static_cast<unsigned char>(doy * 0.032);
  date.month = static_cast<unsigned char>(estimate + (doy > daysBefore[estimate + 1] ? 2 : 1));
  date.day = static_cast<unsigned char>(doy - daysBefore[date.month - 1]);
}

}  // namespace

C_GnssTime::C_GnssTime() : m_system(ALGO::GNSS_GPS), m_week(0), m_secOfWeek(0.0) {}

C_GnssTime::C_GnssTime(unsigned short week, double sec, ALGO::eGNSSSystem system)
    : m_system(system), m_week(week), m_secOfWeek(sec) {
  Normalize(m_week, m_secOfWeek);
}

void C_GnssTime::Set(unsigned short week, double sec, ALGO::eGNSSSystem system) {
  m_system = system;
  m_week = week;
  m_secOfWeek = sec;
}

void C_GnssTime::Set(unsigned short week, unsigned char dow, double secOfDay, ALGO::eGNSSSystem system) {
  Set(week, dow * kSecondsPerDay + secOfDay, system);
}

void C_GnssTime::Set_MJD(unsigned int mjd, double fracOfDay, ALGO::eGNSSSystem system) {
  m_system = system;
  MjdToGPS(mjd, fracOfDay, m_week, m_secOfWeek);
}

void C_GnssTime::Set(unsigned short year, unsigned short doy, unsigned char hour, unsigned char minute, double sec,
                     ALGO::eGNSSSystem system) {
  m_system = system;
  YdhmsToGps(year, doy, hour, minute, sec, m_week, m_secOfWeek);
}

void C_GnssTime::Set(double doyWithFraction, unsigned short year, ALGO::eGNSSSystem system) {
  m_system = system;
  const double fraction = doyWithFraction - std::trunc(doyWithFraction);
  YdhmsToGps(year, velagnss::geo::WholePart16(doyWithFraction), 0, 0, fraction * kSecondsPerDay, m_week, m_secOfWeek);
}

void C_GnssTime::Set(unsigned short year, unsigned char month, unsigned char day, unsigned char hour,
                     unsigned char minute, double sec, ALGO::eGNSSSystem system) {
  m_system = system;
  GregorianToGps(year, month, day, hour, minute, sec, m_week, m_secOfWeek);
}

unsigned short C_GnssTime::GetDoy() const { return GetDoy(m_week, m_secOfWeek); }

bool C_GnssTime::Equals(const C_GnssTime& other, double tolerance) const {
  if (m_system != other.m_system) return false;
  const double difference = *this - other;
  // NaN on either side makes every comparison false.
  if (tolerance < 0) return difference == 0.0;
  return std::fabs(difference) <= tolerance;
}

// In the same week the difference of the seconds has only its own rounding.
double C_GnssTime::operator-(const C_GnssTime& other) const {
  const double seconds = m_secOfWeek - other.m_secOfWeek;
  if (m_week == other.m_week) return seconds;
  return seconds + (m_week - other.m_week) * kSecondsPerWeek;
}

// The constructor normalizes.
C_GnssTime C_GnssTime::operator-(double sec) const { return C_GnssTime(m_week, m_secOfWeek - sec, m_system); }
C_GnssTime C_GnssTime::operator+(double sec) const { return C_GnssTime(m_week, m_secOfWeek + sec, m_system); }

bool C_GnssTime::operator==(const C_GnssTime& other) const { return *this - other == 0.0; }
bool C_GnssTime::operator!=(const C_GnssTime& other) const { return !(*this == other); }
bool C_GnssTime::operator<(const C_GnssTime& other) const { return *this - other < 0; }
bool C_GnssTime::operator<=(const C_GnssTime& other) const { return *this - other <= 0; }
bool C_GnssTime::operator>(const C_GnssTime& other) const { return *this - other > 0; }
bool C_GnssTime::operator>=(const C_GnssTime& other) const { return *this - other >= 0; }

void C_GnssTime::YdhmsToGps(unsigned short year, unsigned short doy, unsigned char hour, unsigned char minute,
                            double sec, unsigned short& week, double& secOfWeek) {
  // Unsigned, so that a date before the epoch wraps to a meaningless week, as documented, instead of being undefined.
  constexpr unsigned int kDaysToEpoch = kMjdOfGpsEpoch - kMjdOf1901 + 1;
  const unsigned int day = DaysIntoWeek(DaysSince1901(year, doy) - kDaysToEpoch, week);
  secOfWeek = (FractionOfDay(hour, minute, sec) + day) * kSecondsPerDay;
}

void C_GnssTime::GregorianToGps(unsigned short year, unsigned char month, unsigned char day, unsigned char hour,
                                unsigned char minute, double sec, unsigned short& week, double& secOfWeek) {
  week = 0;
  secOfWeek = 0.0;
  if (!IsMonth(month)) return;
  YdhmsToGps(year, DayOfYear(year, month, day), hour, minute, sec, week, secOfWeek);
}

unsigned int C_GnssTime::GregorianToMJD(unsigned short year, unsigned char month, unsigned char day) {
  if (!IsMonth(month)) return 0;
  return DaysSince1901(year, DayOfYear(year, month, day)) + kMjdOf1901 - 1;
}

void C_GnssTime::GregorianToMJD(unsigned short year, unsigned char month, unsigned char day, unsigned char hour,
                                unsigned char minute, double sec, unsigned int& mjd, double& fracOfDay) {
  mjd = GregorianToMJD(year, month, day);
  fracOfDay = FractionOfDay(hour, minute, sec);
}

void C_GnssTime::MjdToGPS(unsigned int mjd, double fracOfDay, unsigned short& week, double& secOfWeek) {
  week = 0;
  secOfWeek = 0.0;
  if (mjd < kMjdOfGpsEpoch || fracOfDay < 0 || fracOfDay >= 1) return;
  const unsigned int day = DaysIntoWeek(mjd - kMjdOfGpsEpoch, week);
  secOfWeek = (fracOfDay + day) * kSecondsPerDay;
}

void C_GnssTime::GpsToOthers(unsigned short week, double secOfWeek, S_GregorianTime& gregorian, unsigned short& doy,
                             unsigned int& mjd, double& fracOfDay) {
  Normalize(week, secOfWeek);
  // The day by the sum and the fraction by the remainder: for seconds a hair below midnight the two can be a day apart.
  mjd = WholePart32(week * 7 + static_cast<int>(kMjdOfGpsEpoch) + secOfWeek / kSecondsPerDay);
  fracOfDay = std::fmod(secOfWeek, kSecondsPerDay) / kSecondsPerDay;
  doy = SplitCycles(mjd - kMjdOf1901, gregorian.year);
  SplitTimeOfDay(fracOfDay, gregorian);
  SplitDayOfYear(doy, gregorian);
}

// Through all calendar forms: the day of year follows from the year.
unsigned short C_GnssTime::GetDoy(unsigned short week, double secOfWeek) {
  S_GregorianTime gregorian;
  unsigned short doy;
  unsigned int mjd;
  double fracOfDay;
  GpsToOthers(week, secOfWeek, gregorian, doy, mjd, fracOfDay);
  return doy;
}

void C_GnssTime::GetDowAndSecofDay(double secOfWeek, unsigned char& dow, double& secOfDay) {
  dow = static_cast<unsigned char>(WholePart32(secOfWeek / kSecondsPerDay));
  secOfDay = secOfWeek - kSecondsPerDay * dow;
}
