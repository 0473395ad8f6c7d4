// The record of a frame as JSON, whatever its kind.
#ifndef VELAGNSS_APPS_RECORD_JSON_H
#define VELAGNSS_APPS_RECORD_JSON_H

#include "apps/velagnss/text/JsonWriter.h"
#include "stream/RecordDecoder.h"

namespace Host {

// The members of the object "fields"; none of a frame that has not been decoded at all.
void WriteFields(C_JsonWriter& json, const velagnss::DecodedFrame& decoded);

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_JSON_H
