#include "apps/velagnss/text/JsonWriter.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>

#include "apps/velagnss/text/ShortestNumber.h"
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

// "\uXXXX", of UTF-16.
char* WriteUnit(char* at, char32_t unit) {
  *at++ = '\\';
  *at++ = 'u';
  for (int shift = 12; shift >= 0; shift -= 4) *at++ = kHexDigits[unit >> shift & 0x0F];
  return at;
}

// The character of the same number.
char* WriteByte(char* at, unsigned char byte) {
  const char escape = kEscapes[byte];
  if (escape == 'u') return WriteUnit(at, byte);
  if (escape != '\0') *at++ = '\\';
  *at++ = escape != '\0' ? escape : static_cast<char>(byte);
  return at;
}

using t_Block = std::uint64_t;
constexpr t_Block kOnes = ~t_Block{0} / 0xFF;  // 1 in each byte

// Whether one of the bytes is zero, or less than `limit`, which is at most 0x80: the subtraction then borrows into its
// top bit, which was clear.
constexpr t_Block HasLess(t_Block bytes, unsigned char limit) {
  return (bytes - kOnes * limit) & ~bytes & kOnes * 0x80;
}

// Whether all eight bytes are written as they are.
constexpr bool IsPlain(t_Block bytes) {
  const t_Block special = HasLess(bytes ^ kOnes * '"', 1) | HasLess(bytes ^ kOnes * '\\', 1) |
                          HasLess(bytes ^ kOnes * 0x7F, 1) | HasLess(bytes, 0x20);
  return ((special | bytes) & kOnes * 0x80) == 0;
}

char* WriteBytes(char* at, std::string_view bytes) {
  for (; bytes.size() >= sizeof(t_Block); bytes.remove_prefix(sizeof(t_Block))) {
    t_Block block = 0;
    std::memcpy(&block, bytes.data(), sizeof block);
    if (IsPlain(block)) {
      std::memcpy(at, &block, sizeof block);
      at += sizeof block;
    } else {
      for (const char byte : bytes.substr(0, sizeof block)) at = WriteByte(at, static_cast<unsigned char>(byte));
    }
  }
  for (const char byte : bytes) at = WriteByte(at, static_cast<unsigned char>(byte));
  return at;
}

}  // namespace

void C_JsonWriter::Grow(std::size_t size) { m_buffer.resize(2 * m_buffer.size() + size); }

void C_JsonWriter::Number(double value) {
  if (!std::isfinite(value)) return Null();
  Commit(WriteShortest(Place(kShortestSize), value));
}

void C_JsonWriter::String(std::string_view bytes) {
  char* at = Place(kEscapeSize * bytes.size() + 2);
  *at++ = '"';
  at = WriteBytes(at, bytes);
  *at++ = '"';
  Commit(at);
}

void C_JsonWriter::Utf8(std::string_view text) {
  std::u32string characters;
  for (std::string_view rest = text; !rest.empty(); rest.remove_prefix(FirstCharacter(rest).size)) {
    if (FirstCharacter(rest).size == 0) return String(text);
    characters += FirstCharacter(rest).code;
  }
  char* at = Place(2 * kEscapeSize * characters.size() + 2);
  *at++ = '"';
  for (const char32_t character : characters) {
    if (character <= 0xFF) {
      at = WriteByte(at, static_cast<unsigned char>(character));
    } else if (character <= 0xFFFF) {
      at = WriteUnit(at, character);
    } else {  // two surrogates (RFC 8259, 7)
      at = WriteUnit(at, 0xD800 + ((character - 0x10000) >> 10));
      at = WriteUnit(at, 0xDC00 + (character & 0x3FF));
    }
  }
  *at++ = '"';
  Commit(at);
}

void C_JsonWriter::Hex(std::span<const unsigned char> bytes) {
  char* at = Place(2 * bytes.size() + 2);
  *at++ = '"';
  for (const unsigned char byte : bytes) {
    *at++ = kHexDigits[byte >> 4];
    *at++ = kHexDigits[byte & 0x0F];
  }
  *at++ = '"';
  Commit(at);
}

void C_JsonWriter::EndLine() {
  *Room(1) = '\n';
  ++m_size;
  m_needsComma = false;
}

}  // namespace Host
