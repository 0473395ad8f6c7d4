#include "apps/velagnss/NmeaJson.h"

#include "apps/velagnss/FieldTable.h"
#include "apps/velagnss/TimeText.h"

namespace Host {
namespace {

constexpr std::string_view kModes[] = {  // by eNmeaModeIndicator
    "not valid", "autonomous", "differential", "precise",   "rtk", "rtk float",
    "estimated", "manual",     "simulator",    "not valid", ""};
constexpr std::string_view kNavStatus[] = {"safe", "caution", "unsafe", "not valid", "not valid", ""};
constexpr std::string_view kGllStatus[] = {"valid", "differential", "not valid", "not valid", ""};
constexpr std::string_view kRmcStatus[] = {"valid", "differential", "rtk float", "precise",
                                           "rtk",   "not valid",    "not valid", ""};
constexpr std::string_view kFixTypes[] = {"none", "2d", "3d"};  // GSA: '1', '2', '3'

constexpr unsigned int kNoQuality = 10;
constexpr signed char kNoZone = -64;
constexpr unsigned int kVariationDirectionField = 11;  // of RMC; field 0 is the sentence id

template <class Record>
void Talker(C_JsonWriter& json, const Record& record) {
  const char talker[] = {static_cast<char>(record.talker[0]), static_cast<char>(record.talker[1])};
  json.String({talker, sizeof talker});
}

template <class Record>
void Date(C_JsonWriter& json, const Record& record) {
  const C_TimeText date = C_TimeText::Date(record.year, record.month, record.day);
  if (date.IsEmpty()) return json.Null();
  json.String(date.Text());
}

void GnsModes(C_JsonWriter& json, const S_GNS_Data& record) {
  json.BeginArray();
  for (const eNmeaModeIndicator mode : record.mode)
    if (mode != eNmeaModeEmpty) WriteName<kModes>(json, mode);
  json.EndArray();
}

void FixType(C_JsonWriter& json, const S_GSA_Data& record) {
  WriteName<kFixTypes>(json, static_cast<unsigned int>(record.fixType - '1'));
}

void GsvSatellites(C_JsonWriter& json, const S_GSV_Data& record) {
  json.BeginArray();
  for (std::size_t i = 0; i < std::size(record.satelliteId); ++i) {
    const bool isEmpty = IsNotAvailable(record.satelliteId[i]) && IsNotAvailable(record.elevation[i]) &&
                         IsNotAvailable(record.azimuth[i]) && IsNotAvailable(record.snr[i]);
    if (isEmpty) continue;
    json.BeginObject();
    WriteOrNull(json.Key("id"), record.satelliteId[i]);
    WriteOrNull(json.Key("elevation_deg"), record.elevation[i]);
    WriteOrNull(json.Key("azimuth_deg"), record.azimuth[i]);
    WriteOrNull(json.Key("snr_dbhz"), record.snr[i]);
    json.EndObject();
  }
  json.EndArray();
}

// clang-format off
constexpr S_JsonField<S_GGA_Data> kGga[] = {
    {"talker",             &Talker<S_GGA_Data>},
    {"time_of_day_s",      &Value<&S_GGA_Data::timeOfDay>},
    {"latitude_deg",       &Value<&S_GGA_Data::latitude>},
    {"longitude_deg",      &Value<&S_GGA_Data::longitude>},
    {"quality",            &ValueUnless<&S_GGA_Data::quality, kNoQuality>},
    {"satellites",         &Value<&S_GGA_Data::satellites>},
    {"hdop",               &Value<&S_GGA_Data::hdop>},
    {"altitude_m",         &Value<&S_GGA_Data::altitude>},
    {"geoid_separation_m", &Value<&S_GGA_Data::geoidSeparation>},
    {"differential_age_s", &Value<&S_GGA_Data::differentialAge>},
    {"reference_station",  &Value<&S_GGA_Data::referenceStation>},
};

constexpr S_JsonField<S_GNS_Data> kGns[] = {
    {"talker",             &Talker<S_GNS_Data>},
    {"time_of_day_s",      &Value<&S_GNS_Data::timeOfDay>},
    {"latitude_deg",       &Value<&S_GNS_Data::latitude>},
    {"longitude_deg",      &Value<&S_GNS_Data::longitude>},
    {"modes",              &GnsModes},
    {"satellites",         &Value<&S_GNS_Data::satellites>},
    {"hdop",               &Value<&S_GNS_Data::hdop>},
    {"altitude_m",         &Value<&S_GNS_Data::altitude>},
    {"geoid_separation_m", &Value<&S_GNS_Data::geoidSeparation>},
    {"differential_age_s", &Value<&S_GNS_Data::differentialAge>},
    {"reference_station",  &Value<&S_GNS_Data::referenceStation>},
    {"nav_status",         &Name<&S_GNS_Data::navStatus, kNavStatus>},
};

constexpr S_JsonField<S_ZDA_Data> kZda[] = {
    {"talker",        &Talker<S_ZDA_Data>},
    {"date",          &Date<S_ZDA_Data>},
    {"time_of_day_s", &Value<&S_ZDA_Data::timeOfDay>},
    {"zone_hours",    &ValueUnless<&S_ZDA_Data::zoneHours, kNoZone>},
    {"zone_minutes",  &Value<&S_ZDA_Data::zoneMinutes>},
};

constexpr S_JsonField<S_GLL_Data> kGll[] = {
    {"talker",        &Talker<S_GLL_Data>},
    {"time_of_day_s", &Value<&S_GLL_Data::timeOfDay>},
    {"latitude_deg",  &Value<&S_GLL_Data::latitude>},
    {"longitude_deg", &Value<&S_GLL_Data::longitude>},
    {"status",        &Name<&S_GLL_Data::status, kGllStatus>},
    {"mode",          &Name<&S_GLL_Data::mode, kModes>},
};

constexpr S_JsonField<S_GSV_Data> kGsv[] = {
    {"talker",             &Talker<S_GSV_Data>},
    {"total_sentences",    &Value<&S_GSV_Data::totalSentences>},
    {"sentence_number",    &Value<&S_GSV_Data::sentenceNumber>},
    {"satellites_in_view", &Value<&S_GSV_Data::satellitesInView>},
    {"satellites",         &GsvSatellites},
    {"signal_id",          &Value<&S_GSV_Data::signalId>},
};

constexpr S_JsonField<S_GSA_Data> kGsa[] = {
    {"talker",         &Talker<S_GSA_Data>},
    {"operation_mode", &Letter<&S_GSA_Data::operationMode>},
    {"fix_type",       &FixType},
    {"satellite_ids",  &ValuesPresent<&S_GSA_Data::satelliteId>},
    {"pdop",           &Value<&S_GSA_Data::pdop>},
    {"hdop",           &Value<&S_GSA_Data::hdop>},
    {"vdop",           &Value<&S_GSA_Data::vdop>},
    {"system_id",      &Value<&S_GSA_Data::systemId>},
};

constexpr S_JsonField<S_RMC_Data> kRmc[] = {
    {"talker",                 &Talker<S_RMC_Data>},
    {"date",                   &Date<S_RMC_Data>},
    {"time_of_day_s",          &Value<&S_RMC_Data::timeOfDay>},
    {"latitude_deg",           &Value<&S_RMC_Data::latitude>},
    {"longitude_deg",          &Value<&S_RMC_Data::longitude>},
    {"speed_knots",            &Value<&S_RMC_Data::speedKnots>},
    {"course_true_deg",        &Value<&S_RMC_Data::courseTrue>},
    {"magnetic_variation_deg", &Value<&S_RMC_Data::magneticVariation>},
    {"mode",                   &Name<&S_RMC_Data::mode, kModes>},
    {"status",                 &Name<&S_RMC_Data::status, kRmcStatus>},
    {"nav_status",             &Name<&S_RMC_Data::navStatus, kNavStatus>},
};

constexpr S_JsonField<S_VTG_Data> kVtg[] = {
    {"talker",              &Talker<S_VTG_Data>},
    {"course_true_deg",     &Value<&S_VTG_Data::courseTrue>},
    {"course_magnetic_deg", &Value<&S_VTG_Data::courseMagnetic>},
    {"speed_knots",         &Value<&S_VTG_Data::speedKnots>},
    {"speed_kmh",           &Value<&S_VTG_Data::speedKmh>},
    {"mode",                &Name<&S_VTG_Data::mode, kModes>},
};
// clang-format on

// The text of a field; empty beyond the last.
std::string_view FieldOf(std::string_view sentence, unsigned int field) {
  for (; field > 0; --field) {
    const std::size_t comma = sentence.find(',');
    if (comma == std::string_view::npos) return {};
    sentence.remove_prefix(comma + 1);
  }
  return sentence.substr(0, sentence.find_first_of(",*"));
}

// The record knows "E" and "W" by the same value, so the letter is taken from the sentence.
void WriteRmc(C_JsonWriter& json, const U_EcdDcdData& record, std::string_view sentence) {
  WriteFields(json, kRmc, record.rmc);
  json.Key("variation_direction");
  const std::string_view direction = FieldOf(sentence, kVariationDirectionField);
  if (direction != "E" && direction != "W") return json.Null();
  json.String(direction);
}

template <auto Member, const auto& Fields>
void WriteSentence(C_JsonWriter& json, const U_EcdDcdData& record, std::string_view /*sentence*/) {
  WriteFields(json, Fields, record.*Member);
}

struct S_Sentence {
  C_RawDataMessage::eNMEA0183Messages type;
  void (*write)(C_JsonWriter& json, const U_EcdDcdData& record, std::string_view sentence);
};

constexpr S_Sentence kSentences[] = {
    {C_RawDataMessage::eNmeaGSV, &WriteSentence<&U_EcdDcdData::gsv, kGsv>},
    {C_RawDataMessage::eNmeaGSA, &WriteSentence<&U_EcdDcdData::gsa, kGsa>},
    {C_RawDataMessage::eNmeaGGA, &WriteSentence<&U_EcdDcdData::gga, kGga>},
    {C_RawDataMessage::eNmeaRMC, &WriteRmc},
    {C_RawDataMessage::eNmeaGLL, &WriteSentence<&U_EcdDcdData::gll, kGll>},
    {C_RawDataMessage::eNmeaVTG, &WriteSentence<&U_EcdDcdData::vtg, kVtg>},
    {C_RawDataMessage::eNmeaZDA, &WriteSentence<&U_EcdDcdData::zda, kZda>},
    {C_RawDataMessage::eNmeaGNS, &WriteSentence<&U_EcdDcdData::gns, kGns>},
};

const S_Sentence* FindSentence(C_RawDataMessage::eNMEA0183Messages type) {
  for (const S_Sentence& sentence : kSentences)
    if (sentence.type == type) return &sentence;
  return nullptr;
}

}  // namespace

bool IsDecodableSentence(C_RawDataMessage::eNMEA0183Messages type) { return FindSentence(type) != nullptr; }

void WriteNmeaFields(C_JsonWriter& json, C_RawDataMessage::eNMEA0183Messages type, const U_EcdDcdData& record,
                     std::string_view sentence) {
  if (const S_Sentence* found = FindSentence(type)) found->write(json, record, sentence);
}

}  // namespace Host
