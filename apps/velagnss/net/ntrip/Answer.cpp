#include "apps/velagnss/net/ntrip/Answer.h"

#include <fmt/core.h>

#include <algorithm>
#include <array>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

using namespace std::chrono_literals;
using eKind = S_NtripAnswer::eKind;
using std::chrono::seconds;

constexpr std::size_t kShown = 100;  // of what a caster says

// The first row that a code is in counts.
struct S_CodeMeaning {
  unsigned int first;
  unsigned int last;
  eKind kind;
  std::string_view text;
  seconds pause;  // at least
  bool mayBeVersion;
};
constexpr S_CodeMeaning kCodes[] = {
    {200, 299, eKind::Good, "", 0s, false},
    {300, 399, eKind::Moved, "", 0s, false},
    {401, 401, eKind::Refused, "wrong or missing user name or password", kAccountPause, false},
    {403, 403, eKind::Refused, "no right to the stream, or this address is banned", kAccountPause, false},
    {404, 404, eKind::Refused, "no such mount, or its source is away", kRefusalPause, false},
    {409, 409, eKind::Refused, "the mount is taken, perhaps by an earlier connection", kRefusalPause, false},
    {429, 429, eKind::Refused, "too many requests", kRefusalPause, false},
    {400, 499, eKind::Refused, "the caster does not accept the request", kRefusalPause, true},
    {501, 501, eKind::Refused, "the caster does not know this kind of request", kRefusalPause, true},
    {505, 505, eKind::Refused, "the caster does not know this version", kRefusalPause, true},
    {500, 599, eKind::Lost, "the caster has trouble", 0s, false},
};
constexpr S_CodeMeaning kOtherCode = {0, 0, eKind::Refused, "an answer without a meaning", kRefusalPause, true};

// Words of version 1 refusals, in lower case.
constexpr struct {
  std::string_view word;
  seconds pause;
} kErrorWords[] = {
    {"password", kAccountPause},
    {"authoriz", kAccountPause},
    {"banned", kAccountPause},
};

std::string Shown(std::string_view text) { return Printable(text.substr(0, kShown)); }

S_NtripAnswer OfCode(const S_HttpHead& head, std::chrono::system_clock::time_point now) {
  const auto* const found = std::find_if(std::begin(kCodes), std::end(kCodes), [&](const S_CodeMeaning& row) {
    return head.code >= row.first && head.code <= row.last;
  });
  const S_CodeMeaning& row = found == std::end(kCodes) ? kOtherCode : *found;
  if (row.kind == eKind::Good) return {};
  if (row.kind == eKind::Moved) return {eKind::Moved, std::string(head.Field("location")), {}, false};
  std::optional<seconds> pause = ReadRetryAfter(head.Field("retry-after"), now);
  if (row.pause > 0s) pause = std::max(pause.value_or(0s), row.pause);
  return {row.kind, fmt::format("{} ({})", row.text, head.code), pause, row.mayBeVersion};
}

// "ERROR - Bad Password".
S_NtripAnswer OfError(const S_HttpHead& head) {
  const std::string lower = InLowerCase(head.firstLine);
  seconds pause = kRefusalPause;
  for (const auto& row : kErrorWords)
    if (lower.find(row.word) != std::string::npos) pause = row.pause;
  return {eKind::Refused, fmt::format("the caster says '{}'", Shown(head.firstLine)), pause, false};
}

S_NtripAnswer OfType(std::string_view type) {
  const std::string lower = InLowerCase(type);
  if (lower.starts_with("gnss/sourcetable")) return {eKind::Table};
  if (lower.starts_with("text/html")) return {eKind::Page};
  return {};
}

// 1 to 12; 0 for anything else.
unsigned int MonthOf(std::string_view name) {
  constexpr std::string_view kMonths = "jan feb mar apr may jun jul aug sep oct nov dec";
  const std::size_t at = name.size() == 3 ? kMonths.find(InLowerCase(name)) : std::string_view::npos;
  return at == std::string_view::npos || at % 4 != 0 ? 0 : static_cast<unsigned int>(at / 4) + 1;
}

