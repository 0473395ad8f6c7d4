// CRC-24Q, the checksum of RTCM 3 frames (RTCM 10403) and of SBAS and CNAV messages (IS-GPS-200).
#ifndef VELAGNSS_FRAMING_CRC24_H
#define VELAGNSS_FRAMING_CRC24_H

#include "velagnss_export.h"

// Polynomial 0x1864CFB, high bit first, start 0, nothing reflected or inverted. An RTCM 3 frame is summed from its
// preamble to the end of its payload; the sum follows as three bytes, high byte first. A message followed by its own
// three checksum bytes sums to 0: a receiver need not separate the checksum.
//
//   const bool good = C_CRC24::ComputeCRC(frame, length) == 0;
class VELAGNSS_API C_CRC24 {
 public:
  // The sum of data[0, count), in the low 24 bits; 0 when `count` is 0 or `data` is null. `data` need not be aligned.
  // The check value of the nine characters "123456789" is 0xCDE703.
  static unsigned int ComputeCRC(const unsigned char* data, unsigned short count);

  // The 24-bit sum of each single byte, for hosts that need to sum in pieces:
  //   crc = ((crc << 8) ^ mu32CRC_Table[((crc >> 16) ^ byte) & 0xFF]) & 0xFFFFFF
  static const unsigned int mu32CRC_Table[256];
};

#endif  // VELAGNSS_FRAMING_CRC24_H
