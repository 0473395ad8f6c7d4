#include "apps/velagnss/commands/Arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/velagnss/input/InputLoop.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/pipeline/MessageFilter.h"
#include "apps/velagnss/text/MessageNames.h"

namespace Host {
namespace {

constexpr double kSecondsPerWeek = 604800.0;
constexpr std::uint64_t kMaxReadSize = std::uint64_t{1} << 30;

}  // namespace

int ReportUsage(std::string_view command, std::string_view message) {
  ReportError(fmt::format("{}; see 'velagnss {}{}--help'", message, command, command.empty() ? "" : " "));
  return eExitUsage;
}

std::optional<C_GnssTime> ParseSeed(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  unsigned short week = 0;
  double seconds = 0;
  if (!ParseWhole(text.substr(0, colon), week) || !ParseWhole(text.substr(colon + 1), seconds)) return std::nullopt;
  if (week == 0 || !(seconds >= 0 && seconds < kSecondsPerWeek)) return std::nullopt;
  return C_GnssTime(week, seconds, ALGO::GNSS_GPS);
}

void DeclareSeed(CLI::App& app, std::string& seed) {
  app.add_option("--seed", seed,
                 "GPS week and seconds of the recording, to complete broadcast weeks;\n"
                 "without it the first date of the stream serves")
      ->option_text("WEEK:SECONDS")
      ->check([](const std::string& text) -> std::string {
        if (ParseSeed(text)) return {};
        return "'" + text + "' is not a GPS week from 1 and its seconds, as in 2300:345600";
      });
}

std::optional<std::vector<C_RawDataMessage::eProtocols>> ParseSearchList(std::string_view list, bool acknowledgements) {
  std::vector<C_RawDataMessage::eProtocols> protocols;
  for (unsigned int i = 0; list.empty() && i < kNumProtocols; ++i)
    if (i != C_RawDataMessage::eVelaCmdAck) protocols.push_back(C_RawDataMessage::eProtocols{i});
  for (const std::string_view name : list.empty() ? std::vector<std::string_view>{} : SplitList(list)) {
    const std::optional<C_RawDataMessage::eProtocols> protocol = FindProtocol(name);
    if (!protocol) return std::nullopt;
    protocols.push_back(*protocol);
  }
  if (acknowledgements) protocols.push_back(C_RawDataMessage::eVelaCmdAck);
  protocols.push_back(C_RawDataMessage::eAllProtocols);
  return protocols;
}

std::vector<C_RawDataMessage::eProtocols> SearchList(const S_StreamArguments& stream) {
  return ParseSearchList(stream.search, stream.acknowledgements).value();
}

void DeclareStreamArguments(CLI::App& app, S_StreamArguments& stream, S_InputOptions& input) {
  app.add_option("INPUT", input.names, "files or devices; '-' or nothing for standard input")->option_text("...");
  app.add_option("--search", stream.search, "look for these protocols only, of:\n" + ProtocolNames())
      ->option_text("LIST")
      ->check([](const std::string& list) -> std::string {
        if (ParseSearchList(list, false)) return {};
        return "not all of '" + list + "' are protocols; known are: " + ProtocolNames();
      });
  app.add_flag("--acks", stream.acknowledgements,
               "look for command acknowledgements too; they have no checksum\nand swallow text up to the line end");
  app.add_option("--read-size", input.readSize,
                 "bytes to read at once, 262144 when not given; the output does not depend on it")
      ->option_text("BYTES")
      ->check(NumberBetween(std::uint64_t{1}, kMaxReadSize));
}

}  // namespace Host
