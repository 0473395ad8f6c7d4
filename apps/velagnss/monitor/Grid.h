// What a screen shows, as cells of one character each: pages draw here, a terminal copies it.
//
// No text can do anything to the terminal: `Put` takes only characters that are known to be one column wide on every
// terminal, and replaces control characters, combining and wide ones, and bytes that are not UTF-8 by "?".
#ifndef VELAGNSS_APPS_GRID_H
#define VELAGNSS_APPS_GRID_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "geo/GnssEnums.h"

namespace Host {

// What a text is, which a terminal shows by color or weight. A page never says anything by style alone.
enum class eStyle : unsigned char {
  Normal,
  Title,  // headings and labels
  Dim,    // old values, frames around things
  Good,
  Warning,
  Bad,
  Selected,
  Gps,  // from here on in the order of ALGO::eGNSSSystem
  Glonass,
  Beidou,
  Galileo,
  Sbas,
  Qzss,
  Navic,
};
inline constexpr std::size_t kNumStyles = static_cast<std::size_t>(eStyle::Navic) + 1;

// Normal for an unknown system.
eStyle StyleOf(ALGO::eGNSSSystem system);

struct S_Cell {
  char32_t character = U' ';
  eStyle style = eStyle::Normal;
  friend bool operator==(const S_Cell&, const S_Cell&) = default;
};

// Columns that `text` takes: one for each character, and for each byte that is not UTF-8.
int WidthOf(std::string_view text);

class C_Grid {
 public:
  // Blank. `isPlain`: ASCII alone. A negative size counts as 0.
  C_Grid(int rows, int columns, bool isPlain);

  int Rows() const { return m_rows; }
  int Columns() const { return m_columns; }
  bool IsPlain() const { return m_isPlain; }

  // Inside the grid only.
  const S_Cell& At(int row, int column) const { return m_cells[Index(row, column)]; }

  // Outside the grid nothing happens. A plain grid takes "?" for a character beyond ASCII.
  void Set(int row, int column, const S_Cell& cell);

  // The characters of a row in UTF-8, without the blanks at its end; "" outside the grid.
  std::string Text(int row) const;

 private:
  std::size_t Index(int row, int column) const {
    return static_cast<std::size_t>(row) * static_cast<std::size_t>(m_columns) + static_cast<std::size_t>(column);
  }

  int m_rows;
  int m_columns;
  bool m_isPlain;
  std::vector<S_Cell> m_cells;
};

// A rectangle of a grid, with rows and columns of its own. Nothing is drawn outside of it, wherever it is.
class C_Pane {
 public:
  explicit C_Pane(C_Grid& grid) : C_Pane(grid, 0, 0, grid.Rows(), grid.Columns()) {}

  int Rows() const { return m_rows; }
  int Columns() const { return m_columns; }
  bool IsPlain() const { return m_grid->IsPlain(); }

  // A part of this one, cut off where it ends.
  C_Pane Part(int row, int column, int rows, int columns) const;
  C_Pane Below(int row) const { return Part(row, 0, m_rows - row, m_columns); }
  C_Pane Above(int row) const { return Part(0, 0, row, m_columns); }
  C_Pane LeftOf(int column) const { return Part(0, 0, m_rows, column); }
  C_Pane RightOf(int column) const { return Part(0, column, m_rows, m_columns - column); }

  // Text in UTF-8, cut off at the end of the pane; gives back the column after it.
  int Put(int row, int column, std::string_view text, eStyle style = eStyle::Normal) const;

  // The same, ending before `column`: for numbers.
  void PutRight(int row, int column, std::string_view text, eStyle style = eStyle::Normal) const;

  // A line across the pane with a title in it.
  void Rule(int row, std::string_view title) const;

  // Bars of `share` (0 to 1) of their length, in eighths of a cell; whole cells of "#" where there is no UTF-8.
  void BarRight(int row, int column, int length, double share, eStyle style) const;  // beginning on the left
  void BarUp(int lowestRow, int column, int width, int height, double share, eStyle style) const;

 private:
  C_Pane(C_Grid& grid, int top, int left, int rows, int columns)
      : m_grid(&grid), m_top(top), m_left(left), m_rows(rows), m_columns(columns) {}
  void Set(int row, int column, const S_Cell& cell) const;

  C_Grid* m_grid;
  int m_top;
  int m_left;
  int m_rows;
  int m_columns;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_GRID_H
