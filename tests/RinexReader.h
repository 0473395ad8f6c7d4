// A strict reader of RINEX files for tests: by columns, as the format defines them. Whatever is not as it must be is
// a fault: columns, counts, order, and whether header and body agree.
#ifndef VELAGNSS_TESTS_RINEX_READER_H
#define VELAGNSS_TESTS_RINEX_READER_H

#include <algorithm>
#include <charconv>
#include <cmath>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

class RinexReader {
 public:
  explicit RinexReader(const std::string& file) {
    Split(file);
    if (m_lines.empty()) return;
    ReadHeader();
    if (type == 'O') ReadObservations();
    if (type == 'N') ReadNavigation();
  }

  std::vector<std::string> faults;
  char type = ' ', system = ' ';
  double version = 0;
  std::map<std::string, std::vector<std::string>> header;  // contents by label
  std::map<std::string, unsigned int> satellites;          // how often, in either kind of file
  std::map<char, std::vector<std::string>> types;          // columns of each system
  std::map<std::string, unsigned int> events;              // labels of header records in the body
  unsigned int epochs = 0;
  std::vector<std::string> records;  // of a navigation file, each with its lines filled to 80 columns

 private:
  static constexpr char kDate[] = "[0-9]{4}( [0-9]{2}){4}";

  void Fault(const std::string& what) { faults.push_back(std::to_string(m_at) + ": " + what); }
  void Expect(bool holds, const std::string& what) {
    if (!holds) Fault(what);
  }
  static bool Fits(const std::string& text, const std::string& pattern) {
    return std::regex_match(text, std::regex(pattern));
  }
  // Columns from 1; blank beyond the end of the line.
  static std::string Cut(const std::string& line, std::size_t first, std::size_t last) {
    std::string field = line.size() < first ? "" : line.substr(first - 1, last - first + 1);
    field.resize(last - first + 1, ' ');
    return field;
  }
  // The number after the blanks, with a decimal point in every locale; 0 where there is none.
  static double NumberIn(const std::string& text) {
    double number = 0;
    const char* const begin = text.data() + std::min(text.find_first_not_of(' '), text.size());
    std::from_chars(begin, text.data() + text.size(), number);
    return number;
  }

  static bool IsBlank(const std::string& text) { return text.find_first_not_of(' ') == std::string::npos; }

  void Split(const std::string& file) {
    Expect(!file.empty() && file.back() == '\n', "no end of line at the end");
    std::size_t begin = 0;
    for (std::size_t end; (end = file.find('\n', begin)) != std::string::npos; begin = end + 1) {
      m_lines.push_back(file.substr(begin, end - begin));
      Expect(!m_lines.back().empty(), "empty line");
      for (const char c : m_lines.back()) Expect(c >= ' ' && c <= '~', "not ASCII");
    }
  }

  std::string ReadHeaderLine() {
    const std::string& line = m_lines[m_at++];
    Expect(line.size() == 80, "header line of " + std::to_string(line.size()));
    std::string label = Cut(line, 61, 80);
    label.erase(label.find_last_not_of(' ') + 1);
    static const std::set<std::string> kLabels = {
        "RINEX VERSION / TYPE", "PGM / RUN BY / DATE",  "COMMENT",
        "MARKER NAME",          "OBSERVER / AGENCY",    "REC # / TYPE / VERS",
        "ANT # / TYPE",         "APPROX POSITION XYZ",  "ANTENNA: DELTA H/E/N",
        "SYS / # / OBS TYPES",  "SIGNAL STRENGTH UNIT", "INTERVAL",
        "TIME OF FIRST OBS",    "TIME OF LAST OBS",     "SYS / PHASE SHIFT",
        "GLONASS SLOT / FRQ #", "GLONASS COD/PHS/BIS",  "LEAP SECONDS",
        "END OF HEADER"};
    Expect(kLabels.count(label) == 1, "label " + label);
    return label;
  }

