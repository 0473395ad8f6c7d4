// What any sentence has in common: address, checksum and line end. The address selects one of the two sets of tables,
// NmeaSentences.h for the eight of C_NMEA_EncodeDecode, NmeaMoreSentences.h for the others; without a table a sentence
// is taken apart at its commas.
#include "textproto/NmeaSentenceCodec.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "records/ResultCodes.h"
#include "textproto/CheckedSentence.h"
#include "textproto/NmeaMoreSentences.h"
#include "textproto/NmeaSentences.h"
#include "textproto/SentenceChecksum.h"
#include "textproto/SentenceText.h"

namespace velagnss {
namespace {

using namespace textproto;

constexpr std::size_t kChecksumLength = 3;    // "*" and two digits
constexpr std::size_t kPlainAddress = 2 + 3;  // talker and formatter
constexpr std::string_view kLineEnd = "\r\n";

std::string_view WithoutLineEnd(std::string_view sentence) {
  while (sentence.ends_with('\r') || sentence.ends_with('\n')) sentence.remove_suffix(1);
  return sentence;
}

// From "$" or "!" to the first comma or the checksum; empty for what is not an address.
std::string_view AddressOf(std::string_view sentence) {
  if (sentence.empty() || (sentence[0] != '$' && sentence[0] != '!')) return {};
  const std::string_view address = sentence.substr(1, sentence.find_first_of(",*", 1) - 1);
  return IsAddress(address) ? address : std::string_view();
}

// The letters that name a sentence of a known formatter; empty for any other.
std::string_view PlainFormatter(char start, std::string_view address) {
  const bool isPlain = start == '$' && address.size() == kPlainAddress && address[0] != 'P';
  return isPlain ? address.substr(2) : std::string_view();
}

// Unlike `FindCheckedStar`, which is as lenient as a scan with "%x", and asks for a longer address.
bool IsChecksumRight(std::string_view text, std::string_view checksum) {
  const std::array<char, kChecksumLength> expected = ChecksumText(text);
  const auto isEqual = [](char digit, char upper) {
    return digit == upper || (upper >= 'A' && digit == upper - 'A' + 'a');
  };
  return std::equal(checksum.begin(), checksum.end(), expected.begin(), isEqual);
}

unsigned int DecodeOneOfEight(std::string_view sentence, t_SentenceType type, NmeaRecord& record, TimeDigits digits) {
  U_EcdDcdData data;
  char variation = '\0';
  const unsigned int result =
      DecodeCheckedSentence(reinterpret_cast<const unsigned char*>(sentence.data()),
                            static_cast<unsigned short>(sentence.size()), type, data, variation, digits);
  if (result != eResultOk) return result;
  if (type == C_RawDataMessage::eNmeaRMC) data.rmc.variationDirection = static_cast<unsigned char>(variation);
  return VisitSentence(type, [&](const auto&, auto member) {
    record = data.*member;
    return static_cast<unsigned int>(eResultOk);
  });
}

bool IsOneOfEight(t_SentenceType type) {
  return VisitSentence(type, [](const auto&, auto) { return static_cast<unsigned int>(eResultOk); }) == eResultOk;
}

unsigned int DecodeAny(std::string_view sentence, NmeaRecord& record, TimeDigits digits) {
  if (sentence.size() > kMaxSentenceLength) return eResultTooLong;
  sentence = WithoutLineEnd(sentence);
  const std::string_view address = AddressOf(sentence);
  if (address.empty()) return eResultWrongSentence;
  const std::size_t least = 1 + address.size() + kChecksumLength;
  if (sentence.size() < least) return eResultChecksum;
  const std::string_view text = sentence.substr(0, sentence.size() - kChecksumLength);
  if (!IsChecksumRight(text, sentence.substr(text.size()))) return eResultChecksum;

  const std::string_view formatter = PlainFormatter(sentence[0], address);
  const t_SentenceType type = formatter.empty() ? C_RawDataMessage::eNmeaUnknown : SentenceIds::Find(formatter.data());
  if (IsOneOfEight(type)) return DecodeOneOfEight(sentence, type, record, digits);
  if (const t_MoreDecoder decode = FindMoreDecoder(formatter)) return decode(text, record, digits);
  record = OtherSentence{sentence[0], address, FieldList(text.substr(1 + address.size()))};
  return eResultOk;
}

// --- Encoding ---

unsigned int AppendOther(C_SentenceText& sentence, const OtherSentence& record) {
  const std::string_view fields = record.fields.Text();
  const bool hasAddress = (record.start == '$' || record.start == '!') && IsAddress(record.address);
  if (!hasAddress) return eResultWrongSentence;
  if (!IsSentenceText(fields) || (!fields.empty() && fields[0] != ',')) return eResultOutOfRange;
  unsigned int result = sentence.Append(std::string_view(&record.start, 1));
  if (result == eResultOk) result = sentence.Append(record.address);
  return result == eResultOk ? sentence.Append(fields) : result;
}

// In the order of the variant, after OtherSentence.
constexpr t_SentenceType kEight[] = {C_RawDataMessage::eNmeaGGA, C_RawDataMessage::eNmeaGNS, C_RawDataMessage::eNmeaZDA,
                                     C_RawDataMessage::eNmeaGLL, C_RawDataMessage::eNmeaGSV, C_RawDataMessage::eNmeaGSA,
                                     C_RawDataMessage::eNmeaRMC, C_RawDataMessage::eNmeaVTG};

unsigned int AppendOneOfEight(C_SentenceText& sentence, const NmeaRecord& record) {
  return VisitSentence(kEight[record.index() - 1], [&]<class Record>(const S_NmeaSentence<Record>& rules, auto) {
    const Record& held = std::get<Record>(record);
    const std::string_view talker(held.talker, sizeof held.talker);
    const bool isAddress = IsAddress(talker) && talker[0] != 'P';  // "$P" would make it proprietary
    return isAddress ? AppendSentence(sentence, rules, held) : static_cast<unsigned int>(eResultOutOfRange);
  });
}

unsigned int AppendAny(C_SentenceText& sentence, const NmeaRecord& record) {
  if (const auto* const other = std::get_if<OtherSentence>(&record)) return AppendOther(sentence, *other);
  return record.index() - 1 < std::size(kEight) ? AppendOneOfEight(sentence, record)
                                                : AppendMoreSentence(sentence, record);
}

}  // namespace

unsigned int DecodeSentence(std::string_view sentence, NmeaRecord& record, TimeDigits digits) {
  const unsigned int result = sentence.data() == nullptr ? eResultNull : DecodeAny(sentence, record, digits);
  if (result != eResultOk) record.emplace<OtherSentence>();
  return result;
}

unsigned int EncodeSentence(const NmeaRecord& record, char* out, std::size_t capacity, std::size_t& length,
                            TimeDigits digits) {
  if (out == nullptr) return eResultNull;
  char text[kMaxSentenceLength] = {};
  C_SentenceText sentence(text, digits);
  const unsigned int result = AppendAny(sentence, record);
  if (result != eResultOk) return result;
  const std::array<char, kChecksumLength> checksum = ChecksumText(sentence.View());
  sentence.AppendUnchecked({checksum.data(), checksum.size()});
  sentence.AppendUnchecked(kLineEnd);
  if (sentence.View().size() > capacity) return eResultPastEnd;
  length = sentence.View().copy(out, capacity);
  return eResultOk;
}

std::string_view SentenceName(std::string_view sentence) {
  const std::string_view address = AddressOf(sentence);
  return address.size() <= 2 || address[0] == 'P' ? address : address.substr(2);
}

}  // namespace velagnss
