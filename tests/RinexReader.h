// Reads RINEX 3.05 navigation files by their columns, as appendix A of the RINEX document draws them.
#ifndef VELAGNSS_TESTS_RINEX_READER_H
#define VELAGNSS_TESTS_RINEX_READER_H

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <cstdlib>
#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "tests/CLocale.h"

struct RinexNumber {
  double value;
  double unit;  // of the last digit
};

struct RinexRecord {
  std::string satellite;  // "G04"
  double epoch = 0;       // s since 6 January 1980, in its own time scale
  std::vector<std::optional<RinexNumber>> values;
};

class RinexReader {
 public:
  explicit RinexReader(const std::string& text) : m_stream(text) {
    ReadHeader();
    while (std::getline(m_stream, m_line)) ReadRecord();
  }

  const std::vector<RinexRecord>& Records() const { return m_records; }

  // The 60 columns in front of a label, lines separated by "|".
  const std::string& Header(const std::string& label) { return m_header[label]; }

 private:
  static constexpr std::size_t kWidth = 19;

  void ReadHeader() {
    while (std::getline(m_stream, m_line)) {
      EXPECT_EQ(m_line.size(), 80U) << m_line;
      const std::string label = m_line.substr(60, m_line.find_last_not_of(' ') - 59);
      m_header[label] += (m_header[label].empty() ? "" : "|") + m_line.substr(0, 60);
      if (label == "END OF HEADER") return;
    }
    ADD_FAILURE() << "no end of header";
  }

  static int OrbitLines(char system) {
    const std::map<char, int> lines = {{'G', 7}, {'J', 7}, {'R', 4}, {'S', 3}};
    return lines.count(system) == 0 ? 0 : lines.at(system);
  }

  int Digits(std::size_t column, std::size_t count) const {
    const std::string text = m_line.substr(column, count);
    EXPECT_EQ(text.find_first_not_of("0123456789"), std::string::npos) << m_line;
    return std::atoi(text.c_str());
  }

  double Epoch() const {
    using namespace std::chrono;
    const sys_days day = year(Digits(4, 4)) / Digits(9, 2) / Digits(12, 2);
    const auto days = (day - sys_days(1980y / 1 / 6)).count();
    return static_cast<double>(days) * 86400 + Digits(15, 2) * 3600 + Digits(18, 2) * 60 + Digits(21, 2);
  }

  void ReadNumber(std::size_t column, RinexRecord& record) const {
    std::string text = column < m_line.size() ? m_line.substr(column, kWidth) : "";
    if (text.find_first_not_of(' ') == std::string::npos) return record.values.push_back(std::nullopt);
    ASSERT_EQ(text.size(), kWidth) << m_line;
    ASSERT_EQ(text[15], 'D') << m_line;
    text[15] = 'E';
    char* end = nullptr;
    const CLocale pointIsPoint;
    const double value = std::strtod(text.c_str(), &end);
    EXPECT_EQ(*end, '\0') << m_line;
    record.values.push_back(RinexNumber{value, std::pow(10, std::atoi(text.c_str() + 16) - 12)});
  }

  void ReadRecord() {
    RinexRecord record;
    record.satellite = m_line.substr(0, 3);
    record.epoch = Epoch();
    for (std::size_t i = 0; i < 3; ++i) ReadNumber(23 + i * kWidth, record);
    const int lines = OrbitLines(m_line[0]);
    ASSERT_GT(lines, 0) << m_line;
    for (int line = 0; line < lines; ++line) {
      ASSERT_TRUE(std::getline(m_stream, m_line));
      ASSERT_EQ(m_line.substr(0, 4), "    ") << m_line;
      for (std::size_t i = 0; i < 4; ++i) ReadNumber(4 + i * kWidth, record);
    }
    m_records.push_back(record);
  }

  std::istringstream m_stream;
  std::string m_line;
  std::map<std::string, std::string> m_header;
  std::vector<RinexRecord> m_records;
};

#endif  // VELAGNSS_TESTS_RINEX_READER_H
