// One decoder for each family of messages, and the union that it fills. Callers see a copy in a variant. Tables say
// which member of a union belongs to which type.
#include "stream/RecordDecoder.h"

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "binproto/MessageContents.h"
#include "binproto/VelaBin_Decode.h"
#include "framing/FrameRecognizer.h"
#include "geo/LeapSeconds.h"
#include "records/ResultCodes.h"
#include "rtcm3/Reading.h"
#include "rtcm3/State.h"
#include "textproto/CheckedSentence.h"
#include "textproto/NmeaSentenceCodec.h"
#include "textproto/VelaPKVN_Decode.h"
#include "textproto/VelaRD_Decode.h"

namespace velagnss {
namespace {

using namespace VelaBIN_Messages;
using namespace VelaPKVN_Messages;

constexpr std::size_t kBinaryHeader = 4 + 2 + 2;  // sync, block id, data length
constexpr std::size_t kBinaryChecksum = 2;

// A time of GLONASS, say, or an unset one, says nothing about the weeks of the binary protocol.
bool SetsGpsTime(const C_GnssTime& time) {
  const bool isSet = time.m_week != 0 || time.m_secOfWeek != 0.0;
  return isSet &&
         (time.m_system == ALGO::GNSS_GPS || time.m_system == ALGO::GNSS_GALILEO || time.m_system == ALGO::GNSS_BEIDOU);
}

// Member by member: a fresh DecodedFrame would copy the largest record for every frame.
void Clear(DecodedFrame& decoded) {
  decoded.record.emplace<std::monostate>();
  decoded.result.reset();
  decoded.depth = Depth::None;
  decoded.week = WeekSource::None;
  decoded.isWeekUnresolved = decoded.hasDataError = false;
}

void SetResultOf(DecodedFrame& decoded, unsigned int result) {
  decoded.result = result;
  decoded.hasDataError = result != eResultOk;
}

template <class T>
void KeepRecord(const T& record, Depth depth, DecodedFrame& decoded) {
  decoded.record.emplace<T>(record);
  decoded.depth = depth;
}

// The text of a sentence without its line end.
std::string_view TextOf(const Frame& frame) {
  std::string_view text(reinterpret_cast<const char*>(frame.data), frame.length);
  while (!text.empty() && (text.back() == '\r' || text.back() == '\n')) text.remove_suffix(1);
  return text;
}

// "$", two characters of talker, three of formatter. "$P" begins a proprietary sentence.
bool HasPlainAddress(const Frame& frame) {
  constexpr unsigned short kLength = 6;
  return frame.length > kLength && frame.data[1] != 'P' && (frame.data[kLength] == ',' || frame.data[kLength] == '*');
}

// A view into the frame, valid as long as the frame is.
void KeepTextOf(const Frame& frame, DecodedFrame& decoded) { KeepRecord(RawText{TextOf(frame)}, Depth::Raw, decoded); }

RawBody BodyOf(const Frame& frame) {
  constexpr std::size_t kEnvelope = kBinaryHeader + kBinaryChecksum;
  if (frame.length < kEnvelope) return {};
  return {frame.data + kBinaryHeader, frame.length - kEnvelope};
}

// The decoders take a pointer to bytes that they might change, but do not.
unsigned char* BytesOf(const Frame& frame) { return const_cast<unsigned char*>(frame.data); }

// Commas before the packed bytes: "$JROX,", and "$PKVN,RAW,4,12,". The fields between them may hold any byte, so the
// first byte with its top bit set need not be a packed one.
constexpr unsigned int kCommasOfJrox = 1;
constexpr unsigned int kCommasOfRaw = 4;

// The index after that many commas; the size of the text when it has fewer.
std::size_t AfterComma(std::string_view text, unsigned int commas) {
  std::size_t at = 0;
  for (; commas > 0 && at < text.size(); --commas) at = std::min(text.find(',', at), text.size() - 1) + 1;
  return at;
}

// Sentences to records. It has no state: what a stream is known to be does not change what a sentence says.
class SentenceReader {
 public:
  void Read(const Frame& frame, TimeDigits digits, DecodedFrame& decoded);

