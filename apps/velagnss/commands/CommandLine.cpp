#include "apps/velagnss/commands/CommandLine.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <optional>
#include <span>
#include <sstream>
#include <string>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/commands/ConvertCommand.h"
#include "apps/velagnss/commands/DecodeCommand.h"
#include "apps/velagnss/commands/EncodeCommand.h"
#include "apps/velagnss/commands/ExtractCommand.h"
#include "apps/velagnss/commands/GeoCommand.h"
#include "apps/velagnss/commands/HelpText.h"
#include "apps/velagnss/commands/JobsCommand.h"
#include "apps/velagnss/commands/MonitorCommand.h"
#include "apps/velagnss/commands/NtripTableCommand.h"
#include "apps/velagnss/commands/PortsCommand.h"
#include "apps/velagnss/commands/RecordCommand.h"
#include "apps/velagnss/commands/RelayCommand.h"
#include "apps/velagnss/commands/ReplayCommand.h"
#include "apps/velagnss/commands/ReportCommand.h"
#include "apps/velagnss/commands/StatCommand.h"
#include "apps/velagnss/commands/SubmitCommand.h"
#include "apps/velagnss/commands/WorkCommand.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/os/HidePassword.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/EditDistance.h"

namespace Host {
namespace {

const S_CommandEntry* const kCommands[] = {
    &kDecodeCommand, &kMonitorCommand, &kStatCommand,   &kReportCommand, &kConvertCommand, &kExtractCommand,
    &kEncodeCommand, &kGeoCommand,     &kRecordCommand, &kReplayCommand, &kRelayCommand,   &kNtripTableCommand,
    &kPortsCommand,  &kSubmitCommand,  &kWorkCommand,   &kJobsCommand,
};

constexpr char kDescription[] =
    "Turns the raw bytes of a GNSS receiver into checked frames and decoded records.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin                    every frame as a JSON object per line\n"
    "  velagnss stat session.bin                      what is in it, how much of it is damaged\n"
    "  velagnss monitor /dev/ttyUSB0                  what a receiver sends, as it comes, in the terminal\n"
    "  velagnss report session.bin -o report.html     charts of it for a browser\n"
    "  velagnss convert --to gpx session.bin          its track as GPX\n"
    "  velagnss convert --to rinex-nav session.bin    its ephemerides as a RINEX file\n"
    "  velagnss record --every 1h /dev/ttyUSB0        a receiver's bytes, in a file per hour\n"
    "  velagnss decode --help                         everything a command can do\n"
    "\nMessages go to standard error. On a terminal they are in color, unless NO_COLOR is set or TERM is dumb, and "
    "the\n"
    "progress of long inputs is shown.\n";

constexpr char kFooter[] =
    "\nExit codes:\n"
    "  0        success\n"
    "  1        damaged data with --strict or --max-bad, nothing recognized, something left out of a conversion, or a "
    "line that cannot be parsed\n"
    "  2        wrong arguments\n"
    "  3        an input failed\n"
    "  4        the output failed\n"
    "  128 + N  ended by signal N";

// The list of commands shows only the first line of each description, without its examples.
class C_HelpFormatter : public CLI::Formatter {
 public:
  std::string make_subcommand(const CLI::App* command) const override {
    const std::string description = command->get_description();
    std::stringstream line;
    CLI::detail::format_help(line, command->get_name(), description.substr(0, description.find('\n')),
                             get_column_width());
    return line.str();
  }
};

class C_HelpText : public C_TextBuffer {
 public:
  explicit C_HelpText(const std::string& text) { m_text = text; }
};

int ShowText(const std::string& text) {
  C_HelpText help(WrapHelp(text, HelpWidth()));
  C_OutputRun output;
  return output.Open("-") ? output.Write(help) : eExitOutput;
}

// The command whose arguments were given, "geo time"; empty when there is none.
std::string ChosenCommand(const CLI::App& app) {
  std::string name;
  for (auto chosen = app.get_subcommands(); !chosen.empty(); chosen = chosen.front()->get_subcommands())
    name += (name.empty() ? "" : " ") + chosen.front()->get_name();
  return name;
}

// "--output: 1 required TEXT missing", as the parser says it.
std::optional<std::string> MissingValue(std::string_view error) {
  const std::size_t end = error.find(": 1 required ");
  if (end == std::string_view::npos) return std::nullopt;
  return fmt::format("{} needs a value", error.substr(0, end));
}

// What is wrong with an option that takes one value and was given several times; the parser only counts its values.
std::optional<std::string> RepeatedOption(const CLI::App& app) {
  for (const CLI::App* chosen : app.get_subcommands())
    if (std::optional<std::string> repeated = RepeatedOption(*chosen)) return repeated;
  for (const CLI::Option* option : app.get_options())
    if (option->get_items_expected_max() == 1 && option->count() > 1)
      return fmt::format("{} is given {}", option->get_name(),
                         option->count() == 2 ? "twice" : fmt::format("{} times", option->count()));
  return std::nullopt;
}

const S_CommandEntry* FindCommand(std::string_view name) {
  const auto* const* const found = std::find_if(std::begin(kCommands), std::end(kCommands),
                                                [name](const auto* entry) { return entry->name == name; });
  return found == std::end(kCommands) ? nullptr : *found;
}

std::string UnknownWord(std::string_view word) {
  return fmt::format("unknown {} '{}'", word.starts_with('-') ? "option" : "command", word);
}

// What is wrong with an argument where a command or an option of the program is expected.
std::string WrongWord(std::string_view word) {
  std::string text = UnknownWord(word);
  if (word.starts_with('-')) return text;
  const std::size_t maxTypos = std::min<std::size_t>(2, word.size() / 2);
  const S_CommandEntry* const nearest = *std::min_element(
      std::begin(kCommands), std::end(kCommands),
      [word](const auto* a, const auto* b) { return EditDistance(word, a->name) < EditDistance(word, b->name); });
  if (EditDistance(word, nearest->name) <= maxTypos) text += fmt::format(" (did you mean '{}'?)", nearest->name);
  return text;
}

// The first argument that no declaration takes: the parser reports that a command is missing instead.
std::optional<std::string_view> FirstUnknown(const CLI::App& app, int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (FindCommand(word) != nullptr) return std::nullopt;
    const bool isOption = word.starts_with('-');
    const bool isLong = word.starts_with("--") && word.find('=') == std::string_view::npos;
    if (!isOption || (isLong && app.get_option_no_throw(std::string(word)) == nullptr)) return word;
  }
  return std::nullopt;
}

// The parser's own message, unless there is a plainer one.
std::string WhatIsWrong(const CLI::App& app, const CLI::ParseError& error) {
  std::optional<std::string> plain;
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::ArgumentMismatch)) {
    plain = MissingValue(error.what());
    if (!plain) plain = RepeatedOption(app);
  }
  if (error.get_exit_code() == static_cast<int>(CLI::ExitCodes::RequiredError)) {
    const std::vector<std::string> words = app.remaining(true);
    if (!words.empty()) plain = ChosenCommand(app).empty() ? WrongWord(words.front()) : UnknownWord(words.front());
  }
  return plain.value_or(error.what());
}

}  // namespace

