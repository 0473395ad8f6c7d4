// `velagnss record`: the raw bytes of sources in files.
#ifndef VELAGNSS_APPS_RECORD_COMMAND_H
#define VELAGNSS_APPS_RECORD_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kRecordCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_COMMAND_H
