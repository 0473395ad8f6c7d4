// Splits bytes into lines.
#ifndef VELAGNSS_APPS_LINE_SPLITTER_H
#define VELAGNSS_APPS_LINE_SPLITTER_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Host {

//   for (auto rest = bytes; line.Take(rest);) Use(line.Text());
//   if (line.End()) Use(line.Text());
class C_LineSplitter {
 public:
  // Of a longer line, only enough is kept to know that it is too long.
  explicit C_LineSplitter(std::size_t maxLine) : m_maxLine(maxLine) {}

  // Takes bytes from the front of `rest` up to a line feed. True when a line is complete, false when `rest` is used up.
  bool Take(std::span<const unsigned char>& rest);

  // The end of the input: true when there is a last line that no line feed ended.
  bool End();

  // Line numbers begin at 1 again.
  void Restart();

  // The line that is complete, without its line feed.
  std::string_view Text() const { return m_line; }
  bool IsTooLong() const { return m_line.size() > m_maxLine; }
  std::uint64_t Number() const { return m_number; }

 private:
  std::size_t m_maxLine;
  std::string m_line;
  bool m_isComplete = false;
  std::uint64_t m_number = 0;  // of the complete lines, the last one
};

}  // namespace Host

#endif  // VELAGNSS_APPS_LINE_SPLITTER_H
