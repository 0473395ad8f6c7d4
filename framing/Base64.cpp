// RFC 4648, section 4, with two liberties in decoding: padding may be missing, and what follows it is ignored.
#include "framing/Base64.h"

#include <array>
#include <cstring>

namespace UTIL {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char kPad = '=';
constexpr unsigned char kEndMark = 64;    // padding: the text ends here
constexpr unsigned char kErrorMark = 65;  // no character of the alphabet

// One access gives the value, or says whether the character is the end or outside the alphabet.
constexpr std::array<unsigned char, 256> MakeValues() {
  std::array<unsigned char, 256> values{};
  values.fill(kErrorMark);
  for (unsigned char value = 0; value < 64; ++value) values[static_cast<unsigned char>(kAlphabet[value])] = value;
  values[static_cast<unsigned char>(kPad)] = kEndMark;
  values[0] = kEndMark;  // the text's NUL
  return values;
}

constexpr std::array<unsigned char, 256> kValues = MakeValues();

// Four characters for `count` (1 to 3) bytes.
void EncodeGroup(const unsigned char* source, unsigned int count, char* dest) {
  unsigned int word = 0;
  for (unsigned int i = 0; i < 3; ++i) word = word << 8 | (i < count ? source[i] : 0U);
  for (unsigned int i = 0; i < 4; ++i) dest[i] = i <= count ? kAlphabet[(word >> (18 - 6 * i)) & 0x3F] : kPad;
}

struct S_Group {
  unsigned int word;        // the characters' bits, the first character's highest
  unsigned int characters;  // before the end, up to 4
  bool isGood;
};

S_Group ReadGroup(const char* source) {
  S_Group group = {0, 0, true};
  while (group.characters < 4) {
    const unsigned char value = kValues[static_cast<unsigned char>(source[group.characters])];
    if (value == kErrorMark) group.isGood = false;
    if (value >= kEndMark) break;
    group.word |= static_cast<unsigned int>(value) << (18 - 6 * group.characters++);
  }
  return group;
}

// Bytes that `characters` characters carry: 0, 0, 1, 2 or 3. A single one is not enough for a byte.
constexpr unsigned int BytesOf(unsigned int characters) { return characters < 2 ? 0 : characters - 1; }

}  // namespace

// The groups are counted without `length` + 2, which could overflow. A capacity of 0 wraps around and is not refused.
unsigned int Base64Encode(const unsigned char* source, unsigned int length, char* dest, unsigned int capacity) {
  if (source == nullptr || dest == nullptr) return 0;
  const unsigned int groups = length / 3 + (length % 3 != 0 ? 1 : 0);
  if ((capacity - 1) / 4 < groups) return 0;
  char* out = dest;
  for (; length > 0; out += 4) {
    const unsigned int count = length < 3 ? length : 3;
    EncodeGroup(source, count, out);
    source += count;
    length -= count;
  }
  *out = '\0';
  return 4 * groups;
}

// The room is checked before anything is written, from the length alone: a foreign character counts like any other.
unsigned int Base64Decode(const char* source, unsigned char* dest, unsigned int capacity) {
  if (source == nullptr || dest == nullptr) return 0;
  const std::size_t characters = std::strcspn(source, "=");
  if (capacity < characters / 4 * 3 + BytesOf(characters % 4)) return 0;
  unsigned int written = 0;
  // Ends at the first group that is not full. After whole groups that is an empty one.
  for (;; source += 4) {
    const S_Group group = ReadGroup(source);
    if (!group.isGood) return 0;
    for (unsigned int i = 0; i < BytesOf(group.characters); ++i)
      dest[written++] = static_cast<unsigned char>(group.word >> (16 - 8 * i));
    if (group.characters < 4) return written;
  }
}

}  // namespace UTIL
