#include "apps/velagnss/pipeline/TagBlock.h"

#include <algorithm>
#include <charconv>

#include "apps/velagnss/text/Lists.h"

namespace Host {
namespace {

constexpr char kDelimiter = '\\';
constexpr std::size_t kChecksum = 3;  // "*" and two digits

bool IsText(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

// The last block of a text that ends with its backslash, with both backslashes; empty when there is none.
std::string_view LastBlock(std::string_view text) {
  if (text.size() < 2 || text.back() != kDelimiter) return {};
  const std::size_t begin = text.rfind(kDelimiter, text.size() - 2);
  if (begin == std::string_view::npos) return {};
  const std::string_view block = text.substr(begin);
  return block.size() > 2 && IsText(block) ? block : std::string_view();
}

// What is between the backslashes, up to its checksum, if that is right.
bool IsChecked(std::string_view block) {
  const std::string_view inner = block.substr(1, block.size() - 2);
  if (inner.size() < kChecksum || inner[inner.size() - kChecksum] != '*') return false;
  const std::string_view digits = inner.substr(inner.size() - 2);
  unsigned int sum = 0;
  const auto [stop, error] = std::from_chars(digits.data(), digits.data() + digits.size(), sum, 16);
  if (error != std::errc() || stop != digits.data() + digits.size()) return false;
  for (const char c : inner.substr(0, inner.size() - kChecksum)) sum ^= static_cast<unsigned char>(c);
  return sum == 0;
}

void AddParameters(std::string_view block, std::vector<S_TagParameter>& parameters) {
  std::vector<S_TagParameter> own;
  for (const std::string_view item : SplitList(block.substr(1, block.size() - 2 - kChecksum)))
    if (item.size() >= 2 && item[1] == ':') own.push_back({item[0], item.substr(2)});
  parameters.insert(parameters.begin(), own.begin(), own.end());
}

}  // namespace

bool IsTagOnly(const velagnss::SkippedRange& range) {
  if (range.size != range.length || range.data[range.size - 1] != kDelimiter) return false;
  const S_TagBlocks blocks = TagBlocksBefore({reinterpret_cast<const char*>(range.data), range.size});
  return blocks.areChecked && blocks.text.size() == range.size;
}

// Blocks are found from the last one to the first.
S_TagBlocks TagBlocksBefore(std::string_view skipped) {
  S_TagBlocks blocks;
  std::size_t begin = skipped.size();
  for (std::string_view block = LastBlock(skipped); !block.empty(); block = LastBlock(skipped.substr(0, begin))) {
    begin -= block.size();
    blocks.areChecked = blocks.areChecked && IsChecked(block);
    if (blocks.areChecked) AddParameters(block, blocks.parameters);
  }
  blocks.text = skipped.substr(begin);
  if (!blocks.areChecked) blocks.parameters.clear();
  return blocks;
}

}  // namespace Host
