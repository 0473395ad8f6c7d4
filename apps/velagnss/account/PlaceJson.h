// Members of JSON objects that describe a place.
#ifndef VELAGNSS_APPS_PLACE_JSON_H
#define VELAGNSS_APPS_PLACE_JSON_H

#include "apps/velagnss/account/PositionSummary.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "apps/velagnss/text/Units.h"

namespace Host {

// Radians, and meters above the ellipsoid.
inline void WritePlace(C_JsonWriter& json, double latitude, double longitude, double height) {
  json.Key("latitude_deg").Number(latitude * kDegreesPerRadian);
  json.Key("longitude_deg").Number(longitude * kDegreesPerRadian);
  json.Key("height_m").Number(height);
}

inline void WriteSpread(C_JsonWriter& json, const S_PositionSummary& positions) {
  json.Key("spread_north_m").Number(positions.spreadNorth);
  json.Key("spread_east_m").Number(positions.spreadEast);
  json.Key("spread_up_m").Number(positions.spreadUp);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_PLACE_JSON_H
