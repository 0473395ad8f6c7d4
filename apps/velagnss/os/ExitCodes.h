// What the program tells its caller by its exit code.
#ifndef VELAGNSS_APPS_EXIT_CODES_H
#define VELAGNSS_APPS_EXIT_CODES_H

namespace Host {

// In rising order of weight: where several apply, the greatest is returned. A reader of our output that goes away is no
// failure: the program ends quietly with what it would have returned otherwise. Ended by a signal: 128 + its number.
enum eExitCode : int {
  eExitOk = 0,
  eExitData = 1,    // damaged data where that was to be told, nothing recognised at all, or not all of it converted
  eExitUsage = 2,   // arguments
  eExitInput = 3,   // an input could not be opened or read
  eExitOutput = 4,  // the output could not be written
};
inline constexpr int kExitSignalBase = 128;

}  // namespace Host

#endif  // VELAGNSS_APPS_EXIT_CODES_H
