#include "apps/velagnss/json/RecordJson.h"

#include "apps/velagnss/json/BinaryJson.h"
#include "apps/velagnss/json/MoreNmeaJson.h"
#include "apps/velagnss/json/NmeaJson.h"
#include "apps/velagnss/json/ProprietaryJson.h"
#include "apps/velagnss/json/Rtcm3Json.h"

namespace Host {
namespace {

// What is not decoded is shown as it came.
void WriteMembers(C_JsonWriter& json, const velagnss::RawText& raw) { json.Key("text").String(raw.text); }
void WriteMembers(C_JsonWriter& json, const velagnss::RawBody& raw) { json.Key("body").Hex({raw.data, raw.size}); }
void WriteMembers(C_JsonWriter& json, const velagnss::PackedPayload& packed) {
  json.Key("text").String(packed.text);
  json.Key("payload_length").Integer(packed.length);
  json.Key("payload").Hex({packed.bytes, packed.length});
}
void WriteMembers(C_JsonWriter&, std::monostate) {}

}  // namespace

void WriteFields(C_JsonWriter& json, const velagnss::DecodedFrame& decoded) {
  const auto write = [&](const auto& record) {
    if constexpr (requires { WriteMembers(json, record, decoded.week); })
      WriteMembers(json, record, decoded.week);
    else
      WriteMembers(json, record);
  };
  std::visit(write, decoded.record);
}

}  // namespace Host
