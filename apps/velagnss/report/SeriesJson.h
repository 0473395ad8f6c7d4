// The time axis of a report and values on it as JSON.
#ifndef VELAGNSS_APPS_SERIES_JSON_H
#define VELAGNSS_APPS_SERIES_JSON_H

#include "apps/velagnss/report/Series.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "stream/StreamClock.h"

namespace Host {

// The number, rounded to so many decimals; null where there is none.
void WriteRounded(C_JsonWriter& json, double value, unsigned int decimals);

// The axis, with the time of its start; null for a stream without a time.
void WriteBins(C_JsonWriter& json, const C_TimeBins& axis, const velagnss::StreamClock& clock);

// Least, greatest and mean value of each bin with values, rounded; null without any. "first" is the place of the first
// of these bins; where some after it are empty, "runs" tells how many in a row have values, how many then are empty,
// and so on. "min" and "mean" are left out if they are the same as "max" in each bin.
void WriteSeries(C_JsonWriter& json, const C_Series& series, const C_TimeBins& axis, unsigned int decimals);

// The sum of the values of each bin in the place of the greatest: how much came in it. All of the axis, with 0 in bins
// without values; null without values.
void WriteSums(C_JsonWriter& json, const C_Series& series, const C_TimeBins& axis);

}  // namespace Host

#endif  // VELAGNSS_APPS_SERIES_JSON_H
