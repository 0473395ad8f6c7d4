// `velagnss relay`: streams to other programs, machines and casters.
#ifndef VELAGNSS_APPS_RELAY_COMMAND_H
#define VELAGNSS_APPS_RELAY_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kRelayCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_RELAY_COMMAND_H
