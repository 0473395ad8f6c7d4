#include "apps/velagnss/commands/GeoCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <functional>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/geo/GeoForms.h"
#include "apps/velagnss/geo/GeoText.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/LineSplitter.h"
#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

struct S_GeoOptions {
  std::vector<std::string> values;
  std::string from;
  bool radians = false;
  bool json = false;
};

// Lines of values in, a result per line out. A line that cannot be parsed is reported and skipped.
class C_GeoJob : public C_StreamJob, public C_TextBuffer {
 public:
  C_GeoJob(const S_GeoForm& form, const S_GeoOptions& options, C_Output& output)
      : m_form(form), m_options(options), m_output(output) {}

  void BeginInput(const std::string&) override {}
  void Feed(const S_Chunk& chunk) override;
  void EndInput() override;

  // Good when there was a line with values, and every line could be parsed.
  eExitCode Judge() const { return m_results > 0 && m_badLines == 0 ? eExitOk : eExitData; }

 private:
  static constexpr std::size_t kMaxLine = 4096;

  void TakeLine();
  void Compute();
  void RejectLine(std::string_view why);

  const S_GeoForm& m_form;
  const S_GeoOptions& m_options;
  C_Output& m_output;
  C_LineSplitter m_line{kMaxLine};
  std::uint64_t m_results = 0;
  std::uint64_t m_badLines = 0;
};

void C_GeoJob::Feed(const S_Chunk& chunk) {
  for (std::span<const unsigned char> rest = chunk.bytes; m_line.Take(rest);) TakeLine();
}

void C_GeoJob::EndInput() {
  if (m_line.End()) TakeLine();
}

void C_GeoJob::TakeLine() {
  if (m_line.IsTooLong())
    RejectLine(fmt::format("longer than {} characters", kMaxLine));
  else if (!IsGeoComment(m_line.Text()))
    Compute();
}

void C_GeoJob::Compute() {
  t_GeoInputs in{};
  const std::string error = ReadGeoValues(m_form, m_line.Text(), m_options.radians, in);
  if (!error.empty()) return RejectLine(error);
  t_GeoOutputs out{};
  const eGeoOutcome outcome = m_form.compute(in, out);
  if (outcome == eGeoOutcome::BadInput) return RejectLine(m_form.failure);
  ++m_results;
  const S_GeoResult result = {m_form, outcome == eGeoOutcome::Done, out, m_options.radians};
  m_text += m_options.json ? GeoJson(result, m_line.Number()) : GeoLine(result);
}

// What was calculated before is shown before.
void C_GeoJob::RejectLine(std::string_view why) {
  ++m_badLines;
  m_output.Flush(*this);
  ReportError(fmt::format("line {}: {}", m_line.Number(), why));
}

std::string JoinValues(const std::vector<std::string>& values) {
  std::string line;
  for (const std::string& value : values) line += value + ' ';
  return line;
}

// One of the calculations, with its arguments.
class C_GeoCalculation : public C_TextBuffer {
 public:
  C_GeoCalculation(CLI::App& geo, const char* name, const char* description);

  bool IsChosen() const { return m_app.parsed(); }
  int Run();

 private:
  int RunOnArguments(const S_GeoForm& form, C_OutputRun& output);
  int RunOnLines(const S_GeoForm& form, C_OutputRun& output) const;
  void DeclareFrom();

  CLI::App& m_app;
  std::string m_name;
  S_GeoOptions m_options;
};

C_GeoCalculation::C_GeoCalculation(CLI::App& geo, const char* name, const char* description)
    : m_app(*geo.add_subcommand(name, description)), m_name(name) {
  m_app.add_option("VALUES", m_options.values, "the values; '-' or nothing to read lines of them from standard input")
      ->option_text("...");
  DeclareFrom();
  if (m_name != "time") m_app.add_flag("--radians", m_options.radians, "angles in radians, in and out");
  m_app.add_flag("--json", m_options.json, "one JSON object per result");
}

// Only where there is a choice.
void C_GeoCalculation::DeclareFrom() {
  const std::vector<std::string_view> sides = SidesOfGeo(m_name);
  if (sides.empty()) return;
  const std::string names = JoinNames(sides, std::identity(), ", ");
  m_app
      .add_option("--from", m_options.from, fmt::format("what the values are: {} (default: {})", names, sides.front()))
      ->option_text("FORM")
      ->check([name = m_name, names](const std::string& from) {
        return FindGeoForm(name, from) != nullptr && !from.empty() ? "" : "'" + from + "' is not one of " + names;
      });
}

int C_GeoCalculation::Run() {
  const S_GeoForm& form = *FindGeoForm(m_name, m_options.from);
  C_OutputRun output;
  const bool readsLines = m_options.values.empty() || m_options.values == std::vector<std::string>{"-"};
  const eExitCode code = readsLines ? output.Open("-", S_InputOptions()) : output.Open("-") ? eExitOk : eExitOutput;
  if (code != eExitOk) return code;
  return readsLines ? RunOnLines(form, output) : RunOnArguments(form, output);
}

