#include "framing/UnlistedSentence.h"

#include <algorithm>
#include <array>

#include "framing/ByteScan.h"
#include "framing/XorSum.h"

namespace velagnss::framing {

namespace {

constexpr unsigned int kSumAndEnd = 4;  // "*hh" and the first byte of the line end

// By byte: capital letters and digits.
constexpr auto kIsOfAddress = [] {
  std::array<bool, 256> isOfAddress = {};
  for (unsigned int byte = '0'; byte <= 'Z'; ++byte) isOfAddress[byte] = byte <= '9' || byte >= 'A';
  return isOfAddress;
}();

// Only for digits of the checksum: a byte that is not a letter may turn into another one that is not a digit.
constexpr unsigned char ToUpper(unsigned char byte) {
  return byte >= 'a' && byte <= 'f' ? static_cast<unsigned char>(byte - 'a' + 'A') : byte;
}

// Position of the first byte in [1, end) that an address does not have.
unsigned int AddressEnd(const unsigned char* bytes, unsigned int end) {
  unsigned int at = 1;
  while (at < end && kIsOfAddress[bytes[at]]) ++at;
  return at;
}

}  // namespace

bool BeginsSentence(const unsigned char* bytes, unsigned int held) {
  if (bytes[0] != '$' && bytes[0] != kEncapsulatedStart) return false;
  const unsigned int end = std::min(held, kShortestSentence);
  const unsigned int at = AddressEnd(bytes, end);
  return at == end || (at > 1 && bytes[at] == ',');
}

eSentence JudgeSentence(const unsigned char* bytes, unsigned int length) {
  if (length < kShortestSentence || !BeginsSentence(bytes, length)) return eSentence::NoSentence;
  const unsigned int star = length - kSumAndEnd;
  if (bytes[star] != '*' || bytes[AddressEnd(bytes, star)] != ',') return eSentence::NoSentence;
  if (Find<eMark::Control>(bytes, 0, length) != length - 1) return eSentence::NoSentence;
  const unsigned char digits[] = {ToUpper(bytes[star + 1]), ToUpper(bytes[star + 2])};
  unsigned int sum = 0;
  if (!ReadHex(digits, 2, sum)) return eSentence::NoSentence;
  return XorOf(bytes + 1, star - 1) == sum ? eSentence::Checked : eSentence::BadSum;
}

}  // namespace velagnss::framing
