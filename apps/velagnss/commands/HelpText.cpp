#include "apps/velagnss/commands/HelpText.h"

#include <cstdlib>
#include <sstream>
#include <utility>

#include "apps/velagnss/text/Numbers.h"

namespace Host {
namespace {

constexpr std::size_t kUsualWidth = 80;
constexpr std::size_t kLeastWidth = 40;
constexpr std::size_t kLeastColumn = 24;  // a narrower description goes below its entry
constexpr std::size_t kBelowIndentation = 6;

// One entry: "  --hex                       add the bytes", or a paragraph, which is all description.
struct S_Block {
  std::string head;         // up to the description, with the spaces before it
  std::string description;  // empty between blocks
};

S_Block BlockOf(const std::string& line, std::size_t indentation) {
  const std::size_t gap = line.find("  ", indentation);
  const std::size_t column = gap == std::string::npos ? indentation : line.find_first_not_of(' ', gap);
  return {line.substr(0, column), line.substr(column)};
}

std::string Wrapped(const S_Block& block, std::size_t width) {
  std::string text = block.head;
  std::size_t column = block.head.size();
  const bool isEntry = block.head.find_first_not_of(' ') != std::string::npos;
  if (isEntry && column + block.description.size() > width && column + kLeastColumn > width) {
    column = kBelowIndentation;
    text = text.substr(0, text.find_last_not_of(' ') + 1) + '\n' + std::string(column, ' ');
  }
  std::istringstream words(block.description);
  std::size_t size = column;
  for (std::string word; words >> word; size += word.size()) {
    const bool isFirst = size == column;
    if (!isFirst && size + 1 + word.size() > width) {
      text += '\n' + std::string(column, ' ');
      size = column;
    } else if (!isFirst) {
      text += ' ';
      ++size;
    }
    text += word;
  }
  return text + '\n';
}

}  // namespace

std::string WrapHelp(std::string_view help, std::size_t width) {
  std::istringstream lines{std::string(help)};
  std::string text;
  S_Block block;
  const auto flush = [&] {
    if (!block.description.empty()) text += Wrapped(std::exchange(block, {}), width);
  };
  // A heading, "Options:", is not the first line of a paragraph.
  const auto continues = [&](std::size_t indentation) {
    const bool isHeading = indentation == 0 && block.description.ends_with(':');
    return !block.description.empty() && indentation == block.head.size() && !isHeading;
  };
  for (std::string line; std::getline(lines, line);) {
    const std::size_t indentation = line.find_first_not_of(' ');
    if (indentation == std::string::npos) {
      flush();
      text += '\n';
    } else if (continues(indentation)) {
      block.description += ' ' + line.substr(indentation);
    } else {
      flush();
      block = BlockOf(line, indentation);
    }
  }
  flush();
  return text;
}

std::size_t HelpWidth() {
  const char* const columns = std::getenv("COLUMNS");
  std::size_t width = 0;
  return columns != nullptr && ParseWhole(columns, width) && width >= kLeastWidth ? width : kUsualWidth;
}

}  // namespace Host
