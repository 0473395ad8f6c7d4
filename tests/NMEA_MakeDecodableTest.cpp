// C_NMEA_EncodeDecode::MakeDecodable, what comes back of a sentence that is found in a stream, made decodable, decoded
// and encoded, and the library's own way to the record.
#include <algorithm>
#include <cstring>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "framing/FrameRecognizer.h"
#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/NmeaSentences.h"

namespace {

using t_Nmea = C_NMEA_EncodeDecode;
using t_Type = C_RawDataMessage;

struct S_MakeCase {
  const char* name;
  std::string sentence;
  unsigned int result;
  std::string made;  // without checksum
};

// clang-format off
const S_MakeCase kMakeCases[] = {
    {"Complete", "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41\r\n", 0, "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A"},
    {"RmcOf11Fields", "$GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E*68", 0,
     "$GPRMC,225446,A,4916.45,N,12311.12,W,000.5,054.7,191194,020.3,E,,"},
    {"RmcOf12Fields", NmeaSentence("$GNRMC,001031.00,A,4404.13993,N,12118.86023,W,0.146,,100117,,,A"), 0,
     "$GNRMC,001031.00,A,4404.13993,N,12118.86023,W,0.146,,100117,,E,A,"},
    {"RmcOf13Fields", NmeaSentence("$GNRMC,001031.00,A,4404.1,N,12118.8,W,0.1,,100117,1.0,W,A,V"), 0,
     "$GNRMC,001031.00,A,4404.1,N,12118.8,W,0.1,,100117,1.0,W,A,V"},
    {"RmcOf9Fields", NmeaSentence("$GPRMC,,V,,,,,,,100117"), 0, "$GPRMC,,V,,,,,,,100117,,E,,"},
    {"GllOf4Fields", "$GPGLL,4916.45,N,12311.12,W*71", 0, "$GPGLL,4916.45,N,12311.12,W,,,"},
    {"GllOf6Fields", "$GPGLL,4916.45,N,12311.12,W,225444,A*31", 0, "$GPGLL,4916.45,N,12311.12,W,225444,A,"},
    {"VtgOf8Fields", "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K*48", 0, "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,"},
    {"VtgWithoutUnits", NmeaSentence("$GPVTG,054.7,034.4,005.5,010.2"), 0, "$GPVTG,054.7,,034.4,,005.5,,010.2,,"},
    {"VtgCut", NmeaSentence("$GPVTG,054.7,T,034.4,M"), 0, "$GPVTG,054.7,T,034.4,M,,,,,"},
    {"GgaWithoutStation", NmeaSentence("$GPGGA,,,,,,1,,,,M,,M,2.0"), 0, "$GPGGA,,,,,,1,,,,M,,M,2.0,"},
    {"GnsOf12Fields", NmeaSentence("$GNGNS,112257.00,3844.24011,N,00908.43828,W,AN,03,10.5,,,,"), 0,
     "$GNGNS,112257.00,3844.24011,N,00908.43828,W,AN,03,10.5,,,,,"},
    {"GsaWithoutSystem", "$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1*39", 0,
     "$GPGSA,A,3,04,05,,09,12,,,24,,,,,2.5,1.3,2.1,"},
    {"ZdaWithoutZone", NmeaSentence("$GPZDA,160012.71,11,03,2004"), 0, "$GPZDA,160012.71,11,03,2004,,"},
    {"GsvNoSatellite", NmeaSentence("$GPGSV,1,1,00"), 0, "$GPGSV,1,1,00,,,,,,,,,,,,,,,,,"},
    {"GsvNoSatelliteButSignal", NmeaSentence("$GPGSV,1,1,00,1"), 0, "$GPGSV,1,1,00,,,,,,,,,,,,,,,,,1"},
    {"GsvOneSatellite", NmeaSentence("$GPGSV,3,3,09,29,,,20"), 0, "$GPGSV,3,3,09,29,,,20,,,,,,,,,,,,,"},
    {"GsvTwoSatellitesAndSignal", NmeaSentence("$GLGSV,2,2,06,65,1,2,3,66,4,5,6,1"), 0, "$GLGSV,2,2,06,65,1,2,3,66,4,5,6,,,,,,,,,1"},
    {"GsvThreeSatellites", NmeaSentence("$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12"), 0, "$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12,,,,,"},
    {"GsvThreeSatellitesAndSignal", NmeaSentence("$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12,8"), 0, "$GPGSV,1,1,03,1,2,3,4,5,6,7,8,9,10,11,12,,,,,8"},
    {"GsvFourSatellites", NmeaSentence("$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16"), 0, "$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,"},
    {"GsvSignalLetter", "$GBGSV,1,1,01,09,22,048,09,B*38", 0, "$GBGSV,1,1,01,09,22,048,09,,,,,,,,,,,,,11"},
    {"MoreFieldsThanKnown", NmeaSentence("$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,1,x,,y"), 0,
     "$GPGSV,1,1,04,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,1,x,,y"},
    {"NoField", NmeaSentence("$GPZDA"), 0, "$GPZDA,,,,,,"},
    {"StarInside", NmeaSentence("$GPZDA,1*2"), 0, "$GPZDA,1,2,,,,"},
    {"OtherType", NmeaSentence("$GPHDT,1.0,T"), 2, ""},
    {"NotASentence", "GPGLL,4916.45,N,12311.12,W*71", 2, ""},
    {"Nothing", "", 2, ""},
    {"WrongChecksum", "$GPGLL,4916.45,N,12311.12,W*72", 4, ""},
    {"NoChecksum", "$GPGLL,4916.45,N,12311.12,W", 4, ""},
    {"TypeBeforeChecksum", "$GPHDT,1.0,T*00", 2, ""},
    {"Fits", NmeaSentence("$GPZDA,,,,,," + std::string(1023 - 12 - 3, 'x')), 0, "$GPZDA,,,,,," + std::string(1023 - 12 - 3, 'x')},
    {"DoesNotFit", NmeaSentence("$GPZDA,,,,,," + std::string(1024 - 12 - 3, 'x')), 9, ""},
    {"GrowsTooLong", NmeaSentence("$GPZDA," + std::string(1023 - 7 - 3, 'x')), 9, ""},
};
// clang-format on

TEST_ROWS(Make, Decodable, kMakeCases, c) {
  GuardedPage page(2048);
  unsigned char out[1025];
  std::memset(out, '#', sizeof out);
  unsigned short length = 77;
  EXPECT_EQ(t_Nmea::MakeDecodable(page.AtEnd(c.sentence), static_cast<unsigned short>(c.sentence.size()), out, length),
            c.result);
  const std::string made = c.result == 0 ? NmeaSentence(c.made) : std::string(77, '#');
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(out), length), made);
  EXPECT_EQ(out[length], c.result == 0 ? '\0' : '#');
  EXPECT_EQ(out[1024], '#');
}

