// The matrix as text: dump to and load from a file. Numbers go through <charconv>, which knows no locale.

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "geo/Matrix.h"

namespace {

constexpr int kFieldWidth = 40;
constexpr int kDecimals = 15;
constexpr std::size_t kLongestNumber = 1 + 309 + 1 + kDecimals;  // sign, digits of the largest double, point, decimals

constexpr std::string_view kBlanks = " \t\r\v\f";

// Longest line that is read. A file that does not hold a matrix, such as a device, may have no line end at all.
constexpr std::size_t LongestLine(std::size_t maxCols) { return 4096 + 1024 * maxCols; }

// printf's " %40.15f" in the C locale.
void AppendField(std::string& line, double value) {
  char digits[kLongestNumber];
  const char* const end =
      std::to_chars(digits, digits + kLongestNumber, value, std::chars_format::fixed, kDecimals).ptr;
  const std::size_t length = end - digits;
  line.append(1 + (length < kFieldWidth ? kFieldWidth - length : 0), ' ').append(digits, length);
}

// Distinguishes a number that is too small for a double from one that is too large, which std::from_chars does not: it
// is too small if its first digit that is not 0 comes after the point once the exponent has moved that. `step` is what
// the place of a digit adds to the exponent.
bool IsTooSmall(std::string_view number, char exponentMark, int step) {
  const std::size_t mark = std::min(number.find_first_of(exponentMark), number.size());
  const std::size_t point = std::min(number.substr(0, mark).find('.'), mark);
  const std::size_t first = number.find_first_not_of("0.");
  const long long places = static_cast<long long>(point) - static_cast<long long>(first);
  if (mark == number.size()) return places < 0;
  std::string_view exponent = number.substr(mark + 1);
  if (exponent.front() == '+') exponent.remove_prefix(1);
  long long value = 0;
  const auto result = std::from_chars(exponent.data(), exponent.data() + exponent.size(), value);
  if (result.ec == std::errc::result_out_of_range) return exponent.front() == '-';
  return places * step + value < 0;
}

// The whole text as a number, as scanf's "%lf" in the C locale would read it: [+|-](decimal|0x hexadecimal|inf|nan).
// Values that are too small become 0. False for anything else, and for values that are too large.
bool ParseNumber(std::string_view text, double& value) {
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  // The prefix that std::from_chars does not take.
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  if (hexadecimal) text.remove_prefix(2);
  if (text.empty() || text.front() == '-') return false;  // std::from_chars would take a second sign
  double magnitude = 0.0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), magnitude,
                                            hexadecimal ? std::chars_format::hex : std::chars_format::general);
  if (end != text.data() + text.size() || error == std::errc::invalid_argument) return false;
  if (error == std::errc::result_out_of_range) {
    const char* const marks = hexadecimal ? "pP" : "eE";
    const char mark = text.find(marks[0]) != text.npos ? marks[0] : marks[1];
    if (!IsTooSmall(text, mark, hexadecimal ? 4 : 1)) return false;
  }
  value = negative ? -magnitude : magnitude;
  return true;
}

enum class eRead { eLine, eEnd, eFault };

// Reads a line without its end. eFault for a line of more than `longest` bytes, and when the file cannot be read.
eRead ReadLine(std::istream& file, std::string& line, std::size_t longest) {
  line.clear();
  while (true) {
    char piece[4096];
    file.getline(piece, sizeof piece);
    const bool hasLineEnd = file.good();  // counted, but not stored
    line.append(piece, static_cast<std::size_t>(file.gcount()) - (hasLineEnd ? 1 : 0));
    if (file.bad() || line.size() > longest) return eRead::eFault;
    if (hasLineEnd) return eRead::eLine;
    if (file.eof()) return line.empty() ? eRead::eEnd : eRead::eLine;
    file.clear();  // the piece is full and the line goes on
  }
}

enum class eLine { eEmpty, eText, eRow, eMixed };  // blanks, no number, only numbers, both

// Appends the numbers of a line to `values`. What kind of line it is decides whether they count.
eLine ParseLine(std::string_view line, std::vector<double>& values) {
  bool anyNumber = false;
  bool anyWord = false;
  for (std::size_t begin = line.find_first_not_of(kBlanks); begin != line.npos;) {
    const std::size_t end = std::min(line.find_first_of(kBlanks, begin), line.size());
    double value = 0.0;
    if (ParseNumber(line.substr(begin, end - begin), value)) {
      values.push_back(value);
      anyNumber = true;
    } else {
      anyWord = true;
    }
    begin = line.find_first_not_of(kBlanks, end);
  }
  if (!anyNumber) return anyWord ? eLine::eText : eLine::eEmpty;
  return anyWord ? eLine::eMixed : eLine::eRow;
}

}  // namespace

bool C_Matrix::Dump(const char* fileName, const char* heading, bool append) const {
  if (fileName == nullptr || heading == nullptr) return false;
  std::FILE* const file = std::fopen(fileName, append ? "a" : "w");
  if (file == nullptr) return false;
  // As text, never as a format: a heading may hold a percent sign.
  bool written = std::fputs(heading, file) >= 0;
  std::string line;
  for (unsigned int i = 0; i < m_rows && written; ++i) {
    line.clear();
    for (unsigned int j = 0; j < m_cols; ++j) AppendField(line, m_rowTable[i][j]);
    line += '\n';
    written = std::fputs(line.c_str(), file) >= 0;
  }
  return std::fclose(file) == 0 && written;  // closing writes what is still buffered
}

bool C_Matrix::Load(const char* fileName) {
  if (fileName == nullptr) return false;
  std::ifstream file(fileName);
  if (!file) return false;
  std::vector<double> values;
  std::size_t rows = 0;
  std::size_t cols = 0;
  std::string line;
  eRead read;
  while ((read = ReadLine(file, line, LongestLine(m_maxCols))) == eRead::eLine) {
    const std::size_t before = values.size();
    const eLine kind = ParseLine(line, values);
    if (kind == eLine::eEmpty || (kind == eLine::eText && rows == 0)) continue;
    if (rows == 0) cols = values.size();  // the first row sets the width
    if (kind != eLine::eRow || values.size() - before != cols) return false;
    if (++rows > m_maxRows || cols > m_maxCols) return false;
  }
  if (read != eRead::eEnd || rows == 0) return false;
  // Only now is the matrix touched: a file that is refused leaves it as it was.
  SetSize(static_cast<unsigned int>(rows), static_cast<unsigned int>(cols));
  std::copy(values.begin(), values.end(), m_data);
  return true;
}
