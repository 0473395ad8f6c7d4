#include "apps/velagnss/text/Utf8.h"

#include <fmt/core.h>

#include <algorithm>

namespace Host {
namespace {

// One length of a sequence: what its lead byte looks like, and the least character that needs so many bytes.
struct S_Form {
  unsigned char mask;
  unsigned char lead;
  char32_t least;
};
constexpr S_Form kForms[] = {{0x80, 0x00, 0}, {0xE0, 0xC0, 0x80}, {0xF0, 0xE0, 0x800}, {0xF8, 0xF0, 0x10000}};
constexpr char32_t kGreatest = 0x10FFFF;

constexpr bool IsSurrogate(char32_t code) { return code >= 0xD800 && code <= 0xDFFF; }

bool IsPlain(char32_t code) {
  const bool isLayout = code == '\n' || code == '\r' || code == '\t';
  return isLayout || (code >= 0x20 && code < 0x7F) || code >= 0xA0;
}

}  // namespace

S_Character FirstCharacter(std::string_view text) {
  const auto byte = [text](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  for (std::size_t size = 1; size <= std::min(std::size(kForms), text.size()); ++size) {
    const S_Form& form = kForms[size - 1];
    if ((byte(0) & form.mask) != form.lead) continue;
    char32_t code = byte(0) & ~form.mask;
    for (std::size_t i = 1; i < size; ++i) {
      if ((byte(i) & 0xC0) != 0x80) return {};
      code = code << 6 | (byte(i) & 0x3F);
    }
    return code < form.least || code > kGreatest || IsSurrogate(code) ? S_Character{} : S_Character{code, size};
  }
  return {};
}

std::string PrintableText(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const S_Character character = FirstCharacter(text);
    const std::size_t size = std::max<std::size_t>(character.size, 1);
    if (character.size > 0 && IsPlain(character.code)) {
      printable += text.substr(0, size);
    } else {
      for (const char byte : text.substr(0, size))
        printable += fmt::format("\\x{:02x}", static_cast<unsigned char>(byte));
    }
    text.remove_prefix(size);
  }
  return printable;
}

}  // namespace Host
