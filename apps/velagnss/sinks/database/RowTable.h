// One table of the database, which grows a column when a member comes that has none.
#ifndef VELAGNSS_APPS_ROW_TABLE_H
#define VELAGNSS_APPS_ROW_TABLE_H

#include <map>
#include <span>
#include <string>
#include <vector>

#include "apps/velagnss/sinks/database/RowCells.h"
#include "apps/velagnss/sinks/database/Schema.h"
#include "apps/velagnss/sinks/database/Sqlite.h"

namespace Host {

class C_RowTable {
 public:
  // `columns`, and those of a row for them: a table that begins with all of them need not grow at once.
  static std::vector<S_Column> ColumnsFor(std::span<const S_Column> columns, const C_RowCells& row);

  // Begins with these columns if it is not there. `replaces`: see S_TableKind.
  C_RowTable(C_Sqlite& database, std::string name, std::span<const S_Column> columns, bool replaces);

  // The columns as they are now: another program may have added some.
  void Load();

  // Whether the row is new. `offset`: where its frame or event begins; null when it has no place in the input.
  bool Put(std::int64_t input, const std::int64_t* offset, const C_RowCells& cells);

 private:
  static constexpr int kLeftOut = 0;  // the positions of values begin with 1

  struct S_Target {
    std::string name;
    int at = kLeftOut;
  };

  void FindColumns(const std::vector<S_RowCell>& cells);
  int ColumnOf(const S_RowCell& cell);
  bool IsLeftOut(const S_RowCell& cell) const;
  int AddColumn(const S_RowCell& cell);
  void PrepareInsert();
  void BindCells(C_Statement& statement, const std::vector<S_RowCell>& cells) const;

  C_Sqlite& m_database;
  std::string m_name;
  bool m_replaces;
  std::map<std::string, int, std::less<>> m_columns;  // the positions of their values
  std::vector<S_Target> m_targets;                    // of the cells of the last row: those of the next are the same
  C_Statement m_insert;                               // of a row that is not there
  C_Statement m_repeat;                               // of any row
  bool m_wasKnown = false;                            // the last row was there: most likely the next one is, too
};

}  // namespace Host

#endif  // VELAGNSS_APPS_ROW_TABLE_H
