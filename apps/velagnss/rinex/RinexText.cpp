#include "apps/velagnss/rinex/RinexText.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"

namespace Host {

double RinexSeconds(unsigned short week, double secOfWeek) { return week * kSecondsPerWeek + secOfWeek; }

bool IsInCalendar(double seconds) {
  constexpr unsigned int kDays = kLastMjd + 1 - kMjdOfGpsEpoch;
  return seconds >= 0 && seconds < kDays * kSecondsPerDay;
}

double WeekStart(double seconds) { return std::floor(seconds / kSecondsPerWeek) * kSecondsPerWeek; }

std::string EpochText(double seconds) {
  const auto week = static_cast<unsigned short>(static_cast<unsigned int>(seconds / kSecondsPerWeek));
  std::string text(C_TimeText::WeekTime(week, seconds - WeekStart(seconds), ALGO::GNSS_GPS).Text());
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c < '0' || c > '9'; }, ' ');
  return text;
}

// By the calendar of whole days, so that no second can become 60.
S_RinexTime RinexTime(std::int64_t ms) {
  constexpr std::int64_t kDay = 86'400'000, kHour = 3'600'000, kMinute = 60'000;
  const std::chrono::sys_days epoch{std::chrono::year(1980) / 1 / 6};
  const std::chrono::sys_days today = epoch + std::chrono::days(ms / kDay);
  const std::chrono::year_month_day date{today};
  const auto dayOfYear = (today - std::chrono::sys_days(date.year() / 1 / 1)).count() + 1;
  const auto part = [ms](std::int64_t whole, std::int64_t unit) {
    return static_cast<unsigned int>(ms % whole / unit);
  };
  return {static_cast<unsigned int>(static_cast<int>(date.year())),
          static_cast<unsigned int>(date.month()),
          static_cast<unsigned int>(date.day()),
          part(kDay, kHour),
          part(kHour, kMinute),
          static_cast<double>(ms % kMinute) / 1000,
          static_cast<unsigned int>(dayOfYear)};
}

// The exponent has two digits: what is smaller is as good as 0.
void AppendRinexNumber(std::string& text, double value) {
  constexpr std::size_t kWidth = 19;
  constexpr double kLeast = 1e-99;
  const std::size_t start = text.size();
  if (!(std::fabs(value) < 1 / kLeast)) return text.resize(start + kWidth, ' ');
  text += fmt::format("{:{}.12E}", std::fabs(value) < kLeast ? 0.0 : value, kWidth);
  text[text.find('E', start)] = 'D';
}

bool IsRinexObservation(double value) {
  constexpr double kHalf = 0.0005;  // of the last decimal
  return std::fabs(value) >= kHalf && value < 1e10 - kHalf && value > -1e9 + kHalf;
}

void EndRinexLine(std::string& text) {
  text.erase(text.find_last_not_of(' ') + 1);
  text += '\n';
}

void AppendHeaderLine(std::string& text, std::string_view content, std::string_view label) {
  text += fmt::format("{:<{}}{:<20}\n", content, kHeaderWidth, label);
}

}  // namespace Host
