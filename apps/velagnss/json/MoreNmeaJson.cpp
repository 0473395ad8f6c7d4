#include "apps/velagnss/json/MoreNmeaJson.h"

#include <fmt/core.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>
#include <tuple>

#include "apps/velagnss/json/NmeaJson.h"
#include "apps/velagnss/json/SentenceMembers.h"
#include "apps/velagnss/text/ModeNames.h"

namespace Host {
namespace {

using namespace velagnss;

// --- Kinds of members ---

// Any single character; NUL for none.
template <auto Member>
constexpr t_KindOf<Member> AnyLetter() {
  using t_Record = t_RecordOf<Member>;
  return {&Letter<Member, t_Record>, [](const nlohmann::json& value, t_Record& record) -> t_Problem {
            const auto* const text = value.get_ptr<const std::string*>();
            if (text == nullptr || text->size() != 1) return Quoted(value) + " is not one character";
            record.*Member = text->front();
            return {};
          }};
}

// A text; null for an empty one. The record's view is into the JSON value.
template <auto Member>
constexpr t_KindOf<Member> TextView() {
  using t_Record = t_RecordOf<Member>;
  return {[](C_JsonWriter& json, const t_Record& record) {
            if ((record.*Member).empty()) return json.Null();
            json.String(record.*Member);
          },
          [](const nlohmann::json& value, t_Record& record) -> t_Problem {
            const auto* const text = value.get_ptr<const std::string*>();
            if (text == nullptr) return Quoted(value) + " is not a string";
            record.*Member = *text;
            return {};
          }};
}

// The place of a residual says which satellite it is of: missing ones are null.
constexpr S_MemberKind<GrsRecord> Residuals() {
  return {&Values<&GrsRecord::residual, GrsRecord>, [](const nlohmann::json& value, GrsRecord& record) {
            return ReadItems(value, std::size(record.residual), [&](const nlohmann::json& item, std::size_t i) {
              return item.is_null() ? t_Problem() : ReadNumber(item, record.residual[i]);
            });
          }};
}

template <auto Member>
constexpr t_KindOf<Member> ModeName() {
  return Named<Member, kModeNames>();
}

// --- The sentences ---

// clang-format off
constexpr S_Member<GstRecord> kGst[] = {
    {"talker",                Talker<GstRecord>()},
    {"time_of_day_s",         TimeOfDay<GstRecord>()},
    {"range_rms_m",           Number<&GstRecord::rangeRms>()},
    {"semi_major_m",          Number<&GstRecord::semiMajor>()},
    {"semi_minor_m",          Number<&GstRecord::semiMinor>()},
    {"orientation_deg",       Number<&GstRecord::orientation>()},
    {"latitude_deviation_m",  Number<&GstRecord::latitudeDeviation>()},
    {"longitude_deviation_m", Number<&GstRecord::longitudeDeviation>()},
    {"altitude_deviation_m",  Number<&GstRecord::altitudeDeviation>()},
};

constexpr S_Member<GbsRecord> kGbs[] = {
    {"talker",            Talker<GbsRecord>()},
    {"time_of_day_s",     TimeOfDay<GbsRecord>()},
    {"latitude_error_m",  Number<&GbsRecord::latitudeError>()},
    {"longitude_error_m", Number<&GbsRecord::longitudeError>()},
    {"altitude_error_m",  Number<&GbsRecord::altitudeError>()},
    {"satellite_id",      Number<&GbsRecord::satelliteId>()},
    {"probability",       Number<&GbsRecord::probability>()},
    {"bias_m",            Number<&GbsRecord::bias>()},
    {"bias_deviation_m",  Number<&GbsRecord::biasDeviation>()},
    {"system_id",         Number<&GbsRecord::systemId>()},
    {"signal_id",         Number<&GbsRecord::signalId>()},
};

constexpr S_Member<GrsRecord> kGrs[] = {
    {"talker",        Talker<GrsRecord>()},
    {"time_of_day_s", TimeOfDay<GrsRecord>()},
    {"mode",          Number<&GrsRecord::mode>()},
    {"residuals_m",   Residuals()},
    {"system_id",     Number<&GrsRecord::systemId>()},
    {"signal_id",     Number<&GrsRecord::signalId>()},
};

constexpr S_Member<HdtRecord> kHdt[] = {
    {"talker",           Talker<HdtRecord>()},
    {"heading_true_deg", Number<&HdtRecord::headingTrue>()},
};

constexpr S_Member<ThsRecord> kThs[] = {
    {"talker",           Talker<ThsRecord>()},
    {"heading_true_deg", Number<&ThsRecord::headingTrue>()},
    {"mode",             AnyLetter<&ThsRecord::mode>()},
};

constexpr S_Member<HdgRecord> kHdg[] = {
    {"talker",                 Talker<HdgRecord>()},
    {"heading_sensor_deg",     Number<&HdgRecord::headingSensor>()},
    {"deviation_deg",          Number<&HdgRecord::deviation>()},
    {"deviation_direction",    AnyLetter<&HdgRecord::deviationDirection>()},
    {"magnetic_variation_deg", Number<&HdgRecord::variation>()},
    {"variation_direction",    AnyLetter<&HdgRecord::variationDirection>()},
};

constexpr S_Member<RotRecord> kRot[] = {
    {"talker",           Talker<RotRecord>()},
    {"rate_deg_per_min", Number<&RotRecord::rate>()},
    {"status",           AnyLetter<&RotRecord::status>()},
};

constexpr S_Member<DtmRecord> kDtm[] = {
    {"talker",               Talker<DtmRecord>()},
    {"local_datum",          TextView<&DtmRecord::localDatum>()},
    {"subdivision",          TextView<&DtmRecord::subdivision>()},
    {"latitude_offset_min",  Number<&DtmRecord::latitudeOffset>()},
    {"latitude_direction",   AnyLetter<&DtmRecord::latitudeDirection>()},
    {"longitude_offset_min", Number<&DtmRecord::longitudeOffset>()},
    {"longitude_direction",  AnyLetter<&DtmRecord::longitudeDirection>()},
    {"altitude_offset_m",    Number<&DtmRecord::altitudeOffset>()},
    {"reference_datum",      TextView<&DtmRecord::referenceDatum>()},
};

constexpr S_Member<TxtRecord> kTxt[] = {
    {"talker",          Talker<TxtRecord>()},
    {"total_sentences", Number<&TxtRecord::totalSentences>()},
    {"sentence_number", Number<&TxtRecord::sentenceNumber>()},
    {"identifier",      Number<&TxtRecord::identifier>()},
    {"text",            TextView<&TxtRecord::text>()},
};

constexpr S_Member<VhwRecord> kVhw[] = {
    {"talker",               Talker<VhwRecord>()},
    {"heading_true_deg",     Number<&VhwRecord::headingTrue>()},
    {"heading_magnetic_deg", Number<&VhwRecord::headingMagnetic>()},
    {"speed_knots",          Number<&VhwRecord::speedKnots>()},
    {"speed_kmh",            Number<&VhwRecord::speedKmh>()},
};

constexpr S_Member<DbtRecord> kDbt[] = {
    {"talker",        Talker<DbtRecord>()},
    {"depth_ft",      Number<&DbtRecord::depthFeet>()},
    {"depth_m",       Number<&DbtRecord::depthMeters>()},
    {"depth_fathoms", Number<&DbtRecord::depthFathoms>()},
};

constexpr S_Member<DptRecord> kDpt[] = {
    {"talker",      Talker<DptRecord>()},
    {"depth_m",     Number<&DptRecord::depth>()},
    {"offset_m",    Number<&DptRecord::offset>()},
    {"max_range_m", Number<&DptRecord::maxRange>()},
};

constexpr S_Member<MtwRecord> kMtw[] = {
    {"talker",        Talker<MtwRecord>()},
    {"temperature_c", Number<&MtwRecord::temperature>()},
};

constexpr S_Member<MwvRecord> kMwv[] = {
    {"talker",     Talker<MwvRecord>()},
    {"angle_deg",  Number<&MwvRecord::angle>()},
    {"reference",  AnyLetter<&MwvRecord::reference>()},
    {"speed",      Number<&MwvRecord::speed>()},
    {"speed_unit", AnyLetter<&MwvRecord::speedUnit>()},
    {"status",     AnyLetter<&MwvRecord::status>()},
};

constexpr S_Member<VlwRecord> kVlw[] = {
    {"talker",           Talker<VlwRecord>()},
    {"total_water_nmi",  Number<&VlwRecord::totalWater>()},
    {"trip_water_nmi",   Number<&VlwRecord::tripWater>()},
    {"total_ground_nmi", Number<&VlwRecord::totalGround>()},
    {"trip_ground_nmi",  Number<&VlwRecord::tripGround>()},
};

constexpr S_Member<RmbRecord> kRmb[] = {
    {"talker",                Talker<RmbRecord>()},
    {"status",                AnyLetter<&RmbRecord::status>()},
    {"cross_track_error_nmi", Number<&RmbRecord::crossTrackError>()},
    {"steer",                 AnyLetter<&RmbRecord::steer>()},
    {"origin",                TextView<&RmbRecord::origin>()},
    {"destination",           TextView<&RmbRecord::destination>()},
    {"latitude_deg",          Degrees<&RmbRecord::latitude, 90>()},
    {"longitude_deg",         Degrees<&RmbRecord::longitude, 180>()},
    {"range_nmi",             Number<&RmbRecord::range>()},
    {"bearing_true_deg",      Number<&RmbRecord::bearingTrue>()},
    {"closing_speed_knots",   Number<&RmbRecord::closingSpeed>()},
    {"arrival",               AnyLetter<&RmbRecord::arrival>()},
    {"mode",                  ModeName<&RmbRecord::mode>()},
};

constexpr S_Member<XteRecord> kXte[] = {
    {"talker",                Talker<XteRecord>()},
    {"status",                AnyLetter<&XteRecord::status>()},
    {"lock_status",           AnyLetter<&XteRecord::lockStatus>()},
    {"cross_track_error_nmi", Number<&XteRecord::crossTrackError>()},
    {"steer",                 AnyLetter<&XteRecord::steer>()},
    {"mode",                  ModeName<&XteRecord::mode>()},
};

constexpr S_Member<ApbRecord> kApb[] = {
    {"talker",                   Talker<ApbRecord>()},
    {"status",                   AnyLetter<&ApbRecord::status>()},
    {"lock_status",              AnyLetter<&ApbRecord::lockStatus>()},
    {"cross_track_error_nmi",    Number<&ApbRecord::crossTrackError>()},
    {"steer",                    AnyLetter<&ApbRecord::steer>()},
    {"arrival",                  AnyLetter<&ApbRecord::arrival>()},
    {"perpendicular",            AnyLetter<&ApbRecord::perpendicular>()},
    {"bearing_origin_deg",       Number<&ApbRecord::bearingOrigin>()},
    {"bearing_origin_reference", AnyLetter<&ApbRecord::bearingOriginReference>()},
    {"destination",              TextView<&ApbRecord::destination>()},
    {"bearing_deg",              Number<&ApbRecord::bearing>()},
    {"bearing_reference",        AnyLetter<&ApbRecord::bearingReference>()},
    {"heading_to_steer_deg",     Number<&ApbRecord::headingToSteer>()},
    {"heading_reference",        AnyLetter<&ApbRecord::headingReference>()},
    {"mode",                     ModeName<&ApbRecord::mode>()},
};

constexpr S_Member<BwcRecord> kBwc[] = {
    {"talker",               Talker<BwcRecord>()},
    {"time_of_day_s",        TimeOfDay<BwcRecord>()},
    {"latitude_deg",         Degrees<&BwcRecord::latitude, 90>()},
    {"longitude_deg",        Degrees<&BwcRecord::longitude, 180>()},
    {"bearing_true_deg",     Number<&BwcRecord::bearingTrue>()},
    {"bearing_magnetic_deg", Number<&BwcRecord::bearingMagnetic>()},
    {"distance_nmi",         Number<&BwcRecord::distance>()},
    {"waypoint",             TextView<&BwcRecord::waypoint>()},
    {"mode",                 ModeName<&BwcRecord::mode>()},
};

constexpr S_Member<WplRecord> kWpl[] = {
    {"talker",        Talker<WplRecord>()},
    {"latitude_deg",  Degrees<&WplRecord::latitude, 90>()},
    {"longitude_deg", Degrees<&WplRecord::longitude, 180>()},
    {"waypoint",      TextView<&WplRecord::waypoint>()},
};
// clang-format on

template <class Record>
struct S_Sentence {
  template <std::size_t N>
  constexpr S_Sentence(std::string_view formatter, const S_Member<Record> (&table)[N])
      : name(formatter), members(table) {}
  std::string_view name;
  std::span<const S_Member<Record>> members;
};
template <class Record, std::size_t N>
S_Sentence(std::string_view, const S_Member<Record> (&)[N]) -> S_Sentence<Record>;

constexpr std::tuple kSentences = {
    S_Sentence("GST", kGst), S_Sentence("GBS", kGbs), S_Sentence("GRS", kGrs), S_Sentence("HDT", kHdt),
    S_Sentence("THS", kThs), S_Sentence("HDG", kHdg), S_Sentence("ROT", kRot), S_Sentence("DTM", kDtm),
    S_Sentence("TXT", kTxt), S_Sentence("VHW", kVhw), S_Sentence("DBT", kDbt), S_Sentence("DPT", kDpt),
    S_Sentence("MTW", kMtw), S_Sentence("MWV", kMwv), S_Sentence("VLW", kVlw), S_Sentence("RMB", kRmb),
    S_Sentence("XTE", kXte), S_Sentence("APB", kApb), S_Sentence("BWC", kBwc), S_Sentence("WPL", kWpl),
};

// Gives the tables to `visit` until it says true; false when it never does.
template <class Visit>
bool FindSentence(const Visit& visit) {
  return std::apply([&visit](const auto&... sentences) { return (visit(sentences) || ...); }, kSentences);
}

// --- Sentences kept as texts ---

struct S_OtherTexts {
  std::string start = "$";
  std::string talker;
  std::string formatter;
  std::string maker;
  std::string sentence;
  std::string fields;  // each led by a comma
};

void WriteOther(C_JsonWriter& json, const OtherSentence& record) {
  json.Key("start").String({&record.start, 1});
  json.Key(record.IsProprietary() ? "maker" : "talker")
      .String(record.IsProprietary() ? record.Maker() : record.Talker());
  json.Key(record.IsProprietary() ? "sentence" : "formatter")
      .String(record.IsProprietary() ? record.address : record.Formatter());
  json.Key("fields").BeginArray();
  for (const std::string_view field : record.fields) json.String(field);
  json.EndArray();
}

template <auto Member>
t_Problem ReadString(const nlohmann::json& value, S_OtherTexts& texts) {
  const auto* const text = value.get_ptr<const std::string*>();
  if (text == nullptr) return Quoted(value) + " is not a string";
  texts.*Member = *text;
  return {};
}

t_Problem ReadFieldTexts(const nlohmann::json& value, S_OtherTexts& texts) {
  return ReadItems(value, value.size(), [&texts](const nlohmann::json& item, std::size_t) -> t_Problem {
    const auto* const text = item.get_ptr<const std::string*>();
    if (text == nullptr || text->find(',') != std::string::npos) return Quoted(item) + " is not the text of a field";
    texts.fields += "," + *text;
    return {};
  });
}

constexpr S_Member<S_OtherTexts> kOther[] = {
    {"start", {nullptr, ReadString<&S_OtherTexts::start>}},
    {"talker", {nullptr, ReadString<&S_OtherTexts::talker>}},
    {"formatter", {nullptr, ReadString<&S_OtherTexts::formatter>}},
    {"maker", {nullptr, ReadString<&S_OtherTexts::maker>}},
    {"sentence", {nullptr, ReadString<&S_OtherTexts::sentence>}},
    {"fields", {nullptr, ReadFieldTexts}},
};

// What the members say twice must be the same.
t_Problem CheckAddress(const S_OtherTexts& texts) {
  if (texts.start != "$" && texts.start != "!") return fmt::format("start: \"{}\" is not \"$\" or \"!\"", texts.start);
  if (texts.sentence.empty()) return texts.talker.size() == 2 ? "" : "talker: not two characters";
  if (texts.sentence[0] != 'P') return "sentence: does not begin with P";
  if (!texts.maker.empty() && texts.maker != texts.sentence.substr(1, 3)) return "maker: not that of the sentence";
  return {};
}

// UTF-8 of the characters U+0000 to U+00FF as one byte each.
bool MakeTextBytes(std::string& text) {
  std::size_t size = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0xC4) return false;  // leads U+0100 and beyond; the parser has refused what is not UTF-8
    text[size++] = byte < 0x80 ? text[at] : static_cast<char>(byte << 6 | (text[at + 1] & 0x3F));
    if (byte >= 0x80) ++at;
  }
  text.resize(size);
  return true;
}

}  // namespace

