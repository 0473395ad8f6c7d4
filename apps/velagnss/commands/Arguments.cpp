#include "apps/velagnss/commands/Arguments.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <thread>

#include "apps/velagnss/commands/RecordArguments.h"
#include "apps/velagnss/input/live/Links.h"
#include "apps/velagnss/net/Credentials.h"
#include "apps/velagnss/net/http/HttpAddress.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/ExitCodes.h"
#include "apps/velagnss/relay/Destinations.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/MessageNames.h"
#include "apps/velagnss/text/Quantities.h"
#include "apps/velagnss/text/TimeRead.h"
#include "apps/velagnss/text/Units.h"
#include "geo/LeapSeconds.h"
#include "stream/Names.h"

namespace Host {
namespace {

// 1 GiB: the buffer is allocated at once.
constexpr std::uint64_t kMaxReadSize = std::uint64_t{1} << 30;

bool IsInCalendar(unsigned int mjd) { return mjd >= kMjdOfGpsEpoch + 7 && mjd <= kLastMjd; }

// A date alone is taken at noon.
std::optional<C_GnssTime> SeedOfDate(std::string_view text) {
  S_UtcTime utc{ParseDate(text), kMicrosecondsPerDay / 2};
  if (!utc.mjd) utc = ParseUtc(text).value_or(S_UtcTime{});
  if (!utc.mjd || !IsInCalendar(*utc.mjd)) return std::nullopt;
  return velagnss::GpsOfUtc({*utc.mjd, static_cast<double>(utc.ofDay) / 1e6});
}

// No stream is older than NMEA 0183, which came in 1983.
std::string CheckDate(const std::string& text) {
  constexpr unsigned int kFirstDate = 45335;  // MJD
  const std::optional<unsigned int> mjd = ParseDate(text);
  if (mjd && *mjd >= kFirstDate && *mjd <= kLastMjd) return {};
  return "'" + text + "' is not a date from 1983-01-01 to 2100-12-31, as in 2024-05-18";
}

std::string CheckSeed(const std::string& text) {
  if (ParseSeed(text)) return {};
  return "'" + text +
         "' is not a date from 1980-01-13 to 2100-12-31, with or without a time, nor a GPS week from 1 on and its "
         "seconds, as in "
         "2300:345600";
}

std::string CheckSearch(const std::string& list) {
  if (list.empty()) return "no protocol named; known: " + ProtocolNames();
  if (ParseSearchList(list, false)) return {};
  return "'" + list + "' names an unknown protocol; known: " + ProtocolNames();
}

std::string CheckInput(const std::string& name) {
  const std::string error = IsHttp(name) ? CheckHttp(name) : IsLive(name) ? CheckLive(name) : std::string();
  return error.empty() ? error : fmt::format("'{}': {}", ShownLive(name), error);
}

// Either bound may be missing.
std::optional<S_ByteRange> ReadRange(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos) return std::nullopt;
  const S_ByteRange all;
  const std::string_view begin = text.substr(0, colon);
  const std::string_view end = text.substr(colon + 1);
  const std::optional<std::uint64_t> first = begin.empty() ? all.begin : ParseDataSize(begin);
  const std::optional<std::uint64_t> last = end.empty() ? all.end : ParseDataSize(end);
  if (!first || !last || *first >= *last) return std::nullopt;
  return S_ByteRange{*first, *last};
}

std::string CheckRange(const std::string& text) {
  if (ReadRange(text)) return {};
  return "'" + text + "' is not a range of bytes, BEGIN:END, as in 0:1000000, 100M:200M or 1G:";
}

constexpr double kMaxSeconds = 86400;  // of pauses and time-outs

std::string CheckSeconds(const std::string& text) {
  return NumberBetween(0.001, kMaxSeconds, "a number of seconds from 0.001 to 86400")(text);
}

std::optional<std::chrono::milliseconds> ReadSeconds(const std::string& text) {
  double seconds = 0;
  if (!ParseWhole(text, seconds)) return std::nullopt;
  return std::chrono::milliseconds(std::max<std::int64_t>(std::llround(seconds * 1000), 1));
}

void DeclareLive(CLI::App& app, S_LiveOptions& live) {
  app.add_option_function<std::string>(
         "--idle-timeout", [&live](const std::string& text) { live.idleTimeout = ReadSeconds(text); },
         "reconnect a live source after this time without data\n(default: depends on the kind, see docs/live.md)")
      ->option_text("SECONDS")
      ->check(&CheckSeconds);
  app.add_option_function<std::string>(
         "--quiet-time", [&live](const std::string& text) { live.quietTime = ReadSeconds(text); },
         "give up an unfinished frame after this silence of a live source\n(default: 0.5; 'never': keep waiting)")
      ->option_text("SECONDS")
      ->check([](const std::string& text) { return text == "never" ? std::string() : CheckSeconds(text); });
  app.add_option_function<std::string>(
         "--retry-pause", [&live](const std::string& text) { live.retryPause = ReadSeconds(text); },
         "pause, up to half longer at random, before a lost live source is tried\nagain (default: 0.5, doubled up to "
         "30; "
         "casters longer)")
      ->option_text("SECONDS")
      ->check(&CheckSeconds);
  app.add_option("--tries", live.maxTries, "give up a live source after this many failures in a row\n(default: never)")
      ->option_text("COUNT")
      ->check(NumberBetween(1U, 1'000'000U, "a whole number from 1 to 1000000"));
  DeclareCredentials(app, live.credentials);
  // --position of `convert` is that of the antenna.
  app.add_option(
         app.get_name() == "convert" ? "--send-position" : "--position,--send-position", live.position,
         "send casters this latitude,longitude,height in degrees and meters, or with\n'stream' the position in the "
         "GGA sentences of another source (default: none)")
      ->option_text("PLACE")
      ->check(
          [](const std::string& text) { return text == kPositionOfStream ? std::string() : CheckFixedPosition(text); });
}

// These depend on each other, so they are checked together.
void ReadSelection(S_StreamArguments& stream) {
  const auto check = [](const std::optional<std::string>& error) {
    if (error) throw CLI::ValidationError(*error);
  };
  if (!stream.range.IsEverything() && CountLive(stream.input) > 0)
    throw CLI::ValidationError("--range is for files: live sources have no end to cut");
  check(stream.selection.SetWindow(stream.from, stream.until));
  for (const std::string& list : stream.talkers) check(stream.selection.AddTalkers(list));
}

void DeclareDate(CLI::App& app, S_StreamArguments& stream) {
  app.add_option("--date", stream.date,
                 "UTC date of each input's first time, 2024-05-18, until it carries\na date of its own")
      ->option_text("DATE")
      ->check(&CheckDate);
}

// --to names what is written, or where it goes, in some commands.
bool HasOtherTo(const CLI::App& app) {
  constexpr std::string_view kCommands[] = {"convert", "relay", "replay", "submit"};
  return std::find(std::begin(kCommands), std::end(kCommands), app.get_name()) != std::end(kCommands);
}

void DeclareSelection(CLI::App& app, S_StreamArguments& stream) {
  app.add_option(
         "--from", stream.from,
         "only from this time of the stream on, 2024-05-18T12:00:00, 2024-05-18\n(its 00:00:00) or 12:00:00, UTC")
      ->option_text("TIME");
  app.add_option(HasOtherTo(app) ? "--until" : "--to,--until", stream.until,
                 "only up to this time, which is excluded; times of day mean every day")
      ->option_text("TIME");
  app.add_option("--talker", stream.talkers,
                 "only NMEA 0183 sentences of these talkers, as in GP,GN; P means proprietary;\nother protocols are "
                 "not affected")
      ->option_text("LIST")
      ->allow_extra_args(false);
  app.parse_complete_callback([&stream] { ReadSelection(stream); });
}

}  // namespace

