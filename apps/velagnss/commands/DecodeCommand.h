// `velagnss decode`: every frame of the inputs as a line of JSON.
#ifndef VELAGNSS_APPS_DECODE_COMMAND_H
#define VELAGNSS_APPS_DECODE_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kDecodeCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_DECODE_COMMAND_H
