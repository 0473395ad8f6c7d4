#include "apps/velagnss/report/ReportJson.h"

namespace Host {

void BeginReport(C_JsonWriter& json) {
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("report").String("session");
  json.Key("version").String(VELAGNSS_VERSION);
  json.Key("inputs").BeginArray();
}

void EndReport(C_JsonWriter& json) {
  json.EndArray();
  json.EndObject();
  json.EndLine();
}

}  // namespace Host
