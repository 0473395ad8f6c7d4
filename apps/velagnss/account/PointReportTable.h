// Single-point positions for people, in the columns of the account.
#ifndef VELAGNSS_APPS_POINT_REPORT_TABLE_H
#define VELAGNSS_APPS_POINT_REPORT_TABLE_H

#include <string>

#include "apps/velagnss/account/PointReport.h"

namespace Host {

// `isLong`: the satellites, too.
std::string PointTable(const C_PointReport& report, bool isLong);

}  // namespace Host

#endif  // VELAGNSS_APPS_POINT_REPORT_TABLE_H
