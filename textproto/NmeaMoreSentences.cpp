// One table of rules per sentence, in the order of NmeaMoreRecords.h, where each has a sample.
#include "textproto/NmeaMoreSentences.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <system_error>
#include <tuple>

#include "textproto/NmeaFieldKinds.h"
#include "textproto/SentenceFields.h"

namespace velagnss::textproto {
namespace {

using namespace NmeaFieldKinds;

// The name and the 16 fields of GRS, with room to spare.
using t_MoreFields = C_SentenceFields<S_FieldLimits{1 + 20, 1024, 1024}>;

// --- Kinds of fields ---

// The shortest digits that read back as the same number, without an exponent, which the standard does not know.
unsigned int AppendShortest(C_SentenceText& sentence, double value) {
  if (IsNotAvailable(value)) return AppendText(sentence, {});
  if (!std::isfinite(value)) return eResultOutOfRange;
  char digits[C_FieldText::kCapacity];
  const std::to_chars_result end = std::to_chars(digits, std::end(digits), value, std::chars_format::fixed);
  if (end.ec != std::errc()) return eResultPastEnd;
  return AppendText(sentence, {digits, static_cast<std::size_t>(end.ptr - digits)});
}
template <std::size_t N>
unsigned int AppendShortest(C_SentenceText& sentence, const double (&values)[N]) {
  unsigned int result = eResultOk;
  for (std::size_t i = 0; i < N && result == eResultOk; ++i) result = AppendShortest(sentence, values[i]);
  return result;
}

template <auto Member, class Record>
unsigned int WriteShortest(C_SentenceText& sentence, const Record& record) {
  return AppendShortest(sentence, record.*Member);
}

template <auto Member>
constexpr t_KindOf<Member> Decimal = {Number<Member>, WriteShortest<Member>};
template <auto Member>
constexpr t_KindOf<Member> Integer = NumberAs<Member, kInteger>;
template <auto Member>
constexpr t_KindOf<Member> Ordinal = NumberAs<Member, kTwoDigits>;

// A system or signal id: one hexadecimal digit.
template <auto Member, class Record>
unsigned int ReadHexDigit(std::string_view field, unsigned int, Record& record) {
  constexpr std::string_view kDigits = "0123456789ABCDEFabcdef";
  if (field.empty()) return eResultOk;
  const std::size_t digit = field.size() == 1 ? kDigits.find(field[0]) : std::string_view::npos;
  if (digit == std::string_view::npos) return eResultBadField;
  record.*Member = static_cast<unsigned char>(digit < 16 ? digit : digit - 6);
  return eResultOk;
}

template <auto Member, class Record>
unsigned int WriteHexDigit(C_SentenceText& sentence, const Record& record) {
  const unsigned char value = record.*Member;
  if (IsNotAvailable(value)) return AppendText(sentence, {});
  return value < 16 ? AppendLetter(sentence, "0123456789ABCDEF"[value]) : eResultOutOfRange;
}

template <auto Member>
constexpr t_KindOf<Member> HexDigit = {ReadHexDigit<Member>, WriteHexDigit<Member>};

// What would end the field, or the sentence, when it is read again.
bool IsFieldText(std::string_view text) { return IsSentenceText(text) && text.find(',') == std::string_view::npos; }

template <auto Member, class Record>
unsigned int ReadText(std::string_view field, unsigned int, Record& record) {
  record.*Member = field;
  return eResultOk;
}

template <auto Member, class Record>
unsigned int WriteText(C_SentenceText& sentence, const Record& record) {
  return IsFieldText(record.*Member) ? AppendText(sentence, record.*Member) : eResultOutOfRange;
}

template <auto Member>
constexpr t_KindOf<Member> Text = {ReadText<Member>, WriteText<Member>};

// TXT: its commas belong to it.
unsigned int WriteRest(C_SentenceText& sentence, const TxtRecord& record) {
  return IsSentenceText(record.text) ? AppendText(sentence, record.text) : eResultOutOfRange;
}

// Any letter, kept as it is.
template <auto Member, class Record>
unsigned int ReadLetter(std::string_view field, unsigned int, Record& record) {
  if (field.size() > 1) return eResultBadField;
  record.*Member = field.empty() ? '\0' : field[0];
  return eResultOk;
}

template <auto Member, class Record>
unsigned int WriteAnyLetter(C_SentenceText& sentence, const Record& record) {
  const char letter = record.*Member;
  return letter == '\0' || IsFieldText({&letter, 1}) ? AppendLetter(sentence, letter) : eResultOutOfRange;
}

template <auto Member>
constexpr t_KindOf<Member> Letter = {ReadLetter<Member>, WriteAnyLetter<Member>};

// A number in another unit must not pass for one in the unit that its member names.
template <class Record, char Letter>
constexpr S_FieldKind<Record> CheckedUnit = {
    [](std::string_view field, unsigned int, Record&) {
      constexpr char kLetter = Letter;
      return ResultOf(field.empty() || field == std::string_view(&kLetter, 1));
    },
    [](C_SentenceText& sentence, const Record&) { return AppendLetter(sentence, Letter); }};

// --- The sentences: first field, number of fields, and what they are ---

template <class Record>
struct S_MoreSentence {
  std::string_view formatter;
  std::span<const S_FieldRule<Record>> rules;
};

// clang-format off

constexpr S_FieldRule<GstRecord> kGstRules[] = {
    {1, 1, Time<&GstRecord::timeOfDay>},
    {2, 1, Decimal<&GstRecord::rangeRms>},
    {3, 1, Decimal<&GstRecord::semiMajor>},
    {4, 1, Decimal<&GstRecord::semiMinor>},
    {5, 1, Decimal<&GstRecord::orientation>},
    {6, 1, Decimal<&GstRecord::latitudeDeviation>},
    {7, 1, Decimal<&GstRecord::longitudeDeviation>},
    {8, 1, Decimal<&GstRecord::altitudeDeviation>},
};

constexpr S_FieldRule<GbsRecord> kGbsRules[] = {
    {1,  1, Time<&GbsRecord::timeOfDay>},
    {2,  1, Decimal<&GbsRecord::latitudeError>},
    {3,  1, Decimal<&GbsRecord::longitudeError>},
    {4,  1, Decimal<&GbsRecord::altitudeError>},
    {5,  1, Ordinal<&GbsRecord::satelliteId>},
    {6,  1, Decimal<&GbsRecord::probability>},
    {7,  1, Decimal<&GbsRecord::bias>},
    {8,  1, Decimal<&GbsRecord::biasDeviation>},
    {9,  1, HexDigit<&GbsRecord::systemId>},
    {10, 1, HexDigit<&GbsRecord::signalId>},
};

constexpr S_FieldRule<GrsRecord> kGrsRules[] = {
    {1,  1,  Time<&GrsRecord::timeOfDay>},
    {2,  1,  Integer<&GrsRecord::mode>},
    {3,  12, Decimal<&GrsRecord::residual>},
    {15, 1,  HexDigit<&GrsRecord::systemId>},
    {16, 1,  HexDigit<&GrsRecord::signalId>},
};

constexpr S_FieldRule<HdtRecord> kHdtRules[] = {
    {1, 1, Decimal<&HdtRecord::headingTrue>},
    {2, 1, CheckedUnit<HdtRecord, 'T'>},
};

constexpr S_FieldRule<ThsRecord> kThsRules[] = {
    {1, 1, Decimal<&ThsRecord::headingTrue>},
    {2, 1, Letter<&ThsRecord::mode>},
};

constexpr S_FieldRule<HdgRecord> kHdgRules[] = {
    {1, 1, Decimal<&HdgRecord::headingSensor>},
    {2, 1, Decimal<&HdgRecord::deviation>},
    {3, 1, Letter<&HdgRecord::deviationDirection>},
    {4, 1, Decimal<&HdgRecord::variation>},
    {5, 1, Letter<&HdgRecord::variationDirection>},
};

constexpr S_FieldRule<RotRecord> kRotRules[] = {
    {1, 1, Decimal<&RotRecord::rate>},
    {2, 1, Letter<&RotRecord::status>},
};

constexpr S_FieldRule<DtmRecord> kDtmRules[] = {
    {1, 1, Text<&DtmRecord::localDatum>},
    {2, 1, Text<&DtmRecord::subdivision>},
    {3, 1, Decimal<&DtmRecord::latitudeOffset>},
    {4, 1, Letter<&DtmRecord::latitudeDirection>},
    {5, 1, Decimal<&DtmRecord::longitudeOffset>},
    {6, 1, Letter<&DtmRecord::longitudeDirection>},
    {7, 1, Decimal<&DtmRecord::altitudeOffset>},
    {8, 1, Text<&DtmRecord::referenceDatum>},
};

constexpr S_FieldRule<TxtRecord> kTxtRules[] = {
    {1, 1, Ordinal<&TxtRecord::totalSentences>},
    {2, 1, Ordinal<&TxtRecord::sentenceNumber>},
    {3, 1, Ordinal<&TxtRecord::identifier>},
    {4, 1, {ReadText<&TxtRecord::text>, WriteRest}},
};

constexpr S_FieldRule<VhwRecord> kVhwRules[] = {
    {1, 1, Decimal<&VhwRecord::headingTrue>},
    {2, 1, CheckedUnit<VhwRecord, 'T'>},
    {3, 1, Decimal<&VhwRecord::headingMagnetic>},
    {4, 1, CheckedUnit<VhwRecord, 'M'>},
    {5, 1, Decimal<&VhwRecord::speedKnots>},
    {6, 1, CheckedUnit<VhwRecord, 'N'>},
    {7, 1, Decimal<&VhwRecord::speedKmh>},
    {8, 1, CheckedUnit<VhwRecord, 'K'>},
};

constexpr S_FieldRule<DbtRecord> kDbtRules[] = {
    {1, 1, Decimal<&DbtRecord::depthFeet>},
    {2, 1, CheckedUnit<DbtRecord, 'f'>},
    {3, 1, Decimal<&DbtRecord::depthMeters>},
    {4, 1, CheckedUnit<DbtRecord, 'M'>},
    {5, 1, Decimal<&DbtRecord::depthFathoms>},
    {6, 1, CheckedUnit<DbtRecord, 'F'>},
};

constexpr S_FieldRule<DptRecord> kDptRules[] = {
    {1, 1, Decimal<&DptRecord::depth>},
    {2, 1, Decimal<&DptRecord::offset>},
    {3, 1, Decimal<&DptRecord::maxRange>},
};

constexpr S_FieldRule<MtwRecord> kMtwRules[] = {
    {1, 1, Decimal<&MtwRecord::temperature>},
    {2, 1, CheckedUnit<MtwRecord, 'C'>},
};

constexpr S_FieldRule<MwvRecord> kMwvRules[] = {
    {1, 1, Decimal<&MwvRecord::angle>},
    {2, 1, Letter<&MwvRecord::reference>},
    {3, 1, Decimal<&MwvRecord::speed>},
    {4, 1, Letter<&MwvRecord::speedUnit>},
    {5, 1, Letter<&MwvRecord::status>},
};

constexpr S_FieldRule<VlwRecord> kVlwRules[] = {
    {1, 1, Decimal<&VlwRecord::totalWater>},
    {2, 1, CheckedUnit<VlwRecord, 'N'>},
    {3, 1, Decimal<&VlwRecord::tripWater>},
    {4, 1, CheckedUnit<VlwRecord, 'N'>},
    {5, 1, Decimal<&VlwRecord::totalGround>},
    {6, 1, CheckedUnit<VlwRecord, 'N'>},
    {7, 1, Decimal<&VlwRecord::tripGround>},
    {8, 1, CheckedUnit<VlwRecord, 'N'>},
};

constexpr S_FieldRule<RmbRecord> kRmbRules[] = {
    {1,  1, Letter<&RmbRecord::status>},
    {2,  1, Decimal<&RmbRecord::crossTrackError>},
    {3,  1, Letter<&RmbRecord::steer>},
    {4,  1, Text<&RmbRecord::origin>},
    {5,  1, Text<&RmbRecord::destination>},
    {6,  2, Latitude<&RmbRecord::latitude>},
    {8,  2, Longitude<&RmbRecord::longitude>},
    {10, 1, Decimal<&RmbRecord::range>},
    {11, 1, Decimal<&RmbRecord::bearingTrue>},
    {12, 1, Decimal<&RmbRecord::closingSpeed>},
    {13, 1, Letter<&RmbRecord::arrival>},
    {14, 1, Mode<&RmbRecord::mode>},
};

constexpr S_FieldRule<XteRecord> kXteRules[] = {
    {1, 1, Letter<&XteRecord::status>},
    {2, 1, Letter<&XteRecord::lockStatus>},
    {3, 1, Decimal<&XteRecord::crossTrackError>},
    {4, 1, Letter<&XteRecord::steer>},
    {5, 1, CheckedUnit<XteRecord, 'N'>},
    {6, 1, Mode<&XteRecord::mode>},
};

constexpr S_FieldRule<ApbRecord> kApbRules[] = {
    {1,  1, Letter<&ApbRecord::status>},
    {2,  1, Letter<&ApbRecord::lockStatus>},
    {3,  1, Decimal<&ApbRecord::crossTrackError>},
    {4,  1, Letter<&ApbRecord::steer>},
    {5,  1, CheckedUnit<ApbRecord, 'N'>},
    {6,  1, Letter<&ApbRecord::arrival>},
    {7,  1, Letter<&ApbRecord::perpendicular>},
    {8,  1, Decimal<&ApbRecord::bearingOrigin>},
    {9,  1, Letter<&ApbRecord::bearingOriginReference>},
    {10, 1, Text<&ApbRecord::destination>},
    {11, 1, Decimal<&ApbRecord::bearing>},
    {12, 1, Letter<&ApbRecord::bearingReference>},
    {13, 1, Decimal<&ApbRecord::headingToSteer>},
    {14, 1, Letter<&ApbRecord::headingReference>},
    {15, 1, Mode<&ApbRecord::mode>},
};

constexpr S_FieldRule<BwcRecord> kBwcRules[] = {
    {1,  1, Time<&BwcRecord::timeOfDay>},
    {2,  2, Latitude<&BwcRecord::latitude>},
    {4,  2, Longitude<&BwcRecord::longitude>},
    {6,  1, Decimal<&BwcRecord::bearingTrue>},
    {7,  1, CheckedUnit<BwcRecord, 'T'>},
    {8,  1, Decimal<&BwcRecord::bearingMagnetic>},
    {9,  1, CheckedUnit<BwcRecord, 'M'>},
    {10, 1, Decimal<&BwcRecord::distance>},
    {11, 1, CheckedUnit<BwcRecord, 'N'>},
    {12, 1, Text<&BwcRecord::waypoint>},
    {13, 1, Mode<&BwcRecord::mode>},
};

constexpr S_FieldRule<WplRecord> kWplRules[] = {
    {1, 2, Latitude<&WplRecord::latitude>},
    {3, 2, Longitude<&WplRecord::longitude>},
    {5, 1, Text<&WplRecord::waypoint>},
};

// clang-format on

template <class Record, std::size_t N>
consteval S_MoreSentence<Record> Sentence(std::string_view formatter, const S_FieldRule<Record> (&rules)[N]) {
  const std::span<const S_FieldRule<Record>> all(rules);
  if (EndOfFields(all, 1) == 0) std::abort();  // the compiler stops here: a gap or an overlap in the table
  return {formatter, all};
}

constexpr std::tuple kSentences = {
    Sentence("GST", kGstRules), Sentence("GBS", kGbsRules), Sentence("GRS", kGrsRules), Sentence("HDT", kHdtRules),
    Sentence("THS", kThsRules), Sentence("HDG", kHdgRules), Sentence("ROT", kRotRules), Sentence("DTM", kDtmRules),
    Sentence("TXT", kTxtRules), Sentence("VHW", kVhwRules), Sentence("DBT", kDbtRules), Sentence("DPT", kDptRules),
    Sentence("MTW", kMtwRules), Sentence("MWV", kMwvRules), Sentence("VLW", kVlwRules), Sentence("RMB", kRmbRules),
    Sentence("XTE", kXteRules), Sentence("APB", kApbRules), Sentence("BWC", kBwcRules), Sentence("WPL", kWplRules),
};

template <class Record>
constexpr const S_MoreSentence<Record>& kSentence = std::get<S_MoreSentence<Record>>(kSentences);

// --- Decoding and encoding ---

// The text of TXT, of which the splitter has cut off what follows a comma, goes on to the end.
template <class Record>
void ExtendText(std::string_view, Record&) {}
void ExtendText(std::string_view sentence, TxtRecord& record) {
  if (!record.text.data()) return;
  record.text = sentence.substr(static_cast<std::size_t>(record.text.data() - sentence.data()));
}

template <class Record>
unsigned int DecodeMoreSentence(std::string_view text, NmeaRecord& record, TimeDigits digits) {
  Record& decoded = record.emplace<Record>();
  text.copy(decoded.talker, sizeof decoded.talker, 1);
  const unsigned int result = ReadFields(t_MoreFields(text), kSentence<Record>.rules, decoded, digits);
  ExtendText(text, decoded);
  return result;
}

struct S_MoreRow {
  std::string_view formatter;
  t_MoreDecoder decode;
};

constexpr auto kRows = std::apply(
    []<class... Records>(const S_MoreSentence<Records>&... sentences) {
      return std::array{S_MoreRow{sentences.formatter, DecodeMoreSentence<Records>}...};
    },
    kSentences);

template <class Record>
unsigned int AppendRecord(C_SentenceText& sentence, const Record& record) {
  const std::string_view talker(record.talker, sizeof record.talker);
  if (!IsAddress(talker) || talker[0] == 'P') return eResultOutOfRange;  // "$P" would make it proprietary
  sentence.AppendUnchecked("$");
  sentence.AppendUnchecked(talker);
  sentence.AppendUnchecked(kSentence<Record>.formatter);
  for (const S_FieldRule<Record>& rule : kSentence<Record>.rules)
    if (const unsigned int result = rule.kind.write(sentence, record); result != eResultOk) return result;
  return eResultOk;
}

constexpr bool IsAddressCharacter(char c) { return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'); }
constexpr bool IsSentenceCharacter(char c) { return static_cast<unsigned char>(c) >= ' ' && c != '*'; }

}  // namespace

t_MoreDecoder FindMoreDecoder(std::string_view formatter) {
  const auto* const row =
      std::find_if(kRows.begin(), kRows.end(), [formatter](const S_MoreRow& r) { return r.formatter == formatter; });
  return row == kRows.end() ? nullptr : row->decode;
}

bool IsAddress(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsAddressCharacter);
}

bool IsSentenceText(std::string_view text) { return std::all_of(text.begin(), text.end(), IsSentenceCharacter); }

unsigned int AppendMoreSentence(C_SentenceText& sentence, const NmeaRecord& record) {
  unsigned int result = eResultUnknownMessage;
  const auto append = [&](const auto* held) {
    if (held != nullptr) result = AppendRecord(sentence, *held);
  };
  std::apply([&]<class... Records>(const S_MoreSentence<Records>&...) { (append(std::get_if<Records>(&record)), ...); },
             kSentences);
  return result;
}

}  // namespace velagnss::textproto
