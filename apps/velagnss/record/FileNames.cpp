#include "apps/velagnss/record/FileNames.h"

#include <fmt/core.h>

#include <algorithm>
#include <regex>

namespace Host {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono;

struct S_Moment {
  explicit S_Moment(t_RecordTime time) : day(floor<days>(time)), date(day), ofDay(floor<seconds>(time - day)) {}

  sys_days day;
  year_month_day date;
  hh_mm_ss<seconds> ofDay;
};

struct S_Code {
  char letter;
  int digits;  // 0: not a number
  long (*value)(const S_Moment&);
};
// clang-format off
constexpr S_Code kCodes[] = {
    {'Y', 4, [](const S_Moment& m) { return long{static_cast<int>(m.date.year())}; }},
    {'m', 2, [](const S_Moment& m) { return static_cast<long>(static_cast<unsigned>(m.date.month())); }},
    {'d', 2, [](const S_Moment& m) { return static_cast<long>(static_cast<unsigned>(m.date.day())); }},
    {'H', 2, [](const S_Moment& m) { return static_cast<long>(m.ofDay.hours().count()); }},
    {'M', 2, [](const S_Moment& m) { return static_cast<long>(m.ofDay.minutes().count()); }},
    {'S', 2, [](const S_Moment& m) { return static_cast<long>(m.ofDay.seconds().count()); }},
    {'j', 3, [](const S_Moment& m) { return static_cast<long>((m.day - sys_days(m.date.year() / 1 / 1)).count() + 1); }},
    {'n', 0, nullptr},
    {'%', 0, nullptr},
};
// clang-format on

const S_Code* FindCode(char letter) {
  const auto* const found = std::find_if(std::begin(kCodes), std::end(kCodes),
                                         [letter](const S_Code& code) { return code.letter == letter; });
  return found == std::end(kCodes) ? nullptr : found;
}

// Appends each character and each code of a good pattern.
template <class OnCharacter, class OnCode>
void ForEachPart(std::string_view pattern, const OnCharacter& onCharacter, const OnCode& onCode) {
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '%')
      onCode(*FindCode(pattern[++i]));
    else
      onCharacter(pattern[i]);
  }
}

// Where a number goes: before the last ending of the file's name, ".gz" not counted.
std::size_t NumberPosition(std::string_view name) {
  if (name.ends_with(kPackedEnding)) name.remove_suffix(kPackedEnding.size());
  const std::size_t file = name.rfind('/') + 1;  // 0 without a directory
  const std::size_t dot = name.rfind('.');
  return dot == std::string_view::npos || dot <= file ? name.size() : dot;
}

std::string Escaped(char character) {
  const bool isPlain = character == '_' || character == '-' || std::isalnum(static_cast<unsigned char>(character)) != 0;
  return isPlain ? std::string(1, character) : fmt::format("\\x{:02x}", static_cast<unsigned char>(character));
}

std::string Expression(std::string_view pattern, std::string_view safeSource) {
  std::string text;
  ForEachPart(
      pattern, [&](char character) { text += Escaped(character); },
      [&](const S_Code& code) {
        if (code.digits > 0)
          text += fmt::format("\\d{{{}}}", code.digits);
        else
          text += code.letter == 'n' ? std::string(safeSource) : Escaped(code.letter);
      });
  return text;
}

// The entries of each directory that fit the expression.
std::vector<fs::path> Fitting(const std::vector<fs::path>& directories, const std::regex& expression) {
  std::vector<fs::path> found;
  std::error_code error;
  for (const fs::path& directory : directories)
    for (const fs::directory_entry& entry : fs::directory_iterator(directory.empty() ? "." : directory, error))
      if (std::regex_match(entry.path().filename().native(), expression))
        found.push_back(directory / entry.path().filename());
  return found;
}

std::vector<fs::path> DirectoriesOf(const fs::path& pattern, std::string_view safeSource) {
  std::vector<fs::path> directories{pattern.root_path()};
  for (const fs::path& part : pattern.parent_path().relative_path()) {
    if (part.native().find('%') != std::string::npos)
      directories = Fitting(directories, std::regex(Expression(part.native(), safeSource)));
    else
      for (fs::path& directory : directories) directory /= part;
  }
  return directories;
}

}  // namespace

std::string CheckPattern(std::string_view pattern) {
  if (pattern.empty() || pattern.ends_with('/')) return "the name of the files is missing";
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] != '%') continue;
    if (++i == pattern.size() || FindCode(pattern[i]) == nullptr)
      return fmt::format("'{}' is not known in names of files; known: %Y %m %d %H %M %S %j %n %%",
                         pattern.substr(i - 1, 2));
  }
  return {};
}

bool HasSourceName(std::string_view pattern) {
  bool has = false;
  ForEachPart(
      pattern, [](char) {}, [&has](const S_Code& code) { has = has || code.letter == 'n'; });
  return has;
}

std::string ExpandPattern(std::string_view pattern, std::string_view safeSource, t_RecordTime time) {
  const S_Moment moment(time);
  std::string name;
  ForEachPart(
      pattern, [&name](char character) { name += character; },
      [&](const S_Code& code) {
        if (code.digits > 0)
          name += fmt::format("{:0{}}", code.value(moment), code.digits);
        else if (code.letter == 'n')
          name += safeSource;
        else
          name += code.letter;
      });
  return name;
}

std::string UndatedName(const std::string& name) {
  return std::string(name).insert(name.rfind('/') + 1, fmt::format("unsynced-{}_", BootId()));
}

std::string NumberedName(const std::string& name, unsigned int number) {
  if (number == 1) return name;
  return std::string(name).insert(NumberPosition(name), fmt::format("_{}", number));
}

std::vector<fs::path> FindParts(std::string_view pattern, std::string_view safeSource) {
  const fs::path path(pattern);
  const std::string file = path.filename().native();
  const std::size_t number = NumberPosition(file);
  const std::regex expression("(unsynced-\\w+_)?" + Expression(file.substr(0, number), safeSource) + "(_\\d+)?" +
                              Expression(file.substr(number), safeSource) + "\\" + std::string(kPartEnding));
  std::vector<fs::path> parts = Fitting(DirectoriesOf(path, safeSource), expression);
  std::sort(parts.begin(), parts.end());
  return parts;
}

}  // namespace Host
