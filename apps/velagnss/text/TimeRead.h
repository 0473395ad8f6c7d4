// Dates and times as users write them, in ISO 8601.
#ifndef VELAGNSS_APPS_TIME_READ_H
#define VELAGNSS_APPS_TIME_READ_H

#include <cstdint>
#include <optional>
#include <string_view>

namespace Host {

// The Modified Julian Date of "2024-05-18"; nothing for any other text, and for a day that the calendar does not have.
std::optional<unsigned int> ParseDate(std::string_view text);

// Whole microseconds: sums and differences of times of day with decimals are not exact in binary.
using t_Microseconds = std::int64_t;
inline constexpr t_Microseconds kMicrosecondsPerDay = t_Microseconds{86400} * 1000000;

// "2024-05-18T12:00:00.250Z" or "12:00:00", UTC; the decimals and the "Z" may be missing.
struct S_UtcTime {
  std::optional<unsigned int> mjd;  // missing for a time of day alone
  t_Microseconds ofDay;
};

// Nothing for any other text. A leap second, 23:59:60, cannot be written.
std::optional<S_UtcTime> ParseUtc(std::string_view text);

}  // namespace Host

#endif  // VELAGNSS_APPS_TIME_READ_H
