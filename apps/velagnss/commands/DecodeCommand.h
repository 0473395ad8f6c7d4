// `velagnss decode`: every frame of the inputs as one JSON object on a line of its own.
#ifndef VELAGNSS_APPS_DECODE_COMMAND_H
#define VELAGNSS_APPS_DECODE_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kDecodeCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_DECODE_COMMAND_H
