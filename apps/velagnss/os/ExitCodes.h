// The exit codes of the program.
#ifndef VELAGNSS_APPS_EXIT_CODES_H
#define VELAGNSS_APPS_EXIT_CODES_H

namespace Host {

// In rising order of weight: where several apply, the greatest is returned. A reader of the output that goes away is
// not a failure: the program ends quietly with what it would have returned otherwise. Ended by a signal: 128 + its
// number.
enum eExitCode : int {
  eExitOk = 0,
  eExitData = 1,    // damage that was to be reported, nothing recognised, or something left out
  eExitUsage = 2,   // arguments
  eExitInput = 3,   // an input could not be opened or read
  eExitOutput = 4,  // the output could not be written
};
inline constexpr int kExitSignalBase = 128;

}  // namespace Host

#endif  // VELAGNSS_APPS_EXIT_CODES_H
