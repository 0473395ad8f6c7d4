#include "apps/velagnss/geo/GeoForms.h"

#include <fmt/core.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <vector>

#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Units.h"
#include "geo/Geodesy.h"
#include "geo/GnssTime.h"
#include "geo/LeapSeconds.h"
#include "geo/NotAvailable.h"
#include "geo/PointCoordinate.h"

namespace Host {
namespace {

using enum eGeoQuantity;

constexpr double kGreatestLength = 1e9;  // m: more than twice as far as the Moon
constexpr unsigned int kWholeWeeks = (kLastMjd - kMjdOfGpsEpoch) / 7;
constexpr double kLastWeek = kWholeWeeks;

// Nearer than this to the Earth's center, geodetic coordinates mean nothing (geo/Geodesy.h).
constexpr double kLeastRadius = 500e3;  // m

// clang-format off
constexpr S_GeoColumn kGeodetic[] = {
    {"latitude",       Angle,     -90, 90},
    {"longitude",      Angle,     -360, 360},
    {"height",         Length,    -kGreatestLength, kGreatestLength},
};
constexpr S_GeoColumn kCartesian[] = {
    {"x",              Length,    -kGreatestLength, kGreatestLength},
    {"y",              Length,    -kGreatestLength, kGreatestLength},
    {"z",              Length,    -kGreatestLength, kGreatestLength},
};
constexpr S_GeoColumn kTwoPoints[] = {
    {"latitude1",      Angle,     -90, 90},
    {"longitude1",     Angle,     -360, 360},
    {"latitude2",      Angle,     -90, 90},
    {"longitude2",     Angle,     -360, 360},
};
constexpr S_GeoColumn kGeodesic[] = {
    {"distance",       Length},
    {"azimuth",        Direction},
    {"back_azimuth",   Direction},
};
constexpr S_GeoColumn kStationAndTarget[] = {
    {"latitude1",      Angle,     -90, 90},
    {"longitude1",     Angle,     -360, 360},
    {"height1",        Length,    -kGreatestLength, kGreatestLength},
    {"latitude2",      Angle,     -90, 90},
    {"longitude2",     Angle,     -360, 360},
    {"height2",        Length,    -kGreatestLength, kGreatestLength},
};
constexpr S_GeoColumn kLookAngles[] = {
    {"azimuth",        Direction},
    {"elevation",      Angle},
    {"range",          Length},
    {"north",          Length},
    {"east",           Length},
    {"up",             Length},
};
constexpr S_GeoColumn kCalendarDate[] = {
    {"year",           Whole,     1980, 2100},
    {"month",          Whole,     1, 12},
    {"day",            Whole,     1, 31},
    {"hour",           Whole,     0, 23},
    {"minute",         Whole,     0, 59},
    {"seconds",        Seconds,   0, 60},
};
constexpr S_GeoColumn kUtcDate[] = {
    {"year",           Whole,     1980, 2100},
    {"month",          Whole,     1, 12},
    {"day",            Whole,     1, 31},
    {"hour",           Whole,     0, 23},
    {"minute",         Whole,     0, 59},
    {"seconds",        Seconds,   0, 61},
};
constexpr S_GeoColumn kGpsWeek[] = {
    {"week",           Whole,     0, kLastWeek},
    {"seconds",        Seconds,   0, kSecondsPerWeek},
};
constexpr S_GeoColumn kModifiedJulianDate[] = {
    {"mjd",            Days,      kMjdOfGpsEpoch, kLastMjd + 1},
    {"fraction",       Fraction,  0, 1},
};
constexpr S_GeoColumn kTimes[] = {
    {"calendar",       Calendar},
    {"week",           Whole},
    {"seconds_of_week", Seconds},
    {"mjd",            Whole},
    {"fraction_of_day", Fraction},
    {"day_of_year",    Whole},
    {"day_of_week",    Whole},
    {"utc",            Utc},
    {"leap_seconds",   Whole},
};
// clang-format on

// ---- The calculations

eGeoOutcome ConvertPoint(C_PointCoordinate::eCoordType from, const t_GeoInputs& in, t_GeoOutputs& out) {
  C_PointCoordinate point(from, in.data());
  point.ConvertToAllInternal();
  const C_Vector3& result = from == C_PointCoordinate::COORD_GEODETIC ? point.Cartesian() : point.Geodetic();
  std::copy_n(result.Data(), 3, out.begin());
  return eGeoOutcome::Done;
}

eGeoOutcome GeodeticToCartesian(const t_GeoInputs& in, t_GeoOutputs& out) {
  return ConvertPoint(C_PointCoordinate::COORD_GEODETIC, in, out);
}

eGeoOutcome CartesianToGeodetic(const t_GeoInputs& in, t_GeoOutputs& out) {
  if (std::hypot(in[0], in[1], in[2]) < kLeastRadius) return eGeoOutcome::NoResult;
  return ConvertPoint(C_PointCoordinate::COORD_CARTESIAN, in, out);
}

eGeoOutcome Inverse(const t_GeoInputs& in, t_GeoOutputs& out) {
  ALGO::GeodesicInverse(in[0], in[1], in[2], in[3], ALGO::kWgs84A, ALGO::kWgs84F, out[1], out[2], out[0]);
  return IsNotAvailable(out[0]) ? eGeoOutcome::NoResult : eGeoOutcome::Done;
}

eGeoOutcome Look(const t_GeoInputs& in, t_GeoOutputs& out) {
  const ALGO::S_LookAngles look =
      ALGO::GeodLookAngles(in[0], in[1], in[2], in[3], in[4], in[5], ALGO::kWgs84A, ALGO::kWgs84F);
  out = {look.azimuth, look.elevation, look.range, look.north, look.east, look.up};
  return eGeoOutcome::Done;
}

eGeoOutcome AllTimesOf(const C_GnssTime& time, t_GeoOutputs& out) {
  S_GregorianTime calendar{};
  unsigned short dayOfYear = 0;
  unsigned int mjd = 0;
  double fraction = 0;
  C_GnssTime::GpsToOthers(time.m_week, time.m_secOfWeek, calendar, dayOfYear, mjd, fraction);
  if (mjd < kMjdOfGpsEpoch || mjd > kLastMjd) return eGeoOutcome::BadInput;
  unsigned char dayOfWeek = 0;
  double secondsOfDay = 0;
  C_GnssTime::GetDowAndSecofDay(time.m_secOfWeek, dayOfWeek, secondsOfDay);
  const double seconds = time.m_week * kSecondsPerWeek + time.m_secOfWeek;
  out = {seconds,
         static_cast<double>(time.m_week),
         time.m_secOfWeek,
         static_cast<double>(mjd),
         fraction,
         static_cast<double>(dayOfYear),
         static_cast<double>(dayOfWeek),
         seconds,
         static_cast<double>(velagnss::LeapSecondsOn(velagnss::UtcOfGps(time).mjd))};
  return eGeoOutcome::Done;
}

bool IsDate(const t_GeoInputs& in) {
  const std::chrono::year_month_day date{std::chrono::year(static_cast<int>(in[0])),
                                         std::chrono::month(static_cast<unsigned int>(in[1])),
                                         std::chrono::day(static_cast<unsigned int>(in[2]))};
  using namespace std::chrono_literals;
  return date.ok() && date >= 1980y / 1 / 6;
}

eGeoOutcome TimeFromCalendar(const t_GeoInputs& in, t_GeoOutputs& out) {
  if (!IsDate(in)) return eGeoOutcome::BadInput;
  const auto number = [&](std::size_t i) { return static_cast<unsigned char>(in[i]); };
  C_GnssTime time;
  time.Set(static_cast<unsigned short>(in[0]), number(1), number(2), number(3), number(4), in[5], ALGO::GNSS_GPS);
  return AllTimesOf(time + 0.0, out);
}

eGeoOutcome TimeFromUtc(const t_GeoInputs& in, t_GeoOutputs& out) {
  if (!IsDate(in)) return eGeoOutcome::BadInput;
  const unsigned int mjd = C_GnssTime::GregorianToMJD(
      static_cast<unsigned short>(in[0]), static_cast<unsigned char>(in[1]), static_cast<unsigned char>(in[2]));
  const double secondsOfDay = in[3] * 3600 + in[4] * 60 + in[5];
  const bool hasLeapSecond = velagnss::LeapSecondsOn(mjd + 1) > velagnss::LeapSecondsOn(mjd);
  if (in[5] >= 60 && !(hasLeapSecond && secondsOfDay >= kSecondsPerDay)) return eGeoOutcome::BadInput;
  return AllTimesOf(velagnss::GpsOfUtc({mjd, secondsOfDay}), out);
}

eGeoOutcome TimeFromWeek(const t_GeoInputs& in, t_GeoOutputs& out) {
  return AllTimesOf(C_GnssTime(static_cast<unsigned short>(in[0]), in[1], ALGO::GNSS_GPS), out);
}

eGeoOutcome TimeFromMjd(const t_GeoInputs& in, t_GeoOutputs& out) {
  const double whole = std::floor(in[0]);
  const double fraction = in[0] - whole;
  if (fraction != 0 && in[1] != 0) return eGeoOutcome::BadInput;
  C_GnssTime time;
  time.Set_MJD(static_cast<unsigned int>(whole), fraction + in[1], ALGO::GNSS_GPS);
  return AllTimesOf(time + 0.0, out);
}

constexpr char kNoGeodetic[] = "no result: within 500 km of the Earth's center, latitude and height have no meaning";
constexpr char kNoGeodesic[] =
    "no result: the points are almost opposite each other on the Earth, where the method does not converge";
constexpr char kNoDate[] = "not a day from 6 January 1980 to 31 December 2100";
constexpr char kNoUtc[] = "not a day from 6 January 1980 to 31 December 2100, or a second 60 that is not a leap second";
constexpr char kNoMjd[] = "the fraction is given twice: in the Modified Julian Date and after it";

// clang-format off
constexpr S_GeoForm kForms[] = {
    // command   from        inputs               of them needed  outputs      calculation            failure
    {"convert", "geodetic", kGeodetic,                        3, kCartesian,  &GeodeticToCartesian,  ""},
    {"convert", "ecef",     kCartesian,                       3, kGeodetic,   &CartesianToGeodetic,  kNoGeodetic},
    {"inverse", "",         kTwoPoints,                       4, kGeodesic,   &Inverse,              kNoGeodesic},
    {"look",    "",         kStationAndTarget,                6, kLookAngles, &Look,                 ""},
    {"time",    "calendar", kCalendarDate,                    3, kTimes,      &TimeFromCalendar,     kNoDate},
    {"time",    "utc",      kUtcDate,                         3, kTimes,      &TimeFromUtc,          kNoUtc},
    {"time",    "gps",      kGpsWeek,                         2, kTimes,      &TimeFromWeek,         kNoDate},
    {"time",    "mjd",      kModifiedJulianDate,              1, kTimes,      &TimeFromMjd,          kNoMjd},
};
// clang-format on

static_assert(std::all_of(std::begin(kForms), std::end(kForms), [](const S_GeoForm& form) {
  return form.required <= form.inputs.size() && form.inputs.size() <= kMaxGeoInputs &&
         form.outputs.size() <= kMaxGeoOutputs;
}));

// ---- The text of the values

constexpr std::string_view kSeparators = " \t\r,";
constexpr std::size_t kShownSize = 40;  // of a text that is not a number

bool IsDigit(char character) { return character >= '0' && character <= '9'; }

// Turns the separators of ISO 8601 into spaces: '-', ':' and 'T' between two digits, where no other number has them. Of
// a time in UTC also the 'Z' at its end.
std::string WithoutIsoSeparators(std::string_view line, bool isUtc) {
  std::string plain(line);
  const std::size_t last = line.find_last_not_of(kSeparators);
  if (isUtc && last != std::string_view::npos && last > 0 && line[last] == 'Z' && IsDigit(line[last - 1]))
    plain[last] = ' ';
  for (std::size_t i = 1; i + 1 < line.size(); ++i) {
    const bool isBetweenDigits = IsDigit(line[i - 1]) && IsDigit(line[i + 1]);
    if (isBetweenDigits && (line[i] == '-' || line[i] == ':' || line[i] == 'T')) plain[i] = ' ';
  }
  return plain;
}

std::vector<std::string_view> SplitValues(std::string_view line) {
  std::vector<std::string_view> values;
  for (std::size_t begin = line.find_first_not_of(kSeparators); begin != std::string_view::npos;) {
    const std::size_t end = std::min(line.find_first_of(kSeparators, begin), line.size());
    values.push_back(line.substr(begin, end - begin));
    begin = line.find_first_not_of(kSeparators, end);
  }
  return values;
}

std::string ReadCount(const S_GeoForm& form, std::size_t count) {
  if (count >= form.required && count <= form.inputs.size()) return {};
  const std::string needed = form.required == form.inputs.size()
                                 ? fmt::format("{}", form.required)
                                 : fmt::format("{} to {}", form.required, form.inputs.size());
  return fmt::format("{} value{} given, {} needed: {}", count, count == 1 ? "" : "s", needed,
                     JoinNames(form.inputs, &S_GeoColumn::name));
}

bool IsInRange(const S_GeoColumn& column, double value, double scale) {
  const bool isOpen = column.quantity == Seconds || column.quantity == Fraction || column.quantity == Days;
  const double limit = column.limit * scale;
  return value >= column.least * scale && (isOpen ? value < limit : value <= limit);
}

// `scale` converts an angle's limits, in degrees, to the unit of the text.
std::string ReadValue(const S_GeoColumn& column, std::string_view text, double scale, double& value) {
  const bool isNumber = ParseWhole(text, value) && std::isfinite(value);
  const bool isRight = isNumber && (column.quantity != Whole || std::floor(value) == value);
  if (isRight && IsInRange(column, value, scale)) return {};
  const std::string named = fmt::format("{} '{}'", column.name, text.substr(0, kShownSize));
  if (!isRight) return fmt::format("{} is not a {}number", named, column.quantity == Whole ? "whole " : "");
  const bool isOpen = !IsInRange(column, column.limit * scale, scale);
  return fmt::format("{} is outside {} to {}{}", named, column.least * scale, isOpen ? "below " : "",
                     column.limit * scale);
}

}  // namespace

std::span<const S_GeoForm> GeoForms() { return kForms; }

const S_GeoForm* FindGeoForm(std::string_view command, std::string_view from) {
  const auto* const found = std::find_if(std::begin(kForms), std::end(kForms), [&](const S_GeoForm& form) {
    return form.command == command && (from.empty() || form.from == from);
  });
  return found == std::end(kForms) ? nullptr : found;
}

std::vector<std::string_view> SidesOfGeo(std::string_view command) {
  std::vector<std::string_view> sides;
  for (const S_GeoForm& form : kForms)
    if (form.command == command && !form.from.empty()) sides.push_back(form.from);
  return sides;
}

std::string ReadGeoValues(const S_GeoForm& form, std::string_view line, bool radians, t_GeoInputs& values) {
  const bool isUtc = form.from == "utc";
  const std::string plain = isUtc || form.from == "calendar" ? WithoutIsoSeparators(line, isUtc) : std::string(line);
  const std::vector<std::string_view> texts = SplitValues(plain);
  values.fill(0);
  std::string error = ReadCount(form, texts.size());
  for (std::size_t i = 0; i < texts.size() && error.empty(); ++i) {
    const bool isAngle = form.inputs[i].quantity == Angle;
    error = ReadValue(form.inputs[i], texts[i], isAngle && radians ? kRadiansPerDegree : 1, values[i]);
    if (isAngle && !radians) values[i] *= kRadiansPerDegree;
  }
  return error;
}

bool IsGeoComment(std::string_view line) {
  const std::size_t begin = line.find_first_not_of(kSeparators);
  return begin == std::string_view::npos || line[begin] == '#';
}

}  // namespace Host