int ReportUsage(std::string_view command, std::string_view message) {
  ReportError(fmt::format("{}; see 'velagnss {}{}--help'", message, command, command.empty() ? "" : " "));
  return eExitUsage;
}

std::optional<C_GnssTime> ParseSeed(std::string_view text) {
  const std::size_t colon = text.find(':');
  if (colon == std::string_view::npos || text.find('-') != std::string_view::npos) return SeedOfDate(text);
  unsigned short week = 0;
  double seconds = 0;
  if (!ParseWhole(text.substr(0, colon), week) || !ParseWhole(text.substr(colon + 1), seconds)) return std::nullopt;
  // Week 0 means "no seed" to the decoder.
  if (week == 0 || !(seconds >= 0 && seconds < kSecondsPerWeek)) return std::nullopt;
  return C_GnssTime(week, seconds, ALGO::GNSS_GPS);
}

std::optional<std::vector<C_RawDataMessage::eProtocols>> ParseSearchList(std::string_view list, bool acknowledgements) {
  std::vector<C_RawDataMessage::eProtocols> protocols;
  // Without a list all protocols are searched, except acknowledgements: they have no checksum and swallow what follows.
  for (unsigned int i = 0; list.empty() && i < kNumProtocols; ++i)
    if (i != C_RawDataMessage::eVelaCmdAck) protocols.push_back(C_RawDataMessage::eProtocols{i});
  for (const std::string_view name : list.empty() ? std::vector<std::string_view>{} : SplitList(list)) {
    const std::optional<C_RawDataMessage::eProtocols> protocol = velagnss::FindProtocol(name);
    if (!protocol) return std::nullopt;
    protocols.push_back(*protocol);
  }
  if (acknowledgements) protocols.push_back(C_RawDataMessage::eVelaCmdAck);
  return protocols;
}

void DeclareInputs(CLI::App& app, S_InputOptions& input) {
  app.add_option("INPUT", input.names,
                 "files, also https://host/file, live sources such as /dev/ttyUSB0 or tcp://host:port,\n'-' or nothing "
                 "for standard input")
      ->option_text("...")
      ->check(&CheckInput);
  app.add_option("--read-size", input.readSize,
                 "bytes to read at once (default: 1048576); the output does not depend on it")
      ->option_text("BYTES")
      ->check(NumberBetween(std::uint64_t{1}, kMaxReadSize, "a whole number from 1 to 1073741824"));
  DeclareLive(app, input.live);
}

