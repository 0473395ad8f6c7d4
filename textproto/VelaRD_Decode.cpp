// This sentence is scanned by the rules of the C library: a number may be followed by any text. There is no checksum,
// so ranges are what keeps noise out.
#include "textproto/VelaRD_Decode.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <limits>
#include <string_view>

#include "records/ResultCodes.h"
#include "textproto/NumberText.h"
#include "textproto/SentenceFields.h"
#include "textproto/SentenceRules.h"

using namespace VelaRD_Messages;
using namespace velagnss::textproto;

namespace {

constexpr std::string_view kPrefix = "$RD";
constexpr std::string_view kRd1Id = "$RD1";
constexpr unsigned int kMinFrame = 10;
constexpr unsigned int kMaxFrame = 512;
constexpr unsigned short kVersion1 = 1;

// Ranges. What is not a number lies in none of them.
constexpr bool IsTimeOfWeek(double value) { return value >= 0 && value < 604800; }
constexpr bool Is1300To1700(double value) { return value >= 1300 && value <= 1700; }
constexpr bool Is0To200(double value) { return value >= 0 && value <= 200; }
constexpr bool IsAnything(double) { return true; }
constexpr bool IsNotNegative(long long value) { return value >= 0; }

// Readers of one field, which must not be empty: a result code, and the value in the record whenever the text is such a
// number. They scan as the C library does, less strictly than those of other sentences.

using t_Record = S_IntSignalDiagMsg;

unsigned int NotEmpty(std::string_view field, unsigned int, t_Record&) { return ResultOf(!field.empty()); }

// "%lf"
template <double t_Record::*Member, bool (*IsInRange)(double)>
unsigned int Real(std::string_view field, unsigned int, t_Record& record) {
  if (NumberText::ScanDouble(field, record.*Member) == 0) return eResultBadField;
  return IsInRange(record.*Member) ? eResultOk : eResultOutOfRange;
}

unsigned int StoreInteger(long long value, std::int64_t& member) {
  member = value;
  return IsNotNegative(value) ? eResultOk : eResultOutOfRange;
}

// "%ld"
template <std::int64_t t_Record::*Member>
unsigned int Integer(std::string_view field, unsigned int, t_Record& record) {
  long long value = 0;
  if (NumberText::ScanS64(field, value) == 0) return eResultBadField;
  return StoreInteger(value, record.*Member);
}

// "%ld-%ld"; "12--3" has a negative second part, "12 -3" none.
template <std::int64_t t_Record::*First, std::int64_t t_Record::*Second>
unsigned int IntegerPair(std::string_view field, unsigned int, t_Record& record) {
  long long first = 0;
  long long second = 0;
  const std::size_t used = NumberText::ScanS64(field, first);
  if (used == 0 || used == field.size() || field[used] != '-') return eResultBadField;
  if (NumberText::ScanS64(field.substr(used + 1), second) == 0) return eResultBadField;
  const unsigned int result = StoreInteger(first, record.*First);
  return result != eResultOk ? result : StoreInteger(second, record.*Second);
}

// "%lX"; what has the highest of its 64 bits set is negative.
template <std::int64_t t_Record::*Member>
unsigned int Hex(std::string_view field, unsigned int, t_Record& record) {
  unsigned long long value = 0;
  if (NumberText::ScanHex64(field, value) == 0) return eResultBadField;
  return StoreInteger(static_cast<long long>(value), record.*Member);
}

// "%lX" of 32 bits.
template <std::uint32_t t_Record::*Member>
unsigned int Hex32(std::string_view field, unsigned int, t_Record& record) {
  unsigned long long value = 0;
  if (NumberText::ScanHex64(field, value) == 0) return eResultBadField;
  if (value > std::numeric_limits<std::uint32_t>::max()) return eResultBadField;
  record.*Member = static_cast<std::uint32_t>(value);
  return eResultOk;
}

// clang-format off
constexpr S_FieldRule<t_Record> kRd1Rules[] = {
    {1,  1, Real<&t_Record::timeOfWeek, IsTimeOfWeek>},
    {2,  1, Integer<&t_Record::field2>},
    {3,  1, Real<&t_Record::field3, Is1300To1700>},
    {4,  1, NotEmpty},
    {5,  1, IntegerPair<&t_Record::field5a, &t_Record::field5b>},
    {6,  1, Real<&t_Record::field6, Is0To200>},
    {7,  1, Real<&t_Record::field7, IsAnything>},
    {8,  1, Real<&t_Record::field8, IsAnything>},
    {9,  1, Hex<&t_Record::field9>},
    {10, 1, Hex<&t_Record::field10>},
    {11, 1, Integer<&t_Record::field11>},
    {12, 1, Hex32<&t_Record::field12>},
};
// clang-format on

constexpr std::span<const S_FieldRule<t_Record>> kRd1(kRd1Rules);
using t_Rd1Fields = C_SentenceFields<S_FieldLimits{EndOfFields(kRd1, 1), kMaxFrame, 64}>;

// The number of fields is not checked: the sentence ends where its fields do.
unsigned int DecodeFields(const t_Rd1Fields& fields, t_Record& record) {
  if (fields.Readable() == 0) return eResultWrongSentence;
  if (fields[0].empty()) return eResultBadField;
  return fields[0] == kRd1Id ? ReadFields(fields, kRd1, record) : eResultWrongSentence;
}

// Index of the comma after a version number. The rule of the sentence counts one place more already from 9 and 99 on,
// so that those versions are not found unless two commas follow; only version 1 exists.
constexpr std::size_t CommaIndex(long long version) { return version <= 8 ? 4 : version <= 98 ? 5 : 6; }

bool HasLineEnd(std::string_view sentence) { return sentence.ends_with('\r') || sentence.ends_with("\r\n"); }

}  // namespace

