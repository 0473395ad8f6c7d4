#include "apps/velagnss/json/TagJson.h"

#include <cstdint>

#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/TimeText.h"

namespace Host {
namespace {

void WriteText(C_JsonWriter& json, std::string_view value) { json.String(value); }

void WriteNumber(C_JsonWriter& json, std::string_view value) {
  std::uint64_t number = 0;
  if (!ParseWhole(value, number)) return json.Null();
  json.Integer(number);
}

// Unix time: seconds, by some senders milliseconds, which no seconds before the year 5000 can be taken for.
void WriteUnixTime(C_JsonWriter& json, std::string_view value) {
  constexpr unsigned int kMjdOf1970 = 40587;
  constexpr std::uint64_t kSecondsPerDayWhole = 86400;
  constexpr std::uint64_t kLeastMilliseconds = 100'000'000'000;
  std::uint64_t time = 0;
  if (!ParseWhole(value, time)) return json.Null();
  const std::uint64_t unit = time >= kLeastMilliseconds ? 1000 : 1;
  const std::uint64_t day = time / unit / kSecondsPerDayWhole;
  const auto rest = static_cast<double>(time - day * kSecondsPerDayWhole * unit);
  constexpr std::uint64_t kLastDay = 100'000;
  if (day > kLastDay) return json.Null();
  const C_TimeText utc = C_TimeText::Utc(kMjdOf1970 + static_cast<unsigned int>(day), rest / static_cast<double>(unit));
  if (utc.IsEmpty()) return json.Null();
  json.String(utc.Text());
}

struct S_ParameterRow {
  char code;
  std::string_view name;
  void (*write)(C_JsonWriter& json, std::string_view value);
};
constexpr S_ParameterRow kParameters[] = {
    {'s', "source", &WriteText}, {'d', "destination", &WriteText}, {'c', "utc", &WriteUnixTime},
    {'g', "group", &WriteText},  {'n', "line", &WriteNumber},      {'r', "relative_time", &WriteNumber},
    {'t', "text", &WriteText},
};

}  // namespace

// Of a parameter that comes twice the last one counts: the block nearest to the sentence.
void WriteTag(C_JsonWriter& json, const S_TagBlocks& blocks) {
  json.BeginObject();
  json.Key("raw").String(blocks.text);
  json.Key("checksum_ok").Boolean(blocks.areChecked);
  for (const S_ParameterRow& row : kParameters) {
    const S_TagParameter* last = nullptr;
    for (const S_TagParameter& parameter : blocks.parameters)
      if (parameter.code == row.code) last = &parameter;
    if (last == nullptr) continue;
    json.Key(row.name);
    row.write(json, last->value);
  }
  json.EndObject();
}

}  // namespace Host
