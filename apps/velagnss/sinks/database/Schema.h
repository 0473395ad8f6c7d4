// The tables and views that every database has, and what the columns of a table are.
#ifndef VELAGNSS_APPS_SCHEMA_H
#define VELAGNSS_APPS_SCHEMA_H

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace Host {

// In the head of the file: which program it belongs to, and which version of these tables it has. The version increases
// when a table or a column changes its meaning or is removed, not when one is added.
inline constexpr std::int64_t kApplicationId = 0x56474E53;  // "VGNS"
inline constexpr std::int64_t kDatabaseVersion = 1;

struct S_Column {
  std::string_view name;
  std::string_view type;  // empty: each value keeps its own
};

struct S_TableKind {
  std::string_view name;
  std::string_view event;  // the value of that member in the lines that it takes; empty: frames
  std::span<const S_Column> columns;
  // A row that comes again replaces the one that is there. An input that is cut off ends its last epoch and its last
  // run of damage early; when it is read again, or has grown, they are complete. Frames stay what they were.
  bool replaces;
};

// The tables of epochs, events and frames without a decoder of their own.
std::span<const S_TableKind> FixedTables();
inline constexpr std::string_view kOtherTable = "other";

// Of each table with frames of one message; more follow from what the message holds.
std::span<const S_Column> FrameColumns();

// What a new database begins with, before its tables, and what follows them.
std::string HeadStatements();
std::string ViewStatements();

// The type of the column for a member. `seen`: that of the value that came first, empty for null. JSON does not show
// whether 1 is a real number, but its name does. Where that has no unit, each value is stored as it is, so that it does
// not matter which one came first.
std::string_view ColumnType(std::string_view name, std::string_view seen);

// The table of a message: "nmea_gga", "rtcm3_1077", "rd_1".
std::string TableName(std::string_view protocol, std::string_view message);

// The key of a row: where it begins, in the order of inputs and offsets. One number, because rows that come in their
// order are then appended, and no further index is needed. False when it has no room for the offset or the input.
bool MakeKey(std::int64_t input, std::int64_t offset, std::int64_t& key);

}  // namespace Host

#endif  // VELAGNSS_APPS_SCHEMA_H
