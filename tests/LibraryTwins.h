// Number parsers, number writers and field tokenizer beside the C library in the C locale: the same verdict, value and
// number of characters from any text, the same text from any number. Each comparison gives the name of the operation
// that differs, or an empty text. The texts come from the caller: from tables and generators in tests, from the input's
// bytes in the fuzz target.
//
// What C leaves undefined, and where its library is more lenient than its standard, ours refuses:
//   an integer beyond its type, a double beyond the largest finite one
//   a number cut off after "0x" or in its exponent: "0x", "1e", "1.5E+"
#ifndef VELAGNSS_TESTS_LIBRARY_TWINS_H
#define VELAGNSS_TESTS_LIBRARY_TWINS_H

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "tests/CLocale.h"
#include "tests/ExactCopy.h"
#include "textproto/FieldParsers.h"
#include "textproto/FieldTokenizer.h"
#include "textproto/NumberText.h"
#include "textproto/PrintFormat.h"

namespace LibraryTwins {

// --- Reading ---

template <class Value>
struct S_Scanned {
  bool isRead = false;
  std::size_t used = 0;
  Value value{};

  bool operator==(const S_Scanned& other) const {
    if (!isRead || !other.isRead) return isRead == other.isRead;
    return used == other.used && std::memcmp(&value, &other.value, sizeof value) == 0;
  }
};

template <class Value>
S_Scanned<Value> ByLibrary(const std::string& text, const char* format) {
  const CLocale locale;
  S_Scanned<Value> scanned;
  int used = 0;
  scanned.isRead = std::sscanf(text.c_str(), format, &scanned.value, &used) == 1;
  scanned.used = static_cast<std::size_t>(used);
  return scanned;
}

// Whether the magnitude that an integer's text gives is at most `limit`, without leaning on undefined results.
inline bool IsMagnitudeWithin(const std::string& text, unsigned int base, unsigned long long limit) {
  std::size_t at = 0;
  while (std::isspace(static_cast<unsigned char>(text[at])) != 0) ++at;
  if (text[at] == '-' || text[at] == '+') ++at;
  if (base == 16 && text[at] == '0' && (text[at + 1] | 0x20) == 'x') at += 2;
  unsigned long long magnitude = 0;
  for (; std::isxdigit(static_cast<unsigned char>(text[at])) != 0; ++at) {
    const auto c = static_cast<unsigned char>(text[at]);
    const unsigned int digit = std::isdigit(c) != 0 ? c - '0' : std::tolower(c) - 'a' + 10U;
    if (digit >= base) break;
    if (magnitude > (limit - digit) / base) return false;
    magnitude = magnitude * base + digit;
  }
  return true;
}

inline bool IsNegative(const std::string& text) {
  const std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
  return at != std::string::npos && text[at] == '-';
}

// What was read without blanks and sign.
inline std::string ItemIn(const std::string& text, std::size_t used) {
  const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), used);
  const bool hasSign = start < used && (text[start] == '+' || text[start] == '-');
  return text.substr(start, used - start).substr(hasSign ? 1 : 0);
}

inline bool IsHexadecimal(const std::string& item) {
  return item.size() > 1 && item[0] == '0' && (item[1] | 0x20) == 'x';
}

inline bool IsCutAfterPrefix(const std::string& item) {
  return IsHexadecimal(item) && item.find_first_of("0123456789abcdefABCDEF", 2) == std::string::npos;
}

inline bool IsCutInExponent(const std::string& item) {
  const std::size_t letter = item.find_first_of(IsHexadecimal(item) ? "pP" : "eE");
  return letter != std::string::npos && item.find_first_of("0123456789", letter) == std::string::npos;
}

template <class Value>
S_Scanned<Value> Integer(const std::string& text, const char* format, unsigned int base = 10) {
  auto limit = static_cast<unsigned long long>(std::numeric_limits<Value>::max());
  if (std::numeric_limits<Value>::is_signed && IsNegative(text)) ++limit;
  if (!IsMagnitudeWithin(text, base, limit)) return {};
  const S_Scanned<Value> scanned = ByLibrary<Value>(text, format);
  if (base == 16 && IsCutAfterPrefix(ItemIn(text, scanned.used))) return {};
  return scanned;
}

