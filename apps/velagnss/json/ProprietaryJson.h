// Decoded proprietary sentences, "$PKVN," and "$RD1", as JSON members.
//
// A field whose meaning is not known is named after its number, "field4", and keeps its value as sent.
#ifndef VELAGNSS_APPS_PROPRIETARY_JSON_H
#define VELAGNSS_APPS_PROPRIETARY_JSON_H

#include "apps/velagnss/text/JsonWriter.h"
#include "textproto/VelaPKVN_Messages.h"
#include "textproto/VelaRD_Messages.h"

namespace Host {

// The members of the object "fields".
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnAttStat& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnGbs& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnHpr& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnBlv& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnFvi& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnRtkStat& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnVct& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnINTLT& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnTEMPERATURE& record);
void WriteMembers(C_JsonWriter& json, const VelaPKVN_Messages::S_PKvnARN& record);
void WriteMembers(C_JsonWriter& json, const VelaRD_Messages::S_IntSignalDiagMsg& record);

}  // namespace Host

#endif  // VELAGNSS_APPS_PROPRIETARY_JSON_H
