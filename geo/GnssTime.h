// Time of navigation satellites: week number and seconds of week, and their calendar forms.
//
// Weeks count from 6 January 1980, 0 h (Modified Julian Date 44244), on one continuous scale: 16 bits, no roll-over at
// 1024. No leap seconds are applied and no time scale is converted into another: the system is a label, which only
// `Equals` compares.
//
// The calendar conversions count four-year cycles of 1461 days from 1 January 1901. They are correct from 6 January
// 1980 to 31 December 2100. Dates outside that range are not refused, but 2100 has no 29 February, which the cycle
// expects: dates from 1 January 2101 on are a day off (that day itself is given as month 13). Times of day go through a
// chain of divisions and carry its rounding: a whole minute may come out as 59.999... or 60.0 seconds, a whole second
// with an error of about 1e-10 s.
#ifndef VELAGNSS_GEO_GNSS_TIME_H
#define VELAGNSS_GEO_GNSS_TIME_H

#include "geo/GnssEnums.h"
#include "velagnss_export.h"

namespace ALGO {

// Lengths of a day and of a week on every continuous time scale, s. A UTC day with a leap second is longer.
inline constexpr double kSecondsPerDay = 24 * 60 * 60;
inline constexpr double kSecondsPerWeek = 7 * kSecondsPerDay;

// Where the time of a system runs apart from UTC and GPS time, s.
inline constexpr double kGlonassAhead = 10800;  // GLONASS time - UTC (GLONASS ICD, 3.3.3)
inline constexpr double kBeidouBehind = 14;     // GPS time - BeiDou time (BDS-SIS-ICD, 3.3)

// The days that the calendar conversions get right, as Modified Julian Dates.
inline constexpr unsigned int kMjdOfGpsEpoch = 44244;  // 6 January 1980, the first one of GPS time (IS-GPS-200, 3.3.4)
inline constexpr unsigned int kLastMjd = 88433;        // 31 December 2100

}  // namespace ALGO

// A civil date and time of day of the Gregorian calendar, in the time scale of the time it was made from.
struct S_GregorianTime {
  unsigned short year;   // such as 2024
  unsigned char month;   // 1 to 12
  unsigned char day;     // 1 to 31
  unsigned char hour;    // 0 to 23
  unsigned char minute;  // 0 to 59
  double seconds;        // within the minute, with their fraction
};

// A value: copied freely, owns nothing.
//
//   C_GnssTime time(2300, 345600.0, ALGO::GNSS_GPS);
//   const double elapsed = time - C_GnssTime(2299, 604790.0, ALGO::GNSS_GPS);  // 345610.0 s
//
// "Normalized" below means: seconds in [0, 604800), with whole weeks carried into the week number, which silently wraps
// modulo 65536 in both directions. At most 32767 weeks are carried forward; beyond that the number of weeks wraps to 16
// bits and the rest stays in the seconds. NaN and infinite seconds are left unchanged.
class VELAGNSS_API C_GnssTime {
 public:
  // System 0 (GPS), week 0, 0.0 s.
  C_GnssTime();

  // The three values, normalized: (100, -1.0) is week 99, 604799.0 s.
  C_GnssTime(unsigned short week, double sec, ALGO::eGNSSSystem system);

  // Memberwise, not normalized.
  C_GnssTime(const C_GnssTime&) = default;
  C_GnssTime& operator=(const C_GnssTime&) = default;

  // The three values as given, not normalized. `Set(100, 0, system)` with two integer literals is ambiguous between
  // this overload and the one for a day of year with fraction: write `Set(100, 0.0, system)`.
  void Set(unsigned short week, double sec, ALGO::eGNSSSystem system);

  // Day of week (0 is Sunday) and seconds of that day, not normalized: dow * 86400 + secOfDay.
  void Set(unsigned short week, unsigned char dow, double secOfDay, ALGO::eGNSSSystem system);

  // Modified Julian Date and fraction of the day, as for `MjdToGPS`. The system is set in every case.
  void Set_MJD(unsigned int mjd, double fracOfDay, ALGO::eGNSSSystem system);

