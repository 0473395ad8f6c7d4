// Pieces of text that RINEX files are made of, and their times.
#ifndef VELAGNSS_APPS_RINEX_TEXT_H
#define VELAGNSS_APPS_RINEX_TEXT_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace Host {

// Times on a scale without weeks: seconds since 6 January 1980, 0 h, in the time system of the data.
double RinexSeconds(unsigned short week, double secOfWeek);
double WeekStart(double seconds);

// Whether the program knows the date of a time.
bool IsInCalendar(double seconds);
inline constexpr std::string_view kNotInCalendar = "its date is not within 1980 to 2100";

// "2024 05 18 22 00 00".
std::string EpochText(double seconds);

// The parts of a time in ms since 6 January 1980.
struct S_RinexTime {
  unsigned int year, month, day, hour, minute;
  double second;
  unsigned int dayOfYear;  // from 1
};
S_RinexTime RinexTime(std::int64_t ms);

// D19.12 of Fortran with the first digit before the point; 0 has no sign. Blank for a value that is not finite.
void AppendRinexNumber(std::string& text, double value);

// Whether a value can be an observation, F14.3: 0.000 would mean that there is none.
bool IsRinexObservation(double value);

inline constexpr std::size_t kNavLineWidth = 80;

// Ends a line of data, which has no trailing spaces.
void EndRinexLine(std::string& text);

// Columns of a header line: its content, and the label after it.
inline constexpr std::size_t kHeaderWidth = 60;
inline constexpr std::size_t kHeaderNameWidth = 20;  // of program, user and date
void AppendHeaderLine(std::string& text, std::string_view content, std::string_view label);

}  // namespace Host

#endif  // VELAGNSS_APPS_RINEX_TEXT_H
