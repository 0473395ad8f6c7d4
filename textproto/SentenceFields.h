// The fields of one sentence, as views into it: the one splitter of all text decoders. Internal.
//
// A sentence is split once, into at most as many fields as its decoder ever looks at. Commas and asterisks separate, so
// the checksum digits are a field like any other: the last one. "A,,B*5C" has the fields "A", "", "B" and "5C"; "A,"
// has "A" and ""; an empty text has none.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
#define VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "textproto/DelimiterMask.h"

namespace velagnss::textproto {

// A longer field ends the count of fields, in every family of sentences.
inline constexpr std::size_t kMaxCountedField = 511;

// What a family of sentences allows.
struct S_FieldLimits {
  std::size_t fields;       // how many its longest sentence has; more are not split off
  std::size_t textLength;   // a longer text has no fields at all
  std::size_t fieldLength;  // decoding ends before a longer field
};

// The characters of a text given by its length, up to a NUL.
inline std::string_view TextOf(const unsigned char* bytes, std::size_t length) {
  const void* const nul = std::memchr(bytes, '\0', length);
  if (nul != nullptr) length = static_cast<std::size_t>(static_cast<const unsigned char*>(nul) - bytes);
  return {reinterpret_cast<const char*>(bytes), length};
}

template <S_FieldLimits Limits>
class C_SentenceFields {
 public:
  // Callers compare lengths with these before they split.
  static constexpr S_FieldLimits kLimits = Limits;

  explicit C_SentenceFields(std::string_view text) {
    if (!text.empty() && text.size() <= Limits.textLength) Split(text);
  }

  // Fields split off, whatever their length.
  std::size_t Size() const { return m_size; }

  // Fields before the first that ends the count. A decoder compares this with the least number that it needs.
  std::size_t Count() const { return FieldsUpTo(kMaxCountedField); }

  // Fields before the first that a decoder may not read.
  std::size_t Readable() const { return FieldsUpTo(Limits.fieldLength); }

  std::string_view operator[](std::size_t index) const { return {m_fields[index].start, m_fields[index].size}; }

  // Editing, for sentences that lack fields: the text itself is not touched.

  // Puts empty fields in front of the field `index`. There must be room for them.
  void Insert(std::size_t index, std::size_t number) {
    // From the back, so that no field is overwritten before it has moved.
    S_Field* const first = m_fields + index;
    std::copy_backward(first, m_fields + m_size, m_fields + m_size + number);
    std::fill_n(first, number, S_Field{"", 0});
    m_size += number;
  }
  void FillUpTo(std::size_t size) {
    if (m_size < size) Insert(m_size, size - m_size);
  }
  // `text` must outlive the fields.
  void Replace(std::size_t index, std::string_view text) {
    m_fields[index] = {text.data(), text.size()};
    // The old size stays in the bits: that can only make a search happen that was not needed.
    m_sizeBits |= text.size();
  }

 private:
  // Not a string_view: that would be set to zero by its constructor, some 20 times per sentence.
  struct S_Field {
    const char* start;
    std::size_t size;
  };

  // The sizes are counted in locals: as members they would be stored and loaded again for every field.
  void Split(std::string_view text) {
    constexpr std::size_t kBlock = DelimiterMask::kBlock;
    const char* start = text.data();
    S_Field* next = m_fields;
    std::size_t sizeBits = 0;
    const auto endField = [&](const char* end) {
      const auto size = static_cast<std::size_t>(end - start);
      *next++ = {start, size};
      sizeBits |= size;
      start = end + 1;
    };
    const S_Field* const last = m_fields + Limits.fields;
    for (std::size_t at = 0; at < text.size() && next != last; at += kBlock) {
      const char* const block = text.data() + at;
      const std::size_t left = text.size() - at;
      std::uint64_t mask = left < kBlock ? DelimiterMask::OfTail(text, left) : DelimiterMask::Of(block);
      for (; mask != 0 && next != last; mask &= mask - 1) endField(block + std::countr_zero(mask));
    }
    if (next != last) endField(text.data() + text.size());
    m_size = static_cast<std::size_t>(next - m_fields);
    m_sizeBits = sizeBits;
  }

  // How many fields there are before the first of more than `length` characters. Hardly any sentence has one: that none
  // has is seen from the bits of all sizes together. The search is out of line to keep it out of the decoders' loops.
  std::size_t FieldsUpTo(std::size_t length) const { return m_sizeBits <= length ? m_size : SearchUpTo(length); }
  [[gnu::noinline]] std::size_t SearchUpTo(std::size_t length) const {
    const auto isLonger = [length](const S_Field& field) { return field.size > length; };
    return static_cast<std::size_t>(std::find_if(m_fields, m_fields + m_size, isLonger) - m_fields);
  }

  std::size_t m_size = 0;
  std::size_t m_sizeBits = 0;       // the sizes of all fields, or-ed: no size is greater
  S_Field m_fields[Limits.fields];  // the first `m_size` of them
};

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_FIELDS_H
