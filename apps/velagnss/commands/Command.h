// One command of the program: `velagnss NAME ...`. A new one is a file of its own and a row in CommandLine.cpp.
#ifndef VELAGNSS_APPS_COMMAND_H
#define VELAGNSS_APPS_COMMAND_H

#include <memory>

namespace CLI {
class App;
}

namespace Host {

class C_Command {
 public:
  virtual ~C_Command() = default;

  // Declares options and arguments; they are stored in the command, which outlives the parsing.
  virtual void Declare(CLI::App& app) = 0;

  // Does the work, after the arguments have been read. Returns an exit code (ExitCodes.h).
  virtual int Run() = 0;
};

struct S_CommandEntry {
  const char* name;
  const char* description;  // one line, then the examples; they open the help
  std::unique_ptr<C_Command> (*make)();
};

}  // namespace Host

#endif  // VELAGNSS_APPS_COMMAND_H
