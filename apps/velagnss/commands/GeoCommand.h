// `velagnss geo`: calculations with coordinates and times, on values from the command line or line by line.
#ifndef VELAGNSS_APPS_GEO_COMMAND_H
#define VELAGNSS_APPS_GEO_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kGeoCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_GEO_COMMAND_H
