#include "apps/velagnss/account/ObservationReport.h"

#include <algorithm>
#include <cmath>

#include "apps/velagnss/account/PlaceJson.h"
#include "apps/velagnss/account/TableLine.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Units.h"
#include "geo/PointCoordinate.h"
#include "stream/Names.h"

namespace Host {
namespace {

// The station on the ellipsoid: radians and meters, not finite where the station sent no position.
C_Vector3 GeodeticOf(const S_StationSummary& station) {
  if (IsNotAvailable(station.x)) return {kNotKnown, kNotKnown, kNotKnown};
  C_PointCoordinate point(C_PointCoordinate::COORD_CARTESIAN, C_Vector3(station.x, station.y, station.z));
  point.ConvertToAllInternal();
  return point.Geodetic();
}

double OrNotKnown(double value) { return IsNotAvailable(value) ? kNotKnown : value; }

void WriteStations(C_JsonWriter& json, const C_ObservationSummary& summary) {
  json.Key("stations").BeginArray();
  for (const S_StationSummary& station : summary.Stations()) {
    const C_Vector3 geodetic = GeodeticOf(station);
    json.BeginObject();
    json.Key("station").Integer(station.id);
    json.Key("x_m").Number(OrNotKnown(station.x));
    json.Key("y_m").Number(OrNotKnown(station.y));
    json.Key("z_m").Number(OrNotKnown(station.z));
    WritePlace(json, geodetic.X(), geodetic.Y(), geodetic.Z());
    json.Key("antenna_height_m").Number(OrNotKnown(station.antennaHeight));
    json.Key("antenna").StringOrNull(station.antenna);
    json.Key("antenna_serial").StringOrNull(station.antennaSerial);
    json.Key("receiver").StringOrNull(station.receiver);
    json.Key("firmware").StringOrNull(station.firmware);
    json.Key("receiver_serial").StringOrNull(station.receiverSerial);
    json.EndObject();
  }
  json.EndArray();
}

void WriteSatellites(C_JsonWriter& json, const t_Satellites& satellites) {
  json.BeginArray();
  for (std::size_t number = 0; number < satellites.size(); ++number)
    if (satellites[number]) json.Integer(number);
  json.EndArray();
}

void WriteSystem(C_JsonWriter& json, const S_SystemSummary& system) {
  json.BeginObject();
  json.Key("system").String(velagnss::SystemName(system.system));
  WriteSatellites(json.Key("satellites"), system.satellites);
  json.Key("signals").BeginArray();
  for (const S_SignalSummary& signal : system.signals) {
    json.BeginObject();
    json.Key("signal").String(signal.Code());
    json.Key("observations").Integer(signal.observations);
    json.Key("satellites").Integer(signal.satellites.count());
    json.EndObject();
  }
  json.EndArray();
  json.EndObject();
}

void WriteEpochs(C_JsonWriter& json, const C_StreamAccount& account) {
  const C_ObservationSummary& summary = account.Observations();
  json.Key("observations");
  if (summary.Systems().empty()) return json.Null();
  const C_EpochSteps& epochs = summary.Epochs();
  const auto time = [&](const std::optional<double>& seconds) {
    if (!seconds) return json.Null();
    json.String(account.TimeText(*seconds).Text());
  };
  json.BeginObject();
  json.Key("first"), time(epochs.First());
  json.Key("last"), time(epochs.Last());
  json.Key("usual_step_s").Number(epochs.Interval());
  json.Key("gap_count").Integer(epochs.GapCount());
  WriteGaps(json, account, epochs);
  json.Key("systems").BeginArray();
  for (const S_SystemSummary& system : summary.Systems()) WriteSystem(json, system);
  json.EndArray();
  json.EndObject();
}

// Latest reference time; empty without one, and for a week that cannot be: the seed may be wrong.
C_TimeText LatestText(const S_EphemerisSummary& entry) {
  const double seconds = entry.latest.value_or(-1);
  const double week = std::floor(seconds / kSecondsPerWeek);
  if (!(week >= 0 && week < NA_U16)) return {};
  return C_TimeText::WeekTime(static_cast<unsigned short>(week), seconds - week * kSecondsPerWeek, ALGO::GNSS_GPS);
}

void WriteEphemerides(C_JsonWriter& json, const C_ObservationSummary& summary) {
  json.Key("ephemerides").BeginArray();
  for (const S_EphemerisSummary& entry : summary.Ephemerides()) {
    json.BeginObject();
    json.Key("system").String(velagnss::SystemName(entry.system));
    json.Key("count").Integer(entry.count);
    WriteSatellites(json.Key("satellites"), entry.satellites);
    json.Key("latest_reference");
    json.StringOrNull(LatestText(entry).Text());
    json.Key("age_s").Number(summary.AgeOf(entry).value_or(kNotKnown));
    json.EndObject();
  }
  json.EndArray();
}

void AppendStation(std::string& table, const S_StationSummary& station) {
  const auto line = [&](std::string_view what, const std::string& text, const std::string& serial) {
    if (text.empty()) return;
    Line(table, "  {:<16}{}{}", what, Printable(text), serial.empty() ? "" : ", serial number " + Printable(serial));
  };
  Line(table, "\n  {:<16}{}", "station", station.id);
  if (!IsNotAvailable(station.x)) {
    const C_Vector3 geodetic = GeodeticOf(station);
    Line(table, "  {:<16}{:.4f} {:.4f} {:.4f} m", "ECEF", station.x, station.y, station.z);
    Line(table, "  {:<16}{:.9f} {:.9f} deg, {:.4f} m above the ellipsoid", "position", geodetic.X() * kDegreesPerRadian,
         geodetic.Y() * kDegreesPerRadian, geodetic.Z());
  }
  if (!IsNotAvailable(station.antennaHeight))
    Line(table, "  {:<16}{:.4f} m above the marker", "antenna height", station.antennaHeight);
  line("antenna", station.antenna, station.antennaSerial);
  line("receiver", station.receiver, station.receiverSerial);
  line("firmware", station.firmware, "");
}

void AppendSystems(std::string& table, const C_StreamAccount& account, std::size_t maxRows) {
  const C_ObservationSummary& summary = account.Observations();
  if (summary.Systems().empty()) return;
  Line(table, "\n  observations    interval {} s, gaps {}", summary.Epochs().Interval(), summary.Epochs().GapCount());
  AppendGaps(table, account, summary.Epochs(), maxRows);
  Line(table, "  {:<10}{:>12}  {:<8}{:>12}{:>14}", "system", "satellites", "signal", "satellites", "observations");
  for (const S_SystemSummary& system : summary.Systems()) {
    std::string name(velagnss::SystemName(system.system)), satellites = fmt::format("{}", system.satellites.count());
    for (const S_SignalSummary& signal : system.signals) {
      Line(table, "  {:<10}{:>12}  {:<8}{:>12}{:>14}", name, satellites, signal.Code(), signal.satellites.count(),
           signal.observations);
      name = satellites = "";
    }
  }
}

void AppendEphemerides(std::string& table, const C_ObservationSummary& summary) {
  if (summary.Ephemerides().empty()) return;
  Line(table, "\n  {:<12}{:>10}{:>12}  {:<22}{:>10}", "ephemerides", "count", "satellites", "latest, GPS time",
       "age, s");
  for (const S_EphemerisSummary& entry : summary.Ephemerides()) {
    const C_TimeText latest = LatestText(entry);
    Line(table, "  {:<12}{:>10}{:>12}  {:<22}{:>10}", velagnss::SystemName(entry.system), entry.count,
         entry.satellites.count(), latest.IsEmpty() ? "-" : latest.Text(),
         NumberText(summary.AgeOf(entry).value_or(kNotKnown), 0));
  }
}

}  // namespace

void WriteObservations(C_JsonWriter& json, const C_StreamAccount& account) {
  const C_ObservationSummary& summary = account.Observations();
  WriteStations(json, summary);
  WriteEpochs(json, account);
  WriteEphemerides(json, summary);
  json.Key("leap_seconds_s").IntegerOrNull(summary.LeapSeconds());
  json.Key("text_messages").Integer(summary.TextMessages());
}

void AppendObservations(std::string& table, const C_StreamAccount& account, std::size_t maxRows) {
  const C_ObservationSummary& summary = account.Observations();
  for (const S_StationSummary& station : summary.Stations()) AppendStation(table, station);
  AppendSystems(table, account, maxRows);
  AppendEphemerides(table, summary);
  if (summary.LeapSeconds()) Line(table, "\n  leap seconds    {}", *summary.LeapSeconds());
  if (summary.TextMessages() > 0) Line(table, "\n  text messages   {}", summary.TextMessages());
}

void WriteGaps(C_JsonWriter& json, const C_StreamAccount& account, const C_EpochSteps& epochs) {
  json.Key("gaps").BeginArray();
  for (const S_TimeGap& gap : epochs.Gaps()) {
    json.BeginObject();
    json.Key("offset").Integer(gap.offset);
    json.Key("from").String(account.TimeText(gap.from).Text());
    json.Key("to").String(account.TimeText(gap.to).Text());
    // Whole milliseconds: the difference of two times of day has rounding errors in its last digits.
    json.Key("seconds").Number(static_cast<double>(gap.Milliseconds()) / 1000);
    json.EndObject();
  }
  json.EndArray();
}

void AppendGaps(std::string& table, const C_StreamAccount& account, const C_EpochSteps& epochs, std::size_t maxRows) {
  const std::vector<S_TimeGap> gaps = epochs.Gaps();
  const std::size_t shown = std::min(maxRows, gaps.size());
  for (std::size_t i = 0; i < shown; ++i) {
    const S_TimeGap& gap = gaps[i];
    Line(table, "  {:>14}  gap of {:.3f} s after {}", gap.offset, gap.to - gap.from, account.TimeText(gap.from).Text());
  }
  if (epochs.GapCount() > shown) Line(table, "  and {} more", epochs.GapCount() - shown);
}

}  // namespace Host
