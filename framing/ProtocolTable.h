// The protocols of a stream, one row each: the start pattern, the bytes that type and length are read from, the length
// limits and the shape of the body. Internal; the one home of these facts.
#ifndef VELAGNSS_FRAMING_PROTOCOL_TABLE_H
#define VELAGNSS_FRAMING_PROTOCOL_TABLE_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "framing/FrameParameters.h"
#include "framing/FrameRecognizer.h"

namespace velagnss::framing {

// How a body ends and is checked; BodyScanner.cpp has a rule for each shape.
enum class eBody : unsigned char {
  Rtcm,        // length known from the header, CRC-24Q
  VelaBin,     // length known from the header, 16-bit sum
  Text,        // up to CR or LF, "*hh" before it
  Pkvn,        // likewise, delivered without the line end
  SiteRecord,  // up to CR or LF, no checksum
  Ack,         // up to CR or LF, whatever comes before
  Jrox,        // 7-of-8 packed up to CR LF
  PkvnRaw,     // likewise, after two text fields; "$PKVN,RAW" only, so no row has it
  Unlisted,    // up to CR or LF, "*hh" before it: a sentence that is not listed, so no row has it
};

// What the search, the parameter step and the body scan know of a protocol.
struct S_ProtocolRow {
  S_FrameDescriptor frame;
  unsigned short neededLength;      // bytes from which kind and length of a frame are read
  unsigned short bufferLength;      // bytes to reserve for one frame; a limit of its kind may exceed it (VelaGEO)
  t_ReadParameters readParameters;  // reads kind and length limits; null: every match passes
  eBody body;
};

// A row's descriptor from its start pattern, in which "." is any byte and "~" a byte below 4: RTCM 10403 reserves the
// six high bits of the byte after the preamble, zero; the low two are the top of the payload length.
constexpr S_FrameDescriptor Frame(std::string_view name, C_RawDataMessage::eProtocols protocol, std::string_view start,
                                  unsigned short headerLength, unsigned short maxLength) {
  S_FrameDescriptor row = {};
  std::copy(name.begin(), name.end(), row.name);
  for (std::size_t i = 0; i < start.size(); ++i) {
    row.startMask[i] = start[i] == '.' ? 0x00 : start[i] == '~' ? 0xFC : 0xFF;
    row.startPattern[i] = row.startMask[i] == 0xFF ? static_cast<unsigned char>(start[i]) : 0;
  }
  row.protocol = protocol;
  row.startLength = static_cast<unsigned short>(start.size());
  row.headerLength = headerLength;
  row.maxLength = maxLength;
  return row;
}

inline constexpr unsigned int kNumProtocols = C_RawDataMessage::eAllProtocols;

// In search order: the first match wins. "$>" comes before "$>JGEO,", so that an acknowledgement, where it is enabled,
// hides that reply.
// clang-format off
inline constexpr S_ProtocolRow kProtocols[kNumProtocols] = {
    //     name           protocol                         start                header  max   needed  buffer
    // "$JROX," and bytes with their top bit set, up to CR LF
    {Frame("ROX",         C_RawDataMessage::eJROX,         "$JROX,",               10,  440),      6,   1024,
        nullptr,                                                                             eBody::Jrox},
    // D3, 6 reserved bits and 10 of length, payload, 3 bytes of CRC (RTCM 10403)
    {Frame("RTCM 3.x",    C_RawDataMessage::eRTCM3_x,      "\xD3~...",              6, 1029),      5,   1029,
        &ReadRtcmParameters,                                                                 eBody::Rtcm},
    // "$GPHDT,274.07,T*03" CR LF; the five characters of the address may be any (NMEA 0183)
    {Frame("NMEA0183",    C_RawDataMessage::eNMEA0183,     "$.....,",               8,  512),      7,   1024,
        &ReadNmeaParameters,                                                                 eBody::Text},
    // "$BIN", block id, data length, data, sum
    {Frame("VelaBIN",     C_RawDataMessage::eVelaBIN,      "$BIN......",           10, 2048),     10,   2048,
        &ReadBlockParameters,                                                                eBody::VelaBin},
    // "$PKVN,HPR,120000.00,271.50,-1.25,0.75,G*15" CR LF
    {Frame("VelaPKVN",    C_RawDataMessage::ePKVN,         "$PKVN,............",   18, 2048),     18,   2048,
        &ReadPkvnParameters,                                                                 eBody::Pkvn},
    // "$RD1,345600.000,12,1575.420,x,3-17,44.5,-0.25,1.5,1F,A0,7,DEADBEEF" CR LF
    {Frame("VelaRD",      C_RawDataMessage::eVelaRD,       "$RD.,",                10,  512),     10,    512,
        &ReadRdParameters,                                                                   eBody::Text},
    // "$>JI,1810-2233-00,1,7,01102009,01/06/1998" CR LF
    {Frame("VelaJI",      C_RawDataMessage::eVelaJI,       "$>JI,",                10,  512),     10,    512,
        &ReadReplyParameters,                                                                eBody::Text},
    // "$>JQUERY,GUIDE,30,1,2" CR LF
    {Frame("VelaJQUERY",  C_RawDataMessage::eVelaJQUERY,   "$>JQUERY,",            10,  512),     10,    512,
        &ReadReplyParameters,                                                                eBody::Text},
    // "$>JSITERECORD,1,Field 7" CR LF
    {Frame("JSITERECORD", C_RawDataMessage::eJSITERECORD,  "$>JSITERECORD",        13,  512),     13,    512,
        &ReadSiteRecordParameters,                                                           eBody::SiteRecord},
    // "$>" and any text up to CR or LF
    {Frame("VelaCmdAck",  C_RawDataMessage::eVelaCmdAck,   "$>",                    2,    2),      2,    256,
        nullptr,                                                                             eBody::Ack},
    // "$>JGEO,SENT=1575.42,USED=1575.42,SV=0,LON" CR LF
    {Frame("VelaGEO",     C_RawDataMessage::eVelaGEO,      "$>JGEO,",              10,   80),     10,     80,
        &ReadReplyParameters,                                                                eBody::Text},
};
// clang-format on

// The search position of each protocol.
inline constexpr auto kRowOf = [] {
  std::array<unsigned char, kNumProtocols> rows = {};
  for (unsigned char i = 0; i < kNumProtocols; ++i) rows[kProtocols[i].frame.protocol] = i;
  return rows;
}();

constexpr const S_ProtocolRow& RowOf(C_RawDataMessage::eProtocols protocol) { return kProtocols[kRowOf[protocol]]; }

static_assert(
    [] {
      for (unsigned int i = 0; i < kNumProtocols; ++i) {
        const S_ProtocolRow& row = kProtocols[i];
        if (kRowOf[row.frame.protocol] != i || row.neededLength < row.frame.startLength) return false;
      }
      return true;
    }(),
    "a protocol without a row or with two, or a start that is longer than what is read");

// Whether bytes at `at` of a start match the pattern there, as many of them as the word has.
template <class Word>
bool MatchesAt(const S_FrameDescriptor& frame, const unsigned char* bytes, unsigned int at) {
  const auto load = [at](const unsigned char* from) {
    Word word = 0;
    std::memcpy(&word, from + at, sizeof word);
    return word;
  };
  return (load(bytes) & load(frame.startMask)) == load(frame.startPattern);
}

// Whether the bytes, `startLength` of them or more, begin as the frame does. The words compared overlap where the
// length is not a multiple of theirs: every start of the table takes three comparisons or fewer.
inline bool BeginsAs(const S_FrameDescriptor& frame, const unsigned char* bytes) {
  const unsigned int length = frame.startLength;
  if (length < 4)
    return MatchesAt<std::uint16_t>(frame, bytes, 0) && MatchesAt<std::uint16_t>(frame, bytes, length - 2);
  if (length < 8)
    return MatchesAt<std::uint32_t>(frame, bytes, 0) && MatchesAt<std::uint32_t>(frame, bytes, length - 4);
  for (unsigned int at = 0; at + 8 < length; at += 8) {
    if (!MatchesAt<std::uint64_t>(frame, bytes, at)) return false;
  }
  return MatchesAt<std::uint64_t>(frame, bytes, length - 8);
}

}  // namespace velagnss::framing

#endif  // VELAGNSS_FRAMING_PROTOCOL_TABLE_H
