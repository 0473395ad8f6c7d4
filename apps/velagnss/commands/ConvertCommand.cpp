#include "apps/velagnss/commands/ConvertCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/InputLoop.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/pipeline/Converter.h"
#include "apps/velagnss/pipeline/FrameReader.h"
#include "apps/velagnss/rinex/RinexNav.h"
#include "apps/velagnss/sinks/Output.h"
#include "apps/velagnss/text/MessageNames.h"
#include "apps/velagnss/track/TrackConverter.h"

namespace Host {
namespace {

struct S_ConvertOptions {
  S_InputOptions input;
  S_StreamArguments stream;
  std::string format;
  std::string seed;
  std::string output = "-";
  S_RinexNavOptions rinexNav;
};

struct S_Format {
  std::string_view name;
  std::string_view contents;     // for the help
  std::string_view optionGroup;  // the heading above its own options in the help; empty when it has none
  std::unique_ptr<C_Converter> (*make)(const S_ConvertOptions& options);
};

template <std::unique_ptr<C_TrackFormat> (*Make)()>
std::unique_ptr<C_Converter> Track(const S_ConvertOptions&) {
  return MakeTrackConverter(Make());
}

// clang-format off
constexpr S_Format kFormats[] = {
    {"rinex-nav", "broadcast ephemerides, RINEX 3.05", kRinexNavGroup,
     [](const S_ConvertOptions& options) { return MakeRinexNav(options.rinexNav); }},
    {"nmea",      "the checked NMEA 0183 sentences",   "", [](const S_ConvertOptions&) { return MakeSentenceConverter(); }},
    {"csv",       "a position per epoch, RFC 4180",    "", &Track<&MakeCsvTrack>},
    {"gpx",       "the same, GPX 1.1",                 "", &Track<&MakeGpxTrack>},
    {"kml",       "the same, KML 2.2",                 "", &Track<&MakeKmlTrack>},
    {"geojson",   "the same, RFC 7946",                "", &Track<&MakeGeoJsonTrack>},
};
// clang-format on

const S_Format* FindFormat(std::string_view name) {
  const auto* const format =
      std::find_if(std::begin(kFormats), std::end(kFormats), [name](const S_Format& row) { return row.name == name; });
  return format == std::end(kFormats) ? nullptr : format;
}

}  // namespace

std::string FormatNames() {
  std::string names;
  for (const S_Format& format : kFormats) names += (names.empty() ? "" : " ") + std::string(format.name);
  return names;
}

namespace {

std::string FormatHelp() {
  std::string help = "what to write:\n";
  for (const S_Format& format : kFormats) help += fmt::format("  {:<10} {}\n", format.name, format.contents);
  return help +
         "a position is that of GGA, else of GNS, RMC or GLL, in this order,\n"
         "completed from the others of its epoch; without a fix there is none";
}

bool IsFormatGroup(std::string_view group) {
  return !group.empty() && std::any_of(std::begin(kFormats), std::end(kFormats),
                                       [group](const S_Format& format) { return format.optionGroup == group; });
}

// Frames in, text of the format out.
class C_ConvertJob : public C_StreamJob, private C_FrameSink {
 public:
  C_ConvertJob(const std::vector<C_RawDataMessage::eProtocols>& search, const std::optional<C_GnssTime>& seed,
               C_Converter& converter, C_Output& output)
      : m_reader(search.data(), *this), m_decoder(seed), m_converter(converter), m_output(output) {}

  void BeginInput(const std::string& name) override;
  void Feed(std::span<const unsigned char> bytes) override { m_reader.Feed(bytes); }
  void EndInput() override;
  bool WantsMore() const override { return !m_output.HasFailed(); }
  void BeforeWait() override { Flush(); }

  // The last of the output, after all inputs; `where` names them in a message.
  eExitCode Finish(const std::string& where);

 private:
  static constexpr std::size_t kFlushSize = 1 << 16;

  void OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) override;
  void Flush();

