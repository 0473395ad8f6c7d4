// Contents of RTCM 3 messages as JSON members.
#ifndef VELAGNSS_APPS_RTCM3_JSON_H
#define VELAGNSS_APPS_RTCM3_JSON_H

#include "apps/velagnss/text/JsonWriter.h"
#include "stream/Record.h"

namespace Host {

void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Payload& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Station& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Antenna& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3SystemParameters& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Message& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3GlonassBiases& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Residuals& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Observations& record);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3Ssr& record);

// The members of the ephemeris as for the binary protocol, and what only RTCM 3 carries after them.
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3KeplerEphemeris& record, velagnss::WeekSource week);
void WriteMembers(C_JsonWriter& json, const velagnss::Rtcm3PvaEphemeris& record, velagnss::WeekSource week);

}  // namespace Host

#endif  // VELAGNSS_APPS_RTCM3_JSON_H
