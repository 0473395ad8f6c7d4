// Options that several commands share, and their readers.
#ifndef VELAGNSS_APPS_ARGUMENTS_H
#define VELAGNSS_APPS_ARGUMENTS_H

#include <fmt/core.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "apps/velagnss/input/Inputs.h"
#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/text/Numbers.h"

namespace CLI {
class App;
}

namespace Host {

// Reports what is wrong with the arguments and points to the help; returns eExitUsage.
int ReportUsage(std::string_view command, std::string_view message);

// A check for an option's text: a number from `least` to `greatest`. Stricter than what CLI11 reads. `range` says in
// words what is allowed.
template <class Number>
auto NumberBetween(Number least, Number greatest, const char* range) {
  return [least, greatest, range](const std::string& text) -> std::string {
    Number number{};
    if (ParseWhole(text, number) && number >= least && number <= greatest) return {};
    return fmt::format("must be {}, not '{}'", range, text);
  };
}

// "2024-05-18", taken at noon, "2024-05-18T12:34:56Z", or "WEEK:SECONDS": a GPS week without roll-over and the seconds
// of that week. Nothing for any other text.
std::optional<C_GnssTime> ParseSeed(std::string_view text);

// The protocols of `list` (names with commas), or all of them when it is empty. Acknowledgements are only among them
// when named or asked for: they have no checksum and take the text up to the next line end with them. Nothing when a
// name is unknown.
std::optional<std::vector<C_RawDataMessage::eProtocols>> ParseSearchList(std::string_view list, bool acknowledgements);

// The inputs of a command, and how live ones are read.
void DeclareInputs(CLI::App& app, S_InputOptions& input);

// The option --credentials, for casters.
void DeclareCredentials(CLI::App& app, std::string& file);

// A check for an option's text: latitude, longitude and height of a place.
std::string CheckFixedPosition(const std::string& text);

// Reports that `command` cannot read several live sources at once, and returns true, when it is to.
bool HasTooManyLive(std::string_view command, const S_InputOptions& input);

// The arguments of every command that reads streams.
struct S_StreamArguments {
  S_InputOptions input;
  std::string search;  // protocols to look for
  bool acknowledgements = false;
  bool listedOnly = false;
  std::string seed;  // empty or a text that `ParseSeed` understands
  std::string date;  // empty, or a date as in 2024-05-18
  std::string from;  // UTC
  std::string until;
  std::vector<std::string> talkers;
  S_ByteRange range;
  unsigned int cores = 1;
  C_FrameSelection selection;  // made of these three once the command line has been read
};
void DeclareStreamArguments(CLI::App& app, S_StreamArguments& stream);
void DeclareDecoding(CLI::App& app, S_StreamArguments& stream);  // those that say nothing about inputs
void DeclareCores(CLI::App& app, S_StreamArguments& stream);
void DeclareRange(CLI::App& app, S_StreamArguments& stream);
void DeclareSeed(CLI::App& app, S_StreamArguments& stream);

// Which frames a command that writes frames writes.
struct S_FilterArguments {
  std::vector<std::string> protocols;  // lists with commas
  std::vector<std::string> messages;
};
void DeclareFilter(CLI::App& app, S_FilterArguments& arguments);

// Returns an error text, empty when the lists are understood.
std::string FillFilter(const S_FilterArguments& arguments, const S_StreamArguments& stream, C_MessageFilter& filter);

// Warns when a period of `filter` had no effect.
void ReportIgnoredPeriod(const C_MessageFilter& filter);

// How the arguments, which have been checked, want streams to be read.
S_RunOptions RunOptions(const S_StreamArguments& stream);

// The option --to of commands that hand streams on (relay/Destinations.h).
void DeclareDestinations(CLI::App& app, std::vector<std::string>& destinations);

// The option -o.
void DeclareOutput(CLI::App& app, std::string& output);

}  // namespace Host

#endif  // VELAGNSS_APPS_ARGUMENTS_H
