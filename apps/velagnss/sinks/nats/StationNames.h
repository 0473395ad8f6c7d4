// Which station an input is: the second word of its subjects.
#ifndef VELAGNSS_APPS_STATION_NAMES_H
#define VELAGNSS_APPS_STATION_NAMES_H

#include <map>
#include <string>

namespace Host {

// For a text in which "{input}" is the input's name as a word (SourceName.h): "{input}", "north-{input}", "BASE".
class C_StationNames {
 public:
  explicit C_StationNames(std::string pattern) : m_pattern(std::move(pattern)) {}

  // Reads a table of exceptions: lines "INPUT STATION", '#' begins a comment line. Returns an error text, empty when
  // good.
  std::string ReadTable(const std::string& file);

  // Always a token of a subject.
  std::string NameOf(const std::string& input) const;

 private:
  std::string m_pattern;
  std::map<std::string, std::string> m_table;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_STATION_NAMES_H
