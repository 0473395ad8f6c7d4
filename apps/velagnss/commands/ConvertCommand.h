// `velagnss convert`: the inputs in the formats of other programs.
#ifndef VELAGNSS_APPS_CONVERT_COMMAND_H
#define VELAGNSS_APPS_CONVERT_COMMAND_H

#include <string>

#include "apps/velagnss/commands/Command.h"

namespace Host {

// The formats that --to takes, separated by spaces.
std::string FormatNames();

extern const S_CommandEntry kConvertCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_CONVERT_COMMAND_H
