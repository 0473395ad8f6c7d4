#include "apps/velagnss/geo/GeoText.h"

#include <fmt/core.h>

#include <cmath>
#include <numbers>

#include "apps/velagnss/text/AppendFormat.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"
#include "geo/LeapSeconds.h"

namespace Host {
namespace {

// How a quantity is written: its unit in a table, its suffix to a name in JSON.
struct S_Style {
  double scale;  // from the library's unit
  int decimals;
  std::string_view unit;
  std::string_view suffix;
  double turn = 0;  // a full circle; 0: not a direction
};

S_Style StyleOf(eGeoQuantity quantity, bool radians) {
  switch (quantity) {
    case eGeoQuantity::Angle:
    case eGeoQuantity::Direction: {
      const bool isDirection = quantity == eGeoQuantity::Direction;
      if (radians) return {1, 11, "rad", "_rad", isDirection ? 2 * std::numbers::pi : 0};
      return {kDegreesPerRadian, 9, "deg", "_deg", isDirection ? 360.0 : 0};
    }
    case eGeoQuantity::Length:
      return {1, 4, "m", "_m"};
    case eGeoQuantity::Seconds:
      return {1, 9, "s", ""};
    case eGeoQuantity::Fraction:
      return {1, 14, "", ""};
    case eGeoQuantity::Calendar:
      return {1, 0, "GPS time", ""};
    default:
      return {1, 0, "", ""};
  }
}

// Seconds since 6 January 1980 as date and time of day. Week and second of week are exact, fractions are to some 0.5
// us: enough for the milliseconds shown.
C_TimeText CalendarText(double seconds, bool isUtc) {
  const double week = std::floor(seconds / kSecondsPerWeek);
  const C_GnssTime time(static_cast<unsigned short>(week), seconds - week * kSecondsPerWeek, ALGO::GNSS_GPS);
  if (!isUtc) return C_TimeText::WeekTime(time.m_week, time.m_secOfWeek, time.m_system);
  const velagnss::UtcTime utc = velagnss::UtcOfGps(time);
  return C_TimeText::Utc(utc.mjd, utc.secondsOfDay);
}

bool IsCalendar(eGeoQuantity quantity) { return quantity == eGeoQuantity::Calendar || quantity == eGeoQuantity::Utc; }

// What rounds to nothing has no sign: -0.00001 m is "0.0000".
std::string FixedText(double value, int decimals) {
  std::string text = fmt::format("{:.{}f}", value, decimals);
  if (text.front() == '-' && text.find_first_of("123456789") == std::string::npos) text.erase(0, 1);
  return text;
}

std::string ValueText(eGeoQuantity quantity, double value, const S_Style& style) {
  if (IsCalendar(quantity)) return std::string(CalendarText(value, quantity == eGeoQuantity::Utc).Text());
  const std::string text = FixedText(value * style.scale, style.decimals);
  const bool isWholeTurn = style.turn != 0 && text == FixedText(style.turn, style.decimals);
  return isWholeTurn ? FixedText(0, style.decimals) : text;
}

}  // namespace

std::string GeoTable(const S_GeoResult& result) {
  if (!result.hasValues) return GeoLine(result);
  std::string table;
  for (std::size_t i = 0; i < result.form.outputs.size(); ++i) {
    const S_GeoColumn& column = result.form.outputs[i];
    const S_Style style = StyleOf(column.quantity, result.radians);
    AppendFormat(table, "{:<16}{:>24}{}{}\n", column.name, ValueText(column.quantity, result.values[i], style),
                 style.unit.empty() ? "" : " ", style.unit);
  }
  return table;
}

std::string GeoLine(const S_GeoResult& result) {
  if (!result.hasValues) return std::string(result.form.failure) + "\n";
  std::string line;
  for (std::size_t i = 0; i < result.form.outputs.size(); ++i) {
    const eGeoQuantity quantity = result.form.outputs[i].quantity;
    line += (i == 0 ? "" : " ") + ValueText(quantity, result.values[i], StyleOf(quantity, result.radians));
  }
  return line + "\n";
}

std::string GeoJson(const S_GeoResult& result, std::optional<std::uint64_t> line) {
  constexpr std::size_t kUsualSize = 512;
  C_JsonWriter json(kUsualSize);
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("report").String(result.form.command);
  if (line) json.Key("line").Integer(*line);
  for (std::size_t i = 0; i < result.form.outputs.size(); ++i) {
    const S_GeoColumn& column = result.form.outputs[i];
    const S_Style style = StyleOf(column.quantity, result.radians);
    json.Key(std::string(column.name) + std::string(style.suffix));
    if (!result.hasValues)
      json.Null();
    else if (IsCalendar(column.quantity))
      json.String(CalendarText(result.values[i], column.quantity == eGeoQuantity::Utc).Text());
    else
      json.Number(result.values[i] * style.scale);
  }
  json.EndObject();
  json.EndLine();
  return std::string(json.Text());
}

}  // namespace Host
