// Formats of our own encoders are printed without the C library; other formats, which a host may pass to an emitter, by
// snprintf, with the decimal point of the locale put right.
#include "textproto/PrintFormat.h"

#include <cmath>
#include <cstdio>
#include <cstring>

#include "textproto/NumberText.h"

namespace velagnss::textproto {
namespace {

// "%%" in a format is a "%" in its text.
void AddUnescaped(C_FieldText& out, std::string_view text) {
  for (std::size_t at = 0; at < text.size(); at += text[at] == '%' ? 2 : 1) out.Add(text[at]);
}

// Letters for "inf", "nan", exponents and hexadecimal digits.
bool IsOfNumber(char c) {
  return c == ' ' || c == '+' || c == '-' || (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// A printed number holds ASCII letters, digits, signs and blanks. Anything else in it, one byte or several, is the
// decimal point of the locale: the host may have set any.
void AddWithPoint(C_FieldText& out, std::string_view number) {
  bool isPointDone = false;
  for (const char c : number) {
    const bool isOfPoint = !IsOfNumber(c);
    if (!isOfPoint || !isPointDone) out.Add(isOfPoint ? '.' : c);
    isPointDone |= isOfPoint;
  }
}

}  // namespace

template <class Value>
void C_PrintFormat::PrintText(C_FieldText& out, Value value) const {
  AddUnescaped(out, m_before);
  PrintNumber(out, value);
  AddUnescaped(out, m_after);
}

void C_PrintFormat::Print(C_FieldText& out, int value) const { PrintText(out, value); }
void C_PrintFormat::Print(C_FieldText& out, double value) const { PrintText(out, value); }

void C_PrintFormat::PrintNumber(C_FieldText& out, int value) const {
  const std::size_t width = static_cast<std::size_t>(m_width);
  // Our writers do not check the room, so the longest outcome must fit.
  const bool isOwn = IsSimple('d') && m_precision == kNone && out.Room() >= width + NumberText::kMaxIntegerLength;
  if (isOwn) return out.SetEnd(NumberText::WriteInteger(out.End(), value, static_cast<unsigned int>(m_width)));
  // The common "%c" without snprintf.
  if (m_conversion == 'c' && m_width <= 1) return out.Add(static_cast<char>(value));
  char number[C_FieldText::kCapacity];
  out.Add(PrintByCLibrary(number, value, out));
}

void C_PrintFormat::PrintNumber(C_FieldText& out, double value) const {
  const unsigned int decimals = static_cast<unsigned int>(m_precision == kNone ? 6 : m_precision);
  const unsigned int width = static_cast<unsigned int>(m_width);
  const bool isOwn = IsSimple('f') && decimals <= NumberText::kMaxDecimals && (width == 0 || std::isfinite(value)) &&
                     out.Room() >= width + NumberText::kMaxFixedLength + NumberText::kMaxDecimals;
  if (isOwn) return out.SetEnd(NumberText::WriteFixed(out.End(), value, decimals, width));
  char number[C_FieldText::kCapacity];
  AddWithPoint(out, PrintByCLibrary(number, value, out));
}

template <std::size_t N, class Value>
std::string_view C_PrintFormat::PrintByCLibrary(char (&number)[N], Value value, C_FieldText& out) const {
  // Built anew from what was parsed: a string of the host never reaches snprintf as a format.
  char format[1 + kFlags.size() + sizeof "*.*c"];
  char* end = format;
  *end++ = '%';
  for (std::size_t i = 0; i < kFlags.size(); ++i)
    if (m_hasFlag[i]) *end++ = kFlags[i];
  std::memcpy(end, "*.*", 3);  // a negative precision counts as none
  end[3] = m_conversion;
  end[4] = '\0';
  const int length = std::snprintf(number, N, format, m_width, m_precision, value);
  if (length >= 0 && static_cast<std::size_t>(length) < N) return {number, static_cast<std::size_t>(length)};
  out.SetTooLong();
  return {};
}

}  // namespace velagnss::textproto
