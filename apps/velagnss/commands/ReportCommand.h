// `velagnss report`: what is in the inputs, as a page with charts.
#ifndef VELAGNSS_APPS_REPORT_COMMAND_H
#define VELAGNSS_APPS_REPORT_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kReportCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_REPORT_COMMAND_H
