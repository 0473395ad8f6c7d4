#include "apps/velagnss/report/ReceiverJson.h"

#include <algorithm>
#include <span>

#include "apps/velagnss/account/PlaceJson.h"
#include "apps/velagnss/account/PointNames.h"
#include "apps/velagnss/report/SeriesJson.h"
#include "geo/PointCoordinate.h"
#include "stream/Names.h"

namespace Host {
namespace {

constexpr std::size_t kMaxScatter = 2000;

// Decimals of what is written.
constexpr unsigned int kOfCn0 = 1;     // dB-Hz
constexpr unsigned int kOfCounts = 1;  // a mean of whole numbers
constexpr unsigned int kOfDops = 2;
constexpr unsigned int kOfMeters = 3;
constexpr unsigned int kOfSpeed = 3;  // m/s

std::string_view NameOf(ALGO::eGNSSSystem system) { return velagnss::SystemName(system); }

template <class Items, class WriteItem>
void WriteArray(C_JsonWriter& json, std::string_view name, const Items& items, const WriteItem& writeItem) {
  json.Key(name).BeginArray();
  for (const auto& item : items) writeItem(item);
  json.EndArray();
}

void WriteRange(C_JsonWriter& json, const S_ValueRange& range) {
  json.Key("count").Integer(range.count);
  json.Key("mean");
  WriteRounded(json, range.Mean(), kOfCn0);
  json.Key("min");
  WriteRounded(json, range.min, kOfCn0);
  json.Key("max");
  WriteRounded(json, range.max, kOfCn0);
}

// Observations without a signal id are known by their code alone.
std::string_view NameOf(const S_SignalName& signal) {
  if (!signal.name.empty()) return signal.name;
  return signal.code.empty() ? std::string_view("unspecified") : std::string_view(signal.code);
}

// A point is on the axis, or the stream has no time at all: then only its place is known.
bool HasPlace(const C_TimeBins& axis, const S_LinePoint& point) {
  return axis.IsEmpty() || axis.IndexOf(point.seconds).has_value();
}

void EndPoint(C_JsonWriter& json, const S_LinePoint& point) {
  if (point.startsPiece) json.Integer(1);
  json.EndArray();
}

void WriteSkyPoint(C_JsonWriter& json, const S_SkyPoint& point, const C_TimeBins& axis) {
  json.BeginArray();
  json.IntegerOrNull(axis.IndexOf(point.seconds));
  json.Integer(point.azimuth);
  json.Integer(point.elevation);
  point.kind == eUseNotKnown ? json.Null() : json.Integer(point.kind);
  EndPoint(json, point);
}

void WriteSignal(C_JsonWriter& json, const S_SkySignal& signal, const C_TimeBins& axis) {
  json.BeginObject();
  json.Key("name").String(NameOf(signal));
  json.Key("code").StringOrNull(signal.code);
  WriteRange(json, signal.cn0);
  json.Key("cn0");
  WriteSeries(json, signal.series, axis, kOfCn0);
  json.EndObject();
}

void WriteSatellite(C_JsonWriter& json, const C_SkyReport::t_Satellites::value_type& entry, const C_TimeBins& axis) {
  const auto& [key, satellite] = entry;
  json.BeginObject();
  json.Key("system").String(NameOf(key.first));
  json.Key("number").Integer(key.second);
  json.Key("name").String(PointSatelliteName(key.first, key.second));
  json.Key("epochs").Integer(satellite.epochs);
  json.Key("used");
  satellite.saysUse ? json.Integer(satellite.used) : json.Null();
  WriteArray(json, "track", satellite.track.Points(), [&](const S_SkyPoint& point) {
    if (HasPlace(axis, point)) WriteSkyPoint(json, point, axis);
  });
  WriteArray(json, "signals", satellite.signals, [&](const auto& signal) { WriteSignal(json, signal, axis); });
  json.EndObject();
}

void WriteSatellites(C_JsonWriter& json, const C_SkyReport& sky, const C_TimeBins& axis) {
  WriteArray(json, "satellites", sky.Satellites(), [&](const auto& entry) { WriteSatellite(json, entry, axis); });
  json.Key("satellites_left_out").Integer(sky.SatellitesLeftOut());
  json.Key("signals_left_out").Integer(sky.SignalsLeftOut());
}

void WriteBands(C_JsonWriter& json, const S_SignalKind& kind) {
  json.Key("bands").BeginArray();
  for (std::size_t i = 0; i < kind.bands.size(); ++i) {
    if (kind.bands[i].count == 0) continue;
    json.BeginObject();
    json.Key("from_deg").Integer(i * S_SignalKind::kBandWidth);
    json.Key("to_deg").Integer((i + 1) * S_SignalKind::kBandWidth);
    WriteRange(json, kind.bands[i]);
    json.EndObject();
  }
  json.EndArray();
}

bool HasBands(const S_SignalKind& kind) {
  return std::any_of(kind.bands.begin(), kind.bands.end(), [](const S_ValueRange& band) { return band.count > 0; });
}

void WriteKind(C_JsonWriter& json, const S_SignalKind& kind) {
  if (!HasBands(kind)) return;
  json.BeginObject();
  json.Key("system").String(NameOf(kind.system));
  json.Key("signal").String(NameOf(kind));
  json.Key("code").StringOrNull(kind.code);
  WriteBands(json, kind);
  json.EndObject();
}

void WriteCounts(C_JsonWriter& json, std::string_view name, const C_SatelliteCounts& counts, const C_TimeBins& axis) {
  json.Key(name).BeginObject();
  json.Key("all");
  WriteSeries(json, counts.All(), axis, kOfCounts);
  for (const auto& [system, series] : counts.Systems()) {
    json.Key(NameOf(system));
    WriteSeries(json, series, axis, kOfCounts);
  }
  json.EndObject();
}

// Kinds that did not occur are left out, and the others numbered.
void WriteFix(C_JsonWriter& json, const C_QualityReport& quality, const C_TimeBins& axis) {
  std::vector<std::size_t> kinds;
  for (std::size_t kind = 0; kind < std::size(kFixKinds); ++kind)
    if (quality.EpochsOf(kind) > 0) kinds.push_back(kind);
  json.Key("fix").BeginObject();
  WriteArray(json, "kinds", kinds, [&json](std::size_t kind) { json.Name(kFixKinds[kind]); });
  WriteArray(json, "epochs", kinds, [&](std::size_t kind) { json.Integer(quality.EpochsOf(kind)); });
  WriteArray(json, "periods", quality.Periods(axis), [&](const S_FixPeriod& period) {
    json.BeginArray();
    json.Integer(period.from);
    json.Integer(period.to);
    json.Integer(std::lower_bound(kinds.begin(), kinds.end(), period.kind) - kinds.begin());
    json.EndArray();
  });
  json.Key("type").BeginObject();
  json.Key("2D").Integer(quality.FixesOfType('2'));
  json.Key("3D").Integer(quality.FixesOfType('3'));
  json.Key("none").Integer(quality.FixesOfType('1'));
  json.EndObject();
  json.EndObject();
}

struct S_SeriesMember {
  std::string_view name;
  const C_Series& series;
};

void WriteMembers(C_JsonWriter& json, std::initializer_list<S_SeriesMember> members, const C_TimeBins& axis,
                  unsigned int decimals) {
  for (const S_SeriesMember& member : members) {
    json.Key(member.name);
    WriteSeries(json, member.series, axis, decimals);
  }
}

void WriteQuality(C_JsonWriter& json, const C_QualityReport& quality, const C_TimeBins& axis) {
  WriteFix(json, quality, axis);
  json.Key("accuracy").BeginObject();
  WriteMembers(json, {{"horizontal_m", quality.Horizontal()}, {"vertical_m", quality.Vertical()}}, axis, kOfMeters);
  json.EndObject();
  json.Key("dop").BeginObject();
  WriteMembers(json, {{"pdop", quality.Pdop()}, {"hdop", quality.Hdop()}, {"vdop", quality.Vdop()}}, axis, kOfDops);
  json.EndObject();
}

void WriteEastAndNorth(C_JsonWriter& json, const C_Vector3& local) {
  WriteRounded(json, local.Y(), kOfMeters);
  WriteRounded(json, local.X(), kOfMeters);
}

// At most `kMaxScatter` points of a sample, evenly chosen; `localOf` gives north, east and up in m.
template <class LocalOf>
void WriteScatter(C_JsonWriter& json, std::span<const C_Vector3> sample, const LocalOf& localOf) {
  const std::size_t stride = (sample.size() + kMaxScatter - 1) / kMaxScatter;
  json.Key("scatter").BeginArray();
  for (std::size_t i = 0; i < sample.size(); i += stride) {
    json.BeginArray();
    WriteEastAndNorth(json, localOf(sample[i]));
    json.EndArray();
  }
  json.EndArray();
}

void WritePlacePoint(C_JsonWriter& json, const S_PlacePoint& point, C_PointCoordinate& mean, const C_TimeBins& axis) {
  C_PointCoordinate position(C_PointCoordinate::COORD_GEODETIC, point.latitude * kRadiansPerDegree,
                             point.longitude * kRadiansPerDegree, point.height);
  position.ConvertToAllInternal();
  json.BeginArray();
  json.IntegerOrNull(axis.IndexOf(point.seconds));
  WriteEastAndNorth(json, mean.RangeLocal(position.Cartesian()));
  EndPoint(json, point);
}

// The same numbers as in the account, if it has any: it counts fixes with an altitude only.
void WritePosition(C_JsonWriter& json, const C_PlaceReport& place, const C_ReceiverReports& reports) {
  const std::optional<S_PositionSummary> account = reports.Account().Position();
  const C_PositionSummary& positions = account ? reports.Account().Positions() : place.Summary();
  const std::optional<S_PositionSummary> summary = positions.Summary();
  json.Key("position");
  if (place.Positions() == 0 || !summary) return json.Null();
  C_PointCoordinate mean(C_PointCoordinate::COORD_CARTESIAN, positions.Mean());
  json.BeginObject();
  WritePlace(json, summary->latitude, summary->longitude, account ? summary->height : kNotKnown);
  json.Key("altitude_m").Number(account ? summary->altitude : kNotKnown);
  json.Key("radius_50_m").Number(summary->radius50);
  json.Key("radius_95_m").Number(summary->radius95);
  WriteArray(json, "track", place.Track().Points(), [&](const S_PlacePoint& point) {
    if (HasPlace(reports.Axis(), point)) WritePlacePoint(json, point, mean, reports.Axis());
  });
  WriteScatter(json, positions.SomeFixes(), [&mean](const C_Vector3& fix) { return mean.RangeLocal(fix); });
  WriteMembers(json, {{"height", place.Height()}}, reports.Axis(), kOfMeters);
  json.Key("height_is").Name(place.HasHeights() ? "ellipsoid" : "sea level");
  WriteMembers(json, {{"speed_m_per_s", place.Speed()}}, reports.Axis(), kOfSpeed);
  json.EndObject();
}

void WriteComputed(C_JsonWriter& json, const C_ReceiverReports& reports) {
  const S_PointStation& station = *reports.Points().Station();
  const S_ComputedReport& computed = reports.Computed();
  const std::optional<S_PointErrors> errors = reports.Points().Errors();
  json.BeginObject();
  json.Key("station_latitude_deg").Number(station.latitude * kDegreesPerRadian);
  json.Key("station_longitude_deg").Number(station.longitude * kDegreesPerRadian);
  json.Key("station_height_m").Number(station.height);
  WriteMembers(json, {{"north_m", computed.north}, {"east_m", computed.east}, {"up_m", computed.up}}, reports.Axis(),
               kOfMeters);
  WriteScatter(json, reports.Points().SomeErrors(), [](const C_Vector3& error) { return error; });
  json.Key("horizontal_50_m").Number(errors->horizontal50);
  json.Key("horizontal_95_m").Number(errors->horizontal95);
  json.EndObject();
}

void WriteReceiver(C_JsonWriter& json, const C_ReceiverReports::t_Station& station, const S_ReceiverReport& receiver,
                   const C_ReceiverReports& reports) {
  const C_TimeBins& axis = reports.Axis();
  json.BeginObject();
  json.Key("station").IntegerOrNull(station);
  json.Key("epochs").Integer(receiver.epochs);
  json.Key("positions").Integer(receiver.place.Positions());
  WriteSatellites(json, receiver.sky, axis);
  WriteArray(json, "elevation", receiver.sky.Kinds(), [&json](const S_SignalKind& kind) { WriteKind(json, kind); });
  WriteCounts(json, "in_view", receiver.sky.InView(), axis);
  WriteCounts(json, "used", receiver.sky.Used(), axis);
  WriteQuality(json, receiver.quality, axis);
  WritePosition(json, receiver.place, reports);
  json.Key("computed");
  reports.IsComputed(station) ? WriteComputed(json, reports) : json.Null();
  json.EndObject();
}

}  // namespace

void WriteReceivers(C_JsonWriter& json, const C_ReceiverReports& reports) {
  WriteArray(json, "receivers", reports.Receivers(),
             [&](const auto& entry) { WriteReceiver(json, entry.first, entry.second, reports); });
  json.Key("receivers_left_out").Integer(reports.ReceiversLeftOut());
}

}  // namespace Host