int C_GeoCalculation::RunOnArguments(const S_GeoForm& form, C_OutputRun& output) {
  t_GeoInputs in{};
  t_GeoOutputs out{};
  const std::string error = ReadGeoValues(form, JoinValues(m_options.values), m_options.radians, in);
  if (!error.empty()) return ReportUsage("geo " + m_name, error);
  const eGeoOutcome outcome = form.compute(in, out);
  if (outcome == eGeoOutcome::BadInput) return ReportUsage("geo " + m_name, form.failure);
  const S_GeoResult result = {form, outcome == eGeoOutcome::Done, out, m_options.radians};
  m_text = m_options.json ? GeoJson(result, std::nullopt) : GeoTable(result);
  return output.Write(*this);
}

int C_GeoCalculation::RunOnLines(const S_GeoForm& form, C_OutputRun& output) const {
  S_InputOptions input;
  input.progress = S_InputOptions::eProgress::None;  // the values may be typed
  C_GeoJob job(form, m_options, output.Output());
  return output.Run(input, job, job, [&] { return job.Judge(); });
}

constexpr char kConvertHelp[] =
    "Geodetic coordinates to Earth-centered, Earth-fixed ones (ECEF) and back, on WGS-84.\n\n"
    "Examples:\n"
    "  velagnss geo convert 48.2 11.4 560                             latitude longitude height\n"
    "  velagnss geo convert --from ecef 4175176.1 841847.7 4732244.5  X Y Z\n"
    "  velagnss geo convert --json < points.txt                       one point per line\n\n"
    "Degrees, north and east positive; meters; the height is above the ellipsoid.\n";
constexpr char kInverseHelp[] =
    "Distance and azimuths from one point to another, on the surface of WGS-84.\n\n"
    "Examples:\n"
    "  velagnss geo inverse 48.2 11.4 -33.9 151.2         latitude longitude, twice\n"
    "  velagnss geo inverse --json < pairs.txt            one pair per line\n\n"
    "The azimuth is taken at the first point, the back azimuth at the second one, toward the first; both count from\n"
    "north through east. Points almost opposite each other on the Earth have no result.\n";
constexpr char kLookHelp[] =
    "Azimuth, elevation and range of a target, and the target in the station's local frame.\n\n"
    "Examples:\n"
    "  velagnss geo look 48.2 11.4 560 50 20 20200000     station and target: latitude longitude height\n"
    "  velagnss geo look --json < pairs.txt               one pair per line\n\n"
    "North, east and up are meters from the station; the elevation is above the plane tangent to the ellipsoid.\n";
constexpr char kTimeHelp[] =
    "Calendar date, UTC, GPS week and seconds, and Modified Julian Date, each computed from any other.\n\n"
    "Examples:\n"
    "  velagnss geo time 2024-05-06T12:34:56.5            also '2024-05-06 12:34:56.5' or 2024 5 6 12 34 56.5\n"
    "  velagnss geo time --from utc 2024-05-06T12:34:56Z  leap seconds are added\n"
    "  velagnss geo time --from gps 2313 131696.5         full week number, seconds of the week\n"
    "  velagnss geo time --from mjd 60436 0.52426504      day and fraction, as two numbers or one\n"
    "  velagnss geo time --json < times.txt               one time per line\n\n"
    "All times but those in UTC are GPS time. GPS time - UTC comes from a built-in table of leap seconds; its last "
    "entry\n"
    "is 18 s, from 1 January 2017 on.\n"
    "Dates from 6 January 1980 to 31 December 2100 are accepted.\n";

class C_GeoCommand : public C_Command {
 public:
  void Declare(CLI::App& app) override {
    app.require_subcommand(1);
    for (const auto& [name, help] : {std::pair{"convert", kConvertHelp}, std::pair{"inverse", kInverseHelp},
                                     std::pair{"look", kLookHelp}, std::pair{"time", kTimeHelp}})
      m_calculations.push_back(std::make_unique<C_GeoCalculation>(app, name, help));
  }

  int Run() override {
    for (const auto& calculation : m_calculations)
      if (calculation->IsChosen()) return calculation->Run();
    return eExitUsage;
  }

 private:
  std::vector<std::unique_ptr<C_GeoCalculation>> m_calculations;
};

}  // namespace

const S_CommandEntry kGeoCommand = {
    "geo",
    "Calculate with coordinates and times, given as values or as lines of values.\n\n"
    "Examples:\n"
    "  velagnss geo convert 48.2 11.4 560                 latitude, longitude, height to X, Y, Z\n"
    "  velagnss geo inverse 48.2 11.4 -33.9 151.2         distance and azimuths between two points\n"
    "  velagnss geo look 48.2 11.4 560 50 20 20200000     direction and range to a satellite\n"
    "  velagnss geo time 2024-05-06T12:34:56              GPS week, Modified Julian Date\n\n"
    "On standard input each line is a set of values, separated by spaces, tabs or commas; empty lines and lines that\n"
    "begin with '#' are ignored. A number has a digit before its point: -0.5, not -.5. A line that cannot be parsed "
    "is\n"
    "reported with its number, and the exit code is then 1.\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_GeoCommand>(); }};

}  // namespace Host
