// The maker's proprietary sentences, "$PKVN,": checking them.
#ifndef VELAGNSS_TEXTPROTO_VELA_PKVN_DECODE_H
#define VELAGNSS_TEXTPROTO_VELA_PKVN_DECODE_H

#include "textproto/VelaPKVN_Messages.h"
#include "velagnss_export.h"

class VELAGNSS_API C_VelaPKVN_Decode {
 public:
  // Checks one sentence of `length` bytes, from its "$" to its checksum digits; up to two bytes of CR or LF may follow
  // them. Nothing outside of frame[0, length) is read. Results, in the order of the checks:
  //   1   null frame
  //   20  longer than 2047 bytes without its line end
  //   19  shorter than 18 bytes
  //   3   not "$PKVN,": `errorPosition` is the place of the first wrong byte, 1 for "$" to 6 for ","
  //   5   unknown message name: `type` is `ePkvnUnknown`
  //   4   the last two bytes are not upper case hexadecimal digits, or not the XOR of all that lies between "$" and "*"
  //   0   good
  // After the prefix `errorPosition` is the place of the message name's last byte. `type` is set from the name on. What
  // the checks did not reach keeps the caller's value.
  static unsigned int ValidateFrame(const unsigned char* frame, unsigned short length,
                                    VelaPKVN_Messages::eMessageTypes& type, unsigned short& errorPosition);

  // Reads `digits` (1 to 8) upper case hexadecimal characters, most significant first. False with `value` 0 for another
  // number of digits or a null text; false at any other character, with `value` holding the digits before it.
  static bool ExtractHexValue(const unsigned char* text, unsigned char digits, unsigned int& value);

  // The signal of a name as ATTSTAT and RTKSTAT write it: "L1", "E5a" or "E5A", "E5a+b", ... False for a null, empty or
  // unknown name, with `channel` then `ePkvnChanUnknown`.
  static bool MapPKvnAttSysStr2Type(const char* name, VelaPKVN_Messages::ePKvnAttStatSysChans& channel);
};

#endif  // VELAGNSS_TEXTPROTO_VELA_PKVN_DECODE_H
