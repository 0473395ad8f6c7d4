// A sentence under construction, and the fields that are more than one printed value. The exported emitters and the
// encoders build on the same. Internal.
#ifndef VELAGNSS_TEXTPROTO_SENTENCE_TEXT_H
#define VELAGNSS_TEXTPROTO_SENTENCE_TEXT_H

#include <cstring>
#include <string_view>

#include "records/ResultCodes.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NmeaMoreRecords.h"
#include "textproto/PrintFormat.h"

namespace velagnss::textproto {

// A NUL-terminated text in a buffer of 1024 bytes that someone else owns.
class C_SentenceText {
 public:
  explicit C_SentenceText(char* text, TimeDigits timeDigits = TimeDigits::Hundredths)
      : m_text(text), m_length(std::strlen(text)), m_timeDigits(timeDigits) {}

  // Of the times to be appended.
  TimeDigits DigitsOfTimes() const { return m_timeDigits; }

  // Appends a field, NUL-terminated; refuses one that makes the sentence too long. Both as a result code.
  [[nodiscard]] unsigned int Append(std::string_view field) {
    if (m_length + field.size() > C_NMEA_EncodeDecode::kMaxMessageLength) return eResultPastEnd;
    AppendUnchecked(field);
    return eResultOk;
  }
  [[nodiscard]] unsigned int AppendAfterComma(std::string_view field) {
    if (m_length + 1 + field.size() > C_NMEA_EncodeDecode::kMaxMessageLength) return eResultPastEnd;
    m_text[m_length++] = ',';
    AppendUnchecked(field);
    return eResultOk;
  }
  [[nodiscard]] unsigned int Append(const C_FieldText& field) {
    return field.IsTooLong() ? eResultPastEnd : Append(field.View());
  }

  // Where the next field can be written in place, because any that our own writers write has room there; null near the
  // end of the buffer. `EndField` says where the field ends.
  char* FieldPlace() {
    const bool hasRoom = m_length + kMaxOwnField <= C_NMEA_EncodeDecode::kMaxMessageLength;
    return hasRoom ? m_text + m_length : nullptr;
  }
  void EndField(char* end) {
    *end = '\0';
    m_length = static_cast<std::size_t>(end - m_text);
  }

  // For the few characters that the buffer always has room for.
  void AppendUnchecked(std::string_view field) {
    // Units and letters: a call to copy them would take longer than the copy.
    if (field.size() <= 3) {
      for (std::size_t i = 0; i < field.size(); ++i) m_text[m_length + i] = field[i];
    } else {
      field.copy(m_text + m_length, field.size());
    }
    m_length += field.size();
    m_text[m_length] = '\0';
  }

  std::string_view View() const { return {m_text, m_length}; }

 private:
  // An angle with the longest number in it.
  static constexpr std::size_t kMaxOwnField = C_PrintFormat::kMaxPlainLength + 16;

  // The buffer has room for more than the limit: units, checksum and line end come on top of it.
  char* m_text;
  std::size_t m_length;
  TimeDigits m_timeDigits;
};

// How an angle is written: degrees, minutes, letter.
struct S_AngleStyle {
  double limit;  // degrees, the greatest magnitude
  unsigned int degreeDigits;
  // Direction letters: north and east are positive, as in the records.
  char positive;
  char negative;
};
// "4807.038,N" and "01131.000,E": two digits of degrees and three (NMEA 0183).
inline constexpr S_AngleStyle kLatitudeStyle = {90.0, 2, 'N', 'S'};
inline constexpr S_AngleStyle kLongitudeStyle = {180.0, 3, 'E', 'W'};

// One field each, led by a comma where asked for; nothing but the comma when the value equals `notAvailable`.
[[nodiscard]] unsigned int AppendTime(C_SentenceText& sentence, double notAvailable, double secondsOfDay,
                                      bool leadingComma);

struct S_AngleLayout {
  bool directionAfter;  // "4807.038,N", else "N4807.038"
  bool leadingComma;
};
[[nodiscard]] unsigned int AppendAngle(C_SentenceText& sentence, const S_AngleStyle& style,
                                       const C_PrintFormat& minutesFormat, double notAvailable, double degrees,
                                       S_AngleLayout layout);

// Checksum, CR and LF; `length` is the length of the whole then. As a result code.
[[nodiscard]] unsigned int EndSentence(C_SentenceText& sentence, unsigned short& length);

// A field by a writer that is given its place and gives back its end; at most as long as `FieldPlace` says.
template <class Write>
[[nodiscard]] unsigned int AppendWritten(C_SentenceText& sentence, const Write& write) {
  if (char* const place = sentence.FieldPlace()) {
    sentence.EndField(write(place));
    return eResultOk;
  }
  C_FieldText field;  // near the end of the sentence its length decides
  field.SetEnd(write(field.End()));
  return sentence.Append(field);
}

// Any number by its format.
template <class Value>
[[nodiscard]] unsigned int AppendValue(C_SentenceText& sentence, const C_PrintFormat& format, Value notAvailable,
                                       Value value, bool leadingComma) {
  if (format.IsPlain(value)) {
    return AppendWritten(sentence, [&](char* at) {
      if (leadingComma) *at++ = ',';
      return value != notAvailable ? format.PrintPlain(at, value) : at;
    });
  }
  C_FieldText field;
  if (leadingComma) field.Add(',');
  if (value != notAvailable) format.Print(field, value);
  return sentence.Append(field);
}

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_SENTENCE_TEXT_H
