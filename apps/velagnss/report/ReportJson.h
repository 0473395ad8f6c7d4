// The numbers of a report as one JSON object; docs/report.md describes it.
#ifndef VELAGNSS_APPS_REPORT_JSON_H
#define VELAGNSS_APPS_REPORT_JSON_H

#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// A line. The inputs come between the two, each as C_InputReport writes it.
void BeginReport(C_JsonWriter& json);
void EndReport(C_JsonWriter& json);

}  // namespace Host

#endif  // VELAGNSS_APPS_REPORT_JSON_H
