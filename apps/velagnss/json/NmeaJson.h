// NMEA 0183 sentences as JSON members, and back: one table per sentence serves both ways.
#ifndef VELAGNSS_APPS_NMEA_JSON_H
#define VELAGNSS_APPS_NMEA_JSON_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/text/JsonWriter.h"
#include "framing/RawDataMessage.h"
#include "textproto/NmeaMoreRecords.h"

namespace Host {

using t_SentenceType = C_RawDataMessage::eNMEA0183Messages;

// The members of the object "fields".
void WriteMembers(C_JsonWriter& json, const S_GGA_Data& record);
void WriteMembers(C_JsonWriter& json, const S_GNS_Data& record);
void WriteMembers(C_JsonWriter& json, const S_ZDA_Data& record);
void WriteMembers(C_JsonWriter& json, const S_GLL_Data& record);
void WriteMembers(C_JsonWriter& json, const S_GSV_Data& record);
void WriteMembers(C_JsonWriter& json, const S_GSA_Data& record);
void WriteMembers(C_JsonWriter& json, const S_RMC_Data& record);
void WriteMembers(C_JsonWriter& json, const S_VTG_Data& record);

// The sentences that can be read back from JSON: one by its name, "GGA", and all names for messages.
std::optional<t_SentenceType> FindEncodableSentence(std::string_view name);
std::string EncodableSentenceNames();

// The reverse of `WriteMembers`: a record fit for encoding from the object "fields". What the object leaves out, or
// gives as null, gets its marker; the talker must be there. Returns what is wrong, member first, or nothing.
std::string ReadNmeaFields(const nlohmann::json& fields, t_SentenceType type, velagnss::NmeaRecord& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_NMEA_JSON_H
