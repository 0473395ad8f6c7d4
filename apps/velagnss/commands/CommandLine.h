// The program's command line: its commands with all their options and arguments.
#ifndef VELAGNSS_APPS_COMMAND_LINE_H
#define VELAGNSS_APPS_COMMAND_LINE_H

#include <memory>
#include <utility>
#include <vector>

#include "apps/velagnss/commands/Command.h"

namespace Host {

class C_CommandLine {
 public:
  C_CommandLine();
  ~C_CommandLine();

  // Reads the arguments and runs the command that they name. Returns an exit code (ExitCodes.h).
  int Run(int argc, char** argv);

  // The declarations, from which the man page and the completions are made.
  const CLI::App& Declared() const { return *m_app; }

 private:
  std::unique_ptr<CLI::App> m_app;
  std::vector<std::pair<CLI::App*, std::unique_ptr<C_Command>>> m_commands;
  bool m_isVerbose = false;
  bool m_isQuiet = false;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_COMMAND_LINE_H