C_VelaRD_Decode::C_VelaRD_Decode() { Reset(); }

void C_VelaRD_Decode::Reset() {
  std::memset(&m_record, 0, sizeof m_record);
  m_lastResult = eResultOk;
}

unsigned int C_VelaRD_Decode::ValidateFrame(const unsigned char* frame, unsigned short length,
                                            unsigned short& version) {
  if (frame == nullptr) return eResultNull;
  if (length < kMinFrame || length > kMaxFrame) return eResultTooLong;
  const std::string_view sentence(reinterpret_cast<const char*>(frame), length);
  if (!sentence.starts_with(kPrefix)) return eResultBadSync;
  long long number = 0;
  if (NumberText::ScanS64(sentence.substr(kPrefix.size()), number) == 0) return eResultBadSync;
  if (sentence[CommaIndex(number)] != ',') return eResultBadSync;
  if (!HasLineEnd(sentence)) return eResultBadSync;
  if (number > kVersion1) return eResultUnknownMessage;
  version = static_cast<unsigned short>(number);
  return eResultOk;
}

unsigned int C_VelaRD_Decode::Decode(unsigned char* frame, const unsigned short& length, unsigned short& version,
                                     U_VelaRD_EcdDcdData& data) {
  std::memset(&data, 0, sizeof data);
  m_lastResult = ValidateFrame(frame, length, version);
  if (m_lastResult != eResultOk) return m_lastResult;
  if (version != kVersion1) return m_lastResult = eResultUnknownMessage;
  return Decode_RD1(frame, length, data.signalDiag);
}

unsigned int C_VelaRD_Decode::Decode_RD1(unsigned char* frame, const unsigned short& length, t_Record& record) {
  if (frame == nullptr) return m_lastResult = eResultNull;
  if (length < kMinFrame) return m_lastResult = eResultBadSync;
  if (length > kMaxFrame) return m_lastResult = eResultPastEnd;
  std::memset(&m_record, 0, sizeof m_record);
  m_lastResult = DecodeFields(t_Rd1Fields(TextOf(frame, length)), m_record);
  if (m_lastResult == eResultOk) record = m_record;
  return m_lastResult;
}
