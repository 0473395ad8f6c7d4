// NMEA 0183 sentences and their records, as tests write them down.
#ifndef VELAGNSS_TESTS_NMEA_SENTENCES_H
#define VELAGNSS_TESTS_NMEA_SENTENCES_H

#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>

#include "tests/ExactCopy.h"
#include "tests/RecordLine.h"
#include "tests/Streams.h"
#include "textproto/CheckedSentence.h"
#include "textproto/NMEA_EncodeDecode.h"

// The text, "$" in front, with its checksum, without CR LF.
inline std::string NmeaSentence(std::string_view text) {
  const std::string sentence = Sentence(text.substr(1));
  return sentence.substr(0, sentence.size() - 2);
}

inline C_RawDataMessage::eNMEA0183Messages NmeaType(std::string_view sentence) {
  return C_NMEA_EncodeDecode::GetNmeaPreamble(sentence.data(), 6, nullptr);
}

inline unsigned int NmeaDecode(C_NMEA_EncodeDecode& nmea, std::string sentence, U_EcdDcdData& data) {
  return nmea.Decode(reinterpret_cast<unsigned char*>(sentence.data()), static_cast<unsigned short>(sentence.size()),
                     NmeaType(sentence), data);
}

inline std::string TalkerText(const char (&talker)[2]) {
  return talker[0] == '\0' ? "none" : std::string(talker, sizeof talker);
}

// The members in their order, "-" for not available, "." for a NUL. Talker "none": as after a reset.
inline std::string NmeaLine(const S_GGA_Data& r) {
  return RecordLine(TalkerText(r.talker), r.timeOfDay, r.latitude, r.longitude, r.quality, r.satellites, r.hdop,
                    r.altitude, r.geoidSeparation, r.differentialAge, r.referenceStation);
}
inline std::string NmeaLine(const S_GNS_Data& r) {
  const unsigned int modes[] = {r.mode[0], r.mode[1], r.mode[2], r.mode[3], r.mode[4], r.mode[5]};
  return RecordLine(TalkerText(r.talker), r.timeOfDay, r.latitude, r.longitude, modes, r.satellites, r.hdop, r.altitude,
                    r.geoidSeparation, r.differentialAge, r.referenceStation, +r.navStatus);
}
inline std::string NmeaLine(const S_ZDA_Data& r) {
  return RecordLine(TalkerText(r.talker), r.year, r.month, r.day, r.timeOfDay, r.zoneHours, r.zoneMinutes);
}
inline std::string NmeaLine(const S_GLL_Data& r) {
  return RecordLine(TalkerText(r.talker), r.timeOfDay, r.latitude, r.longitude, +r.status, +r.mode);
}
inline std::string NmeaLine(const S_GSV_Data& r) {
  return RecordLine(TalkerText(r.talker), r.totalSentences, r.sentenceNumber, r.satellitesInView, r.satelliteId,
                    r.elevation, r.azimuth, r.snr, r.signalId);
}
inline std::string NmeaLine(const S_GSA_Data& r) {
  return RecordLine(TalkerText(r.talker), r.operationMode, r.fixType, r.satelliteId, r.pdop, r.hdop, r.vdop,
                    r.systemId);
}
inline std::string NmeaLine(const S_RMC_Data& r) {
  return RecordLine(TalkerText(r.talker), r.year, r.month, r.day, r.timeOfDay, r.latitude, r.longitude, r.speedKnots,
                    r.courseTrue, r.magneticVariation, r.variationDirection, +r.mode, +r.status, +r.navStatus);
}
inline std::string NmeaLine(const S_VTG_Data& r) {
  return RecordLine(TalkerText(r.talker), r.courseTrue, r.courseMagnetic, r.speedKnots, r.speedKmh, +r.mode);
}

// What there is for each of the eight kinds of sentences; decoding goes without the test of the checksum.
struct S_NmeaKind {
  C_RawDataMessage::eNMEA0183Messages type;
  unsigned int (*decode)(unsigned char* sentence, std::size_t size, U_EcdDcdData& data);
  unsigned int (*encode)(C_NMEA_EncodeDecode& nmea, const U_EcdDcdData& data, unsigned short& length);
  void (*reset)(U_EcdDcdData& data);
  std::string (*line)(const U_EcdDcdData& data);
  std::size_t recordSize;  // of the member that is written
};

template <auto Member, auto Decode, auto Encode, auto Reset>
constexpr S_NmeaKind NmeaKind(C_RawDataMessage::eNMEA0183Messages type) {
  return {type,
          [](unsigned char* sentence, std::size_t size, U_EcdDcdData& data) {
            return (C_NMEA_EncodeDecode().*Decode)(sentence, static_cast<unsigned short>(size), data.*Member);
          },
          [](C_NMEA_EncodeDecode& nmea, const U_EcdDcdData& data, unsigned short& length) {
            return (nmea.*Encode)(data.*Member, length);
          },
          [](U_EcdDcdData& data) { Reset(data.*Member); },
          [](const U_EcdDcdData& data) { return NmeaLine(data.*Member); },
          sizeof(std::declval<U_EcdDcdData&>().*Member)};
}

