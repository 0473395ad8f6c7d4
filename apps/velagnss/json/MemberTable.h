// Tables of members for both directions: FieldTable.h writes JSON, this one also reads it back into a record.
#ifndef VELAGNSS_APPS_MEMBER_TABLE_H
#define VELAGNSS_APPS_MEMBER_TABLE_H

#include <fmt/core.h>

#include <algorithm>
#include <concepts>
#include <iterator>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

#include "apps/velagnss/json/FieldTable.h"
#include "apps/velagnss/text/AppendFormat.h"
#include "geo/NotAvailable.h"

namespace Host {

// What is wrong with a value, for the user; empty when nothing is.
using t_Problem = std::string;

// The value as the user wrote it, shortened.
inline std::string Quoted(const nlohmann::json& value) {
  constexpr std::size_t kMaxQuoted = 40;
  std::string text = value.dump(-1, ' ', true, nlohmann::json::error_handler_t::replace);
  if (text.size() > kMaxQuoted) text.replace(kMaxQuoted, std::string::npos, "...");
  return text;
}

// The names, quoted and each once, for a message: "a", "b".
template <class Names>
std::string ListOfNames(const Names& names) {
  std::string list;
  for (const auto* name = std::begin(names); name != std::end(names); ++name)
    if (!name->empty() && std::find(std::begin(names), name, *name) == name)
      AppendFormat(list, "{}\"{}\"", list.empty() ? "" : ", ", *name);
  return list;
}

// --- Single values ---

// A JSON integer from `least` to `greatest`, which `number` can hold.
template <std::integral Integer>
t_Problem ReadInteger(const nlohmann::json& value, std::int64_t least, std::int64_t greatest, Integer& number) {
  if (!value.is_number_integer()) return Quoted(value) + " is not an integer";
  const bool isBeyond = value.is_number_unsigned() && value.get<std::uint64_t>() > static_cast<std::uint64_t>(greatest);
  const auto wide = value.get<std::int64_t>();
  if (isBeyond || wide < least || wide > greatest)
    return fmt::format("{} is outside the range {} to {}", Quoted(value), least, greatest);
  number = static_cast<Integer>(wide);
  return {};
}

inline t_Problem ReadNumber(const nlohmann::json& value, double& number) {
  if (!value.is_number()) return Quoted(value) + " is not a number";
  number = value.get<double>();
  return {};
}

// The greatest value of the type is its marker: no number.
template <std::unsigned_integral Integer>
t_Problem ReadNumber(const nlohmann::json& value, Integer& number) {
  return ReadInteger(value, 0, std::numeric_limits<Integer>::max() - 1, number);
}

// The index of a name in an array; an empty one in it cannot be named.
template <class Names>
std::optional<std::size_t> FindName(const nlohmann::json& value, const Names& names) {
  if (!value.is_string()) return std::nullopt;
  const auto& text = value.get_ref<const std::string&>();
  for (std::size_t i = 0; i < std::size(names) && !text.empty(); ++i)
    if (text == names[i]) return i;
  return std::nullopt;
}

template <const auto& Names, class Enum>
t_Problem ReadName(const nlohmann::json& value, Enum& named) {
  const std::optional<std::size_t> index = FindName(value, Names);
  if (!index) return fmt::format("{} is not one of {}", Quoted(value), ListOfNames(Names));
  named = static_cast<Enum>(*index);
  return {};
}

// Each item of an array of at most `most` by `read`, which is given its index too.
template <class Read>
t_Problem ReadItems(const nlohmann::json& value, std::size_t most, Read read) {
  if (!value.is_array()) return Quoted(value) + " is not an array";
  if (value.size() > most) return fmt::format("{} items, at most {} fit", value.size(), most);
  for (std::size_t i = 0; i < value.size(); ++i)
    if (t_Problem problem = read(value[i], i); !problem.empty()) return fmt::format("item {}: {}", i + 1, problem);
  return {};
}

// --- Tables ---

// How a member's value is written and read. `read` is never given null. When it refuses a value, it may leave the
// member in any state.
template <class Record>
struct S_MemberKind {
  void (*write)(C_JsonWriter& json, const Record& record);  // exactly one value
  t_Problem (*read)(const nlohmann::json& value, Record& record);
};

// A row of a table.
template <class Record>
struct S_Member {
  constexpr S_Member(std::string_view memberName, const S_MemberKind<Record>& kind)
      : name(memberName), write(kind.write), read(kind.read) {}

