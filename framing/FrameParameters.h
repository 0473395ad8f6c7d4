// From the first bytes of a frame to its message type and its length limits: one step per protocol. Internal.
#ifndef VELAGNSS_FRAMING_FRAME_PARAMETERS_H
#define VELAGNSS_FRAMING_FRAME_PARAMETERS_H

#include "framing/FrameRecognizer.h"

namespace velagnss::framing {

// Defined in framing/ProtocolTable.h, which includes this header for the steps of its rows.
struct S_ProtocolRow;

// Length limits of a frame in bytes, both inclusive, from its first start byte to its last byte.
struct S_FrameLengths {
  unsigned short least;     // an end mark that comes earlier is not the end
  unsigned short greatest;  // a frame that has not ended by then is rejected
};

// The messages that a recognizer expects, as its `SetExpected...Msgs` have filled them in.
struct S_ExpectedMessages {
  const S_FrameLengths* nmea = nullptr;        // by sentence
  const S_FrameLengths* blocks = nullptr;      // by block id; a greatest length of 0 marks the unknown ones
  const S_FrameLengths* rdVersions = nullptr;  // by version
  S_FrameLengths replies[C_RawDataMessage::eAllProtocols] = {};  // by protocol: kinds that have one pair of limits
};

// What is known of the frame in progress. It goes in with the limits of its protocol and the type that it has so far.
struct S_Expectation {
  unsigned int type;
  S_FrameLengths lengths;
};

// Reads `bytes`, of which the row's `neededLength` are there. False, with `frame` unchanged, for a message that is not
// expected.
using t_ReadParameters = bool (*)(const S_ProtocolRow& row, const unsigned char* bytes,
                                  const S_ExpectedMessages& expected, S_Expectation& frame);

// The step of RTCM 3. Preamble, 6 reserved bits and 10 of payload length, then the payload, whose first 12 bits are the
// message number (RTCM 10403). A frame without payload has bytes of its checksum in that place: as a number they are
// refused like any other that is not listed.
inline bool ReadRtcm(const unsigned char* bytes, S_Expectation& frame) {
  const unsigned int number = bytes[3] << 4 | bytes[4] >> 4;
  if (!C_FrameRecognizer::IsASupportedRtcm3Type(number)) return false;
  const auto length = static_cast<unsigned short>(((bytes[1] & 0x03) << 8 | bytes[2]) + 6);  // 3 header, 3 checksum
  frame = {number, {length, length}};
  return true;
}

// D3 00 13 3E D0: 19 bytes of payload, message 1005. The number is 12 bits (RTCM 10403).
bool ReadRtcmParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);
// "$GPGGA,": the formatter is the type, whatever the talker.
bool ReadNmeaParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);
// "$BIN", block id and data length, two bytes each and low byte first. The length must be one that the block can have.
bool ReadBlockParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);
// "$PKVN,HPR,": the name up to its comma is the type.
bool ReadPkvnParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);
// "$RD1,": the digit is the version and the type.
bool ReadRdParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);
// "$>JI,", "$>JQUERY," and "$>JGEO,": one type each, so only the limits are set.
bool ReadReplyParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);
// "$>JSITERECORD": likewise, and the type stays unset.
bool ReadSiteRecordParameters(const S_ProtocolRow&, const unsigned char*, const S_ExpectedMessages&, S_Expectation&);

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_FRAME_PARAMETERS_H