TEST(MakeDecodable, EndsAtANulAndRefusesNull) {
  std::string sentence = NmeaSentence("$GPZDA,,,,,,");
  sentence[8] = '\0';
  unsigned char out[1024];
  unsigned short length = 77;
  const auto* const bytes = reinterpret_cast<const unsigned char*>(sentence.data());
  EXPECT_EQ(t_Nmea::MakeDecodable(bytes, static_cast<unsigned short>(sentence.size()), out, length), 4U);
  EXPECT_EQ(t_Nmea::MakeDecodable(nullptr, 10, out, length), 1U);
  EXPECT_EQ(t_Nmea::MakeDecodable(bytes, 10, nullptr, length), 1U);
  EXPECT_EQ(length, 77);
}

// --- Sentences of random fields, as the encoder writes them ---

// "[59]" is a number from 0 to 59 in two digits, "{NS}" one of the letters, all else itself. One field in five is left
// empty, unless it starts with "!". Not among them is what the decoders fold: the direction of the variation of RMC,
// and an empty operation mode or fix type of GSA.
struct S_Pattern {
  const char* head;
  std::vector<std::string> fields;
};
const std::string kTime = "[23][59][59].[99]";
const std::string kLatitude = "[89][59].[99999999],{NS}";
const std::string kLongitude = "0[99][59].[99999999],{EW}";
const std::string kMode = "{NADPRFEMS}";
const std::string kDigit = "[9]";
const std::string kTwo = "[99]";
const std::string kOneDecimal = "{123456789}[99].[9]";
const std::string kTwoDecimals = "{123}[99].[99]";
const std::string kThreeDecimals = "{123456789}[999].[999]";

