// `velagnss ports`: the serial ports of this machine.
#ifndef VELAGNSS_APPS_PORTS_COMMAND_H
#define VELAGNSS_APPS_PORTS_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kPortsCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_PORTS_COMMAND_H
