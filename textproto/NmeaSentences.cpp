#include "textproto/NmeaSentences.h"

#include <type_traits>

#include "geo/NotAvailable.h"
#include "textproto/FieldParsers.h"

namespace {

using t_Nmea = C_NMEA_EncodeDecode;

// --- Members ---

template <auto Member>
struct S_MemberOf;
template <class Record, class Type, Type Record::*Member>
struct S_MemberOf<Member> {
  using t_Record = Record;
  using t_Value = std::remove_extent_t<Type>;
};
template <auto Member>
using t_RecordOf = typename S_MemberOf<Member>::t_Record;
template <auto Member>
using t_ValueOf = typename S_MemberOf<Member>::t_Value;
template <auto Member>
using t_RuleOf = S_FieldRule<t_RecordOf<Member>>;

// The member, or the rule's element of a member that is an array.
template <auto Member, class Record>
auto& ValueOf(Record& record, const S_FieldRule<std::remove_const_t<Record>>& rule) {
  if constexpr (std::is_array_v<std::remove_reference_t<decltype(record.*Member)>>)
    return (record.*Member)[rule.index];
  else
    return record.*Member;
}

template <class Value>
constexpr Value kMarker = Value{};
template <>
constexpr double kMarker<double> = NA_DOUBLE;
template <>
constexpr unsigned char kMarker<unsigned char> = NA_U8;
template <>
constexpr unsigned short kMarker<unsigned short> = NA_U16;

constexpr unsigned int kNoQuality = 10;
constexpr signed char kNoZone = -64;

constexpr unsigned int ResultOf(bool isRead) { return isRead ? eResultOk : eResultBadField; }

[[nodiscard]] unsigned int AppendText(C_SentenceText& sentence, std::string_view text) {
  C_FieldText field;
  field.Add(',');
  field.Add(text);
  return sentence.Append(field);
}

// A single character; NUL is an empty field.
[[nodiscard]] unsigned int AppendLetter(C_SentenceText& sentence, char letter) {
  return AppendText(sentence, {&letter, letter == '\0' ? 0U : 1U});
}

// --- Numbers: an empty field is the marker ---

bool ReadNumber(std::string_view field, double marker, double& value) {
  return UTIL::ParseFieldDBL(field, marker, value);
}
bool ReadNumber(std::string_view field, unsigned char marker, unsigned char& value) {
  return UTIL::ParseFieldU8(field, marker, value);
}
bool ReadNumber(std::string_view field, signed char marker, signed char& value) {
  return UTIL::ParseFieldS8(field, marker, value);
}
bool ReadNumber(std::string_view field, unsigned short marker, unsigned short& value) {
  return UTIL::ParseFieldU16(field, marker, value);
}
// In 16 bits on the wire
bool ReadNumber(std::string_view field, unsigned int marker, unsigned int& value) {
  unsigned short narrow;
  const bool isRead = UTIL::ParseFieldU16(field, static_cast<unsigned short>(marker), narrow);
  value = narrow;
  return isRead;
}

template <auto Member, const t_ValueOf<Member>& Marker>
constexpr t_RuleOf<Member> Number(std::string_view format, unsigned char index = 0) {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  using t_Printed = std::conditional_t<std::is_same_v<t_ValueOf<Member>, double>, double, int>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule& rule, t_Record& record) {
    return ResultOf(ReadNumber(field, Marker, ValueOf<Member>(record, rule)));
  };
  result.write = [](C_SentenceText& sentence, const t_Rule& rule, const t_Record& record) {
    const auto value = static_cast<t_Printed>(ValueOf<Member>(record, rule));
    return AppendValue(sentence, rule.format, static_cast<t_Printed>(Marker), value, true);
  };
  result.format = C_PrintFormat(format);
  result.index = index;
  return result;
}

// With the marker of the member's type
template <auto Member>
constexpr t_RuleOf<Member> Number(std::string_view format, unsigned char index = 0) {
  return Number<Member, kMarker<t_ValueOf<Member>>>(format, index);
}

// --- Times and dates ---

template <auto Member>
constexpr t_RuleOf<Member> Time() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    double secondsOfDay;
    const bool isRead = UTIL::ParseTimeOfDaySeconds(field, secondsOfDay);
    if (isRead) record.*Member = secondsOfDay;
    return ResultOf(isRead);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendTime(sentence, NA_DOUBLE, record.*Member, true);
  };
  return result;
}

// ddmmyy
template <class Record>
constexpr S_FieldRule<Record> Date() {
  using t_Rule = S_FieldRule<Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, Record& record) {
    unsigned short year;
    unsigned char month;
    unsigned char day;
    if (!UTIL::ParseDate(field, NA_U16, NA_U8, NA_U8, year, month, day)) return ResultOf(false);
    record.year = year;
    record.month = month;
    record.day = day;
    return ResultOf(true);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const Record& record) -> unsigned int {
    char date[8];
    const bool isDate = UTIL::FormatDate(record.year, record.month, record.day, NA_U16, NA_U8, NA_U8, date);
    return isDate ? AppendText(sentence, date) : eResultOutOfRange;
  };
  return result;
}

