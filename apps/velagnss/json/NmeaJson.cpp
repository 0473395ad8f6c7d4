#include "apps/velagnss/json/NmeaJson.h"

#include <fmt/core.h>

#include <nlohmann/json.hpp>

#include "apps/velagnss/json/MemberTable.h"
#include "apps/velagnss/json/SentenceMembers.h"
#include "apps/velagnss/text/Lists.h"
#include "apps/velagnss/text/ModeNames.h"
#include "apps/velagnss/text/Numbers.h"
#include "apps/velagnss/text/TimeText.h"
#include "apps/velagnss/text/Units.h"
#include "textproto/NMEA_EncodeDecode.h"

namespace Host {
namespace {

constexpr std::string_view kNavStatus[] = {"safe", "caution", "unsafe", "not valid", "not valid", ""};
constexpr std::string_view kGllStatus[] = {"valid", "differential", "not valid", "not valid", ""};
constexpr std::string_view kRmcStatus[] = {"valid", "differential", "rtk float", "precise",
                                           "rtk",   "not valid",    "not valid", ""};
constexpr std::string_view kFixTypes[] = {"none", "2d", "3d"};  // GSA: '1', '2', '3'
constexpr std::string_view kOperationModes[] = {"M", "A"};
constexpr std::string_view kDirections[] = {"E", "W"};

constexpr unsigned int kNoQuality = 10;
constexpr signed char kNoZone = -64;

// --- Kinds of members that only these sentences have ---

// "YYYY-MM-DD". The sentence has room for the years from `FirstYear` to `LastYear`.
template <class Record, unsigned short FirstYear, unsigned short LastYear>
constexpr S_MemberKind<Record> Date() {
  return {[](C_JsonWriter& json, const Record& record) {
            const C_TimeText date = C_TimeText::Date(record.year, record.month, record.day);
            if (date.IsEmpty()) return json.Null();
            json.String(date.Text());
          },
          [](const nlohmann::json& value, Record& record) -> t_Problem {
            const std::string text = value.is_string() ? value.get<std::string>() : "";
            const std::string_view digits(text);
            const bool isRead = text.size() == 10 && ParseWhole(digits.substr(0, 4), record.year) &&
                                ParseWhole(digits.substr(5, 2), record.month) &&
                                ParseWhole(digits.substr(8), record.day);
            if (!isRead || C_TimeText::Date(record.year, record.month, record.day).Text() != digits)
              return Quoted(value) + " is not a date YYYY-MM-DD";
            if (record.year < FirstYear || record.year > LastYear)
              return fmt::format("{} is outside the years {} to {}", Quoted(value), FirstYear, LastYear);
            return {};
          }};
}

// --- Arrays: what is empty in the record is left out ---

constexpr S_MemberKind<S_GNS_Data> GnsModes() {
  return {[](C_JsonWriter& json, const S_GNS_Data& record) {
            json.BeginArray();
            for (const eNmeaModeIndicator mode : record.mode)
              if (mode != eNmeaModeEmpty) WriteName<kModeNames>(json, mode);
            json.EndArray();
          },
          [](const nlohmann::json& value, S_GNS_Data& record) {
            return ReadItems(value, std::size(record.mode), [&](const nlohmann::json& item, std::size_t i) {
              return ReadName<kModeNames>(item, record.mode[i]);
            });
          }};
}

constexpr S_MemberKind<S_GSA_Data> FixType() {
  return {[](C_JsonWriter& json, const S_GSA_Data& record) {
            WriteName<kFixTypes>(json, static_cast<unsigned int>(record.fixType - '1'));
          },
          [](const nlohmann::json& value, S_GSA_Data& record) {
            unsigned int index = 0;
            t_Problem problem = ReadName<kFixTypes>(value, index);
            if (problem.empty()) record.fixType = static_cast<char>('1' + index);
            return problem;
          }};
}

constexpr S_MemberKind<S_GSA_Data> SatelliteIds() {
  return {&ValuesPresent<&S_GSA_Data::satelliteId, S_GSA_Data>, [](const nlohmann::json& value, S_GSA_Data& record) {
            return ReadItems(value, std::size(record.satelliteId), [&](const nlohmann::json& item, std::size_t i) {
              return ReadNumber(item, record.satelliteId[i]);
            });
          }};
}

// One satellite of GSV.
struct S_Satellite {
  unsigned char id = NA_U8;
  unsigned char elevation = NA_U8;
  unsigned short azimuth = NA_U16;
  unsigned char snr = NA_U8;

