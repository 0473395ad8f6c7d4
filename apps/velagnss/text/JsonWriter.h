// JSON text, written into one growing buffer.
//
// Numbers are the shortest text that reads back as the same number. The text is plain ASCII: what comes from the wire
// is escaped byte by byte, so that no input can break the syntax, and no control character reaches a
// terminal.
#ifndef VELAGNSS_APPS_JSON_WRITER_H
#define VELAGNSS_APPS_JSON_WRITER_H

#include <charconv>
#include <concepts>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "apps/velagnss/text/TextMaker.h"

namespace Host {

// The version of the objects that all commands write; docs/json.md says when it changes.
inline constexpr int kSchemaVersion = 1;

// Writes values in the order of the calls and sets the commas between them. The caller balances Begin and End.
//
//   json.BeginObject();
//   json.Key("offset").Integer(1024);
//   json.EndObject();
//   json.EndLine();
class C_JsonWriter final : public C_TextMaker {
 public:
  // Grows beyond `capacity` when it must.
  explicit C_JsonWriter(std::size_t capacity = kFirstCapacity) : m_buffer(capacity) {}

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }

  // `name` is one of our own literals: ASCII without quotes, backslashes and control characters.
  C_JsonWriter& Key(std::string_view name);

  void Null() { Literal("null"); }
  void Boolean(bool value) { Literal(value ? "true" : "false"); }

  template <std::integral Number>
  void Integer(Number value) {
    Separate(kNumberSize);
    m_size = static_cast<std::size_t>(
        std::to_chars(m_buffer.data() + m_size, m_buffer.data() + m_buffer.size(), value).ptr - m_buffer.data());
  }

  // A missing number is null.
  template <std::integral Number>
  void IntegerOrNull(const std::optional<Number>& value) {
    if (!value) return Null();
    Integer(*value);
  }

  // NaN and infinity are null: JSON has no text for them.
  void Number(double value);

  // Text of any bytes. Each byte from 0x80 on becomes the character of the same number, "\u0080" to "\u00ff", so that a
  // reader can recover the bytes whatever their encoding was.
  void String(std::string_view bytes);

  // Empty text is null.
  void StringOrNull(std::string_view bytes) { bytes.empty() ? Null() : String(bytes); }

  // Text in UTF-8, such as a file name, by its characters. Text that is not UTF-8 is written byte by byte, as above.
  void Utf8(std::string_view text);

  // The bytes as lower-case hexadecimal digits.
  void Hex(std::span<const unsigned char> bytes);

  // Ends one object of a JSON Lines text.
  void EndLine();

  std::string_view Text() const override { return {m_buffer.data(), m_size}; }
  void ClearText() override { m_size = 0; }

 private:
  static constexpr std::size_t kFirstCapacity = 1 << 18;
  static constexpr std::size_t kNumberSize = 32;  // longest: sign, 17 digits, point, exponent; or 20 digits

  void Reserve(std::size_t size) {
    if (m_buffer.size() - m_size < size) Grow(size);
  }
  void Grow(std::size_t size);       // apart from the test, which is inlined everywhere
  void Separate(std::size_t size) {  // room for a comma and `size` bytes
    Reserve(size + 1);
    if (m_needsComma) m_buffer[m_size++] = ',';
    m_needsComma = true;
  }
  void Open(char bracket) {
    Separate(1);
    m_buffer[m_size++] = bracket;
    m_needsComma = false;
  }
  void Close(char bracket) {
    Reserve(1);
    m_buffer[m_size++] = bracket;
    m_needsComma = true;
  }
  void Append(std::string_view text) {
    std::memcpy(m_buffer.data() + m_size, text.data(), text.size());
    m_size += text.size();
  }
  void Literal(std::string_view text) {
    Separate(text.size());
    Append(text);
  }
  void AppendByte(unsigned char byte);
  void AppendUnit(char32_t unit);  // of UTF-16, as "\uXXXX"

  std::vector<char> m_buffer;
  std::size_t m_size = 0;
  bool m_needsComma = false;
};

inline C_JsonWriter& C_JsonWriter::Key(std::string_view name) {
  Separate(name.size() + 3);
  m_buffer[m_size++] = '"';
  Append(name);
  m_buffer[m_size++] = '"';
  m_buffer[m_size++] = ':';
  m_needsComma = false;
  return *this;
}

}  // namespace Host

#endif  // VELAGNSS_APPS_JSON_WRITER_H
