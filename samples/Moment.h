// Where the receiver of the session is, and when.
#ifndef VELAGNSS_SAMPLES_MOMENT_H
#define VELAGNSS_SAMPLES_MOMENT_H

#include <cstdint>
#include <string>

// The session runs over the end of a GPS week: from Saturday, 18 May 2024, 23:57:00 UTC to 24 s past 00:02 on Sunday.
constexpr int kSessionSeconds = 324;
constexpr int kStartWeek = 2314;
constexpr int kLeapSeconds = 18;     // GPS time minus UTC, 2017 to at least 2026
constexpr int kMoscowAhead = 10800;  // s, of GLONASS time against UTC

// One second of the session. Whole numbers only, so that every machine writes the same digits.
struct S_Moment {
  int second;              // since the session's start
  int day;                 // of May 2024, UTC
  int secondOfDay;         // UTC
  int gpsWeek;             // full week, counted from 6 January 1980
  int gpsSecond;           // of week
  std::int64_t latitude;   // 1e-7 minutes of arc, north positive
  std::int64_t longitude;  // 1e-7 minutes of arc, east positive
  std::int64_t altitude;   // mm above mean sea level
  int speed;               // 1/1000 knots
  int course;              // 1/100 degrees, true
};

// The moment `second` seconds after the start.
S_Moment MomentAt(int second);

// Fields as NMEA 0183 writes them: hhmmss.ss; ddmmyy; ddmm.mmmmmmm,N,dddmm.mmmmmmm,E.
std::string TimeField(const S_Moment& now);
std::string DateField(const S_Moment& now);
std::string PositionFields(const S_Moment& now);

#endif  // VELAGNSS_SAMPLES_MOMENT_H
