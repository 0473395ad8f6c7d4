// Any NMEA sentence to its record: those that have one, and the fields of all others. Then a record to its sentence.
#include <cstdio>
#include <string_view>
#include <variant>

#include "geo/NotAvailable.h"
#include "records/ResultCodes.h"
#include "textproto/NmeaSentenceCodec.h"

namespace {

int Length(std::string_view text) { return static_cast<int>(text.size()); }

void Show(const velagnss::NmeaRecord& record) {
  if (const auto* const heading = std::get_if<velagnss::HdtRecord>(&record)) {
    std::printf("heading %.2f\n", heading->headingTrue);
  } else if (const auto* const text = std::get_if<velagnss::TxtRecord>(&record)) {
    std::printf("text: %.*s\n", Length(text->text), text->text.data());
  } else if (const auto* const other = std::get_if<velagnss::OtherSentence>(&record)) {
    std::printf("%.*s:", Length(other->address), other->address.data());
    for (const std::string_view field : other->fields) std::printf(" [%.*s]", Length(field), field.data());
    std::printf("\n");
  }
}

}  // namespace

int main() {
  constexpr std::string_view kSentences[] = {"$GPHDT,274.07,T*03", "$GPTXT,01,01,01,ANTENNA OK*35",
                                             "$PABCV,RX-12 4.5,2024-05-18*65", "$GPHDT,274.07,T*04"};
  for (const std::string_view sentence : kSentences) {
    velagnss::NmeaRecord record;
    const unsigned int result = velagnss::DecodeSentence(sentence, record);
    if (result == eResultOk)
      Show(record);
    else
      std::printf("result %u\n", result);
  }

  velagnss::HdtRecord heading;
  heading.talker[0] = 'H';
  heading.talker[1] = 'E';
  heading.headingTrue = 89.94;
  char out[velagnss::kMaxSentenceLength];
  std::size_t length = 0;
  if (velagnss::EncodeSentence(heading, out, sizeof out, length) == eResultOk)
    std::printf("%.*s", static_cast<int>(length), out);
}
