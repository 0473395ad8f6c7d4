// The eight NMEA 0183 sentences that are decoded and encoded, as tables, and how one is decoded from its fields.
// Internal.
#ifndef VELAGNSS_TEXTPROTO_NMEA_SENTENCES_H
#define VELAGNSS_TEXTPROTO_NMEA_SENTENCES_H

#include <cstring>

#include "framing/RawDataMessage.h"
#include "records/ResultCodes.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NMEA_Records.h"
#include "textproto/SentenceFields.h"
#include "textproto/SentenceIds.h"
#include "textproto/SentenceRules.h"
#include "textproto/SentenceText.h"

namespace velagnss::textproto {

using t_SentenceType = C_RawDataMessage::eNMEA0183Messages;

// The name and the 20 fields of GSV, the longest sentence.
using t_NmeaFields = C_SentenceFields<S_FieldLimits{1 + 20, 1023, 64}>;

// RMC: position of the direction letter of the magnetic variation. Left empty it would make the longitude not
// available, so the completion fills it in; the record does not keep it, so `DecodeCheckedSentence` gives it apart.
inline constexpr unsigned char kRmcVariationDirection = 11;

// GSV: up to four satellites of four fields each, then the signal id.
inline constexpr unsigned char kGsvFirstSatellite = 4;
inline constexpr unsigned char kGsvFieldsPerSatellite = 4;
inline constexpr unsigned char kGsvSignalId = kGsvFirstSatellite + 4 * kGsvFieldsPerSatellite;

// What makes a short or older sentence whole.
struct S_Completion {
  std::size_t fields;                     // of a whole sentence: its name counts, its checksum does not
  void (*arrange)(t_NmeaFields& fields);  // before missing fields are appended, and after that; null: nothing to do
  void (*amend)(t_NmeaFields& fields);
};

// All that is known of a sentence. The tables are in NmeaSentences.cpp.
template <class Record>
struct S_NmeaSentence {
  t_SentenceType type;
  unsigned char minFields;  // that a decoder asks for: the name and the checksum count
  unsigned int (*read)(const t_NmeaFields& fields, Record& record, TimeDigits digits);  // all fields, by their rules
  unsigned int (*write)(C_SentenceText& sentence, const Record& record);
  Record empty;  // every value at its marker
  S_Completion completion;
};

// Not inline: their rules refer to templates that only one source needs to see.
extern const S_NmeaSentence<S_GGA_Data> kGga;
extern const S_NmeaSentence<S_GNS_Data> kGns;
extern const S_NmeaSentence<S_ZDA_Data> kZda;
extern const S_NmeaSentence<S_GLL_Data> kGll;
extern const S_NmeaSentence<S_GSV_Data> kGsv;
extern const S_NmeaSentence<S_GSA_Data> kGsa;
extern const S_NmeaSentence<S_RMC_Data> kRmc;
extern const S_NmeaSentence<S_VTG_Data> kVtg;

// Gives the table of a type and the member of the union for its record to `visit`, and back what that gives;
// `eResultUnknownMessage` for any other type.
template <class Visitor>
unsigned int VisitSentence(t_SentenceType type, Visitor visit) {
  switch (type) {
    case C_RawDataMessage::eNmeaGGA:
      return visit(kGga, &U_EcdDcdData::gga);
    case C_RawDataMessage::eNmeaGLL:
      return visit(kGll, &U_EcdDcdData::gll);
    case C_RawDataMessage::eNmeaGNS:
      return visit(kGns, &U_EcdDcdData::gns);
    case C_RawDataMessage::eNmeaGSA:
      return visit(kGsa, &U_EcdDcdData::gsa);
    case C_RawDataMessage::eNmeaGSV:
      return visit(kGsv, &U_EcdDcdData::gsv);
    case C_RawDataMessage::eNmeaRMC:
      return visit(kRmc, &U_EcdDcdData::rmc);
    case C_RawDataMessage::eNmeaVTG:
      return visit(kVtg, &U_EcdDcdData::vtg);
    case C_RawDataMessage::eNmeaZDA:
      return visit(kZda, &U_EcdDcdData::zda);
    default:
      return eResultUnknownMessage;
  }
}

// What the first six characters of a sentence say: "$", talker, sentence id.
inline t_SentenceType TypeOf(std::string_view sentence) {
  // "$GPGGA"
  constexpr std::size_t kLength = 6;
  if (sentence.size() < kLength || sentence[0] != '$') return C_RawDataMessage::eNmeaUnknown;
  return SentenceIds::Find(sentence.data() + 3);
}

// Sets all bytes to zero. In halves: compilers clear so few bytes by single stores, the whole union at once by a string
// instruction, which takes several times as long.
inline void SetZero(U_EcdDcdData& data) {
  constexpr std::size_t kHalf = sizeof data / 2;
  unsigned char* const bytes = reinterpret_cast<unsigned char*>(&data);
  std::memset(bytes, 0, kHalf);
  std::memset(bytes + kHalf, 0, sizeof data - kHalf);
}

// Sets every value to its marker, and the padding to zero.
template <class Record>
void SetEmpty(const S_NmeaSentence<Record>& sentence, Record& record) {
  // By memcpy, because an assignment may leave the padding as it was.
  std::memcpy(&record, &sentence.empty, sizeof record);
}

// Fields to record, which must be empty. `type` is what the text of the fields begins with. The talker is stored as
// soon as field 0 can be one, whatever its id.
template <class Record>
[[nodiscard]] unsigned int DecodeFields(const S_NmeaSentence<Record>& sentence, const t_NmeaFields& fields,
                                        t_SentenceType type, Record& record,
                                        TimeDigits digits = TimeDigits::Hundredths) {
  // Longer ids pass as long as they begin with a known one.
  constexpr std::size_t kMinId = 6;
  if (fields.Count() < sentence.minFields) return eResultBadField;
  const std::string_view id = fields[0];
  if (fields.Readable() == 0 || id.size() < kMinId || id[0] != '$') return eResultWrongSentence;
  std::memcpy(record.talker, id.data() + 1, sizeof record.talker);
  return type == sentence.type ? sentence.read(fields, record, digits) : eResultWrongSentence;
}

// Appends the sentence of a record to an empty text, up to its last field. The talker must have two characters.
template <class Record>
[[nodiscard]] unsigned int AppendSentence(C_SentenceText& sentence, const S_NmeaSentence<Record>& rules,
                                          const Record& record) {
  // Room for the address is not a question: the text is empty.
  sentence.AppendUnchecked("$");
  sentence.AppendUnchecked({record.talker, sizeof record.talker});
  sentence.AppendUnchecked(C_NMEA_EncodeDecode::mppz_NmeaMsgIDs[rules.type]);
  return rules.write(sentence, record);
}

}  // namespace velagnss::textproto

#endif  // VELAGNSS_TEXTPROTO_NMEA_SENTENCES_H
