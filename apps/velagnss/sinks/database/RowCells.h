// A line of JSON as the cells of a row: one for each member, those of nested objects with the names of both.
#ifndef VELAGNSS_APPS_ROW_CELLS_H
#define VELAGNSS_APPS_ROW_CELLS_H

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Host {

struct S_RowCell {
  std::string_view name;
  // The text of an array or of an object that is kept whole is JSON.
  std::variant<std::monostate, std::int64_t, double, std::string_view> value;
};

class C_RowCells {
 public:
  C_RowCells();
  ~C_RowCells();
  C_RowCells(const C_RowCells&) = delete;
  C_RowCells& operator=(const C_RowCells&) = delete;

  // The lines that `Next` reads. They must outlive their cells, whose texts are views into them.
  void SetLines(std::string_view lines);

  // Reads the next line; false when there is none. What the line before gave is gone.
  bool Next();

  const std::vector<S_RowCell>& All() const { return m_cells; }

  // The value of a member; the empty text or nothing when it has none, or another type.
  std::string_view Text(std::string_view name) const;
  const std::int64_t* Integer(std::string_view name) const;

  // Whether the frame of this line has a decoder that knows its members. Of all others the decoded fields are one
  // cell, "fields", so that what was sent never becomes the name of a column.
  bool HasOwnMembers() const;

 private:
  struct S_Parser;  // of simdjson, whose header is large

  const S_RowCell* Find(std::string_view name) const;

  std::unique_ptr<S_Parser> m_parser;
  std::string_view m_lines;  // that are left
  std::string m_last;        // a copy of a line at their end, because the parser looks beyond it
  std::vector<S_RowCell> m_cells;
  std::deque<std::string> m_names;  // of the cells whose names are not in the line
  std::size_t m_namesUsed = 0;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_ROW_CELLS_H
