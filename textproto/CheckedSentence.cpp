// A host completes a sentence as text and gives that to the decoder, which sums, looks up and splits it again. Here the
// fields are completed in place and go to the same rules.
#include "textproto/CheckedSentence.h"

#include <algorithm>
#include <string_view>

#include "textproto/NmeaCompletion.h"
#include "textproto/NmeaSentences.h"

namespace velagnss::textproto {
namespace {

char DirectionLetter(std::string_view field) { return field == "E" || field == "W" ? field[0] : '\0'; }

// The text after so many commas, up to the next comma or asterisk; empty beyond the last.
std::string_view FieldAfterCommas(std::string_view sentence, unsigned int commas) {
  for (; commas > 0; --commas) {
    const std::size_t comma = sentence.find(',');
    if (comma == std::string_view::npos) return {};
    sentence.remove_prefix(comma + 1);
  }
  return sentence.substr(0, sentence.find_first_of(",*"));
}

// Fields of the text up to its checksum are what the decoder sees, where an asterisk separates. The letter is found by
// commas alone, in all of the sentence: that differs only for a sentence with an asterisk in the middle, or one so
// short that the letter would be after the checksum.
char VariationLetter(std::string_view sentence, std::string_view text, const t_NmeaFields& fields) {
  if (fields.Size() > kRmcVariationDirection && text.find('*') == std::string_view::npos)
    return DirectionLetter(fields[kRmcVariationDirection]);
  while (sentence.ends_with('\r') || sentence.ends_with('\n')) sentence.remove_suffix(1);
  return DirectionLetter(FieldAfterCommas(sentence, kRmcVariationDirection));
}

}  // namespace

unsigned int DecodeCheckedSentence(const unsigned char* sentence, unsigned short length, t_SentenceType type,
                                   U_EcdDcdData& record, char& variationLetter, TimeDigits digits) {
  SetZero(record);
  variationLetter = '\0';
  if (sentence == nullptr) return eResultNull;
  S_CheckedText checked;
  unsigned int result = CheckSentence(TextOf(sentence, length), checked);
  if (result != eResultOk) return result;

  t_NmeaFields fields(checked.text);
  const std::string_view whole(reinterpret_cast<const char*>(sentence), length);
  const char letter = type == C_RawDataMessage::eNmeaRMC ? VariationLetter(whole, checked.text, fields) : '\0';
  std::string_view rest;
  result = CompleteFields(checked, fields, rest);
  if (result != eResultOk) return result;

  // A place for the checksum, which counts as a field. No rule of the sentence's own type gets as far as to read it.
  fields.FillUpTo(std::min(fields.Size() + 1, t_NmeaFields::kLimits.fields));
  result = VisitSentence(type, [&](const auto& rules, auto member) {
    SetEmpty(rules, record.*member);
    return DecodeFields(rules, fields, checked.type, record.*member, digits);
  });
  if (result == eResultOk) variationLetter = letter;
  return result;
}

}  // namespace velagnss::textproto
