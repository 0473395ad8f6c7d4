// `velagnss extract`: the bytes of chosen frames.
#ifndef VELAGNSS_APPS_EXTRACT_COMMAND_H
#define VELAGNSS_APPS_EXTRACT_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kExtractCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_EXTRACT_COMMAND_H
