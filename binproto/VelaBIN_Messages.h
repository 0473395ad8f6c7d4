// The messages of the receiver's binary protocol "VelaBIN", as they are on the wire and in memory.
//
// A frame, all numbers little-endian (N is the data length, at most 2037):
//
//   offset  size
//   0       4     sync, "$BIN"
//   4       2     block id, the message number
//   6       2     data length N
//   8       N     data, the body of the message
//   8+N     2     checksum: sum of the N data bytes, each as an unsigned number, modulo 65536
//   10+N    2     carriage return, line feed; not part of the frame that a decoder takes
//
// The sum covers only the data. One damaged bit in the data or in the sum is always detected, one in the sync or in the
// length nearly always. Not detected is a message number that became another supported one. Two damaged bits may cancel
// each other. As zeros sum to zero, a header followed by nothing but zeros is a valid frame.
//
// Every message record is a header, a body and a trailer. The body has the same bytes in the record as on the wire.
//
// The layouts of 25, 35, 45, 95 (`S_BinMsg95`), 65, 93 and 209 are known, those of the other bodies are not: they are
// raw bytes. `VelaBin_Decode.h` lists how far each message is decoded.
#ifndef VELAGNSS_BINPROTO_VELABIN_MESSAGES_H
#define VELAGNSS_BINPROTO_VELABIN_MESSAGES_H

#include <cstdint>

#include "records/InterfaceRecords.h"

