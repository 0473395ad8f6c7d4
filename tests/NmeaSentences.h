// NMEA 0183 sentences and their records, as tests write them down.
#ifndef VELAGNSS_TESTS_NMEA_SENTENCES_H
#define VELAGNSS_TESTS_NMEA_SENTENCES_H

#include <string>
#include <string_view>

#include "tests/RecordLine.h"
#include "textproto/NMEA_EncodeDecode.h"

// The text with its checksum, without CR LF.
inline std::string NmeaSentence(std::string_view text) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  unsigned int sum = 0;
  for (const char c : text.substr(1)) sum ^= static_cast<unsigned char>(c);
  return std::string(text) + '*' + kDigits[sum >> 4] + kDigits[sum & 15];
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

inline std::string NmeaLine(C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& data) {
  switch (type) {
    case C_RawDataMessage::eNmeaGGA:
      return NmeaLine(data.gga);
    case C_RawDataMessage::eNmeaGNS:
      return NmeaLine(data.gns);
    case C_RawDataMessage::eNmeaZDA:
      return NmeaLine(data.zda);
    case C_RawDataMessage::eNmeaGLL:
      return NmeaLine(data.gll);
    case C_RawDataMessage::eNmeaGSV:
      return NmeaLine(data.gsv);
    case C_RawDataMessage::eNmeaGSA:
      return NmeaLine(data.gsa);
    case C_RawDataMessage::eNmeaRMC:
      return NmeaLine(data.rmc);
    case C_RawDataMessage::eNmeaVTG:
      return NmeaLine(data.vtg);
    default:
      return "";
  }
}

#endif  // VELAGNSS_TESTS_NMEA_SENTENCES_H
