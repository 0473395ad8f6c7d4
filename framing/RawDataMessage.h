// One frame as the recognizer hands it over: which protocol, which message of it, and its bytes.
#ifndef VELAGNSS_FRAMING_RAW_DATA_MESSAGE_H
#define VELAGNSS_FRAMING_RAW_DATA_MESSAGE_H

#include "velagnss_export.h"

// The host owns the message and the buffer at `data`; the message allocates and frees nothing. A buffer of
// `C_FrameRecognizer::GetMaxFrameLength()` bytes holds every frame; of a longer frame the first `capacity` bytes are
// kept.
//
//   unsigned char buffer[2048];
//   C_RawDataMessage message(buffer, sizeof buffer);
class VELAGNSS_API C_RawDataMessage {
 public:
  // The protocols of a receiver's stream; docs/wire-formats.md has their bytes. The value is also the index into flags
  // and limits by protocol.
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
    eAllProtocols = 11,  // ends a list of protocols; as an argument: all protocols
    eNoProtocol = 12,    // in a message that holds no frame
  };

  // The sentence formatters of NMEA 0183 that are known, in the order of `C_NMEA_EncodeDecode::mppz_NmeaMsgIDs`. Frames
  // of all of them are found; GGA, GLL, GNS, GSA, GSV, RMC, VTG and ZDA are decoded.
  enum eNMEA0183Messages : unsigned int {
    eNmeaALM = 0,       // almanac of a GPS satellite
    eNmeaAPB,           // autopilot
    eNmeaBWC,           // bearing and distance to a waypoint
    eNmeaDTM,           // datum
    eNmeaHDG,           // magnetic heading, deviation and variation
    eNmeaHDM,           // magnetic heading
    eNmeaHDT,           // true heading
    eNmeaHEV,           // heave
    eNmeaGGA,           // position and fix
    eNmeaGLL,           // position
    eNmeaGNS,           // position of several systems
    eNmeaGRS,           // range residuals
    eNmeaGSA,           // satellites in use, dilutions of precision
    eNmeaGST,           // statistics of the position's error
    eNmeaGSV,           // satellites in view
    eNmeaRMA,           // recommended minimum, LORAN-C
    eNmeaRMB,           // recommended minimum, way to a waypoint
    eNmeaRMC,           // recommended minimum, position and date
    eNmeaROT,           // rate of turn
    eNmeaRRE,           // range residuals and errors
    eNmeaVTG,           // course and speed over ground
    eNmeaXTE,           // cross-track error
    eNmeaZDA,           // date and time
    eNmeaUnknown = 24,  // any other; 23 is not used
  };

  // A message without a buffer: capacity 0, fields as after `Reset`.
  C_RawDataMessage();

  // A message over the caller's buffer, which must outlive it. The buffer is zero-filled.
  C_RawDataMessage(unsigned char* data, unsigned int capacity);

  // No frame: protocol `eNoProtocol`, type and subtype all ones, length 0, the buffer zero-filled over its capacity.
  void Reset();

  unsigned int capacity;     // bytes of the buffer at `data`
  eProtocols protocol;       // of the frame held; `eNoProtocol` when empty
  unsigned int messageType;  // RTCM 3: message number; NMEA: `eNMEA0183Messages`; VelaBIN: block id; PKVN: row of the
                             // sentence name; RD: digit after "$RD"; J replies: 0; all others: all ones
  unsigned int messageSubtype;  // second qualifier; all ones: no protocol has one yet
  unsigned char* data;          // the frame, from its first start byte to its last; not owned
  unsigned short length;        // bytes held
};

#endif  // VELAGNSS_FRAMING_RAW_DATA_MESSAGE_H
