// Checks the checksum of an RTCM 3 frame and reads the first fields of its message.
#include <cstdio>

#include "framing/BitBufAcc.h"
#include "framing/CRC24.h"

// The standard's example of message 1005 (RTCM 10403): the position of a reference station's antenna.
static const unsigned char kFrame[] = {0xD3, 0x00, 0x13, 0x3E, 0xD7, 0xD3, 0x02, 0x02, 0x98, 0x0E, 0xDE, 0xEF, 0x34,
                                       0xB4, 0xBD, 0x62, 0xAC, 0x09, 0x41, 0x98, 0x6F, 0x33, 0x36, 0x0B, 0x98};

int main() {
  // The CRC over a frame including its correct checksum is zero.
  if (C_CRC24::ComputeCRC(kFrame, sizeof kFrame) != 0) {
    std::puts("checksum wrong");
    return 1;
  }

  int position = 24;  // after the preamble and the length
  const unsigned int number = C_BitBufAcc::UnpackU32(kFrame, position, 12);
  const unsigned int station = C_BitBufAcc::UnpackU32(kFrame, position, 12);
  position += 10;  // reference year and flags

  // Fields of more than 32 bits are read in two parts; the sign is in the first.
  const long long high = C_BitBufAcc::UnpackS32(kFrame, position, 6);
  const unsigned int low = C_BitBufAcc::UnpackU32(kFrame, position, 32);
  const double x = static_cast<double>(high * 0x100000000LL + low) * 0.0001;  // m

  std::printf("message %u of station %u: X = %.4f m\n", number, station, x);
  return 0;
}
