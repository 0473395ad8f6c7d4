#include "apps/velagnss/commands/NtripTableCommand.h"

#include <fmt/core.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <span>

#include "apps/velagnss/commands/Arguments.h"
#include "apps/velagnss/input/live/PositionFeed.h"
#include "apps/velagnss/net/Credentials.h"
#include "apps/velagnss/net/StopOnSignal.h"
#include "apps/velagnss/net/ntrip/NtripClient.h"
#include "apps/velagnss/net/ntrip/Request.h"
#include "apps/velagnss/net/ntrip/SourceTable.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/os/Signals.h"
#include "apps/velagnss/sinks/OutputRun.h"
#include "apps/velagnss/text/AppendFormat.h"
#include "apps/velagnss/text/JsonWriter.h"
#include "apps/velagnss/text/Units.h"
#include "geo/Geodesy.h"

namespace Host {
namespace {

using eAnswer = S_NtripAnswer::eKind;
using eRow = S_TableRow::eKind;

constexpr double kNoDistance = std::numeric_limits<double>::quiet_NaN();

// A row, and how far its place is from the user's.
struct S_Entry {
  const S_TableRow* row;
  double distance;  // m; NaN when one of the places is not known
};

double DistanceTo(const S_TableRow& row, const std::optional<S_FixedPosition>& position) {
  if (!position || row.kind == eRow::Network) return kNoDistance;
  const double latitude = row.Number("latitude_deg");
  const double longitude = row.Number("longitude_deg");
  if (!(std::abs(latitude) <= 90) || !(std::abs(longitude) <= 180)) return kNoDistance;
  double distance = 0, forward = 0, back = 0;
  ALGO::GeodesicInverse(position->latitude * kRadiansPerDegree, position->longitude * kRadiansPerDegree,
                        latitude * kRadiansPerDegree, longitude * kRadiansPerDegree, ALGO::kWgs84A, ALGO::kWgs84F,
                        forward, back, distance);
  return IsKnown(distance) ? distance : kNoDistance;
}

bool IsNearer(const S_Entry& a, const S_Entry& b) {
  if (a.distance < b.distance || (std::isnan(b.distance) && !std::isnan(a.distance))) return true;
  if (b.distance < a.distance || (std::isnan(a.distance) && !std::isnan(b.distance))) return false;
  return a.row->fields[0] < b.row->fields[0];
}

// Casters first, networks, then streams: sorted by distance, or where there is none by their first field.
std::vector<S_Entry> Sorted(const S_SourceTable& table, const std::optional<S_FixedPosition>& position,
                            std::string_view filter) {
  const std::string wanted = InLowerCase(filter);
  const auto isWanted = [&wanted](const std::string& field) {
    return InLowerCase(field).find(wanted) != std::string::npos;
  };
  std::vector<S_Entry> entries;
  for (const eRow kind : {eRow::Caster, eRow::Network, eRow::Stream}) {
    const auto begin = static_cast<std::ptrdiff_t>(entries.size());
    for (const S_TableRow& row : table.rows)
      if (row.kind == kind && std::any_of(row.fields.begin(), row.fields.end(), isWanted))
        entries.push_back({&row, DistanceTo(row, position)});
    std::stable_sort(entries.begin() + begin, entries.end(), &IsNearer);
  }
  return entries;
}

void WriteField(C_JsonWriter& json, const S_TableRow& row, const S_TableColumn& column) {
  const std::string& text = row[column.name];
  json.Key(column.name);
  if (column.kind == S_TableColumn::eKind::Number)
    json.Number(row.Number(column.name));
  else if (column.kind == S_TableColumn::eKind::Flag && (text == "0" || text == "1"))
    json.Boolean(text == "1");
  else if (column.kind == S_TableColumn::eKind::Flag || text.empty())
    json.Null();
  else
    json.Utf8(text);
}

void WriteEntry(C_JsonWriter& json, const S_Entry& entry, bool hasDistance) {
  constexpr std::string_view kKinds[] = {"stream", "caster", "network"};
  json.BeginObject();
  json.Key("schema").Integer(kSchemaVersion);
  json.Key("report").Name(kKinds[static_cast<std::size_t>(entry.row->kind)]);
  for (const S_TableColumn& column : entry.row->Columns()) WriteField(json, *entry.row, column);
  if (hasDistance) json.Key("distance_m").Number(entry.distance);
  json.EndObject();
  json.EndLine();
}

// What a table for people shows of a stream.
struct S_ShownColumn {
  std::string_view title;
  std::string (*text)(const S_Entry& entry);
};

template <std::size_t size>
std::string Field(const S_Entry& entry, const char (&name)[size]) {
  return Printable((*entry.row)[name]);
}

std::string Degrees(const S_Entry& entry, std::string_view name) {
  const double degrees = entry.row->Number(name);
  return std::isnan(degrees) ? "-" : fmt::format("{:.2f}", degrees);
}

constexpr S_ShownColumn kShownColumns[] = {
    {"mount", [](const S_Entry& entry) { return Field(entry, "mount"); }},
    {"place", [](const S_Entry& entry) { return Field(entry, "identifier"); }},
    {"format", [](const S_Entry& entry) { return Field(entry, "format"); }},
    {"systems", [](const S_Entry& entry) { return Field(entry, "systems"); }},
    {"latitude", [](const S_Entry& entry) { return Degrees(entry, "latitude_deg"); }},
    {"longitude", [](const S_Entry& entry) { return Degrees(entry, "longitude_deg"); }},
    {"gga", [](const S_Entry& entry) -> std::string { return (*entry.row)["needs_gga"] == "1" ? "needed" : "-"; }},
    {"account",
     [](const S_Entry& entry) -> std::string {
       const std::string& kind = (*entry.row)["authentication"];
       return kind == "B" || kind == "D" ? "needed" : "-";
     }},
    {"fee", [](const S_Entry& entry) -> std::string { return (*entry.row)["fee"] == "Y" ? "yes" : "-"; }},
    {"km",
     [](const S_Entry& entry) -> std::string {
       return std::isnan(entry.distance) ? "-" : fmt::format("{:.1f}", entry.distance / 1000);
     }},
};

using t_Line = std::vector<std::string>;

// Each column is as wide as its widest text, up to a limit. What is longer is cut, but for the first, the name to ask
// for.
std::string Aligned(const std::vector<t_Line>& lines) {
  constexpr std::size_t kWidest = 24;
  constexpr std::size_t kWidestName = 100;  // every line is filled up to it
  std::vector<std::size_t> widths(lines[0].size());
  for (const t_Line& line : lines)
    for (std::size_t i = 0; i < line.size(); ++i)
      widths[i] = std::max(widths[i], std::min(line[i].size(), i == 0 ? kWidestName : kWidest));
  std::string text;
  for (const t_Line& line : lines) {
    for (std::size_t i = 0; i < line.size(); ++i)
      AppendFormat(text, "{:<{}.{}}  ", line[i], widths[i], i == 0 ? line[i].size() : widths[i]);
    text.erase(text.find_last_not_of(' ') + 1);
    text += '\n';
  }
  return text;
}

std::string TableText(const std::vector<S_Entry>& entries, bool hasDistance) {
  const auto columns = std::span(kShownColumns).first(std::size(kShownColumns) - (hasDistance ? 0 : 1));
  std::string text;
  std::vector<t_Line> lines(1);
  for (const S_ShownColumn& column : columns) lines[0].emplace_back(column.title);
  for (const S_Entry& entry : entries) {
    if (entry.row->kind == eRow::Caster)
      text += fmt::format("caster {}:{}, {}\n", Field(entry, "host"), Field(entry, "port"), Field(entry, "identifier"));
    if (entry.row->kind == eRow::Network)
      text += fmt::format("network {}, {}\n", Field(entry, "identifier"), Field(entry, "operator"));
    if (entry.row->kind != eRow::Stream) continue;
    t_Line& line = lines.emplace_back();
    for (const S_ShownColumn& column : columns) line.push_back(column.text(entry));
  }
  return text + Aligned(lines);
}

class C_NtripTableCommand : public C_Command, public C_TextBuffer {
 public:
  void Declare(CLI::App& app) override;
  int Run() override;

