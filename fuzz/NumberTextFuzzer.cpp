// Field tokenizer, number parsers and number writers against the C library in the C locale: the same verdict, value and
// number of characters from any text, the same text from any number.
//
// What C leaves undefined, and where its library is more lenient than its standard, ours refuses:
//   an integer beyond its type, a double beyond the largest finite one
//   a number cut off after "0x" or in its exponent: "0x", "1e", "1.5E+"
#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <vector>

#include "fuzz/Fuzz.h"
#include "tests/ExactCopy.h"
#include "textproto/FieldTokenizer.h"
#include "textproto/FieldValues.h"
#include "textproto/NumberText.h"
#include "textproto/PrintFormat.h"

namespace {

namespace Fields = velagnss::textproto;
namespace NumberText = Fields::NumberText;
using Fields::C_FieldText;
using Fields::C_PrintFormat;

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
  S_Scanned<Value> scanned;
  int used = 0;
  scanned.isRead = std::sscanf(text.c_str(), format, &scanned.value, &used) == 1;
  scanned.used = static_cast<std::size_t>(used);
  return scanned;
}

// Whether the magnitude that an integer's text gives is at most `limit`, without leaning on undefined results.
bool IsMagnitudeWithin(const std::string& text, unsigned int base, unsigned long long limit) {
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

bool IsNegative(const std::string& text) {
  const std::size_t at = text.find_first_not_of(" \t\n\v\f\r");
  return at != std::string::npos && text[at] == '-';
}

// What was read without blanks and sign.
std::string ItemIn(const std::string& text, std::size_t used) {
  const std::size_t start = std::min(text.find_first_not_of(" \t\n\v\f\r"), used);
  const bool hasSign = start < used && (text[start] == '+' || text[start] == '-');
  return text.substr(start, used - start).substr(hasSign ? 1 : 0);
}

bool IsHexadecimal(const std::string& item) { return item.size() > 1 && item[0] == '0' && (item[1] | 0x20) == 'x'; }

bool IsCutBehindPrefix(const std::string& item) {
  return IsHexadecimal(item) && item.find_first_of("0123456789abcdefABCDEF", 2) == std::string::npos;
}

bool IsCutInExponent(const std::string& item) {
  const std::size_t letter = item.find_first_of(IsHexadecimal(item) ? "pP" : "eE");
  return letter != std::string::npos && item.find_first_of("0123456789", letter) == std::string::npos;
}

template <class Value>
S_Scanned<Value> Integer(const std::string& text, const char* format, unsigned int base = 10) {
  auto limit = static_cast<unsigned long long>(std::numeric_limits<Value>::max());
  if (std::numeric_limits<Value>::is_signed && IsNegative(text)) ++limit;
  if (!IsMagnitudeWithin(text, base, limit)) return {};
  const S_Scanned<Value> scanned = ByLibrary<Value>(text, format);
  if (base == 16 && IsCutBehindPrefix(ItemIn(text, scanned.used))) return {};
  return scanned;
}

// Infinity that the text does not name is an overflow.
S_Scanned<double> Double(const std::string& text) {
  const S_Scanned<double> scanned = ByLibrary<double>(text, "%lf%n");
  const std::string item = ItemIn(text, scanned.used);
  const bool isOverflow = std::isinf(scanned.value) && (item[0] | 0x20) != 'i';
  if (!scanned.isRead || isOverflow || IsCutBehindPrefix(item) || IsCutInExponent(item)) return {};
  return scanned;
}

template <class Value>
S_Scanned<Value> ByUs(std::size_t (*scan)(std::string_view, Value&), const std::string& text) {
  ExactCopy copy(text);
  const Value before = 77;
  S_Scanned<Value> scanned;
  scanned.value = before;
  scanned.used = scan(Fuzz::View(copy.Data(), copy.Size()), scanned.value);
  scanned.isRead = scanned.used > 0;
  Fuzz::Require(scanned.isRead || scanned.value == before, "nothing read, nothing written");
  return scanned;
}

void CompareScans(const std::string& text) {
  using namespace NumberText;
  Fuzz::Require(ByUs<unsigned int>(ScanU32, text) == Integer<unsigned int>(text, "%u%n"), "ScanU32");
  Fuzz::Require(ByUs<int>(ScanS32, text) == Integer<int>(text, "%d%n"), "ScanS32");
  Fuzz::Require(ByUs<long long>(ScanS64, text) == Integer<long long>(text, "%lld%n"), "ScanS64");
  Fuzz::Require(ByUs<unsigned int>(ScanHex32, text) == Integer<unsigned int>(text, "%x%n", 16), "ScanHex32");
  Fuzz::Require(ByUs<unsigned long long>(ScanHex64, text) == Integer<unsigned long long>(text, "%llx%n", 16),
                "ScanHex64");
  Fuzz::Require(ByUs<double>(ScanDouble, text) == Double(text), "ScanDouble");
  unsigned int digits = 77;
  const bool isPlain = ReadPlainInteger(text, digits);
  const S_Scanned<unsigned int> whole = Integer<unsigned int>(text, "%u%n");
  Fuzz::Require(!isPlain || (whole.isRead && whole.used == text.size() && whole.value == digits), "ReadPlainInteger");
  S_Scanned<double> plain;
  if (ReadPlainDecimal(text, plain.value)) {
    plain.used = text.size();
    plain.isRead = true;
    Fuzz::Require(plain == Double(text), "ReadPlainDecimal");
  }
}

// --- Fields as numbers: all characters of a set, then as the library scans ---

constexpr std::string_view kUnsignedSet = " +0123456789";
constexpr std::string_view kSignedSet = " +-0123456789";
constexpr std::string_view kDecimalSet = " +-.0123456789DEde";

template <class Value, class Wide>
void CompareField(bool (*parse)(std::string_view, Value&, unsigned char), const std::string& field,
                  std::string_view allowed, const S_Scanned<Wide>& scanned) {
  const bool isInRange = scanned.value >= static_cast<Wide>(std::numeric_limits<Value>::lowest()) &&
                         scanned.value <= static_cast<Wide>(std::numeric_limits<Value>::max());
  const bool isNumber = field.find_first_not_of(allowed) == std::string::npos && scanned.isRead && isInRange;
  for (const unsigned char allowEmpty : std::string(1, '\0') + '\1') {
    const bool isAccepted = field.empty() ? allowEmpty != 0 : isNumber;
    const Value expected = !isAccepted ? Value{77} : field.empty() ? Value{0} : static_cast<Value>(scanned.value);
    Value value = 77;
    Fuzz::Require(parse(field, value, allowEmpty) == isAccepted, "a field is accepted if it is a number");
    Fuzz::Require(std::memcmp(&value, &expected, sizeof value) == 0, "a field reads as the library scans it");
  }
}

void CompareFields(const std::string& text) {
  const std::string field = text.c_str();  // up to its first NUL
  const auto u32 = Integer<unsigned int>(field, "%u%n");
  const auto s32 = Integer<int>(field, "%d%n");
  CompareField<unsigned int>(Fields::StrToU32, field, kUnsignedSet, u32);
  CompareField<unsigned short>(Fields::StrToU16, field, kUnsignedSet, u32);
  CompareField<unsigned char>(Fields::StrToU8, field, kUnsignedSet, u32);
  CompareField<int>(Fields::StrToS32, field, kSignedSet, s32);
  CompareField<signed char>(Fields::StrToS8, field, kSignedSet, s32);
  CompareField<double>(Fields::StrToDBL, field, kDecimalSet, Double(field));
}

// --- Times: seconds of the day are those of hours, minutes and seconds ---

void CompareClocks(const std::string& text) {
  const std::string field = text.c_str();
  ExactCopy copy(field);
  const std::string_view view = Fuzz::View(copy.Data(), copy.Size());
  unsigned int hours = 77, minutes = 77;
  double seconds = 77, secondsOfDay = 77, degrees = 77;
  Fields::S_Date date = {};
  const bool isTime = Fields::ParseTimeOfDay(view, hours, minutes, seconds);
  const bool isSeconds = Fields::ParseTimeOfDaySeconds(view, secondsOfDay);
  Fuzz::Require(isTime == isSeconds, "seconds of the day are read of each time");
  Fuzz::Require(Fields::ParseDegreesMinutes(view, degrees) || degrees == 0, "a bad angle is 0");
  Fuzz::Require(Fields::ParseDate(view, {1, 2, 3}, date) || field.size() > 5 || date.day == 3, "a short date is none");
  if (!isTime || field.empty()) return;
  const double sum = hours * 3600.0 + minutes * 60.0 + seconds;
  Fuzz::Require(std::memcmp(&secondsOfDay, &sum, sizeof sum) == 0, "seconds of the day are those of the time");
}

// --- Splitting: as strcspn does it ---

std::vector<std::string> FieldsOf(const std::string& text, const std::string& delimiters) {
  std::vector<std::string> fields;
  for (const char* at = text.c_str(); !text.empty(); ++at) {
    fields.emplace_back(at, std::strcspn(at, delimiters.c_str()));
    at += fields.back().size();
    if (*at == '\0') break;
  }
  return fields;
}

void CompareTokenizer(Fuzz::C_Input input) {
  const unsigned int capacity = input.Below(2049);
  const bool isCounting = input.Below(4) != 0;
  const unsigned int outSize = input.Below(2) == 0 ? 64 : input.Below(600);
  std::string delimiters = input.Below(4) != 0 ? ",*" : input.Take(input.Below(60)).c_str();
  const std::string whole = input.Rest().c_str();
  C_FieldTokenizer tokenizer(whole.c_str(), delimiters.c_str(), capacity, isCounting ? 1 : 0);
  if (delimiters.size() > C_FieldTokenizer::kMaxDelimiters) delimiters.clear();
  const std::vector<std::string> fields = FieldsOf(whole.size() < capacity ? whole : "", delimiters);
  const auto tooLong = std::find_if(fields.begin(), fields.end(), [](const std::string& field) {
    return field.size() > C_FieldTokenizer::kMaxCountedField;
  });
  Fuzz::Require(tokenizer.GetFieldCount() == (isCounting ? tooLong - fields.begin() : -1), "fields are counted");
  for (const std::string& field : fields) {
    ExactCopy out(std::string(outSize, '\x5A'));
    const bool isDelivered = tokenizer.GetNextField(reinterpret_cast<char*>(out.Data()), outSize) == 1;
    Fuzz::Require(isDelivered == (field.size() <= outSize), "what fits is delivered");
    std::string expected = isDelivered ? field : "";
    expected.resize(outSize);
    Fuzz::Require(Fuzz::View(out.Data(), outSize) == expected, "a field is copied, with zeros after it");
  }
  char out[8];
  Fuzz::Require(tokenizer.GetNextField(out, sizeof out) == 0, "the last field is the last");
}

// --- Writing ---

void CompareWriters(Fuzz::C_Input input) {
  const auto number = input.Value<double>();
  const auto integer = input.Value<long long>();
  const unsigned int decimals = input.Below(NumberText::kMaxDecimals + 1);
  const unsigned int width = input.Below(20);
  char expected[400];
  char written[400];
  std::snprintf(expected, sizeof expected, "%0*.*f", std::isfinite(number) ? static_cast<int>(width) : 0,
                static_cast<int>(decimals), number);
  *NumberText::WriteFixed(written, number, decimals, width) = '\0';
  Fuzz::Require(std::strcmp(expected, written) == 0, "WriteFixed");
  std::snprintf(expected, sizeof expected, "%0*lld", static_cast<int>(width), integer);
  *NumberText::WriteInteger(written, integer, width) = '\0';
  Fuzz::Require(std::strcmp(expected, written) == 0, "WriteInteger");
}

constexpr int kLongestSentence = 1018;

// The C library takes memory for all digits asked for, by the gigabyte.
bool AsksForTooMuch(const std::string& format) {
  std::size_t digits = 0;
  for (const char c : format) {
    digits = std::isdigit(static_cast<unsigned char>(c)) != 0 ? digits + 1 : 0;
    if (digits > 5) return true;
  }
  return false;
}

template <class Value>
void CompareFormat(const std::string& format, std::string_view conversions, Value value) {
  C_PrintFormat parsed;
  if (!parsed.Parse(format, conversions)) return;
  C_FieldText text;
  parsed.Print(text, value);
  std::vector<char> expected(C_FieldText::kCapacity + 1);
  const int length = std::snprintf(expected.data(), expected.size(), format.c_str(), value);
  Fuzz::Require(text.IsTooLong() ? length > kLongestSentence : text.View().size() == static_cast<std::size_t>(length),
                "what fits into a sentence is not too long");
  if (text.IsTooLong()) return;
  Fuzz::Require(text.View() == std::string_view(expected.data(), text.View().size()), "Print");
}

void CompareFormats(Fuzz::C_Input input) {
  const auto number = input.Value<double>();
  const auto integer = input.Value<int>();
  const std::string format = input.Rest().c_str();
  if (AsksForTooMuch(format)) return;
  CompareFormat(format, C_PrintFormat::kRealConversions, number);
  CompareFormat(format, C_PrintFormat::kIntegerConversions, integer);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::C_Input input(data, size);
  const unsigned int kind = input.Below(6);
  if (kind == 0) CompareScans(input.Rest());
  if (kind == 1) CompareFields(input.Rest());
  if (kind == 2) CompareTokenizer(input);
  if (kind == 3) CompareWriters(input);
  if (kind == 4) CompareFormats(input);
  if (kind == 5) CompareClocks(input.Rest());
  return 0;
}
