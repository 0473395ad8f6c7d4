// The man page, section 1, in the macros of man(7).
#ifndef VELAGNSS_APPS_MANUAL_MAN_PAGE_H
#define VELAGNSS_APPS_MANUAL_MAN_PAGE_H

#include <string>
#include <vector>

#include "apps/manual/CommandTree.h"

namespace Manual {

// `footer`: the text at the end of every help, with the exit codes; `date`: of the release, ISO 8601.
std::string ManPage(const std::vector<S_Command>& commands, const std::string& footer, const std::string& date);

}  // namespace Manual

#endif  // VELAGNSS_APPS_MANUAL_MAN_PAGE_H
