#include "apps/velagnss/sinks/database/RowStore.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace Host {
namespace {

// A view may join 500 tables, as SQLite is built. Only messages with a decoder have a table, and these are fewer, so
// this limit is never met; nothing that a stream sends may depend on that.
constexpr std::size_t kMostTables = 400;

// Rows have up to some kilobytes: on small pages many would not fit, and each page costs four system calls. But each
// commit writes at least one page of each table that it changes, and flash memory wears out.
constexpr int kPageSize = 32'768;
constexpr int kLivePageSize = 4'096;

// Of the last bytes of an input.
constexpr std::string_view kCutOff = "cut off at the end of the input";

}  // namespace

C_RowStore::C_RowStore(const std::string& file, const std::atomic<bool>& isStopping, bool isLive)
    : m_database(file, isStopping) {
  CheckOwner();
  m_database.PrepareToWrite(isLive ? kLivePageSize : kPageSize);
  m_begin = m_database.Prepare("BEGIN IMMEDIATE");
  m_commit = m_database.Prepare("COMMIT");
  m_schemaVersion = m_database.Prepare("PRAGMA schema_version");
  Begin();
  Commit();
}

// Before anything is written: the file may be somebody else's. In one transaction, because another program may be
// creating the tables at this moment.
void C_RowStore::CheckOwner() {
  m_database.Execute("BEGIN");
  const bool isOurs = m_database.Number("PRAGMA application_id") == kApplicationId;
  const bool isEmpty = m_database.Number("SELECT count(*) FROM sqlite_master") == 0;
  const std::int64_t version = m_database.Number("PRAGMA user_version");
  m_database.Execute("COMMIT");
  if (!isOurs && !isEmpty) throw C_SqliteError("is a database of another program; name another file");
  if (isOurs && version > kDatabaseVersion)
    throw C_SqliteError(
        fmt::format("has tables of version {}, and this program knows those up to version {}; use a "
                    "newer one, or name another file",
                    version, kDatabaseVersion));
}

// Another program may have added columns and tables, or created all of them, since the last transaction.
void C_RowStore::Begin() {
  if (m_isInTransaction) return;
  m_begin.Step();
  m_begin.Reset();
  m_isInTransaction = true;
  m_schemaVersion.Step();
  const std::int64_t schema = m_schemaVersion.Integer(0);
  m_schemaVersion.Reset();
  if (schema == m_knownSchema) return;
  m_database.Number("PRAGMA application_id") == kApplicationId ? LoadTables() : CreateAll();
}

void C_RowStore::CreateAll() {
  m_database.Execute(HeadStatements());
  LoadTables();
  m_database.Execute(ViewStatements());
  m_hasNewTables = true;
}

void C_RowStore::LoadTables() {
  m_tables.clear();
  m_tablesOfFrames.clear();
  for (const S_TableKind& kind : FixedTables())
    m_tables.try_emplace(std::string(kind.name), m_database, std::string(kind.name), kind.columns, kind.replaces);
  C_Statement tables = m_database.Prepare("SELECT name, protocol, message FROM tables");
  while (tables.Step()) {
    const auto [table, isNew] = m_tables.try_emplace(tables.Text(0), m_database, tables.Text(0), FrameColumns(), false);
    m_tablesOfFrames[tables.Text(1) + '/' + tables.Text(2)] = &table->second;
  }
}

void C_RowStore::Commit() {
  if (!m_isInTransaction) return;
  for (const auto& [input, offset] : m_offsets) NoteOffset(input, offset);
  m_offsets.clear();
  if (std::exchange(m_hasNewTables, false)) MakeFramesView();
  m_schemaVersion.Step();
  m_knownSchema = m_schemaVersion.Integer(0);
  m_schemaVersion.Reset();
  m_commit.Step();
  m_commit.Reset();
  m_isInTransaction = false;
}

void C_RowStore::NoteOffset(std::int64_t input, std::int64_t offset) {
  C_Statement note = m_database.Prepare(
      "UPDATE inputs SET committed_offset = max(coalesce(committed_offset, 0), ?2),"
      " last_written = strftime('%Y-%m-%dT%H:%M:%fZ', 'now') WHERE id = ?1");
  note.Bind(1, input);
  note.Bind(2, offset);
  note.Step();
}

// The same input may have another name by now.
std::int64_t C_RowStore::IdOf(const S_InputOrigin& input) {
  const auto [entry, isNew] = m_inputs.try_emplace(input.identity, 0);
  if (!isNew) return entry->second;
  C_Statement note = m_database.Prepare(
      "INSERT INTO inputs (identity, name, first_seen) VALUES (?1, ?2, strftime('%Y-%m-%dT%H:%M:%fZ', 'now'))"
      " ON CONFLICT (identity) DO UPDATE SET name = excluded.name RETURNING id");
  note.Bind(1, std::string_view(input.identity));
  note.Bind(2, std::string_view(input.name));
  note.Step();
  return entry->second = note.Integer(0);
}