 private:
  // One sentence and what makes its record of the decoder's union.
  struct S_Row {
    C_RawDataMessage::eNMEA0183Messages type;
    void (*keep)(const U_EcdDcdData& from, DecodedFrame& decoded);
  };
  static const S_Row kRows[];

  template <auto Member>
  static void Keep(const U_EcdDcdData& from, DecodedFrame& decoded) {
    KeepRecord(from.*Member, Depth::Full, decoded);
  }
  void ReadOneOfEight(const Frame& frame, TimeDigits digits, const S_Row& row, DecodedFrame& decoded);
  void ReadByAddress(const Frame& frame, TimeDigits digits, DecodedFrame& decoded);

  U_EcdDcdData m_nmea;
  std::optional<NmeaRecord> m_sentence;  // made when it is needed: it is large
};

// clang-format off
constexpr SentenceReader::S_Row SentenceReader::kRows[] = {
    {C_RawDataMessage::eNmeaGGA, &Keep<&U_EcdDcdData::gga>},
    {C_RawDataMessage::eNmeaGLL, &Keep<&U_EcdDcdData::gll>},
    {C_RawDataMessage::eNmeaGNS, &Keep<&U_EcdDcdData::gns>},
    {C_RawDataMessage::eNmeaGSA, &Keep<&U_EcdDcdData::gsa>},
    {C_RawDataMessage::eNmeaGSV, &Keep<&U_EcdDcdData::gsv>},
    {C_RawDataMessage::eNmeaRMC, &Keep<&U_EcdDcdData::rmc>},
    {C_RawDataMessage::eNmeaVTG, &Keep<&U_EcdDcdData::vtg>},
    {C_RawDataMessage::eNmeaZDA, &Keep<&U_EcdDcdData::zda>},
};
// clang-format on

// The number of a frame is enough for the eight sentences with a type of their own, unless the address says that the
// sentence is another one with the same letters in their place, "$PMGNST" for one.
void SentenceReader::Read(const Frame& frame, TimeDigits digits, DecodedFrame& decoded) {
  const auto type = static_cast<C_RawDataMessage::eNMEA0183Messages>(frame.message);
  const auto* const row = std::find_if(std::begin(kRows), std::end(kRows),
                                       [type](const S_Row& candidate) { return candidate.type == type; });
  if (row == std::end(kRows) || !HasPlainAddress(frame)) return ReadByAddress(frame, digits, decoded);
  ReadOneOfEight(frame, digits, *row, decoded);
}

void SentenceReader::ReadOneOfEight(const Frame& frame, TimeDigits digits, const S_Row& row, DecodedFrame& decoded) {
  char variation = 0;
  SetResultOf(decoded, textproto::DecodeCheckedSentence(frame.data, frame.length, row.type, m_nmea, variation, digits));
  if (decoded.hasDataError) return KeepTextOf(frame, decoded);
  // The sentence decoder does not keep the letter, and without it the variation has no sign.
  if (row.type == C_RawDataMessage::eNmeaRMC) m_nmea.rmc.variationDirection = static_cast<unsigned char>(variation);
  row.keep(m_nmea, decoded);
}

void SentenceReader::ReadByAddress(const Frame& frame, TimeDigits digits, DecodedFrame& decoded) {
  if (!m_sentence) m_sentence.emplace();
  SetResultOf(decoded, DecodeSentence(TextOf(frame), *m_sentence, digits));
  if (decoded.hasDataError) return KeepTextOf(frame, decoded);
  const auto keep = [&decoded]<class T>(const T& record) {
    KeepRecord(record, std::is_same_v<T, OtherSentence> ? Depth::Partial : Depth::Full, decoded);
  };
  std::visit(keep, *m_sentence);
}

// RTCM 3, as far as the frame alone says it. A message that has no decoder has no result either.
void ReadRtcm(const Frame& frame, DecodedFrame& decoded) {
  SetResultOf(decoded, rtcm3::Read(frame.data, frame.length, decoded.record));
  const bool isPayload = std::holds_alternative<Rtcm3Payload>(decoded.record);
  if (isPayload && !decoded.hasDataError) decoded.result.reset();
  if (!std::holds_alternative<std::monostate>(decoded.record)) decoded.depth = isPayload ? Depth::Raw : Depth::Full;
}

// Whatever needs nothing of earlier frames.
bool Read(const Frame& frame, TimeDigits digits, SentenceReader& sentences, DecodedFrame& decoded) {
  const bool isNmea = frame.protocol == C_RawDataMessage::eNMEA0183;
  if (frame.data == nullptr || (!isNmea && frame.protocol != C_RawDataMessage::eRTCM3_x)) return false;
  Clear(decoded);
  isNmea ? sentences.Read(frame, digits, decoded) : ReadRtcm(frame, decoded);
  return true;
}

}  // namespace

class RecordDecoder::Impl {
 public:
  Impl() { Restart(); }

