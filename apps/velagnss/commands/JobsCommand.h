// `velagnss jobs`: what becomes of the tasks of a queue.
#ifndef VELAGNSS_APPS_JOBS_COMMAND_H
#define VELAGNSS_APPS_JOBS_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kJobsCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_JOBS_COMMAND_H
