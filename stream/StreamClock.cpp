// Nearly every sentence carries the time of day, few carry the date. The clock counts days at midnight crossings and
// ties them to the calendar when the first date comes, so that the times before it get a date as well.
#include "stream/StreamClock.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "geo/LeapSeconds.h"

namespace velagnss {
namespace {

using ALGO::kSecondsPerDay;

// A receiver without a fix may send the day that its clock begins with, often the first of GPS time, 6 January 1980. No
// stream is older than NMEA 0183, which came in 1983. C_GnssTime's calendar is right up to 2100.
bool IsRealDate(unsigned int year, unsigned int month, unsigned int day) {
  constexpr unsigned int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (year < 1983 || year > 2100 || month < 1 || month > 12 || day < 1) return false;
  const unsigned int leapDay = month == 2 && year % 4 == 0 && year != 2100 ? 1 : 0;
  return day <= kDays[month - 1] + leapDay;
}

// No date of a stream is earlier, see above, and none that the calendar can show is later.
constexpr int kFirstMjd = 45335;  // 1 January 1983
constexpr int kLastMjd = ALGO::kLastMjd;

// Without a fix the date is that of the receiver's own clock, which may be years off.
bool IsVoid(eNmeaRmcStatus status) { return status >= eNmeaRmcNotValid; }

}  // namespace

// One second beyond the day: 23:59:60 is a leap second.
bool StreamClock::IsTimeOfDay(double seconds) { return seconds >= 0 && seconds < kSecondsPerDay + 1; }

bool StreamClock::Note(const S_GGA_Data& record) { return NoteTimeOfDay(record.timeOfDay); }
bool StreamClock::Note(const S_GNS_Data& record) { return NoteTimeOfDay(record.timeOfDay); }
bool StreamClock::Note(const S_GLL_Data& record) { return NoteTimeOfDay(record.timeOfDay); }
bool StreamClock::Note(const S_ZDA_Data& record) {
  return NoteDate(record.year, record.month, record.day, record.timeOfDay);
}
bool StreamClock::Note(const S_RMC_Data& record) {
  if (IsVoid(record.status)) return NoteTimeOfDay(record.timeOfDay);
  return NoteDate(record.year, record.month, record.day, record.timeOfDay);
}

void StreamClock::Note(const Rtcm3Observations& record) {
  const Rtcm3Time& time = record.time;
  const bool hasWeek = !IsNotAvailable(time.week) && !IsNotAvailable(time.seconds);
  if (hasWeek && time.isWeekAssumed) return NoteAssumedWeek(time);
  if (hasWeek && !m_firstDate) {
    const UtcTime utc = UtcOfGps(C_GnssTime(time.week, time.seconds, ALGO::GNSS_GPS));
    return NoteDay(utc.mjd, utc.secondsOfDay);
  }
  if (!IsNotAvailable(time.seconds)) return NoteTimeOfWeek(time.seconds);
  if (record.system != ALGO::GNSS_GLONASS || IsNotAvailable(time.sent)) return;
  const double utc = time.sent / 1000.0 - ALGO::kGlonassAhead;  // its day is not known
  NoteTimeOfDay(utc < 0 ? utc + kSecondsPerDay : utc);
}

void StreamClock::Note(const Rtcm3SystemParameters& record) { NoteWholeSeconds(record.mjd, record.secondOfDay); }
void StreamClock::Note(const Rtcm3Message& record) { NoteWholeSeconds(record.mjd, record.secondOfDay); }

void StreamClock::NoteWholeSeconds(unsigned int mjd, double secondsOfDay) {
  constexpr double kMaxLate = 10;
  if (m_firstDate) {
    const int day = static_cast<int>(mjd) - static_cast<int>(*m_mjdOfDay0);
    const double late = Seconds() - (day * kSecondsPerDay + secondsOfDay);
    if (late > 0 && late < kMaxLate) return;
  }
  NoteDay(mjd, secondsOfDay);
}

void StreamClock::NoteDay(unsigned int mjd, double secondsOfDay) {
  unsigned short week = 0, dayOfYear = 0;
  double secOfWeek = 0, fractionOfDay = 0;
  S_GregorianTime date;
  C_GnssTime::MjdToGPS(mjd, 0, week, secOfWeek);
  C_GnssTime::GpsToOthers(week, secOfWeek, date, dayOfYear, mjd, fractionOfDay);
  NoteDate(date.year, date.month, date.day, secondsOfDay);
}

// The day of the week is that within three days of the last one.
void StreamClock::NoteTimeOfWeek(double gpsSeconds) {
  constexpr int kDays = 7;
  const unsigned int today = m_firstDate ? *m_mjdOfDay0 + static_cast<unsigned int>(m_day) : kLastLeapSecondMjd;
  double utc = gpsSeconds - LeapSecondsOn(today);
  if (utc < 0) utc += kDays * kSecondsPerDay;
  const int dayOfWeek = static_cast<int>(utc / kSecondsPerDay);
  const double secondsOfDay = utc - dayOfWeek * kSecondsPerDay;
  if (!m_firstDate) return void(NoteTimeOfDay(secondsOfDay));
  const int dayOfToday = static_cast<int>((today + 3) % kDays);  // MJD 4 is a Sunday
  m_day += (dayOfWeek - dayOfToday + kDays + 3) % kDays - 3;
  m_secondsOfDay = secondsOfDay;
}

// The answer of `Note` for a record without a date: false.
bool StreamClock::NoteTimeOfDay(double secondsOfDay) {
  if (!IsTimeOfDay(secondsOfDay)) return false;
  const double step = m_secondsOfDay ? secondsOfDay - *m_secondsOfDay : 0;
  if (step < -kSecondsPerDay / 2) ++m_day;  // across midnight
  if (step > kSecondsPerDay / 2) --m_day;   // a late sentence of the day before
  m_secondsOfDay = secondsOfDay;
  return false;
}

// The day of the first time comes from the user, who may be wrong; the day of the week is that of the stream.
void StreamClock::NoteAssumedWeek(const Rtcm3Time& time) {
  if (m_firstDate) return NoteTimeOfWeek(time.seconds);
  const UtcTime utc = UtcOfGps(C_GnssTime(time.week, time.seconds, ALGO::GNSS_GPS));
  NoteTimeOfDay(utc.secondsOfDay);
  SetDay(utc.mjd, Anchor::AssumedWeek);
}

// Days may have been counted before a better date comes: day 0 is where the stream began. A gap of more than a day
// shows no midnight crossing, but its date shows it.
void StreamClock::SetDay(unsigned int mjd, Anchor anchor) {
  if (anchor > m_anchor) m_mjdOfDay0 = mjd - static_cast<unsigned int>(m_day);
  m_anchor = std::max(anchor, m_anchor);
  m_day = static_cast<int>(mjd - *m_mjdOfDay0);
}

bool StreamClock::NoteDate(unsigned short year, unsigned char month, unsigned char day, double secondsOfDay) {
  NoteTimeOfDay(secondsOfDay);
  if (!IsTimeOfDay(secondsOfDay) || !IsRealDate(year, month, day)) return false;
  SetDay(C_GnssTime::GregorianToMJD(year, month, day), Anchor::Date);
  // Resolving a week takes a date that is right within years; the first one is as good as any.
  if (m_firstDate) return true;
  C_GnssTime time;
  C_GnssTime::GregorianToGps(year, month, day, 0, 0, secondsOfDay, time.m_week, time.m_secOfWeek);
  m_firstDate = C_GnssTime(time.m_week, time.m_secOfWeek, ALGO::GNSS_GPS);
  return true;
}

void StreamClock::AssumeFirstDay(unsigned int mjd) {
  if (m_anchor > Anchor::AssumedDay) return;
  m_mjdOfDay0 = mjd;
  m_anchor = Anchor::AssumedDay;
}

double StreamClock::Seconds() const {
  if (!m_secondsOfDay) return std::numeric_limits<double>::quiet_NaN();
  return m_day * kSecondsPerDay + *m_secondsOfDay;
}

std::optional<unsigned int> StreamClock::DateOf(int day) const {
  if (!m_mjdOfDay0) return std::nullopt;
  const int mjd = static_cast<int>(*m_mjdOfDay0) + day;
  return mjd >= kFirstMjd && mjd <= kLastMjd ? std::optional(static_cast<unsigned int>(mjd)) : std::nullopt;
}

StreamClock::Utc StreamClock::UtcOf(double seconds) const {
  constexpr double kMaxSeconds = 1e6 * kSecondsPerDay;  // beyond any stream, and its days fit an int
  if (!(std::abs(seconds) <= kMaxSeconds)) return {std::nullopt, std::numeric_limits<double>::quiet_NaN()};
  // Rounded down: times before day 0 belong to the day before, not to day 0.
  const double day = std::floor(seconds / kSecondsPerDay);
  return {DateOf(static_cast<int>(day)), seconds - day * kSecondsPerDay};
}

StreamClock::Utc StreamClock::UtcOfTimeOfDay(double secondsOfDay) const {
  if (!IsTimeOfDay(secondsOfDay)) return {std::nullopt, std::numeric_limits<double>::quiet_NaN()};
  const double step = secondsOfDay - m_secondsOfDay.value_or(secondsOfDay);
  const int neighbor = step < -kSecondsPerDay / 2 ? 1 : step > kSecondsPerDay / 2 ? -1 : 0;
  return {DateOf(m_day + neighbor), secondsOfDay};
}

}  // namespace velagnss
