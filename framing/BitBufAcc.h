// Bit fields of 1 to 32 bits at any bit of a byte buffer, as RTCM 3 (RTCM 10403) and similar packed messages lay them
// out: the most significant bit first, across byte boundaries without padding.
#ifndef VELAGNSS_FRAMING_BIT_BUF_ACC_H
#define VELAGNSS_FRAMING_BIT_BUF_ACC_H

#include "velagnss_export.h"

// Position p is bit 7 - p % 8 of byte p / 8: position 0 is the most significant bit of byte 0. Readers and writers
// that take the position by reference advance it, so that a message is walked field by field:
//
//   int position = 24;  // behind an RTCM 3 frame's preamble and length
//   const unsigned int number = C_BitBufAcc::UnpackU32(frame, position, 12);
//
// The buffers are the caller's, and so is the check that a field lies inside them: only the bytes that hold bits of the
// field are touched. With a null buffer, a negative position, a number of bits that an operation does not take, or a
// field that would end beyond position 2^31 - 1, nothing is done: readers give 0 and the position stays.
class VELAGNSS_API C_BitBufAcc {
 public:
  // The field of `bits` (1 to 32) bits at `position`, unsigned.
  static unsigned int UnpackU32(const unsigned char* buffer, int& position, int bits);

  // The field of `bits` (2 to 32) bits at `position`, two's complement. A field of one bit is refused.
  static int UnpackS32(const unsigned char* buffer, int& position, int bits);

  // Writes the low `bits` (1 to 32) bits of `value` at `position` by OR: the target bits must be zero already, ones
  // that are there stay.
  static void PackU32(unsigned char* buffer, int& position, int bits, unsigned int value);

  // Sets `bits` bits from `position` on to zero, any number of them; the position is not advanced.
  static void ClearBits(unsigned char* buffer, const int& position, int bits);

  // Copies `bits` bits, any number of them. The destination is cleared first, then written in pieces of at most 32
  // bits from the front: where both runs overlap in one buffer, cleared bits are copied.
  static void CopyBits(const unsigned char* source, int sourcePosition, unsigned char* destination,
                       int destinationPosition, int bits);

  // Entry k has the k most significant bits of a word set. Entry 32 - n is what keeps or extends the low n bits.
  static const unsigned int mu32HighMask[32];
};

#endif  // VELAGNSS_FRAMING_BIT_BUF_ACC_H
