#include "apps/velagnss/sinks/database/RowTable.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace Host {
namespace {

constexpr int kId = 1;
constexpr int kInput = 2;

// Members that no table holds unless it begins with them: the same in each row, or known by the table or the input.
constexpr std::string_view kNotStored[] = {"schema", "input", "event", "protocol", "message", "number"};

bool IsNotStored(std::string_view name) { return std::ranges::find(kNotStored, name) != std::end(kNotStored); }

struct S_TypeOf {
  std::string_view operator()(std::monostate) const { return ""; }
  std::string_view operator()(std::int64_t) const { return "INTEGER"; }
  std::string_view operator()(double) const { return "REAL"; }
  std::string_view operator()(std::string_view) const { return "TEXT"; }
};

std::string_view TypeFor(const S_RowCell& cell) { return ColumnType(cell.name, std::visit(S_TypeOf(), cell.value)); }

std::string ColumnText(std::string_view name, std::string_view type) {
  return fmt::format("{}{}{}", QuotedName(name), type.empty() ? "" : " ", type);
}

}  // namespace

std::vector<S_Column> C_RowTable::ColumnsFor(std::span<const S_Column> columns, const C_RowCells& row) {
  std::vector<S_Column> all(columns.begin(), columns.end());
  for (const S_RowCell& cell : row.All())
    if (!IsNotStored(cell.name) && std::ranges::find(all, cell.name, &S_Column::name) == all.end())
      all.push_back({cell.name, TypeFor(cell)});
  return all;
}

C_RowTable::C_RowTable(C_Sqlite& database, std::string name, std::span<const S_Column> columns, bool replaces)
    : m_database(database), m_name(std::move(name)), m_replaces(replaces) {
  std::string definition = "id INTEGER PRIMARY KEY, input INTEGER NOT NULL REFERENCES inputs";
  for (const S_Column& column : columns) definition += ", " + ColumnText(column.name, column.type);
  m_database.Execute(fmt::format("CREATE TABLE IF NOT EXISTS {} ({})", QuotedName(m_name), definition));
  Load();
}

void C_RowTable::Load() {
  m_columns.clear();
  m_targets.clear();
  m_insert = {};
  C_Statement columns = m_database.Prepare(fmt::format("PRAGMA table_info({})", QuotedName(m_name)));
  for (int at = 1; columns.Step(); ++at) m_columns[columns.Text(1)] = at;
}

bool C_RowTable::Put(std::int64_t input, const std::int64_t* offset, const C_RowCells& cells) {
  std::int64_t key = 0;
  if (offset != nullptr && !MakeKey(input, *offset, key))
    throw C_SqliteError("has no room for more inputs, or for one as long as this; begin a new file");
  FindColumns(cells.All());
  if (!m_insert.IsPrepared()) PrepareInsert();
  const auto run = [&](C_Statement& statement) {
    if (offset != nullptr) statement.Bind(kId, key);
    statement.Bind(kInput, input);
    BindCells(statement, cells.All());
    statement.Step();
    statement.Reset();
    return m_database.RowsChanged() > 0;
  };
  const bool isNew = (!m_wasKnown && run(m_insert)) || run(m_repeat);
  m_wasKnown = !isNew;
  return isNew;
}

void C_RowTable::FindColumns(const std::vector<S_RowCell>& cells) {
  if (m_targets.size() < cells.size()) m_targets.resize(cells.size());
  auto target = m_targets.begin();
  for (const S_RowCell& cell : cells) {
    if (target->name != cell.name) *target = {std::string(cell.name), ColumnOf(cell)};
    ++target;
  }
}

int C_RowTable::ColumnOf(const S_RowCell& cell) {
  const bool isOurs = cell.name == "id" || cell.name == "input";
  const auto found = m_columns.find(cell.name);
  if (found != m_columns.end() && !isOurs) return found->second;
  return isOurs || IsLeftOut(cell) ? kLeftOut : AddColumn(cell);
}

// An object that is null needs no column if it has been seen with members.
bool C_RowTable::IsLeftOut(const S_RowCell& cell) const {
  if (IsNotStored(cell.name)) return true;
  const std::string prefix = fmt::format("{}_", cell.name);
  const auto first = m_columns.lower_bound(prefix);
  return std::holds_alternative<std::monostate>(cell.value) && first != m_columns.end() &&
         first->first.starts_with(prefix);
}

int C_RowTable::AddColumn(const S_RowCell& cell) {
  m_database.Execute(
      fmt::format("ALTER TABLE {} ADD COLUMN {}", QuotedName(m_name), ColumnText(cell.name, TypeFor(cell))));
  m_insert = {};
  const int at = static_cast<int>(m_columns.size()) + 1;
  return m_columns[std::string(cell.name)] = at;
}

// A statement that may replace or update a row makes SQLite copy each page before it changes it, so that it can undo
// half of a statement. One that ignores what is there never does, and nearly all rows are new.
//
// A sentence may have been the last of an input that has grown since: its CR is there now. All else of a frame is as it
// was.
void C_RowTable::PrepareInsert() {
  std::string values = "?";
  for (std::size_t column = 1; column < m_columns.size(); ++column) values += ",?";
  m_insert = m_database.Prepare(fmt::format("INSERT OR IGNORE INTO {} VALUES ({})", QuotedName(m_name), values));
  m_repeat = m_database.Prepare(fmt::format("INSERT{} INTO {} VALUES ({}){}", m_replaces ? " OR REPLACE" : "",
                                            QuotedName(m_name), values,
                                            m_replaces ? ""
                                                       : " ON CONFLICT (id) DO UPDATE SET length = excluded.length"
                                                         " WHERE length <> excluded.length"));
}

void C_RowTable::BindCells(C_Statement& statement, const std::vector<S_RowCell>& cells) const {
  auto target = m_targets.begin();
  for (const S_RowCell& cell : cells) {
    const int at = (target++)->at;
    if (at == kLeftOut) continue;
    std::visit(
        [&statement, at](const auto& value) {
          if constexpr (!std::is_same_v<std::decay_t<decltype(value)>, std::monostate>) statement.Bind(at, value);
        },
        cell.value);
  }
}

}  // namespace Host
