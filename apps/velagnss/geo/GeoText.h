// The results of `velagnss geo` as text: aligned for people, a line for scripts, JSON.
//
// Text has the digits that the library's accuracy can fill: lengths 0.1 mm, angles 1e-9 degrees or 1e-11 radians (both
// some 0.1 mm on the ground), seconds 1 ns, fractions of a day 1e-14. JSON has all digits of the double.
#ifndef VELAGNSS_APPS_GEO_TEXT_H
#define VELAGNSS_APPS_GEO_TEXT_H

#include <cstdint>
#include <optional>
#include <string>

#include "apps/velagnss/geo/GeoForms.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// A calculation that was done, or had no result.
struct S_GeoResult {
  const S_GeoForm& form;
  bool hasValues;  // else the words of the form are shown in their place
  t_GeoOutputs values;
  bool radians;  // the unit of angles wanted
};

// A row per value, with name and unit.
std::string GeoTable(const S_GeoResult& result);

// The values in their order, separated by spaces.
std::string GeoLine(const S_GeoResult& result);

// An object per result, names with units; every value is null when there are none. `line` is the number of the line of
// input, from 1.
void WriteGeoJson(C_JsonWriter& json, const S_GeoResult& result, std::optional<std::uint64_t> line);

}  // namespace Host

#endif  // VELAGNSS_APPS_GEO_TEXT_H
