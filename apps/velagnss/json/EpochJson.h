// Epochs as JSON.
#ifndef VELAGNSS_APPS_EPOCH_JSON_H
#define VELAGNSS_APPS_EPOCH_JSON_H

#include "apps/velagnss/epoch/Epoch.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// The members of an epoch object, after those that every object has.
void WriteEpoch(C_JsonWriter& json, const S_Epoch& epoch);

}  // namespace Host

#endif  // VELAGNSS_APPS_EPOCH_JSON_H
