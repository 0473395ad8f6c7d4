// The comma fields of one sentence, as views into it. Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
#define VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "textproto/DelimiterMask.h"
#include "textproto/FieldTokenizer.h"

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

  explicit C_SentenceFields(std::string_view text)
      : m_count(text.empty() || text.size() > kMaxTextLength ? 0 : Split(text, m_fields)) {}

  std::size_t Count() const { return m_count; }
  bool IsReadable(std::size_t index) const { return index < m_count && m_fields[index].size <= MaxFieldLength; }
  std::string_view operator[](std::size_t index) const { return {m_fields[index].start, m_fields[index].size}; }

 private:
  struct S_Field {
    const char* start;
    std::size_t size;
  };

  // The same fields as C_FieldWalk finds, faster; returns how many.
  static std::size_t Split(std::string_view text, S_Field (&fields)[MaxFields]) {
    constexpr std::ptrdiff_t kBlock = DelimiterMask::kBlock;
    const char* const textEnd = text.data() + text.size();
    const char* start = text.data();
    std::size_t count = 0;
    const auto endField = [&](const char* end) {  // false: this field, and what comes behind it, is not seen
      const auto size = static_cast<std::size_t>(end - start);
      if (count == MaxFields || size > C_FieldTokenizer::kMaxCountedField) return false;
      fields[count++] = {start, size};
      start = end + 1;
      return true;
    };
    for (const char* block = start; block < textEnd; block += kBlock) {
      char tail[kBlock] = {};
      const bool isTail = textEnd - block < kBlock;
      if (isTail) std::copy(block, textEnd, tail);
      for (std::uint64_t mask = DelimiterMask::Of(isTail ? tail : block); mask != 0; mask &= mask - 1)
        if (!endField(block + std::countr_zero(mask))) return count;
    }
    endField(textEnd);
    return count;
  }

  S_Field m_fields[MaxFields];  // the first `m_count` of them
  std::size_t m_count;
};

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
