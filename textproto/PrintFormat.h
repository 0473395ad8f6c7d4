// A printf format with one conversion, taken apart: the emitters accept any, the encoders' own are parsed by the
// compiler. Internal.
#ifndef VELAGNSS_TEXTPROTO_PRINT_FORMAT_H
#define VELAGNSS_TEXTPROTO_PRINT_FORMAT_H

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "textproto/NumberText.h"

namespace velagnss::textproto {

// The text of one field while it is composed. More than fits is remembered, not written.
class C_FieldText {
 public:
  static constexpr std::size_t kCapacity = 1536;  // the longest sentence with the longest number after it

  void Add(char c) {
    if (m_length == kCapacity) {
      m_isTooLong = true;
    } else {
      m_text[m_length++] = c;
    }
  }
  void Add(std::string_view text) {
    if (text.size() > Room()) {
      m_isTooLong = true;
      return;
    }
    m_length += text.copy(End(), text.size());  // unlike memcpy, also right for an empty view without a pointer
  }

  // For writers that know that `Room()` suffices: they write from `End()` on and give back where they came to.
  std::size_t Room() const { return kCapacity - m_length; }
  char* End() { return m_text.data() + m_length; }
  void SetEnd(const char* end) { m_length = static_cast<std::size_t>(end - m_text.data()); }
  void SetTooLong() { m_isTooLong = true; }

  bool IsTooLong() const { return m_isTooLong; }
  std::string_view View() const { return {m_text.data(), m_length}; }

 private:
  std::array<char, kCapacity> m_text;  // left as it is: only the first m_length are read
  std::size_t m_length = 0;
  bool m_isTooLong = false;
};

// format = text "%" flag* [ width ] [ "." [ precision ] ] [ "l" ] conversion text, with "%%" for "%" in the texts
class C_PrintFormat {
 public:
  static constexpr std::string_view kIntegerConversions = "cdiouxX";
  static constexpr std::string_view kRealConversions = "fFeEgGaA";  // an "l" may precede these

  // For Parse; prints nothing until then.
  constexpr C_PrintFormat() = default;

  // Takes a format apart that is known to be right.
  constexpr explicit C_PrintFormat(std::string_view format) {
    const bool isRight = Parse(format, kRealConversions) || Parse(format, kIntegerConversions);
    if (!isRight) std::abort();  // the compiler stops here: all our formats are constants
  }

  // False: not a format with exactly one of the conversions.
  constexpr bool Parse(std::string_view format, std::string_view conversions);

  // A format of our own writers, without a text around the number: the same without a C_FieldText. `PrintPlain` writes
  // at most kMaxPlainLength characters and gives back where they end.
  static constexpr unsigned int kMaxPlainWidth = 20;
  static constexpr std::size_t kMaxPlainLength =
      kMaxPlainWidth + NumberText::kMaxFixedLength + NumberText::kMaxDecimals;
  bool IsPlain(int) const { return m_isPlain && m_conversion == 'd'; }
  bool IsPlain(double value) const { return m_isPlain && m_conversion == 'f' && std::isfinite(value); }
  char* PrintPlain(char* out, int value) const {
    return NumberText::WriteInteger(out, value, static_cast<unsigned int>(m_width));
  }
  char* PrintPlain(char* out, double value) const {
    return NumberText::WriteFixed(out, value, static_cast<unsigned int>(m_precision),
                                  static_cast<unsigned int>(m_width));
  }

  // Print as printf does in the C locale.
  void Print(C_FieldText& out, int value) const;
  void Print(C_FieldText& out, double value) const;

 private:
  // In the order of m_hasFlag.
  static constexpr std::string_view kFlags = "-+ #0";
  // A negative precision counts as none, for printf as well.
  static constexpr int kNone = -1;
  // A greater width or precision is taken for this one: no field is that long, no double has that many digits.
  static constexpr int kMaxNumber = 2000;

  // The parts of Parse. Positions move past what was read.
  constexpr bool ParseConversion(std::string_view format, std::size_t& at, std::string_view conversions);
  static constexpr int ParseNumber(std::string_view format, std::size_t& at);
  static constexpr bool IsPlainText(std::string_view text);

  // Wants leading zeros, or nothing at all, in front of the number: what our own writers do.
  constexpr bool IsSimple(char conversion) const;
  constexpr bool IsPlain() const;
  void PrintNumber(C_FieldText& out, int value) const;
  void PrintNumber(C_FieldText& out, double value) const;
  template <class Value>
  void PrintText(C_FieldText& out, Value value) const;
  template <std::size_t N, class Value>
  std::string_view PrintByCLibrary(char (&number)[N], Value value, C_FieldText& out) const;

  std::string_view m_before;  // texts around the conversion, "%%" still doubled
  std::string_view m_after;
  bool m_hasFlag[kFlags.size()] = {};
  int m_width = 0;
  int m_precision = kNone;
  char m_conversion = '\0';
  bool m_isPlain = false;
};

constexpr bool C_PrintFormat::Parse(std::string_view format, std::string_view conversions) {
  *this = C_PrintFormat();
  std::size_t at = 0;
  while (at < format.size() && (format[at] != '%' || format.substr(at, 2) == "%%")) at += format[at] == '%' ? 2 : 1;
  m_before = format.substr(0, at);
  if (at == format.size() || !ParseConversion(format, ++at, conversions)) return false;
  m_after = format.substr(at);
  m_isPlain = IsPlain();
  return IsPlainText(m_after);
}

constexpr bool C_PrintFormat::ParseConversion(std::string_view format, std::size_t& at, std::string_view conversions) {
  std::size_t flag = 0;
  for (; at < format.size() && (flag = kFlags.find(format[at])) != std::string_view::npos; ++at) m_hasFlag[flag] = true;
  m_width = ParseNumber(format, at);
  if (at < format.size() && format[at] == '.') m_precision = ParseNumber(format, ++at);
  if (conversions == kRealConversions && at < format.size() && format[at] == 'l') ++at;
  if (at == format.size() || conversions.find(format[at]) == std::string_view::npos) return false;
  m_conversion = format[at++];
  return true;
}

constexpr bool C_PrintFormat::IsSimple(char conversion) const {
  if (m_conversion != conversion) return false;
  for (std::size_t i = 0; i < kFlags.size(); ++i)
    if (m_hasFlag[i] && kFlags[i] != '0') return false;
  return m_width == 0 || m_hasFlag[kFlags.find('0')];
}

// An integer without a precision, a decimal with one.
constexpr bool C_PrintFormat::IsPlain() const {
  if (!m_before.empty() || !m_after.empty() || m_width > static_cast<int>(kMaxPlainWidth)) return false;
  constexpr int kMaxDecimals = NumberText::kMaxDecimals;
  return IsSimple('d') ? m_precision == kNone : IsSimple('f') && m_precision != kNone && m_precision <= kMaxDecimals;
}

constexpr int C_PrintFormat::ParseNumber(std::string_view format, std::size_t& at) {
  int number = 0;
  for (; at < format.size() && format[at] >= '0' && format[at] <= '9'; ++at)
    number = std::min(number * 10 + (format[at] - '0'), kMaxNumber);
  return number;
}

constexpr bool C_PrintFormat::IsPlainText(std::string_view text) {
  for (std::size_t at = 0; at < text.size(); ++at)
    if (text[at] == '%' && text.substr(at++, 2) != "%%") return false;
  return true;
}

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_PRINT_FORMAT_H
