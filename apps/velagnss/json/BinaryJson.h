// Decoded binary messages as JSON members.
#ifndef VELAGNSS_APPS_BINARY_JSON_H
#define VELAGNSS_APPS_BINARY_JSON_H

#include <string_view>

#include "apps/velagnss/text/JsonWriter.h"
#include "binproto/VelaBin_Decode.h"

namespace Host {

// How the week numbers of a record came about.
enum class eWeekSource {
  None,    // not resolved: weeks and full times are null
  Seed,    // against the time given by the user
  Stream,  // against the first date of the stream, or from the message itself
};

// The members of an ephemeris. Angles are radians as in the record; times of week also as ISO 8601.
void WriteKeplerEphemeris(C_JsonWriter& json, const S_IFKeplerEphRec& record, eWeekSource week);
void WritePvaEphemeris(C_JsonWriter& json, const S_IFPvaEphRec& record, eWeekSource week);

// Message 209: the numbers of its body, whose meaning is not known.
void WriteBin209(C_JsonWriter& json, const VelaBIN_Messages::S_BinMsg209& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_BINARY_JSON_H
