#include "apps/velagnss/sinks/nats/StationNames.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string_view>

#include "apps/velagnss/input/SourceName.h"
#include "apps/velagnss/net/nats/NatsAddress.h"

namespace Host {
namespace {

constexpr std::string_view kInput = "{input}";

}  // namespace

std::string C_StationNames::ReadTable(const std::string& file) {
  std::ifstream stream(file);
  if (!stream) return fmt::format("stations file {}: {}", file, std::strerror(errno));
  int number = 0;
  for (std::string line; std::getline(stream, line);) {
    ++number;
    std::istringstream words(line);
    std::string input;
    std::string station;
    std::string rest;
    if (!(words >> input) || input.starts_with('#')) continue;
    if (!(words >> station) || words >> rest || station != SubjectToken(station))
      return fmt::format("stations file {}: line {} is not INPUT STATION, the station of letters, digits, '-' and '_'",
                         file, number);
    m_table[input] = station;
  }
  return {};
}

std::string C_StationNames::NameOf(const std::string& input) const {
  if (const auto row = m_table.find(input); row != m_table.end()) return row->second;
  std::string name = m_pattern;
  for (std::size_t at = 0; (at = name.find(kInput, at)) != std::string::npos;) {
    const std::string word = SafeSourceName(input);
    name.replace(at, kInput.size(), word);
    at += word.size();
  }
  return SubjectToken(name);
}

}  // namespace Host
