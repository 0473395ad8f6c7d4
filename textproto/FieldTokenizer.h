// Splits a text into fields, for any set of delimiters. Internal.
//
// It is kept for host code that uses it; the decoders do not: they split sentences with textproto/SentenceFields.h, and
// a test holds that to the same fields.
//
// Fields are the texts between delimiters: "A,,B" has the fields "A", "" and "B"; ",A" has "" and "A"; "A," has "A"
// and ""; an empty text has none. With the delimiters ",*" the checksum of a sentence is its last field.
#ifndef VELAGNSS_TEXTPROTO_FIELD_TOKENIZER_H
#define VELAGNSS_TEXTPROTO_FIELD_TOKENIZER_H

#include <cstddef>
#include <memory>
#include <string_view>

#include "textproto/CharSet.h"
#include "textproto/SentenceFields.h"

namespace velagnss::textproto {

// Walks over the fields of a text, in order, as views into it. The text and the set must outlive the walk.
class C_FieldWalk {
 public:
  constexpr C_FieldWalk(std::string_view text, const C_CharSet& delimiters) : m_text(text), m_delimiters(&delimiters) {}

  // The next field; false when there is none left, `field` untouched.
  constexpr bool Next(std::string_view& field);

 private:
  std::string_view m_text;
  const C_CharSet* m_delimiters;
  std::size_t m_position = 0;  // of the delimiter that ended the last field
  bool m_isStarted = false;    // the delimiter at the position belongs to a field handed out before
};

constexpr bool C_FieldWalk::Next(std::string_view& field) {
  if (m_position >= m_text.size()) return false;
  if (m_isStarted && m_delimiters->Contains(m_text[m_position])) ++m_position;
  m_isStarted = true;
  const std::size_t start = m_position;
  while (m_position < m_text.size() && !m_delimiters->Contains(m_text[m_position])) ++m_position;
  field = m_text.substr(start, m_position - start);
  return true;
}

}  // namespace velagnss::textproto

// Owns a copy of one text and hands out copies of its fields.
class C_FieldTokenizer {
 public:
  static constexpr unsigned int kMaxDelimiters = 55;
  static constexpr unsigned int kMaxCountedField =
      velagnss::textproto::kMaxCountedField;         // a longer one ends the count
  static constexpr unsigned int kMaxFields = 65535;  // handed out between two rewinds

  // An empty tokenizer for texts shorter than `capacity` characters. With `enabled` 0 fields are not counted.
  C_FieldTokenizer(unsigned int capacity, unsigned char enabled);

  // The same with delimiters and text set, in this order.
  C_FieldTokenizer(const char* text, const char* delimiters, unsigned int capacity, unsigned char enabled);

  C_FieldTokenizer(const C_FieldTokenizer&) = delete;
  C_FieldTokenizer& operator=(const C_FieldTokenizer&) = delete;

  // No text, no delimiters; capacity and `enabled` stay.
  void Clear();

  // Takes a copy of the text and starts again at its first field. A text of `capacity` characters or more becomes an
  // empty text. Null only drops the text held.
  void SetText(const char* text);

  // The same for a text given by its length; a NUL inside ends it earlier. Nothing is read past the length.
  void SetText(const char* text, std::size_t length);

  // Sets the delimiters, at most 55; more of them, an empty string, and null all mean none. Where
  // fields are counted this starts again at the first field.
  void SetDelimiters(const char* delimiters);

  // Number of fields; -1 unless counting is enabled and both text and delimiters have been set. A field of more than
  // 511 characters is not counted, nor is any after it.
  int GetFieldCount() const;

  // Copies the next field to `out`, fills the rest of its `outSize` bytes with zeros, and returns 1. Returns 0 when no
  // field is left, when the field is longer than `outSize` (it is skipped; `out` is all zeros in both cases), and after
  // 65,535 fields. A field of exactly `outSize` characters is delivered without a NUL after it. Null: 0.
  unsigned char GetNextField(char* out, unsigned int outSize);

  // 1 if `c` is one of the delimiters, else 0.
  unsigned char IsDelimiter(unsigned char c) const;

 private:
  void Rewind();
  void CountFields();
  std::string_view Text() const { return {mpc_Text.get(), mu_TextLength}; }

  bool mb_TextSet = false;
  bool mb_DelimitersSet = false;
  bool mb_Enabled;
  int mi_FieldCount = -1;  // -1: not known
  std::unique_ptr<char[]> mpc_Text;
  unsigned int mu_TextLength = 0;
  unsigned int mu_Capacity;
  unsigned short mu16_FieldIndex = 0;  // fields handed out since the last rewind
  velagnss::textproto::C_CharSet m_delimiters;
  velagnss::textproto::C_FieldWalk m_walk;
};

#endif  // VELAGNSS_TEXTPROTO_FIELD_TOKENIZER_H
