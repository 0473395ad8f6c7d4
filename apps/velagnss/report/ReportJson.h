// The numbers of a report as one JSON object; docs/report.md describes it.
#ifndef VELAGNSS_APPS_REPORT_JSON_H
#define VELAGNSS_APPS_REPORT_JSON_H

#include "apps/velagnss/report/InputReport.h"
#include "apps/velagnss/text/JsonWriter.h"

namespace Host {

// `WriteReportInput` comes between the two, for each input.
void BeginReport(C_JsonWriter& json);
void EndReport(C_JsonWriter& json);

// `input` has ended.
void WriteReportInput(C_JsonWriter& json, const S_InputReport& input);

}  // namespace Host

#endif  // VELAGNSS_APPS_REPORT_JSON_H
