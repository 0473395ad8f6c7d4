#include "apps/velagnss/commands/GeoCommand.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/geo/GeoForms.h"
#include "apps/velagnss/geo/GeoText.h"
#include "apps/velagnss/input/InputLoop.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/sinks/Output.h"

namespace Host {
namespace {

struct S_GeoOptions {
  std::vector<std::string> values;
  std::string from;
  bool radians = false;
  bool json = false;
};

// Lines in, a result per line out. A line that does not read is reported, and the next one is read.
class C_GeoJob : public C_StreamJob {
 public:
  C_GeoJob(const S_GeoForm& form, const S_GeoOptions& options, C_Output& output)
      : m_form(form), m_options(options), m_output(output) {}

  void BeginInput(const std::string&) override {}
  void Feed(std::span<const unsigned char> bytes) override;
  void EndInput() override;
  bool WantsMore() const override { return !m_output.HasFailed(); }
  void BeforeWait() override { Flush(); }

  // True when there was a line with values, and none that did not read.
  bool IsAllGood() const { return m_results > 0 && m_badLines == 0; }

 private:
  static constexpr std::size_t kMaxLine = 4096;
  static constexpr std::size_t kFlushSize = 1 << 16;

  void EndLine();
  void Compute();
  void Show(const S_GeoResult& result);
  void RejectLine(std::string_view why);
  void Flush();

  const S_GeoForm& m_form;
  const S_GeoOptions& m_options;
  C_Output& m_output;
  std::string m_line;
  C_JsonWriter m_json;
  std::string m_text;
  std::uint64_t m_number = 0;  // of the line
  std::uint64_t m_results = 0;
  std::uint64_t m_badLines = 0;
};

// Of a line without end no more is kept than shows that it is too long.
void C_GeoJob::Feed(std::span<const unsigned char> bytes) {
  for (const unsigned char byte : bytes) {
    if (byte == '\n')
      EndLine();
    else if (m_line.size() <= kMaxLine)
      m_line += static_cast<char>(byte);
  }
}

void C_GeoJob::EndInput() {
  if (!m_line.empty()) EndLine();
  Flush();
}

void C_GeoJob::EndLine() {
  ++m_number;
  if (m_line.size() > kMaxLine)
    RejectLine(fmt::format("longer than {} characters", kMaxLine));
  else if (!IsGeoComment(m_line))
    Compute();
  m_line.clear();
}

void C_GeoJob::Compute() {
  t_GeoInputs in{};
  const std::string error = ReadGeoValues(m_form, m_line, m_options.radians, in);
  if (!error.empty()) return RejectLine(error);
  t_GeoOutputs out{};
  const eGeoOutcome outcome = m_form.compute(in, out);
  if (outcome == eGeoOutcome::BadInput) return RejectLine(m_form.failure);
  Show({m_form, outcome == eGeoOutcome::Done, out, m_options.radians});
}

void C_GeoJob::Show(const S_GeoResult& result) {
  ++m_results;
  if (m_options.json)
    WriteGeoJson(m_json, result, m_number);
  else
    m_text += GeoLine(result);
  if (m_text.size() + m_json.Text().size() >= kFlushSize) Flush();
}

// What was calculated before is shown before.
void C_GeoJob::RejectLine(std::string_view why) {
  ++m_badLines;
  Flush();
  ReportError(fmt::format("line {}: {}", m_number, why));
}

void C_GeoJob::Flush() {
  m_output.Write(m_options.json ? m_json.Text() : std::string_view(m_text));
  m_json.Clear();
  m_text.clear();
}

std::string JoinValues(const std::vector<std::string>& values) {
  std::string line;
  for (const std::string& value : values) line += value + ' ';
  return line;
}

// One of the calculations, with its arguments.
class C_GeoCalculation {
 public:
  C_GeoCalculation(CLI::App& geo, const char* name, const char* description);

  bool IsChosen() const { return m_app.parsed(); }
  int Run() const;