// --- Angles: two fields, the number and its letter. Both are written together. ---

constexpr C_PrintFormat kMinutesFormat("%011.8lf");

template <auto Member, const S_AngleStyle& Style>
constexpr t_RuleOf<Member> Angle() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    double degrees;
    const bool isRead = UTIL::ParseDegreesMinutes(field, degrees);
    if (isRead) record.*Member = degrees;
    return ResultOf(isRead);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendAngle(sentence, Style, kMinutesFormat, NA_DOUBLE, record.*Member, {true, true});
  };
  return result;
}

template <auto Member, const S_AngleStyle& Style>
constexpr t_RuleOf<Member> AngleLetter() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    double& degrees = record.*Member;
    if (field.empty()) degrees = NA_DOUBLE;
    if (field.empty() || field == std::string_view(&Style.positive, 1)) return ResultOf(true);
    if (field != std::string_view(&Style.negative, 1)) return ResultOf(false);
    if (!IsNotAvailable(degrees)) degrees = -degrees;
    return ResultOf(true);
  };
  return result;
}

template <auto Member>
constexpr t_RuleOf<Member> Latitude() {
  return Angle<Member, kLatitudeStyle>();
}
template <auto Member>
constexpr t_RuleOf<Member> LatitudeLetter() {
  return AngleLetter<Member, kLatitudeStyle>();
}
template <auto Member>
constexpr t_RuleOf<Member> Longitude() {
  return Angle<Member, kLongitudeStyle>();
}
template <auto Member>
constexpr t_RuleOf<Member> LongitudeLetter() {
  return AngleLetter<Member, kLongitudeStyle>();
}

// --- Letters ---

// A letter that stands for a value of an enumeration; an empty field too stands for one.
template <auto Member, auto ValueOfLetter, auto LetterOfValue>
constexpr t_RuleOf<Member> Code() {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.read = [](std::string_view field, const t_Rule&, t_Record& record) {
    if (field.size() > 1) return ResultOf(false);
    record.*Member = ValueOfLetter(field.empty() ? '\0' : field[0]);
    return ResultOf(true);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendLetter(sentence, LetterOfValue(record.*Member));
  };
  return result;
}

template <auto Member>
constexpr t_RuleOf<Member> Mode() {
  return Code<Member, t_Nmea::GetModIndicatorEnum, t_Nmea::GetModIndicatorChar>();
}
template <auto Member>
constexpr t_RuleOf<Member> NavStatus() {
  return Code<Member, t_Nmea::GetNavStatusEnum, t_Nmea::GetNavStatusChar>();
}

// A letter kept as it is, one of a few; an empty field is none of them.
template <auto Member>
constexpr t_RuleOf<Member> OneOf(const char* letters) {
  using t_Record = t_RecordOf<Member>;
  using t_Rule = S_FieldRule<t_Record>;
  t_Rule result;
  result.letters = letters;
  result.read = [](std::string_view field, const t_Rule& rule, t_Record& record) {
    if (field.size() != 1 || std::string_view(rule.letters).find(field[0]) == std::string_view::npos)
      return ResultOf(false);
    record.*Member = field[0];
    return ResultOf(true);
  };
  result.write = [](C_SentenceText& sentence, const t_Rule&, const t_Record& record) {
    return AppendLetter(sentence, record.*Member);
  };
  return result;
}

// A unit is written always, whatever the length of the sentence, and read past.
template <class Record>
constexpr S_FieldRule<Record> Unit(const char* letter) {
  S_FieldRule<Record> result;
  result.letters = letter;
  result.write = [](C_SentenceText& sentence, const S_FieldRule<Record>& rule, const Record&) -> unsigned int {
    const char unit[] = {',', rule.letters[0]};
    sentence.AppendUnchecked({unit, sizeof unit});
    return eResultOk;
  };
  return result;
}

// The rule for sentences of more than so many fields only.
template <class Record>
constexpr S_FieldRule<Record> OnlyBeyond(unsigned char fields, S_FieldRule<Record> rule) {
  rule.moreThan = fields;
  return rule;
}

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
  if (field.empty())
    record.longitude = NA_DOUBLE;
  else if (field == "W")
    record.variationDirection = 0;
  else if (field != "E")
    record.variationDirection = 1;
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

// $GNGNS,014035.00,4332.69262,S,17235.48549,E,RR,13,0.9,25.63,11.24,,,V*69
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

// $GPGSV,3,1,11,03,03,111,00,04,15,270,00,06,01,010,00,13,06,292,00,1*6B
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

// $GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,2*0B
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

// $GPRMC,225446.33,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E,A,V*3E
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
