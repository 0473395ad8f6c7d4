#include "apps/velagnss/sinks/database/RowCells.h"

#include <simdjson.h>

#include <algorithm>
#include <charconv>
#include <cstring>

namespace Host {
namespace {

namespace ondemand = simdjson::ondemand;

// Members that every frame may have. A decoded field of the same name, such as the text of a TXT sentence, is stored
// with the prefix of the object that it is in.
constexpr std::string_view kEnvelope[] = {"schema", "input",  "arrival", "offset", "length", "protocol", "message",
                                          "number", "result", "error",   "utc",    "text",   "id",       "fields"};

constexpr std::string_view kFields = "fields";

// The names of members are our own, without escapes.
std::string_view KeyOf(ondemand::raw_json_string key) {
  const char* const begin = key.raw();
  return {begin, static_cast<const char*>(std::strchr(begin, '"'))};
}

// Names of decoded fields are mostly longer.
constexpr std::size_t kLongestOfEnvelope =
    std::ranges::max(kEnvelope, {}, [](std::string_view name) { return name.size(); }).size();

bool IsOfEnvelope(std::string_view name) {
  return name.size() <= kLongestOfEnvelope && std::ranges::find(kEnvelope, name) != std::end(kEnvelope);
}

}  // namespace

struct C_RowCells::S_Parser {
  ondemand::parser parser;

  static void Add(C_RowCells& cells, ondemand::object object, std::string_view prefix);
  static void AddMember(C_RowCells& cells, std::string_view name, ondemand::value value);
  static std::string_view NameOf(C_RowCells& cells, std::string_view prefix, std::string_view key);
  static std::string_view TextOf(ondemand::value& value, std::string_view token);
  static void AddNumber(S_RowCell& cell, ondemand::value& value, std::string_view token);
};

C_RowCells::C_RowCells() : m_parser(std::make_unique<S_Parser>()) {}
C_RowCells::~C_RowCells() = default;

void C_RowCells::SetLines(std::string_view lines) { m_lines = lines; }

bool C_RowCells::Next() {
  m_cells.clear();
  m_namesUsed = 0;
  if (m_lines.empty()) return false;
  const std::size_t size = std::min(m_lines.find('\n'), m_lines.size());
  simdjson::padded_string_view line(m_lines.substr(0, size), m_lines.size());
  if (m_lines.size() - size < simdjson::SIMDJSON_PADDING) {
    m_last.reserve(size + simdjson::SIMDJSON_PADDING);
    line = simdjson::padded_string_view(m_last.assign(m_lines, 0, size));
  }
  m_lines.remove_prefix(std::min(size + 1, m_lines.size()));
  ondemand::document document = m_parser->parser.iterate(line);
  S_Parser::Add(*this, document.get_object(), {});
  return true;
}

// The decoded fields of a frame become columns without a prefix.
std::string_view C_RowCells::S_Parser::NameOf(C_RowCells& cells, std::string_view prefix, std::string_view key) {
  if (prefix.empty() || (prefix == kFields && !IsOfEnvelope(key))) return key;
  if (cells.m_namesUsed == cells.m_names.size()) cells.m_names.emplace_back();
  std::string& name = cells.m_names[cells.m_namesUsed++];
  return name.assign(prefix).append(1, '_').append(key);
}

void C_RowCells::S_Parser::Add(C_RowCells& cells, ondemand::object object, std::string_view prefix) {
  for (auto member : object) {
    const std::string_view key = KeyOf(member.key());
    AddMember(cells, NameOf(cells, prefix, key), member.value());
  }
}

// Nearly all texts have no escapes, and are taken where they are.
std::string_view C_RowCells::S_Parser::TextOf(ondemand::value& value, std::string_view token) {
  if (token.find('\\') != std::string_view::npos) return value.get_string();
  return token.substr(1, token.size() - 2);
}

void C_RowCells::S_Parser::AddNumber(S_RowCell& cell, ondemand::value& value, std::string_view token) {
  std::int64_t whole = 0;
  const char* const end = token.data() + token.size();
  if (std::from_chars(token.data(), end, whole) == std::from_chars_result{end, std::errc()})
    cell.value = whole;
  else
    cell.value = double{value.get_double()};
}

void C_RowCells::S_Parser::AddMember(C_RowCells& cells, std::string_view name, ondemand::value value) {
  const std::string_view token = value.raw_json_token();
  const char kind = token.front();
  if (kind == '{' && (name != kFields || cells.HasOwnMembers())) return Add(cells, value.get_object(), name);
  S_RowCell& cell = cells.m_cells.emplace_back();
  cell.name = name;
  if (kind == '"')
    cell.value = TextOf(value, token);
  else if (kind == '[')
    cell.value = std::string_view(ondemand::array(value.get_array()).raw_json());
  else if (kind == '{')
    cell.value = std::string_view(ondemand::object(value.get_object()).raw_json());
  else if (kind == 't' || kind == 'f')
    cell.value = std::int64_t{kind == 't' ? 1 : 0};
  else if (kind != 'n')
    AddNumber(cell, value, token);
}

const S_RowCell* C_RowCells::Find(std::string_view name) const {
  const auto found = std::ranges::find(m_cells, name, &S_RowCell::name);
  return found == m_cells.end() ? nullptr : &*found;
}

std::string_view C_RowCells::Text(std::string_view name) const {
  const S_RowCell* const cell = Find(name);
  const auto* const text = cell == nullptr ? nullptr : std::get_if<std::string_view>(&cell->value);
  return text == nullptr ? std::string_view() : *text;
}

const std::int64_t* C_RowCells::Integer(std::string_view name) const {
  const S_RowCell* const cell = Find(name);
  return cell == nullptr ? nullptr : std::get_if<std::int64_t>(&cell->value);
}

// Sentences without a decoder of their own are "partial", too: they are split at their commas.
bool C_RowCells::HasOwnMembers() const {
  const std::string_view depth = Text("decoded");
  return depth == "full" || (depth == "partial" && Text("protocol") != "nmea");
}

}  // namespace Host
