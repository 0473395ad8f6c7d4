// One table of rules per sentence, in the order of NMEA 0183, each with a sample. The readers and writers that only one
// sentence needs are here too; those that several share are in NmeaFieldKinds.h.
#include "textproto/NmeaSentences.h"

#include <cstdlib>
#include <iterator>

#include "geo/NotAvailable.h"
#include "textproto/NmeaCompletion.h"
#include "textproto/NmeaFieldKinds.h"

namespace velagnss::textproto {
namespace {

using namespace NmeaFieldKinds;

// --- Fields of one sentence only ---

// GGA: read in 16 bits, kept in 32.
unsigned int ReadQuality(std::string_view field, unsigned int, S_GGA_Data& record) {
  unsigned short quality = 0;
  const bool isRead = ParseFieldU16(field, kNoGgaQuality, quality);
  record.quality = quality;
  return ResultOf(isRead);
}

unsigned int WriteQuality(C_SentenceText& sentence, const S_GGA_Data& record) {
  return AppendValue<int>(sentence, kInteger, kNoGgaQuality, static_cast<int>(record.quality), true);
}

// GGA: the age has a meaning only together with a reference station.
unsigned int WriteDifferentialAge(C_SentenceText& sentence, const S_GGA_Data& record) {
  const bool hasStation = record.referenceStation != 0 && !IsNotAvailable(record.referenceStation);
  return AppendNumber(sentence, kOneDecimal, hasStation ? record.differentialAge : NA_DOUBLE);
}

// GNS: a letter per system.
unsigned int ReadModes(std::string_view field, unsigned int, S_GNS_Data& record) {
  if (field.size() > std::size(record.mode)) return eResultOutOfRange;
  for (std::size_t i = 0; i < field.size(); ++i) record.mode[i] = t_Nmea::GetModIndicatorEnum(field[i]);
  return eResultOk;
}

// Up to the first empty slot. Only the talker of a combined solution ("GN") has modes.
unsigned int WriteModes(C_SentenceText& sentence, const S_GNS_Data& record) {
  C_FieldText letters;
  for (const eNmeaModeIndicator mode : record.mode) {
    if (mode == eNmeaModeEmpty) break;
    letters.Add(t_Nmea::GetModIndicatorChar(mode));
  }
  if (!letters.View().empty() && record.talker[1] != 'N') return eResultTalker;
  return AppendText(sentence, letters.View());
}

// ZDA: hours of the zone have a sign, and a marker that no zone can be.
unsigned int ReadZoneHours(std::string_view field, unsigned int, S_ZDA_Data& record) {
  return ResultOf(ParseFieldS8(field, kNoZoneHours, record.zoneHours));
}

unsigned int WriteZoneHours(C_SentenceText& sentence, const S_ZDA_Data& record) {
  return AppendValue<int>(sentence, kTwoDigits, kNoZoneHours, record.zoneHours, true);
}

// ZDA: two digits do not say which century; RMC has the same.
unsigned int ReadFullYear(std::string_view field, unsigned int index, S_ZDA_Data& record) {
  const unsigned int result = Number<&S_ZDA_Data::year>(field, index, record);
  if (record.year < 100) record.year = static_cast<unsigned short>(record.year + 2000);
  return result;
}

constexpr S_FieldKind<S_ZDA_Data> Year = {Number<&S_ZDA_Data::year>, WriteNumber<&S_ZDA_Data::year, kFourDigits>,
                                          ReadFullYear};

// GSV: one element of an array. Written whether used or not: fields are read by their position.
template <auto Member, std::size_t I>
unsigned int ReadElement(std::string_view field, unsigned int, S_GSV_Data& record) {
  return ResultOf(ReadNumber(field, (record.*Member)[I]));
}

template <auto Member, std::size_t I, const C_PrintFormat& Format>
unsigned int WriteElement(C_SentenceText& sentence, const S_GSV_Data& record) {
  return AppendNumber(sentence, Format, (record.*Member)[I]);
}

template <auto Member, std::size_t I, const C_PrintFormat& Format>
constexpr S_FieldKind<S_GSV_Data> ElementAs = {ReadElement<Member, I>, WriteElement<Member, I, Format>};

// RMC: kept as a flag, and an empty field makes the longitude not available. Both are odd, known and kept.
unsigned int ReadVariationDirection(std::string_view field, unsigned int, S_RMC_Data& record) {
  if (field.empty()) {
    record.longitude = NA_DOUBLE;
  } else if (field != "E") {
    record.variationDirection = field == "W" ? 0 : 1;
  }
  return eResultOk;
}

unsigned int WriteVariationDirection(C_SentenceText& sentence, const S_RMC_Data& record) {
  const char letter = static_cast<char>(record.variationDirection);
  const bool isLetter = (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
  return AppendLetter(sentence, isLetter ? letter : '\0');
}

// --- The sentences: first field, number of fields, and what they are ---

// clang-format off

// $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
constexpr S_FieldRule<S_GGA_Data> kGgaRules[] = {
    {1,  1, Time<&S_GGA_Data::timeOfDay>},
    {2,  2, Latitude<&S_GGA_Data::latitude>},
    {4,  2, Longitude<&S_GGA_Data::longitude>},
    {6,  1, {ReadQuality, WriteQuality}},
    {7,  1, NumberAs<&S_GGA_Data::satellites, kTwoDigits>},
    {8,  1, NumberAs<&S_GGA_Data::hdop, kOneDecimal>},
    {9,  1, NumberAs<&S_GGA_Data::altitude, kThreeDecimals>},
    {10, 1, Unit<S_GGA_Data, 'M'>},
    {11, 1, NumberAs<&S_GGA_Data::geoidSeparation, kThreeDecimals>},
    {12, 1, Unit<S_GGA_Data, 'M'>},
    {13, 1, {Number<&S_GGA_Data::differentialAge>, WriteDifferentialAge}},
    {14, 1, NumberAs<&S_GGA_Data::referenceStation, kFourDigits>},
};

// $GNGNS,014035.00,4332.69262,S,17235.48549,E,RR,13,0.9,25.63,11.24,,,V*0A
constexpr S_FieldRule<S_GNS_Data> kGnsRules[] = {
    {1,  1, Time<&S_GNS_Data::timeOfDay>},
    {2,  2, Latitude<&S_GNS_Data::latitude>},
    {4,  2, Longitude<&S_GNS_Data::longitude>},
    {6,  1, {ReadModes, WriteModes}},
    {7,  1, NumberAs<&S_GNS_Data::satellites, kInteger>},
    {8,  1, NumberAs<&S_GNS_Data::hdop, kOneDecimal>},
    {9,  1, NumberAs<&S_GNS_Data::altitude, kThreeDecimals>},
    {10, 1, NumberAs<&S_GNS_Data::geoidSeparation, kThreeDecimals>},
    {11, 1, NumberAs<&S_GNS_Data::differentialAge, kOneDecimal>},
    {12, 1, NumberAs<&S_GNS_Data::referenceStation, kFourDigits>},
    {13, 1, NavStatus<&S_GNS_Data::navStatus>, 14},  // in a sentence of 14 fields the 14th is the checksum
};

// $GPZDA,160012.71,11,03,2004,-1,00*7D
constexpr S_FieldRule<S_ZDA_Data> kZdaRules[] = {
    {1, 1, Time<&S_ZDA_Data::timeOfDay>},
    {2, 1, NumberAs<&S_ZDA_Data::day, kTwoDigits>},
    {3, 1, NumberAs<&S_ZDA_Data::month, kTwoDigits>},
    {4, 1, Year},
    {5, 1, {ReadZoneHours, WriteZoneHours}},
    {6, 1, NumberAs<&S_ZDA_Data::zoneMinutes, kTwoDigits>},
};

// $GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41
constexpr S_FieldRule<S_GLL_Data> kGllRules[] = {
    {1, 2, Latitude<&S_GLL_Data::latitude>},
    {3, 2, Longitude<&S_GLL_Data::longitude>},
    {5, 1, Time<&S_GLL_Data::timeOfDay>},
    {6, 1, Code<&S_GLL_Data::status, t_Nmea::GetSysStatusEnum_GLL, t_Nmea::GetSysStatusChar_GLL>},
    {7, 1, Mode<&S_GLL_Data::mode>},
};

// $GPGSV,3,1,11,03,03,111,00,04,15,270,00,06,01,010,00,13,06,292,00,1*69
constexpr S_FieldRule<S_GSV_Data> kGsvRules[] = {
    {1, 1, NumberAs<&S_GSV_Data::totalSentences, kInteger>},
    {2, 1, NumberAs<&S_GSV_Data::sentenceNumber, kInteger>},
    {3, 1, NumberAs<&S_GSV_Data::satellitesInView, kTwoDigits>},
    {kGsvFirstSatellite, 1, ElementAs<&S_GSV_Data::satelliteId, 0, kTwoDigits>},
    {5, 1, ElementAs<&S_GSV_Data::elevation, 0, kTwoDigits>},
    {6, 1, ElementAs<&S_GSV_Data::azimuth, 0, kThreeDigits>},
    {7, 1, ElementAs<&S_GSV_Data::snr, 0, kTwoDigits>},
    {8, 1, ElementAs<&S_GSV_Data::satelliteId, 1, kTwoDigits>},
    {9, 1, ElementAs<&S_GSV_Data::elevation, 1, kTwoDigits>},
    {10, 1, ElementAs<&S_GSV_Data::azimuth, 1, kThreeDigits>},
    {11, 1, ElementAs<&S_GSV_Data::snr, 1, kTwoDigits>},
    {12, 1, ElementAs<&S_GSV_Data::satelliteId, 2, kTwoDigits>},
    {13, 1, ElementAs<&S_GSV_Data::elevation, 2, kTwoDigits>},
    {14, 1, ElementAs<&S_GSV_Data::azimuth, 2, kThreeDigits>},
    {15, 1, ElementAs<&S_GSV_Data::snr, 2, kTwoDigits>},
    {16, 1, ElementAs<&S_GSV_Data::satelliteId, 3, kTwoDigits>},
    {17, 1, ElementAs<&S_GSV_Data::elevation, 3, kTwoDigits>},
    {18, 1, ElementAs<&S_GSV_Data::azimuth, 3, kThreeDigits>},
    {19, 1, ElementAs<&S_GSV_Data::snr, 3, kTwoDigits>},
    {kGsvSignalId, 1, NumberAs<&S_GSV_Data::signalId, kInteger>},
};

// $GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,2*09
constexpr S_FieldRule<S_GSA_Data> kGsaRules[] = {
    {1,  1,  OneOf<&S_GSA_Data::operationMode, 'M', 'A'>},
    {2,  1,  OneOf<&S_GSA_Data::fixType, '1', '2', '3'>},
    {3,  12, NumberAs<&S_GSA_Data::satelliteId, kTwoDigits>},
    {15, 1,  NumberAs<&S_GSA_Data::pdop, kOneDecimal>},
    {16, 1,  NumberAs<&S_GSA_Data::hdop, kOneDecimal>},
    {17, 1,  NumberAs<&S_GSA_Data::vdop, kOneDecimal>},
    {18, 1,  NumberAs<&S_GSA_Data::systemId, kInteger>},
};

// $GPRMC,225446.33,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E,A,V*51
constexpr S_FieldRule<S_RMC_Data> kRmcRules[] = {
    {1,  1, Time<&S_RMC_Data::timeOfDay>},
    {2,  1, Code<&S_RMC_Data::status, t_Nmea::GetSysStatusEnum_RMC, t_Nmea::GetSysStatusChar_RMC>},
    {3,  2, Latitude<&S_RMC_Data::latitude>},
    {5,  2, Longitude<&S_RMC_Data::longitude>},
    {7,  1, NumberAs<&S_RMC_Data::speedKnots, kThreeDecimals>},
    {8,  1, NumberAs<&S_RMC_Data::courseTrue, kTwoDecimals>},
    {9,  1, Date<S_RMC_Data>},
    {10, 1, NumberAs<&S_RMC_Data::magneticVariation, kTwoDecimals>},
    {kRmcVariationDirection, 1, {ReadVariationDirection, WriteVariationDirection}},
    {12, 1, Mode<&S_RMC_Data::mode>},
    {13, 1, NavStatus<&S_RMC_Data::navStatus>},
};

// $GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,A*25
constexpr S_FieldRule<S_VTG_Data> kVtgRules[] = {
    {1, 1, NumberAs<&S_VTG_Data::courseTrue, kTwoDecimals>},
    {2, 1, Unit<S_VTG_Data, 'T'>},
    {3, 1, NumberAs<&S_VTG_Data::courseMagnetic, kTwoDecimals>},
    {4, 1, Unit<S_VTG_Data, 'M'>},
    {5, 1, NumberAs<&S_VTG_Data::speedKnots, kTwoDecimals>},
    {6, 1, Unit<S_VTG_Data, 'N'>},
    {7, 1, NumberAs<&S_VTG_Data::speedKmh, kTwoDecimals>},
    {8, 1, Unit<S_VTG_Data, 'K'>},
    {9, 1, Mode<&S_VTG_Data::mode>},
};

// --- The records as a reset leaves them ---

constexpr S_GGA_Data kNoGga = {
    .talker = {}, .timeOfDay = NA_DOUBLE, .latitude = NA_DOUBLE, .longitude = NA_DOUBLE, .quality = kNoGgaQuality,
    .satellites = NA_U8, .hdop = NA_DOUBLE, .altitude = NA_DOUBLE, .geoidSeparation = NA_DOUBLE,
    .differentialAge = NA_DOUBLE, .referenceStation = NA_U16};
constexpr S_GNS_Data kNoGns = {
    .talker = {}, .timeOfDay = NA_DOUBLE, .latitude = NA_DOUBLE, .longitude = NA_DOUBLE,
    .mode = {eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty},
    .satellites = NA_U8, .hdop = NA_DOUBLE, .altitude = NA_DOUBLE, .geoidSeparation = NA_DOUBLE,
    .differentialAge = NA_DOUBLE, .referenceStation = NA_U16, .navStatus = eNmeaNavEmpty};
constexpr S_ZDA_Data kNoZda = {
    .talker = {}, .year = NA_U16, .month = NA_U8, .day = NA_U8, .timeOfDay = NA_DOUBLE, .zoneHours = kNoZoneHours,
    .zoneMinutes = NA_U8};
constexpr S_GLL_Data kNoGll = {
    .talker = {}, .timeOfDay = NA_DOUBLE, .latitude = NA_DOUBLE, .longitude = NA_DOUBLE, .status = eNmeaGllEmpty,
    .mode = eNmeaModeEmpty};
constexpr S_GSV_Data kNoGsv = {
    .talker = {}, .totalSentences = NA_U8, .sentenceNumber = NA_U8, .satellitesInView = NA_U8,
    .satelliteId = {NA_U8, NA_U8, NA_U8, NA_U8}, .elevation = {NA_U8, NA_U8, NA_U8, NA_U8},
    .azimuth = {NA_U16, NA_U16, NA_U16, NA_U16}, .snr = {NA_U8, NA_U8, NA_U8, NA_U8}, .signalId = NA_U8};
constexpr S_GSA_Data kNoGsa = {
    .talker = {}, .operationMode = 0, .fixType = 0,
    .satelliteId = {NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8, NA_U8},
    .pdop = NA_DOUBLE, .hdop = NA_DOUBLE, .vdop = NA_DOUBLE, .systemId = NA_U8};
constexpr S_RMC_Data kNoRmc = {
    .talker = {}, .year = NA_U16, .month = NA_U8, .day = NA_U8, .timeOfDay = NA_DOUBLE, .latitude = NA_DOUBLE,
    .longitude = NA_DOUBLE, .speedKnots = NA_DOUBLE, .courseTrue = NA_DOUBLE, .magneticVariation = NA_DOUBLE,
    .variationDirection = 0, .mode = eNmeaModeEmpty, .status = eNmeaRmcEmpty, .navStatus = eNmeaNavEmpty};
constexpr S_VTG_Data kNoVtg = {
    .talker = {}, .courseTrue = NA_DOUBLE, .courseMagnetic = NA_DOUBLE, .speedKnots = NA_DOUBLE,
    .speedKmh = NA_DOUBLE, .mode = eNmeaModeEmpty};

// How many fields a whole sentence has, its name included.
template <class Record, std::size_t N>
consteval std::size_t FieldsOf(const S_FieldRule<Record> (&rules)[N]) {
  const std::size_t end = EndOfFields(std::span<const S_FieldRule<Record>>(rules), 1);
  if (end == 0) std::abort();  // the compiler stops here: a gap or an overlap in the table
  return end;
}

using t_Complete = void (*)(t_NmeaFields& fields);

template <const auto& Rules, class Record>
consteval S_NmeaSentence<Record> Sentence(t_SentenceType type, unsigned char minFields, const Record& empty,
                                          t_Complete arrange = nullptr, t_Complete amend = nullptr) {
  return {type,
          minFields,
          ReadFieldsOf<Rules, t_NmeaFields, Record>,
          WriteFieldsOf<Rules, Record>,
          empty,
          {FieldsOf(Rules), arrange, amend}};
}

using t_Type = C_RawDataMessage;

}  // namespace

//                                                                                minFields empty   arrange     amend
constinit const S_NmeaSentence<S_GGA_Data> kGga = Sentence<kGgaRules>(t_Type::eNmeaGGA, 16, kNoGga);
constinit const S_NmeaSentence<S_GNS_Data> kGns = Sentence<kGnsRules>(t_Type::eNmeaGNS, 14, kNoGns);
constinit const S_NmeaSentence<S_ZDA_Data> kZda = Sentence<kZdaRules>(t_Type::eNmeaZDA, 8,  kNoZda);
constinit const S_NmeaSentence<S_GLL_Data> kGll = Sentence<kGllRules>(t_Type::eNmeaGLL, 9,  kNoGll);
constinit const S_NmeaSentence<S_GSV_Data> kGsv = Sentence<kGsvRules>(t_Type::eNmeaGSV, 9,  kNoGsv, ArrangeGsv, AmendGsv);
constinit const S_NmeaSentence<S_GSA_Data> kGsa = Sentence<kGsaRules>(t_Type::eNmeaGSA, 19, kNoGsa);
constinit const S_NmeaSentence<S_RMC_Data> kRmc = Sentence<kRmcRules>(t_Type::eNmeaRMC, 15, kNoRmc, nullptr,    AmendRmc);
constinit const S_NmeaSentence<S_VTG_Data> kVtg = Sentence<kVtgRules>(t_Type::eNmeaVTG, 11, kNoVtg, ArrangeVtg);
// clang-format on

}  // namespace velagnss::textproto
