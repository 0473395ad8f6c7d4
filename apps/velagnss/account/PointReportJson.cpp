#include "apps/velagnss/account/PointReportJson.h"

#include "apps/velagnss/account/PlaceJson.h"
#include "apps/velagnss/account/PointNames.h"
#include "apps/velagnss/text/Units.h"
#include "stream/Names.h"

namespace Host {
namespace {

void WriteStation(C_JsonWriter& json, const C_PointReport& report) {
  json.Key("station");
  if (!report.Station()) return json.Null();
  json.BeginObject();
  json.Key("number").Integer(report.Station()->number);
  WritePlace(json, report.Station()->latitude, report.Station()->longitude, report.Station()->height);
  json.EndObject();
}

void WriteMean(C_JsonWriter& json, const C_PointReport& report) {
  json.Key("mean");
  const std::optional<S_PositionSummary> mean = report.Positions();
  if (!mean) return json.Null();
  json.BeginObject();
  WritePlace(json, mean->latitude, mean->longitude, mean->height);
  WriteSpread(json, *mean);
  json.EndObject();
}

void WriteErrors(C_JsonWriter& json, const C_PointReport& report) {
  json.Key("errors");
  const std::optional<S_PointErrors> errors = report.Errors();
  if (!errors) return json.Null();
  json.BeginObject();
  json.Key("epochs").Integer(errors->epochs);
  json.Key("north_m").Number(errors->north);
  json.Key("east_m").Number(errors->east);
  json.Key("up_m").Number(errors->up);
  json.Key("horizontal_50_m").Number(errors->horizontal50);
  json.Key("horizontal_95_m").Number(errors->horizontal95);
  json.Key("vertical_50_m").Number(errors->vertical50);
  json.Key("vertical_95_m").Number(errors->vertical95);
  json.EndObject();
}

void WriteSystems(C_JsonWriter& json, const C_PointReport& report) {
  json.Key("systems").BeginArray();
  for (const auto& [system, used] : report.Systems()) {
    json.BeginObject();
    json.Key("system").String(velagnss::SystemName(static_cast<ALGO::eGNSSSystem>(system)));
    json.Key("epochs").Integer(used.epochs);
    json.Key("ionosphere_free").Integer(used.ionosphereFree);
    json.Key("satellites").Number(used.SatellitesPerEpoch());
    json.Key("residual_rms_m").Number(used.residuals.Root());
    json.EndObject();
  }
  json.EndArray();
}

void WriteSatellites(C_JsonWriter& json, const C_PointReport& report) {
  json.Key("satellites").BeginArray();
  for (const auto& [key, satellite] : report.Satellites()) {
    json.BeginObject();
    json.Key("satellite").String(PointSatelliteName(key.first, key.second));
    json.Key("azimuth_deg").Number(satellite.azimuth * kDegreesPerRadian);
    json.Key("elevation_deg").Number(satellite.elevation * kDegreesPerRadian);
    json.Key("epochs").Integer(satellite.epochs);
    json.Key("used").Integer(satellite.Used());
    json.Key("residual_rms_m").Number(satellite.residuals.Root());
    json.Key("unused").StringOrNull(WhyUnused(satellite));
    json.EndObject();
  }
  json.EndArray();
}

}  // namespace

void WritePoints(C_JsonWriter& json, const C_PointReport& report) {
  json.Key("positions").BeginObject();
  json.Key("epochs").Integer(report.Epochs());
  json.Key("solved").Integer(report.EpochsOf(velagnss::PointResult::Ok));
  json.Key("too_few_satellites").Integer(report.EpochsOf(velagnss::PointResult::TooFew));
  json.Key("poor_geometry").Integer(report.EpochsOf(velagnss::PointResult::PoorGeometry));
  json.Key("contradictory").Integer(report.EpochsOf(velagnss::PointResult::Contradictory));
  json.Key("diverged").Integer(report.EpochsOf(velagnss::PointResult::Diverged));
  json.Key("other_stations").Integer(report.OtherStations());
  WriteStation(json, report);
  WriteMean(json, report);
  WriteErrors(json, report);
  json.Key("residual_rms_m").Number(report.ResidualRms());
  json.Key("pdop").Number(report.Pdop());
  json.Key("hdop").Number(report.Hdop());
  json.Key("vdop").Number(report.Vdop());
  WriteSystems(json, report);
  WriteSatellites(json, report);
  json.EndObject();
}

}  // namespace Host
