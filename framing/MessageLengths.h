// How long the messages of each protocol may be, from the first start byte to the last byte of the frame. Internal.
//
// Below the least length a line end does not end a frame. Beyond the greatest one a frame is given up, so that a false
// start cannot hold back the frames after it for long.
#ifndef VELAGNSS_FRAMING_MESSAGE_LENGTHS_H
#define VELAGNSS_FRAMING_MESSAGE_LENGTHS_H

#include <array>
#include <iterator>

#include "binproto/MessageTable.h"
#include "framing/FrameParameters.h"
#include "framing/ProtocolTable.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/PkvnNames.h"

namespace velagnss::framing {

// The limits of a protocol, for messages that have none of their own.
constexpr S_FrameLengths LimitsOf(C_RawDataMessage::eProtocols protocol) {
  return {RowOf(protocol).frame.headerLength, RowOf(protocol).frame.maxLength};
}

// Replies of the receiver, in bytes up to their CR.
inline constexpr S_FrameLengths kInfoReply = {37, 120};  // "$>JI," and "$>JGEO,"
inline constexpr S_FrameLengths kQueryReply = {21, 120};
inline constexpr S_FrameLengths kSiteRecord = LimitsOf(C_RawDataMessage::eJSITERECORD);

// By sentence, in the order of `C_NMEA_EncodeDecode::mppz_NmeaMsgIDs`.
// clang-format off
inline constexpr S_FrameLengths kNmeaLengths[] = {
    {27, 128},  // ALM
    {21,  64},  // APB
    {19,  88},  // BWC
    {15, 120},  // DTM
    {14, 120},  // HDG
    {14, 120},  // HDM
    {14, 120},  // HDT
    {14, 120},  // HEV
    {22, 128},  // GGA
    {13,  60},  // GLL
    {20, 120},  // GNS
    {20, 250},  // GRS
    {24, 250},  // GSA
    {15,  70},  // GST
    {10, 100},  // GSV
    {18,  90},  // RMA
    {20, 100},  // RMB
    {18,  90},  // RMC
    { 9,  25},  // ROT
    {11, 200},  // RRE
    {15,  50},  // VTG
    {12,  32},  // XTE
    {13,  40},  // ZDA
};
// A sentence without limits would take those of another.
static_assert(std::size(kNmeaLengths) == std::size(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs));

// By version, the digit after "$RD". No frame is short enough for version 0: it is always rejected.
inline constexpr S_FrameLengths kRdLengths[] = {{0, 0}, {37, 80}};

// By message type.
inline constexpr S_FrameLengths kPkvnLengths[] = {
    LimitsOf(C_RawDataMessage::ePKVN),  // RAW
    {38, 179},                          // ATTSTAT
    {25, 100},                          // GBS
    {25,  70},                          // HPR
    {20, 100},                          // BLV
    {40, 255},                          // FVI
    {60, 190},                          // RTKSTAT
    {20,  90},                          // VCT
    {19,  33},                          // INTLT
    {19,  35},                          // TEMPERATURE
    {30, 255},                          // ARN_ROUTER
};
// The same for these.
static_assert(std::size(kPkvnLengths) == std::size(textproto::PkvnSentences::kNames));

// A block id and how long its frames are.
struct S_BlockRow {
  unsigned short block;
  S_FrameLengths lengths;  // 8 bytes of header, the data and 2 of checksum
};

// Nearly every block has one length: a single damaged bit of the length is then always seen.
constexpr S_BlockRow Fixed(unsigned short block, unsigned short length) { return {block, {length, length}}; }

// The blocks of the binary protocol that are delivered without being decoded; the decoder's own table has the others.
inline constexpr S_BlockRow kUndecodedBlocks[] = {
    Fixed(6, 22),   Fixed(19, 386), Fixed(39, 422), Fixed(49, 310),  Fixed(59, 266),  Fixed(61, 330),  Fixed(62, 50),
    Fixed(69, 310), Fixed(71, 458), Fixed(80, 50),  Fixed(89, 90),   Fixed(96, 310),  Fixed(97, 38),   Fixed(98, 78),
    Fixed(99, 314), Fixed(100, 270), Fixed(101, 458), Fixed(102, 354), Fixed(104, 290),
    S_BlockRow{103, {74, 103}},  // the one whose length varies
};
// clang-format on

// All blocks by their id, for one access per frame; greatest length 0: an unknown block.
inline constexpr auto kBlockLengths = [] {
  std::array<S_FrameLengths, VelaBIN_Messages::kMaxMessageNumber + 1> lengths = {};
  for (const S_BlockRow& row : kUndecodedBlocks) lengths[row.block] = row.lengths;
  for (const binproto::S_MessageRow& row : binproto::kMessages)
    lengths[row.number] = {row.frameLength, row.frameLength};
  return lengths;
}();

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_MESSAGE_LENGTHS_H