void C_RowStore::Put(const S_Piece& piece) {
  Begin();
  const std::int64_t input = IdOf(*piece.input);
  S_Span span;
  m_cells.SetLines(piece.bytes);
  while (m_cells.Next()) PutLine(input, span);
  if (span.last < 0) return;
  ForgetOldEnds(input, span);
  std::int64_t& greatest = m_offsets[input];
  greatest = std::max(greatest, span.last);
}

void C_RowStore::PutLine(std::int64_t input, S_Span& span) {
  const std::string_view protocol = m_cells.Text("protocol");
  C_RowTable& table = protocol.empty() ? TableOfEvent(m_cells.Text("event")) : TableOfFrame(protocol);
  const std::int64_t* const offset = m_cells.Integer("offset");
  ++(table.Put(input, offset, m_cells) ? m_rowsNew : m_rowsKnown);
  if (offset == nullptr) return;
  span = {std::min(span.first, *offset), std::max(span.last, *offset)};
  std::int64_t key = 0;
  if (protocol.empty() && m_cells.Text("why") == kCutOff && MakeKey(input, *offset, key)) m_ends.insert(key);
}

// The stream goes on where an earlier run met its end: that was signaled, or the file has grown since.
void C_RowStore::ForgetOldEnds(std::int64_t input, const S_Span& span) {
  std::int64_t first = 0;
  std::int64_t last = 0;
  MakeKey(input, span.first, first);
  MakeKey(input, span.last, last);
  if (!m_oldEnds.IsPrepared())
    m_oldEnds = m_database.Prepare("SELECT id FROM skipped WHERE id >= ?1 AND id < ?2 AND why = ?3");
  m_oldEnds.Bind(1, first);
  m_oldEnds.Bind(2, last);
  m_oldEnds.Bind(3, kCutOff);
  std::vector<std::int64_t> old;
  while (m_oldEnds.Step())
    if (!m_ends.contains(m_oldEnds.Integer(0))) old.push_back(m_oldEnds.Integer(0));
  m_oldEnds.Reset();
  for (const std::int64_t key : old) m_database.Execute(fmt::format("DELETE FROM skipped WHERE id = {}", key));
}

C_RowTable& C_RowStore::TableOfEvent(std::string_view event) {
  for (const S_TableKind& kind : FixedTables())
    if (kind.event == event) return m_tables.find(kind.name)->second;
  throw C_SqliteError(fmt::format("has no table for '{}'", event));
}

C_RowTable& C_RowStore::TableOfFrame(std::string_view protocol) {
  C_RowTable& other = m_tables.find(kOtherTable)->second;
  if (!m_cells.HasOwnMembers()) return other;
  const std::string_view message = m_cells.Text("message");
  m_frameKind.assign(protocol).append(1, '/').append(message);
  const auto found = m_tablesOfFrames.find(m_frameKind);
  if (found != m_tablesOfFrames.end()) return *found->second;
  return m_tables.size() < kMostTables ? AddTable(TableName(protocol, message), protocol, message) : other;
}

C_RowTable& C_RowStore::AddTable(const std::string& name, std::string_view protocol, std::string_view message) {
  C_Statement note = m_database.Prepare("INSERT INTO tables VALUES (?1, ?2, ?3)");
  note.Bind(1, std::string_view(name));
  note.Bind(2, protocol);
  note.Bind(3, message);
  note.Step();
  const std::vector<S_Column> columns = C_RowTable::ColumnsFor(FrameColumns(), m_cells);
  C_RowTable& table = m_tables.try_emplace(name, m_database, name, columns, false).first->second;
  m_tablesOfFrames[m_frameKind] = &table;
  m_hasNewTables = true;
  return table;
}

// All frames, whatever their table.
void C_RowStore::MakeFramesView() {
  constexpr std::string_view kColumns = "result, error, decoded, utc";
  std::string view = fmt::format(
      "DROP VIEW IF EXISTS frames; CREATE VIEW frames AS"
      " SELECT id, input, \"offset\", length, arrival, protocol, message, {} FROM other",
      kColumns);
  C_Statement tables = m_database.Prepare("SELECT name, protocol, message FROM tables ORDER BY name");
  while (tables.Step())
    view += fmt::format(" UNION ALL SELECT id, input, \"offset\", length, arrival, {}, {}, {} FROM {}",
                        QuotedText(tables.Text(1)), QuotedText(tables.Text(2)), kColumns, QuotedName(tables.Text(0)));
  m_database.Execute(view);
}

}  // namespace Host