// Infinity that the text does not name is an overflow.
inline S_Scanned<double> Double(const std::string& text) {
  const S_Scanned<double> scanned = ByLibrary<double>(text, "%lf%n");
  const std::string item = ItemIn(text, scanned.used);
  const bool isOverflow = std::isinf(scanned.value) && (item[0] | 0x20) != 'i';
  if (!scanned.isRead || isOverflow || IsCutAfterPrefix(item) || IsCutInExponent(item)) return {};
  return scanned;
}

// Whether our scan gives what is expected, and leaves the value alone when there is no number.
template <class Value>
bool Scans(std::size_t (*scan)(std::string_view, Value&), const std::string& text, const S_Scanned<Value>& expected) {
  ExactCopy copy(text);
  const Value before = 77;
  S_Scanned<Value> scanned{true, 0, before};
  scanned.used = scan({reinterpret_cast<const char*>(copy.Data()), copy.Size()}, scanned.value);
  scanned.isRead = scanned.used > 0;
  return scanned == expected && (scanned.isRead || scanned.value == before);
}

inline std::string ScansDiffer(const std::string& text) {
  using namespace velagnss::textproto::NumberText;
  const auto whole = Integer<unsigned int>(text, "%u%n");
  if (!Scans(ScanU32, text, whole)) return "ScanU32";
  if (!Scans(ScanS32, text, Integer<int>(text, "%d%n"))) return "ScanS32";
  if (!Scans(ScanS64, text, Integer<long long>(text, "%lld%n"))) return "ScanS64";
  if (!Scans(ScanHex32, text, Integer<unsigned int>(text, "%x%n", 16))) return "ScanHex32";
  if (!Scans(ScanHex64, text, Integer<unsigned long long>(text, "%llx%n", 16))) return "ScanHex64";
  if (!Scans(ScanDouble, text, Double(text))) return "ScanDouble";
  S_Scanned<unsigned int> digits{true, text.size(), 77};
  if (ReadPlainInteger(text, digits.value) && !(digits == whole)) return "ReadPlainInteger";
  S_Scanned<double> decimal{true, text.size(), 77};
  return ReadPlainDecimal(text, decimal.value) && !(decimal == Double(text)) ? "ReadPlainDecimal" : "";
}

// --- Fields as numbers: all characters of a set, then as the library scans ---

template <class Value, class Wide>
bool IsInRange(const S_Scanned<Wide>& scanned) {
  return scanned.isRead && scanned.value >= static_cast<Wide>(std::numeric_limits<Value>::lowest()) &&
         scanned.value <= static_cast<Wide>(std::numeric_limits<Value>::max());
}

template <class Value, class Wide>
bool Reads(bool (*parse)(const char*, Value&, unsigned char), const std::string& field, std::string_view allowed,
           const S_Scanned<Wide>& scanned) {
  const bool isNumber = field.find_first_not_of(allowed) == std::string::npos && IsInRange<Value>(scanned);
  for (const unsigned char allowEmpty : std::string(1, '\0') + '\1') {
    const bool isAccepted = field.empty() ? allowEmpty != 0 : isNumber;
    const Value expected = !isAccepted ? Value{77} : field.empty() ? Value{0} : static_cast<Value>(scanned.value);
    Value value = 77;
    if (parse(field.c_str(), value, allowEmpty) != isAccepted) return false;
    if (std::memcmp(&value, &expected, sizeof value) != 0) return false;
  }
  return true;
}

// The text up to its first NUL as a field.
inline std::string FieldsDiffer(const std::string& text) {
  constexpr std::string_view kUnsignedSet = " +0123456789", kSignedSet = " +-0123456789";
  const std::string field = text.c_str();
  const auto u32 = Integer<unsigned int>(field, "%u%n");
  const auto s32 = Integer<int>(field, "%d%n");
  if (!Reads(UTIL::StrToU32, field, kUnsignedSet, u32)) return "StrToU32";
  if (!Reads(UTIL::StrToU16, field, kUnsignedSet, u32)) return "StrToU16";
  if (!Reads(UTIL::StrToU8, field, kUnsignedSet, u32)) return "StrToU8";
  if (!Reads(UTIL::StrToS32, field, kSignedSet, s32)) return "StrToS32";
  if (!Reads(UTIL::StrToS8, field, kSignedSet, s32)) return "StrToS8";
  return Reads(UTIL::StrToDBL, field, " +-.0123456789DEde", Double(field)) ? "" : "StrToDBL";
}