  std::string_view name;
  decltype(S_MemberKind<Record>::write) write;
  decltype(S_MemberKind<Record>::read) read;
};

template <class Record, class Type>
Record RecordOf(Type Record::*member);  // never defined: only its type is of interest
template <auto Member>
using t_RecordOf = decltype(RecordOf(Member));
template <auto Member>
using t_KindOf = S_MemberKind<t_RecordOf<Member>>;

// Reads what `object` has; what it leaves out, or gives as null, keeps its value. A name without a row is a mistake.
template <class Record>
t_Problem ReadMembers(const nlohmann::json& object, std::span<const S_Member<Record>> members, Record& record) {
  for (const auto& [name, value] : object.items()) {
    const auto member =
        std::find_if(members.begin(), members.end(), [&name = name](const auto& row) { return row.name == name; });
    if (member == members.end()) return Quoted(name) + " is not a member";
    if (value.is_null()) continue;
    if (t_Problem problem = member->read(value, record); !problem.empty())
      return fmt::format("{}: {}", member->name, problem);
  }
  return {};
}

template <class Record, std::size_t N>
t_Problem ReadMembers(const nlohmann::json& object, const S_Member<Record> (&members)[N], Record& record) {
  return ReadMembers(object, std::span<const S_Member<Record>>(members), record);
}

// --- Kinds of members ---

// A number whose marker is that of its type.
template <auto Member>
constexpr t_KindOf<Member> Number() {
  using t_Record = t_RecordOf<Member>;
  return {&Value<Member, t_Record>,
          [](const nlohmann::json& value, t_Record& record) { return ReadNumber(value, record.*Member); }};
}

// An integer whose marker lies among its values.
template <auto Member, auto Marker, std::int64_t Least, std::int64_t Greatest>
constexpr t_KindOf<Member> NumberUnless() {
  using t_Record = t_RecordOf<Member>;
  return {&ValueUnless<Member, Marker, t_Record>, [](const nlohmann::json& value, t_Record& record) {
            t_Problem problem = ReadInteger(value, Least, Greatest, record.*Member);
            if (problem.empty() && record.*Member == Marker) problem = Quoted(value) + " means no value: write null";
            return problem;
          }};
}

// Degrees of at most `Limit` to either side.
template <auto Member, int Limit>
constexpr t_KindOf<Member> Degrees() {
  using t_Record = t_RecordOf<Member>;
  return {&Value<Member, t_Record>, [](const nlohmann::json& value, t_Record& record) {
            t_Problem problem = ReadNumber(value, record.*Member);
            if (!problem.empty() || (record.*Member >= -Limit && record.*Member <= Limit)) return problem;
            return fmt::format("{} is outside the range {} to {}", Quoted(value), -Limit, Limit);
          }};
}

template <auto Member, const auto& Names>
constexpr t_KindOf<Member> Named() {
  using t_Record = t_RecordOf<Member>;
  return {&Name<Member, Names, t_Record>,
          [](const nlohmann::json& value, t_Record& record) { return ReadName<Names>(value, record.*Member); }};
}

// One of a few letters; NUL for none.
template <auto Member, const auto& Letters>
constexpr t_KindOf<Member> OneOf() {
  using t_Record = t_RecordOf<Member>;
  return {&Letter<Member, t_Record>, [](const nlohmann::json& value, t_Record& record) {
            unsigned int index = 0;
            t_Problem problem = ReadName<Letters>(value, index);
            if (problem.empty()) record.*Member = static_cast<unsigned char>(Letters[index][0]);
            return problem;
          }};
}

}  // namespace Host

#endif  // VELAGNSS_APPS_MEMBER_TABLE_H
