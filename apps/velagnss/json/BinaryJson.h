// Decoded binary messages as JSON members.
#ifndef VELAGNSS_APPS_BINARY_JSON_H
#define VELAGNSS_APPS_BINARY_JSON_H

#include "apps/velagnss/text/JsonWriter.h"
#include "stream/Record.h"

namespace Host {

// The members of an ephemeris. Angles are radians as in the record; times of week also as ISO 8601. Without a source of
// the week, weeks and full times are null.
void WriteMembers(C_JsonWriter& json, const S_IFKeplerEphRec& record, velagnss::WeekSource week);
void WriteMembers(C_JsonWriter& json, const S_IFPvaEphRec& record, velagnss::WeekSource week);

// Message 209: the numbers of its body, whose meaning is not known.
void WriteMembers(C_JsonWriter& json, const VelaBIN_Messages::S_BinMsg209& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_BINARY_JSON_H