 private:
  int RunOnArguments(const S_GeoForm& form, C_Output& output) const;
  int RunOnLines(const S_GeoForm& form, C_Output& output) const;
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
  std::string sides;
  for (const S_GeoForm& form : GeoForms())
    if (form.command == m_name && !form.from.empty()) sides += (sides.empty() ? "" : ", ") + std::string(form.from);
  if (sides.empty()) return;
  m_app.add_option("--from", m_options.from, "what the values are: " + sides + "; the first when not given")
      ->option_text("FORM")
      ->check([name = m_name, sides](const std::string& from) {
        return FindGeoForm(name, from) != nullptr && !from.empty() ? "" : "'" + from + "' is none of " + sides;
      });
}

int C_GeoCalculation::Run() const {
  const S_GeoForm& form = *FindGeoForm(m_name, m_options.from);
  C_Output output;
  if (!output.Open("-")) return eExitOutput;
  const bool readsLines = m_options.values.empty() || m_options.values == std::vector<std::string>{"-"};
  const int code = readsLines ? RunOnLines(form, output) : RunOnArguments(form, output);
  output.Close();
  return output.HasFailed() && !output.HasReaderLeft() ? eExitOutput : code;
}

int C_GeoCalculation::RunOnArguments(const S_GeoForm& form, C_Output& output) const {
  t_GeoInputs in{};
  t_GeoOutputs out{};
  const std::string error = ReadGeoValues(form, JoinValues(m_options.values), m_options.radians, in);
  if (!error.empty()) return ReportUsage("geo " + m_name, error);
  const eGeoOutcome outcome = form.compute(in, out);
  if (outcome == eGeoOutcome::BadInput) return ReportUsage("geo " + m_name, form.failure);
  const S_GeoResult result{form, outcome == eGeoOutcome::Done, out, m_options.radians};
  C_JsonWriter json;
  if (m_options.json) WriteGeoJson(json, result, std::nullopt);
  output.Write(m_options.json ? json.Text() : GeoTable(result));
  return eExitOk;
}

int C_GeoCalculation::RunOnLines(const S_GeoForm& form, C_Output& output) const {
  C_GeoJob job(form, m_options, output);
  const eExitCode inputCode = RunInputs({}, job);
  if (inputCode != eExitOk) return inputCode;
  return job.IsAllGood() ? eExitOk : eExitData;
}

constexpr char kConvertHelp[] =
    "Geodetic coordinates to Earth-centred, Earth-fixed ones (ECEF), and back, on WGS-84.\n\n"
    "Examples:\n"
    "  velagnss geo convert 48.2 11.4 560                             latitude longitude height\n"
    "  velagnss geo convert --from ecef 4175176.1 841847.7 4732244.5  X Y Z\n"
    "  velagnss geo convert --json < points.txt                       a point per line\n\n"
    "Degrees, north and east positive; metres; the height is above the ellipsoid.\n";
constexpr char kInverseHelp[] =
    "Distance and azimuths from one point to another, on the surface of WGS-84.\n\n"
    "Examples:\n"
    "  velagnss geo inverse 48.2 11.4 -33.9 151.2         latitude longitude, twice\n"
    "  velagnss geo inverse --json < pairs.txt            a pair per line\n\n"
    "The azimuth is that at the first point, the back azimuth at the second one points back to the first: both from\n"
    "north through east. Points almost opposite each other on the Earth have no result.\n";
constexpr char kLookHelp[] =
    "Azimuth, elevation and range of a target, and the target in the station's local frame.\n\n"
    "Examples:\n"
    "  velagnss geo look 48.2 11.4 560 50 20 20200000     station and target: latitude longitude height\n"
    "  velagnss geo look --json < pairs.txt               a pair per line\n\n"
    "North, east and up are metres from the station; the elevation is above the normal plane of the ellipsoid.\n";
constexpr char kTimeHelp[] =
    "Calendar date, GPS week and seconds, and Modified Julian Date: all from one of them.\n\n"
    "Examples:\n"
    "  velagnss geo time 2024-05-06T12:34:56.5            also '2024-05-06 12:34:56.5' or 2024 5 6 12 34 56.5\n"
    "  velagnss geo time --from gps 2313 131696.5         week without roll-over, seconds of the week\n"
    "  velagnss geo time --from mjd 60436 0.52426504      day and fraction, also in one number\n"
    "  velagnss geo time --json < times.txt               a time per line\n\n"
    "All of it is GPS time: no leap seconds are added or taken off. UTC is behind it, by 18 s since 2017.\n"
    "From 6 January 1980 to 31 December 2100.\n";

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
    "Calculations with coordinates and times, on values or lines of them.\n\n"
    "Examples:\n"
    "  velagnss geo convert 48.2 11.4 560                 latitude, longitude, height to X, Y, Z\n"
    "  velagnss geo inverse 48.2 11.4 -33.9 151.2         distance and azimuths between two points\n"
    "  velagnss geo look 48.2 11.4 560 50 20 20200000     where a satellite stands in the sky\n"
    "  velagnss geo time 2024-05-06T12:34:56              GPS week, Modified Julian Date\n\n"
    "Values on standard input stand one set per line, separated by spaces, tabs or commas; empty lines and those that\n"
    "begin with '#' are passed over. A number begins with a digit: -0.5, not -.5. A line that does not read is\n"
    "reported with its number, and the exit code is then 1.\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_GeoCommand>(); }};

}  // namespace Host
