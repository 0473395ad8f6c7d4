// JSON text, written into one growing buffer.
//
// Numbers are the shortest text that reads back as the same number. The text is plain ASCII: what comes from the wire
// is escaped byte by byte, so that no input can break the syntax, and no control character reaches a terminal.
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

  template <std::integral Whole>
  void Integer(Whole value);

  // A missing number is null.
  template <std::integral Number>
  void IntegerOrNull(const std::optional<Number>& value) {
    if (!value) return Null();
    Integer(*value);
  }

  // NaN and infinity are null: JSON has no text for them.
  void Number(double value);

  // One of our own literals as a value, like the name of a member.
  void Name(std::string_view text);

  // Text of any bytes. Each byte from 0x80 on becomes the character of the same number, "\u0080" to "\u00ff", so that a
  // reader can recover the bytes whatever their encoding was.
  void String(std::string_view bytes);

  // Empty text is null.
  void StringOrNull(std::string_view bytes) { bytes.empty() ? Null() : String(bytes); }

  // Text in UTF-8, such as a file name, by its characters. Text that is not UTF-8 is written byte by byte, as above.
  void Utf8(std::string_view text);

  // The bytes as lower-case hexadecimal digits.
  void Hex(std::span<const unsigned char> bytes);

  // Whole lines of another writer.
  void Lines(std::string_view text) {
    if (!PassOn(text)) Commit(Copy(Room(text.size()), text));
  }

  // Ends one object of a JSON Lines text.
  void EndLine();

  std::string_view Text() const override { return {m_buffer.data(), m_size}; }
  void ClearText() override { m_size = 0; }

 private:
  static constexpr std::size_t kFirstCapacity = 1 << 18;
  static constexpr std::size_t kNumberSize = 20;  // of an integer of 64 bits with its sign

  // Items are written through a pointer of their own: `Place` gives room for `size` bytes and sets the comma before
  // them, `Commit` takes back where they end. A character appended to the buffer by itself would load and store the
  // size each time.
  [[gnu::always_inline]] char* Place(std::size_t size) {
    char* const at = Room(size + 1);
    *at = ',';  // counts only where it is needed
    const bool needsComma = m_needsComma;
    m_needsComma = true;
    return at + (needsComma ? 1 : 0);
  }
  [[gnu::always_inline]] void Commit(const char* end) { m_size = static_cast<std::size_t>(end - m_buffer.data()); }

  [[gnu::always_inline]] char* Room(std::size_t size) {
    if (m_buffer.size() - m_size < size) [[unlikely]]
      Grow(size);
    return m_buffer.data() + m_size;
  }
  void Grow(std::size_t size);  // apart from the test, which is inlined everywhere

  [[gnu::always_inline]] static char* Copy(char* to, std::string_view text) {
    std::memcpy(to, text.data(), text.size());
    return to + text.size();
  }
  [[gnu::always_inline]] void Literal(std::string_view text) { Commit(Copy(Place(text.size()), text)); }
  void Open(char bracket) {
    char* const at = Place(1);
    *at = bracket;
    Commit(at + 1);
    m_needsComma = false;
  }
  void Close(char bracket) {
    *Room(1) = bracket;
    ++m_size;
    m_needsComma = true;
  }

  std::vector<char> m_buffer;
  std::size_t m_size = 0;
  bool m_needsComma = false;
};

// Names are mostly constants: inlined, they are stored by a few instructions.
[[gnu::always_inline]] inline C_JsonWriter& C_JsonWriter::Key(std::string_view name) {
  char* at = Place(name.size() + 3);
  *at++ = '"';
  at = Copy(at, name);
  *at++ = '"';
  *at++ = ':';
  Commit(at);
  m_needsComma = false;
  return *this;
}

[[gnu::always_inline]] inline void C_JsonWriter::Name(std::string_view text) {
  char* at = Place(text.size() + 2);
  *at++ = '"';
  at = Copy(at, text);
  *at++ = '"';
  Commit(at);
}

template <std::integral Whole>
void C_JsonWriter::Integer(Whole value) {
  char* at = Place(kNumberSize);
  if (value >= 0 && value < Whole{100}) {  // most of them
    const auto small = static_cast<unsigned int>(value);
    if (small >= 10) *at++ = static_cast<char>('0' + small / 10);
    *at++ = static_cast<char>('0' + small % 10);
    return Commit(at);
  }
  Commit(std::to_chars(at, at + kNumberSize, value).ptr);
}

}  // namespace Host

#endif  // VELAGNSS_APPS_JSON_WRITER_H
