// TAG blocks as JSON.
#ifndef VELAGNSS_APPS_TAG_JSON_H
#define VELAGNSS_APPS_TAG_JSON_H

#include "apps/velagnss/pipeline/TagBlock.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// An object: the text, and the parameters that were sent.
void WriteTag(C_JsonWriter& json, const S_TagBlocks& blocks);

}  // namespace Host

#endif  // VELAGNSS_APPS_TAG_JSON_H
