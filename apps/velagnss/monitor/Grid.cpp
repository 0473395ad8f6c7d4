#include "apps/velagnss/monitor/Grid.h"

#include <algorithm>
#include <cmath>

#include "apps/velagnss/text/Utf8.h"

namespace Host {
namespace {

constexpr char32_t kUnknown = U'?';
constexpr char32_t kLastAscii = 0x7E;

// Characters that take one column on every terminal and do not join with others.
struct S_Range {
  char32_t first;
  char32_t last;
};
constexpr S_Range kOneColumn[] = {
    {0x20, kLastAscii}, {0xA1, 0xAC},     {0xAE, 0x24F},    // ASCII; Latin without the soft hyphen
    {0x391, 0x3A1},     {0x3A3, 0x3CE},   {0x410, 0x44F},   // Greek, Cyrillic
    {0x2010, 0x2027},   {0x2190, 0x2193}, {0x2500, 0x259F}  // punctuation, arrows, lines and blocks
};

bool IsOneColumn(char32_t character) {
  return std::any_of(std::begin(kOneColumn), std::end(kOneColumn),
                     [character](const S_Range& range) { return character >= range.first && character <= range.last; });
}

// Takes the first character off the text.
char32_t TakeCharacter(std::string_view& text) {
  const S_Character first = FirstCharacter(text);
  text.remove_prefix(std::max<std::size_t>(first.size, 1));
  return first.size > 0 ? first.code : kUnknown;
}

// UTF-8 of a character that a grid can have: it is below U+10000.
void Append(std::string& text, char32_t character) {
  const auto add = [&text](char32_t byte) { text += static_cast<char>(static_cast<unsigned char>(byte)); };
  if (character < 0x80) return add(character);
  if (character < 0x800) {
    add(0xC0 | character >> 6);
  } else {
    add(0xE0 | character >> 12);
    add(0x80 | (character >> 6 & 0x3F));
  }
  add(0x80 | (character & 0x3F));
}

// A bar grows by eighths of a cell.
constexpr int kSteps = 8;
constexpr char32_t kFull = 0x2588;
constexpr char32_t RightBlock(int eighths) { return kFull + static_cast<char32_t>(kSteps - eighths); }  // left part
constexpr char32_t UpperBlock(int eighths) { return kFull - static_cast<char32_t>(kSteps - eighths); }  // lower part

// Eighths of cell number `cell` that a bar of `length` cells fills. Whole cells where there are no eighths.
int EighthsOf(int cell, int length, double share, bool isPlain) {
  const double cells = std::clamp(std::isfinite(share) ? share : 0, 0.0, 1.0) * length;
  const auto eighths = static_cast<int>(std::lround(isPlain ? std::round(cells) * kSteps : cells * kSteps));
  return std::clamp(eighths - cell * kSteps, 0, kSteps);
}

}  // namespace

eStyle StyleOf(ALGO::eGNSSSystem system) {
  if (system >= ALGO::GNSS_UNKNOWN) return eStyle::Normal;
  return static_cast<eStyle>(static_cast<unsigned int>(eStyle::Gps) + system);
}

int WidthOf(std::string_view text) {
  int width = 0;
  for (; !text.empty(); ++width) TakeCharacter(text);
  return width;
}

C_Grid::C_Grid(int rows, int columns, bool isPlain)
    : m_rows(std::max(rows, 0)),
      m_columns(std::max(columns, 0)),
      m_isPlain(isPlain),
      m_cells(static_cast<std::size_t>(m_rows) * static_cast<std::size_t>(m_columns)) {}

void C_Grid::Set(int row, int column, const S_Cell& cell) {
  if (row < 0 || row >= m_rows || column < 0 || column >= m_columns) return;
  const bool isShown = IsOneColumn(cell.character) && (!m_isPlain || cell.character <= kLastAscii);
  m_cells[Index(row, column)] = {isShown ? cell.character : kUnknown, cell.style};
}

std::string C_Grid::Text(int row) const {
  std::string text;
  if (row < 0 || row >= m_rows) return text;
  for (int column = 0; column < m_columns; ++column) Append(text, At(row, column).character);
  return text.erase(text.find_last_not_of(' ') + 1);
}

C_Pane C_Pane::Part(int row, int column, int rows, int columns) const {
  const int top = std::clamp(row, 0, m_rows);
  const int left = std::clamp(column, 0, m_columns);
  return {*m_grid, m_top + top, m_left + left, std::clamp(rows, 0, m_rows - top),
          std::clamp(columns, 0, m_columns - left)};
}

void C_Pane::Set(int row, int column, const S_Cell& cell) const {
  if (row >= 0 && row < m_rows && column >= 0 && column < m_columns) m_grid->Set(m_top + row, m_left + column, cell);
}

int C_Pane::Put(int row, int column, std::string_view text, eStyle style) const {
  while (!text.empty() && column < m_columns) Set(row, column++, {TakeCharacter(text), style});
  return column;
}

void C_Pane::PutRight(int row, int column, std::string_view text, eStyle style) const {
  Put(row, column - WidthOf(text), text, style);
}

void C_Pane::Rule(int row, std::string_view title) const {
  const char32_t line = IsPlain() ? U'-' : U'\u2500';
  constexpr int kIndent = 2;
  for (int column = 0; column < m_columns; ++column) Set(row, column, {line, eStyle::Dim});
  if (title.empty()) return;
  const int end = Put(row, Put(row, kIndent, " "), title, eStyle::Title);
  Put(row, end, " ");
}

void C_Pane::BarRight(int row, int column, int length, double share, eStyle style) const {
  for (int cell = 0; cell < length; ++cell)
    if (const int eighths = EighthsOf(cell, length, share, IsPlain()); eighths > 0)
      Set(row, column + cell, {IsPlain() ? U'#' : RightBlock(eighths), style});
}

void C_Pane::BarUp(int lowestRow, int column, int width, int height, double share, eStyle style) const {
  for (int cell = 0; cell < height; ++cell) {
    const int eighths = EighthsOf(cell, height, share, IsPlain());
    for (int i = 0; i < width && eighths > 0; ++i)
      Set(lowestRow - cell, column + i, {IsPlain() ? U'#' : UpperBlock(eighths), style});
  }
}

}  // namespace Host
