// The stream's own time, from the sentences that carry one. The machine's clock has no part in it.
#ifndef VELAGNSS_APPS_STREAM_CLOCK_H
#define VELAGNSS_APPS_STREAM_CLOCK_H

#include <optional>

#include "apps/velagnss/text/TimeText.h"
#include "geo/GnssTime.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {

// The time of day comes from GGA, GNS, GLL, RMC and ZDA; the date from ZDA and from an RMC that is not marked void (a
// receiver without a fix may send any date). Between dates the days are counted by the steps over midnight.
class C_StreamClock {
 public:
  // Whether a number of seconds can be a time of day: from 0 to the end of a leap second.
  static bool IsTimeOfDay(double seconds);

  // What a sentence, decoded with result 0, tells of the time.
  void Note(C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& record);

  // Seconds on a scale of the stream's own that knows no midnight; NaN while no time has come.
  double Seconds() const;

  // The UTC of a value of `Seconds` as text: with its date once the stream has told one, else the time of day alone.
  C_TimeText Text(double seconds) const;

  // Whether the stream has told a date.
  bool KnowsDate() const { return m_mjdOfDay0.has_value(); }

  // The first date and time that came, as a GPS-style time for seeding a decoder. UTC is behind GPS time by the leap
  // seconds: nothing beside the half of 1024 weeks that a seed may be off.
  const std::optional<C_GnssTime>& FirstDate() const { return m_firstDate; }

 private:
  void NoteTimeOfDay(double secondsOfDay);
  void NoteDate(unsigned short year, unsigned char month, unsigned char day, double secondsOfDay);

  int m_day = 0;  // days since the first time came
  std::optional<double> m_secondsOfDay;
  std::optional<unsigned int> m_mjdOfDay0;
  std::optional<C_GnssTime> m_firstDate;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_STREAM_CLOCK_H
