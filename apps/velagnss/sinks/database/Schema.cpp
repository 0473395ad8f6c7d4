#include "apps/velagnss/sinks/database/Schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace Host {
namespace {

constexpr std::string_view kInteger = "INTEGER";
constexpr std::string_view kReal = "REAL";
constexpr std::string_view kText = "TEXT";

// clang-format off
constexpr S_Column kFrame[] = {
    {"offset", kInteger}, {"length", kInteger}, {"arrival", kText}, {"result", kInteger},
    {"error", kText},     {"decoded", kText},   {"utc", kText},
};
constexpr S_Column kOther[] = {
    {"offset", kInteger}, {"length", kInteger}, {"arrival", kText}, {"result", kInteger},
    {"error", kText},     {"decoded", kText},   {"utc", kText},     {"protocol", kText},
    {"message", kText},   {"number", kInteger}, {"text", kText},    {"fields", kText},
};
constexpr S_Column kEpoch[] = {
    {"offset", kInteger},              {"arrival", kText},                {"utc", kText},
    {"gps_time", kText},               {"time_of_day_s", kReal},          {"latitude_deg", kReal},
    {"longitude_deg", kReal},          {"altitude_m", kReal},             {"geoid_separation_m", kReal},
    {"mode", kText},                   {"satellites_used", kInteger},     {"speed_knots", kReal},
    {"course_true_deg", kReal},        {"fix_type", kText},               {"pdop", kReal},
    {"hdop", kReal},                   {"vdop", kReal},                   {"accuracy_range_rms_m", kReal},
    {"accuracy_semi_major_m", kReal},  {"accuracy_semi_minor_m", kReal},  {"accuracy_orientation_deg", kReal},
    {"accuracy_latitude_deviation_m", kReal}, {"accuracy_longitude_deviation_m", kReal}, {"accuracy_altitude_deviation_m", kReal},
    {"station_number", kInteger},      {"station_latitude_deg", kReal},   {"station_longitude_deg", kReal},
    {"station_height_m", kReal},       {"station_messages", kText},       {"satellites", kText},
};
constexpr S_Column kRejected[] = {
    {"offset", kInteger}, {"length", kInteger}, {"arrival", kText}, {"count", kInteger},
    {"result", kInteger}, {"why", kText},       {"start", kText},
};
constexpr S_Column kSkipped[] = {
    {"offset", kInteger}, {"length", kInteger}, {"arrival", kText}, {"why", kText},
};
constexpr S_Column kSource[] = {
    {"arrival", kText}, {"state", kText}, {"text", kText}, {"failures", kInteger}, {"retry_in_ms", kInteger},
};

constexpr S_TableKind kFixedTables[] = {
    {kOtherTable, "",         kOther,    false},
    {"epoch",     "epoch",    kEpoch,    true},
    {"rejected",  "rejected", kRejected, true},
    {"skipped",   "skipped",  kSkipped,  true},
    {"source",    "source",   kSource,   true},
};

// Real numbers whose names have no unit, and whole numbers whose names have one.
constexpr std::string_view kRealNames[] = {"eccentricity", "gamma_n", "hdop", "pdop", "probability", "speed", "time", "vdop"};
constexpr std::string_view kWholeNames[] = {"epoch_ms",        "epoch_s",           "leap_seconds_s",
                                            "second_of_day_s", "update_interval_s", "retry_in_ms"};
constexpr std::string_view kUnits[] = {"_m", "_s", "_deg", "_rad", "_hz", "_dbhz", "_knots", "_kmh", "_nmi", "_min",
                                       "_ms", "_s2", "_ft", "_fathoms", "_c", "_h", "_mm", "_ppm", "_cycles"};
// clang-format on

bool HasUnit(std::string_view name) {
  return std::ranges::any_of(kUnits, [name](std::string_view unit) { return name.ends_with(unit); });
}

template <class Names>
bool IsIn(const Names& names, std::string_view name) {
  return std::ranges::find(names, name) != std::end(names);
}

constexpr std::string_view kInputsAndTables = R"(
CREATE TABLE inputs (
  id INTEGER PRIMARY KEY,
  identity TEXT NOT NULL UNIQUE,
  name TEXT NOT NULL,
  first_seen TEXT NOT NULL,
  last_written TEXT,
  committed_offset INTEGER);
CREATE TABLE tables (name TEXT PRIMARY KEY, protocol TEXT NOT NULL, message TEXT NOT NULL);
)";

// Seconds since 1970 of an epoch: SQLite of Debian 12 and before reads whole seconds only.
constexpr std::string_view kUnixSeconds =
    "strftime('%s', substr(e.utc, 1, 19)) + (e.time_of_day_s - CAST(e.time_of_day_s AS INTEGER)) AS unix_s";

