// Checks frames of the receiver's binary protocol "VelaBIN" and decodes them.
#ifndef VELAGNSS_BINPROTO_VELABIN_DECODE_H
#define VELAGNSS_BINPROTO_VELABIN_DECODE_H

#include "binproto/VelaBIN_Messages.h"
#include "velagnss_export.h"

class VELAGNSS_API C_VelaBin_Decode {
 public:
  // Checks one frame: sync, message number, length, checksum. `frame` may be longer than the frame that it begins with.
  //
  // Written as far as the checks get: `position` (1 to 4 after the sync byte that is tried, 8 once the header is read),
  // `msgNumber`, and `frameLength` (data length + 10, in 16 bits). Results, in the order of the checks:
  //   eResultNull            `frame` is null
  //   eResultTooShort        `length` of 9 or less
  //   eResultBadSync         not "$BIN"
  //   eResultUnknownMessage  message number above 209
  //   eResultBadSync         a data length so great that the frame length wraps below 10
  //   eResultTooShort        fewer bytes than the frame has
  //   eResultTooLong         a frame of more than 2047 bytes
  //   eResultChecksum        checksum mismatch
  //   eResultOk
  static unsigned int ValidateFrame(const unsigned char* frame, unsigned short length, unsigned short& msgNumber,
                                    unsigned short& frameLength, unsigned short& position);

  // Readers of little-endian fields. `position` is an offset from the start of the frame and moves behind what is read;
  // any alignment will do. The value is 0 after a failure:
  //   eResultNull     `frame` is null
  //   eResultBadSync  `length` below 10: no frame is that short
  //   eResultPastEnd  the value would end at or behind `length`
  static unsigned int Decode_Bin_U16(const unsigned char* frame, const unsigned short& length, unsigned short& position,
                                     unsigned short& value);
  static unsigned int Decode_Bin_U32(const unsigned char* frame, const unsigned short& length, unsigned short& position,
                                     unsigned int& value);

  // Block id and data length at `position`, 4 bytes. Results as of the readers. With eResultNull and eResultBadSync
  // `header` is left cleared (block id 0xFFFF, data length 0); with eResultPastEnd what could not be read is 0.
  static unsigned int Decode_Bin_Header(const unsigned char* frame, const unsigned short& length,
                                        unsigned short& position, VelaBIN_Messages::S_MsgHeader& header);

  // The checksum at `position`, 2 bytes. `position` then steps over the terminator, which is not part of the frame: it
  // is neither read nor checked, and `trailer` always holds it as 0x0A0D. Results as of the readers.
  static unsigned int Decode_Bin_Trailer(const unsigned char* frame, const unsigned short& length,
                                         unsigned short& position, VelaBIN_Messages::S_MsgTrailer& trailer);
};

#endif  // VELAGNSS_BINPROTO_VELABIN_DECODE_H