  void SeedTime(const C_GnssTime& time);
  void AssumeFirstDay(unsigned int mjd);
  void Restart();
  void Decode(const Frame& frame, DecodedFrame& decoded);
  void Follow(const Frame& frame, DecodedFrame& decoded);

  std::optional<C_GnssTime> m_seed;  // the caller's
  std::optional<unsigned int> m_firstDay;
  TimeDigits m_timeDigits = TimeDigits::Hundredths;
  StreamClock m_clock;
  C_VelaBin_Decode m_binaryDecoder{nullptr};
  rtcm3::State m_rtcm;  // has the channels of both decoders
  DecodedFrame m_own;

 private:
  // One message and what makes its record of the decoder's union.
  struct S_PkvnRow {
    VelaPKVN_Messages::eMessageTypes type;
    void (Impl::*keep)();
  };
  static const S_PkvnRow kPkvnRows[];

  void DecodeBinary(const Frame& frame);
  void DecodePkvn(const Frame& frame);
  void DecodeRd(const Frame& frame);
  void Unpack(const Frame& frame);

  template <class T>
  void Keep(Depth depth, const T& record) {
    KeepRecord(record, depth, *m_decoded);
  }
  void KeepText(const Frame& frame) { KeepTextOf(frame, *m_decoded); }
  void KeepBinary(unsigned int blockId, const Frame& frame);
  void KeepEphemeris(unsigned int blockId);
  void ShareChannel(unsigned char slot);
  template <auto Member, Depth HowFar = Depth::Full>
  void KeepPkvn() {
    Keep(HowFar, m_pkvn.*Member);
  }

  void FollowSentence(const Record& sentence);
  void FollowRtcm(DecodedFrame& decoded);
  template <class T>
  void FollowRtcm(T& record, DecodedFrame& decoded);
  template <class T>
  void NoteTime(const T& record);
  template <class T>
  void NoteRtcmTime(const T& record);
  void UseFirstDate();
  void FollowAssumedDay();
  void SetResult(unsigned int result);
  bool LacksWeek(unsigned int blockId, unsigned int result) const;

  DecodedFrame* m_decoded = nullptr;           // what the frame is decoded into
  WeekSource m_weekSource = WeekSource::None;  // of the binary protocol
  bool m_isWeekAssumed = false;                // it is the day of `AssumeFirstDay`
  bool m_hasSentenceTime = false;              // since the last message of RTCM 3
  C_VelaPKVN_Decode m_pkvnDecoder;
  C_VelaRD_Decode m_rdDecoder;

