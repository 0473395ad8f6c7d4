#include "apps/velagnss/rinex/RinexOptions.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/velagnss/rinex/RinexText.h"
#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

// A check for an option's text: fits its place in the header.
auto HeaderText(std::size_t width) {
  return [width](const std::string& text) -> std::string {
    const bool isPrintable = std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
    return isPrintable && text.size() <= width ? "" : fmt::format("at most {} printable ASCII characters", width);
  };
}

std::string CheckSystems(const std::string& list) {
  for (const std::string_view item : SplitList(list))
    if (NavSystemNamed(item) == kNumNavSystems)
      return fmt::format("unknown system '{}'; known: {}", item, NavSystemNames());
  return {};
}

}  // namespace

void DeclareRinexOptions(CLI::App& app, S_RinexOptions& options) {
  const std::string group(kRinexGroup);
  app.add_option("--system", options.systems, "only these systems, of: " + NavSystemNames())
      ->option_text("LIST")
      ->allow_extra_args(false)
      ->check(&CheckSystems)
      ->group(group);
  app.add_option("--marker", options.marker, "name of the marker, for the header")
      ->option_text("NAME")
      ->check(HeaderText(kHeaderWidth - kMarkerComment.size()))
      ->group(group);
  app.add_option("--agency", options.agency, "name of the observing agency, for the header")
      ->option_text("NAME")
      ->check(HeaderText(kHeaderWidth - kAgencyComment.size()))
      ->group(group);
  app.add_option("--run-by", options.runBy, "who made the file, for the header")
      ->option_text("NAME")
      ->check(HeaderText(kHeaderNameWidth))
      ->group(group);
  app.add_option("--run-date", options.runDate,
                 "date in the header: the last one of the stream, or the current one,\n"
                 "which differs on every run (default: stream)")
      ->option_text("stream|now")
      ->check(CLI::IsMember({"stream", "now"}))
      ->group(group);
  app.add_option("--rinex", options.version, fmt::format("version of the format (default: {})", kRinex3))
      ->option_text("3.05|4.00")
      ->check(CLI::IsMember({std::string(kRinex3), std::string(kRinex4)}))
      ->group(std::string(kRinexNavGroup));
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
