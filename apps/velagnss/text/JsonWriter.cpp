#include "apps/velagnss/text/JsonWriter.h"

#include <array>
#include <cmath>
#include <string>

#include "apps/velagnss/text/Utf8.h"

namespace Host {
namespace {

constexpr char kHexDigits[] = "0123456789abcdef";

// How each byte is written inside quotes: 0 as it is, 'u' as "\u00XX", any other letter after a backslash (RFC 8259).
constexpr std::array<char, 256> MakeEscapes() {
  std::array<char, 256> escapes{};
  for (std::size_t byte = 0; byte < escapes.size(); ++byte) escapes[byte] = byte < 0x20 || byte >= 0x7F ? 'u' : '\0';
  escapes['"'] = '"';
  escapes['\\'] = '\\';
  escapes['\b'] = 'b';
  escapes['\f'] = 'f';
  escapes['\n'] = 'n';
  escapes['\r'] = 'r';
  escapes['\t'] = 't';
  return escapes;
}
constexpr std::array<char, 256> kEscapes = MakeEscapes();
constexpr std::size_t kEscapeSize = 6;  // "\u00XX"

}  // namespace

void C_JsonWriter::Grow(std::size_t size) { m_buffer.resize(2 * m_buffer.size() + size); }

void C_JsonWriter::Number(double value) {
  if (!std::isfinite(value)) return Null();
  Separate(kNumberSize);
  m_size = static_cast<std::size_t>(
      std::to_chars(m_buffer.data() + m_size, m_buffer.data() + m_buffer.size(), value).ptr - m_buffer.data());
}

void C_JsonWriter::String(std::string_view bytes) {
  Separate(kEscapeSize * bytes.size() + 2);
  m_buffer[m_size++] = '"';
  for (const char byte : bytes) AppendByte(static_cast<unsigned char>(byte));
  m_buffer[m_size++] = '"';
}

void C_JsonWriter::Utf8(std::string_view text) {
  std::u32string characters;
  for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(FirstCharacter(rest).size)) {
    if (FirstCharacter(rest).size == 0) return String(text);
    characters += FirstCharacter(rest).code;
  }
  Separate(2 * kEscapeSize * characters.size() + 2);
  m_buffer[m_size++] = '"';
  for (const char32_t character : characters) {
    if (character <= 0xFF) {
      AppendByte(static_cast<unsigned char>(character));
    } else if (character <= 0xFFFF) {
      AppendUnit(character);
    } else {  // two surrogates (RFC 8259, 7)
      AppendUnit(0xD800 + ((character - 0x10000) >> 10));
      AppendUnit(0xDC00 + (character & 0x3FF));
    }
  }
  m_buffer[m_size++] = '"';
}

// The character of the same number.
void C_JsonWriter::AppendByte(unsigned char byte) {
  const char escape = kEscapes[byte];
  if (escape == 'u') return AppendUnit(byte);
  if (escape != '\0') m_buffer[m_size++] = '\\';
  m_buffer[m_size++] = escape != '\0' ? escape : static_cast<char>(byte);
}

void C_JsonWriter::AppendUnit(char32_t unit) {
  Append("\\u");
  for (int shift = 12; shift >= 0; shift -= 4) m_buffer[m_size++] = kHexDigits[unit >> shift & 0x0F];
}

void C_JsonWriter::Hex(std::span<const unsigned char> bytes) {
  Separate(2 * bytes.size() + 2);
  m_buffer[m_size++] = '"';
  for (const unsigned char byte : bytes) {
    m_buffer[m_size++] = kHexDigits[byte >> 4];
    m_buffer[m_size++] = kHexDigits[byte & 0x0F];
  }
  m_buffer[m_size++] = '"';
}

void C_JsonWriter::EndLine() {
  Reserve(1);
  m_buffer[m_size++] = '\n';
  m_needsComma = false;
}

}  // namespace Host
