#include "apps/velagnss/json/ProprietaryJson.h"

#include "apps/velagnss/json/FieldTable.h"
#include "apps/velagnss/text/TimeText.h"

namespace Host {
namespace {

using namespace VelaPKVN_Messages;
using VelaRD_Messages::S_IntSignalDiagMsg;

void BlvDate(C_JsonWriter& json, const S_PKvnBlv& record) {
  const C_TimeText date = C_TimeText::Date(record.year, record.month, record.day);
  if (date.IsEmpty()) return json.Null();
  json.String(date.Text());
}

// What the decoder keeps as text: one string per comma field, the checksum digits last.
template <class Record>
void Rest(C_JsonWriter& json, const Record& record) {
  json.BeginArray();
  for (unsigned int i = 0; i < record.restCount && i < kMaxRestFields; ++i) {
    const std::string_view field(record.rest[i], kRestFieldSize);
    json.String(field.substr(0, field.find('\0')));
  }
  json.EndArray();
}

// clang-format off
constexpr S_JsonField<S_PKvnAttStat> kAttStat[] = {
    {"field2",  &Value<&S_PKvnAttStat::field2>},
    {"text3",   &Text<&S_PKvnAttStat::text3>},
    {"field4",  &Value<&S_PKvnAttStat::field4>},
    {"field5",  &Value<&S_PKvnAttStat::field5>},
    {"field6",  &Letter<&S_PKvnAttStat::field6>},
    {"field7",  &Value<&S_PKvnAttStat::field7>},
    {"field8",  &Value<&S_PKvnAttStat::field8>},
    {"field9",  &Letter<&S_PKvnAttStat::field9>},
    {"field10", &Value<&S_PKvnAttStat::field10>},
    {"rest",    &Rest<S_PKvnAttStat>},
};

constexpr S_JsonField<S_PKvnGbs> kGbs[] = {
    {"time_of_day_s", &Value<&S_PKvnGbs::timeOfDay>},
    {"field3",        &Value<&S_PKvnGbs::field3>},
    {"field4",        &Value<&S_PKvnGbs::field4>},
    {"field5",        &Value<&S_PKvnGbs::field5>},
    {"field6",        &Value<&S_PKvnGbs::field6>},
    {"field7",        &Value<&S_PKvnGbs::field7>},
    {"field8",        &Value<&S_PKvnGbs::field8>},
    {"field9",        &Value<&S_PKvnGbs::field9>},
    {"field10",       &Value<&S_PKvnGbs::field10>},
    {"field11",       &Value<&S_PKvnGbs::field11>},
    {"field12",       &Value<&S_PKvnGbs::field12>},
};

constexpr S_JsonField<S_PKvnHpr> kHpr[] = {
    {"time_of_day_s", &Value<&S_PKvnHpr::timeOfDay>},
    {"heading_deg",   &Value<&S_PKvnHpr::heading>},
    {"pitch_deg",     &Value<&S_PKvnHpr::pitch>},
    {"roll_deg",      &Value<&S_PKvnHpr::roll>},
    {"field6",        &Letter<&S_PKvnHpr::field6>},
};

constexpr S_JsonField<S_PKvnBlv> kBlv[] = {
    {"date",          &BlvDate},
    {"time_of_day_s", &Value<&S_PKvnBlv::timeOfDay>},
    {"field4",        &Value<&S_PKvnBlv::field4>},
    {"field5",        &Value<&S_PKvnBlv::field5>},
    {"field6",        &Value<&S_PKvnBlv::field6>},
    {"field7",        &Value<&S_PKvnBlv::field7>},
    {"field8",        &Value<&S_PKvnBlv::field8>},
    {"field9",        &Value<&S_PKvnBlv::field9>},
    {"field10",       &Value<&S_PKvnBlv::field10>},
};

constexpr S_JsonField<S_PKvnFvi> kFvi[] = {
    {"time_of_day_s", &Value<&S_PKvnFvi::timeOfDay>},
    {"field3to21",    &Values<&S_PKvnFvi::field3to21>},
    {"text22",        &Text<&S_PKvnFvi::text22>},
    {"field23",       &Value<&S_PKvnFvi::field23>},
    {"field24",       &Value<&S_PKvnFvi::field24>},
    {"field25",       &Value<&S_PKvnFvi::field25>},
    {"field26",       &Value<&S_PKvnFvi::field26>},
    {"field27",       &Value<&S_PKvnFvi::field27>},
    {"field28",       &Value<&S_PKvnFvi::field28>},
    {"field29",       &Value<&S_PKvnFvi::field29>},
    {"field30",       &Value<&S_PKvnFvi::field30>},
};

constexpr S_JsonField<S_PKvnRtkStat> kRtkStat[] = {
    {"rest", &Rest<S_PKvnRtkStat>},
};

constexpr S_JsonField<S_PKvnVct> kVct[] = {
    {"field2",        &Value<&S_PKvnVct::field2>},
    {"time_of_day_s", &Value<&S_PKvnVct::timeOfDay>},
    {"field4",        &Value<&S_PKvnVct::field4>},
    {"field5",        &Value<&S_PKvnVct::field5>},
    {"field6",        &Value<&S_PKvnVct::field6>},
    {"field7",        &Value<&S_PKvnVct::field7>},
    {"field8",        &Value<&S_PKvnVct::field8>},
    {"field9",        &Value<&S_PKvnVct::field9>},
    {"field10",       &Value<&S_PKvnVct::field10>},
    {"field11",       &Value<&S_PKvnVct::field11>},
};

constexpr S_JsonField<S_PKvnINTLT> kIntlt[] = {
    {"field2", &Value<&S_PKvnINTLT::field2>},
};

constexpr S_JsonField<S_PKvnTEMPERATURE> kTemperature[] = {
    {"field2", &Value<&S_PKvnTEMPERATURE::field2>},
};

constexpr S_JsonField<S_PKvnARN> kArn[] = {
    {"field2",  &Value<&S_PKvnARN::field2>},
    {"field3",  &Value<&S_PKvnARN::field3>},
    {"field4",  &Value<&S_PKvnARN::field4>},
    {"field5",  &Value<&S_PKvnARN::field5>},
    {"field6",  &Value<&S_PKvnARN::field6>},
    {"field7",  &Value<&S_PKvnARN::field7>},
    {"field8",  &Value<&S_PKvnARN::field8>},
    {"field9",  &Value<&S_PKvnARN::field9>},
    {"field10", &Value<&S_PKvnARN::field10>},
    {"field11", &Value<&S_PKvnARN::field11>},
    {"field12", &Value<&S_PKvnARN::field12>},
    {"field13", &Value<&S_PKvnARN::field13>},
};

constexpr S_JsonField<S_IntSignalDiagMsg> kRd1[] = {
    {"time_of_week_s", &Value<&S_IntSignalDiagMsg::timeOfWeek>},
    {"field2",         &Plain<&S_IntSignalDiagMsg::field2>},
    {"field3",         &Value<&S_IntSignalDiagMsg::field3>},
    {"field5a",        &Plain<&S_IntSignalDiagMsg::field5a>},
    {"field5b",        &Plain<&S_IntSignalDiagMsg::field5b>},
    {"field6",         &Value<&S_IntSignalDiagMsg::field6>},
    {"field7",         &Value<&S_IntSignalDiagMsg::field7>},
    {"field8",         &Value<&S_IntSignalDiagMsg::field8>},
    {"field9",         &Plain<&S_IntSignalDiagMsg::field9>},
    {"field10",        &Plain<&S_IntSignalDiagMsg::field10>},
    {"field11",        &Plain<&S_IntSignalDiagMsg::field11>},
    {"field12",        &Plain<&S_IntSignalDiagMsg::field12>},
};
// clang-format on

}  // namespace

void WriteMembers(C_JsonWriter& json, const S_PKvnAttStat& record) { WriteFields(json, kAttStat, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnGbs& record) { WriteFields(json, kGbs, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnHpr& record) { WriteFields(json, kHpr, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnBlv& record) { WriteFields(json, kBlv, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnFvi& record) { WriteFields(json, kFvi, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnRtkStat& record) { WriteFields(json, kRtkStat, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnVct& record) { WriteFields(json, kVct, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnINTLT& record) { WriteFields(json, kIntlt, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnTEMPERATURE& record) { WriteFields(json, kTemperature, record); }
void WriteMembers(C_JsonWriter& json, const S_PKvnARN& record) { WriteFields(json, kArn, record); }
void WriteMembers(C_JsonWriter& json, const S_IntSignalDiagMsg& record) { WriteFields(json, kRd1, record); }

}  // namespace Host
