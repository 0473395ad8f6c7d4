// The host program: reads what a receiver sent and shows what is in it.
#include <CLI/CLI.hpp>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "apps/velagnss/Arguments.h"
#include "apps/velagnss/ConvertCommand.h"
#include "apps/velagnss/DecodeCommand.h"
#include "apps/velagnss/Diagnostics.h"
#include "apps/velagnss/EncodeCommand.h"
#include "apps/velagnss/ExitCodes.h"
#include "apps/velagnss/FileDescriptor.h"
#include "apps/velagnss/GeoCommand.h"
#include "apps/velagnss/Output.h"
#include "apps/velagnss/Signals.h"
#include "apps/velagnss/StatCommand.h"

namespace {

using namespace Host;

const S_CommandEntry* const kCommands[] = {
    &kDecodeCommand, &kStatCommand, &kConvertCommand, &kEncodeCommand, &kGeoCommand,
};

constexpr char kDescription[] =
    "From the raw bytes of a GNSS receiver to checked frames and decoded records.\n\n"
    "Examples:\n"
    "  velagnss decode session.bin                    every frame as a JSON object per line\n"
    "  velagnss stat session.bin                      what is in it, how much of it is damaged\n"
    "  velagnss convert --to gpx session.bin          where it went, as a GPX track\n"
    "  velagnss convert --to rinex-nav session.bin    its ephemerides as a RINEX file\n"
    "  velagnss decode --help                         all that a command can do\n";

constexpr char kFooter[] =
    "\nExit codes: 0 all good, 1 damaged data under --strict or --max-bad, nothing recognised, something left out\n"
    "of a conversion, or a line of values that does not read, 2 wrong arguments, 3 an input failed,\n"
    "4 the output failed, 128 + N ended by signal N.";

struct S_GlobalOptions {
  bool verbose = false;
  bool quiet = false;
};

// In the list of commands only the first line of a description, without its examples.
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

int ShowText(const std::string& text) {
  C_Output output;
  if (!output.Open("-")) return eExitOutput;
  output.Write(text);
  return output.Close() || output.HasReaderLeft() ? eExitOk : eExitOutput;
}

void ApplyVerbosity(const S_GlobalOptions& options) {
  if (options.quiet) SetVerbosity(eVerbosity::Quiet);
  if (options.verbose) SetVerbosity(eVerbosity::Verbose);
}

// The command whose arguments were given, or null.
const CLI::App* ChosenCommand(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? nullptr : chosen.front();
}

int RunProgram(int argc, char** argv) {
  CLI::App app(kDescription, "velagnss");
  S_GlobalOptions options;
  std::vector<std::pair<CLI::App*, std::unique_ptr<C_Command>>> commands;
  app.formatter(std::make_shared<C_HelpFormatter>());
  app.footer(kFooter);
  app.fallthrough();
  app.require_subcommand(1);
  app.set_version_flag("--version", "velagnss " VELAGNSS_VERSION);
  CLI::Option* verbose = app.add_flag("-v,--verbose", options.verbose, "tell more on standard error");
  app.add_flag("-q,--quiet", options.quiet, "no warnings, errors only")->excludes(verbose);
  for (const S_CommandEntry* entry : kCommands) {
    commands.emplace_back(app.add_subcommand(entry->name, entry->description), entry->make());
    commands.back().second->Declare(*commands.back().first);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return ShowText(app.help());
  } catch (const CLI::CallForVersion&) {
    return ShowText(app.version() + "\n");
  } catch (const CLI::ParseError& error) {
    const CLI::App* command = ChosenCommand(app);
    return ReportUsage(command == nullptr ? "" : command->get_name(), error.what());
  }
  ApplyVerbosity(options);
  for (const auto& [arguments, command] : commands)
    if (arguments->parsed()) return command->Run();
  return eExitUsage;
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardDescriptors();
  InstallSignalHandlers();
  try {
    const int code = RunProgram(argc, argv);
    return SignalReceived() != 0 ? kExitSignalBase + SignalReceived() : code;
  } catch (...) {  // nothing throws but the allocation of memory
    ReportOutOfMemory();
    return eExitInput;
  }
}
