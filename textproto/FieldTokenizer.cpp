// No decoder uses this class; its oddities (a field that fills the buffer gets no NUL, a text as long as the capacity
// is dropped) are its promised behavior.
#include "textproto/FieldTokenizer.h"

#include <cstring>

using velagnss::textproto::C_CharSet;
using velagnss::textproto::C_FieldWalk;

C_FieldTokenizer::C_FieldTokenizer(unsigned int capacity, unsigned char enabled)
    : mb_Enabled(enabled != 0), mu_Capacity(capacity), m_walk({}, m_delimiters) {
  if (capacity > 0) mpc_Text = std::make_unique<char[]>(capacity);
}

C_FieldTokenizer::C_FieldTokenizer(const char* text, const char* delimiters, unsigned int capacity,
                                   unsigned char enabled)
    : C_FieldTokenizer(capacity, enabled) {
  SetDelimiters(delimiters);
  SetText(text);
}

void C_FieldTokenizer::Clear() {
  mb_TextSet = false;
  mb_DelimitersSet = false;
  mi_FieldCount = -1;
  mu_TextLength = 0;
  m_delimiters = C_CharSet();
  Rewind();
}

void C_FieldTokenizer::SetText(const char* text) { SetText(text, text == nullptr ? 0 : std::strlen(text)); }

void C_FieldTokenizer::SetText(const char* text, std::size_t length) {
  mu_TextLength = 0;
  if (text != nullptr) {
    // A text given by its length need not end with a NUL, and nothing after it may be read.
    const void* const end = std::memchr(text, '\0', length);
    const std::size_t textLength = end == nullptr ? length : static_cast<const char*>(end) - text;
    // A text that does not fit becomes empty. Cut short it would look like a complete one.
    if (textLength > 0 && textLength < mu_Capacity) {
      std::memcpy(mpc_Text.get(), text, textLength);
      mu_TextLength = static_cast<unsigned int>(textLength);
    }
    mb_TextSet = true;
  }
  Rewind();
  if (text != nullptr) CountFields();
}

void C_FieldTokenizer::SetDelimiters(const char* delimiters) {
  m_delimiters = C_CharSet();
  if (delimiters == nullptr) return;
  const std::string_view set(delimiters);
  // More delimiters mean none at all; the header promises this.
  if (set.size() <= kMaxDelimiters) m_delimiters = C_CharSet(set);
  mb_DelimitersSet = true;
  CountFields();
}

int C_FieldTokenizer::GetFieldCount() const {
  return mb_Enabled && mb_TextSet && mb_DelimitersSet ? mi_FieldCount : -1;
}

unsigned char C_FieldTokenizer::GetNextField(char* out, unsigned int outSize) {
  // Before anything can fail: a host that ignores the result finds an empty field.
  if (out != nullptr) std::memset(out, 0, outSize);
  std::string_view field;
  if (!m_walk.Next(field)) return 0;
  // The walk has moved on already, so a field that does not fit is passed over.
  if (out == nullptr || field.size() > outSize) return 0;
  std::memcpy(out, field.data(), field.size());
  if (mu16_FieldIndex == kMaxFields) return 0;
  ++mu16_FieldIndex;
  return 1;
}

unsigned char C_FieldTokenizer::IsDelimiter(unsigned char c) const {
  return m_delimiters.Contains(static_cast<char>(c)) ? 1 : 0;
}

void C_FieldTokenizer::Rewind() {
  m_walk = C_FieldWalk(Text(), m_delimiters);
  mu16_FieldIndex = 0;
}

void C_FieldTokenizer::CountFields() {
  mi_FieldCount = -1;
  if (!mb_Enabled || !mb_TextSet || !mb_DelimitersSet) return;
  Rewind();
  // Counting uses the walk itself, which is rewound before and after.
  int count = 0;
  std::string_view field;
  while (count < static_cast<int>(kMaxFields) && m_walk.Next(field) && field.size() <= kMaxCountedField) ++count;
  mi_FieldCount = count;
  Rewind();
}
