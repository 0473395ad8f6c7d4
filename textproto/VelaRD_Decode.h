// The receiver's diagnostic sentence: checking and decoding it.
//
//   $RD1,345600.000,12,1575.420,x,3-17,44.5,-0.25,1.5,1F,A0,7,DEADBEEF
//
// "$RD", a version number, fields between commas, and CR or CR LF. There is no checksum. Only version 1 is known.
#ifndef VELAGNSS_TEXTPROTO_VELA_RD_DECODE_H
#define VELAGNSS_TEXTPROTO_VELA_RD_DECODE_H

#include "textproto/VelaRD_Messages.h"
#include "velagnss_export.h"

// One decoded sentence.
union U_VelaRD_EcdDcdData {
  S_IntSignalDiagMsg signalDiag;  // version 1
};

namespace VelaRD_Messages {
using ::U_VelaRD_EcdDcdData;
}

// Decodes diagnostic sentences and keeps the last one.
//
//   C_VelaRD_Decode decoder;
//   unsigned short version;
//   U_VelaRD_EcdDcdData data;
//   if (decoder.Decode(message.data, message.length, version, data) == 0) Show(data.signalDiag.timeOfWeek);
class VELAGNSS_API C_VelaRD_Decode {
 public:
  // As after `Reset`.
  C_VelaRD_Decode();

  // Clears the kept record and the last result.
  void Reset();

  // Checks one sentence of `length` bytes, its line end included. Nothing outside of frame[0, length) is read. Results,
  // in the order of the checks:
  //   1   null frame
  //   20  `length` is not 10 to 512
  //   3   not "$RD" and a decimal number; or no comma at index 4 for a number up to 8, at index 5 up to 98, at index 6
  //       from 99 on (a number of another width than that is not found); or not ended by CR or CR LF
  //   5   the number is above 1
  //   0   good: `version`, which no other result touches, is the number
  static unsigned int ValidateFrame(const unsigned char* frame, unsigned short length, unsigned short& version);

  // Checks a sentence as `ValidateFrame` does and decodes one of version 1. `data` is zero-filled first and stays so
  // unless the result is 0. Results: those of `ValidateFrame`, then 5 for version 0, then those of `Decode_RD1`.
  unsigned int Decode(unsigned char* frame, const unsigned short& length, unsigned short& version,
                      U_VelaRD_EcdDcdData& data);

  // Decodes the fields of a sentence of version 1 without checking its frame. Results:
  //   1   null frame
  //   3   shorter than 10 bytes
  //   9   longer than 512 bytes
  //   2   the first field is not "$RD1"
  //   11  a field up to position 12 is empty or does not begin with a number of its kind that its member can hold
  //   8   a number out of its range
  //   0   decoded; `record`, which no other result touches, is filled and kept
  // Numbers are read as the C library scans them in the C locale: white space and a sign may lead, what follows does
  // not matter, decimals may be "inf", "nan" or hexadecimal, a hexadecimal integer may lead with "0x". The number of
  // fields is not checked: the text ends where its fields do, at a NUL, and at a field of more than 64 characters.
  unsigned int Decode_RD1(unsigned char* frame, const unsigned short& length, S_IntSignalDiagMsg& record);

  // The result of the last call that decoded, 0 after a reset.
  unsigned int GetLastResult() const { return m_lastResult; }

  // What the last decoded sentence held; after a failure, what stood before it.
  const S_IntSignalDiagMsg& GetLastRecord() const { return m_record; }

 private:
  S_IntSignalDiagMsg m_record;
  unsigned int m_lastResult;
};

#endif  // VELAGNSS_TEXTPROTO_VELA_RD_DECODE_H