C_CommandLine::C_CommandLine() : m_app(std::make_unique<CLI::App>(kDescription, "velagnss")) {
  m_app->formatter(std::make_shared<C_HelpFormatter>());
  m_app->footer(kFooter);
  m_app->fallthrough();
  m_app->require_subcommand(1);
  m_app->set_version_flag("--version", "velagnss " VELAGNSS_VERSION);
  CLI::Option* verbose = m_app->add_flag("-v,--verbose", m_isVerbose, "more messages on standard error");
  m_app->add_flag("-q,--quiet", m_isQuiet, "no warnings and no progress, errors only")->excludes(verbose);
  for (const S_CommandEntry* entry : kCommands) {
    m_commands.emplace_back(m_app->add_subcommand(entry->name, entry->description), entry->make());
    m_commands.back().second->Declare(*m_commands.back().first);
  }
}

C_CommandLine::~C_CommandLine() = default;

int C_CommandLine::Run(int argc, char** argv) {
  const std::string_view first = argc > 1 ? argv[1] : "";
  if (first == "help" && argc == 2) return ShowText(m_app->help());
  if (first == "help" && FindCommand(argv[2]) != nullptr) return ShowText(m_app->get_subcommand(argv[2])->help());
  if (first == "help" && argv[2][0] != '-') return ReportUsage("", WrongWord(argv[2]));
  if (first == "version" && argc == 2) return ShowText(m_app->version() + "\n");
  try {
    m_app->parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return ShowText(m_app->help());
  } catch (const CLI::CallForVersion&) {
    return ShowText(m_app->version() + "\n");
  } catch (const CLI::ParseError& error) {
    const std::optional<std::string_view> unknown = FirstUnknown(*m_app, argc, argv);
    if (unknown) return ReportUsage("", WrongWord(*unknown));
    return ReportUsage(ChosenCommand(*m_app), WhatIsWrong(*m_app, error));
  }
  // Whoever lists the processes of the machine sees these words.
  for (char* const word : std::span(argv, static_cast<std::size_t>(argc))) HidePassword({word, std::strlen(word)});
  if (m_isQuiet) SetVerbosity(eVerbosity::Quiet);
  if (m_isVerbose) SetVerbosity(eVerbosity::Verbose);
  for (const auto& [arguments, command] : m_commands)
    if (arguments->parsed()) return command->Run();
  return eExitUsage;
}

}  // namespace Host
