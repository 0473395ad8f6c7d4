// Records of the eight NMEA sentences, changed as the input says, through the encoder. Results are those that it
// states; nothing is written beyond the 1024 bytes, and nothing at all on failure; a sentence has a right checksum and
// its line end, and the recognizer takes it when it is as short as its kind must be. Decoded and encoded again it is
// the same text, but for what decoding cannot bring back:
//   a field of more than 64 characters ends the decoding
//   the letter of the magnetic variation is not kept by the decoder
//   minutes that round to 60 become a whole degree, and a negative angle that rounds to zero loses its sign
#include <vector>

#include "framing/FrameRecognizer.h"
#include "fuzz/Fuzz.h"
#include "fuzz/Samples.h"
#include "geo/NotAvailable.h"
#include "tests/NmeaSentences.h"

namespace {

using eType = C_RawDataMessage::eNMEA0183Messages;
using Fuzz::C_Input;

constexpr std::size_t kCapacity = 1024;
constexpr std::size_t kMaxField = 64;

struct S_Kind {
  eType type;
  std::size_t least, greatest;  // bytes that the recognizer takes, up to the CR
};
constexpr S_Kind kKinds[] = {
    {C_RawDataMessage::eNmeaGGA, 22, 128}, {C_RawDataMessage::eNmeaGNS, 20, 120}, {C_RawDataMessage::eNmeaZDA, 13, 40},
    {C_RawDataMessage::eNmeaGLL, 13, 60},  {C_RawDataMessage::eNmeaGSV, 10, 100}, {C_RawDataMessage::eNmeaGSA, 24, 250},
    {C_RawDataMessage::eNmeaRMC, 18, 90},  {C_RawDataMessage::eNmeaVTG, 15, 50},
};

// --- Records from bytes: what a sentence decodes to, some of it changed ---

double Real(C_Input& input) {
  constexpr double kBounds[] = {NA_DOUBLE, 0, -0.0, 90, -90, 180, -180, 86400, 65535, 1e308};
  const unsigned int kind = input.Below(4);
  if (kind == 0) return input.Value<double>();
  if (kind == 1) return kBounds[input.Below(std::size(kBounds))];
  return (input.Value<std::uint32_t>() * 0x1p-31 - 1) * (kind == 2 ? 180 : 86400);
}

// In place of any double of the record, or of any bytes.
void Change(C_Input& input, U_EcdDcdData& data, std::size_t size) {
  auto* const bytes = reinterpret_cast<unsigned char*>(&data);
  const std::size_t at = input.Below(size);
  const double real = Real(input);
  const auto integer = input.Value<unsigned int>() >> 8 * input.Below(4);
  if (input.Below(2) == 0)
    std::memcpy(bytes + at / 8 * 8, &real, std::min(sizeof real, size - at / 8 * 8));
  else
    std::memcpy(bytes + at / 4 * 4, &integer, std::min(sizeof integer, size - at / 4 * 4));
}

void FillRecord(C_Input& input, const S_NmeaKind& kind, std::string sentence, U_EcdDcdData& data) {
  std::memset(static_cast<void*>(&data), 0, sizeof data);
  kind.reset(data);
  kind.decode(reinterpret_cast<unsigned char*>(sentence.data()), sentence.size(), data);
  for (unsigned int changes = input.Below(12); changes > 0; --changes) Change(input, data, kind.recordSize);
}

// --- Encoding ---

struct S_Encoded {
  unsigned int result;
  std::string text;
};

S_Encoded Encode(const U_EcdDcdData& record, eType type) {
  C_NMEA_EncodeDecode nmea;
  ExactCopy out(std::string(kCapacity, '\x5A'));
  unsigned short length = 0xEEEE;
  const unsigned int result = nmea.Encode(&record, type, out.Data(), length);
  Fuzz::RequireOneOf(result, {0, 8, 9, 16}, "Encode");
  Fuzz::Require(nmea.GetLastResult() == result, "the last result is kept");
  const std::string_view written = Fuzz::View(out.Data(), kCapacity);
  if (result != 0) {
    Fuzz::Require(length == 0xEEEE && written == std::string(kCapacity, '\x5A'), "nothing is written on failure");
    return {result, ""};
  }
  Fuzz::Require(length < kCapacity && written[length] == '\0', "the sentence ends with a NUL");
  Fuzz::Require(written.substr(0, length).ends_with("\r\n"), "the sentence has its line end");
  Fuzz::Require(C_NMEA_EncodeDecode::ValidateNmeaCheckSum(out.Data(), length), "the checksum is right");
  return {result, std::string(written.substr(0, length))};
}

bool IsPlain(const std::string& text) {
  const std::string_view talker = std::string_view(text).substr(1, 2);
  return std::all_of(text.begin(), text.end() - 2, [](char c) { return c >= ' ' && c <= '~'; }) &&
         talker.find_first_of(",*$>") == std::string_view::npos && talker != "PK";
}

void RequireRecognised(const std::string& text, const S_Kind& kind) {
  C_FrameRecognizer recognizer(nullptr, eCircBufOvrflowRejectNew, false);
  std::vector<unsigned char> buffer(recognizer.GetMaxFrameLength());
  C_RawDataMessage frame(buffer.data(), recognizer.GetMaxFrameLength());
  ExactCopy copy(text);
  auto result = recognizer.DoRecognition(copy.Data(), copy.Size(), frame);
  while (result != eRecNoNewData && result != eRecFrameComplete) result = recognizer.DoRecognition(nullptr, 0, frame);
  const std::size_t length = text.size() - 1;  // up to the CR
  const bool isTaken = result == eRecFrameComplete;
  Fuzz::Require(isTaken == (length >= kind.least && length <= kind.greatest), "the recognizer takes what is encoded");
  Fuzz::Require(!isTaken || (frame.messageType == kind.type && frame.length == length), "as what it is, and whole");
}

bool HasLongField(const std::string& text) {
  std::size_t length = 0;
  for (const char c : text) {
    length = c == ',' || c == '*' ? 0 : length + 1;
    if (length > kMaxField) return true;
  }
  return false;
}

bool ComesBackOtherwise(const std::string& text) {
  const auto has = [&text](const char* part) { return text.find(part) != std::string::npos; };
  return HasLongField(text) || has("60.00000000") || has(",0000.00000000,S") || has(",00000.00000000,W");
}

void RequireRoundTrip(const std::string& text, eType type, const U_EcdDcdData& record) {
  ExactCopy sentence(text);
  ExactCopy decodable(std::string(kCapacity, '\0'));
  unsigned short length = 0;
  const unsigned int made =
      C_NMEA_EncodeDecode::MakeDecodable(sentence.Data(), sentence.Size(), decodable.Data(), length);
  Fuzz::Require(made == 0, "what is encoded can be made decodable");
  C_NMEA_EncodeDecode nmea;
  U_EcdDcdData decoded;
  if (nmea.Decode(decodable.Data(), length, type, decoded) != 0 || ComesBackOtherwise(text)) return;
  if (type == C_RawDataMessage::eNmeaRMC) decoded.rmc.variationDirection = record.rmc.variationDirection;
  const S_Encoded again = Encode(decoded, type);
  const bool isMidnight = again.result == 8 && text.find("240000.00") != std::string::npos;
  Fuzz::Require(isMidnight || again.text == text, "decoded and encoded again it is the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  C_Input input(data, size);
  const std::string sentence = NmeaSentence("$" + Fuzz::kNmeaSamples[input.Below(Fuzz::kNmeaSamples.size())]);
  const auto type = NmeaType(sentence);
  const S_Kind& kind = *std::find_if(kKinds, std::end(kKinds), [type](const S_Kind& row) { return row.type == type; });
  U_EcdDcdData record;
  FillRecord(input, KindOf(type), sentence, record);
  const S_Encoded encoded = Encode(record, kind.type);
  if (encoded.result != 0 || !IsPlain(encoded.text)) return 0;
  RequireRecognised(encoded.text, kind);
  RequireRoundTrip(encoded.text, kind.type, record);
  return 0;
}
