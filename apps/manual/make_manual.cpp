// Writes the man page or a completion script of the program. The build runs it; its output is installed.
#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <string_view>

#include "apps/manual/CommandTree.h"
#include "apps/manual/Completions.h"
#include "apps/manual/ManPage.h"
#include "apps/velagnss/commands/CommandLine.h"

int main(int argc, char** argv) {
  const std::string_view kind = argc > 2 ? argv[1] : "";
  const Host::C_CommandLine commandLine;
  const CLI::App& app = commandLine.Declared();
  const auto commands = Manual::ListCommands(app);
  std::string text;
  if (kind == "man" && argc == 4) text = Manual::ManPage(commands, app.get_footer(), argv[2]);
  if (kind == "bash") text = Manual::BashCompletion(commands);
  if (kind == "zsh") text = Manual::ZshCompletion(commands);
  if (kind == "fish") text = Manual::FishCompletion(commands);
  if (text.empty()) {
    std::cerr << "usage: velagnss_make_manual man DATE FILE | bash FILE | zsh FILE | fish FILE\n";
    return 2;
  }
  return std::ofstream(argv[argc - 1], std::ios::binary) << text << std::flush ? 0 : 1;
}