  void ReadHeader() {
    static const std::map<std::string, std::string> kPatterns = {
        {"PGM / RUN BY / DATE", ".{40}[0-9]{8} [0-9]{6} UTC "},
        {"APPROX POSITION XYZ", "( *-?[0-9]+\\.[0-9]{4}){3} {18}"},
        {"ANTENNA: DELTA H/E/N", "( *-?[0-9]+\\.[0-9]{4}){3} {18}"},
        {"INTERVAL", " *[0-9]+\\.[0-9]{3} {50}"},
        {"TIME OF FIRST OBS", "  [0-9]{4}( {4}[ 0-9][0-9]){4} {3}[ 0-9][0-9]\\.[0-9]{7} {5}GPS {9}"},
        {"TIME OF LAST OBS", "  [0-9]{4}( {4}[ 0-9][0-9]){4} {3}[ 0-9][0-9]\\.[0-9]{7} {5}GPS {9}"},
        {"SYS / # / OBS TYPES", "([GRECJIS]  [ 0-9]{3}| {6})( [CLDS][1-9][A-Z])+ *"},
        {"SYS / PHASE SHIFT", "[GRECJIS]( L[1-9][A-Z](  0\\.00000)?)? *"},
        {"GLONASS SLOT / FRQ #", "[ 0-9]{3} (R[0-9]{2} [-+ 0-9][0-9] )+ *"},
        {"GLONASS COD/PHS/BIS", "( C1C[ -.0-9]{9}| {13})( C1P[ -.0-9]{9}| {13})( C2C[ -.0-9]{9}| {13}).*"},
        {"LEAP SECONDS", " {4}[ 1-9][0-9] {54}"},
        {"END OF HEADER", " {60}"}};
    std::string label;
    while (m_at < m_lines.size() && label != "END OF HEADER") {
      label = ReadHeaderLine();
      const std::string content = Cut(m_lines[m_at - 1], 1, 60);
      if (m_at == 1) Expect(label == "RINEX VERSION / TYPE", "first label");
      if (kPatterns.count(label) == 1) Expect(Fits(content, kPatterns.at(label)), label + ": " + content);
      header[label].push_back(content);
    }
    Expect(label == "END OF HEADER", "no end of the header");
    const std::string first = Cut(m_lines[0], 1, 60);
    Expect(Fits(first, " {5}[34]\\.[0-9]{2} {11}[ON].{19}[GRECJISM].*"), "version line");
    version = NumberIn(first);
    type = first[20];
    system = first[40];
    for (const char* once : {"LEAP SECONDS", "PGM / RUN BY / DATE"}) Expect(header[once].size() == 1, once);
  }

  void ReadTypes() {
    char letter = ' ';
    std::map<char, std::size_t> announced;
    for (const std::string& line : header["SYS / # / OBS TYPES"]) {
      if (line[0] != ' ') announced[letter = line[0]] = std::stoul(line.substr(3, 3));
      for (std::size_t at = 7; at + 3 <= 58 && line[at] != ' '; at += 4) types[letter].push_back(line.substr(at, 3));
    }
    for (const auto& [name, count] : announced) Expect(types[name].size() == count, "number of types");
    Expect(system == 'M' ? types.size() > 1 : types.size() == 1 && types.begin()->first == system, "system");
    std::set<std::string> shifts;
    for (const std::string& line : header["SYS / PHASE SHIFT"]) shifts.insert({line[0], line[2], line[3], line[4]});
    for (const auto& [name, codes] : types)
      for (const std::string& code : codes)
        if (code[0] == 'L') Expect(shifts.count(name + code) + shifts.count(name + std::string("   ")) > 0, "shift");
    for (const char* label : {"MARKER NAME", "OBSERVER / AGENCY", "REC # / TYPE / VERS", "ANT # / TYPE",
                              "ANTENNA: DELTA H/E/N", "TIME OF FIRST OBS", "TIME OF LAST OBS"})
      Expect(header[label].size() == 1, label);
    for (const char* label : {"GLONASS SLOT / FRQ #", "GLONASS COD/PHS/BIS"})
      Expect(header[label].empty() == (types.count('R') == 0), label);
    for (const std::string& line : header["GLONASS SLOT / FRQ #"])
      for (std::size_t at = 4; at + 6 <= 60 && line[at] == 'R'; at += 7) m_slots.insert(line.substr(at, 3));
  }

  // "2024 05 19 00 00 16.0000000": of the header as of an epoch line.
  static std::string TimeOf(const std::string& content) {
    std::string time;
    for (std::size_t at : {0, 6, 12, 18, 24}) time += content.substr(at + (at == 0 ? 2 : 4), at == 0 ? 4 : 2) + " ";
    time += content.substr(33, 10);
    std::replace(time.begin() + 4, time.end(), ' ', '0');
    for (const std::size_t at : {4, 7, 10, 13, 16}) time[at] = ' ';
    return time;
  }