// clang-format off
const S_Pattern kPatterns[] = {
    {"$GLGGA", {kTime, kLatitude, kLongitude, kDigit, kTwo, kOneDecimal, kThreeDecimals, "!M", "-" + kThreeDecimals, "!M",
                kOneDecimal + ",{123456}[999]"}},
    {"$GNGNS", {kTime, kLatitude, kLongitude, kMode + kMode + kMode, "1[99]", kOneDecimal, kThreeDecimals,
                "-" + kThreeDecimals, kOneDecimal, "{123456}[999]", "{SCUV}"}},
    {"$GPZDA", {kTime, kTwo, kTwo, "[9999]", "-{123456789}", kTwo}},
    {"$GAGLL", {kLatitude, kLongitude, kTime, "{ADV}", kMode}},
    {"$GBGSV", {kDigit, kDigit, kTwo, kTwo, kTwo, "[359]", kTwo, kTwo, kTwo, "[359]", kTwo,
                "2[49]", kTwo, "[359]", kTwo, kTwo, kTwo, "[359]", kTwo, "1{012345}"}},
    {"$GQGSA", {"!{AM}", "!{123}", kTwo, kTwo, kTwo, kTwo, kTwo, kTwo, kTwo, kTwo, kTwo, kTwo, kTwo, "2[49]",
                kOneDecimal, kOneDecimal, kOneDecimal, kDigit}},
    {"$GIRMC", {kTime, "{ADFPRV}", kLatitude, kLongitude, kThreeDecimals, kTwoDecimals, "1[9]0{123456789}[99]",
                kTwoDecimals, "!", kMode, "{SCUV}"}},
    {"$XXVTG", {kTwoDecimals, "!T", kTwoDecimals, "!M", kTwoDecimals, "!N", kTwoDecimals, "!K", kMode}},
};
// clang-format on

class RandomSentences {
 public:
  explicit RandomSentences(std::uint64_t seed) : m_random(seed) {}

  unsigned int Below(std::size_t limit) { return static_cast<unsigned int>(m_random() % limit); }

  // Without checksum.
  std::string Text(const S_Pattern& pattern) {
    std::string text = pattern.head;
    for (const std::string& field : pattern.fields) text += "," + Field(field);
    return text;
  }

  // The same after some of what happens to sentences on their way, and of what older receivers leave out.
  std::string Mutated(std::string text) {
    for (unsigned int left = Below(4); left > 0; --left) {
      const std::size_t at = Below(text.size());
      const unsigned int kind = Below(7);
      if (kind == 0) text.resize(at);
      if (kind == 1) text.resize(std::min(text.rfind(','), text.size()));
      if (kind == 2) text.insert(at, 1, ",,*EWT0A\0"[Below(9)]);
      if (kind == 3) text[at] = static_cast<char>(m_random());
      if (kind == 4) text.insert(at, Below(8) == 0 ? Below(1100) : Below(90), "x0,"[Below(3)]);
      if (kind == 5 && text.find(',', at) != std::string::npos) text.insert(text.find(',', at), 1, ',');
      if (kind == 6) text.erase(at, Below(12));
      if (text.empty()) text = "$";
    }
    return text;
  }

 private:
  std::string Field(std::string_view pattern) {
    const bool isEmpty = pattern[0] != '!' && Below(5) == 0;
    std::string field;
    for (std::size_t at = 0; at < pattern.size(); ++at) {
      const char kind = pattern[at];
      const std::string choice(pattern.substr(at + 1, pattern.find_first_of("]}", at) - at - 1));
      if (kind == '[' || kind == '{') at += choice.size() + 1;
      if (kind == '!' || (isEmpty && kind != ',')) continue;
      const unsigned int number = Below(kind == '[' ? std::stoul(choice) + 1 : std::max<std::size_t>(choice.size(), 1));
      const std::string digits = std::to_string(number);
      if (kind == '[') field.append(choice.size() - digits.size(), '0').append(digits);
      if (kind == '{') field += choice[number];
      if (kind != '[' && kind != '{') field += kind;
    }
    return field;
  }

  std::mt19937_64 m_random;
};

// --- Recognize, make decodable, decode, encode: the text comes back ---

// What a recognizer delivers of the bytes: one frame, or none of a sentence that is longer than those of its type are.
bool Recognize(C_FrameRecognizer& recognizer, const unsigned char* bytes, unsigned short length, t_Type& frame) {
  auto result = recognizer.DoRecognition(bytes, length, frame);
  while (result != eRecFrameComplete && result != eRecNoNewData) result = recognizer.DoRecognition(nullptr, 0, frame);
  return result == eRecFrameComplete;
}

class RoundTrip : public testing::TestWithParam<S_Pattern> {};

