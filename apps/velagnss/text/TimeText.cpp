#include "apps/velagnss/text/TimeText.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "apps/velagnss/text/Units.h"
#include "geo/GnssTime.h"

namespace Host {
namespace {

constexpr std::int64_t kWholeSecondsPerDay = 86400;
constexpr unsigned int kStreamDecimals = 6;  // days of a stream are added to its seconds: nanoseconds would be rounding

// The civil date of a day, taken at noon, where rounding cannot reach another day.
S_GregorianTime DateOf(unsigned short week, unsigned int dayOfWeek) {
  S_GregorianTime date{};
  unsigned short dayOfYear = 0;
  unsigned int mjd = 0;
  double fraction = 0;
  C_GnssTime::GpsToOthers(week, (dayOfWeek + 0.5) * kSecondsPerDay, date, dayOfYear, mjd, fraction);
  return date;
}

}  // namespace

void C_TimeText::Append(std::string_view text) {
  std::memcpy(m_text + m_size, text.data(), text.size());
  m_size = static_cast<unsigned char>(m_size + text.size());
}

void C_TimeText::AppendNumber(unsigned int number, unsigned int digits) {
  for (unsigned int i = digits; i-- > 0; number /= 10) m_text[m_size + i] = static_cast<char>('0' + number % 10);
  m_size = static_cast<unsigned char>(m_size + digits);
}

C_TimeText C_TimeText::Date(unsigned int year, unsigned int month, unsigned int day) {
  C_TimeText text;
  if (year > 9999 || month < 1 || month > 12 || day < 1 || day > 31) return text;
  text.AppendNumber(year, 4);
  text.Append("-");
  text.AppendNumber(month, 2);
  text.Append("-");
  text.AppendNumber(day, 2);
  return text;
}

C_TimeText C_TimeText::TimeOfDay(double secondsOfDay, unsigned int decimals) {
  C_TimeText text;
  if (!(secondsOfDay >= 0 && secondsOfDay < kSecondsPerDay + 1)) return text;
  std::int64_t second = 1;  // in units of the last decimal
  for (unsigned int i = 0; i < decimals; ++i) second *= 10;
  std::int64_t time = std::llround(secondsOfDay * static_cast<double>(second));
  // Rounding must not make a leap second, nor a second one.
  const std::int64_t end = (secondsOfDay < kSecondsPerDay ? kWholeSecondsPerDay : kWholeSecondsPerDay + 1) * second;
  time = std::min(time, end - 1);
  const std::int64_t leap = time / second == kWholeSecondsPerDay ? 1 : 0;  // the 61st second of the last minute
  const auto seconds = static_cast<unsigned int>(time / second - leap);
  text.AppendNumber(seconds / 3600, 2);
  text.Append(":");
  text.AppendNumber(seconds / 60 % 60, 2);
  text.Append(":");
  text.AppendNumber(seconds % 60 + static_cast<unsigned int>(leap), 2);
  if (time % second == 0) return text;
  text.Append(".");
  text.AppendNumber(static_cast<unsigned int>(time % second), decimals);
  while (text.m_text[text.m_size - 1] == '0') --text.m_size;
  return text;
}

C_TimeText C_TimeText::WeekTime(unsigned short week, double secOfWeek, ALGO::eGNSSSystem system,
                                unsigned int decimals) {
  if (!(secOfWeek >= 0 && secOfWeek < kSecondsPerWeek)) return {};
  const auto dayOfWeek = static_cast<unsigned int>(secOfWeek / kSecondsPerDay);
  const S_GregorianTime date = DateOf(week, dayOfWeek);
  C_TimeText text = Date(date.year, date.month, date.day);
  if (text.IsEmpty()) return {};
  text.Append("T");
  text.Append(TimeOfDay(secOfWeek - dayOfWeek * kSecondsPerDay, decimals).Text());
  if (system == ALGO::GNSS_GLONASS) text.Append("+03:00");
  return text;
}

C_TimeText C_TimeText::Utc(unsigned int mjd, double secondsOfDay, unsigned int decimals) {
  const C_TimeText time = TimeOfDay(secondsOfDay, decimals);
  if (mjd < kMjdOfGpsEpoch || time.IsEmpty()) return {};
  const unsigned int days = mjd - kMjdOfGpsEpoch;
  const S_GregorianTime date = DateOf(static_cast<unsigned short>(days / 7), days % 7);
  C_TimeText text = Date(date.year, date.month, date.day);
  if (text.IsEmpty()) return {};
  text.Append("T");
  text.Append(time.Text());
  text.Append("Z");
  return text;
}

// C++20 has this clock count from 1970-01-01 in UTC, without leap seconds.
C_TimeText C_TimeText::OfMachine(std::chrono::system_clock::time_point time) {
  constexpr std::int64_t kMjdOf1970 = 40587;
  const auto microseconds = std::chrono::floor<std::chrono::microseconds>(time.time_since_epoch());
  const auto days = std::chrono::floor<std::chrono::days>(microseconds);
  const std::int64_t mjd = kMjdOf1970 + days.count();
  if (mjd < kMjdOfGpsEpoch || mjd > std::int64_t{kLastMjd}) return {};
  const auto seconds = std::chrono::floor<std::chrono::seconds>(microseconds);
  C_TimeText text = Utc(static_cast<unsigned int>(mjd), static_cast<double>((seconds - days).count()), 0);
  if (text.IsEmpty()) return text;
  --text.m_size;
  text.Append(".");
  text.AppendNumber(static_cast<unsigned int>((microseconds - seconds).count()), 6);
  text.Append("Z");
  return text;
}

C_TimeText C_TimeText::StreamTime(const velagnss::StreamClock& clock, double seconds) {
  const velagnss::StreamClock::Utc utc = clock.UtcOf(seconds);
  return utc.mjd ? Utc(*utc.mjd, utc.secondsOfDay, kStreamDecimals) : TimeOfDay(utc.secondsOfDay, kStreamDecimals);
}

}  // namespace Host
