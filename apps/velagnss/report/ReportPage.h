// The report as one HTML file that needs nothing else: style, scripts and data are in it.
#ifndef VELAGNSS_APPS_REPORT_PAGE_H
#define VELAGNSS_APPS_REPORT_PAGE_H

#include <string>
#include <string_view>

namespace Host {

// `json` is the object that `report --json` writes. The page shows it by its own scripts; a policy in its head allows
// these scripts by their hashes, and neither other scripts nor requests. `json` cannot end its element or become
// markup, whatever its strings contain.
std::string ReportPage(std::string_view json);

}  // namespace Host

#endif  // VELAGNSS_APPS_REPORT_PAGE_H
