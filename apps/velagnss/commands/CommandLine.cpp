#include "apps/velagnss/commands/CommandLine.h"

#include <CLI/CLI.hpp>
#include <sstream>
#include <string>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/commands/ConvertCommand.h"
#include "apps/velagnss/commands/DecodeCommand.h"
#include "apps/velagnss/commands/EncodeCommand.h"
#include "apps/velagnss/commands/GeoCommand.h"
#include "apps/velagnss/commands/StatCommand.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/sinks/OutputRun.h"

namespace Host {
namespace {

const S_CommandEntry* const kCommands[] = {
    &kDecodeCommand, &kStatCommand, &kConvertCommand, &kEncodeCommand, &kGeoCommand,
};

constexpr char kDescription[] =
    "From the raw bytes of a GNSS receiver to checked frames and decoded records.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin                    every frame as a JSON object per line\n"
    "  velagnss stat session.bin                      what is in it, how much of it is damaged\n"
    "  velagnss convert --to gpx session.bin          its track as GPX\n"
    "  velagnss convert --to rinex-nav session.bin    its ephemerides as a RINEX file\n"
    "  velagnss decode --help                         everything a command can do\n"
    "\nMessages go to standard error. On a terminal they are in color, unless NO_COLOR is set or TERM is dumb, and "
    "the\n"
    "progress of long inputs is shown.\n";

constexpr char kFooter[] =
    "\nExit codes: 0 success, 1 damaged data with --strict or --max-bad, nothing recognized, something left out\n"
    "of a conversion, or a line that cannot be parsed, 2 wrong arguments, 3 an input failed,\n"
    "4 the output failed, 128 + N ended by signal N.";

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
  C_HelpText help(text);
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
  try {
    m_app->parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return ShowText(m_app->help());
  } catch (const CLI::CallForVersion&) {
    return ShowText(m_app->version() + "\n");
  } catch (const CLI::ParseError& error) {
    return ReportUsage(ChosenCommand(*m_app), error.what());
  }
  if (m_isQuiet) SetVerbosity(eVerbosity::Quiet);
  if (m_isVerbose) SetVerbosity(eVerbosity::Verbose);
  for (const auto& [arguments, command] : m_commands)
    if (arguments->parsed()) return command->Run();
  return eExitUsage;
}

}  // namespace Host
