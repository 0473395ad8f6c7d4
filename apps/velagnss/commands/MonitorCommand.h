// `velagnss monitor`: sources in the terminal, as they come.
#ifndef VELAGNSS_APPS_MONITOR_COMMAND_H
#define VELAGNSS_APPS_MONITOR_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kMonitorCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_MONITOR_COMMAND_H
