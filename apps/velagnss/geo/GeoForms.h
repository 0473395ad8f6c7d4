// The calculations of `velagnss geo`: what each takes, what it gives, and how a line of text is read for it.
//
// A calculation has one or more forms, one for each kind of input: `geo convert` from geodetic and from Cartesian
// coordinates, `geo time` from a calendar date, UTC, a GPS week or a Modified Julian Date.
#ifndef VELAGNSS_APPS_GEO_FORMS_H
#define VELAGNSS_APPS_GEO_FORMS_H

#include <array>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

// What kind of number a value is: its unit, how it is written, and whether its range includes the upper limit.
enum class eGeoQuantity {
  Angle,      // degrees or radians
  Direction,  // the same, of a full circle: never written as a whole turn
  Length,     // m
  Seconds,    // below the limit
  Fraction,   // of a day; below the limit
  Days,       // whole or not; below the limit
  Whole,      // a whole number
  Calendar,   // seconds of GPS time since 6 January 1980, written as date and time of day
  Utc,        // the same, written in UTC
};

// An input or output value. Limits are in degrees where the value is an angle, and mean nothing for results.
struct S_GeoColumn {
  std::string_view name;
  eGeoQuantity quantity;
  double least = 0;
  double limit = 0;
};

inline constexpr std::size_t kMaxGeoInputs = 6;
inline constexpr std::size_t kMaxGeoOutputs = 9;
using t_GeoInputs = std::array<double, kMaxGeoInputs>;
using t_GeoOutputs = std::array<double, kMaxGeoOutputs>;

enum class eGeoOutcome {
  Done,
  NoResult,  // valid values that have no result
  BadInput,  // each value is valid, but not all of them together
};

// Angles go in and come out in radians.
struct S_GeoForm {
  std::string_view command;  // "convert", "inverse", "look" or "time"
  std::string_view from;     // the side, by its name for --from; empty where there is only one
  std::span<const S_GeoColumn> inputs;
  std::size_t required;  // of the inputs; the others are 0 when not given
  std::span<const S_GeoColumn> outputs;
  eGeoOutcome (*compute)(const t_GeoInputs& in, t_GeoOutputs& out);
  std::string_view failure;  // in words: why there is no result, or what is wrong with the values
};

// In the order in which help lists them; the first of a command is its default.
std::span<const S_GeoForm> GeoForms();

// The sides that a command has, the default first; none where there is no choice.
std::vector<std::string_view> SidesOfGeo(std::string_view command);

// The form of a command by the name of its side; empty for the default. Null when there is none.
const S_GeoForm* FindGeoForm(std::string_view command, std::string_view from);

// Parses the values of a line: decimal numbers, separated by spaces, tabs or commas; a calendar date may be in ISO
// 8601, "2024-05-06T12:34:56.5" or "2024-05-06 12:34". Values that are not given are 0. Returns what is wrong, naming
// the value; empty when nothing is.
std::string ReadGeoValues(const S_GeoForm& form, std::string_view line, bool radians, t_GeoInputs& values);

// True for a line without values: an empty one, or a comment that begins with '#'.
bool IsGeoComment(std::string_view line);

}  // namespace Host

#endif  // VELAGNSS_APPS_GEO_FORMS_H