  bool IsEmpty() const {
    return IsNotAvailable(id) && IsNotAvailable(elevation) && IsNotAvailable(azimuth) && IsNotAvailable(snr);
  }
};

constexpr S_Member<S_Satellite> kSatellite[] = {
    {"id", Number<&S_Satellite::id>()},
    {"elevation_deg", Number<&S_Satellite::elevation>()},
    {"azimuth_deg", Number<&S_Satellite::azimuth>()},
    {"snr_dbhz", Number<&S_Satellite::snr>()},
};

t_Problem ReadSatellite(const nlohmann::json& value, S_GSV_Data& record, std::size_t i) {
  if (!value.is_object()) return Quoted(value) + " is not an object";
  S_Satellite satellite;
  if (t_Problem problem = ReadMembers(value, kSatellite, satellite); !problem.empty()) return problem;
  record.satelliteId[i] = satellite.id;
  record.elevation[i] = satellite.elevation;
  record.azimuth[i] = satellite.azimuth;
  record.snr[i] = satellite.snr;
  return {};
}

constexpr S_MemberKind<S_GSV_Data> Satellites() {
  return {
      [](C_JsonWriter& json, const S_GSV_Data& record) {
        json.BeginArray();
        for (std::size_t i = 0; i < std::size(record.satelliteId); ++i) {
          const S_Satellite satellite = {record.satelliteId[i], record.elevation[i], record.azimuth[i], record.snr[i]};
          if (satellite.IsEmpty()) continue;
          json.BeginObject();
          WriteFieldsOf<kSatellite>(json, satellite);
          json.EndObject();
        }
        json.EndArray();
      },
      [](const nlohmann::json& value, S_GSV_Data& record) {
        return ReadItems(value, std::size(record.satelliteId),
                         [&](const nlohmann::json& item, std::size_t i) { return ReadSatellite(item, record, i); });
      }};
}

// --- The sentences ---

// clang-format off
constexpr S_Member<S_GGA_Data> kGga[] = {
    {"talker",             Talker<S_GGA_Data>()},
    {"time_of_day_s",      TimeOfDay<S_GGA_Data>()},
    {"latitude_deg",       Degrees<&S_GGA_Data::latitude, 90>()},
    {"longitude_deg",      Degrees<&S_GGA_Data::longitude, 180>()},
    {"quality",            NumberUnless<&S_GGA_Data::quality, kNoQuality, 0, 65535>()},
    {"satellites",         Number<&S_GGA_Data::satellites>()},
    {"hdop",               Number<&S_GGA_Data::hdop>()},
    {"altitude_m",         Number<&S_GGA_Data::altitude>()},
    {"geoid_separation_m", Number<&S_GGA_Data::geoidSeparation>()},
    {"differential_age_s", Number<&S_GGA_Data::differentialAge>()},
    {"reference_station",  Number<&S_GGA_Data::referenceStation>()},
};

constexpr S_Member<S_GNS_Data> kGns[] = {
    {"talker",             Talker<S_GNS_Data>()},
    {"time_of_day_s",      TimeOfDay<S_GNS_Data>()},
    {"latitude_deg",       Degrees<&S_GNS_Data::latitude, 90>()},
    {"longitude_deg",      Degrees<&S_GNS_Data::longitude, 180>()},
    {"modes",              GnsModes()},
    {"satellites",         Number<&S_GNS_Data::satellites>()},
    {"hdop",               Number<&S_GNS_Data::hdop>()},
    {"altitude_m",         Number<&S_GNS_Data::altitude>()},
    {"geoid_separation_m", Number<&S_GNS_Data::geoidSeparation>()},
    {"differential_age_s", Number<&S_GNS_Data::differentialAge>()},
    {"reference_station",  Number<&S_GNS_Data::referenceStation>()},
    {"nav_status",         Named<&S_GNS_Data::navStatus, kNavStatus>()},
};

constexpr S_Member<S_ZDA_Data> kZda[] = {
    {"talker",        Talker<S_ZDA_Data>()},
    {"date",          Date<S_ZDA_Data, 0, 9999>()},
    {"time_of_day_s", TimeOfDay<S_ZDA_Data>()},
    {"zone_hours",    NumberUnless<&S_ZDA_Data::zoneHours, kNoZone, -128, 127>()},
    {"zone_minutes",  Number<&S_ZDA_Data::zoneMinutes>()},
};

constexpr S_Member<S_GLL_Data> kGll[] = {
    {"talker",        Talker<S_GLL_Data>()},
    {"time_of_day_s", TimeOfDay<S_GLL_Data>()},
    {"latitude_deg",  Degrees<&S_GLL_Data::latitude, 90>()},
    {"longitude_deg", Degrees<&S_GLL_Data::longitude, 180>()},
    {"status",        Named<&S_GLL_Data::status, kGllStatus>()},
    {"mode",          Named<&S_GLL_Data::mode, kModeNames>()},
};

constexpr S_Member<S_GSV_Data> kGsv[] = {
    {"talker",             Talker<S_GSV_Data>()},
    {"total_sentences",    Number<&S_GSV_Data::totalSentences>()},
    {"sentence_number",    Number<&S_GSV_Data::sentenceNumber>()},
    {"satellites_in_view", Number<&S_GSV_Data::satellitesInView>()},
    {"satellites",         Satellites()},
    {"signal_id",          Number<&S_GSV_Data::signalId>()},
};

constexpr S_Member<S_GSA_Data> kGsa[] = {
    {"talker",         Talker<S_GSA_Data>()},
    {"operation_mode", OneOf<&S_GSA_Data::operationMode, kOperationModes>()},
    {"fix_type",       FixType()},
    {"satellite_ids",  SatelliteIds()},
    {"pdop",           Number<&S_GSA_Data::pdop>()},
    {"hdop",           Number<&S_GSA_Data::hdop>()},
    {"vdop",           Number<&S_GSA_Data::vdop>()},
    {"system_id",      Number<&S_GSA_Data::systemId>()},
};

constexpr S_Member<S_RMC_Data> kRmc[] = {
    {"talker",                 Talker<S_RMC_Data>()},
    {"date",                   Date<S_RMC_Data, 2000, 2099>()},
    {"time_of_day_s",          TimeOfDay<S_RMC_Data>()},
    {"latitude_deg",           Degrees<&S_RMC_Data::latitude, 90>()},
    {"longitude_deg",          Degrees<&S_RMC_Data::longitude, 180>()},
    {"speed_knots",            Number<&S_RMC_Data::speedKnots>()},
    {"course_true_deg",        Number<&S_RMC_Data::courseTrue>()},
    {"magnetic_variation_deg", Number<&S_RMC_Data::magneticVariation>()},
    {"mode",                   Named<&S_RMC_Data::mode, kModeNames>()},
    {"status",                 Named<&S_RMC_Data::status, kRmcStatus>()},
    {"nav_status",             Named<&S_RMC_Data::navStatus, kNavStatus>()},
    {"variation_direction",    OneOf<&S_RMC_Data::variationDirection, kDirections>()},
};

constexpr S_Member<S_VTG_Data> kVtg[] = {
    {"talker",              Talker<S_VTG_Data>()},
    {"course_true_deg",     Number<&S_VTG_Data::courseTrue>()},
    {"course_magnetic_deg", Number<&S_VTG_Data::courseMagnetic>()},
    {"speed_knots",         Number<&S_VTG_Data::speedKnots>()},
    {"speed_kmh",           Number<&S_VTG_Data::speedKmh>()},
    {"mode",                Named<&S_VTG_Data::mode, kModeNames>()},
};
// clang-format on

template <class Record, const auto& Fields, auto Reset>
t_Problem ReadSentence(const nlohmann::json& fields, velagnss::NmeaRecord& record) {
  Record& read = record.emplace<Record>();
  Reset(read);
  t_Problem problem = ReadMembers(fields, Fields, read);
  if (problem.empty() && read.talker[0] == '\0') problem = "talker: missing";
  return problem;
}

struct S_Sentence {
  t_SentenceType type;
  t_Problem (*read)(const nlohmann::json& fields, velagnss::NmeaRecord& record);
};

using t_Nmea = C_NMEA_EncodeDecode;
constexpr S_Sentence kSentences[] = {
    {C_RawDataMessage::eNmeaGSV, &ReadSentence<S_GSV_Data, kGsv, &t_Nmea::Reset_GSV>},
    {C_RawDataMessage::eNmeaGSA, &ReadSentence<S_GSA_Data, kGsa, &t_Nmea::Reset_GSA>},
    {C_RawDataMessage::eNmeaGGA, &ReadSentence<S_GGA_Data, kGga, &t_Nmea::Reset_GGA>},
    {C_RawDataMessage::eNmeaRMC, &ReadSentence<S_RMC_Data, kRmc, &t_Nmea::Reset_RMC>},
    {C_RawDataMessage::eNmeaGLL, &ReadSentence<S_GLL_Data, kGll, &t_Nmea::Reset_GLL>},
    {C_RawDataMessage::eNmeaVTG, &ReadSentence<S_VTG_Data, kVtg, &t_Nmea::Reset_VTG>},
    {C_RawDataMessage::eNmeaZDA, &ReadSentence<S_ZDA_Data, kZda, &t_Nmea::Reset_ZDA>},
    {C_RawDataMessage::eNmeaGNS, &ReadSentence<S_GNS_Data, kGns, &t_Nmea::Reset_GNS>},
};

std::string_view NameOf(const S_Sentence& sentence) { return C_NMEA_EncodeDecode::mppz_NmeaMsgIDs[sentence.type]; }

}  // namespace

std::optional<t_SentenceType> FindEncodableSentence(std::string_view name) {
  for (const S_Sentence& sentence : kSentences)
    if (name == NameOf(sentence)) return sentence.type;
  return std::nullopt;
}

std::string EncodableSentenceNames() { return JoinNames(kSentences, &NameOf); }

void WriteMembers(C_JsonWriter& json, const S_GGA_Data& record) { WriteFieldsOf<kGga>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_GNS_Data& record) { WriteFieldsOf<kGns>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_ZDA_Data& record) { WriteFieldsOf<kZda>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_GLL_Data& record) { WriteFieldsOf<kGll>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_GSV_Data& record) { WriteFieldsOf<kGsv>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_GSA_Data& record) { WriteFieldsOf<kGsa>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_RMC_Data& record) { WriteFieldsOf<kRmc>(json, record); }
void WriteMembers(C_JsonWriter& json, const S_VTG_Data& record) { WriteFieldsOf<kVtg>(json, record); }

std::string ReadNmeaFields(const nlohmann::json& fields, t_SentenceType type, velagnss::NmeaRecord& record) {
  for (const S_Sentence& sentence : kSentences)
    if (sentence.type == type) return sentence.read(fields, record);
  return "this sentence cannot be encoded";
}

}  // namespace Host
