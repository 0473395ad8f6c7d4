// Records as JSON members: a table of names and writers per record, and the one loop that interprets it.
//
// A member's name says its unit ("altitude_m"). A value that is not available is null: no marker leaves the program.
#ifndef VELAGNSS_APPS_FIELD_TABLE_H
#define VELAGNSS_APPS_FIELD_TABLE_H

#include <concepts>
#include <iterator>
#include <span>
#include <string_view>
#include <utility>

#include "apps/velagnss/text/JsonWriter.h"
#include "geo/NotAvailable.h"

namespace Host {

template <class Record>
struct S_JsonField {
  std::string_view name;
  void (*write)(C_JsonWriter& json, const Record& record);  // exactly one value
};

// `Field` is an S_JsonField or what has its members.
template <class Field, class Record>
void WriteFields(C_JsonWriter& json, std::span<const Field> fields, const Record& record) {
  for (const Field& field : fields) {
    json.Key(field.name);
    field.write(json, record);
  }
}

template <class Field, std::size_t N, class Record>
void WriteFields(C_JsonWriter& json, const Field (&fields)[N], const Record& record) {
  WriteFields(json, std::span<const Field>(fields), record);
}

// The same with the table as a constant, for what comes all the time: unrolled, so that names and writers are known to
// the compiler.
template <const auto& Fields, class Record, std::size_t... I>
void WriteRows(C_JsonWriter& json, const Record& record, std::index_sequence<I...>) {
  ((json.Key(Fields[I].name), Fields[I].write(json, record)), ...);
}
template <const auto& Fields, class Record>
void WriteFieldsOf(C_JsonWriter& json, const Record& record) {
  WriteRows<Fields>(json, record, std::make_index_sequence<std::size(Fields)>());
}

inline void WriteOrNull(C_JsonWriter& json, double value) {
  if (IsNotAvailable(value)) return json.Null();
  json.Number(value);
}
template <std::unsigned_integral Number>
void WriteOrNull(C_JsonWriter& json, Number value) {
  if (IsNotAvailable(value)) return json.Null();
  json.Integer(value);
}

// --- Writers for the tables ---

// A number whose marker is that of its type.
template <auto Member, class Record>
void Value(C_JsonWriter& json, const Record& record) {
  WriteOrNull(json, record.*Member);
}

// An integer without a marker: every value is one.
template <auto Member, class Record>
void Plain(C_JsonWriter& json, const Record& record) {
  json.Integer(record.*Member);
}

// An integer with a marker of its own.
template <auto Member, auto Marker, class Record>
void ValueUnless(C_JsonWriter& json, const Record& record) {
  if (record.*Member == Marker) return json.Null();
  json.Integer(record.*Member);
}

// One character; NUL for none.
template <auto Member, class Record>
void Letter(C_JsonWriter& json, const Record& record) {
  const auto letter = static_cast<char>(record.*Member);
  if (letter == '\0') return json.Null();
  json.String({&letter, 1});
}

// An enumeration by the names of its values, an array; null for an empty name and beyond the last.
template <const auto& Names, class Enum>
void WriteName(C_JsonWriter& json, Enum value) {
  const auto index = static_cast<std::size_t>(value);
  if (index >= std::size(Names) || Names[index].empty()) return json.Null();
  json.Name(Names[index]);
}
template <auto Member, const auto& Names, class Record>
void Name(C_JsonWriter& json, const Record& record) {
  WriteName<Names>(json, record.*Member);
}

// An array of numbers, missing ones null.
template <auto Member, class Record>
void Values(C_JsonWriter& json, const Record& record) {
  json.BeginArray();
  for (const auto& value : record.*Member) WriteOrNull(json, value);
  json.EndArray();
}

// The numbers of an array without the missing ones.
template <auto Member, class Record>
void ValuesPresent(C_JsonWriter& json, const Record& record) {
  json.BeginArray();
  for (const auto& value : record.*Member)
    if (!IsNotAvailable(value)) json.Integer(value);
  json.EndArray();
}

// Text in an array of characters, up to its NUL.
template <auto Member, class Record>
void Text(C_JsonWriter& json, const Record& record) {
  const std::string_view text(record.*Member, std::size(record.*Member));
  json.String(text.substr(0, text.find('\0')));
}

}  // namespace Host

#endif  // VELAGNSS_APPS_FIELD_TABLE_H
