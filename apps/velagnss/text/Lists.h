// Lists of words: those that users write, separated by commas, and those that messages and help show.
#ifndef VELAGNSS_APPS_LISTS_H
#define VELAGNSS_APPS_LISTS_H

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

// The items between commas without the spaces around them. An empty list has one item, an empty one.
std::vector<std::string_view> SplitList(std::string_view list);

// A word in capital letters. ASCII only: the functions of the C library depend on the locale.
std::string InCapitals(std::string_view word);

// The name of each row, joined by `separator`.
template <class Rows, class NameOf>
std::string JoinNames(const Rows& rows, NameOf nameOf, std::string_view separator = " ") {
  std::string names;
  for (const auto& row : rows) names.append(names.empty() ? "" : separator).append(std::invoke(nameOf, row));
  return names;
}

// A check for an option's text: one of `words`. Its answer is what is wrong, or empty.
std::function<std::string(const std::string&)> OneOf(std::vector<std::string> words);

}  // namespace Host

#endif  // VELAGNSS_APPS_LISTS_H
