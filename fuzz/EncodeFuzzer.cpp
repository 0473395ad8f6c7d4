// Records of the eight NMEA sentences, filled from the input, through the encoder. Results are those that it states;
// nothing is written beyond the 1024 bytes, and nothing at all on failure; a sentence has a right checksum and its line
// end, and the recognizer takes it when it is as short as its kind must be. Decoded and encoded again it is the same
// text, but for what decoding cannot bring back:
//   a field of more than 64 characters ends the decoding
//   the letter of the magnetic variation is not kept by the decoder
//   minutes that round to 60 become a whole degree, and a negative angle that rounds to zero loses its sign
#include <cctype>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "fuzz/Fuzz.h"
#include "geo/NotAvailable.h"
#include "tests/ExactCopy.h"
#include "textproto/NMEA_EncodeDecode.h"

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

// --- Records from bytes: markers, values that make sense, and any bits at all ---

double Real(C_Input& input, double least, double greatest) {
  const unsigned int kind = input.Below(8);
  if (kind == 0) return NA_DOUBLE;
  if (kind == 1) return input.Value<double>();
  if (kind == 2) return input.Below(2) == 0 ? least : greatest;
  return least + (greatest - least) * (input.Value<std::uint32_t>() * 0x1p-32);
}

void Fill(C_Input& input, double& value) { value = Real(input, -1000, 1000); }
void Fill(C_Input& input, char& letter) { letter = input.Value<char>(); }
void Fill(C_Input& input, signed char& value) { value = input.Value<signed char>(); }
void Fill(C_Input& input, unsigned char& value) { value = input.Value<unsigned char>(); }
void Fill(C_Input& input, unsigned short& value) { value = input.Value<unsigned short>(); }
void Fill(C_Input& input, unsigned int& value) {
  value = input.Below(16) == 0 ? input.Value<unsigned int>() : input.Below(14);
}

template <class Enum>
std::enable_if_t<std::is_enum_v<Enum>> Fill(C_Input& input, Enum& value) {
  unsigned int number = 0;
  Fill(input, number);
  value = Enum{number};
}

template <class Value, std::size_t N>
void Fill(C_Input& input, Value (&values)[N]) {
  for (Value& value : values) Fill(input, value);
}

template <class... Values>
void FillAll(C_Input& input, Values&... values) {
  (Fill(input, values), ...);
}

template <class Record>
void FillTimeAndPlace(C_Input& input, Record& r) {
  r.timeOfDay = Real(input, 0, 86400);
  r.latitude = Real(input, -90, 90);
  r.longitude = Real(input, -180, 180);
}

void FillRecord(C_Input& input, S_GGA_Data& r) {
  FillTimeAndPlace(input, r);
  FillAll(input, r.quality, r.satellites, r.hdop, r.altitude, r.geoidSeparation, r.differentialAge, r.referenceStation);
}
void FillRecord(C_Input& input, S_GNS_Data& r) {
  FillTimeAndPlace(input, r);
  FillAll(input, r.mode, r.satellites, r.hdop, r.altitude, r.geoidSeparation, r.differentialAge, r.referenceStation,
          r.navStatus);
}
void FillRecord(C_Input& input, S_ZDA_Data& r) {
  r.timeOfDay = Real(input, 0, 86400);
  FillAll(input, r.year, r.month, r.day, r.zoneHours, r.zoneMinutes);
}
void FillRecord(C_Input& input, S_GLL_Data& r) {
  FillTimeAndPlace(input, r);
  FillAll(input, r.status, r.mode);
}
void FillRecord(C_Input& input, S_GSV_Data& r) {
  FillAll(input, r.totalSentences, r.sentenceNumber, r.satellitesInView, r.satelliteId, r.elevation, r.azimuth, r.snr,
          r.signalId);
}
void FillRecord(C_Input& input, S_GSA_Data& r) {
  r.operationMode = "MA"[input.Below(2)];
  r.fixType = "123"[input.Below(3)];
  if (input.Below(8) == 0) FillAll(input, r.operationMode, r.fixType);
  FillAll(input, r.satelliteId, r.pdop, r.hdop, r.vdop, r.systemId);
}
void FillRecord(C_Input& input, S_RMC_Data& r) {
  FillTimeAndPlace(input, r);
  r.year = static_cast<unsigned short>(2000 + input.Below(100));
  r.month = static_cast<unsigned char>(1 + input.Below(12));
  r.day = static_cast<unsigned char>(1 + input.Below(31));
  if (input.Below(8) == 0) FillAll(input, r.year, r.month, r.day);
  FillAll(input, r.speedKnots, r.courseTrue, r.magneticVariation, r.variationDirection, r.mode, r.status, r.navStatus);
}
void FillRecord(C_Input& input, S_VTG_Data& r) {
  FillAll(input, r.courseTrue, r.courseMagnetic, r.speedKnots, r.speedKmh, r.mode);
}

void FillRecord(C_Input& input, eType type, U_EcdDcdData& data) {
  constexpr const char* kTalkers[] = {"GP", "GN", "GL", "ZZ"};
  std::memset(static_cast<void*>(&data), 0, sizeof data);
  if (type == C_RawDataMessage::eNmeaGGA) FillRecord(input, data.gga);
  if (type == C_RawDataMessage::eNmeaGNS) FillRecord(input, data.gns);
  if (type == C_RawDataMessage::eNmeaZDA) FillRecord(input, data.zda);
  if (type == C_RawDataMessage::eNmeaGLL) FillRecord(input, data.gll);
  if (type == C_RawDataMessage::eNmeaGSV) FillRecord(input, data.gsv);
  if (type == C_RawDataMessage::eNmeaGSA) FillRecord(input, data.gsa);
  if (type == C_RawDataMessage::eNmeaRMC) FillRecord(input, data.rmc);
  if (type == C_RawDataMessage::eNmeaVTG) FillRecord(input, data.vtg);
  std::memcpy(data.gga.talker, kTalkers[input.Below(4)], sizeof data.gga.talker);  // the first member of all records
  if (input.Below(16) == 0) Fill(input, data.gga.talker);
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
  const S_Kind& kind = kKinds[input.Below(std::size(kKinds))];
  U_EcdDcdData record;
  FillRecord(input, kind.type, record);
  const S_Encoded encoded = Encode(record, kind.type);
  if (encoded.result != 0 || !IsPlain(encoded.text)) return 0;
  RequireRecognised(encoded.text, kind);
  RequireRoundTrip(encoded.text, kind.type, record);
  return 0;
}