  // Year, day of year (1 is 1 January) and time of day, as for `YdhmsToGps`.
  void Set(unsigned short year, unsigned short doy, unsigned char hour, unsigned char minute, double sec,
           ALGO::eGNSSSystem system);

  // Day of year with the time of day as its fraction: 1.5 is noon of 1 January. The whole days are reduced to 16 bits.
  void Set(double doyWithFraction, unsigned short year, ALGO::eGNSSSystem system);

  // Gregorian date and time of day, as for `GregorianToGps`. The system is set in every case.
  void Set(unsigned short year, unsigned char month, unsigned char day, unsigned char hour, unsigned char minute,
           double sec, ALGO::eGNSSSystem system);

  // Day of year of this time, 1 to 366.
  unsigned short GetDoy() const;

  // True when the systems are equal and the times differ by no more than `tolerance` seconds. With a tolerance of 0 or
  // less the difference must be exactly 0.0.
  bool Equals(const C_GnssTime& other, double tolerance) const;

  // This time minus the other one, in seconds. The systems are ignored.
  double operator-(const C_GnssTime& other) const;

  // The time `sec` seconds earlier or later, normalized, with the same system.
  C_GnssTime operator-(double sec) const;
  C_GnssTime operator+(double sec) const;

  // Comparisons by the difference of the two times; the systems are ignored. With NaN seconds only `!=` is true.
  bool operator==(const C_GnssTime& other) const;
  bool operator!=(const C_GnssTime& other) const;
  bool operator<(const C_GnssTime& other) const;
  bool operator<=(const C_GnssTime& other) const;
  bool operator>(const C_GnssTime& other) const;
  bool operator>=(const C_GnssTime& other) const;

  // Week and seconds of week of a year, day of year (1 is 1 January) and time of day. `secOfWeek` is not normalized
  // beyond the day count. A date before 6 January 1980 gives a meaningless week, as unsigned arithmetic wraps.
  static void YdhmsToGps(unsigned short year, unsigned short doy, unsigned char hour, unsigned char minute, double sec,
                         unsigned short& week, double& secOfWeek);

  // Week and seconds of week of a Gregorian date. A month outside 1 to 12 gives week 0 and 0.0 s; the day is not
  // checked: 32 January is 1 February.
  static void GregorianToGps(unsigned short year, unsigned char month, unsigned char day, unsigned char hour,
                             unsigned char minute, double sec, unsigned short& week, double& secOfWeek);

  // Modified Julian Date of a Gregorian date; 0 for a month outside 1 to 12.
  static unsigned int GregorianToMJD(unsigned short year, unsigned char month, unsigned char day);

  // The same, and the time of day as a fraction of the day, which is set even when the month is not valid.
  static void GregorianToMJD(unsigned short year, unsigned char month, unsigned char day, unsigned char hour,
                             unsigned char minute, double sec, unsigned int& mjd, double& fracOfDay);

  // Week and seconds of week of a Modified Julian Date and fraction of the day. Week 0 and 0.0 s for a day before
  // 44244 or a fraction outside [0, 1).
  static void MjdToGPS(unsigned int mjd, double fracOfDay, unsigned short& week, double& secOfWeek);

  // All calendar forms of a time, which is normalized first: Gregorian date and time of day, day of year, Modified
  // Julian Date and fraction of the day. For NaN or infinite seconds the results are meaningless.
  static void GpsToOthers(unsigned short week, double secOfWeek, S_GregorianTime& gregorian, unsigned short& doy,
                          unsigned int& mjd, double& fracOfDay);

  // Day of year of a time, 1 to 366, through `GpsToOthers`.
  static unsigned short GetDoy(unsigned short week, double secOfWeek);

  // Day of week (0 is Sunday; reduced to 8 bits) and seconds of that day.
  static void GetDowAndSecofDay(double secOfWeek, unsigned char& dow, double& secOfDay);

  ALGO::eGNSSSystem m_system;  // label only
  unsigned short m_week;       // since 6 January 1980
  double m_secOfWeek;          // s
};

#endif  // VELAGNSS_GEO_GNSS_TIME_H
