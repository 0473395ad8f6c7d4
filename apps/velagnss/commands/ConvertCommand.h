// `velagnss convert`: other programs' formats out of a receiver's bytes.
#ifndef VELAGNSS_APPS_CONVERT_COMMAND_H
#define VELAGNSS_APPS_CONVERT_COMMAND_H

#include <string>

#include "apps/velagnss/commands/Command.h"

namespace Host {

// What --to understands, separated by blanks.
std::string FormatNames();

extern const S_CommandEntry kConvertCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_CONVERT_COMMAND_H
