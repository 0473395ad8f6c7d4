#include "apps/velagnss/text/Lists.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace Host {
namespace {

std::string_view Trim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

}  // namespace

std::vector<std::string_view> SplitList(std::string_view list) {
  std::vector<std::string_view> items;
  while (true) {
    const std::size_t comma = list.find(',');
    items.push_back(Trim(list.substr(0, comma)));
    if (comma == std::string_view::npos) return items;
    list.remove_prefix(comma + 1);
  }
}

std::string InCapitals(std::string_view word) {
  std::string capitals(word);
  for (char& c : capitals)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return capitals;
}

std::function<std::string(const std::string&)> OneOf(std::vector<std::string> words) {
  return [words = std::move(words)](const std::string& text) -> std::string {
    if (std::find(words.begin(), words.end(), text) != words.end()) return {};
    return fmt::format("must be {}, not '{}'", fmt::join(words, " or "), text);
  };
}

}  // namespace Host
