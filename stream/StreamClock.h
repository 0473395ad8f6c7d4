// The time of a stream, from the sentences and RTCM 3 messages that carry one. The machine's clock is not used.
#ifndef VELAGNSS_STREAM_STREAM_CLOCK_H
#define VELAGNSS_STREAM_STREAM_CLOCK_H

#include <optional>

#include "geo/GnssTime.h"
#include "rtcm3/Rtcm3Records.h"
#include "textproto/NMEA_Records.h"
#include "velagnss_export.h"

namespace velagnss {

// The time of day comes from GGA, GNS, GLL, RMC and ZDA, the date from ZDA and from an RMC that is not marked void (a
// receiver without a fix may send any date). Between dates, days are counted by the steps across midnight. Of RTCM 3,
// observations carry the time of day or week, once their week is known also the date, and the messages 1013 and 1029
// both. GPS time is converted to UTC with the table of geo/LeapSeconds.h.
class VELAGNSS_API StreamClock {
 public:
  // Whether a number of seconds can be a time of day: from 0 to the end of a leap second.
  static bool IsTimeOfDay(double seconds);

  // Takes the time from a decoded sentence; returns whether it carried a date that counts.
  bool Note(const S_GGA_Data& record);
  bool Note(const S_GNS_Data& record);
  bool Note(const S_GLL_Data& record);
  bool Note(const S_RMC_Data& record);
  bool Note(const S_ZDA_Data& record);

  // The same from a message of RTCM 3. Once the stream has carried a date, only the time of week of observations
  // counts: the week that a decoder has completed for them may come from a rough seed. A week that is only assumed
  // replaces the day of `AssumeFirstDay`, but is not a date of the stream. 1013 and 1029 have whole seconds and do not
  // set the clock back by less than 10 s.
  void Note(const Rtcm3Observations& record);
  void Note(const Rtcm3SystemParameters& record);
  void Note(const Rtcm3Message& record);

  // UTC seconds since the midnight before the first time of the stream, on a scale that does not restart at midnight;
  // NaN before the first time.
  double Seconds() const;

  // The UTC of a value of `Seconds`. The date is a Modified Julian Date (MJD), missing as long as the stream has
  // carried no date and none was assumed. Days counted back from the first date end at 1983: two receivers in one
  // stream look like countless midnights.
  struct Utc {
    std::optional<unsigned int> mjd;  // the day
    double secondsOfDay;  // 0 to 86400; NaN for a value that is not a time: not finite, or beyond a million days
  };

  // As `Utc` says.
  Utc UtcOf(double seconds) const;

  // The UTC of a time of day, on the day that brings it nearest to the last time of the stream.
  Utc UtcOfTimeOfDay(double secondsOfDay) const;

  // Assumes a day (MJD) for the first time of the stream, until the stream carries a date of its own.
  void AssumeFirstDay(unsigned int mjd);

  // Whether a date is known: the stream has carried one, or one was assumed.
  bool KnowsDate() const { return m_mjdOfDay0.has_value(); }

  // The first date and time, taken as GPS time: a seed for decoders. It is behind GPS time by the leap seconds, which
  // is nothing beside the half of 1024 weeks that a seed may be off.
  const std::optional<C_GnssTime>& FirstDate() const { return m_firstDate; }

 private:
  // What ties the days to the calendar, in ascending order of trust.
  enum class Anchor : unsigned char { None, AssumedDay, AssumedWeek, Date };

  std::optional<unsigned int> DateOf(int day) const;
  bool NoteTimeOfDay(double secondsOfDay);
  void NoteAssumedWeek(const Rtcm3Time& time);
  void SetDay(unsigned int mjd, Anchor anchor);
  void NoteDay(unsigned int mjd, double secondsOfDay);
  void NoteWholeSeconds(unsigned int mjd, double secondsOfDay);
  void NoteTimeOfWeek(double gpsSeconds);
  bool NoteDate(unsigned short year, unsigned char month, unsigned char day, double secondsOfDay);

  int m_day = 0;  // days since the first time
  std::optional<double> m_secondsOfDay;
  std::optional<unsigned int> m_mjdOfDay0;
  Anchor m_anchor = Anchor::None;
  std::optional<C_GnssTime> m_firstDate;
};

}  // namespace velagnss

#endif  // VELAGNSS_STREAM_STREAM_CLOCK_H
