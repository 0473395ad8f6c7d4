// Single-point positions as the member "positions" of the account; docs/json.md describes it.
#ifndef VELAGNSS_APPS_POINT_REPORT_JSON_H
#define VELAGNSS_APPS_POINT_REPORT_JSON_H

#include "apps/velagnss/account/PointReport.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

void WritePoints(C_JsonWriter& json, const C_PointReport& report);

}  // namespace Host

#endif  // VELAGNSS_APPS_POINT_REPORT_JSON_H
