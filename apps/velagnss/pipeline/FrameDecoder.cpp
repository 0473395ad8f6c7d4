#include "apps/velagnss/pipeline/FrameDecoder.h"

#include <algorithm>

#include "apps/velagnss/json/NmeaJson.h"
#include "apps/velagnss/json/ProprietaryJson.h"
#include "framing/FrameRecognizer.h"
#include "records/ResultCodes.h"

namespace Host {
namespace {

using namespace VelaBIN_Messages;

constexpr std::size_t kBinaryHeader = 4 + 2 + 2;  // sync, block id, data length
constexpr std::size_t kBinaryChecksum = 2;
constexpr std::size_t kMaxPackedBytes = 2048;

bool IsPackedByte(unsigned char byte) { return (byte & 0x80) != 0; }

eDepth DepthOfBlock(unsigned int blockId) {
  switch (blockId) {
    case eBin25:
    case eBin65:
    case eBin93:
    case eBin95:
      return eDepth::Full;
    case eBin209:
      return eDepth::Partial;
    default:
      return eDepth::Raw;
  }
}

}  // namespace

C_FrameDecoder::C_FrameDecoder(const std::optional<C_GnssTime>& seed) : m_seed(seed), m_binaryDecoder(nullptr) {
  Restart();
}

void C_FrameDecoder::Restart() {
  m_clock = C_StreamClock();
  m_weekSource = eWeekSource::None;
  m_binaryDecoder.Reset();
  if (!m_seed) return;
  m_binaryDecoder.SeedTime(*m_seed);
  m_weekSource = eWeekSource::Seed;
}

void C_FrameDecoder::Decode(const C_RawDataMessage& frame) {
  m_frame = &frame;
  m_isWeekUnresolved = false;
  switch (frame.protocol) {
    case C_RawDataMessage::eNMEA0183:
      return DecodeNmea();
    case C_RawDataMessage::eVelaBIN:
      return DecodeBinary();
    case C_RawDataMessage::ePKVN:
      return DecodePkvn();
    case C_RawDataMessage::eVelaRD:
      return DecodeRd();
    case C_RawDataMessage::eJROX:
      return Conclude(std::nullopt, eDepth::Raw, &C_FrameDecoder::WritePackedPayload);
    case C_RawDataMessage::eRTCM3_x:
      return Conclude(std::nullopt, eDepth::None, &C_FrameDecoder::WriteNothing);
    default:
      return Conclude(std::nullopt, eDepth::Raw, &C_FrameDecoder::WriteText);
  }
}

void C_FrameDecoder::Conclude(std::optional<unsigned int> result, eDepth depth, t_Write write) {
  m_result = result;
  m_depth = depth;
  m_write = write;
  m_hasDataError = result.value_or(eResultOk) != eResultOk;
}

bool C_FrameDecoder::IsGood(C_RawDataMessage::eProtocols protocol) const {
  return m_frame != nullptr && m_frame->protocol == protocol && m_result == eResultOk;
}

const U_EcdDcdData* C_FrameDecoder::Sentence() const { return IsGood(C_RawDataMessage::eNMEA0183) ? &m_nmea : nullptr; }

const S_IFKeplerEphRec* C_FrameDecoder::KeplerEphemeris() const {
  if (!IsGood(C_RawDataMessage::eVelaBIN)) return nullptr;
  return m_frame->messageType == eBin25 || m_frame->messageType == eBin95 ? &m_binary.keplerEph : nullptr;
}

const S_IFPvaEphRec* C_FrameDecoder::PvaEphemeris() const {
  if (!IsGood(C_RawDataMessage::eVelaBIN)) return nullptr;
  return m_frame->messageType == eBin65 || m_frame->messageType == eBin93 ? &m_binary.pvaEph : nullptr;
}

void C_FrameDecoder::WriteFields(C_JsonWriter& json) const { (this->*m_write)(json); }

void C_FrameDecoder::DecodeNmea() {
  const auto type = static_cast<C_RawDataMessage::eNMEA0183Messages>(m_frame->messageType);
  if (!IsDecodableSentence(type)) return Conclude(std::nullopt, eDepth::Raw, &C_FrameDecoder::WriteText);
  unsigned short length = 0;
  unsigned int result = C_NMEA_EncodeDecode::MakeDecodable(m_frame->data, m_frame->length, m_sentence.data(), length);
  if (result == eResultOk) result = m_nmeaDecoder.Decode(m_sentence.data(), length, type, m_nmea);
  if (result != eResultOk) return Conclude(result, eDepth::Raw, &C_FrameDecoder::WriteText);
  m_clock.Note(type, m_nmea);
  SeedFromStream();
  Conclude(result, eDepth::Full, &C_FrameDecoder::WriteNmea);
}

void C_FrameDecoder::SeedFromStream() {
  if (m_weekSource != eWeekSource::None || !m_clock.FirstDate()) return;
  m_binaryDecoder.SeedTime(*m_clock.FirstDate());
  m_weekSource = eWeekSource::Stream;
}

void C_FrameDecoder::DecodeBinary() {
  unsigned short blockId = 0;
  const unsigned int result = m_binaryDecoder.Decode(m_frame->data, m_frame->length, blockId, m_binary);
  m_isWeekUnresolved = LacksWeek(result);
  const bool isRead = result == eResultOk || m_isWeekUnresolved;
  const eDepth depth = isRead ? DepthOfBlock(blockId) : eDepth::Raw;
  Conclude(result, depth, depth == eDepth::Raw ? &C_FrameDecoder::WriteBody : &C_FrameDecoder::WriteBinary);
  m_hasDataError = !isRead && result != eResultUnknownMessage;
}

// Everything but the weeks has been read by then: GPS and QZSS say so by a code of their own, SBAS by the one of a
// message that cannot be converted, for which there is no other reason.
bool C_FrameDecoder::LacksWeek(unsigned int result) const {
  if (m_weekSource != eWeekSource::None) return false;
  return result == eResultNoSeed || (result == eResultWrongMessage && m_frame->messageType == eBin93);
}

void C_FrameDecoder::DecodePkvn() {
  if (m_frame->messageType == VelaPKVN_Messages::ePkvnRAW)
    return Conclude(std::nullopt, eDepth::Raw, &C_FrameDecoder::WritePackedPayload);
  VelaPKVN_Messages::eMessageTypes type = VelaPKVN_Messages::ePkvnUnknown;
  const unsigned int result = m_pkvnDecoder.Decode(m_frame->data, m_frame->length, type, m_pkvn);
  if (result != eResultOk) return Conclude(result, eDepth::Raw, &C_FrameDecoder::WriteText);
  Conclude(result, IsWhollyDecoded(type) ? eDepth::Full : eDepth::Partial, &C_FrameDecoder::WritePkvn);
}

void C_FrameDecoder::DecodeRd() {
  unsigned short version = 0;
  const unsigned int result = m_rdDecoder.Decode(m_frame->data, m_frame->length, version, m_rd);
  if (result != eResultOk) return Conclude(result, eDepth::Raw, &C_FrameDecoder::WriteText);
  Conclude(result, eDepth::Full, &C_FrameDecoder::WriteRd);
}

std::string_view C_FrameDecoder::SentenceText() const {
  std::string_view text(reinterpret_cast<const char*>(m_frame->data), m_frame->length);
  while (text.ends_with('\r') || text.ends_with('\n')) text.remove_suffix(1);
  return text;
}

void C_FrameDecoder::WriteText(C_JsonWriter& json) const { json.Key("text").String(SentenceText()); }

void C_FrameDecoder::WriteBody(C_JsonWriter& json) const {
  const std::span<const unsigned char> frame(m_frame->data, m_frame->length);
  json.Key("body").Hex(frame.subspan(kBinaryHeader, frame.size() - kBinaryHeader - kBinaryChecksum));
}

// The text in front of the packed bytes, and what they unpack to. The line end of the frame ends the packed bytes.
void C_FrameDecoder::WritePackedPayload(C_JsonWriter& json) const {
  const std::string_view text = SentenceText();
  const auto* packed = std::find_if(m_frame->data, m_frame->data + text.size(), &IsPackedByte);
  std::array<unsigned char, kMaxPackedBytes> payload;
  const unsigned int length =
      C_FrameRecognizer::UnwindVela7of8Message(payload.data(), packed, static_cast<unsigned short>(payload.size() / 2));
  json.Key("text").String(text.substr(0, static_cast<std::size_t>(packed - m_frame->data)));
  json.Key("payload_length").Integer(length);
  json.Key("payload").Hex(std::span(payload).first(length));
}

void C_FrameDecoder::WriteNmea(C_JsonWriter& json) const {
  WriteNmeaFields(json, static_cast<C_RawDataMessage::eNMEA0183Messages>(m_frame->messageType), m_nmea, SentenceText());
}

void C_FrameDecoder::WriteBinary(C_JsonWriter& json) const {
  switch (m_frame->messageType) {
    case eBin65:  // carries its date itself
      return WritePvaEphemeris(json, m_binary.pvaEph, eWeekSource::Stream);
    case eBin93:
      return WritePvaEphemeris(json, m_binary.pvaEph, m_weekSource);
    case eBin209:
      return WriteBin209(json, m_binary.bin209);
    default:
      return WriteKeplerEphemeris(json, m_binary.keplerEph, m_weekSource);
  }
}

void C_FrameDecoder::WritePkvn(C_JsonWriter& json) const {
  WritePkvnFields(json, static_cast<VelaPKVN_Messages::eMessageTypes>(m_frame->messageType), m_pkvn);
}

void C_FrameDecoder::WriteRd(C_JsonWriter& json) const { WriteRdFields(json, m_rd); }

}  // namespace Host
