// The database file of a destination: lines of JSON become rows of its tables.
#ifndef VELAGNSS_APPS_ROW_STORE_H
#define VELAGNSS_APPS_ROW_STORE_H

#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <string>
#include <unordered_map>

#include "apps/velagnss/sinks/database/RowCells.h"
#include "apps/velagnss/sinks/database/RowTable.h"
#include "apps/velagnss/sinks/database/Sqlite.h"
#include "apps/velagnss/sinks/live/Piece.h"

namespace Host {

// Rows are keyed by the input and the offset in it. Whatever is read again, by a run after this one was killed or by
// another program at the same time, finds its rows there and does no harm; pieces may come in any order.
//
// All functions throw C_SqliteError; the store is of no use then, and what is committed stays.
class C_RowStore {
 public:
  // Creates the tables in a file that is new or empty; refuses any other that it did not make. `isStopping` ends waits
  // for locks. `isLive`: the rows come slowly, with a commit each second.
  C_RowStore(const std::string& file, const std::atomic<bool>& isStopping, bool isLive = false);

  // Becomes visible, and safe, with the next commit.
  void Put(const S_Piece& piece);
  void Commit();
  bool HasUncommitted() const { return m_isInTransaction; }

  // So far, committed or not.
  std::uint64_t RowsNew() const { return m_rowsNew; }
  std::uint64_t RowsKnown() const { return m_rowsKnown; }  // that were there already

 private:
  // The offsets of the units of a piece.
  struct S_Span {
    std::int64_t first = std::numeric_limits<std::int64_t>::max();
    std::int64_t last = -1;
  };

  void CheckOwner();
  void CreateAll();
  void LoadTables();
  void Begin();
  std::int64_t IdOf(const S_InputOrigin& input);
  C_RowTable& TableOfEvent(std::string_view event);
  C_RowTable& TableOfFrame(std::string_view protocol);
  C_RowTable& AddTable(const std::string& name, std::string_view protocol, std::string_view message);
  void MakeFramesView();
  void PutLine(std::int64_t input, S_Span& span);
  void ForgetOldEnds(std::int64_t input, const S_Span& span);
  void NoteOffset(std::int64_t input, std::int64_t offset);

  C_Sqlite m_database;
  C_Statement m_begin;
  C_Statement m_commit;
  C_Statement m_schemaVersion;
  C_Statement m_oldEnds;
  std::int64_t m_knownSchema = -1;
  C_RowCells m_cells;
  std::map<std::string, C_RowTable, std::less<>> m_tables;        // by name
  std::unordered_map<std::string, C_RowTable*> m_tablesOfFrames;  // by protocol and message
  std::string m_frameKind;                                        // of the line at hand: a key of these
  std::map<std::string, std::int64_t> m_inputs;                   // by identity
  std::map<std::int64_t, std::int64_t> m_offsets;                 // the greatest one of each input, to be committed
  std::set<std::int64_t> m_ends;                                  // the keys of ends of inputs that this run has met
  bool m_hasNewTables = false;                                    // that the view of all frames does not show yet
  bool m_isInTransaction = false;
  std::uint64_t m_rowsNew = 0;
  std::uint64_t m_rowsKnown = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_ROW_STORE_H