// {0}: `kUnixSeconds`.
constexpr std::string_view kViews = R"(
CREATE INDEX epoch_utc ON epoch (utc);
CREATE VIEW epochs AS
  SELECT e.id, e.input, i.name AS input_name, e.offset, e.arrival, e.utc, {0}, e.gps_time, e.time_of_day_s,
    e.latitude_deg, e.longitude_deg, e.altitude_m, e.geoid_separation_m, e.mode, e.fix_type, e.satellites_used,
    json_array_length(e.satellites) AS satellites_seen, e.speed_knots, e.course_true_deg, e.pdop, e.hdop, e.vdop,
    e.accuracy_latitude_deviation_m, e.accuracy_longitude_deviation_m, e.accuracy_altitude_deviation_m,
    e.station_number
  FROM epoch e JOIN inputs i ON i.id = e.input;
CREATE VIEW satellites AS
  SELECT e.id AS epoch, e.input, e.utc, {0},
    json_extract(s.value, '$.system') AS system, json_extract(s.value, '$.number') AS number,
    json_extract(s.value, '$.nmea_id') AS nmea_id, json_extract(s.value, '$.elevation_deg') AS elevation_deg,
    json_extract(s.value, '$.azimuth_deg') AS azimuth_deg, json_extract(s.value, '$.used') AS used,
    (SELECT max(json_extract(g.value, '$.cn0_dbhz')) FROM json_each(s.value, '$.signals') g) AS cn0_dbhz
  FROM epoch e, json_each(e.satellites) s;
CREATE VIEW signals AS
  SELECT e.id AS epoch, e.input, e.utc, {0},
    json_extract(s.value, '$.system') AS system, json_extract(s.value, '$.number') AS number,
    json_extract(g.value, '$.signal') AS signal, json_extract(g.value, '$.code') AS code,
    json_extract(g.value, '$.cn0_dbhz') AS cn0_dbhz
  FROM epoch e, json_each(e.satellites) s, json_each(s.value, '$.signals') g;
CREATE VIEW messages AS
  SELECT input, protocol, message, count(*) AS frames, sum(length) AS bytes, sum(coalesce(result, 0) <> 0) AS errors
  FROM frames GROUP BY input, protocol, message;
CREATE VIEW integrity AS
  SELECT i.id AS input, i.name AS input_name, coalesce(m.frames, 0) AS frames, coalesce(m.bytes, 0) AS frame_bytes,
    coalesce(m.errors, 0) AS frames_with_errors,
    (SELECT coalesce(sum(count), 0) FROM rejected WHERE input = i.id) AS rejected_starts,
    (SELECT coalesce(sum(length), 0) FROM skipped WHERE input = i.id) AS skipped_bytes,
    (SELECT count(*) FROM source WHERE input = i.id AND state = 'lost') AS connections_lost
  FROM inputs i LEFT JOIN (SELECT input, sum(frames) AS frames, sum(bytes) AS bytes, sum(errors) AS errors
                           FROM messages GROUP BY input) m ON m.input = i.id;
)";

constexpr char Lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; }

}  // namespace

std::span<const S_TableKind> FixedTables() { return kFixedTables; }
std::span<const S_Column> FrameColumns() { return kFrame; }

std::string HeadStatements() {
  return fmt::format("PRAGMA application_id = {}; PRAGMA user_version = {};", kApplicationId, kDatabaseVersion) +
         std::string(kInputsAndTables);
}

std::string ViewStatements() { return fmt::format(fmt::runtime(kViews), kUnixSeconds); }

std::string_view ColumnType(std::string_view name, std::string_view seen) {
  const bool isReal = IsIn(kRealNames, name) || (HasUnit(name) && !IsIn(kWholeNames, name));
  if (isReal && seen != kText) return kReal;
  return seen == kReal ? "NUMERIC" : seen;
}

// The word that the protocol and the message begin with is there once: JSON has "rtcm3" and "RTCM1077".
std::string TableName(std::string_view protocol, std::string_view message) {
  const std::string_view word = protocol.substr(0, protocol.find_last_not_of("0123456789") + 1);
  const bool isRepeated = std::ranges::equal(message.substr(0, word.size()), word, {}, Lower);
  std::string name = fmt::format("{}_{}", protocol, isRepeated ? message.substr(word.size()) : message);
  if (name.ends_with('_')) name.pop_back();
  std::ranges::transform(name, name.begin(), Lower);
  return name;
}

bool MakeKey(std::int64_t input, std::int64_t offset, std::int64_t& key) {
  constexpr int kOffsetBits = 44;  // 16 TiB
  constexpr std::int64_t kMostInputs = std::int64_t{1} << (62 - kOffsetBits);
  if (offset < 0 || offset >> kOffsetBits != 0 || input >= kMostInputs) return false;
  key = (input << kOffsetBits) | offset;
  return true;
}

}  // namespace Host
