// Decoded sentences of the receiver's maker, "$PKVN," and "$RD1", as JSON members.
//
// Positions whose meaning is not told keep their number as name, "field4", and their value as sent.
#ifndef VELAGNSS_APPS_PROPRIETARY_JSON_H
#define VELAGNSS_APPS_PROPRIETARY_JSON_H

#include "apps/velagnss/text/JsonWriter.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace Host {

void WritePkvnFields(C_JsonWriter& json, VelaPKVN_Messages::eMessageTypes type, const U_VelaPKVN_EcdDcdData& data);

// False for the sentences of which a part is kept as text.
bool IsWhollyDecoded(VelaPKVN_Messages::eMessageTypes type);

void WriteRdFields(C_JsonWriter& json, const U_VelaRD_EcdDcdData& data);

}  // namespace Host

#endif  // VELAGNSS_APPS_PROPRIETARY_JSON_H
