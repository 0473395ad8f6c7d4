#include "rtcm3/Reading.h"

#include "framing/CRC24.h"

namespace velagnss::rtcm3 {

unsigned int CheckFrame(const unsigned char* frame, std::size_t length) {
  constexpr unsigned char kPreamble = 0xD3;
  if (frame == nullptr) return eResultNull;
  if (length < kHeader + kChecksum) return eResultTooShort;
  if (frame[0] != kPreamble || (frame[1] & 0xFC) != 0) return eResultBadSync;
  const std::size_t expected = kHeader + (frame[1] << 8 | frame[2]) + kChecksum;
  if (length < expected) return eResultTooShort;
  if (length > expected) return eResultTooLong;
  return C_CRC24::ComputeCRC(frame, static_cast<unsigned short>(length)) == 0 ? eResultOk : eResultChecksum;
}

}  // namespace velagnss::rtcm3
