// Rows per second into a database, in a file of the directory for temporary files, with one commit per 50,000 rows:
// from lines of JSON that are there already, from the bytes of a stream, and, as the limit, plain inserts of the same
// rows whose values are in memory as SQLite takes them.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <variant>
#include <vector>

#include "apps/velagnss/nmea/SentenceConverter.h"
#include "apps/velagnss/pipeline/RecordRun.h"
#include "apps/velagnss/relay/UnitMaker.h"
#include "apps/velagnss/sinks/database/RowStore.h"

namespace {

using namespace Host;

constexpr std::size_t kCopies = 24;  // of the sample
constexpr std::size_t kFeed = 1 << 13;
constexpr std::uint64_t kBatch = 50'000;
constexpr int kPageSize = 32'768;  // that of databases of files
const std::atomic<bool> kIsStopping = false;

template <class Take>
void Feed(C_RecordRun& run, const std::string& bytes, const Take& take) {
  run.BeginInput("bench");
  for (std::size_t at = 0; at < bytes.size(); at += kFeed) {
    const std::size_t size = std::min(kFeed, bytes.size() - at);
    run.Feed({{reinterpret_cast<const unsigned char*>(bytes.data()) + at, size}, {}, false});
    take();
  }
  run.EndInput();
  take();
}

S_RunOptions AllProtocols() { return {{C_RawDataMessage::eAllProtocols}, std::nullopt}; }

std::string ReadSample() {
  std::ifstream file(VELAGNSS_SAMPLE, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string SentencesOf(const std::string& bytes) {
  const auto converter = MakeSentenceConverter();
  C_RecordRun run(AllProtocols(), {converter.get()});
  Feed(run, bytes, [] {});
  return std::string(converter->Text());
}

// One input of many copies: everything that is stored has a place of its own.
const std::string& Stream(bool isSentencesOnly) {
  static const auto repeat = [](const std::string& bytes) {
    std::string stream;
    for (std::size_t copy = 0; copy < kCopies; ++copy) stream += bytes;
    return stream;
  };
  static const std::string mixed = repeat(ReadSample());
  static const std::string sentences = repeat(SentencesOf(ReadSample()));
  return isSentencesOnly ? sentences : mixed;
}

// Gone, with its log, at the end.
class C_DatabaseFile {
 public:
  C_DatabaseFile()
      : m_path(std::filesystem::temp_directory_path() / ("database_bench." + std::to_string(getpid()) + ".db")) {
    Remove();
  }
  ~C_DatabaseFile() { Remove(); }
  C_DatabaseFile(const C_DatabaseFile&) = delete;
  C_DatabaseFile& operator=(const C_DatabaseFile&) = delete;
  const std::string& Path() const { return m_path.native(); }

 private:
  void Remove() const {
    for (const char* part : {"", "-wal", "-shm"}) std::filesystem::remove(m_path.native() + part);
  }
  std::filesystem::path m_path;
};

// Takes units as they are made.
class C_Making {
 public:
  explicit C_Making() : m_units(MakeUnits(eUnits::Rows, {}, false)) {
    m_units->SetInput(std::make_shared<const S_InputOrigin>(S_InputOrigin{"bench", "bench"}));
  }
  template <class Put>
  void Run(const std::string& bytes, const Put& put) {
    C_RecordRun run(AllProtocols(), {&m_units->Consumer()});
    Feed(run, bytes, [&] {
      if (const t_Piece piece = m_units->Take()) put(*piece);
    });
  }

 private:
  std::unique_ptr<C_UnitMaker> m_units;
};

std::uint64_t Rows(const C_RowStore& store) { return store.RowsNew() + store.RowsKnown(); }

class C_Storing {
 public:
  explicit C_Storing(const std::string& file) : m_store(file, kIsStopping) {}
  void Put(const S_Piece& piece) {
    m_store.Put(piece);
    if (Rows(m_store) - m_committed < kBatch) return;
    m_store.Commit();
    m_committed = Rows(m_store);
  }
  std::uint64_t Finish() {
    m_store.Commit();
    return Rows(m_store);
  }

 private:
  C_RowStore m_store;
  std::uint64_t m_committed = 0;
};

void Stored(benchmark::State& state, bool isSentencesOnly) {
  std::vector<S_Piece> pieces;
  C_Making().Run(Stream(isSentencesOnly), [&](const S_Piece& piece) { pieces.push_back(piece); });
  std::uint64_t rows = 0;
  for (auto _ : state) {
    const C_DatabaseFile file;
    C_Storing storing(file.Path());
    for (const S_Piece& piece : pieces) storing.Put(piece);
    rows += storing.Finish();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(rows));
}

void DecodedAndStored(benchmark::State& state, bool isSentencesOnly) {
  std::uint64_t rows = 0;
  for (auto _ : state) {
    const C_DatabaseFile file;
    C_Storing storing(file.Path());
    C_Making().Run(Stream(isSentencesOnly), [&](const S_Piece& piece) { storing.Put(piece); });
    rows += storing.Finish();
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(rows));
}

using t_Value = std::variant<std::monostate, std::int64_t, double, std::string>;

struct S_Table {
  std::string create;
  std::string insert;
  std::vector<std::vector<t_Value>> rows;
};

t_Value ValueAt(sqlite3_stmt* statement, int column) {
  switch (sqlite3_column_type(statement, column)) {
    case SQLITE_INTEGER:
      return std::int64_t{sqlite3_column_int64(statement, column)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, column);
    case SQLITE_TEXT:
      return std::string(reinterpret_cast<const char*>(sqlite3_column_text(statement, column)));
    default:
      return {};
  }
}

void ReadRows(sqlite3* database, const std::string& name, S_Table& table) {
  sqlite3_stmt* rows = nullptr;
  sqlite3_prepare_v2(database, ("SELECT * FROM \"" + name + "\" ORDER BY id").c_str(), -1, &rows, nullptr);
  const int columns = sqlite3_column_count(rows);
  for (int column = 0; column < columns; ++column) table.insert += column == 0 ? "?" : ",?";
  table.insert = "INSERT INTO \"" + name + "\" VALUES (" + table.insert + ")";
  while (sqlite3_step(rows) == SQLITE_ROW) {
    std::vector<t_Value>& row = table.rows.emplace_back();
    for (int column = 0; column < columns; ++column) row.push_back(ValueAt(rows, column));
  }
  sqlite3_finalize(rows);
}

std::vector<S_Table> StoredTables(bool isSentencesOnly) {
  const C_DatabaseFile file;
  {
    C_Storing storing(file.Path());
    C_Making().Run(Stream(isSentencesOnly), [&](const S_Piece& piece) { storing.Put(piece); });
    storing.Finish();
  }
  C_Sqlite database(file.Path(), kIsStopping);
  C_Statement names = database.Prepare("SELECT name, sql FROM sqlite_master WHERE type = 'table' AND name <> 'tables'");
  std::vector<S_Table> tables;
  sqlite3* raw = nullptr;
  sqlite3_open(file.Path().c_str(), &raw);
  while (names.Step()) ReadRows(raw, names.Text(0), tables.emplace_back(S_Table{names.Text(1), {}, {}}));
  sqlite3_close(raw);
  return tables;
}

void BindAll(C_Statement& insert, const std::vector<t_Value>& row) {
  for (std::size_t at = 0; at < row.size(); ++at) {
    const int place = static_cast<int>(at) + 1;
    if (const auto* whole = std::get_if<std::int64_t>(&row[at]))
      insert.Bind(place, *whole);
    else if (const auto* real = std::get_if<double>(&row[at]))
      insert.Bind(place, *real);
    else if (const auto* text = std::get_if<std::string>(&row[at]))
      insert.Bind(place, std::string_view(*text));
  }
}

// The rows of one table after those of another: what SQLite does best.
void PlainInserts(benchmark::State& state, bool isSentencesOnly) {
  const std::vector<S_Table> tables = StoredTables(isSentencesOnly);
  std::uint64_t rows = 0;
  for (auto _ : state) {
    const C_DatabaseFile file;
    C_Sqlite database(file.Path(), kIsStopping);
    database.PrepareToWrite(kPageSize);
    database.Execute("BEGIN");
    for (const S_Table& table : tables) {
      database.Execute(table.create);
      C_Statement insert = database.Prepare(table.insert);
      for (const std::vector<t_Value>& row : table.rows) {
        BindAll(insert, row);
        insert.Step();
        insert.Reset();
        if (++rows % kBatch == 0) database.Execute("COMMIT; BEGIN");
      }
    }
    database.Execute("COMMIT");
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(rows));
}

BENCHMARK_CAPTURE(PlainInserts, Sentences, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Stored, Sentences, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DecodedAndStored, Sentences, true)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(PlainInserts, Mixed, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(Stored, Mixed, false)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(DecodedAndStored, Mixed, false)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