namespace VelaBIN_Messages {

// The supported message numbers; the value is the number. Any other number may be passed as a type.
enum eMessageTypes : unsigned int {
  eBin1 = 1,      // status or position; raw
  eBin2 = 2,      // status or position; raw
  eBin3 = 3,      // status or position; raw
  eBin5 = 5,      // status or position; raw
  eBin16 = 16,    // observations; raw
  eBin25 = 25,    // QZSS ephemeris, raw subframes; decoded
  eBin34 = 34,    // status; raw
  eBin35 = 35,    // BeiDou ephemeris, raw words; not decoded
  eBin36 = 36,    // observations; raw
  eBin44 = 44,    // status; raw
  eBin45 = 45,    // Galileo ephemeris, raw words; not decoded
  eBin65 = 65,    // GLONASS ephemeris, raw strings; decoded
  eBin66 = 66,    // observations; raw
  eBin76 = 76,    // observations; raw
  eBin93 = 93,    // SBAS ephemeris; decoded
  eBin94 = 94,    // status; raw
  eBin95 = 95,    // GPS ephemeris, raw subframes; decoded
  eBin122 = 122,  // status; raw
  eBin180 = 180,  // status; raw
  eBin209 = 209,  // status; fields of known size, meaning unknown
};

// The largest message number that a frame may carry, supported or not.
inline constexpr unsigned short kMaxMessageNumber = 209;

// Follows the sync in every frame, and starts every record.
struct S_MsgHeader {
  std::uint16_t BlockId;     // message number
  std::uint16_t DataLength;  // N, bytes
};

// Follows the data.
struct S_MsgTrailer {
  std::uint16_t Checksum;    // sum of the data bytes
  std::uint16_t Terminator;  // always 0x0A0D, carriage return and line feed; never read from a frame
};

// A message whose body is not decoded: its data bytes as received.
template <unsigned short Length>
struct S_UndecodedMsg {
  S_MsgHeader Header;         // its data length may exceed `Length` but is never less
  std::uint8_t Body[Length];  // the first `Length` data bytes
  S_MsgTrailer Trailer;       // read right after them
};

// The messages whose body is not decoded: status and observations of unknown layout.
struct S_BinMsg1 : S_UndecodedMsg<52> {};
struct S_BinMsg2 : S_UndecodedMsg<16> {};
struct S_BinMsg3 : S_UndecodedMsg<116> {};
struct S_BinMsg5 : S_UndecodedMsg<72> {};
struct S_BinMsg16 : S_UndecodedMsg<312> {};
struct S_RawBinMsg34 : S_UndecodedMsg<32> {};  // as received
struct S_IntBinMsg34 : S_UndecodedMsg<32> {};  // as handed out: the same bytes
struct S_BinMsg36 : S_UndecodedMsg<336> {};
struct S_BinMsg44 : S_UndecodedMsg<56> {};
struct S_BinMsg66 : S_UndecodedMsg<352> {};
struct S_BinMsg76 : S_UndecodedMsg<448> {};
struct S_BinMsg94 : S_UndecodedMsg<96> {};
struct S_BinMsg122 : S_UndecodedMsg<80> {};
struct S_BinMsg180 : S_UndecodedMsg<232> {};

// Ephemeris of one GPS (95) or QZSS (25) satellite: subframes 1 to 3 of the legacy navigation message (IS-GPS-200,
// 20.3.3), ten words each. A word is in the low 30 bits, with the first bit sent in bit 29; its parity is passed on
// unchecked. Messages 35 and 45 use the same record for words of other systems.
struct S_BinMsg95 {
  S_MsgHeader Header;           // 95 or 25; 35 or 45
  std::uint16_t Prn;            // satellite number: GPS 1 to 64, QZSS 183 to 211
  std::uint8_t Reserved[6];     // of the receiver
  std::uint32_t Subframe1[10];  // clock, accuracy, health
  std::uint32_t Subframe2[10];  // orbit, first half
  std::uint32_t Subframe3[10];  // orbit, second half
  S_MsgTrailer Trailer;         // checksum of the 128 data bytes
};

// One string of a GLONASS navigation frame (GLONASS ICD, 4.3), bits 1 to 85, bit 85 sent first:
//   Word[0]  bits 54 to 85, bit 54 in its bit 0
//   Word[1]  bits 22 to 53, bit 22 in its bit 0
//   Word[2]  bits 1 to 21, bit 1 in its bit 11
struct S_GLONavString {
  std::uint32_t Word[3];  // the low 11 bits of the last one are ignored
};

// Ephemeris of one GLONASS satellite: the immediate data, strings 1 to 5.
struct S_BinMsg65 {
  S_MsgHeader Header;         // 65
  std::uint8_t Slot;          // 1 to 24
  std::uint8_t Channel;       // frequency channel + 8: 1 to 14; 136 for unknown
  std::uint16_t Reserved1;    // of the receiver
  std::uint32_t Reserved2;    // of the receiver
  S_GLONavString Strings[5];  // strings 1 to 5
  S_MsgTrailer Trailer;       // checksum of the 68 data bytes
};

// Ephemeris of one SBAS satellite, in scaled integers.
struct S_BinMsg93 {
  S_MsgHeader Header;        // 93
  std::uint16_t Prn;         // satellite number, 120 to 158 of those that send (RTCA DO-229)
  std::uint16_t Week;        // modulo 1024 or full
  std::uint32_t TimeOfWeek;  // s, of the message
  std::uint16_t Value8;      // issue of data or time, as received
  std::uint16_t Value10;     // accuracy index, as received
  std::uint32_t T0;          // s of week, reference time
  std::int32_t X, Y;         // position, ECEF: 0.08 m
  std::int32_t Z;            // 0.4 m
  std::int32_t Vx, Vy;       // velocity: 0.000625 m/s
  std::int32_t Vz;           // 0.004 m/s
  std::int32_t Ax, Ay;       // acceleration: 0.0000125 m/s^2
  std::int32_t Az;           // 0.0000625 m/s^2
  std::int16_t AGf0;         // 2^-31 s, clock offset
  std::int16_t AGf1;         // 2^-40 s/s, clock drift
  S_MsgTrailer Trailer;      // checksum of the 56 data bytes
};

// Status. The sizes of its fields are known, but not their meaning, except that it starts with a time.
struct S_BinMsg209 {
  S_MsgHeader Header;     // 209
  double Time;            // as sent
  std::uint16_t Week;     // as sent
  std::uint8_t Spare[2];  // not used

  // Forty entries of eight bytes: numbers of this size, as sent.
  struct {
    std::uint16_t A;  // bytes 0 and 1 of the entry
    std::uint8_t B;   // byte 2
    std::uint8_t C;   // byte 3
    std::uint32_t D;  // bytes 4 to 7
  } Entry[40];

  S_MsgTrailer Trailer;  // checksum of the 332 data bytes
};

// One satellite of an observation record.
struct S_ObsSat {
  std::uint8_t System;      // `ALGO::eGNSSSystem`
  std::uint8_t SvId;        // satellite number
  std::int8_t FreqChannel;  // GLONASS frequency channel, else -128
  std::uint8_t NumObs;      // used entries of `Obs`, 0 to 10
  S_IFGnssObsData Obs[10];  // one per signal
};

// The record of the observation messages 16, 36, 66 and 76. Their bodies are not decoded: `NumSats` is 0 and every
// satellite is zero.
struct S_VelaBIN_Obs {
  S_MsgHeader Header;     // of the frame
  std::uint16_t NumSats;  // used entries of `Sat`
  S_ObsSat Sat[64];       // observations of one epoch
  S_MsgTrailer Trailer;   // of the frame
};

}  // namespace VelaBIN_Messages

#endif  // VELAGNSS_BINPROTO_VELABIN_MESSAGES_H