void DeclareCredentials(CLI::App& app, std::string& file) {
  app.add_option("--credentials", file,
                 "take users and passwords for servers from this file, which nobody else may\nread; its lines: "
                 "HOST[:PORT] USER PASSWORD")
      ->option_text("FILE")
      ->check(&CheckCredentials);
}

std::string CheckFixedPosition(const std::string& text) {
  if (ReadFixedPosition(text)) return {};
  return "must be latitude,longitude,height in degrees and meters, as in 48.1,11.6,560, not '" + text + "'";
}

bool HasTooManyLive(std::string_view command, const S_InputOptions& input) {
  if (CountLive(input) < 2) return false;
  ReportUsage(command, fmt::format("{} reads one live source at a time; run it once for each", command));
  return true;
}

void DeclareStreamArguments(CLI::App& app, S_StreamArguments& stream) {
  DeclareInputs(app, stream.input);
  DeclareTee(app, stream.input);
  DeclareDecoding(app, stream);
}

void DeclareDecoding(CLI::App& app, S_StreamArguments& stream) {
  app.add_option("--search", stream.search,
                 "search for these protocols only: others are noise; of:\n" + ProtocolNames())
      ->option_text("LIST")
      ->check(&CheckSearch);
  app.add_flag("--acks", stream.acknowledgements,
               "also search for command acknowledgements; they have no checksum\nand swallow text up to the line end");
  app.add_flag("--listed-only", stream.listedOnly,
               "treat checked sentences and RTCM 3 messages that are not in the catalog as noise");
  DeclareDate(app, stream);
  DeclareSelection(app, stream);
}

void DeclareCores(CLI::App& app, S_StreamArguments& stream) {
  stream.cores = std::max(std::thread::hardware_concurrency(), 1U);
  app.add_option("-j,--jobs", stream.cores,
                 "threads to process files with (default: one for each core); the output\ndoes not depend on it")
      ->option_text("COUNT")
      ->check(NumberBetween(1U, 256U, "a whole number from 1 to 256"));
}

void DeclareRange(CLI::App& app, S_StreamArguments& stream) {
  app.add_option_function<std::string>(
         "--range", [&stream](const std::string& text) { stream.range = *ReadRange(text); },
         "only frames that begin in these bytes of each file, BEGIN:END, END excluded,\nas in 100M:200M, 100M: or "
         ":100M; what is before them is only searched")
      ->option_text("BYTES")
      ->check(&CheckRange);
}

void DeclareSeed(CLI::App& app, S_StreamArguments& stream) {
  app.add_option(
         "--seed", stream.seed,
         "date of the recording, 2024-05-18, or its GPS week and seconds,\n2314:604638, to complete broadcast weeks,\n"
         "whatever dates the stream carries (default: these, and before\nthe first of them --date)")
      ->option_text("TIME")
      ->check(&CheckSeed);
}

void DeclareFilter(CLI::App& app, S_FilterArguments& arguments) {
  app.add_option("--proto", arguments.protocols, "only these protocols, named as for --search, and what --msg names")
      ->option_text("LIST")
      ->allow_extra_args(false);
  app.add_option("--msg", arguments.messages,
                 "only these messages, and what --proto names: GGA,PGRME,BIN95,1077,\nor one every 10 s: GGA:10")
      ->option_text("LIST")
      ->allow_extra_args(false);
}

std::string FillFilter(const S_FilterArguments& arguments, const S_StreamArguments& stream, C_MessageFilter& filter) {
  filter.AcceptUnlisted(!stream.listedOnly);
  for (const std::string& list : arguments.protocols)
    if (const std::optional<std::string> error = filter.AddProtocols(list)) return "--proto: " + *error;
  for (const std::string& list : arguments.messages)
    if (const std::optional<std::string> error = filter.AddMessages(list)) return "--msg: " + *error;
  return {};
}

void ReportIgnoredPeriod(const C_MessageFilter& filter) {
  if (filter.HasIgnoredPeriod())
    ReportWarning("no time came before the messages for which --msg sets a period: all of them are in the output");
}

S_RunOptions RunOptions(const S_StreamArguments& stream) {
  return {ParseSearchList(stream.search, stream.acknowledgements).value(),
          ParseSeed(stream.seed),
          !stream.listedOnly,
          stream.selection,
          ParseDate(stream.date),
          stream.range,
          stream.cores};
}

void DeclareDestinations(CLI::App& app, std::vector<std::string>& destinations) {
  app.add_option(
         "--to", destinations,
         fmt::format("where it goes, FORMAT:DESTINATION, FORMAT for standard output, or DESTINATION; repeated for\n"
                     "several. Formats: {}. Destinations: files; {}",
                     UnitNames(), DestinationForms()))
      ->option_text("WHERE")
      ->required()
      ->allow_extra_args(false);
}

void DeclareOutput(CLI::App& app, std::string& output) {
  app.add_option("-o,--output", output, "write to this file instead of standard output")->option_text("FILE");
}

}  // namespace Host
