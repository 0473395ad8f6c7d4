// The results of `velagnss geo` as text: aligned for people, a line for scripts, JSON.
//
// Text has as many digits as the library's accuracy supports: lengths 0.1 mm, angles 1e-9 degrees or 1e-11 radians
// (both some 0.1 mm on the ground), seconds 1 ns, fractions of a day 1e-14. JSON has all digits of the double.
#ifndef VELAGNSS_APPS_GEO_TEXT_H
#define VELAGNSS_APPS_GEO_TEXT_H

#include <cstdint>
#include <optional>
#include <string>

#include "apps/velagnss/geo/GeoForms.h"

namespace Host {

// A calculation, with or without a result.
struct S_GeoResult {
  const S_GeoForm& form;
  bool hasValues;  // otherwise the words of the form are shown instead
  t_GeoOutputs values;
  bool radians;  // the unit for angles
};

// A row per value, with name and unit.
std::string GeoTable(const S_GeoResult& result);

// The values in their order, separated by spaces.
std::string GeoLine(const S_GeoResult& result);

// A line with a JSON object, names with units; every value is null when there is no result. `line` is the number of the
// line of input, from 1.
std::string GeoJson(const S_GeoResult& result, std::optional<std::uint64_t> line);

}  // namespace Host

#endif  // VELAGNSS_APPS_GEO_TEXT_H
