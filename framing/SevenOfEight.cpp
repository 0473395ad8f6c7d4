// A stream of 16-bit words, low bits first, seven bits to a byte. The eighth bit is set, so that no packed byte looks
// like text or a line end. The last word is the sum of the others.
#include "framing/SevenOfEight.h"

namespace velagnss::framing {

bool UnwindByte(unsigned short* out, unsigned char in, unsigned int& accumulator, unsigned char& bitCount) {
  if (out == nullptr) {
    accumulator = 0;
    bitCount = 0;
    return false;
  }
  // A caller may pass any count; shifting by the width of the word or more would be undefined.
  if (bitCount < 32) accumulator |= (in & 0x7FU) << bitCount;
  bitCount = static_cast<unsigned char>(bitCount + 7);
  if (bitCount <= 15) return false;
  *out = static_cast<unsigned short>(accumulator);
  bitCount = static_cast<unsigned char>(bitCount - 16);
  accumulator >>= 16;
  return true;
}

// The checksum is known for what it is only when the message ends, so each word is added one step late.
unsigned int UnwindMessage(void* out, const unsigned char* in, unsigned short maxWords) {
  if (out == nullptr || in == nullptr) return 0;
  unsigned char* bytes = static_cast<unsigned char*>(out);
  unsigned int accumulator = 0;
  unsigned char bitCount = 0;
  unsigned short word = 0;
  unsigned int sum = 0;  // of all words but the latest, which may turn out to be the checksum
  unsigned int words = 0;
  for (; words < maxWords && (*in & kPackedBit) != 0; ++in) {
    const unsigned short previous = word;
    if (!UnwindByte(&word, *in, accumulator, bitCount)) continue;
    if (words > 0) sum += previous;
    *bytes++ = static_cast<unsigned char>(word);
    *bytes++ = static_cast<unsigned char>(word >> 8);
    ++words;
  }
  if (words == 0 || (sum & 0xFFFF) != word) return 0;
  return 2 * words - 2;
}

}  // namespace velagnss::framing
