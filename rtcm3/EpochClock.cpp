#include "rtcm3/EpochClock.h"

#include <cmath>
#include <cstdlib>

#include "geo/LeapSeconds.h"

namespace velagnss::rtcm3 {
namespace {

using ALGO::kMjdOfGpsEpoch;
constexpr unsigned int kMjdOfRtcm3 = 53005;  // 1 January 2004: no message is older
constexpr unsigned int kMjdOf1999 = 51179;   // 1 January
constexpr auto kGlonassAhead = static_cast<std::int64_t>(ALGO::kGlonassAhead) * kSecond;
constexpr auto kBeidouBehind = static_cast<std::int64_t>(ALGO::kBeidouBehind) * kSecond;

constexpr std::int64_t FloorMod(std::int64_t value, std::int64_t period) {
  const std::int64_t rest = value % period;
  return rest < 0 ? rest + period : rest;
}

// A week of BeiDou begins 14 s after that of GPS. In those seconds some receivers send the time of the old week less
// 14 s as a negative number, cut to 30 bits.
constexpr std::uint32_t RepairBeidou(std::uint32_t sent) {
  constexpr std::uint32_t kCut = 1U << 30;
  constexpr auto kLate = static_cast<std::uint32_t>(kBeidouBehind);
  return sent >= kCut - kLate && sent < kCut ? sent - kCut + static_cast<std::uint32_t>(kWeek) : sent;
}

}  // namespace

std::int64_t Nearest(std::int64_t reference, std::int64_t time, std::int64_t period) {
  const std::int64_t ahead = FloorMod(time - reference, period);
  return reference + (ahead > period / 2 ? ahead - period : ahead);
}

std::optional<std::int64_t> EpochClock::GpsTimeOf(const C_GnssTime& time) const {
  if (time.m_week == 0 && time.m_secOfWeek == 0.0) return std::nullopt;
  if (!(std::fabs(time.m_secOfWeek) < 1e9)) return std::nullopt;
  const std::int64_t own = time.m_week * kWeek + std::llround(time.m_secOfWeek * static_cast<double>(kSecond));
  switch (time.m_system) {
    case ALGO::GNSS_GPS:
    case ALGO::GNSS_GALILEO:
    case ALGO::GNSS_QZSS:
    case kNavic:
      return own;
    case ALGO::GNSS_BEIDOU:
      return own + kBeidouBehind;
    case ALGO::GNSS_GLONASS:
      return GlonassToGps(own);
    default:
      return std::nullopt;
  }
}

void EpochClock::Seed(const C_GnssTime& time) {
  const std::optional<std::int64_t> now = GpsTimeOf(time);
  if (!now) return;
  m_now = *now;
  m_known = Known::Date;
  m_isSeeded = true;
}

void EpochClock::Assume(const C_GnssTime& time) {
  const std::optional<std::int64_t> now = GpsTimeOf(time);
  if (!now || m_known == Known::Date) return;
  m_now = *now;
  m_known = Known::Assumed;
}

void EpochClock::NoteUtc(unsigned int mjd, std::uint32_t secondOfDay) {
  m_hasOwnUtc = TakeUtc(mjd, secondOfDay) || m_hasOwnUtc;
}

void EpochClock::NoteOtherUtc(unsigned int mjd, std::uint32_t secondOfDay) {
  if (!m_hasOwnUtc) TakeUtc(mjd, secondOfDay);
}

bool EpochClock::TakeUtc(unsigned int mjd, std::uint32_t secondOfDay) {
  if (m_isSeeded || mjd < kMjdOfRtcm3 || secondOfDay > ALGO::kSecondsPerDay) return false;
  const std::int64_t day = mjd - kMjdOfGpsEpoch;
  m_now = day * kDay + secondOfDay * kSecond + LeapOfDay(day);
  m_known = Known::Date;
  return true;
}

void EpochClock::NoteReference(std::int64_t time) {
  constexpr std::int64_t kEarliest = (kMjdOfRtcm3 - kMjdOfGpsEpoch) * kDay;
  if (m_known == Known::Date || time < kEarliest) return;
  // Of an assumed time nothing is kept, not even its day of the week.
  m_now = m_known == Known::SecondsOfWeek ? Nearest(time, m_now, kWeek) : time;
  m_known = Known::Date;
}

std::optional<std::int64_t> EpochClock::Resolve(TimeField field, std::uint32_t sent, unsigned char dayOfWeek) const {
  std::int64_t time = sent;
  std::int64_t period = kWeek;
  if (field == TimeField::BeidouWeek) time = RepairBeidou(sent);
  if (field == TimeField::GlonassDay) {
    if (time >= kDay + kSecond) return std::nullopt;  // the last second of a day may be a leap second
    const bool knowsDay = dayOfWeek <= 6;
    if (!knowsDay && m_known == Known::Nothing) return std::nullopt;
    if (!knowsDay) period = kDay;
    time = GlonassToGps(knowsDay ? dayOfWeek * kDay + time : time);
  } else {
    if (time >= kWeek) return std::nullopt;
    if (field == TimeField::BeidouWeek) time += kBeidouBehind;
  }
  return m_known == Known::Nothing ? FloorMod(time, kWeek) : Nearest(m_now, time, period);
}

void EpochClock::Describe(std::int64_t time, Rtcm3Time& out) const {
  const std::int64_t inWeek = FloorMod(time, kWeek);
  out.seconds = SecondsOf(inWeek);
  if (!HasDate() || time < 0) return;
  out.week = static_cast<unsigned short>((time - inWeek) / kWeek);
  out.isWeekAssumed = IsAssumed();
}

void EpochClock::Advance(std::int64_t time) {
  m_now = time;
  if (m_known == Known::Nothing) m_known = Known::SecondsOfWeek;
}

std::optional<std::int64_t> EpochClock::Now() const {
  if (!HasDate()) return std::nullopt;
  return m_now;
}

std::optional<int> EpochClock::ResolveWeek(int week, int period) const {
  if (!HasDate()) return std::nullopt;
  const int now = static_cast<int>(m_now / kWeek);
  int resolved = week % period + now / period * period;
  if (std::abs(resolved - now) > period / 2) resolved += resolved < now ? period : -period;
  return resolved;
}

std::int64_t EpochClock::GlonassToGps(std::int64_t glonassTime) const {
  const std::int64_t utc = glonassTime - kGlonassAhead;
  return utc + LeapOfDay(HasDate() ? m_now / kDay : utc / kDay);
}

std::int64_t EpochClock::GpsToGlonass(std::int64_t time) const {
  return time - LeapOfDay(HasDate() ? m_now / kDay : time / kDay) + kGlonassAhead;
}

std::int64_t EpochClock::LeapOfDay(std::int64_t day) const {
  if (m_leapSeconds) return *m_leapSeconds * kSecond;
  // Without a date, or with one that no RTCM 3 message can have, the latest number is the best guess.
  const std::int64_t mjd = day + kMjdOfGpsEpoch;
  return LeapSecondsOn(mjd < kMjdOf1999 ? kLastLeapSecondMjd : static_cast<unsigned int>(mjd)) * kSecond;
}

}  // namespace velagnss::rtcm3