 private:
  std::string Fetch(S_Address address, std::string& text);
  int Show(const std::string& text);

  C_Await m_await;
  std::string m_name;
  std::string m_credentials;
  std::string m_position;
  std::string m_filter;
  std::string m_output = "-";
  bool m_isJson = false;
};

std::string CheckCaster(const std::string& name) {
  S_Address address;
  if (std::string error = ReadAddress(name, address); !error.empty()) return error;
  if (address.scheme != "ntrip" && address.scheme != "ntrips") return "must begin with ntrip:// or ntrips://";
  return CheckAddress(address, address.scheme == "ntrip" ? kNtripTableForm : kNtripTlsTableForm);
}

void C_NtripTableCommand::Declare(CLI::App& app) {
  app.add_option("CASTER", m_name, "address of the caster: ntrip://host:port, or ntrips:// for TLS")
      ->required()
      ->option_text(" ")
      ->check(&CheckCaster);
  DeclareCredentials(app, m_credentials);
  app.add_option("--position", m_position, "latitude,longitude,height: show distances, the nearest first")
      ->option_text("LIST")
      ->check(&CheckFixedPosition);
  app.add_option("--filter", m_filter, "only rows with this text in one of their fields")->option_text("TEXT");
  app.add_flag("--json", m_isJson, "one JSON object per row");
  DeclareOutput(app, m_output);
}

int C_NtripTableCommand::Run() {
  S_Address address;
  ReadAddress(m_name, address);
  address.path.clear();
  StopOnSignal(m_await);
  std::string text;
  const std::string error = Fetch(address, text);
  if (SignalReceived() != 0) return eExitInput;
  if (error.empty()) return Show(text);
  ReportError(fmt::format("{}: {}", address.Shown(), error));
  return eExitInput;
}

// Returns an error text.
std::string C_NtripTableCommand::Fetch(S_Address address, std::string& text) {
  std::string error = FillAccount(address, m_credentials);
  if (error.empty()) error = CheckAccount(address.user, address.password);
  if (!error.empty()) return error;
  const std::string_view version = OptionOf(address, "version");
  C_NtripClient client(m_await);
  S_NtripAnswer answer = client.Get(address, version == "1" ? 1 : 2, {});
  if (answer.mayBeVersion && version.empty()) answer = client.Get(address, 1, {});
  if (answer.kind == eAnswer::Lost || answer.kind == eAnswer::Refused) return answer.text;
  constexpr std::chrono::seconds kTableTime{60};
  client.ReadText(text, kMaxSourceTable, C_Await::t_Clock::now() + kTableTime, &EndsSourceTable);
  if (BodyOf(text) == eNtripBody::Table) return {};
  const std::string title = TitleOf(text);
  return fmt::format("not a source table{}{}", title.empty() ? "" : " but a page, ", title);
}

int C_NtripTableCommand::Show(const std::string& text) {
  const S_SourceTable table = ReadSourceTable(text);
  if (!table.isComplete) ReportWarning("the source table has no last line: some of it may be missing");
  const std::optional<S_FixedPosition> position = ReadFixedPosition(m_position);
  const std::vector<S_Entry> entries = Sorted(table, position, m_filter);
  C_OutputRun output;
  if (!output.Open(m_output)) return eExitOutput;
  C_JsonWriter json;
  if (m_isJson)
    for (const S_Entry& entry : entries) WriteEntry(json, entry, position.has_value());
  else
    m_text = TableText(entries, position.has_value());
  const int code = m_isJson ? output.Write(json) : output.Write(*this);
  if (code == eExitOk && entries.empty()) ReportWarning("no row of the source table has the text of --filter in it");
  return code != eExitOk ? code : entries.empty() ? eExitData : eExitOk;
}

}  // namespace

const S_CommandEntry kNtripTableCommand = {
    "ntrip-table",
    "List the streams of an NTRIP caster.\n\n"
    "Examples:\n"
    "  velagnss ntrip-table ntrip://caster.example:2101                    all streams, by name\n"
    "  velagnss ntrip-table --position 48.1,11.6,560 ntrip://caster.example   the nearest first\n"
    "  velagnss ntrip-table --filter RTCM --json ntrips://caster.example:443  over TLS, for programs\n",
    []() -> std::unique_ptr<C_Command> { return std::make_unique<C_NtripTableCommand>(); }};

}  // namespace Host
