#include "apps/velagnss/rinex/RinexOptions.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>

#include "apps/velagnss/rinex/ObsEpoch.h"
#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/Units.h"

namespace Host {
namespace {

// Checks of options: the answer is what is wrong, or empty. A text must fit its place in the header.
template <std::size_t Width>
std::string CheckText(const std::string& text) {
  const bool isPrintable = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
  return isPrintable && text.size() <= Width ? "" : fmt::format("must be at most {} printable ASCII characters", Width);
}

std::string CheckSystems(const std::string& list) {
  for (const std::string_view item : SplitList(list))
    if (NavSystemNamed(item) == kNumNavSystems)
      return fmt::format("unknown system '{}'; known: {}", item, NavSystemNames());
  return {};
}

// "NUMBER,TYPE": texts of up to 20 characters.
template <std::size_t Count>
std::string CheckTexts(const std::string& list) {
  const std::vector<std::string_view> items = SplitList(list);
  if (items.size() > Count) return fmt::format("must be at most {} texts, separated by commas", Count);
  for (const std::string_view item : items)
    if (std::string error = CheckText<kHeaderNameWidth>(std::string(item)); !error.empty()) return error;
  return {};
}

std::string CheckPosition(const std::string& list) {
  constexpr double kLeast = 6.3e6, kGreatest = 6.5e6;  // m from the center of the Earth
  const std::optional<std::array<double, 3>> xyz = ReadPosition(list);
  const double radius = xyz ? std::hypot((*xyz)[0], (*xyz)[1], (*xyz)[2]) : 0;
  return radius > kLeast && radius < kGreatest ? ""
                                               : "must be X,Y,Z of a place on the Earth, in meters, not '" + list + "'";
}

std::string CheckObsTypes(const std::string& list) {
  const std::size_t system = list.size() > 1 && list[1] == ':' ? NavSystemWith(list[0]) : kNumNavSystems;
  if (system == kNumNavSystems) return "must begin with the letter of a system, as in G:C1C,L1C, not '" + list + "'";
  for (const std::string_view code : SplitList(std::string_view(list).substr(2)))
    if (code.size() != 3 || kObsKindLetters.find(code[0]) == std::string_view::npos ||
        !IsSignal(list[0], {code[1], code[2]}))
      return fmt::format("'{}' is not an observation code of {}", code, NavSystems()[system].name);
  return {};
}

// Epochs of less than a tenth of a second cannot be selected by whole milliseconds without doubt.
std::string CheckInterval(const std::string& text) {
  double seconds = 0;
  const bool isNumber = ParseWhole(text, seconds) && seconds >= 0.1 && seconds <= kSecondsPerDay;
  return isNumber ? "" : "must be a number of seconds from 0.1 to 86400, not '" + text + "'";
}

std::string CheckStation(const std::string& text) {
  unsigned int number = 0;
  return ParseWhole(text, number) && number <= 4095 ? "" : "must be a whole number from 0 to 4095, not '" + text + "'";
}

std::string CheckSplit(const std::string& text) { return OneOf({"1h", "1d"})(text); }
std::string CheckRunDate(const std::string& text) { return OneOf({"stream", "now"})(text); }

// An option with a text.
struct S_TextOption {
  const char* name;
  std::string S_RinexOptions::*text;
  const char* placeholder;
  const char* help;
  std::string (*check)(const std::string& text);
};
using O = S_RinexOptions;
constexpr S_TextOption kHeaderOptions[] = {
    {"--marker", &O::marker, "NAME", "name of the marker, for the header",
     &CheckText<kHeaderWidth - kMarkerComment.size()>},
    {"--agency", &O::agency, "NAME", "name of the observing agency, for the header",
     &CheckText<kHeaderWidth - kAgencyComment.size()>},
    {"--run-by", &O::runBy, "NAME", "who made the file, for the header", &CheckText<kHeaderNameWidth>},
    {"--run-date", &O::runDate, "stream|now",
     "date in the header: the last one of the stream, or the current one,\n"
     "which differs on every run (default: stream)",
     &CheckRunDate},
};
constexpr S_TextOption kStationOptions[] = {
    {"--observer", &O::observer, "NAME", "name of the observer, for the header", &CheckText<kHeaderNameWidth>},
    {"--receiver", &O::receiver, "TEXTS",
     "number, type and firmware of the receiver, separated by commas\n(default: those in the stream)", &CheckTexts<3>},
    {"--antenna", &O::antenna, "TEXTS",
     "number and type of the antenna, separated by a comma\n(default: those in the stream)", &CheckTexts<2>},
    {"--position", &O::position, "X,Y,Z",
     "approximate position, Earth-centered, in meters (default: the one in\nthe stream)", &CheckPosition},
    {"--station", &O::station, "NUMBER",
     "number of the reference station (default: the first one that sends observations)", &CheckStation},
};
constexpr S_TextOption kFileOptions[] = {
    {"--split", &O::split, "1h|1d", "with --auto-name: a file for each hour or day of GPS time", &CheckSplit},
};

template <std::size_t N>
void Declare(const S_TextOption (&rows)[N], CLI::App& app, S_RinexOptions& options, const std::string& group) {
  for (const S_TextOption& row : rows)
    app.add_option(row.name, options.*row.text, row.help)->option_text(row.placeholder)->check(row.check)->group(group);
}

void DeclareObsOptions(CLI::App& app, S_RinexOptions& options) {
  const std::string group(kRinexObsGroup);
  Declare(kStationOptions, app, options, group);
  app.add_option("--obs-types", options.obsTypes,
                 "these observation types of a system, as in G:C1C,L1C; repeatable\n(default: all that occur)")
      ->option_text("LIST")
      ->allow_extra_args(false)
      ->check(&CheckObsTypes)
      ->group(group);
  app.add_flag("--auto-name", options.hasAutoNames,
               "write to a file with the standard name, in the directory given by -o\n(default: the current one)")
      ->group(group);
  Declare(kFileOptions, app, options, group);
  app.add_option("--interval", options.interval, "only epochs at multiples of this many seconds of GPS time")
      ->option_text("SECONDS")
      ->check(&CheckInterval)
      ->group(group);
}

}  // namespace

std::optional<std::array<double, 3>> ReadPosition(std::string_view list) {
  const std::vector<std::string_view> items = SplitList(list);
  std::array<double, 3> xyz{};
  if (items.size() != xyz.size()) return std::nullopt;
  for (std::size_t i = 0; i < xyz.size(); ++i)
    if (!ParseWhole(items[i], xyz[i])) return std::nullopt;
  return xyz;
}

t_ObsTypes ReadObsTypes(const std::vector<std::string>& lists) {
  t_ObsTypes types;
  for (const std::string& list : lists)
    for (const std::string_view code : SplitList(std::string_view(list).substr(2))) {
      std::vector<std::string>& row = types[NavSystemWith(list[0])];
      if (std::find(row.begin(), row.end(), code) == row.end()) row.emplace_back(code);
    }
  return types;
}

std::string ObjectionForObs(const S_RinexOptions& options) {
  constexpr std::size_t kAgencyWidth = 40;
  if (!options.split.empty() && !options.hasAutoNames) return "--split needs --auto-name";
  return options.agency.size() <= kAgencyWidth ? ""
                                               : fmt::format("--agency: must be at most {} characters", kAgencyWidth);
}

void DeclareRinexOptions(CLI::App& app, S_RinexOptions& options) {
  const std::string group(kRinexGroup);
  app.add_option("--system", options.systems, "only these systems, of: " + NavSystemNames())
      ->option_text("LIST")
      ->allow_extra_args(false)
      ->check(&CheckSystems)
      ->group(group);
  Declare(kHeaderOptions, app, options, group);
  app.add_flag("--gzip", options.isCompressed, "compress the output, as with a name after -o that ends with .gz")
      ->group(group);
  app.add_option("--rinex", options.version, fmt::format("version of the format (default: {})", kRinex3))
      ->option_text("3.05|4.00")
      ->check(OneOf({std::string(kRinex3), std::string(kRinex4)}))
      ->group(std::string(kRinexNavGroup));
  DeclareObsOptions(app, options);
}

std::array<bool, kNumNavSystems> SelectNavSystems(const std::vector<std::string>& lists) {
  std::array<bool, kNumNavSystems> selected{};
  if (lists.empty()) selected.fill(true);
  for (const std::string& list : lists)
    for (const std::string_view item : SplitList(list)) selected[NavSystemNamed(item)] = true;
  return selected;
}

std::string NavSystemNames() { return JoinNames(NavSystems(), &S_NavSystem::name); }

}  // namespace Host