TEST_P(RoundTrip, GivesTheSentenceBack) {
  const t_Type::eProtocols kNmeaOnly[] = {t_Type::eNMEA0183, t_Type::eAllProtocols};
  C_FrameRecognizer recognizer(kNmeaOnly, eCircBufOvrflowDropOldest, false);
  unsigned char buffer[2048];
  t_Type frame(buffer, sizeof buffer);
  int delivered = 0;
  RandomSentences random(20240605);
  t_Nmea nmea;
  for (int i = 0; i < 3000; ++i) {
    const std::string text = NmeaSentence(random.Text(GetParam())) + "\r\n";
    const auto type = NmeaType(text);
    auto length = static_cast<unsigned short>(text.size());
    const auto* sentence = reinterpret_cast<const unsigned char*>(text.data());
    if (Recognize(recognizer, sentence, length, frame)) {
      ++delivered;
      ASSERT_EQ(frame.messageType, type) << text;
      sentence = frame.data;
      length = frame.length;
    }
    unsigned char decodable[1024];
    unsigned char encoded[1024];
    U_EcdDcdData data;
    ASSERT_EQ(t_Nmea::MakeDecodable(sentence, length, decodable, length), 0U) << text;
    ASSERT_EQ(nmea.Decode(decodable, length, type, data), 0U) << decodable;
    ASSERT_EQ(nmea.Encode(&data, type, encoded, length), 0U) << text;
    ASSERT_EQ(reinterpret_cast<const char*>(encoded), text);
  }
  EXPECT_GT(delivered, 500);
}

INSTANTIATE_TEST_SUITE_P(Sentences, RoundTrip, testing::ValuesIn(kPatterns));

// --- The library's own way from the recognizer to the record ---

TEST_ROWS(Checked, AgreesOnEachSentence, kMakeCases, c) {
  for (unsigned int type = 0; type < 26; ++type)
    EXPECT_EQ(CheckedSentenceDiffers(c.sentence, t_Type::eNMEA0183Messages{type}), "") << type;
}

TEST(CheckedSentence, GivesWhatMakeDecodableAndDecodeGive) {
  RandomSentences random(20240608);
  int decoded = 0;
  for (int i = 0; i < 100000; ++i) {
    const std::string text = random.Mutated(random.Text(kPatterns[random.Below(std::size(kPatterns))]));
    std::string sentence = text.size() < 2 ? text : NmeaSentence(text);
    if (random.Below(3) == 0) sentence += "\r\n";
    if (random.Below(16) == 0) sentence = random.Mutated(sentence);
    if (random.Below(32) == 0) sentence += random.Mutated(",W,*5,E");
    const auto type = sentence.size() < 6 ? t_Type::eNmeaUnknown : NmeaType(sentence);
    const auto asked = random.Below(16) == 0 ? t_Type::eNMEA0183Messages{random.Below(26)} : type;
    ASSERT_EQ(CheckedSentenceDiffers(sentence, asked), "") << testing::PrintToString(sentence);
    U_EcdDcdData data;
    char letter;
    const auto* bytes = reinterpret_cast<const unsigned char*>(sentence.data());
    const auto length = static_cast<unsigned short>(sentence.size());
    decoded += velagnss::textproto::DecodeCheckedSentence(bytes, length, asked, data, letter) == 0 ? 1 : 0;
  }
  EXPECT_GT(decoded, 30000);
  U_EcdDcdData data;
  char letter;
  EXPECT_EQ(velagnss::textproto::DecodeCheckedSentence(nullptr, 9, t_Type::eNmeaGGA, data, letter), 1U);
}

// Where an asterisk or the end of the sentence is before the letter, only commas count.
TEST(CheckedSentence, FindsTheDirectionLetterByCommasAlone) {
  const std::pair<const char*, const char*> kRows[] = {
      // up to the "*" of the checksum, and after it
      {"$GPRMC,,A,,,,,,,,020.3,W", ""},  {"$GPRMC,,A,,,,,,,,020.3,,A,V", ""}, {"$GPRMC,,A,,,,,,,,020.3,e", ""},
      {"$GPRMC,,A,,,,,,,,*020.3,W", ""}, {"$GPRMC,,A,,,,,,,*,W,,", ""},       {"$GPRMC,,A", ",,,,,,,,,W\r\r\n"},
      {"$GPRMC,,A", ",,,,,,,,,W\r,"}};
  for (const auto& [text, after] : kRows)
    EXPECT_EQ(CheckedSentenceDiffers(NmeaSentence(text) + after, t_Type::eNmeaRMC), "") << text << after;
}

}  // namespace
