#include "apps/velagnss/report/ReportJson.h"

#include "apps/velagnss/account/AccountJson.h"

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

void WriteReportInput(C_JsonWriter& json, const S_InputReport& input) {
  json.BeginObject();
  json.Key("name").Utf8(input.account.Input());
  json.Key("stat");
  WriteAccount(json, input.account, &input.points);
  json.Key("bins").Null();
  json.Key("receivers").BeginArray();
  json.EndArray();
  json.Key("receivers_left_out").Integer(0);
  json.EndObject();
}

}  // namespace Host
