// One decoder per protocol family, kept together for one stream, and what the last frame came to.
#ifndef VELAGNSS_APPS_FRAME_DECODER_H
#define VELAGNSS_APPS_FRAME_DECODER_H

#include <array>
#include <optional>
#include <string_view>

#include "apps/velagnss/json/BinaryJson.h"
#include "apps/velagnss/pipeline/StreamClock.h"
#include "binproto/VelaBin_Decode.h"
#include "framing/RawDataMessage.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace Host {

// How far a frame has been understood.
enum class eDepth {
  None,     // not at all: only the envelope is known
  Raw,      // its text or its body's bytes, as received
  Partial,  // some fields; the rest as text, or numbers whose meaning is not known
  Full,     // every field
};

// Sentences are decoded in the form that C_NMEA_EncodeDecode::MakeDecodable gives them, so that those of older and
// shorter kinds show what a person expects.
//
// The binary decoder needs to know the time within ten years: from the user, else from the first date that the stream
// carries, never from the machine's clock. An ephemeris that comes before either keeps its week unresolved.
class C_FrameDecoder {
 public:
  explicit C_FrameDecoder(const std::optional<C_GnssTime>& seed);

  // Ready for another stream; the user's seed stays.
  void Restart();

  // Decodes a frame; the answers below are about it until the next one. `frame` must live that long too.
  void Decode(const C_RawDataMessage& frame);

  // The library's result code; nothing for a frame that has no decoder.
  const std::optional<unsigned int>& Result() const { return m_result; }
  eDepth Depth() const { return m_depth; }

  // True when the frame, though its checksum is right, holds something that it must not hold.
  bool HasDataError() const { return m_hasDataError; }

  // True for an ephemeris that was read, all but its week: no time was known to complete it.
  bool IsWeekUnresolved() const { return m_isWeekUnresolved; }

  // The record of a frame that was decoded with result 0; null when it is none of that kind.
  const U_EcdDcdData* Sentence() const;             // the eight NMEA sentences, the member by the message type
  const S_IFKeplerEphRec* KeplerEphemeris() const;  // messages 25 and 95
  const S_IFPvaEphRec* PvaEphemeris() const;        // messages 65 and 93

  // The members of the object "fields" for a depth other than `None`.
  void WriteFields(C_JsonWriter& json) const;

  const C_StreamClock& Clock() const { return m_clock; }

 private:
  using t_Write = void (C_FrameDecoder::*)(C_JsonWriter& json) const;

  void Conclude(std::optional<unsigned int> result, eDepth depth, t_Write write);
  void DecodeNmea();
  void DecodeBinary();
  void DecodePkvn();
  void DecodeRd();
  void SeedFromStream();
  bool LacksWeek(unsigned int result) const;
  bool IsGood(C_RawDataMessage::eProtocols protocol) const;

  void WriteNothing(C_JsonWriter&) const {}
  void WriteText(C_JsonWriter& json) const;
  void WriteBody(C_JsonWriter& json) const;
  void WritePackedPayload(C_JsonWriter& json) const;
  void WriteNmea(C_JsonWriter& json) const;
  void WriteBinary(C_JsonWriter& json) const;
  void WritePkvn(C_JsonWriter& json) const;
  void WriteRd(C_JsonWriter& json) const;

  std::string_view SentenceText() const;  // without its line end

  std::optional<C_GnssTime> m_seed;  // the user's
  C_StreamClock m_clock;
  eWeekSource m_weekSource = eWeekSource::None;

  C_NMEA_EncodeDecode m_nmeaDecoder;
  C_VelaBin_Decode m_binaryDecoder;
  C_VelaPKVN_Decode m_pkvnDecoder;
  C_VelaRD_Decode m_rdDecoder;

  const C_RawDataMessage* m_frame = nullptr;
  std::optional<unsigned int> m_result;
  eDepth m_depth = eDepth::None;
  bool m_hasDataError = false;
  bool m_isWeekUnresolved = false;
  t_Write m_write = &C_FrameDecoder::WriteNothing;

  std::array<unsigned char, 1024> m_sentence{};
  U_EcdDcdData m_nmea;
  U_VelaBIN_EcdDcdData m_binary;
  U_VelaPKVN_EcdDcdData m_pkvn;
  U_VelaRD_EcdDcdData m_rd;
};

}  // namespace Host

#endif  // VELAGNSS_APPS_FRAME_DECODER_H
