// The calculations of `velagnss geo`: what each takes, what it gives, and how a line of text is read for it.
//
// A calculation can be had from several sides, called forms: `geo convert` from geodetic and from Cartesian
// coordinates, `geo time` from a calendar date, a GPS week or a Modified Julian Date.
#ifndef VELAGNSS_APPS_GEO_FORMS_H
#define VELAGNSS_APPS_GEO_FORMS_H

#include <array>
#include <span>
#include <string>
#include <string_view>

namespace Host {

// What kind of number a value is: its unit, how it is written, and whether its upper limit belongs to its range.
enum class eGeoQuantity {
  Angle,      // degrees or radians
  Direction,  // the same, of a full circle: never written as a whole turn
  Length,     // m
  Seconds,    // below the limit
  Fraction,   // of a day; below the limit
  Days,       // whole or not; below the limit
  Whole,      // a whole number
  Calendar,   // seconds since 6 January 1980, written as date and time of day
};

// A value that goes in or comes out. Limits are degrees where the value is an angle, and mean nothing for results.
struct S_GeoColumn {
  std::string_view name;
  eGeoQuantity quantity;
  double least = 0;
  double limit = 0;
};

inline constexpr std::size_t kMaxGeoInputs = 6;
inline constexpr std::size_t kMaxGeoOutputs = 7;
using t_GeoInputs = std::array<double, kMaxGeoInputs>;
using t_GeoOutputs = std::array<double, kMaxGeoOutputs>;

enum class eGeoOutcome {
  Done,
  NoResult,  // good values that have no result
  BadInput,  // each value is good, all of them together are not
};

// Angles go in and come out in radians.
struct S_GeoForm {
  std::string_view command;  // "convert", "inverse", "look" or "time"
  std::string_view from;     // the side, by its name for --from; empty where there is only one
  std::span<const S_GeoColumn> inputs;
  std::size_t required;  // of the inputs; those behind are 0 when not given
  std::span<const S_GeoColumn> outputs;
  eGeoOutcome (*compute)(const t_GeoInputs& in, t_GeoOutputs& out);
  std::string_view failure;  // in words: why there is no result, or what is wrong with the values
};

// In the order in which help lists them; the first of a command is its usual one.
std::span<const S_GeoForm> GeoForms();

// The form of a command by the name of its side; empty for the usual one. Null when there is none.
const S_GeoForm* FindGeoForm(std::string_view command, std::string_view from);

// Reads the values of a line: numbers with a point, separated by spaces, tabs or commas; a calendar date may be in ISO
// 8601, "2024-05-06T12:34:56.5" or "2024-05-06 12:34". Values that are not given are 0. Returns what is wrong, in words
// that name the value; empty when nothing is.
std::string ReadGeoValues(const S_GeoForm& form, std::string_view line, bool radians, t_GeoInputs& values);

// True for a line without values: an empty one, or a comment that begins with '#'.
bool IsGeoComment(std::string_view line);

}  // namespace Host

#endif  // VELAGNSS_APPS_GEO_FORMS_H
