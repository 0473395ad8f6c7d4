// `velagnss replay`: recordings with their original timing.
#ifndef VELAGNSS_APPS_REPLAY_COMMAND_H
#define VELAGNSS_APPS_REPLAY_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kReplayCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_REPLAY_COMMAND_H