inline constexpr S_NmeaKind kNmeaKinds[] = {
    NmeaKind<&U_EcdDcdData::gga, &C_NMEA_EncodeDecode::Decode_GGA, &C_NMEA_EncodeDecode::Encode_GGA,
             &C_NMEA_EncodeDecode::Reset_GGA>(C_RawDataMessage::eNmeaGGA),
    NmeaKind<&U_EcdDcdData::gns, &C_NMEA_EncodeDecode::Decode_GNS, &C_NMEA_EncodeDecode::Encode_GNS,
             &C_NMEA_EncodeDecode::Reset_GNS>(C_RawDataMessage::eNmeaGNS),
    NmeaKind<&U_EcdDcdData::zda, &C_NMEA_EncodeDecode::Decode_ZDA, &C_NMEA_EncodeDecode::Encode_ZDA,
             &C_NMEA_EncodeDecode::Reset_ZDA>(C_RawDataMessage::eNmeaZDA),
    NmeaKind<&U_EcdDcdData::gll, &C_NMEA_EncodeDecode::Decode_GLL, &C_NMEA_EncodeDecode::Encode_GLL,
             &C_NMEA_EncodeDecode::Reset_GLL>(C_RawDataMessage::eNmeaGLL),
    NmeaKind<&U_EcdDcdData::gsv, &C_NMEA_EncodeDecode::Decode_GSV, &C_NMEA_EncodeDecode::Encode_GSV,
             &C_NMEA_EncodeDecode::Reset_GSV>(C_RawDataMessage::eNmeaGSV),
    NmeaKind<&U_EcdDcdData::gsa, &C_NMEA_EncodeDecode::Decode_GSA, &C_NMEA_EncodeDecode::Encode_GSA,
             &C_NMEA_EncodeDecode::Reset_GSA>(C_RawDataMessage::eNmeaGSA),
    NmeaKind<&U_EcdDcdData::rmc, &C_NMEA_EncodeDecode::Decode_RMC, &C_NMEA_EncodeDecode::Encode_RMC,
             &C_NMEA_EncodeDecode::Reset_RMC>(C_RawDataMessage::eNmeaRMC),
    NmeaKind<&U_EcdDcdData::vtg, &C_NMEA_EncodeDecode::Decode_VTG, &C_NMEA_EncodeDecode::Encode_VTG,
             &C_NMEA_EncodeDecode::Reset_VTG>(C_RawDataMessage::eNmeaVTG),
};

inline const S_NmeaKind& KindOf(C_RawDataMessage::eNMEA0183Messages type) {
  for (const S_NmeaKind& kind : kNmeaKinds)
    if (kind.type == type) return kind;
  throw std::invalid_argument("no decoder for this kind of sentence");
}

inline std::string NmeaLine(C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& data) {
  return KindOf(type).line(data);
}

// The direction letter of the magnetic variation in an RMC: the field after eleven commas.
inline char VariationLetter(std::string_view sentence) {
  sentence = sentence.substr(0, sentence.find_last_not_of("\r\n") + 1);
  std::size_t field = 0;
  for (int commas = 0; commas < 11; ++commas) {
    field = sentence.find(',', field) + 1;
    if (field == 0) return '\0';
  }
  const std::string_view text = sentence.substr(field, sentence.find_first_of(",*", field) - field);
  return text == "E" || text == "W" ? text[0] : '\0';
}

// What `DecodeCheckedSentence` gives that `MakeDecodable` and `Decode` do not; empty when they agree in every byte.
inline std::string CheckedSentenceDiffers(std::string_view sentence, C_RawDataMessage::eNMEA0183Messages type) {
  ExactCopy copy(sentence);
  unsigned char whole[1024];
  unsigned short length = 0;
  U_EcdDcdData expected;
  std::memset(&expected, 0, sizeof expected);
  unsigned int result = C_NMEA_EncodeDecode::MakeDecodable(copy.Data(), copy.Size(), whole, length);
  if (result == 0) result = C_NMEA_EncodeDecode().Decode(whole, length, type, expected);
  const bool hasLetter = result == 0 && type == C_RawDataMessage::eNmeaRMC;

  U_EcdDcdData record;
  std::memset(&record, 0xA5, sizeof record);
  char letter = '?';
  const unsigned int checked =
      velagnss::textproto::DecodeCheckedSentence(copy.Data(), copy.Size(), type, record, letter);
  if (checked != result) return "result " + std::to_string(checked) + " for " + std::to_string(result);
  if (std::memcmp(&record, &expected, sizeof record) != 0) return "another record";
  return letter == (hasLetter ? VariationLetter(sentence) : '\0') ? "" : "another direction letter";
}

#endif  // VELAGNSS_TESTS_NMEA_SENTENCES_H
