// Receivers in use send what their NMEA version knew: RMC without mode and status, GLL without time, VTG without units,
// GSV with as many satellites as there are. The decoders read by position and ask for a least number of fields, so most
// of these would be refused, or a checksum read as a satellite. Completed, they decode without loss.
#include "textproto/NmeaCompletion.h"

#include <array>
#include <iterator>

#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/SentenceChecksum.h"

namespace velagnss::textproto {
namespace {

constexpr std::size_t kChecksumLength = 3;  // "*" and two digits

const S_Completion* FindCompletion(t_SentenceType type) {
  const S_Completion* found = nullptr;
  VisitSentence(type, [&found](const auto& sentence, auto) {
    found = &sentence.completion;
    return eResultOk;
  });
  return found;
}

std::size_t PrintedLength(const t_NmeaFields& fields, std::string_view rest) {
  std::size_t length = fields.Size() - 1 + rest.size() + kChecksumLength;
  for (std::size_t i = 0; i < fields.Size(); ++i) length += fields[i].size();
  return length;
}

// A sentence that fits may be too long once fields have been added to it. Hardly any comes near: it is not measured.
bool IsTooLong(const S_CheckedText& checked, const t_NmeaFields& fields, std::string_view rest) {
  constexpr std::size_t kMostAdded = t_NmeaFields::kLimits.fields + 2;  // commas, and what is put into a field
  constexpr std::size_t kLimit = t_NmeaFields::kLimits.textLength;
  return checked.text.size() + kMostAdded + kChecksumLength > kLimit && PrintedLength(fields, rest) > kLimit;
}

// Appends to a buffer that is known to be large enough.
char* Append(char* out, std::string_view text) { return out + text.copy(out, text.size()); }

}  // namespace

unsigned int CheckSentence(std::string_view sentence, S_CheckedText& checked) {
  checked.type = TypeOf(sentence);
  checked.completion = FindCompletion(checked.type);
  if (checked.completion == nullptr) return eResultWrongSentence;
  const std::size_t star = FindCheckedStar(sentence);
  if (star == std::string_view::npos) return eResultChecksum;
  checked.text = sentence.substr(0, star);
  return eResultOk;
}

unsigned int CompleteFields(const S_CheckedText& checked, t_NmeaFields& fields, std::string_view& rest) {
  if (fields.Size() == 0) return eResultPastEnd;  // the text alone is too long
  const std::string_view last = fields[fields.Size() - 1];
  rest = checked.text.substr(static_cast<std::size_t>(last.data() - checked.text.data()) + last.size());
  const S_Completion& completion = *checked.completion;
  if (completion.arrange != nullptr) completion.arrange(fields);
  fields.FillUpTo(completion.fields);
  if (completion.amend != nullptr) completion.amend(fields);
  return IsTooLong(checked, fields, rest) ? eResultPastEnd : eResultOk;
}

// With fewer than four satellites the signal id, if there is one, moves to its place after the fourth.
void ArrangeGsv(t_NmeaFields& fields) {
  const std::size_t size = fields.Size();
  const bool hasSignalId = size > kGsvFirstSatellite && (size - kGsvFirstSatellite) % kGsvFieldsPerSatellite == 1;
  if (hasSignalId) fields.Insert(size - 1, kGsvSignalId + 1 - size);
}

// The signal id is one hexadecimal digit (NMEA 0183 4.11); the decoder reads a decimal number.
void AmendGsv(t_NmeaFields& fields) {
  constexpr std::string_view kLetters = "ABCDEFabcdef";
  constexpr std::string_view kNumbers[] = {"10", "11", "12", "13", "14", "15"};
  const std::string_view signalId = fields[kGsvSignalId];
  const std::size_t letter = signalId.size() == 1 ? kLetters.find(signalId[0]) : std::string_view::npos;
  if (letter != std::string_view::npos) fields.Replace(kGsvSignalId, kNumbers[letter % std::size(kNumbers)]);
}

// An empty direction would make the longitude not available.
void AmendRmc(t_NmeaFields& fields) {
  if (fields[kRmcVariationDirection].empty()) fields.Replace(kRmcVariationDirection, "E");
}

// Before NMEA 0183 2.0 the sentence was four numbers without units.
void ArrangeVtg(t_NmeaFields& fields) {
  constexpr std::size_t kFirstUnit = 2;
  if (fields.Size() != 1 + 4 || fields[kFirstUnit] == "T") return;
  for (std::size_t unit = kFirstUnit; unit <= 8; unit += 2) fields.Insert(unit, 1);
}

}  // namespace velagnss::textproto

unsigned int C_NMEA_EncodeDecode::MakeDecodable(const unsigned char* sentence, unsigned short length,
                                                unsigned char* out, unsigned short& outLength) {
  using namespace velagnss::textproto;
  if (sentence == nullptr || out == nullptr) return eResultNull;
  S_CheckedText checked;
  unsigned int result = CheckSentence(TextOf(sentence, length), checked);
  if (result != eResultOk) return result;
  t_NmeaFields fields(checked.text);
  std::string_view rest;
  result = CompleteFields(checked, fields, rest);
  if (result != eResultOk) return result;

  char* const begin = reinterpret_cast<char*>(out);
  char* end = Append(begin, fields[0]);
  for (std::size_t i = 1; i < fields.Size(); ++i) {
    *end++ = ',';
    end = Append(end, fields[i]);
  }
  end = Append(end, rest);
  const std::array<char, kChecksumLength> checksum = ChecksumText({begin, static_cast<std::size_t>(end - begin)});
  end = Append(end, {checksum.data(), checksum.size()});
  *end = '\0';
  outLength = static_cast<unsigned short>(end - begin);
  return eResultOk;
}
