#include "apps/velagnss/sinks/database/Sqlite.h"

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <iterator>
#include <thread>

namespace Host {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 10s;
constexpr auto kBusyPause = 20ms;

struct S_ErrorText {
  int code;
  std::string_view text;
  bool showsCause;  // the error of the operating system
};
constexpr S_ErrorText kErrors[] = {
    {SQLITE_FULL, "the disk is full; what is committed is safe: make room and run the command again", false},
    {SQLITE_IOERR,
     "cannot be written any further; what is committed is safe: repair the disk and run the command again", true},
    {SQLITE_BUSY, "is locked by another program; end that, or its transaction, and run the command again", false},
    {SQLITE_NOTADB, "is not a database; name another file", false},
    {SQLITE_CANTOPEN, "cannot be opened", true},
    {SQLITE_READONLY, "cannot be written: the file or its directory is read-only", false},
    {SQLITE_CORRUPT, "is damaged; name another file, or restore this one", false},
};

std::string ErrorText(sqlite3* database, int code) {
  const auto* const row = std::ranges::find(kErrors, code & 0xFF, &S_ErrorText::code);
  if (row == std::end(kErrors)) return sqlite3_errmsg(database);
  const int cause = row->showsCause ? sqlite3_system_errno(database) : 0;
  return cause == 0 ? std::string(row->text) : fmt::format("{}: {}", row->text, std::strerror(cause));
}

[[noreturn]] void Fail(sqlite3* database, int code) { throw C_SqliteError(ErrorText(database, code)); }

std::string Quoted(std::string_view text, char mark) {
  std::string quoted(1, mark);
  for (const char c : text) quoted.append(c == mark ? 2 : 1, c);
  return quoted += mark;
}

}  // namespace

std::string QuotedName(std::string_view name) { return Quoted(name, '"'); }
std::string QuotedText(std::string_view text) { return Quoted(text, '\''); }

C_Statement::C_Statement(sqlite3* database, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v3(database, sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                                      &statement, nullptr);
  m_statement.reset(statement);
  if (code != SQLITE_OK) Fail(database, code);
}

bool C_Statement::Step() {
  const int code = sqlite3_step(m_statement.get());
  if (code != SQLITE_ROW && code != SQLITE_DONE) Fail(sqlite3_db_handle(m_statement.get()), code);
  return code == SQLITE_ROW;
}

void C_Statement::Reset() {
  sqlite3_reset(m_statement.get());
  sqlite3_clear_bindings(m_statement.get());
}

std::string C_Statement::Text(int column) const {
  const unsigned char* const text = sqlite3_column_text(m_statement.get(), column);
  return text == nullptr ? std::string() : std::string(reinterpret_cast<const char*>(text));
}

C_Sqlite::C_Sqlite(const std::string& file, const std::atomic<bool>& isStopping) : m_isStopping(isStopping) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  // Otherwise a name such as ":memory:" would not be that of a file.
  const std::string path = file.starts_with('/') ? file : "./" + file;
  // The statistics of memory lock a mutex for each piece of it. Has no effect after SQLite has been used elsewhere.
  [[maybe_unused]] static const int kConfigured = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
  sqlite3* database = nullptr;
  const int code = sqlite3_open_v2(path.c_str(), &database, kFlags, nullptr);
  m_database.reset(database);
  if (code != SQLITE_OK) Fail(database, code);
  sqlite3_busy_handler(database, &C_Sqlite::OnBusy, this);
}

// 0 gives up.
int C_Sqlite::OnBusy(void* self, int count) {
  if (static_cast<const C_Sqlite*>(self)->m_isStopping || count >= kPatience / kBusyPause) return 0;
  std::this_thread::sleep_for(kBusyPause);
  return 1;
}

// With the write-ahead log readers never wait for the writer, nor it for them. A commit is on the disk: there is one
// for many rows. The log grows to some 64 MiB before it is moved into the file.
void C_Sqlite::PrepareToWrite(int pageSize) {
  constexpr std::int64_t kLogSize = 64 << 20;
  Execute(
      fmt::format("PRAGMA page_size = {}; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL;"
                  "PRAGMA cache_size = -65536",
                  pageSize));
  Execute(fmt::format("PRAGMA wal_autocheckpoint = {}", kLogSize / Number("PRAGMA page_size")));
}

// A change of the journal is refused at once, without the busy handler, while another program begins or ends its work.
void C_Sqlite::Execute(const std::string& sql) {
  const auto begin = std::chrono::steady_clock::now();
  const auto run = [&] { return sqlite3_exec(m_database.get(), sql.c_str(), nullptr, nullptr, nullptr); };
  int code = run();
  while (code == SQLITE_BUSY && std::chrono::steady_clock::now() - begin < kPatience && OnBusy(this, 0) != 0)
    code = run();
  if (code != SQLITE_OK) Fail(m_database.get(), code);
}

std::int64_t C_Sqlite::Number(std::string_view sql) {
  C_Statement statement = Prepare(sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

}  // namespace Host
