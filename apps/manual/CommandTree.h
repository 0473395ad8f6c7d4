// The program's command line as plain records, from which man page and completions are made.
#ifndef VELAGNSS_APPS_MANUAL_COMMAND_TREE_H
#define VELAGNSS_APPS_MANUAL_COMMAND_TREE_H

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace Manual {

// An option, or a positional argument.
struct S_Option {
  std::vector<std::string> names;  // "-o", "--output"; of an argument "INPUT"
  std::string value;               // placeholder of its value, "FILE"; empty for a flag, "..." for many arguments
  std::string description;         // the lines of the help
  std::vector<std::string> words;  // all possible values, where they are known; of messages the usual ones

  // What each of `words` means; empty where the words speak for themselves.
  std::vector<std::string> meanings;
};

struct S_Command {
  std::string path;         // "geo time"; empty for the program itself
  std::string description;  // the text above the usage in the help
  std::vector<S_Option> options;
  std::vector<S_Option> arguments;
  std::vector<std::string> commands;  // names of those below it
};

// The program itself, then each command before those below it.
std::vector<S_Command> ListCommands(const CLI::App& app);

// The beginning of a description, up to the first punctuation mark or line end.
std::string Summary(const std::string& description);

// The pieces of `text` between separators; none of an empty text.
std::vector<std::string> Split(const std::string& text, const std::string& separator);
std::string Join(const std::vector<std::string>& pieces, const std::string& separator);

}  // namespace Manual

#endif  // VELAGNSS_APPS_MANUAL_COMMAND_TREE_H
