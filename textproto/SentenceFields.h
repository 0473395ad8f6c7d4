// The comma fields of one sentence, as views into it. Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
#define VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H

#include <array>
#include <cstddef>
#include <cstring>
#include <string_view>

#include "textproto/FieldTokenizer.h"

// The asterisk separates too: the checksum digits are a sentence's last field.
inline constexpr C_CharSet kSentenceDelimiters(",*");

// The characters of a text given by its length, up to a NUL.
inline std::string_view TextOf(const unsigned char* bytes, std::size_t length) {
  const void* const nul = std::memchr(bytes, '\0', length);
  if (nul != nullptr) length = static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - bytes);
  return {reinterpret_cast<const char*>(bytes), length};
}

// The fields that a decoder gets to see: those that a tokenizer of capacity `MaxTextLength` + 1 counts, as far as there
// is room for them. A longer text counts as empty, and more than `MaxFields` are not told apart. Decoding ends in front
// of a field of more than `MaxFieldLength` characters.
template <std::size_t MaxFields, std::size_t MaxTextLength, std::size_t MaxFieldLength>
class C_SentenceFields {
 public:
  static constexpr std::size_t kMaxFields = MaxFields;
  static constexpr std::size_t kMaxTextLength = MaxTextLength;

  explicit C_SentenceFields(std::string_view text) {
    if (text.size() > kMaxTextLength) return;
    C_FieldWalk walk(text, kSentenceDelimiters);
    while (m_count < kMaxFields && walk.Next(m_fields[m_count])) {
      if (m_fields[m_count].size() > C_FieldTokenizer::kMaxCountedField) return;
      ++m_count;
    }
  }

  std::size_t Count() const { return m_count; }
  bool IsReadable(std::size_t index) const { return index < m_count && m_fields[index].size() <= MaxFieldLength; }
  std::string_view operator[](std::size_t index) const { return m_fields[index]; }

 private:
  std::array<std::string_view, kMaxFields> m_fields;
  std::size_t m_count = 0;
};

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
