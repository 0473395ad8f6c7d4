#include "apps/velagnss/report/SeriesJson.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "apps/velagnss/text/TimeText.h"

namespace Host {
namespace {

using t_ValueOf = double (*)(const S_ValueRange&);

struct S_Part {
  std::string_view name;
  t_ValueOf valueOf;
};
constexpr S_Part kMax = {"max", [](const S_ValueRange& range) { return range.max; }};
constexpr S_Part kSum = {"max", [](const S_ValueRange& range) { return range.sum; }};
constexpr S_Part kOthers[] = {
    {"min", [](const S_ValueRange& range) { return range.min; }},
    {"mean", [](const S_ValueRange& range) { return range.Mean(); }},
};

// Without the sign of a negative number that is rounded to 0.
double Rounded(double value, unsigned int decimals) {
  constexpr double kUnits[] = {1, 10, 100, 1e3, 1e4, 1e5, 1e6};
  const double unit = kUnits[decimals < std::size(kUnits) ? decimals : std::size(kUnits) - 1];
  return std::round(value * unit) / unit + 0.0;
}

void WritePart(C_JsonWriter& json, const S_Part& part, const C_Series::S_Bins& bins, unsigned int decimals) {
  json.Key(part.name).BeginArray();
  for (const S_ValueRange& range : bins.ranges)
    if (range.count > 0) WriteRounded(json, part.valueOf(range), decimals);
  json.EndArray();
}

// How many bins in a row have values, how many then have none, and so on. A satellite is below the horizon for most of
// a day: nulls would be more than half of a report.
void WriteRuns(C_JsonWriter& json, const std::vector<S_ValueRange>& ranges) {
  const auto isEmpty = [](const S_ValueRange& range) { return range.count == 0; };
  if (std::none_of(ranges.begin(), ranges.end(), isEmpty)) return;
  json.Key("runs").BeginArray();
  bool isOfEmpty = false;
  for (auto begin = ranges.begin(); begin != ranges.end(); isOfEmpty = !isOfEmpty) {
    const auto end = std::find_if(begin, ranges.end(), [&](const auto& range) { return isEmpty(range) != isOfEmpty; });
    json.Integer(end - begin);
    begin = end;
  }
  json.EndArray();
}

bool IsSame(const S_Part& one, const S_Part& other, const C_Series::S_Bins& bins, unsigned int decimals) {
  for (const S_ValueRange& range : bins.ranges)
    if (range.count > 0 && Rounded(one.valueOf(range), decimals) != Rounded(other.valueOf(range), decimals))
      return false;
  return true;
}

}  // namespace

void WriteRounded(C_JsonWriter& json, double value, unsigned int decimals) { json.Number(Rounded(value, decimals)); }

void WriteBins(C_JsonWriter& json, const C_TimeBins& axis, const velagnss::StreamClock& clock) {
  if (axis.IsEmpty()) return json.Null();
  const velagnss::StreamClock::Utc utc = clock.UtcOf(axis.Start());
  json.BeginObject();
  json.Key("start").StringOrNull(C_TimeText::StreamTime(clock, axis.Start()).Text());
  json.Key("start_s").Number(utc.secondsOfDay);
  json.Key("has_date").Boolean(utc.mjd.has_value());
  json.Key("step_s").Number(axis.Step());
  json.Key("count").Integer(axis.Count());
  json.EndObject();
}

void WriteSeries(C_JsonWriter& json, const C_Series& series, const C_TimeBins& axis, unsigned int decimals) {
  const C_Series::S_Bins bins = series.On(axis);
  if (bins.ranges.empty()) return json.Null();
  json.BeginObject();
  json.Key("first").Integer(bins.first);
  WriteRuns(json, bins.ranges);
  bool isSame = true;
  for (const S_Part& part : kOthers) isSame = isSame && IsSame(part, kMax, bins, decimals);
  WritePart(json, kMax, bins, decimals);
  for (const S_Part& part : kOthers)
    if (!isSame) WritePart(json, part, bins, decimals);
  json.EndObject();
}

void WriteSums(C_JsonWriter& json, const C_Series& series, const C_TimeBins& axis) {
  C_Series::S_Bins bins = series.On(axis);
  if (bins.ranges.empty()) return json.Null();
  bins.ranges.insert(bins.ranges.begin(), bins.first, {});
  bins.ranges.resize(axis.Count());
  for (S_ValueRange& range : bins.ranges) range.count = 1;
  json.BeginObject();
  json.Key("first").Integer(0);
  WritePart(json, kSum, bins, 3);
  json.EndObject();
}

}  // namespace Host