void WriteMembers(C_JsonWriter& json, const NmeaRecord& record) {
  if (const auto* const other = std::get_if<OtherSentence>(&record)) return WriteOther(json, *other);
  const auto writeIfHeld = [&]<class Record>(const S_Sentence<Record>& sentence) {
    const Record* const held = std::get_if<Record>(&record);
    if (held != nullptr) WriteFields(json, sentence.members, *held);
    return held != nullptr;
  };
  if (FindSentence(writeIfHeld)) return;
  std::visit([&json](const auto& oneOfEight) { WriteMembers(json, oneOfEight); }, record);
}

bool IsMoreSentence(std::string_view name) {
  return FindSentence([name](const auto& sentence) { return sentence.name == name; });
}

std::string MoreSentenceNames() {
  std::string names;
  FindSentence([&names](const auto& sentence) {
    names.append(names.empty() ? "" : " ").append(sentence.name);
    return false;
  });
  return names;
}

bool IsOtherSentence(const nlohmann::json& fields) {
  return fields.is_object() && (fields.contains("formatter") || fields.contains("sentence"));
}

bool MakeBytes(nlohmann::json& value) {
  if (auto* const text = value.get_ptr<std::string*>()) return MakeTextBytes(*text);
  return !value.is_structured() || std::all_of(value.begin(), value.end(), MakeBytes);
}

std::string ReadMoreFields(const nlohmann::json& fields, std::string_view name, NmeaRecord& record) {
  t_Problem problem;
  FindSentence([&]<class Record>(const S_Sentence<Record>& sentence) {
    if (sentence.name != name) return false;
    Record& read = record.emplace<Record>();
    problem = ReadMembers(fields, sentence.members, read);
    if (problem.empty() && read.talker[0] == '\0') problem = "talker: missing";
    return true;
  });
  return problem;
}

std::string ReadOtherFields(const nlohmann::json& fields, std::string& text, NmeaRecord& record) {
  S_OtherTexts texts;
  if (t_Problem problem = ReadMembers(fields, kOther, texts); !problem.empty()) return problem;
  if (t_Problem problem = CheckAddress(texts); !problem.empty()) return problem;
  const std::size_t addressSize = texts.sentence.empty() ? 2 + texts.formatter.size() : texts.sentence.size();
  text = texts.sentence.empty() ? texts.talker + texts.formatter + texts.fields : texts.sentence + texts.fields;
  const std::string_view whole(text);
  record = OtherSentence{texts.start[0], whole.substr(0, addressSize), FieldList(whole.substr(addressSize))};
  return {};
}

}  // namespace Host