  SentenceReader m_sentences;
  U_VelaBIN_EcdDcdData m_binary;
  U_VelaPKVN_EcdDcdData m_pkvn;
  U_VelaRD_EcdDcdData m_rd;
};

// clang-format off
constexpr RecordDecoder::Impl::S_PkvnRow RecordDecoder::Impl::kPkvnRows[] = {  // of two a list is kept as text
    {ePkvnATTSTAT,     &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::attStat, Depth::Partial>},
    {ePkvnGBS,         &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::gbs>},
    {ePkvnHPR,         &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::hpr>},
    {ePkvnBLV,         &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::blv>},
    {ePkvnFVI,         &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::fvi>},
    {ePkvnRTKSTAT,     &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::rtkStat, Depth::Partial>},
    {ePkvnVCT,         &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::vct>},
    {ePkvnINTLT,       &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::intlt>},
    {ePkvnTEMPERATURE, &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::temperature>},
    {ePkvnARN_ROUTER,  &Impl::KeepPkvn<&U_VelaPKVN_EcdDcdData::arn>},
};
// clang-format on

// The caller's time survives a restart: it does not come from the stream that ended.
void RecordDecoder::Impl::Restart() {
  m_clock = StreamClock();
  m_weekSource = WeekSource::None;
  m_isWeekAssumed = false;
  m_hasSentenceTime = false;
  m_binaryDecoder.Reset();
  m_rtcm.Clear();
  if (m_seed) SeedTime(*m_seed);
  if (m_firstDay) AssumeFirstDay(*m_firstDay);
}

void RecordDecoder::Impl::SeedTime(const C_GnssTime& time) {
  m_seed = time;
  m_binaryDecoder.SeedTime(time);
  m_rtcm.clock.Seed(time);
  if (!SetsGpsTime(time)) return;
  m_weekSource = WeekSource::Seed;
  m_isWeekAssumed = false;
}

// Nothing is known of the time of day: noon is never more than half a day off.
void RecordDecoder::Impl::AssumeFirstDay(unsigned int mjd) {
  m_firstDay = mjd;
  m_clock.AssumeFirstDay(mjd);
  const std::optional<unsigned int> firstDay = m_clock.UtcOf(0).mjd;
  if (!firstDay) return;
  const C_GnssTime noon = GpsOfUtc({*firstDay, ALGO::kSecondsPerDay / 2});
  m_rtcm.clock.Assume(noon);
  if (m_weekSource != WeekSource::None && !m_isWeekAssumed) return;
  m_binaryDecoder.SeedTime(noon);
  m_weekSource = WeekSource::Seed;
  m_isWeekAssumed = true;
}

void RecordDecoder::Impl::Decode(const Frame& frame, DecodedFrame& decoded) {
  if (Read(frame, m_timeDigits, m_sentences, decoded)) return Follow(frame, decoded);
  m_decoded = &decoded;
  Clear(decoded);
  if (frame.data == nullptr) return SetResult(eResultNull);
  switch (frame.protocol) {
    case C_RawDataMessage::eVelaBIN:
      return DecodeBinary(frame);
    case C_RawDataMessage::ePKVN:
      return DecodePkvn(frame);
    case C_RawDataMessage::eVelaRD:
      return DecodeRd(frame);
    case C_RawDataMessage::eJROX:
      return Unpack(frame);
    default:
      return KeepText(frame);
  }
}

void RecordDecoder::Impl::SetResult(unsigned int result) { SetResultOf(*m_decoded, result); }

void RecordDecoder::Impl::Follow(const Frame& frame, DecodedFrame& decoded) {
  frame.protocol == C_RawDataMessage::eRTCM3_x ? FollowRtcm(decoded) : FollowSentence(decoded.record);
}

void RecordDecoder::Impl::FollowSentence(const Record& sentence) {
  const auto note = [this]<class T>(const T* record) {
    if (record != nullptr) NoteTime(*record);
  };
  const auto noteAnyOf = [&]<class... T>(std::in_place_type_t<T>...) { (note(std::get_if<T>(&sentence)), ...); };
  noteAnyOf(std::in_place_type<S_GGA_Data>, std::in_place_type<S_GNS_Data>, std::in_place_type<S_GLL_Data>,
            std::in_place_type<S_RMC_Data>, std::in_place_type<S_ZDA_Data>);
}

// The first date that comes resolves weeks, unless the caller has given a time.
void RecordDecoder::Impl::UseFirstDate() {
  if (!m_clock.FirstDate() || (m_weekSource != WeekSource::None && !m_isWeekAssumed)) return;
  m_binaryDecoder.SeedTime(*m_clock.FirstDate());
  m_weekSource = WeekSource::Stream;
  m_isWeekAssumed = false;
}

// Sentences may have counted days since the one that was assumed.
void RecordDecoder::Impl::FollowAssumedDay() {
  m_hasSentenceTime = false;
  if (m_clock.FirstDate()) return;
  const StreamClock::Utc utc = m_clock.UtcOf(m_clock.Seconds());
  if (utc.mjd) m_rtcm.clock.Assume(GpsOfUtc({*utc.mjd, utc.secondsOfDay}));
}

template <class T>
void RecordDecoder::Impl::NoteTime(const T& record) {
  m_hasSentenceTime = true;
  if (!m_clock.Note(record)) return;
  UseFirstDate();
  const StreamClock::Utc utc = m_clock.UtcOf(m_clock.Seconds());
  if (utc.mjd) m_rtcm.clock.NoteOtherUtc(*utc.mjd, static_cast<std::uint32_t>(utc.secondsOfDay));
}

void RecordDecoder::Impl::DecodeBinary(const Frame& frame) {
  unsigned short blockId = 0;
  const unsigned int result = m_binaryDecoder.Decode(BytesOf(frame), frame.length, blockId, m_binary);
  SetResult(result);
  m_decoded->isWeekUnresolved = LacksWeek(blockId, result);
  const bool isRead = result == eResultOk || m_decoded->isWeekUnresolved;
  // A block that has no decoder is not damaged.
  m_decoded->hasDataError = !isRead && result != eResultUnknownMessage;
  if (isRead && blockId == eBin65) ShareChannel(m_binary.pvaEph.SvId);
  // There is no block 0: a message that could not be read is kept as raw bytes.
  KeepBinary(isRead ? blockId : 0U, frame);
}

void RecordDecoder::Impl::KeepBinary(unsigned int blockId, const Frame& frame) {
  switch (binproto::ContentsOf(blockId)) {
    case binproto::eContents::eFull:
      return KeepEphemeris(blockId);
    case binproto::eContents::eFieldsBySize:
      return Keep(Depth::Partial, m_binary.bin209);
    default:
      return Keep(Depth::Raw, BodyOf(frame));
  }
}

void RecordDecoder::Impl::KeepEphemeris(unsigned int blockId) {
  // GLONASS sends day and four-year period (GLONASS ICD), so block 65 needs no week from elsewhere.
  const bool carriesItsDate = blockId == eBin65;
  m_decoded->week = carriesItsDate ? WeekSource::Stream : m_weekSource;
  if (blockId == eBin65 || blockId == eBin93) return Keep(Depth::Full, m_binary.pvaEph);
  Keep(Depth::Full, m_binary.keplerEph);
}

// Everything but the weeks has been read by then: GPS and QZSS have a code of their own for it, SBAS has that of a
// message that cannot be converted, for which there is no other reason.
bool RecordDecoder::Impl::LacksWeek(unsigned int blockId, unsigned int result) const {
  if (m_weekSource != WeekSource::None) return false;
  return result == eResultNoSeed || (result == eResultWrongMessage && blockId == eBin93);
}

// Observations of RTCM 3 may lack the channel that a binary message has carried.
void RecordDecoder::Impl::ShareChannel(unsigned char slot) {
  m_rtcm.channels.Set(slot, m_binaryDecoder.GetGlonassSvChannelId(slot));
}

// The decoder of RTCM 3 knows these dates and judges them itself.
template <class T>
void RecordDecoder::Impl::NoteRtcmTime(const T& record) {
  m_clock.Note(record);
  UseFirstDate();
}

void RecordDecoder::Impl::FollowRtcm(DecodedFrame& decoded) {
  if (m_hasSentenceTime && m_rtcm.clock.IsAssumed()) FollowAssumedDay();
  if (decoded.depth == Depth::Full)
    rtcm3::WithRtcm3Record(decoded.record, [&](auto& record) { FollowRtcm(record, decoded); });
}

template <class T>
void RecordDecoder::Impl::FollowRtcm(T& record, DecodedFrame& decoded) {
  constexpr bool isEphemeris = std::is_same_v<T, Rtcm3KeplerEphemeris> || std::is_same_v<T, Rtcm3PvaEphemeris>;
  decoded.result = rtcm3::Follow(m_rtcm, record);
  decoded.isWeekUnresolved = decoded.result == eResultNoSeed;
  if (isEphemeris && !decoded.isWeekUnresolved)
    decoded.week = m_seed || m_rtcm.clock.IsAssumed() ? WeekSource::Seed : WeekSource::Stream;
  if constexpr (requires { m_clock.Note(record); }) NoteRtcmTime(record);
}

void RecordDecoder::Impl::DecodePkvn(const Frame& frame) {
  if (frame.message == ePkvnRAW) return Unpack(frame);
  VelaPKVN_Messages::eMessageTypes type = ePkvnUnknown;
  const unsigned int result = m_pkvnDecoder.Decode(BytesOf(frame), frame.length, type, m_pkvn);
  SetResult(result);
  const auto* const row = std::find_if(std::begin(kPkvnRows), std::end(kPkvnRows),
                                       [type](const S_PkvnRow& candidate) { return candidate.type == type; });
  if (result != eResultOk || row == std::end(kPkvnRows)) return KeepText(frame);
  (this->*row->keep)();
}

void RecordDecoder::Impl::DecodeRd(const Frame& frame) {
  // The sentence has no checksum of its own, so its decoder checks ranges.
  unsigned short version = 0;
  const unsigned int result = m_rdDecoder.Decode(BytesOf(frame), frame.length, version, m_rd);
  SetResult(result);
  if (result != eResultOk) return KeepText(frame);
  Keep(Depth::Full, m_rd.signalDiag);
}

// What the packed bytes after the text unpack to. The line end of the frame ends them.
void RecordDecoder::Impl::Unpack(const Frame& frame) {
  const std::string_view text = TextOf(frame);
  const std::size_t packed = AfterComma(text, frame.protocol == C_RawDataMessage::ePKVN ? kCommasOfRaw : kCommasOfJrox);
  auto& payload = m_decoded->record.emplace<PackedPayload>();
  // Two bytes to a word, the word of the checksum included.
  constexpr auto kMaxWords = static_cast<unsigned short>(sizeof payload.bytes / 2);
  payload.text = text.substr(0, packed);
  // Only a line end stops the unpacking inside the frame: a frame without one is left packed.
  if (text.size() < frame.length)
    payload.length = static_cast<unsigned short>(
        C_FrameRecognizer::UnwindVela7of8Message(payload.bytes, frame.data + packed, kMaxWords));
  m_decoded->depth = Depth::Raw;
}

RecordDecoder::RecordDecoder() : m_impl(new Impl) {}
RecordDecoder::~RecordDecoder() = default;

const DecodedFrame& RecordDecoder::Decode(const Frame& frame) {
  m_impl->Decode(frame, m_impl->m_own);
  return m_impl->m_own;
}

void RecordDecoder::Decode(const Frame& frame, DecodedFrame& decoded) { m_impl->Decode(frame, decoded); }

bool RecordDecoder::Prepare(const Frame& frame, DecodedFrame& decoded) const {
  SentenceReader sentences;
  return Read(frame, m_impl->m_timeDigits, sentences, decoded);
}

void RecordDecoder::Follow(const Frame& frame, DecodedFrame& prepared) { m_impl->Follow(frame, prepared); }

void RecordDecoder::SeedTime(const C_GnssTime& time) { m_impl->SeedTime(time); }

void RecordDecoder::AssumeFirstDay(unsigned int mjd) { m_impl->AssumeFirstDay(mjd); }

void RecordDecoder::KeepTimeDigits(TimeDigits digits) { m_impl->m_timeDigits = digits; }

void RecordDecoder::Restart() { m_impl->Restart(); }

void RecordDecoder::Reset() {
  m_impl->m_seed.reset();
  m_impl->m_firstDay.reset();
  m_impl->Restart();
}

signed char RecordDecoder::GlonassChannel(unsigned char slot) const { return m_impl->m_rtcm.channels.Of(slot); }
bool RecordDecoder::SetGlonassChannel(unsigned char slot, signed char channel) {
  return m_impl->m_binaryDecoder.SetGlonassSvChannelId(slot, channel) && m_impl->m_rtcm.channels.Set(slot, channel);
}

const StreamClock& RecordDecoder::Clock() const { return m_impl->m_clock; }

}  // namespace velagnss
