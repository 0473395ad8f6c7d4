#include "apps/velagnss/sinks/database/RowCells.h"

#include <simdjson.h>

#include <algorithm>
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

bool IsOfEnvelope(std::string_view name) { return std::ranges::find(kEnvelope, name) != std::end(kEnvelope); }

}  // namespace

struct C_RowCells::S_Parser {
  ondemand::parser parser;

  static void Add(C_RowCells& cells, ondemand::object object, std::string_view prefix);
  static void AddMember(C_RowCells& cells, std::string_view name, ondemand::value value);
  static std::string_view NameOf(C_RowCells& cells, std::string_view prefix, std::string_view key);
  static void AddNumber(S_RowCell& cell, const ondemand::number& number);
};

C_RowCells::C_RowCells() : m_parser(std::make_unique<S_Parser>()) {}
C_RowCells::~C_RowCells() = default;

void C_RowCells::SetLines(std::string_view lines) {
  m_lines.assign(lines);
  m_lines.resize(lines.size() + simdjson::SIMDJSON_PADDING);
  m_size = lines.size();
  m_next = 0;
}

bool C_RowCells::Next() {
  m_cells.clear();
  m_namesUsed = 0;
  const std::size_t begin = m_next;
  const std::size_t end = std::min(m_lines.find('\n', begin), m_size);
  if (begin >= end) return false;
  m_next = end + 1;
  const simdjson::padded_string_view line(m_lines.data() + begin, end - begin, m_lines.size() - begin);
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

void C_RowCells::S_Parser::AddNumber(S_RowCell& cell, const ondemand::number& number) {
  if (number.is_int64())
    cell.value = number.get_int64();
  else
    cell.value = number.as_double();
}

void C_RowCells::S_Parser::AddMember(C_RowCells& cells, std::string_view name, ondemand::value value) {
  const ondemand::json_type type = value.type();
  if (type == ondemand::json_type::object && (name != kFields || cells.HasOwnMembers()))
    return Add(cells, value.get_object(), name);
  S_RowCell& cell = cells.m_cells.emplace_back(S_RowCell{name, {}});
  if (type == ondemand::json_type::number)
    AddNumber(cell, value.get_number());
  else if (type == ondemand::json_type::string)
    cell.value = std::string_view(value.get_string());
  else if (type == ondemand::json_type::boolean)
    cell.value = std::int64_t{value.get_bool() ? 1 : 0};
  else if (type == ondemand::json_type::array)
    cell.value = std::string_view(ondemand::array(value.get_array()).raw_json());
  else if (type == ondemand::json_type::object)
    cell.value = std::string_view(ondemand::object(value.get_object()).raw_json());
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
