#include "apps/velagnss/commands/ConvertCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/nmea/SentenceConverter.h"
#include "apps/velagnss/pipeline/NoFrameWarning.h"
#include "apps/velagnss/rinex/NavConverter.h"
#include "apps/velagnss/rinex/ObsConverter.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/track/TrackConverter.h"

namespace Host {
namespace {

struct S_ConvertOptions {
  S_StreamArguments stream;
  std::string format;
  std::string output = "-";
  S_RinexOptions rinex;
};

struct S_Format {
  std::string_view name;
  std::string_view contents;                   // for the help
  std::vector<std::string_view> optionGroups;  // the headings above its own options in the help
  std::unique_ptr<C_TextConsumer> (*make)(const S_ConvertOptions& options);
};

template <std::unique_ptr<C_TrackFormat> (*Make)()>
std::unique_ptr<C_TextConsumer> Track(const S_ConvertOptions&) {
  return MakeTrackConverter(Make());
}
std::unique_ptr<C_TextConsumer> Sentences(const S_ConvertOptions&) { return MakeSentenceConverter(); }
std::unique_ptr<C_TextConsumer> RinexNav(const S_ConvertOptions& options) { return MakeNavConverter(options.rinex); }
std::unique_ptr<C_TextConsumer> RinexObs(const S_ConvertOptions& options) { return MakeObsConverter(options.rinex); }

// clang-format off
const S_Format kFormats[] = {
    {"rinex-nav", "broadcast ephemerides, RINEX",    {kRinexGroup, kRinexNavGroup},  &RinexNav},
    {"rinex-obs", "observations, RINEX 3.05",        {kRinexGroup, kRinexObsGroup},  &RinexObs},
    {"nmea",      "the checked NMEA 0183 sentences", {},  &Sentences},
    {"csv",       "track, RFC 4180",              {},  &Track<&MakeCsvTrack>},
    {"gpx",       "track, GPX 1.1",                 {},  &Track<&MakeGpxTrack>},
    {"kml",       "track, KML 2.2",                 {},  &Track<&MakeKmlTrack>},
    {"geojson",   "track, RFC 7946",                {},  &Track<&MakeGeoJsonTrack>},
};
// clang-format on

const S_Format* FindFormat(std::string_view name) {
  const auto* const format =
      std::find_if(std::begin(kFormats), std::end(kFormats), [name](const S_Format& row) { return row.name == name; });
  return format == std::end(kFormats) ? nullptr : format;
}

// A seed completes weeks, and these formats have none.
bool IsWithoutWeeks(const S_Format& format) {
  constexpr std::string_view kNames[] = {"nmea", "csv", "gpx", "kml", "geojson"};
  return std::find(std::begin(kNames), std::end(kNames), format.name) != std::end(kNames);
}

std::string CheckFormat(const std::string& name) {
  return FindFormat(name) != nullptr ? "" : "unknown format '" + name + "'; known: " + FormatNames();
}

std::string FormatHelp() {
  std::string help = "what to write:\n";
  for (const S_Format& format : kFormats) help += fmt::format("  {:<10} {}\n", format.name, format.contents);
  return help +
         "a track has a position per epoch, from GGA, else GNS, RMC or GLL, in this order,\n"
         "completed from the other sentences of the epoch; epochs without a fix are left out";
}

bool HasGroup(const S_Format& format, std::string_view group) {
  return std::find(format.optionGroups.begin(), format.optionGroups.end(), group) != format.optionGroups.end();
}

bool IsFormatGroup(std::string_view group) {
  return std::any_of(std::begin(kFormats), std::end(kFormats),
                     [group](const S_Format& format) { return HasGroup(format, group); });
}

class C_ConvertCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  std::string OptionOfOtherFormat(const S_Format& format) const;
  eExitCode Open(C_OutputRun& output) const;
  int Convert(C_TextConsumer& converter) const;

  S_ConvertOptions m_options;
  const CLI::App* m_app = nullptr;
};

void C_ConvertCommand::Declare(CLI::App& app) {
  m_app = &app;
  DeclareStreamArguments(app, m_options.stream);
  DeclareRange(app, m_options.stream);
  DeclareCores(app, m_options.stream);
  app.add_option("--to", m_options.format, FormatHelp())->option_text("FORMAT")->required()->check(&CheckFormat);
  DeclareOutput(app, m_options.output);
  DeclareSeed(app, m_options.stream);
  DeclareRinexOptions(app, m_options.rinex);
}

// The first option given that belongs to other formats; empty when there is none.
std::string C_ConvertCommand::OptionOfOtherFormat(const S_Format& format) const {
  if (!m_options.stream.seed.empty() && IsWithoutWeeks(format)) return "--seed";
  for (const CLI::Option* option : m_app->get_options())
    if (option->count() > 0 && !HasGroup(format, option->get_group()) && IsFormatGroup(option->get_group()))
      return option->get_name();
  return {};
}

int C_ConvertCommand::Run() {
  if (HasTooManyLive("convert", m_options.stream.input)) return eExitUsage;
  const S_Format& format = *FindFormat(m_options.format);
  if (const std::string option = OptionOfOtherFormat(format); !option.empty())
    return ReportUsage("convert", fmt::format("{} is not an option of --to {}{}", option, format.name,
                                              option == "--seed" ? "; --date dates a track" : ""));
  if (const std::string objection = ObjectionForObs(m_options.rinex); format.make == &RinexObs && !objection.empty())
    return ReportUsage("convert", objection);
  return Convert(*format.make(m_options));
}

eExitCode C_ConvertCommand::Open(C_OutputRun& output) const {
  const S_RinexOptions& rinex = m_options.rinex;
  const std::string& name = m_options.output;
  if (rinex.hasAutoNames) return output.OpenFiles(name == "-" ? "." : name, rinex.isCompressed, m_options.stream.input);
  const eExitCode code = output.Open(name, m_options.stream.input);
  const bool isRinex = HasGroup(*FindFormat(m_options.format), kRinexGroup);
  if (code == eExitOk && isRinex && (rinex.isCompressed || name.ends_with(".gz"))) output.Output().Compress();
  return code;
}

int C_ConvertCommand::Convert(C_TextConsumer& converter) const {
  C_OutputRun output;
  if (const eExitCode code = Open(output); code != eExitOk) return code;
  C_NoFrameWarning warning(InputsText(m_options.stream.input));
  C_RecordRun run(RunOptions(m_options.stream), {&warning, &converter});
  return output.Run(m_options.stream.input, run, converter, [&] { return run.Judge(); });
}

}  // namespace

std::string FormatContents(std::string_view format) { return std::string(FindFormat(format)->contents); }

std::string FormatNames() { return JoinNames(kFormats, &S_Format::name); }

const S_CommandEntry kConvertCommand = {
    "convert",
    "Convert the inputs to the format of other programs.\n\n"
    "Examples:\n"
    "  velagnss convert --to gpx -o track.gpx session.bin                   its track: gpx, kml, geojson, csv\n"
    "  velagnss convert --to nmea session.bin > session.nmea                only its NMEA sentences\n"
    "  velagnss convert --to rinex-nav -o brdc.rnx session.bin              ephemerides of all systems\n"
    "  velagnss convert --to rinex-nav --system glonass a.bin b.bin         of one system, from two inputs\n"
    "  velagnss convert --to rinex-obs --interval 30 -o obs.rnx base.rtcm   observations, every 30 s\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_ConvertCommand>(); }};

}  // namespace Host
