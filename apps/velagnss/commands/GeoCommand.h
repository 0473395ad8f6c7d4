// `velagnss geo`: the library's arithmetic of coordinates and times for people, on values given by hand or by line.
#ifndef VELAGNSS_APPS_GEO_COMMAND_H
#define VELAGNSS_APPS_GEO_COMMAND_H

#include "apps/velagnss/commands/Command.h"

namespace Host {

extern const S_CommandEntry kGeoCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_GEO_COMMAND_H
