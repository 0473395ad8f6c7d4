// Any NMEA 0183 sentence as JSON members, and back: those beyond the eight of NmeaJson.h, and all others as texts.
#ifndef VELAGNSS_APPS_MORE_NMEA_JSON_H
#define VELAGNSS_APPS_MORE_NMEA_JSON_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

#include "apps/velagnss/text/JsonWriter.h"
#include "textproto/NmeaMoreRecords.h"

namespace Host {

// The members of the object "fields".
void WriteMembers(C_JsonWriter& json, const velagnss::NmeaRecord& record);

// Whether a sentence of this name can be read back from its members, and all such names for messages; not the eight.
bool IsMoreSentence(std::string_view name);
std::string MoreSentenceNames();

// Whether an object "fields" is that of a sentence kept as texts.
bool IsOtherSentence(const nlohmann::json& fields);

// Each text of the object, one item of an array included, as the bytes that it stands for: "\u00e4" is the byte 0xE4.
// False where a character is not of a single byte.
bool MakeBytes(nlohmann::json& value);

// The reverse of `WriteMembers`, after `MakeBytes`. The record's texts are views into `fields`, and for a sentence kept
// as texts into `text`. Returns what is wrong, member first, or nothing.
std::string ReadMoreFields(const nlohmann::json& fields, std::string_view name, velagnss::NmeaRecord& record);
std::string ReadOtherFields(const nlohmann::json& fields, std::string& text, velagnss::NmeaRecord& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_MORE_NMEA_JSON_H
