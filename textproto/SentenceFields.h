// The comma fields of one sentence, as views into it. Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
#define VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H

#include <cstddef>
#include <span>
#include <string_view>

#include "textproto/FieldTokenizer.h"

namespace SentenceFields {

// The asterisk separates too: the checksum digits are a sentence's last field.
inline constexpr C_CharSet kDelimiters{",*"};

// The text that a frame begins with: up to its first NUL, or all of it.
inline std::string_view TextOf(const unsigned char* frame, std::size_t length) {
  const std::string_view bytes(reinterpret_cast<const char*>(frame), length);
  return bytes.substr(0, bytes.find('\0'));
}

// Puts the first fields into `fields` and returns how many the text has, which may be more. A field of more than
// `maxField` characters is not counted, nor is any behind it.
inline std::size_t Split(std::string_view text, std::size_t maxField, std::span<std::string_view> fields) {
  C_FieldWalk walk(text, kDelimiters);
  std::size_t count = 0;
  std::string_view field;
  for (; walk.Next(field) && field.size() <= maxField; ++count)
    if (count < fields.size()) fields[count] = field;
  return count;
}

}  // namespace SentenceFields

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
