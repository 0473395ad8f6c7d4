// The NMEA decoders and MakeDecodable over sentences whose checksum the mutator repairs. Results are those that the
// operations state; records depend on the sentence alone; nothing outside of it is read; a good sentence after it
// decodes as before it; what MakeDecodable gives is a checked sentence that it leaves as it is; the library's own way
// to the record gives what MakeDecodable and Decode give.
#include "fuzz/DecodeChecks.h"
#include "fuzz/RepairedSentence.h"
#include "fuzz/Samples.h"
#include "tests/ExactCopy.h"
#include "tests/NmeaSentences.h"
#include "textproto/NMEA_EncodeDecode.h"
#include "textproto/NmeaSentenceCodec.h"

namespace {

using eType = C_RawDataMessage::eNMEA0183Messages;
using t_Nmea = C_NMEA_EncodeDecode;

constexpr unsigned int kTypeOfSentence = 32;  // the input's first byte: a type, or from here on what the sentence says

unsigned int RequireOrder(ExactCopy& sentence, eType type) {
  const unsigned int result = Fuzz::DecodeOverAnyMemory<U_EcdDcdData>(
      [&](U_EcdDcdData& record) {
        t_Nmea nmea;
        const unsigned int decoded = nmea.Decode(sentence.Data(), sentence.Size(), type, record);
        Fuzz::Require(nmea.GetLastResult() == decoded, "the last result is kept");
        return decoded;
      },
      true);
  Fuzz::RequireOneOf(result, {0, 2, 4, 5, 8, 11, 20}, "Decode");
  const bool isChecked = t_Nmea::ValidateNmeaCheckSum(sentence.Data(), sentence.Size());
  Fuzz::Require(isChecked || result == 4 || result == 20, "a bad checksum is reported first");
  return result;
}

// The same without the checksum, as each type.
void RequireOrderOfTypes(ExactCopy& sentence, unsigned int resultOfDecode, eType type) {
  for (const S_NmeaKind& kind : kNmeaKinds) {
    const unsigned int result = Fuzz::DecodeOverAnyMemory<U_EcdDcdData>(
        [&](U_EcdDcdData& record) { return kind.decode(sentence.Data(), sentence.Size(), record); }, true,
        kind.recordSize);
    Fuzz::RequireOneOf(result, {0, 2, 8, 11, 20}, "Decode_...");
    const bool isJudged = kind.type == type && resultOfDecode != 4 && resultOfDecode != 20;
    Fuzz::Require(!isJudged || result == resultOfDecode, "Decode gives what the operation for its type gives");
  }
}

struct S_Decodable {
  unsigned int result;
  std::string text;
};

S_Decodable MakeDecodable(std::string_view sentence) {
  ExactCopy copy(sentence);
  ExactCopy out(std::string(1024, '\x5A'));
  unsigned short length = 0xEEEE;
  const unsigned int result = t_Nmea::MakeDecodable(copy.Data(), copy.Size(), out.Data(), length);
  Fuzz::RequireOneOf(result, {0, 2, 4, 9}, "MakeDecodable");
  const std::string_view written = Fuzz::View(out.Data(), out.Size());
  if (result != 0) {
    Fuzz::Require(length == 0xEEEE && written == std::string(1024, '\x5A'), "nothing is written on failure");
    return {result, ""};
  }
  Fuzz::Require(length < 1024 && written[length] == '\0', "the sentence fits and ends with a NUL");
  return {result, std::string(written.substr(0, length))};
}

void RequireDecodable(const std::string& sentence) {
  const S_Decodable first = MakeDecodable(sentence);
  if (first.result != 0) return;
  const S_Decodable second = MakeDecodable(first.text);
  Fuzz::Require(second.result == 0 && second.text == first.text, "what is decodable is left as it is");
  ExactCopy copy(first.text);
  const auto type = t_Nmea::GetNmeaPreamble(first.text.data(), 6, nullptr);
  Fuzz::RequireOneOf(RequireOrder(copy, type), {0, 2, 8, 11}, "Decode of a decodable sentence");
}

// A sentence of any address: what decodes can be encoded, but for values out of range, and decodes to the same then.
// Of the eight, numbers lose digits.
void RequireOrderOfAny(ExactCopy& sentence) {
  const std::string_view text = Fuzz::View(sentence.Data(), sentence.Size());
  velagnss::NmeaRecord record;
  const unsigned int result = velagnss::DecodeSentence(text, record);
  Fuzz::RequireOneOf(result, {0, 2, 4, 8, 9, 11, 20}, "DecodeSentence");
  if (result != 0) return;
  ExactCopy out(std::string(velagnss::kMaxSentenceLength, '\x5A'));
  std::size_t length = 0;
  char* const first = reinterpret_cast<char*>(out.Data());
  const unsigned int encoded = velagnss::EncodeSentence(record, first, out.Size(), length);
  Fuzz::RequireOneOf(encoded, {0, 8, 9, 16}, "EncodeSentence");
  if (encoded != 0) return;
  velagnss::NmeaRecord again;
  const unsigned int decoded = velagnss::DecodeSentence({first, length}, again);
  const bool isOneOfEight = record.index() >= 1 && record.index() <= 8;
  Fuzz::Require(isOneOfEight || decoded == 0, "what is encoded decodes");
  Fuzz::Require(isOneOfEight || again.index() == record.index(), "to the same kind of record");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Fuzz::C_Input input(data, size);
  const unsigned int wanted = input.Below(64);
  const std::string text = input.Rest();
  if (text.size() > 0xFFFF) return 0;
  const auto length = static_cast<unsigned char>(std::min<std::size_t>(text.size(), 255));
  const eType type = wanted < kTypeOfSentence ? eType{wanted} : t_Nmea::GetNmeaPreamble(text.data(), length, nullptr);
  t_Nmea nmea;
  auto good = Fuzz::GoodFrame<U_EcdDcdData>([&nmea](U_EcdDcdData& record) {
    ExactCopy copy("$GNGLL,4717.11437,N,00833.91522,E,092321.00,A,A*7E");
    return nmea.Decode(copy.Data(), copy.Size(), C_RawDataMessage::eNmeaGLL, record);
  });
  ExactCopy sentence(text);
  const unsigned int result = RequireOrder(sentence, type);
  RequireOrderOfTypes(sentence, result, type);
  RequireDecodable(text);
  RequireOrderOfAny(sentence);
  Fuzz::Require(CheckedSentenceDiffers(text, type).empty(), "both ways to the record agree");
  U_EcdDcdData record;
  nmea.Decode(sentence.Data(), sentence.Size(), type, record);
  good.RequireSame();
  Fuzz::Require(text == Fuzz::View(sentence.Data(), sentence.Size()), "the sentence is not written");
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size, std::size_t maxSize,
                                               unsigned int seed) {
  return Fuzz::Mutate(data, size, maxSize, seed, [](std::string& input, std::minstd_rand& random) {
    if (random() % 2 == 0) return Fuzz::RepairSentence(input, 1, Fuzz::kMoreNmeaSamples, random);
    Fuzz::RepairSentence(input, 1, Fuzz::kNmeaSamples, random);
  });
}
