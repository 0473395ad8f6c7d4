// How recordings are named and divided, by the options of a command.
#ifndef VELAGNSS_APPS_RECORD_ARGUMENTS_H
#define VELAGNSS_APPS_RECORD_ARGUMENTS_H

#include <string>

#include "apps/velagnss/input/Inputs.h"
#include "apps/velagnss/record/Recorder.h"

namespace CLI {
class App;
}

namespace Host {

// --every, --max-size, --data-time, --gzip.
void DeclareRotation(CLI::App& app, S_RecorderOptions& options);

// --tee: the raw bytes of `input` are recorded beside what is made of them.
void DeclareTee(CLI::App& app, S_InputOptions& input);

// Returns an error text, empty when recordings can be named by `output`: a pattern, a directory, or nothing. It becomes
// the pattern of `options`.
std::string FillPattern(const std::string& output, std::size_t sources, S_RecorderOptions& options);

}  // namespace Host

#endif  // VELAGNSS_APPS_RECORD_ARGUMENTS_H
