// The receivers of a report as JSON.
#ifndef VELAGNSS_APPS_RECEIVER_JSON_H
#define VELAGNSS_APPS_RECEIVER_JSON_H

#include "apps/velagnss/report/ReceiverReports.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// The members "receivers" and "receivers_left_out" of the object of an input that has ended.
void WriteReceivers(C_JsonWriter& json, const C_ReceiverReports& reports);

}  // namespace Host

#endif  // VELAGNSS_APPS_RECEIVER_JSON_H
