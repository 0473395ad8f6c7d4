// NMEA 0183 sentences as JSON members, and back: one table per sentence serves both ways.
#ifndef VELAGNSS_APPS_NMEA_JSON_H
#define VELAGNSS_APPS_NMEA_JSON_H

#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/text/JsonWriter.h"
#include "framing/RawDataMessage.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {

using t_SentenceType = C_RawDataMessage::eNMEA0183Messages;

// The eight sentences that the library decodes and encodes; by their names, "GGA", and all names for messages.
bool IsDecodableSentence(t_SentenceType type);
std::optional<t_SentenceType> FindDecodableSentence(std::string_view name);
std::string DecodableSentenceNames();

// How a position was found, in the words of the JSON output; empty when nothing is said.
std::string_view ModeName(eNmeaModeIndicator mode);

// The members of the object "fields" of one of them. `sentence` is the text that the record was decoded from: it alone
// tells whether a magnetic variation is to the east or to the west.
void WriteNmeaFields(C_JsonWriter& json, t_SentenceType type, const U_EcdDcdData& record, std::string_view sentence);

// The reverse: a record fit for encoding from the object "fields". What the object leaves out, or gives as null, is at
// its marker; the talker must be there. Returns what is wrong, member first, or nothing.
std::string ReadNmeaFields(const nlohmann::json& fields, t_SentenceType type, U_EcdDcdData& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_NMEA_JSON_H
