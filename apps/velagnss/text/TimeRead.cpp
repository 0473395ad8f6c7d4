#include "apps/velagnss/text/TimeRead.h"

#include <algorithm>
#include <chrono>
#include <cmath>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::size_t kDateSize = 10;

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Whether `text` begins with `form`, in which '0' is any digit.
bool HasForm(std::string_view text, std::string_view form) {
  return text.size() >= form.size() && std::equal(form.begin(), form.end(), text.begin(), [](char wanted, char given) {
           return wanted == '0' ? IsDigit(given) : wanted == given;
         });
}

unsigned short NumberAt(std::string_view text, std::size_t at, std::size_t digits) {
  unsigned short number = 0;
  ParseWhole(text.substr(at, digits), number);
  return number;
}

std::optional<t_Microseconds> ParseTimeOfDay(std::string_view text) {
  constexpr std::string_view kForm = "00:00:00";
  if (!HasForm(text, kForm)) return std::nullopt;
  const unsigned int hour = NumberAt(text, 0, 2);
  const unsigned int minute = NumberAt(text, 3, 2);
  const unsigned int second = NumberAt(text, 6, 2);
  double fraction = 0;
  const std::string_view decimals = text.substr(kForm.size());
  const bool isFraction = decimals.size() > 1 && decimals[0] == '.' &&
                          std::all_of(decimals.begin() + 1, decimals.end(), &IsDigit) && ParseWhole(decimals, fraction);
  if (hour > 23 || minute > 59 || second > 59 || (!decimals.empty() && !isFraction)) return std::nullopt;
  return ((hour * 60 + minute) * 60 + second) * t_Microseconds{1000000} + std::llround(fraction * 1e6);
}

}  // namespace

std::optional<unsigned int> ParseDate(std::string_view text) {
  using namespace std::chrono;
  if (text.size() != kDateSize || !HasForm(text, "0000-00-00")) return std::nullopt;
  const year_month_day date{year(NumberAt(text, 0, 4)), month(NumberAt(text, 5, 2)), day(NumberAt(text, 8, 2))};
  const auto mjd = (sys_days(date) - sys_days(year(1858) / 11 / 17)).count();
  if (!date.ok() || mjd < 0) return std::nullopt;
  return static_cast<unsigned int>(mjd);
}

std::optional<S_UtcTime> ParseUtc(std::string_view text) {
  S_UtcTime time{};
  if (text.size() > kDateSize && text[kDateSize] == 'T') {
    time.mjd = ParseDate(text.substr(0, kDateSize));
    if (!time.mjd) return std::nullopt;
    text.remove_prefix(kDateSize + 1);
  }
  if (text.ends_with('Z')) text.remove_suffix(1);
  const std::optional<t_Microseconds> ofDay = ParseTimeOfDay(text);
  if (!ofDay) return std::nullopt;
  time.ofDay = *ofDay;
  return time;
}

}  // namespace Host
