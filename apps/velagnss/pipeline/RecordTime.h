// The time of day that an NMEA 0183 sentence carries.
#ifndef VELAGNSS_APPS_RECORD_TIME_H
#define VELAGNSS_APPS_RECORD_TIME_H

#include "geo/NotAvailable.h"
#include "stream/Record.h"

namespace Host {

// UTC seconds of the day; not available for a sentence without a time and for every other record. Proprietary sentences
// do not say in which time scale theirs is.
inline double TimeOfDayOf(const velagnss::Record& record) {
  const auto timeOf = [](const auto& any) {
    if constexpr (requires { any.timeOfDay, any.talker; }) return any.timeOfDay;
    return NA_DOUBLE;
  };
  return std::visit(timeOf, record);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_TIME_H