// "08:49:37".
std::optional<seconds> TimeOfDay(std::string_view text) {
  std::array<unsigned int, 3> parts{};
  if (text.size() != 8 || text[2] != ':' || text[5] != ':') return std::nullopt;
  for (std::size_t i = 0; i < parts.size(); ++i)
    if (!ParseWhole(text.substr(3 * i, 2), parts[i])) return std::nullopt;
  return seconds(parts[0] * 3600 + parts[1] * 60 + parts[2]);
}

// "Sun, 06 Nov 1994 08:49:37 GMT"; the two other forms are obsolete.
std::optional<std::chrono::system_clock::time_point> ReadHttpDate(std::string_view text) {
  const std::vector<std::string_view> words = WordsOf(text);
  unsigned int day = 0;
  int year = 0;
  if (words.size() != 6 || !ParseWhole(words[1], day) || !ParseWhole(words[3], year)) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(MonthOf(words[2])),
                                         std::chrono::day(day)};
  const std::optional<seconds> time = TimeOfDay(words[4]);
  if (!date.ok() || !time || year < 1970 || year > 2200) return std::nullopt;
  return std::chrono::sys_days(date) + *time;
}

}  // namespace

std::optional<seconds> ReadRetryAfter(std::string_view text, std::chrono::system_clock::time_point now) {
  constexpr seconds kLongest = 24h;
  std::uint64_t count = 0;
  if (ParseWhole(text, count)) return seconds(std::min<std::uint64_t>(count, kLongest.count()));
  const auto date = ReadHttpDate(text);
  if (!date) return std::nullopt;
  return std::clamp(std::chrono::ceil<seconds>(*date - now), seconds(0), kLongest);
}

S_NtripAnswer MeaningOf(const S_HttpHead& head, std::chrono::system_clock::time_point now) {
  switch (head.kind) {
    case S_HttpHead::eKind::Error:
      return OfError(head);
    case S_HttpHead::eKind::Page:
      return {eKind::Page};
    case S_HttpHead::eKind::Request:
    case S_HttpHead::eKind::Source:
      return {eKind::Refused, fmt::format("not a caster: it answers '{}'", Shown(head.firstLine)), kRefusalPause,
              false};
    case S_HttpHead::eKind::Http:
    case S_HttpHead::eKind::Icy:
    case S_HttpHead::eKind::Table:
      break;
  }
  S_NtripAnswer answer = OfCode(head, now);
  if (answer.kind != eKind::Good) return answer;
  return head.kind == S_HttpHead::eKind::Table ? S_NtripAnswer{eKind::Table} : OfType(head.Field("content-type"));
}

eNtripBody BodyOf(std::string_view first) {
  if (first.starts_with('<')) return eNtripBody::Page;
  bool mayBeTable = false;
  for (const std::string_view mark : {"STR;", "CAS;", "NET;", "ENDSOURCETABLE"}) {
    if (first.starts_with(mark)) return eNtripBody::Table;
    mayBeTable = mayBeTable || mark.starts_with(first);
  }
  return mayBeTable ? eNtripBody::Undecided : eNtripBody::Data;
}

std::string TitleOf(std::string_view page) {
  const std::string lower = InLowerCase(page);
  const std::size_t element = lower.find("<title");
  const std::size_t begin = element == std::string::npos ? element : lower.find('>', element);
  if (begin == std::string::npos) return {};
  const std::string_view title = page.substr(begin + 1, lower.find('<', begin) - begin - 1);
  const std::size_t first = title.find_first_not_of(" \t\r\n");
  const std::size_t last = title.find_last_not_of(" \t\r\n");
  return first == std::string_view::npos ? std::string() : Shown(title.substr(first, last - first + 1));
}

}  // namespace Host
