// The sum is taken eight bytes at a time (framing/XorSum.h): it is the only pass over every character of a sentence
// besides splitting.
#include "textproto/SentenceChecksum.h"

#include "framing/XorSum.h"
#include "textproto/NumberText.h"

namespace velagnss::textproto {
namespace {

constexpr std::string_view kHexDigits = "0123456789ABCDEF";

unsigned char XorOf(std::string_view bytes) {
  return framing::XorOf(reinterpret_cast<const unsigned char*>(bytes.data()), static_cast<unsigned int>(bytes.size()));
}

}  // namespace

std::array<char, 3> ChecksumText(std::string_view text) {
  const unsigned char sum = XorOf(text.substr(1));
  return {'*', kHexDigits[sum >> 4], kHexDigits[sum & 15]};
}

std::size_t FindCheckedStar(std::string_view sentence) {
  // Up to the star there must be "$", talker and formatter: "$GPGGA*hh".
  constexpr std::size_t kMinLength = 8;
  constexpr std::size_t kMinStar = 6;
  constexpr std::size_t kDigits = 2;
  if (sentence.size() < kMinLength) return std::string_view::npos;
  const std::size_t star = sentence.rfind('*');
  if (star == std::string_view::npos || star < kMinStar || star + kDigits >= sentence.size())
    return std::string_view::npos;
  const unsigned int sum = XorOf(sentence.substr(1, star - 1));
  // Two upper-case digits are the rule, so they are compared without scanning.
  if (sentence[star + 1] == kHexDigits[sum >> 4] && sentence[star + 2] == kHexDigits[sum & 15]) return star;
  unsigned int expected = 0;  // digits in lower case, or a shorter number: "* 5" is 5
  const bool isNumber = NumberText::ScanHex32(sentence.substr(star + 1, kDigits), expected) != 0;
  return isNumber && expected == sum ? star : std::string_view::npos;
}

}  // namespace velagnss::textproto
