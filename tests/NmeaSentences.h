// NMEA 0183 sentences and their records, as tests write them down.
#ifndef VELAGNSS_TESTS_NMEA_SENTENCES_H
#define VELAGNSS_TESTS_NMEA_SENTENCES_H

#include <cstring>
#include <stdexcept>
#include <string>
#include <string_view>

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
  void (*reset)(U_EcdDcdData& data);
  std::string (*line)(const U_EcdDcdData& data);
};

template <auto Member, auto Decode, auto Reset>
constexpr S_NmeaKind NmeaKind(C_RawDataMessage::eNMEA0183Messages type) {
  return {type,
          [](unsigned char* sentence, std::size_t size, U_EcdDcdData& data) {
            return (C_NMEA_EncodeDecode().*Decode)(sentence, static_cast<unsigned short>(size), data.*Member);
          },
          [](U_EcdDcdData& data) { Reset(data.*Member); },
          [](const U_EcdDcdData& data) { return NmeaLine(data.*Member); }};
}

inline const S_NmeaKind& KindOf(C_RawDataMessage::eNMEA0183Messages type) {
  using t_Nmea = C_NMEA_EncodeDecode;
  using t_Type = C_RawDataMessage;
  using t_Data = U_EcdDcdData;
  static constexpr S_NmeaKind kKinds[] = {
      NmeaKind<&t_Data::gga, &t_Nmea::Decode_GGA, &t_Nmea::Reset_GGA>(t_Type::eNmeaGGA),
      NmeaKind<&t_Data::gns, &t_Nmea::Decode_GNS, &t_Nmea::Reset_GNS>(t_Type::eNmeaGNS),
      NmeaKind<&t_Data::zda, &t_Nmea::Decode_ZDA, &t_Nmea::Reset_ZDA>(t_Type::eNmeaZDA),
      NmeaKind<&t_Data::gll, &t_Nmea::Decode_GLL, &t_Nmea::Reset_GLL>(t_Type::eNmeaGLL),
      NmeaKind<&t_Data::gsv, &t_Nmea::Decode_GSV, &t_Nmea::Reset_GSV>(t_Type::eNmeaGSV),
      NmeaKind<&t_Data::gsa, &t_Nmea::Decode_GSA, &t_Nmea::Reset_GSA>(t_Type::eNmeaGSA),
      NmeaKind<&t_Data::rmc, &t_Nmea::Decode_RMC, &t_Nmea::Reset_RMC>(t_Type::eNmeaRMC),
      NmeaKind<&t_Data::vtg, &t_Nmea::Decode_VTG, &t_Nmea::Reset_VTG>(t_Type::eNmeaVTG),
  };
  for (const S_NmeaKind& kind : kKinds)
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
