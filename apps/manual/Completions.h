// Completion scripts: what a shell offers after `velagnss` when Tab is pressed.
//
// Each script finds the command that the words so far name, and offers its subcommands, options, values or files.
#ifndef VELAGNSS_APPS_MANUAL_COMPLETIONS_H
#define VELAGNSS_APPS_MANUAL_COMPLETIONS_H

#include <string>
#include <vector>

#include "apps/manual/CommandTree.h"

namespace Manual {

std::string BashCompletion(const std::vector<S_Command>& commands);
std::string ZshCompletion(const std::vector<S_Command>& commands);
std::string FishCompletion(const std::vector<S_Command>& commands);

}  // namespace Manual

#endif  // VELAGNSS_APPS_MANUAL_COMPLETIONS_H