// --- Splitting: as strcspn does it ---

inline std::vector<std::string> FieldsOf(const std::string& text, const std::string& delimiters) {
  std::vector<std::string> fields;
  for (const char* at = text.c_str(); !text.empty(); ++at) {
    fields.emplace_back(at, std::strcspn(at, delimiters.c_str()));
    at += fields.back().size();
    if (*at == '\0') break;
  }
  return fields;
}

// A field is copied, with zeros after it; one that is longer than the buffer is passed over.
inline std::string DrainDiffers(C_FieldTokenizer& tokenizer, const std::vector<std::string>& fields,
                                unsigned int outSize) {
  for (std::string expected : fields) {
    const bool fits = expected.size() <= outSize;
    ExactCopy out(std::string(outSize, '\x5A'));
    auto* const text = reinterpret_cast<char*>(out.Data());
    if ((tokenizer.GetNextField(text, outSize) == 1) != fits) return "GetNextField";
    expected.resize(fits ? expected.size() : 0);
    expected.resize(outSize);
    if (std::string_view(text, outSize) != expected) return "the field copied";
  }
  char out[8];
  return tokenizer.GetNextField(out, sizeof out) == 0 ? "" : "the last field";
}

// Text and delimiters without NUL; the text set as a string, and by its length.
inline std::string TokenizerDiffers(const std::string& text, std::string delimiters, unsigned int capacity,
                                    bool isCounting, unsigned int outSize) {
  C_FieldTokenizer tokenizer(text.c_str(), delimiters.c_str(), capacity, isCounting ? 1 : 0);
  if (delimiters.size() > C_FieldTokenizer::kMaxDelimiters) delimiters.clear();
  const std::vector<std::string> fields = FieldsOf(text.size() < capacity ? text : "", delimiters);
  const auto tooLong = std::find_if(fields.begin(), fields.end(), [](const std::string& field) {
    return field.size() > C_FieldTokenizer::kMaxCountedField;
  });
  const auto count = isCounting ? tooLong - fields.begin() : -1;
  if (tokenizer.GetFieldCount() != count) return "GetFieldCount";
  const std::string difference = DrainDiffers(tokenizer, fields, outSize);
  if (!difference.empty()) return difference;
  ExactCopy copy(text);
  tokenizer.SetText(reinterpret_cast<const char*>(copy.Data()), copy.Size());
  if (tokenizer.GetFieldCount() != count) return "GetFieldCount of a text by its length";
  return DrainDiffers(tokenizer, fields, outSize);
}

// --- Writing ---

inline std::string WritersDiffer(double number, long long integer, unsigned int decimals, unsigned int width) {
  const CLocale locale;
  char expected[400];
  char written[400];
  std::snprintf(expected, sizeof expected, "%0*.*f", std::isfinite(number) ? static_cast<int>(width) : 0,
                static_cast<int>(decimals), number);
  *velagnss::textproto::NumberText::WriteFixed(written, number, decimals, width) = '\0';
  if (std::strcmp(expected, written) != 0) return "WriteFixed";
  std::snprintf(expected, sizeof expected, "%0*lld", static_cast<int>(width), integer);
  *velagnss::textproto::NumberText::WriteInteger(written, integer, width) = '\0';
  return std::strcmp(expected, written) == 0 ? "" : "WriteInteger";
}

// A format that the emitters take prints as the C library prints it, or is too long for a sentence.
template <class Value>
std::string PrintDiffers(const std::string& format, std::string_view conversions, Value value) {
  using namespace velagnss::textproto;
  constexpr std::size_t kLongestSentence = 1018;
  C_PrintFormat parsed;
  if (!parsed.Parse(format, conversions)) return "";
  C_FieldText text;
  parsed.Print(text, value);
  const CLocale locale;
  std::vector<char> expected(C_FieldText::kCapacity + 1);
  const auto length = static_cast<std::size_t>(std::snprintf(expected.data(), expected.size(), format.c_str(), value));
  if (text.IsTooLong()) return length > kLongestSentence ? "" : "what fits into a sentence is not too long";
  return text.View() == std::string_view(expected.data(), std::min(length, expected.size())) ? "" : "Print";
}

}  // namespace LibraryTwins

#endif  // VELAGNSS_TESTS_LIBRARY_TWINS_H
