// `velagnss stat`: what is in the inputs, how much of it is damaged, and where.
#ifndef VELAGNSS_APPS_STAT_COMMAND_H
#define VELAGNSS_APPS_STAT_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kStatCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_STAT_COMMAND_H
