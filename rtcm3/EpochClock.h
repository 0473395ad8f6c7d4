// The time that a decoder knows, used to complete the partial times of messages.
//
// Internal. Times are GPS time, in milliseconds since 6 January 1980. Until a date is known, the first observations
// provide the time of week; times are then milliseconds since the start of some week.
#ifndef VELAGNSS_RTCM3_EPOCH_CLOCK_H
#define VELAGNSS_RTCM3_EPOCH_CLOCK_H

#include <cstdint>
#include <optional>

#include "geo/GnssTime.h"
#include "rtcm3/Rtcm3Records.h"

namespace velagnss::rtcm3 {

inline constexpr std::int64_t kSecond = 1000;  // ms
inline constexpr std::int64_t kDay = 86400 * kSecond;
inline constexpr std::int64_t kWeek = 7 * kDay;

inline double SecondsOf(std::int64_t ms) { return static_cast<double>(ms) / 1000; }

// The time nearest to `reference` that agrees with `time` modulo `period`.
std::int64_t Nearest(std::int64_t reference, std::int64_t time, std::int64_t period);

// The clock that a field counts.
enum class TimeField : unsigned char {
  GpsWeek,     // time of week of GPS, Galileo, QZSS, SBAS, NavIC
  BeidouWeek,  // time of week of BeiDou
  GlonassDay,  // time of day of GLONASS
};

class EpochClock {
 public:
  // A time that the stream cannot change, and one that counts only until the stream carries a date.
  void Seed(const C_GnssTime& time);
  void Assume(const C_GnssTime& time);
  void SetLeapSeconds(unsigned char seconds) { m_leapSeconds = seconds; }

  // Dates of the stream, which count only without a seed: UTC as 1013 and 1029 carry it; UTC from beside RTCM 3, only
  // before those; the reference time of an ephemeris, only before any other date of the stream, as it may be some hours
  // off.
  void NoteUtc(unsigned int mjd, std::uint32_t secondOfDay);
  void NoteOtherUtc(unsigned int mjd, std::uint32_t secondOfDay);
  void NoteReference(std::int64_t time);

  // The time that a field of `sent` ms means. `dayOfWeek` matters for GLONASS only; above 6 it is unknown. Missing for
  // values out of range, and for a time of day if the day is not known.
  std::optional<std::int64_t> Resolve(TimeField field, std::uint32_t sent, unsigned char dayOfWeek) const;

  // Week and seconds of a time; the week only once a date is known.
  void Describe(std::int64_t time, Rtcm3Time& out) const;

  // Makes the time of an observation the known one.
  void Advance(std::int64_t time);

  // Whether the date is the assumed one.
  bool IsAssumed() const { return m_known == Known::Assumed; }

  // The known time; missing without a date.
  std::optional<std::int64_t> Now() const;

  // The week nearest to the known time that agrees with `week` modulo `period`; missing without a date.
  std::optional<int> ResolveWeek(int week, int period) const;

  // GLONASS time counts days as UTC does, and is ahead of it by 3 h (GLONASS ICD, 3.3.3).
  std::int64_t GlonassToGps(std::int64_t glonassTime) const;
  std::int64_t GpsToGlonass(std::int64_t time) const;

 private:
  enum class Known : unsigned char { Nothing, SecondsOfWeek, Assumed, Date };

  bool HasDate() const { return m_known >= Known::Assumed; }
  bool TakeUtc(unsigned int mjd, std::uint32_t secondOfDay);
  std::optional<std::int64_t> GpsTimeOf(const C_GnssTime& time) const;

  // GPS time - UTC, in ms.
  std::int64_t LeapOfDay(std::int64_t day) const;

  Known m_known = Known::Nothing;
  bool m_isSeeded = false;
  bool m_hasOwnUtc = false;  // 1013 or 1029 has carried a date
  std::int64_t m_now = 0;
  std::optional<unsigned char> m_leapSeconds;
};

}  // namespace velagnss::rtcm3

#endif  // VELAGNSS_RTCM3_EPOCH_CLOCK_H
