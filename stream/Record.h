// What a frame can hold once it is decoded.
#ifndef VELAGNSS_STREAM_RECORD_H
#define VELAGNSS_STREAM_RECORD_H

#include <cstddef>
#include <optional>
#include <string_view>
#include <variant>

#include "binproto/VelaBIN_Messages.h"
#include "records/InterfaceRecords.h"
#include "rtcm3/Rtcm3Records.h"
#include "textproto/NMEA_Records.h"
#include "textproto/NmeaMoreRecords.h"
#include "textproto/VelaPKVN_Messages.h"
#include "textproto/VelaRD_Messages.h"

namespace velagnss {

// The text of a sentence that is not decoded, without its line end. It is part of the frame that was decoded.
struct RawText {
  std::string_view text;  // from its first start byte to its checksum
};

// The body of a binary message that is not decoded: the bytes between its header and its checksum. They are part of the
// frame that was decoded.
struct RawBody {
  const unsigned char* data = nullptr;  // its first byte
  std::size_t size = 0;                 // bytes
};

// What a 7-of-8 packed reply or sentence ("$JROX,", "$PKVN,RAW,") carries.
struct PackedPayload {
  std::string_view text;      // before the packed bytes; part of the frame that was decoded
  unsigned char bytes[2048];  // the first `length` of them are set
  unsigned short length = 0;  // 0 when the packed bytes do not add up to their sum
};

// The record of one frame. An NMEA sentence that has no record of its own is an OtherSentence. Values that the frame
// does not carry hold their markers (geo/NotAvailable.h).
//
// An RTCM 3 message that is not decoded is an Rtcm3Payload. `std::monostate` means that there is no record: the frame
// has no bytes, or its RTCM 3 envelope is not valid. The RMC record differs from what `C_NMEA_EncodeDecode::Decode`
// gives in one member: `variationDirection` is the letter that was sent, 'E' or 'W', and 0 where none was.
using Record =
    std::variant<std::monostate, RawText, RawBody, PackedPayload,                                                 //
                 S_GGA_Data, S_GNS_Data, S_ZDA_Data, S_GLL_Data, S_GSV_Data, S_GSA_Data, S_RMC_Data, S_VTG_Data,  //
                 S_IFKeplerEphRec, S_IFPvaEphRec, VelaBIN_Messages::S_BinMsg209,                                  //
                 VelaPKVN_Messages::S_PKvnAttStat, VelaPKVN_Messages::S_PKvnGbs, VelaPKVN_Messages::S_PKvnHpr,
                 VelaPKVN_Messages::S_PKvnBlv, VelaPKVN_Messages::S_PKvnFvi, VelaPKVN_Messages::S_PKvnRtkStat,
                 VelaPKVN_Messages::S_PKvnVct, VelaPKVN_Messages::S_PKvnINTLT, VelaPKVN_Messages::S_PKvnTEMPERATURE,
                 VelaPKVN_Messages::S_PKvnARN, VelaRD_Messages::S_IntSignalDiagMsg, OtherSentence, GstRecord, GbsRecord,
                 GrsRecord, HdtRecord, ThsRecord, HdgRecord, RotRecord, DtmRecord, TxtRecord, VhwRecord, DbtRecord,
                 DptRecord, MtwRecord, MwvRecord, VlwRecord, RmbRecord, XteRecord, ApbRecord, BwcRecord, WplRecord,
                 Rtcm3Payload, Rtcm3Station, Rtcm3Antenna, Rtcm3SystemParameters, Rtcm3Message, Rtcm3GlonassBiases,
                 Rtcm3Residuals, Rtcm3Observations, Rtcm3KeplerEphemeris, Rtcm3PvaEphemeris, Rtcm3Ssr>;

// How far a frame has been decoded.
enum class Depth : unsigned char {
  None,     // not at all: there is no record
  Raw,      // its text, or the bytes of its body or payload, as received
  Partial,  // some fields; the rest as text, or numbers whose meaning is not known
  Full,     // every field
};

// Where the week numbers of an ephemeris come from. A message carries them modulo 1024 or not at all.
enum class WeekSource : unsigned char {
  None,    // not resolved: weeks mean nothing
  Seed,    // from the time given by `RecordDecoder::SeedTime` or `RecordDecoder::AssumeFirstDay`
  Stream,  // from a date in the stream, or from the message itself
};

}  // namespace velagnss

#endif  // VELAGNSS_STREAM_RECORD_H
