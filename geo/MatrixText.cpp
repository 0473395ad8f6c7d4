// The matrix as text: dump to and load from a file.

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

// printf's " %40.15f" in the C locale.
void AppendField(std::string& line, double value) {
  char digits[kLongestNumber];
  const char* const end =
      std::to_chars(digits, digits + kLongestNumber, value, std::chars_format::fixed, kDecimals).ptr;
  const std::size_t length = end - digits;
  line.append(1 + (length < kFieldWidth ? kFieldWidth - length : 0), ' ').append(digits, length);
}

// Tells a number that is too small for a double from one that is too large: the first digit that is not 0 stands
// behind the point once the exponent has moved it. `step` is what a digit's place adds to the exponent.
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
// Values too small become 0; false for anything else, and for values too large.
bool ParseNumber(std::string_view text, double& value) {
  const bool negative = text.front() == '-';
  if (negative || text.front() == '+') text.remove_prefix(1);
  const bool hexadecimal = text.size() > 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
  if (hexadecimal) text.remove_prefix(2);
  if (text.empty() || text.front() == '-') return false;
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

enum class eLine { eEmpty, eText, eRow, eMixed };  // blanks, no number, only numbers, both

// Appends the numbers of a line to `values`.
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
  std::vector<double> values;
  std::size_t rows = 0;
  std::size_t cols = 0;
  for (std::string line; std::getline(file, line);) {
    const std::size_t before = values.size();
    const eLine kind = ParseLine(line, values);
    if (kind == eLine::eEmpty || (kind == eLine::eText && rows == 0)) continue;
    if (rows == 0) cols = values.size();
    if (kind != eLine::eRow || values.size() - before != cols) return false;
    if (++rows > m_maxRows || cols > m_maxCols) return false;
  }
  if (!file.eof() || rows == 0) return false;
  SetSize(static_cast<unsigned int>(rows), static_cast<unsigned int>(cols));
  std::copy(values.begin(), values.end(), m_data);
  return true;
}
