// `velagnss convert`: the inputs in the formats of other programs.
#ifndef VELAGNSS_APPS_CONVERT_COMMAND_H
#define VELAGNSS_APPS_CONVERT_COMMAND_H

#include <string>
#include <string_view>

#include "apps/velagnss/commands/Command.h"

namespace Host {

// The formats that --to takes, separated by spaces.
std::string FormatNames();

// What a format of `--to` holds, in a few words.
std::string FormatContents(std::string_view format);

extern const S_CommandEntry kConvertCommand;

}  // namespace Host

#endif  // VELAGNSS_APPS_CONVERT_COMMAND_H