  void ReadObservations() {
    ReadTypes();
    std::string last;
    while (m_at < m_lines.size()) {
      const std::string line = m_lines[m_at++];
      if (Fits(line, "> {30}[34] *[0-9]+")) {
        bool hasMarker = false;
        for (int left = std::stoi(line.substr(32)); left > 0; --left) {
          const std::string label = ReadHeaderLine();
          hasMarker = hasMarker || label == "MARKER NAME";
          ++events[label];
        }
        Expect(hasMarker == (line[31] == '3'), "marker of an event");
        continue;
      }
      Expect(Fits(line, std::string("> ") + kDate + "[ 0-9]{3}\\.[0-9]{7}  0[ 0-9]{2}[0-9]"), "epoch: " + line);
      std::string time = line.substr(2, 17) + line.substr(19, 10);
      if (time[17] == ' ') time[17] = '0';
      Expect(last < time, "order of epochs");
      if (epochs++ == 0) Expect(time == TimeOf(header["TIME OF FIRST OBS"][0]), "first epoch " + time);
      last = time;
      std::string before;
      for (int left = std::stoi(line.substr(32)); left > 0 && m_at < m_lines.size(); --left) ReadSatellite(before);
    }
    Expect(last == TimeOf(header["TIME OF LAST OBS"][0]), "last epoch " + last);
    for (const auto& [name, codes] : types)
      for (const std::string& code : codes) Expect(m_seen.count(name + code) == 1, "no " + code);
  }

  void ReadSatellite(std::string& before) {
    constexpr std::size_t kCell = 16;
    static const std::string kOrder = "GRECJIS";
    const std::string& line = m_lines[m_at++];
    const std::string satellite = Cut(line, 1, 3);
    Expect(Fits(satellite, "[GRECJIS][0-9]{2}") && types.count(satellite[0]) == 1, "satellite " + satellite);
    const std::string place = std::to_string(kOrder.find(satellite[0])) + satellite;
    Expect(before < place, "order of satellites");
    before = place;
    ++satellites[satellite];
    if (satellite[0] == 'R') Expect(m_slots.count(satellite) == 1, "no slot");
    const std::vector<std::string>& codes = types[satellite[0]];
    Expect(line.size() <= 3 + kCell * codes.size() && line.back() != ' ', "length");
    Expect(line.size() > 3, "no observation");
    for (std::size_t i = 0; i < codes.size(); ++i) {
      const std::string cell = Cut(line, 4 + kCell * i, 3 + kCell * (i + 1));
      if (IsBlank(cell)) continue;
      Expect(Fits(cell, codes[i][0] == 'L' ? " *-?[0-9]+\\.[0-9]{3}[ 123][ 1-9]" : " *-?[0-9]+\\.[0-9]{3} [ 1-9]"),
             "cell " + cell);
      Expect(NumberIn(cell) != 0, "zero");
      m_seen.insert(satellite[0] + codes[i]);
    }
  }

  void ReadNavigation() {
    static const std::map<char, int> kLines = {{'G', 7}, {'R', 4}, {'E', 7}, {'C', 7}, {'J', 7}, {'I', 7}, {'S', 3}};
    std::string last;
    std::set<char> systems;
    while (m_at < m_lines.size()) {
      std::string head;
      if (version >= 4) head = m_lines[m_at++];
      const std::string line = m_at < m_lines.size() ? m_lines[m_at++] : "";
      const std::string satellite = Cut(line, 1, 3), epoch = Cut(line, 5, 23);
      if (version >= 4) Expect(Fits(head, "> EPH " + satellite + " (LNAV|FDMA|INAV|FNAV|D1|D2|SBAS)"), "head " + head);
      Expect(Fits(satellite, "[GRECJIS][0-9]{2}") && Fits(epoch, std::string(kDate) + " [0-9]{2}"), "start " + line);
      if (kLines.count(satellite[0]) == 0) return;
      Expect(last <= epoch, "order of records");
      last = epoch;
      ++satellites[satellite];
      systems.insert(satellite[0]);
      records.push_back(Cut(line, 1, 80));
      ReadNumbers(line, 24);
      for (int left = kLines.at(satellite[0]); left > 0 && m_at < m_lines.size(); --left) {
        Expect(IsBlank(Cut(m_lines[m_at], 1, 4)), "indent");
        records.back() += Cut(m_lines[m_at], 1, 80);
        ReadNumbers(m_lines[m_at++], 5);
      }
    }
    Expect(systems == std::set<char>{system} || (system == 'M' && systems.size() > 1), "system");
  }

  void ReadNumbers(const std::string& line, std::size_t first) {
    constexpr std::size_t kWidth = 19;
    Expect(line.size() <= 80, "length");
    for (; first < 80; first += kWidth) {
      const std::string field = Cut(line, first, first + kWidth - 1);
      Expect(IsBlank(field) || Fits(field, "[- ][0-9]\\.[0-9]{12}[DE][-+][0-9]{2}"), "number " + field);
    }
  }

  std::vector<std::string> m_lines;
  std::size_t m_at = 0;
  std::set<std::string> m_slots;
  std::set<std::string> m_seen;
};

#endif  // VELAGNSS_TESTS_RINEX_READER_H
