// One frame as the recognizer hands it over: which protocol, which message of it, and its bytes.
#ifndef VELAGNSS_FRAMING_RAW_DATA_MESSAGE_H
#define VELAGNSS_FRAMING_RAW_DATA_MESSAGE_H

#include "velagnss_export.h"

// The host owns the message and the buffer behind `data`; the message allocates and frees nothing. A buffer of
// `C_FrameRecognizer::GetMaxFrameLength()` bytes holds every frame; of a longer frame the first `capacity` bytes are
// kept.
//
//   unsigned char buffer[2048];
//   C_RawDataMessage message(buffer, sizeof buffer);
class VELAGNSS_API C_RawDataMessage {
 public:
  // The protocols of a receiver's stream. The value is also the index into flags and limits by protocol.
  enum eProtocols : unsigned int {
    eJROX = 0,           // packed binary reply in a text envelope, "$JROX,"
    eRTCM3_x = 1,        // RTCM 10403 frame
    eNMEA0183 = 2,       // NMEA 0183 sentence
    eVelaBIN = 3,        // the receiver's binary protocol, "$BIN"
    ePKVN = 4,           // proprietary sentence, "$PKVN,"
    eVelaRD = 5,         // diagnostic sentence, "$RD1,"
    eJSITERECORD = 6,    // site record, "$>JSITERECORD"
    eVelaCmdAck = 7,     // command acknowledgement, "$>"
    eVelaJI = 8,         // receiver information reply, "$>JI,"
    eVelaJQUERY = 9,     // query reply, "$>JQUERY,"
    eVelaGEO = 10,       // geo reply, "$>JGEO,"
    eAllProtocols = 11,  // ends a list of protocols; all protocols, where one is asked for
    eNoProtocol = 12,    // of a message that holds no frame
  };

  // The sentence formatters of NMEA 0183 that are known, in the order of `C_NMEA_EncodeDecode::mppz_NmeaMsgIDs`.
  enum eNMEA0183Messages : unsigned int {
    eNmeaALM = 0,
    eNmeaAPB,
    eNmeaBWC,
    eNmeaDTM,
    eNmeaHDG,
    eNmeaHDM,
    eNmeaHDT,
    eNmeaHEV,
    eNmeaGGA,
    eNmeaGLL,
    eNmeaGNS,
    eNmeaGRS,
    eNmeaGSA,
    eNmeaGST,
    eNmeaGSV,
    eNmeaRMA,
    eNmeaRMB,
    eNmeaRMC,
    eNmeaROT,
    eNmeaRRE,
    eNmeaVTG,
    eNmeaXTE,
    eNmeaZDA,
    eNmeaUnknown = 24,
  };

  // A message without a buffer: capacity 0, fields as after `Reset`.
  C_RawDataMessage();

  // A message over the caller's buffer, which must outlive it. The buffer is zero-filled.
  C_RawDataMessage(unsigned char* data, unsigned int capacity);

  // No frame: protocol `eNoProtocol`, type and subtype all ones, length 0, the buffer zero-filled over its capacity.
  void Reset();

  unsigned int capacity;     // bytes that fit behind `data`
  eProtocols protocol;       // of the frame held; `eNoProtocol` for none
  unsigned int messageType;  // RTCM 3: message number; NMEA: `eNMEA0183Messages`; VelaBIN: block id; PKVN: row of the
                             // sentence name; RD: digit behind "$RD"; J replies: 0; all others: all ones
  unsigned int messageSubtype;  // second qualifier, all ones; carried along
  unsigned char* data;          // the frame, from its first start byte to its last; not owned
  unsigned short length;        // bytes held
};

#endif  // VELAGNSS_FRAMING_RAW_DATA_MESSAGE_H
