// `velagnss work`: tasks done one after the other.
#ifndef VELAGNSS_APPS_WORK_COMMAND_H
#define VELAGNSS_APPS_WORK_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kWorkCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_WORK_COMMAND_H
