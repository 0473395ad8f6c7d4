#include "apps/velagnss/json/EpochJson.h"

#include "apps/velagnss/json/FieldTable.h"
#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/text/TimeText.h"
#include "geo/LeapSeconds.h"
#include "stream/Names.h"

namespace Host {
namespace {

using velagnss::GstRecord;

constexpr std::string_view kFixTypes[] = {"none", "2d", "3d"};  // GSA: '1', '2', '3'

void Messages(C_JsonWriter& json, const S_EpochStation& station) {
  json.BeginArray();
  for (const std::string& name : station.messages) json.String(name);
  json.EndArray();
}

// clang-format off
constexpr S_JsonField<S_Position> kPosition[] = {
    {"latitude_deg",       &Value<&S_Position::latitude>},
    {"longitude_deg",      &Value<&S_Position::longitude>},
    {"altitude_m",         &Value<&S_Position::altitude>},
    {"geoid_separation_m", &Value<&S_Position::geoidSeparation>},
    {"mode",               &Name<&S_Position::fix, kModeNames>},
    {"satellites_used",    &Value<&S_Position::satellites>},
    {"speed_knots",        &Value<&S_Position::speedKnots>},
    {"course_true_deg",    &Value<&S_Position::courseTrue>},
};
constexpr S_JsonField<S_Epoch> kQuality[] = {
    {"pdop", &Value<&S_Epoch::pdop>},
    {"hdop", &Value<&S_Epoch::hdop>},
    {"vdop", &Value<&S_Epoch::vdop>},
};
constexpr S_JsonField<GstRecord> kAccuracy[] = {
    {"range_rms_m",           &Value<&GstRecord::rangeRms>},
    {"semi_major_m",          &Value<&GstRecord::semiMajor>},
    {"semi_minor_m",          &Value<&GstRecord::semiMinor>},
    {"orientation_deg",       &Value<&GstRecord::orientation>},
    {"latitude_deviation_m",  &Value<&GstRecord::latitudeDeviation>},
    {"longitude_deviation_m", &Value<&GstRecord::longitudeDeviation>},
    {"altitude_deviation_m",  &Value<&GstRecord::altitudeDeviation>},
};
constexpr S_JsonField<S_EpochStation> kStation[] = {
    {"number",        &Plain<&S_EpochStation::number>},
    {"latitude_deg",  &Value<&S_EpochStation::latitude>},
    {"longitude_deg", &Value<&S_EpochStation::longitude>},
    {"height_m",      &Value<&S_EpochStation::height>},
    {"messages",      &Messages},
};
// clang-format on

template <class Fields, class Record>
void WriteObjectOrNull(C_JsonWriter& json, const Fields& fields, const std::optional<Record>& record) {
  if (!record) return json.Null();
  json.BeginObject();
  WriteFields(json, fields, *record);
  json.EndObject();
}

void WriteTimes(C_JsonWriter& json, const S_Epoch& epoch) {
  constexpr unsigned int kDecimals = 6;  // a second of the week has no nanoseconds in a double
  C_TimeText utc;
  C_TimeText gps;
  if (epoch.mjd) {
    const C_GnssTime time = velagnss::GpsOfUtc({*epoch.mjd, epoch.timeOfDay});
    utc = C_TimeText::Utc(*epoch.mjd, epoch.timeOfDay, C_TimeText::kAllDigits);
    gps = C_TimeText::WeekTime(time.m_week, time.m_secOfWeek, time.m_system, kDecimals);
  }
  json.Key("utc").StringOrNull(utc.Text());
  json.Key("gps_time").StringOrNull(gps.Text());
  json.Key("time_of_day_s");
  WriteOrNull(json, epoch.timeOfDay);
}

void WriteSignal(C_JsonWriter& json, const S_EpochSignal& signal) {
  json.BeginObject();
  json.Key("signal").StringOrNull(signal.name);
  json.Key("signal_id");
  WriteOrNull(json, signal.nmeaId);
  json.Key("code").StringOrNull(signal.code);
  json.Key("cn0_dbhz");
  WriteOrNull(json, signal.cn0);
  json.EndObject();
}

void WriteSatellite(C_JsonWriter& json, const S_EpochSatellite& satellite) {
  json.BeginObject();
  json.Key("system").StringOrNull(velagnss::SystemName(satellite.system));
  json.Key("number").Integer(satellite.number);
  json.Key("nmea_id");
  WriteOrNull(json, satellite.nmeaId);
  json.Key("elevation_deg");
  WriteOrNull(json, satellite.elevation);
  json.Key("azimuth_deg");
  WriteOrNull(json, satellite.azimuth);
  json.Key("used");
  satellite.isUsed ? json.Boolean(*satellite.isUsed) : json.Null();
  json.Key("signals").BeginArray();
  for (const S_EpochSignal& signal : satellite.signals) WriteSignal(json, signal);
  json.EndArray();
  json.EndObject();
}

}  // namespace

void WriteEpoch(C_JsonWriter& json, const S_Epoch& epoch) {
  json.Key("event").String("epoch");
  json.Key("offset").Integer(epoch.offset);
  WriteTimes(json, epoch);
  S_Position none;
  if (epoch.hasPosition) none.fix = eNmeaModeNotValid;
  WriteFields(json, kPosition, epoch.position.value_or(none));
  json.Key("fix_type");
  WriteName<kFixTypes>(json, static_cast<unsigned int>(epoch.fixType - '1'));
  WriteFields(json, kQuality, epoch);
  json.Key("accuracy");
  WriteObjectOrNull(json, kAccuracy, epoch.accuracy);
  json.Key("station");
  WriteObjectOrNull(json, kStation, epoch.station);
  json.Key("satellites").BeginArray();
  for (const S_EpochSatellite& satellite : epoch.satellites) WriteSatellite(json, satellite);
  json.EndArray();
}

}  // namespace Host
