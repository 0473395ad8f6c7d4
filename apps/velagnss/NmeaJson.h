// Decoded NMEA 0183 sentences as JSON members.
#ifndef VELAGNSS_APPS_NMEA_JSON_H
#define VELAGNSS_APPS_NMEA_JSON_H

#include <string_view>

#include "apps/velagnss/JsonWriter.h"
#include "framing/RawDataMessage.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {

// The eight sentences that the library decodes.
bool IsDecodableSentence(C_RawDataMessage::eNMEA0183Messages type);

// The members of the object "fields" of one of them. `sentence` is the text that the record was decoded from: it alone
// tells whether a magnetic variation is to the east or to the west.
void WriteNmeaFields(C_JsonWriter& json, C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& record,
                     std::string_view sentence);

}  // namespace Host

#endif  // VELAGNSS_APPS_NMEA_JSON_H
