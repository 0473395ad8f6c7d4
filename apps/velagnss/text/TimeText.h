// Times as ISO 8601 text, exact to the digits shown: never 59.999... or 60 where it is not a leap second.
#ifndef VELAGNSS_APPS_TIME_TEXT_H
#define VELAGNSS_APPS_TIME_TEXT_H

#include <chrono>
#include <string_view>

#include "geo/GnssEnums.h"
#include "stream/StreamClock.h"

namespace Host {

// The text is held in place: no allocation.
class C_TimeText {
 public:
  std::string_view Text() const { return {m_text, m_size}; }
  bool IsEmpty() const { return m_size == 0; }

  // "2024-05-06"; empty for an impossible date.
  static C_TimeText Date(unsigned int year, unsigned int month, unsigned int day);

  static constexpr unsigned int kMilliseconds = 3;  // decimals
  static constexpr unsigned int kAllDigits = 9;     // that a sentence can have

  // "12:34:56", with up to so many decimals when they are not 0: `secondsOfDay` is rounded to them. From 86400 on the
  // surplus is a leap second, "23:59:60". Empty outside [0, 86401).
  static C_TimeText TimeOfDay(double secondsOfDay, unsigned int decimals = kMilliseconds);

  // "2024-05-06T12:34:56", in the time scale of `system`. GLONASS time is UTC + 3 h, shown by its offset "+03:00"; text
  // without an offset is GPS time, also for Galileo, QZSS and SBAS. Empty for seconds outside [0, 604800).
  static C_TimeText WeekTime(unsigned short week, double secOfWeek, ALGO::eGNSSSystem system,
                             unsigned int decimals = kMilliseconds);

  // "2024-05-06T12:34:56Z" of a Modified Julian Date and UTC seconds of the day; empty where either part would be
  // empty.
  static C_TimeText Utc(unsigned int mjd, double secondsOfDay, unsigned int decimals = kMilliseconds);

  // The same of the machine's clock, to microseconds; empty before 1980.
  static C_TimeText OfMachine(std::chrono::system_clock::time_point time);

  // The UTC of a time of `clock`, to microseconds: with its date where that is known, else the time of day alone.
  static C_TimeText StreamTime(const velagnss::StreamClock& clock, double seconds);

 private:
  void Append(std::string_view text);
  void AppendNumber(unsigned int number, unsigned int digits);

  char m_text[32] = {};
  unsigned char m_size = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_TIME_TEXT_H
