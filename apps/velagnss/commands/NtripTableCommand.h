// `velagnss ntrip-table`: what streams a caster has.
#ifndef VELAGNSS_APPS_NTRIP_TABLE_COMMAND_H
#define VELAGNSS_APPS_NTRIP_TABLE_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kNtripTableCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_NTRIP_TABLE_COMMAND_H
