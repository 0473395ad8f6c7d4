// SQLite with owners of its objects. Within this directory a failure is an exception: nearly every call can fail, for
// the same few reasons, and all of them end the destination.
#ifndef VELAGNSS_APPS_SQLITE_H
#define VELAGNSS_APPS_SQLITE_H

#include <sqlite3.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

namespace Host {

// Its text says what happened and what to do, for a message that begins with the name of the file.
class C_SqliteError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A name as SQL has it.
std::string QuotedName(std::string_view name);

// A text as SQL has it.
std::string QuotedText(std::string_view text);

// A prepared statement. Positions of values and columns are those of SQLite: values from 1, columns from 0.
class C_Statement {
 public:
  C_Statement() = default;
  C_Statement(sqlite3* database, std::string_view sql);

  bool IsPrepared() const { return m_statement != nullptr; }

  void BindNull(int at) { sqlite3_bind_null(m_statement.get(), at); }
  void Bind(int at, std::int64_t value) { sqlite3_bind_int64(m_statement.get(), at, value); }
  void Bind(int at, double value) { sqlite3_bind_double(m_statement.get(), at, value); }
  // The text must stay until the next `Reset`.
  void Bind(int at, std::string_view text) {
    sqlite3_bind_text64(m_statement.get(), at, text.data(), text.size(), SQLITE_STATIC, SQLITE_UTF8);
  }

  // True: there is a row.
  bool Step();

  // All values are null again.
  void Reset();

  // Of the row.
  std::int64_t Integer(int column) const { return sqlite3_column_int64(m_statement.get(), column); }
  std::string Text(int column) const;

 private:
  struct S_Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, S_Finalize> m_statement;
};

// A database file. Used by one thread at a time.
class C_Sqlite {
 public:
  // Creates the file if there is none. While another program holds a lock, calls wait until `isStopping`, but not
  // longer than `kPatience`.
  C_Sqlite(const std::string& file, const std::atomic<bool>& isStopping);

  // To be called before anything is written. `pageSize` has an effect only on a new file.
  void PrepareToWrite(int pageSize);

  void Execute(const std::string& sql);
  C_Statement Prepare(std::string_view sql) { return {m_database.get(), sql}; }

  // The first value of the first row.
  std::int64_t Number(std::string_view sql);

  // How many rows the last statement has inserted.
  int RowsChanged() const { return sqlite3_changes(m_database.get()); }

 private:
  static int OnBusy(void* self, int count);

  struct S_Close {
    void operator()(sqlite3* database) const { sqlite3_close(database); }
  };
  const std::atomic<bool>& m_isStopping;
  std::unique_ptr<sqlite3, S_Close> m_database;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_SQLITE_H
