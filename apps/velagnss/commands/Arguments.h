// Argument texts that several commands share, and their readers.
#ifndef VELAGNSS_APPS_ARGUMENTS_H
#define VELAGNSS_APPS_ARGUMENTS_H

#include <fmt/format.h>

#include <charconv>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "framing/RawDataMessage.h"
#include "geo/GnssTime.h"

namespace CLI {
class App;
}

namespace Host {

struct S_InputOptions;

// Reports what is wrong with the arguments and where to read on; returns eExitUsage.
int ReportUsage(std::string_view command, std::string_view message);

// The whole of `text` as a number of its type; nothing else before or behind it.
template <class Number>
bool ParseWhole(std::string_view text, Number& number) {
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc() && stop == end;
}

// A check for an option's text: a number from `least` to `greatest`. Stricter than what CLI11 reads.
template <class Number>
auto NumberBetween(Number least, Number greatest) {
  return [least, greatest](const std::string& text) -> std::string {
    Number number{};
    if (ParseWhole(text, number) && number >= least && number <= greatest) return {};
    return fmt::format("'{}' is no number from {} to {}", text, least, greatest);
  };
}

// "WEEK:SECONDS": a GPS week without roll-over and the seconds of that week. Nothing when it is no such time.
std::optional<C_GnssTime> ParseSeed(std::string_view text);

// The option --seed; afterwards `seed` is empty or a text that `ParseSeed` understands.
void DeclareSeed(CLI::App& app, std::string& seed);

// The protocols to look for, ended by `eAllProtocols`: those of `list` (names with commas), or all when it is empty.
// Acknowledgements are among them only when named or asked for: they have no checksum and swallow text up to the next
// line end. Nothing when a name is unknown.
std::optional<std::vector<C_RawDataMessage::eProtocols>> ParseSearchList(std::string_view list, bool acknowledgements);

// What is the same for every command that reads streams.
struct S_StreamArguments {
  std::string search;  // protocols to look for
  bool acknowledgements = false;
};
void DeclareStreamArguments(CLI::App& app, S_StreamArguments& stream, S_InputOptions& input);

// The protocols that the declared arguments, which have been checked, ask for.
std::vector<C_RawDataMessage::eProtocols> SearchList(const S_StreamArguments& stream);

}  // namespace Host

#endif  // VELAGNSS_APPS_ARGUMENTS_H
