// 7-of-8 packing: binary data inside a text envelope ("$JROX," replies and "$PKVN,RAW" sentences). Internal.
//
// Each packed byte has its top bit set, so that none can be taken for a line end, and carries seven bits of data. The
// seven-bit groups form one little-endian bit stream: the first byte holds bits 0 to 6, the second bits 7 to 13, and so
// on. The stream is read as 16-bit words, low byte first; the last word is the 16-bit sum of the others. Bits that do
// not fill a word are padding.
#ifndef VELAGNSS_FRAMING_SEVEN_OF_EIGHT_H
#define VELAGNSS_FRAMING_SEVEN_OF_EIGHT_H

namespace velagnss::framing {

inline constexpr unsigned char kPackedBit = 0x80;  // set in every packed byte

// The contracts of `C_FrameRecognizer::Unwind7of8_Byte` and `UnwindVela7of8Message`.
bool UnwindByte(unsigned short* out, unsigned char in, unsigned int& accumulator, unsigned char& bitCount);
unsigned int UnwindMessage(void* out, const unsigned char* in, unsigned short maxWords);

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_SEVEN_OF_EIGHT_H
