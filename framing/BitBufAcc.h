// Bit fields of 1 to 32 bits at any bit of a byte buffer, as RTCM 3 (RTCM 10403) and similar packed messages lay them
// out: the most significant bit first, across byte boundaries without padding.
#ifndef VELAGNSS_FRAMING_BIT_BUF_ACC_H
#define VELAGNSS_FRAMING_BIT_BUF_ACC_H

#include "velagnss_export.h"

// Position p is bit 7 - p % 8 of byte p / 8: position 0 is the most significant bit of byte 0. Readers and writers
// that take the position by reference advance it past the field:
//
//   int position = 24;  // after the preamble and the length of an RTCM 3 frame
//   const unsigned int number = C_BitBufAcc::UnpackU32(frame, position, 12);
//
// The caller must check that a field lies inside its buffer; only the bytes that hold bits of the field are accessed.
// With a null buffer, a negative position, a number of bits outside the range of the operation, or a field that would
// end beyond position 2^31 - 1, nothing is done: readers return 0 and the position stays.
class VELAGNSS_API C_BitBufAcc {
 public:
  // The field of `bits` (1 to 32) bits at `position`, unsigned.
  static unsigned int UnpackU32(const unsigned char* buffer, int& position, int bits);

  // The field of `bits` (2 to 32) bits at `position`, two's complement. A one-bit field is refused.
  static int UnpackS32(const unsigned char* buffer, int& position, int bits);

  // Writes the low `bits` (1 to 32) bits of `value` at `position` by OR: the target bits must be zero already, ones
  // that are there stay.
  static void PackU32(unsigned char* buffer, int& position, int bits, unsigned int value);

  // Clears `bits` bits, any number of them, starting at `position`, which is not advanced.
  static void ClearBits(unsigned char* buffer, const int& position, int bits);

  // Copies `bits` bits, any number of them. The destination is cleared first, then written from the front: when
  // both runs overlap in one buffer, cleared bits are copied.
  static void CopyBits(const unsigned char* source, int sourcePosition, unsigned char* destination,
                       int destinationPosition, int bits);

  // Entry k has the k most significant bits of a word set. Entry 32 - n extends the sign of an n-bit number.
  static const unsigned int mu32HighMask[32];
};

#endif  // VELAGNSS_FRAMING_BIT_BUF_ACC_H
