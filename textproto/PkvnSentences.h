// Where each field of a proprietary sentence is and how it is read: its tables. Internal.
#ifndef VELAGNSS_TEXTPROTO_PKVN_SENTENCES_H
#define VELAGNSS_TEXTPROTO_PKVN_SENTENCES_H

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>

#include "geo/NotAvailable.h"
#include "records/ResultCodes.h"
#include "textproto/FieldValues.h"
#include "textproto/PkvnNames.h"
#include "textproto/SentenceFields.h"
#include "textproto/SentenceRules.h"
#include "textproto/VelaPKVN_Messages.h"

namespace velagnss::textproto::PkvnSentences {

using namespace VelaPKVN_Messages;

inline constexpr std::size_t kFirstField = 2;  // after "$PKVN" and the message name

// A message: its name, the least number of fields, checksum digits included, and its fields without a gap.
template <class Record>
struct S_PkvnSentence {
  std::string_view name;
  std::size_t minFields;
  std::span<const S_FieldRule<Record>> rules;
  bool isReadToTheEnd;   // more fields than the rules take are an error
  bool isKeptOnFailure;  // the last record stays when the next sentence of its type is bad
};

// --- Readers. An empty field stores the marker, without an error. ---

// Unlike those of NMEA sentences, times and dates leave in the record what was read before a failure: a bad time is 0.
template <class Record>
// "120000.00"
unsigned int Time(std::string_view field, unsigned int, Record& record) {
  return ResultOf(ParseTimeOfDaySeconds(field, record.timeOfDay));
}

template <class Record>
unsigned int Date(std::string_view field, unsigned int, Record& record) {
  S_Date date = {};
  const bool isRead = ParseDate(field, {NA_U16, NA_U8, NA_U8}, date);
  record.year = date.year;
  record.month = date.month;
  record.day = date.day;
  return ResultOf(isRead);
}

// One of two letters; 0 when empty.
template <auto Member, char First, char Second, class Record>
unsigned int Letter(std::string_view field, unsigned int, Record& record) {
  // Before the checks: a bad letter leaves the member empty.
  record.*Member = 0;
  if (field.empty()) return eResultOk;
  if (field.size() != 1 || (field[0] != First && field[0] != Second)) return eResultBadField;
  record.*Member = field[0];
  return eResultOk;
}

// Copies what fits together with a NUL; the rest of `text` must be zero.
template <std::size_t Size>
unsigned int ReadText(std::string_view field, char (&text)[Size]) {
  text[field.copy(text, Size - 1)] = '\0';
  return eResultOk;
}

template <auto Member, class Record>
unsigned int Text(std::string_view field, unsigned int, Record& record) {
  return ReadText(field, record.*Member);
}

template <class Record>
// Kept as text, one element per field, in the order of the sentence.
unsigned int Rest(std::string_view field, unsigned int index, Record& record) {
  return ReadText(field, record.rest[index]);
}

// --- The messages: first field, number of fields, and their reader ---

// clang-format off

// $PKVN,ATTSTAT,7,rover,1.5,-2.5,N,3.5,4.5,R,9,L1,(4,5,6),E5a+b,(7,8,9)*33
inline constexpr S_FieldRule<S_PKvnAttStat> kAttStatRules[] = {
    {2, 1, Number<&S_PKvnAttStat::field2>},
    {3, 1, Text<&S_PKvnAttStat::text3>},
    {4, 1, Number<&S_PKvnAttStat::field4>},
    {5, 1, Number<&S_PKvnAttStat::field5>},
    {6, 1, Letter<&S_PKvnAttStat::field6, 'N', 'G'>},
    {7, 1, Number<&S_PKvnAttStat::field7>},
    {8, 1, Number<&S_PKvnAttStat::field8>},
    {9, 1, Letter<&S_PKvnAttStat::field9, 'P', 'R'>},
    {10, 1, Number<&S_PKvnAttStat::field10>},
    {11, kMaxRestFields, Rest},
};

// $PKVN,GBS,010203.50,1.5,2.5,3.5,4,5.5,6.5,7.5,8,9,10*4E
inline constexpr S_FieldRule<S_PKvnGbs> kGbsRules[] = {
    {2, 1, Time},
    {3, 1, Number<&S_PKvnGbs::field3>},
    {4, 1, Number<&S_PKvnGbs::field4>},
    {5, 1, Number<&S_PKvnGbs::field5>},
    {6, 1, Number<&S_PKvnGbs::field6>},
    {7, 1, Number<&S_PKvnGbs::field7>},
    {8, 1, Number<&S_PKvnGbs::field8>},
    {9, 1, Number<&S_PKvnGbs::field9>},
    {10, 1, Number<&S_PKvnGbs::field10>},
    {11, 1, Number<&S_PKvnGbs::field11>},
    {12, 1, Number<&S_PKvnGbs::field12>},
};

// $PKVN,HPR,120000.00,271.50,-1.25,0.75,G*15
inline constexpr S_FieldRule<S_PKvnHpr> kHprRules[] = {
    {2, 1, Time},
    {3, 1, Number<&S_PKvnHpr::heading>},
    {4, 1, Number<&S_PKvnHpr::pitch>},
    {5, 1, Number<&S_PKvnHpr::roll>},
    {6, 1, Letter<&S_PKvnHpr::field6, 'N', 'G'>},
};

// $PKVN,BLV,120000.00,290224,1.5,-2.5,3.5,65000,8,9,0.5*66
inline constexpr S_FieldRule<S_PKvnBlv> kBlvRules[] = {
    {2, 1, Time},
    {3, 1, Date},
    {4, 1, Number<&S_PKvnBlv::field4>},
    {5, 1, Number<&S_PKvnBlv::field5>},
    {6, 1, Number<&S_PKvnBlv::field6>},
    {7, 1, Number<&S_PKvnBlv::field7>},
    {8, 1, Number<&S_PKvnBlv::field8>},
    {9, 1, Number<&S_PKvnBlv::field9>},
    {10, 1, Number<&S_PKvnBlv::field10>},
};

// $PKVN,FVI,120000.00,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,rover,20,21,1,2,3,4,22,23*3F
inline constexpr S_FieldRule<S_PKvnFvi> kFviRules[] = {
    {2, 1, Time},
    {3, 19, Number<&S_PKvnFvi::field3to21>},
    {22, 1, Text<&S_PKvnFvi::text22>},
    {23, 1, Number<&S_PKvnFvi::field23>},
    {24, 1, Number<&S_PKvnFvi::field24>},
    {25, 1, Number<&S_PKvnFvi::field25>},
    {26, 1, Number<&S_PKvnFvi::field26>},
    {27, 1, Number<&S_PKvnFvi::field27>},
    {28, 1, Number<&S_PKvnFvi::field28>},
    {29, 1, Number<&S_PKvnFvi::field29>},
    {30, 1, Number<&S_PKvnFvi::field30>},
};

// Everything is kept as text: the number of signals varies, and what the numbers mean is not known.
inline constexpr S_FieldRule<S_PKvnRtkStat> kRtkStatRules[] = {
    {2, kMaxRestFields, Rest},
};

inline constexpr S_FieldRule<S_PKvnVct> kVctRules[] = {
    {2, 1, Number<&S_PKvnVct::field2>},
    {3, 1, Time},
    {4, 1, Number<&S_PKvnVct::field4>},
    {5, 1, Number<&S_PKvnVct::field5>},
    {6, 1, Number<&S_PKvnVct::field6>},
    {7, 1, Number<&S_PKvnVct::field7>},
    {8, 1, Number<&S_PKvnVct::field8>},
    {9, 1, Number<&S_PKvnVct::field9>},
    {10, 1, Number<&S_PKvnVct::field10>},
    {11, 1, Number<&S_PKvnVct::field11>},
};

inline constexpr S_FieldRule<S_PKvnINTLT> kIntltRules[] = {{2, 1, Number<&S_PKvnINTLT::field2>}};

inline constexpr S_FieldRule<S_PKvnTEMPERATURE> kTemperatureRules[] = {{2, 1, Number<&S_PKvnTEMPERATURE::field2>}};

// Four fields are enough, so in a short sentence the digits of the checksum are read as a number; if they are none, the
// sentence is refused.
inline constexpr S_FieldRule<S_PKvnARN> kArnRules[] = {
    {2, 1, Number<&S_PKvnARN::field2>},
    {3, 1, Number<&S_PKvnARN::field3>},
    {4, 1, Number<&S_PKvnARN::field4>},
    {5, 1, Number<&S_PKvnARN::field5>},
    {6, 1, Number<&S_PKvnARN::field6>},
    {7, 1, Number<&S_PKvnARN::field7>},
    {8, 1, Number<&S_PKvnARN::field8>},
    {9, 1, Number<&S_PKvnARN::field9>},
    {10, 1, Number<&S_PKvnARN::field10>},
    {11, 1, Number<&S_PKvnARN::field11>},
    {12, 1, Number<&S_PKvnARN::field12>},
    {13, 1, Number<&S_PKvnARN::field13>},
};

//                                                            name                 fields             to the end  kept
inline constexpr S_PkvnSentence<S_PKvnAttStat> kAttStat         = {kNames[ePkvnATTSTAT],     19, kAttStatRules,     true,  false};
inline constexpr S_PkvnSentence<S_PKvnGbs> kGbs                 = {kNames[ePkvnGBS],         14, kGbsRules,         false, false};
inline constexpr S_PkvnSentence<S_PKvnHpr> kHpr                 = {kNames[ePkvnHPR],          8, kHprRules,         false, false};
inline constexpr S_PkvnSentence<S_PKvnBlv> kBlv                 = {kNames[ePkvnBLV],         12, kBlvRules,         false, false};
inline constexpr S_PkvnSentence<S_PKvnFvi> kFvi                 = {kNames[ePkvnFVI],         32, kFviRules,         false, false};
inline constexpr S_PkvnSentence<S_PKvnRtkStat> kRtkStat         = {kNames[ePkvnRTKSTAT],     20, kRtkStatRules,     false, false};
inline constexpr S_PkvnSentence<S_PKvnVct> kVct                 = {kNames[ePkvnVCT],         13, kVctRules,         false, false};
inline constexpr S_PkvnSentence<S_PKvnINTLT> kIntlt             = {kNames[ePkvnINTLT],        4, kIntltRules,       false, false};
inline constexpr S_PkvnSentence<S_PKvnTEMPERATURE> kTemperature = {kNames[ePkvnTEMPERATURE],  4, kTemperatureRules, false, true};
inline constexpr S_PkvnSentence<S_PKvnARN> kArn                 = {kNames[ePkvnARN_ROUTER],   4, kArnRules,         false, false};

// clang-format on

template <class Record>
// Position after the last field that the rules take.
constexpr std::size_t EndOf(const S_PkvnSentence<Record>& sentence) {
  return EndOfFields(sentence.rules, kFirstField);
}

// Messages whose least number of fields is all of them and the checksum, and those that may be longer or shorter.
static_assert(EndOf(kGbs) + 1 == kGbs.minFields && EndOf(kHpr) + 1 == kHpr.minFields &&
              EndOf(kBlv) + 1 == kBlv.minFields && EndOf(kFvi) + 1 == kFvi.minFields &&
              EndOf(kVct) + 1 == kVct.minFields && EndOf(kIntlt) + 1 == kIntlt.minFields &&
              EndOf(kTemperature) + 1 == kTemperature.minFields);
static_assert(EndOf(kArn) == 14 && EndOf(kRtkStat) == 66 && EndOf(kAttStat) == 75);

// One field more than the longest message takes, to see that there are too many.
using t_PkvnFields = C_SentenceFields<S_FieldLimits{EndOf(kAttStat) + 1, 2047, kMaxCountedField}>;

// Not available: what a sentence of empty fields leaves. Padding is zero, too.
template <class Record>
void SetEmpty(const S_PkvnSentence<Record>& sentence, Record& record) {
  // Zero first: ReadText relies on it, and so do hosts that compare records as bytes.
  std::memset(&record, 0, sizeof record);
  for (const S_FieldRule<Record>& rule : sentence.rules)
    for (unsigned int i = 0; i < rule.count; ++i) rule.kind.read({}, i, record);
}

// Fields to record, which must be empty.
template <class Record>
[[nodiscard]] unsigned int DecodeFields(const S_PkvnSentence<Record>& sentence, const t_PkvnFields& fields,
                                        Record& record) {
  if (fields.Count() < sentence.minFields) return eResultBadField;
  // The operations for one type are not preceded by the frame check, so the name is compared here.
  if (fields[0] != "$PKVN" || fields[1] != sentence.name) return eResultWrongSentence;
  const unsigned int result = ReadFields(fields, sentence.rules, record);
  if (result != eResultOk) return result;
  // The checksum digits count among the kept texts: they are a field like any other.
  const std::size_t end = std::min(fields.Count(), EndOf(sentence));
  if constexpr (requires { record.restCount; })
    record.restCount = static_cast<unsigned short>(end - sentence.rules.back().first);
  // A list that was cut must not pass for a whole one.
  return sentence.isReadToTheEnd && end < fields.Count() ? eResultBadField : eResultOk;
}

}  // namespace velagnss::textproto::PkvnSentences

#endif  // VELAGNSS_TEXTPROTO_PKVN_SENTENCES_H
