#include "textproto/NmeaSentences.h"

#include <iterator>

#include "geo/NotAvailable.h"
#include "textproto/NmeaFieldRules.h"

namespace {

using namespace NmeaFieldRules;

constexpr unsigned int kNoQuality = 10;
constexpr signed char kNoZone = -64;

// --- Fields of one sentence only ---

// GGA: the age has a meaning only beside a reference station.
constexpr S_FieldRule<S_GGA_Data> DifferentialAge(std::string_view format) {
  S_FieldRule<S_GGA_Data> result = Number<&S_GGA_Data::differentialAge>(format);
  result.write = [](C_SentenceText& sentence, const S_FieldRule<S_GGA_Data>& rule, const S_GGA_Data& record) {
    const bool hasStation = record.referenceStation != 0 && !IsNotAvailable(record.referenceStation);
    return AppendValue(sentence, rule.format, NA_DOUBLE, hasStation ? record.differentialAge : NA_DOUBLE, true);
  };
  return result;
}

unsigned int ReadModes(std::string_view field, const S_FieldRule<S_GNS_Data>&, S_GNS_Data& record) {
  if (field.size() > std::size(record.mode)) return eResultOutOfRange;
  for (std::size_t i = 0; i < field.size(); ++i) record.mode[i] = t_Nmea::GetModIndicatorEnum(field[i]);
  return eResultOk;
}

// GNS: one letter per system, up to the first empty slot. Only the talker of a combined solution ("GN") has them.
unsigned int WriteModes(C_SentenceText& sentence, const S_FieldRule<S_GNS_Data>&, const S_GNS_Data& record) {
  C_FieldText letters;
  for (const eNmeaModeIndicator mode : record.mode) {
    if (mode == eNmeaModeEmpty) break;
    letters.Add(t_Nmea::GetModIndicatorChar(mode));
  }
  if (!letters.View().empty() && record.talker[1] != 'N') return eResultTalker;
  return AppendText(sentence, letters.View());
}

// RMC: kept as a flag, and an empty field takes the longitude away: both of long standing.
unsigned int ReadVariationDirection(std::string_view field, const S_FieldRule<S_RMC_Data>&, S_RMC_Data& record) {
  if (field.empty()) {
    record.longitude = NA_DOUBLE;
  } else if (field != "E") {
    record.variationDirection = field == "W" ? 0 : 1;
  }
  return eResultOk;
}

unsigned int WriteVariationDirection(C_SentenceText& sentence, const S_FieldRule<S_RMC_Data>&,
                                     const S_RMC_Data& record) {
  const char letter = static_cast<char>(record.variationDirection);
  const bool isLetter = (letter >= 'A' && letter <= 'Z') || (letter >= 'a' && letter <= 'z');
  return AppendLetter(sentence, isLetter ? letter : '\0');
}

// --- The sentences ---

// clang-format off

// $GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,*47
constexpr S_FieldRule<S_GGA_Data> kGgaFields[] = {
    Time<&S_GGA_Data::timeOfDay>(),
    Latitude<&S_GGA_Data::latitude>(),
    LatitudeLetter<&S_GGA_Data::latitude>(),
    Longitude<&S_GGA_Data::longitude>(),
    LongitudeLetter<&S_GGA_Data::longitude>(),
    Number<&S_GGA_Data::quality, kNoQuality>("%d"),
    Number<&S_GGA_Data::satellites>("%02d"),
    Number<&S_GGA_Data::hdop>("%.1lf"),
    Number<&S_GGA_Data::altitude>("%.3lf"),
    Unit<S_GGA_Data>("M"),
    Number<&S_GGA_Data::geoidSeparation>("%.3lf"),
    Unit<S_GGA_Data>("M"),
    DifferentialAge("%.1lf"),
    Number<&S_GGA_Data::referenceStation>("%04d"),
};

// $GNGNS,014035.00,4332.69262,S,17235.48549,E,RR,13,0.9,25.63,11.24,,,V*0A
constexpr S_FieldRule<S_GNS_Data> kGnsFields[] = {
    Time<&S_GNS_Data::timeOfDay>(),
    Latitude<&S_GNS_Data::latitude>(),
    LatitudeLetter<&S_GNS_Data::latitude>(),
    Longitude<&S_GNS_Data::longitude>(),
    LongitudeLetter<&S_GNS_Data::longitude>(),
    {ReadModes, WriteModes},
    Number<&S_GNS_Data::satellites>("%d"),
    Number<&S_GNS_Data::hdop>("%.1lf"),
    Number<&S_GNS_Data::altitude>("%.3lf"),
    Number<&S_GNS_Data::geoidSeparation>("%.3lf"),
    Number<&S_GNS_Data::differentialAge>("%.1lf"),
    Number<&S_GNS_Data::referenceStation>("%04d"),
    OnlyBeyond(14, NavStatus<&S_GNS_Data::navStatus>()),  // without it the checksum is the 14th
};

// $GPZDA,160012.71,11,03,2004,-1,00*7D
constexpr S_FieldRule<S_ZDA_Data> kZdaFields[] = {
    Time<&S_ZDA_Data::timeOfDay>(),
    Number<&S_ZDA_Data::day>("%02d"),
    Number<&S_ZDA_Data::month>("%02d"),
    Number<&S_ZDA_Data::year>("%04d"),
    Number<&S_ZDA_Data::zoneHours, kNoZone>("%02d"),
    Number<&S_ZDA_Data::zoneMinutes>("%02d"),
};

// $GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41
constexpr S_FieldRule<S_GLL_Data> kGllFields[] = {
    Latitude<&S_GLL_Data::latitude>(),
    LatitudeLetter<&S_GLL_Data::latitude>(),
    Longitude<&S_GLL_Data::longitude>(),
    LongitudeLetter<&S_GLL_Data::longitude>(),
    Time<&S_GLL_Data::timeOfDay>(),
    Code<&S_GLL_Data::status, t_Nmea::GetSysStatusEnum_GLL, t_Nmea::GetSysStatusChar_GLL>(),
    Mode<&S_GLL_Data::mode>(),
};

constexpr auto Satellite(unsigned char i) { return Number<&S_GSV_Data::satelliteId>("%02d", i); }
constexpr auto Elevation(unsigned char i) { return Number<&S_GSV_Data::elevation>("%02d", i); }
constexpr auto Azimuth(unsigned char i) { return Number<&S_GSV_Data::azimuth>("%03d", i); }
constexpr auto Snr(unsigned char i) { return Number<&S_GSV_Data::snr>("%02d", i); }

// $GPGSV,3,1,11,03,03,111,00,04,15,270,00,06,01,010,00,13,06,292,00,1*69
constexpr S_FieldRule<S_GSV_Data> kGsvFields[] = {
    Number<&S_GSV_Data::totalSentences>("%d"),
    Number<&S_GSV_Data::sentenceNumber>("%d"),
    Number<&S_GSV_Data::satellitesInView>("%02d"),
    Satellite(0), Elevation(0), Azimuth(0), Snr(0),
    Satellite(1), Elevation(1), Azimuth(1), Snr(1),
    Satellite(2), Elevation(2), Azimuth(2), Snr(2),
    Satellite(3), Elevation(3), Azimuth(3), Snr(3),
    Number<&S_GSV_Data::signalId>("%d"),
};

constexpr auto UsedSatellite(unsigned char i) { return Number<&S_GSA_Data::satelliteId>("%02d", i); }

// $GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,2*09
constexpr S_FieldRule<S_GSA_Data> kGsaFields[] = {
    OneOf<&S_GSA_Data::operationMode>("MA"),
    OneOf<&S_GSA_Data::fixType>("123"),
    UsedSatellite(0), UsedSatellite(1), UsedSatellite(2),  UsedSatellite(3),
    UsedSatellite(4), UsedSatellite(5), UsedSatellite(6),  UsedSatellite(7),
    UsedSatellite(8), UsedSatellite(9), UsedSatellite(10), UsedSatellite(11),
    Number<&S_GSA_Data::pdop>("%.1lf"),
    Number<&S_GSA_Data::hdop>("%.1lf"),
    Number<&S_GSA_Data::vdop>("%.1lf"),
    Number<&S_GSA_Data::systemId>("%d"),
};

// $GPRMC,225446.33,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E,A,V*51
constexpr S_FieldRule<S_RMC_Data> kRmcFields[] = {
    Time<&S_RMC_Data::timeOfDay>(),
    Code<&S_RMC_Data::status, t_Nmea::GetSysStatusEnum_RMC, t_Nmea::GetSysStatusChar_RMC>(),
    Latitude<&S_RMC_Data::latitude>(),
    LatitudeLetter<&S_RMC_Data::latitude>(),
    Longitude<&S_RMC_Data::longitude>(),
    LongitudeLetter<&S_RMC_Data::longitude>(),
    Number<&S_RMC_Data::speedKnots>("%.3lf"),
    Number<&S_RMC_Data::courseTrue>("%.2lf"),
    Date<S_RMC_Data>(),
    Number<&S_RMC_Data::magneticVariation>("%.2lf"),
    {ReadVariationDirection, WriteVariationDirection},
    Mode<&S_RMC_Data::mode>(),
    NavStatus<&S_RMC_Data::navStatus>(),
};

// $GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,A*25
constexpr S_FieldRule<S_VTG_Data> kVtgFields[] = {
    Number<&S_VTG_Data::courseTrue>("%.2lf"),
    Unit<S_VTG_Data>("T"),
    Number<&S_VTG_Data::courseMagnetic>("%.2lf"),
    Unit<S_VTG_Data>("M"),
    Number<&S_VTG_Data::speedKnots>("%.2lf"),
    Unit<S_VTG_Data>("N"),
    Number<&S_VTG_Data::speedKmh>("%.2lf"),
    Unit<S_VTG_Data>("K"),
    Mode<&S_VTG_Data::mode>(),
};

// --- The records as a reset leaves them ---

constexpr S_GGA_Data kNoGga = {
    .talker = {}, .timeOfDay = NA_DOUBLE, .latitude = NA_DOUBLE, .longitude = NA_DOUBLE, .quality = kNoQuality,
    .satellites = NA_U8, .hdop = NA_DOUBLE, .altitude = NA_DOUBLE, .geoidSeparation = NA_DOUBLE,
    .differentialAge = NA_DOUBLE, .referenceStation = NA_U16};
constexpr S_GNS_Data kNoGns = {
    .talker = {}, .timeOfDay = NA_DOUBLE, .latitude = NA_DOUBLE, .longitude = NA_DOUBLE,
    .mode = {eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty, eNmeaModeEmpty},
    .satellites = NA_U8, .hdop = NA_DOUBLE, .altitude = NA_DOUBLE, .geoidSeparation = NA_DOUBLE,
    .differentialAge = NA_DOUBLE, .referenceStation = NA_U16, .navStatus = eNmeaNavEmpty};
constexpr S_ZDA_Data kNoZda = {
    .talker = {}, .year = NA_U16, .month = NA_U8, .day = NA_U8, .timeOfDay = NA_DOUBLE, .zoneHours = kNoZone,
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

using t_Type = C_RawDataMessage;

}  // namespace

//                                                      type      least fields
constinit const S_SentenceRules<S_GGA_Data> kGgaRules = {t_Type::eNmeaGGA, 16, kGgaFields, kNoGga};
constinit const S_SentenceRules<S_GNS_Data> kGnsRules = {t_Type::eNmeaGNS, 14, kGnsFields, kNoGns};
constinit const S_SentenceRules<S_ZDA_Data> kZdaRules = {t_Type::eNmeaZDA, 8,  kZdaFields, kNoZda};
constinit const S_SentenceRules<S_GLL_Data> kGllRules = {t_Type::eNmeaGLL, 9,  kGllFields, kNoGll};
constinit const S_SentenceRules<S_GSV_Data> kGsvRules = {t_Type::eNmeaGSV, 9,  kGsvFields, kNoGsv};
constinit const S_SentenceRules<S_GSA_Data> kGsaRules = {t_Type::eNmeaGSA, 19, kGsaFields, kNoGsa};
constinit const S_SentenceRules<S_RMC_Data> kRmcRules = {t_Type::eNmeaRMC, 15, kRmcFields, kNoRmc};
constinit const S_SentenceRules<S_VTG_Data> kVtgRules = {t_Type::eNmeaVTG, 11, kVtgFields, kNoVtg};
// clang-format on
