// The comma fields of one sentence, as views into it. Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
#define VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H

#include <algorithm>
#include <array>
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

  explicit C_SentenceFields(std::string_view text) {
    if (!text.empty() && text.size() <= kMaxTextLength) Split(text);
  }

  std::size_t Count() const { return m_count; }
  bool IsReadable(std::size_t index) const { return index < m_count && m_fields[index].size() <= MaxFieldLength; }
  std::string_view operator[](std::size_t index) const { return m_fields[index]; }

 private:
  // The same fields as C_FieldWalk finds, faster.
  void Split(std::string_view text) {
    using namespace DelimiterMask;
    std::size_t start = 0;
    for (std::size_t at = 0; at < text.size(); at += kBlock) {
      const std::string_view block = text.substr(at, kBlock);
      char tail[kBlock];
      if (block.size() < kBlock) std::memset(std::copy(block.begin(), block.end(), tail), 0, kBlock - block.size());
      std::uint64_t mask = Of(block.size() < kBlock ? tail : block.data());
      for (; mask != 0; mask &= mask - 1)
        if (!AddField(text, start, at + static_cast<std::size_t>(std::countr_zero(mask)))) return;
    }
    AddField(text, start, text.size());
  }

  // The field [start, end) of the text; false when it is the last to be seen.
  bool AddField(std::string_view text, std::size_t& start, std::size_t end) {
    if (m_count == kMaxFields || end - start > C_FieldTokenizer::kMaxCountedField) return false;
    m_fields[m_count++] = std::string_view(text.data() + start, end - start);
    start = end + 1;
    return true;
  }

  std::array<std::string_view, kMaxFields> m_fields;
  std::size_t m_count = 0;
};

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
