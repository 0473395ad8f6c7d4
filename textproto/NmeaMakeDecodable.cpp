// Sentences of earlier NMEA versions, and short ones, in the form that the decoders read without loss.
#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "records/ResultCodes.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/SentenceRules.h"

namespace {

// The fields of a sentence between its id and its checksum.
class C_Fields {
 public:
  explicit C_Fields(std::string_view text) {
    C_FieldWalk walk(text, kSentenceDelimiters);
    walk.Next(m_id);
    while (m_count < m_fields.size() && walk.Next(m_fields[m_count])) ++m_count;
    const std::string_view last = m_count == 0 ? m_id : m_fields[m_count - 1];
    m_rest = text.substr(static_cast<std::size_t>(last.data() - text.data()) + last.size());
  }

  std::size_t Count() const { return m_count; }
  std::string_view& operator[](std::size_t index) { return m_fields[index]; }

  // Empty fields in front of that of the index. There must be room for them.
  void Insert(std::size_t index, std::size_t number) {
    const auto first = m_fields.begin() + index;
    std::copy_backward(first, m_fields.begin() + m_count, m_fields.begin() + m_count + number);
    std::fill_n(first, number, std::string_view());
    m_count += number;
  }
  void FillUp(std::size_t count) {
    if (m_count < count) Insert(m_count, count - m_count);
  }

  void Print(C_FieldText& out) const {
    out.Add(m_id);
    for (std::size_t i = 0; i < m_count; ++i) {
      out.Add(',');
      out.Add(m_fields[i]);
    }
    out.Add(m_rest);
  }

 private:
  std::string_view m_id;
  std::array<std::string_view, t_NmeaFields::kMaxFields - 1> m_fields;
  std::size_t m_count = 0;
  std::string_view m_rest;  // more fields than any sentence has, kept as they are
};

constexpr std::size_t kGsvHead = 3;
constexpr std::size_t kGsvPerSatellite = 4;
constexpr std::size_t kGsvSignalId = kGsvHead + 4 * kGsvPerSatellite;

// Up to four satellites of four fields each, then perhaps a signal id: that goes behind the fourth.
void ArrangeGsv(C_Fields& fields) {
  const std::size_t count = fields.Count();
  const bool hasSignalId = count > kGsvHead && (count - kGsvHead) % kGsvPerSatellite == 1;
  if (hasSignalId) fields.Insert(count - 1, kGsvSignalId + 1 - count);
}

// The signal id is one hexadecimal digit (NMEA 0183 4.11); the decoder reads a decimal number.
void AmendGsv(C_Fields& fields) {
  constexpr std::string_view kLetters = "ABCDEFabcdef";
  constexpr std::string_view kNumbers[] = {"10", "11", "12", "13", "14", "15"};
  std::string_view& signalId = fields[kGsvSignalId];
  const std::size_t letter = signalId.size() == 1 ? kLetters.find(signalId[0]) : std::string_view::npos;
  if (letter != std::string_view::npos) signalId = kNumbers[letter % std::size(kNumbers)];
}

// An empty direction would take the longitude away.
void AmendRmc(C_Fields& fields) {
  constexpr std::size_t kVariationDirection = 10;
  if (fields[kVariationDirection].empty()) fields[kVariationDirection] = "E";
}

// The first versions had four numbers and no units.
void ArrangeVtg(C_Fields& fields) {
  if (fields.Count() != 4 || fields[1] == "T") return;
  for (const std::size_t unit : {1, 3, 5, 7}) fields.Insert(unit, 1);
}

struct S_Completion {
  C_RawDataMessage::eNMEA0183Messages type;
  std::size_t fields;                           // between sentence id and checksum
  void (*arrange)(C_Fields& fields) = nullptr;  // before missing fields are appended
  void (*amend)(C_Fields& fields) = nullptr;    // behind that
};

// clang-format off
constexpr S_Completion kCompletions[] = {
    {C_RawDataMessage::eNmeaGGA, 14},
    {C_RawDataMessage::eNmeaGLL, 7},
    {C_RawDataMessage::eNmeaGNS, 13},
    {C_RawDataMessage::eNmeaGSA, 18},
    {C_RawDataMessage::eNmeaGSV, 20, ArrangeGsv, AmendGsv},
    {C_RawDataMessage::eNmeaRMC, 13, nullptr, AmendRmc},
    {C_RawDataMessage::eNmeaVTG, 9,  ArrangeVtg},
    {C_RawDataMessage::eNmeaZDA, 6},
};
// clang-format on

const S_Completion* FindCompletion(std::string_view text) {
  const auto idLength = static_cast<unsigned char>(std::min<std::size_t>(text.size(), 6));
  const auto type = C_NMEA_EncodeDecode::GetNmeaPreamble(text.data(), idLength, nullptr);
  const auto* const found = std::find_if(std::begin(kCompletions), std::end(kCompletions),
                                         [type](const S_Completion& entry) { return entry.type == type; });
  return found == std::end(kCompletions) ? nullptr : found;
}

void Complete(const S_Completion& completion, C_Fields& fields) {
  if (completion.arrange != nullptr) completion.arrange(fields);
  fields.FillUp(completion.fields);
  if (completion.amend != nullptr) completion.amend(fields);
}

}  // namespace

unsigned int C_NMEA_EncodeDecode::MakeDecodable(const unsigned char* sentence, unsigned short length,
                                                unsigned char* out, unsigned short& outLength) {
  if (sentence == nullptr || out == nullptr) return eResultNull;
  const std::string_view text = TextOf(sentence, length);
  const S_Completion* const completion = FindCompletion(text);
  if (completion == nullptr) return eResultWrongSentence;
  const std::size_t star = FindCheckedStar(text);
  if (star == std::string_view::npos) return eResultChecksum;

  C_Fields fields(text.substr(0, star));
  Complete(*completion, fields);
  C_FieldText result;
  fields.Print(result);
  const std::array<char, 3> checksum = ChecksumText(result.View());
  result.Add({checksum.data(), checksum.size()});
  if (result.IsTooLong() || result.View().size() > t_NmeaFields::kMaxTextLength) return eResultPastEnd;
  std::memcpy(out, result.View().data(), result.View().size());
  out[result.View().size()] = '\0';
  outLength = static_cast<unsigned short>(result.View().size());
  return eResultOk;
}
