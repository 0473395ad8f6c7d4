#include "apps/velagnss/net/ntrip/SourceTable.h"

#include <fmt/core.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <tuple>

#include "apps/velagnss/net/ntrip/HttpHead.h"
#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/EditDistance.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using eColumn = S_TableColumn::eKind;

constexpr std::string_view kLongitude = "longitude_deg";

constexpr S_TableColumn kStreamColumns[] = {
    {"mount"},
    {"identifier"},
    {"format"},
    {"format_details"},
    {"carrier", eColumn::Number},
    {"systems"},
    {"network"},
    {"country"},
    {"latitude_deg", eColumn::Number},
    {kLongitude, eColumn::Number},
    {"needs_gga", eColumn::Flag},
    {"is_network", eColumn::Flag},
    {"generator"},
    {"compression"},
    {"authentication"},
    {"fee"},
    {"bit_rate", eColumn::Number},
    {"misc"},
};
constexpr S_TableColumn kCasterColumns[] = {
    {"host"},
    {"port", eColumn::Number},
    {"identifier"},
    {"operator"},
    {"accepts_gga", eColumn::Flag},
    {"country"},
    {"latitude_deg", eColumn::Number},
    {kLongitude, eColumn::Number},
    {"fallback_host"},
    {"fallback_port", eColumn::Number},
    {"misc"},
};
constexpr S_TableColumn kNetworkColumns[] = {
    {"identifier"},  {"operator"},    {"authentication"}, {"fee"},
    {"web_network"}, {"web_streams"}, {"registration"},   {"misc"},
};

constexpr struct {
  std::string_view mark;
  S_TableRow::eKind kind;
  std::span<const S_TableColumn> columns;
} kKinds[] = {
    {"STR;", S_TableRow::eKind::Stream, kStreamColumns},
    {"CAS;", S_TableRow::eKind::Caster, kCasterColumns},
    {"NET;", S_TableRow::eKind::Network, kNetworkColumns},
};

constexpr std::string_view kLastLine = "ENDSOURCETABLE";

std::string_view Trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

// Splits at ';' outside of quotes, into at most `count` fields: the last one gets the rest. Quotes that are not in
// pairs are text, as in 5".
std::vector<std::string> SplitRow(std::string_view line, std::size_t count) {
  const bool hasQuotes = std::count(line.begin(), line.end(), '"') % 2 == 0;
  std::vector<std::string> fields(1);
  bool isQuoted = false;
  for (const char c : line) {
    if (c == '"' && hasQuotes)
      isQuoted = !isQuoted;
    else if (c == ';' && !isQuoted && fields.size() < count)
      fields.emplace_back();
    else
      fields.back() += c;
  }
  for (std::string& field : fields) field = Trimmed(field);
  fields.resize(count);
  return fields;
}

void ReadLine(std::string_view line, S_SourceTable& table) {
  for (const auto& kind : kKinds)
    if (line.starts_with(kind.mark))
      table.rows.push_back({kind.kind, SplitRow(line.substr(kind.mark.size()), kind.columns.size())});
}

}  // namespace

std::span<const S_TableColumn> S_TableRow::Columns() const {
  return std::find_if(std::begin(kKinds), std::end(kKinds), [this](const auto& row) { return row.kind == kind; })
      ->columns;
}

const std::string& S_TableRow::operator[](std::string_view column) const {
  const std::span<const S_TableColumn> columns = Columns();
  const auto found = std::find_if(columns.begin(), columns.end(), [column](const auto& c) { return c.name == column; });
  return fields.at(static_cast<std::size_t>(found - columns.begin()));
}

// Some tables count longitudes from 0 to 360 degrees.
double S_TableRow::Number(std::string_view column) const {
  std::string_view text = (*this)[column];
  if (text.starts_with('+')) text.remove_prefix(1);
  double number = 0;
  if (!ParseWhole(text, number) || !std::isfinite(number)) return std::numeric_limits<double>::quiet_NaN();
  return column == kLongitude && number > 180 ? number - 360 : number;
}

const S_TableRow* S_SourceTable::Find(std::string_view mount) const {
  const auto found = std::find_if(rows.begin(), rows.end(), [mount](const S_TableRow& row) {
    return row.kind == S_TableRow::eKind::Stream && row["mount"] == mount;
  });
  return found == rows.end() ? nullptr : &*found;
}

S_SourceTable ReadSourceTable(std::string_view text) {
  S_SourceTable table;
  while (!text.empty() && !table.isComplete && table.rows.size() < kMaxTableRows) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = Trimmed(text.substr(0, end));
    table.isComplete = line == kLastLine;
    ReadLine(line, table);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return table;
}

// Only the end of the text is looked at: it is asked for with each piece of a table.
bool EndsSourceTable(std::string_view text) {
  constexpr std::size_t kLook = 64;
  text = text.substr(text.size() - std::min(text.size(), kLook));
  const std::size_t last = text.find_last_not_of(" \t\r\n");
  if (last == std::string_view::npos) return false;
  text = text.substr(0, last + 1);
  return text.ends_with(kLastLine) &&
         (text.size() == kLastLine.size() || text[text.size() - kLastLine.size() - 1] == '\n');
}

// Another case first, then names with the same beginning or few differences.
std::vector<std::string> SimilarMounts(const S_SourceTable& table, std::string_view mount) {
  constexpr std::size_t kMost = 3;
  constexpr std::size_t kMaxName = 100;  // the effort grows with the lengths
  const std::string wanted = InLowerCase(mount.substr(0, kMaxName));
  std::vector<std::tuple<std::size_t, std::string>> found;
  for (const S_TableRow& row : table.rows) {
    if (row.kind != S_TableRow::eKind::Stream || row["mount"].size() > kMaxName) continue;
    const std::string name = InLowerCase(row["mount"]);
    const std::size_t distance = EditDistance(name, wanted);
    const bool hasBeginning = wanted.size() >= kMost && (name.starts_with(wanted) || wanted.starts_with(name));
    if (distance <= std::min<std::size_t>(2, wanted.size() / 2) || (hasBeginning && !name.empty()))
      found.emplace_back(distance, row["mount"]);
  }
  std::sort(found.begin(), found.end());
  std::vector<std::string> names;
  for (const auto& [distance, name] : found)
    if (names.size() < kMost && (names.empty() || names.back() != name)) names.push_back(name);
  return names;
}

std::string WhyTable(const S_SourceTable& table, std::string_view mount) {
  if (table.Find(mount) != nullptr)
    return "the caster sends its source table instead of the stream: the mount is idle, or needs another account";
  const std::vector<std::string> similar = SimilarMounts(table, mount);
  const std::string why = fmt::format("the caster has no mount '{}'", Printable(mount));
  if (similar.empty()) return why + "; 'velagnss ntrip-table' lists those it has";
  return fmt::format("{}; similar: {}", why, Printable(JoinNames(similar, std::identity(), ", ")));
}

}  // namespace Host