  C_FrameReader m_reader;
  C_FrameDecoder m_decoder;
  C_Converter& m_converter;
  C_Output& m_output;
  std::string m_text;
  std::uint64_t m_bytesRead = 0;
  std::uint64_t m_framesFound = 0;
};

void C_ConvertJob::BeginInput(const std::string& name) {
  m_reader.Restart();
  m_decoder.Restart();
  m_converter.BeginInput(name);
}

void C_ConvertJob::EndInput() {
  m_reader.Finish();
  m_bytesRead += m_reader.BytesFed();
  m_converter.EndInput(m_decoder, m_text);
}

void C_ConvertJob::OnFrame(const C_RawDataMessage& frame, std::uint64_t offset) {
  ++m_framesFound;
  m_decoder.Decode(frame);
  m_converter.Take({frame, offset, m_decoder}, m_text);
  if (m_text.size() >= kFlushSize) Flush();
}

eExitCode C_ConvertJob::Finish(const std::string& where) {
  if (m_framesFound == 0 && m_bytesRead > 0) ReportNoFrame(where, m_bytesRead);
  const eExitCode code = m_converter.Finish(m_text);
  Flush();
  return code;
}

void C_ConvertJob::Flush() {
  m_output.Write(m_text);
  m_text.clear();
}

class C_ConvertCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  std::string StrangeOption(const S_Format& format) const;
  int Convert(const std::vector<C_RawDataMessage::eProtocols>& search, C_Converter& converter);

  S_ConvertOptions m_options;
  const CLI::App* m_app = nullptr;
};

void C_ConvertCommand::Declare(CLI::App& app) {
  m_app = &app;
  DeclareStreamArguments(app, m_options.stream, m_options.input);
  app.add_option("--to", m_options.format, FormatHelp())
      ->option_text("FORMAT")
      ->required()
      ->check([](const std::string& name) -> std::string {
        return FindFormat(name) != nullptr ? "" : "there is no format '" + name + "'; known are: " + FormatNames();
      });
  app.add_option("-o,--output", m_options.output, "write to this file, not to standard output")->option_text("FILE");
  DeclareSeed(app, m_options.seed);
  DeclareRinexNavOptions(app, m_options.rinexNav);
}

// The first option given that belongs to other formats; empty when there is none.
std::string C_ConvertCommand::StrangeOption(const S_Format& format) const {
  for (const CLI::Option* option : m_app->get_options())
    if (option->count() > 0 && option->get_group() != format.optionGroup && IsFormatGroup(option->get_group()))
      return option->get_name();
  return {};
}

int C_ConvertCommand::Run() {
  const auto search = SearchList(m_options.stream);
  const S_Format& format = *FindFormat(m_options.format);
  if (const std::string option = StrangeOption(format); !option.empty())
    return ReportUsage("convert", fmt::format("{} is no option of --to {}", option, format.name));
  if (IsAnInput(m_options.input, m_options.output))
    return ReportUsage("convert", m_options.output + ": is an input as well; name another file to write to");
  return Convert(search, *format.make(m_options));
}

int C_ConvertCommand::Convert(const std::vector<C_RawDataMessage::eProtocols>& search, C_Converter& converter) {
  C_Output output;
  if (!output.Open(m_options.output)) return eExitOutput;
  m_options.input.showProgress = !output.IsATerminal();
  C_ConvertJob job(search, ParseSeed(m_options.seed), converter, output);
  const eExitCode inputCode = RunInputs(m_options.input, job);
  const eExitCode dataCode = job.Finish(InputsText(m_options.input));
  output.Close();
  if (output.HasReaderLeft()) return inputCode;
  if (output.HasFailed()) return eExitOutput;
  return inputCode != eExitOk ? inputCode : dataCode;
}

}  // namespace

const S_CommandEntry kConvertCommand = {
    "convert",
    "The inputs in another program's format.\n\n"
    "Examples:\n"
    "  velagnss convert --to gpx -o track.gpx session.bin                   where it went: gpx, kml, geojson, csv\n"
    "  velagnss convert --to nmea session.bin > session.nmea                its sentences without the rest\n"
    "  velagnss convert --to rinex-nav -o brdc.rnx session.bin              ephemerides of all systems\n"
    "  velagnss convert --to rinex-nav --system glonass a.bin b.bin         of one, from two inputs\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_ConvertCommand>(); }};

}  // namespace Host
