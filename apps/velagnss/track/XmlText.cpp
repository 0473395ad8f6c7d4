#include "apps/velagnss/track/XmlText.h"

#include <algorithm>

#include "apps/velagnss/os/Diagnostics.h"
#include "apps/velagnss/text/Utf8.h"

namespace Host {
namespace {

// XML 1.0, 2.2, of characters that are well-formed otherwise: surrogates and U+FFFE, U+FFFF are none; nor is what could
// be written with fewer bytes (RFC 3629).
bool IsXmlCharacter(std::string_view character) {
  const auto byte = [character](std::size_t i) { return static_cast<unsigned char>(character[i]); };
  if (character.size() == 3)
    return (byte(0) != 0xE0 || byte(1) >= 0xA0) && (byte(0) != 0xED || byte(1) < 0xA0) &&
           !(byte(0) == 0xEF && byte(1) == 0xBF && byte(2) >= 0xBE);
  if (character.size() == 4) return (byte(0) != 0xF0 || byte(1) >= 0x90) && (byte(0) != 0xF4 || byte(1) < 0x90);
  return true;
}

bool IsContinuation(char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; }

std::string Escaped(std::string_view character) {
  if (character == "&") return "&amp;";
  if (character == "<") return "&lt;";
  if (character == ">") return "&gt;";
  return IsXmlCharacter(character) ? std::string(character) : Printable(character);
}

}  // namespace

std::string XmlText(std::string_view text) {
  std::string xml;
  const std::string printable = PrintableText(text);
  for (std::string_view rest = printable; !rest.empty();) {
    const auto end = std::find_if_not(rest.begin() + 1, rest.end(), &IsContinuation);
    const auto size = static_cast<std::size_t>(end - rest.begin());
    xml += Escaped(rest.substr(0, size));
    rest.remove_prefix(size);
  }
  return xml;
}

}  // namespace Host
