#include "apps/manual/Completions.h"

#include <fmt/format.h>

#include <algorithm>

namespace Manual {
namespace {

constexpr char kOrigin[] = "made by the build from the program's own command line";

bool TakesFiles(const S_Option& option) { return option.value == "FILE" || option.names.front() == "INPUT"; }

bool IsCommon(const S_Option& option) { return option.names.back() != "--help" && option.names.back() != "--version"; }

// The options that are understood behind a command: its own, and those of the program.
std::vector<S_Option> OptionsBehind(const S_Command& command, const S_Command& program) {
  std::vector<S_Option> options = command.options;
  if (!command.path.empty())
    std::copy_if(program.options.begin(), program.options.end(), std::back_inserter(options), &IsCommon);
  return options;
}

std::string Replace(const std::string& text, const std::string& from, const std::string& to) {
  return Join(Split(text, from), to);
}

// The paths of all commands as patterns of a shell's `case`.
std::string Paths(const std::vector<S_Command>& commands, const std::string& separator) {
  std::vector<std::string> paths;
  for (const S_Command& command : commands)
    if (!command.path.empty()) paths.push_back('\'' + command.path + '\'');
  return Join(paths, separator);
}

// --- bash ---

// What is offered behind an option that takes a value.
std::string BashValue(const S_Command& command, const S_Option& option) {
  std::vector<std::string> patterns;
  for (const std::string& name : option.names) patterns.push_back("'" + command.path + ':' + name + "'");
  const std::string offer = TakesFiles(option)     ? "return"  // to the shell's own completion of files
                            : option.words.empty() ? "compopt +o default; return"
                                                   : "words='" + Join(option.words, " ") + "'";
  return fmt::format("    {}) {} ;;\n", Join(patterns, " | "), offer);
}

std::string BashWords(const S_Command& command, const S_Command& program) {
  std::vector<std::string> options;
  for (const S_Option& option : OptionsBehind(command, program))
    options.insert(options.end(), option.names.begin(), option.names.end());
  return fmt::format("    '{}') options='{}' commands='{}' ;;\n", command.path, Join(options, " "),
                     Join(command.commands, " "));
}

constexpr char kBash[] = R"(# Completion of velagnss for bash, {origin}.
_velagnss() {{
  local word=${{COMP_WORDS[COMP_CWORD]}} before=${{COMP_WORDS[COMP_CWORD - 1]}}
  local path='' words='' options='' commands='' i
  if [[ $word == '=' ]]; then
    word=''
  elif [[ $before == '=' ]]; then
    before=${{COMP_WORDS[COMP_CWORD - 2]}}
  fi
  for ((i = 1; i < COMP_CWORD; ++i)); do
    case "${{path:+$path }}${{COMP_WORDS[i]}}" in
      {paths}) path="${{path:+$path }}${{COMP_WORDS[i]}}" ;;
    esac
  done
  case "$path:$before" in
{values}  esac
  if [[ $words ]]; then
    local front=${{word%"${{word##*,}}"}}
    mapfile -t COMPREPLY < <(compgen -P "$front" -W "$words" -- "${{word##*,}}")
    return
  fi
  case "$path" in
{words}  esac
  if [[ $word == -* ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$options" -- "$word")
  elif [[ $commands ]]; then
    mapfile -t COMPREPLY < <(compgen -W "$commands" -- "$word")
    compopt +o default
  fi
}}
complete -o default -F _velagnss velagnss
)";

// --- zsh ---

// Text inside single quotes, where `special` characters mean something to _arguments.
std::string ZshQuote(const std::string& text, const std::string& special) {
  std::string quoted;
  for (const char c : text) {
    if (special.find(c) != std::string::npos) quoted += '\\';
    quoted += c;
  }
  return Replace(quoted, "'", "'\\''");
}

std::string ZshAction(const S_Option& option) {
  if (TakesFiles(option)) return "_files";
  if (option.words.empty()) return " ";
  const bool isList = option.value == "LIST";
  return isList ? "_sequence compadd - " + Join(option.words, " ") : "(" + Join(option.words, " ") + ")";
}

std::string ZshOption(const S_Option& option) {
  const std::string summary = ZshQuote(Summary(option.description), "[]\\");
  const std::string value = option.value.empty() ? "" : ":" + ZshQuote(option.value, ":\\") + ":" + ZshAction(option);
  std::string lines;
  for (const std::string& name : option.names) {
    const std::string exclusion = option.value.empty() ? "(" + Join(option.names, " ") + ")" : "";
    const std::string joint = option.value.empty() ? "" : name.starts_with("--") ? "=" : "+";
    lines += fmt::format("    '{}{}{}[{}]{}'\n", exclusion, name, joint, summary, value);
  }
  return lines;
}

std::string ZshFunction(const S_Command& command, const std::vector<S_Command>& commands) {
  const std::string function = Replace("_velagnss " + command.path, " ", "_");
  std::string text = fmt::format("{}() {{\n  local -a options=(\n", command.path.empty() ? "_velagnss" : function);
  for (const S_Option& option : OptionsBehind(command, commands.front())) text += ZshOption(option);
  text += "  )\n";
  if (command.commands.empty()) {
    const bool files = !command.arguments.empty() && TakesFiles(command.arguments.front());
    return text + fmt::format("  _arguments -s $options {}\n}}\n\n", files ? "'*:file:_files'" : "'*: : '");
  }
  text += "  local -a commands=(\n";
  for (const std::string& name : command.commands) {
    const std::string path = command.path.empty() ? name : command.path + ' ' + name;
    const auto below =
        std::find_if(commands.begin(), commands.end(), [&](const S_Command& c) { return c.path == path; });
    text += fmt::format("    '{}:{}'\n", name, ZshQuote(Summary(below->description), ":\\"));
  }
  return text + fmt::format(
                    "  )\n"
                    "  local context state line\n"
                    "  _arguments -s -C $options '1: :->command' '*:: :->rest'\n"
                    "  case $state in\n"
                    "    command) _describe command commands ;;\n"
                    "    rest) (( $+functions[{0}_$line[1]] )) && {0}_$line[1] ;;\n"
                    "  esac\n}}\n\n",
                    command.path.empty() ? "_velagnss" : function);
}

// --- fish ---

std::string FishQuote(const std::string& text) {
  return '\'' + Replace(Replace(text, "\\", "\\\\"), "'", "\\'") + '\'';
}

std::string FishOption(const S_Command& command, const S_Option& option) {
  std::string line = fmt::format("complete -c velagnss -n \"__velagnss_at '{}'\"", command.path);
  for (const std::string& name : option.names)
    line += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
  if (!option.value.empty()) line += TakesFiles(option) ? " -r -F" : " -x";
  if (!option.words.empty() && option.value == "LIST")
    line += " -a '(__fish_complete_list , \"string split , " + Join(option.words, ",") + "\")'";
  else if (!option.words.empty())
    line += " -a " + FishQuote(Join(option.words, " "));
  return line + " -d " + FishQuote(Summary(option.description)) + '\n';
}

std::string FishCommand(const S_Command& command, const std::vector<S_Command>& commands) {
  std::string text;
  for (const S_Option& option : OptionsBehind(command, commands.front())) text += FishOption(command, option);
  for (const S_Option& argument : command.arguments)
    if (TakesFiles(argument)) text += fmt::format("complete -c velagnss -n \"__velagnss_at '{}'\" -F\n", command.path);
  const std::string front = command.path.empty() ? "" : command.path + ' ';
  for (const S_Command& below : commands) {
    const std::string name = below.path.substr(std::min(front.size(), below.path.size()));
    if (!name.empty() && below.path == front + name && name.find(' ') == std::string::npos)
      text += fmt::format("complete -c velagnss -n \"__velagnss_at '{}'\" -a {} -d {}\n", command.path, name,
                          FishQuote(Summary(below.description)));
  }
  return text;
}

constexpr char kFish[] = R"(# Completion of velagnss for fish, {origin}.
function __velagnss_at --argument-names wanted --description 'Whether the words so far name this command'
    set -l path ''
    for word in (commandline -opc)[2..]
        set -l longer (string trim "$path $word")
        contains -- $longer {paths}; and set path $longer
    end
    test "$path" = "$wanted"
end
complete -c velagnss -f
)";

}  // namespace

std::string BashCompletion(const std::vector<S_Command>& commands) {
  std::string values;
  std::string words;
  for (const S_Command& command : commands) {
    words += BashWords(command, commands.front());
    for (const S_Option& option : command.options)
      if (!option.value.empty()) values += BashValue(command, option);
  }
  return fmt::format(kBash, fmt::arg("origin", kOrigin), fmt::arg("paths", Paths(commands, " | ")),
                     fmt::arg("values", values), fmt::arg("words", words));
}

std::string ZshCompletion(const std::vector<S_Command>& commands) {
  std::string text = fmt::format("#compdef velagnss\n# Completion of velagnss for zsh, {}.\n\n", kOrigin);
  for (const S_Command& command : commands) text += ZshFunction(command, commands);
  return text + "_velagnss \"$@\"\n";
}

std::string FishCompletion(const std::vector<S_Command>& commands) {
  std::string text = fmt::format(kFish, fmt::arg("origin", kOrigin), fmt::arg("paths", Paths(commands, " ")));
  for (const S_Command& command : commands) text += FishCommand(command, commands);
  return text;
}

}  // namespace Manual
