// `velagnss submit`: archives as tasks for workers.
#ifndef VELAGNSS_APPS_SUBMIT_COMMAND_H
#define VELAGNSS_APPS_SUBMIT_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kSubmitCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_SUBMIT_COMMAND_H
