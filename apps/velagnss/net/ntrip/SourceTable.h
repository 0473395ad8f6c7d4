// The source table of a caster: what streams it has, which casters and networks they belong to.
//
// Tables in the field lack last fields or have more of them, are in Latin-1 or UTF-8, and may have no end. Whatever can
// be read of them is.
#ifndef VELAGNSS_APPS_SOURCE_TABLE_H
#define VELAGNSS_APPS_SOURCE_TABLE_H

#include <cstddef>
#include <limits>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

inline constexpr std::size_t kMaxSourceTable = std::size_t{4} << 20;
inline constexpr std::size_t kMaxTableRows = 50'000;  // in memory, a row of five bytes takes a hundred times as many

struct S_TableColumn {
  enum class eKind { Text, Number, Flag };
  std::string_view name;  // of the member in JSON
  eKind kind = eKind::Text;
};

struct S_TableRow {
  enum class eKind { Stream, Caster, Network };
  eKind kind;
  std::vector<std::string> fields;  // one for each column

  std::span<const S_TableColumn> Columns() const;

  // The field of a column that this kind of row has, by the name of the column.
  const std::string& operator[](std::string_view column) const;

  // NaN where there is none. Longitudes are from -180 to 180 degrees.
  double Number(std::string_view column) const;
};

struct S_SourceTable {
  std::vector<S_TableRow> rows;
  bool isComplete = false;  // its last line was there

  // Null when there is none. Upper and lower case differ.
  const S_TableRow* Find(std::string_view mount) const;
};

S_SourceTable ReadSourceTable(std::string_view text);

// Whether the last line of a table has come.
bool EndsSourceTable(std::string_view text);

// At most 3 names of mounts that the user may have meant, the likeliest first.
std::vector<std::string> SimilarMounts(const S_SourceTable& table, std::string_view mount);

// Why a caster may have answered a request for `mount` with its table; safe to show.
std::string WhyTable(const S_SourceTable& table, std::string_view mount);

}  // namespace Host

#endif  // VELAGNSS_APPS_SOURCE_TABLE_H
