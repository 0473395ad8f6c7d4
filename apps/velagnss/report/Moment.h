// When something happened, on the time axis of a report.
#ifndef VELAGNSS_APPS_REPORT_MOMENT_H
#define VELAGNSS_APPS_REPORT_MOMENT_H

#include <cmath>
#include <optional>

#include "apps/velagnss/report/TimeBins.h"
#include "apps/velagnss/text/Units.h"
#include "stream/StreamClock.h"

namespace Host {

struct S_Moment {
  double seconds;                // on the scale of velagnss::StreamClock; NaN when it is not known
  std::optional<S_TimeBin> bin;  // nothing when it is not on the axis
};

// A UTC time of day on the scale of the clock: on its day where both dates are known, else where it is nearest to the
// last time of the stream. NaN for what is not a time of day, and before the first time of the stream.
inline double StreamSecondsOf(const velagnss::StreamClock& clock, const std::optional<unsigned int>& mjd,
                              double timeOfDay) {
  if (!velagnss::StreamClock::IsTimeOfDay(timeOfDay)) return std::nan("");
  const velagnss::StreamClock::Utc now = clock.UtcOf(clock.Seconds());
  const double midnight = clock.Seconds() - now.secondsOfDay;
  const double days = mjd && now.mjd ? static_cast<double>(*mjd) - static_cast<double>(*now.mjd)
                                     : std::round((now.secondsOfDay - timeOfDay) / kSecondsPerDay);
  return midnight + days * kSecondsPerDay + timeOfDay;
}

}  // namespace Host

#endif  // VELAGNSS_APPS_REPORT_MOMENT_H
