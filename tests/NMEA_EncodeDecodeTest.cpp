#include "textproto/NMEA_EncodeDecode.h"

#include <cstring>
#include <iterator>
#include <string>

#include "tests/Cases.h"
#include "tests/GuardedPage.h"
#include "tests/NmeaSentences.h"

namespace {

using namespace ALGO;
using namespace std::string_literals;
using t_Nmea = C_NMEA_EncodeDecode;

// --- What each sentence decodes to. One degree and 30 minutes are 1.5 degrees. ---

struct S_DecodeCase {
  const char* name;
  std::string text;  // without checksum
  unsigned int result;
  std::string record;
};

const std::string kX64(64, 'x');
const std::string kX65(65, 'x');

// clang-format off
const S_DecodeCase kDecodeCases[] = {
    {"Gga", "$GPGGA,123456.78,0130.0,N,01130.0,E,4,08,0.9,545.4,M,46.9,M,2.5,0031", 0,
     "GP 45296.78 1.5 11.5 4 8 0.9 545.4 46.9 2.5 31"},
    {"GgaSouthWest", "$GPGGA,000000.00,0130.0,S,01130.0,W,0,00,0.9,-5.4,M,-46.9,M,,0000", 0,
     "GP 0 -1.5 -11.5 0 0 0.9 -5.4 -46.9 - 0"},
    {"GgaEmpty", "$GPGGA,,,,,,,,,,,,,,", 0, "GP - - - 10 - - - - - -"},
    {"GgaLetterWithoutValue", "$GPGGA,,,S,,W,,,,,,,,,", 0, "GP - - - 10 - - - - - -"},
    {"GgaValueWithoutLetter", "$GPGGA,,0130.0,,01130.0,,,,,,,,,,", 0, "GP - - - 10 - - - - - -"},
    {"GgaBadLetter", "$GPGGA,,0130.0,X,01130.0,E,1,,,,,,,,", 11, "GP - 1.5 - 10 - - - - - -"},
    {"GgaLetterTwice", "$GPGGA,,0130.0,NN,01130.0,E,1,,,,,,,,", 11, "GP - 1.5 - 10 - - - - - -"},
    {"GgaUnitsNotLookedAt", "$GPGGA,,,,,,1,,,1,ft,2,?,,", 0, "GP - - - 1 - - 1 2 - -"},
    {"GgaQualityIn16Bits", "$GPGGA,,,,,,65535,,,,,,,,", 0, "GP - - - 65535 - - - - - -"},
    {"GgaQualityTooLarge", "$GPGGA,,,,,,65536,,,,,,,,", 11, "GP - - - 10 - - - - - -"},
    {"GgaBadTimeStoresNothing", "$GPGGA,12,0130.0,N,,,1,,,,,,,,", 11, "GP - - - 10 - - - - - -"},
    {"GgaPointTooEarly", "$GPGGA,,13.0000,N,,,1,,,,,,,,", 11, "GP - - - 10 - - - - - -"},
    {"GgaTooFewFields", "$GPGGA,,,,,,1,,,,,,,", 11, "none - - - 10 - - - - - -"},
    {"GgaMoreFieldsThanRead", "$GPGGA,,,,,,1,,,,,,,,7,x,y,z", 0, "GP - - - 1 - - - - - 7"},
    {"GgaStarInside", "$GPGGA,,,,,*1,,,,,,,,7", 0, "GP - - - 1 - - - - - 7"},
    {"LongerSentenceId", "$GPGGAX,,,,,,1,,,,,,,,", 0, "GP - - - 1 - - - - - -"},
    {"FieldOf64", "$GPGGA,,,,,,1,,,,M," + kX64 + ",M,,", 11, "GP - - - 1 - - - - - -"},
    {"NumberOf64", "$GPGGA,,,,,," + std::string(63, '0') + "7,,,,,,,,", 0, "GP - - - 7 - - - - - -"},
    {"FieldOf65EndsTheSentence", "$GPGGA,,,,,,1,,,,M," + kX65 + ",M,2.0,7", 0, "GP - - - 1 - - - - - -"},
    {"UnitOf65EndsTheSentence", "$GPGGA,,,,,,1,,,9," + kX65 + ",8,M,2.0,7", 0, "GP - - - 1 - - 9 - - -"},
    {"FirstFieldOf64", "$GPGGA" + std::string(58, 'x') + ",,,,,,1,,,,,,,,", 0, "GP - - - 1 - - - - - -"},
    {"FirstFieldOf65", "$GPGGA" + std::string(59, 'x') + ",,,,,,1,,,,,,,,", 2, "none - - - 10 - - - - - -"},
    {"FieldOf512EndsTheCount", "$GPGGA,,,,,,1,,,,M," + std::string(512, 'x') + ",M,,", 11, "none - - - 10 - - - - - -"},
    {"LastFieldOf512", "$GPGGA,,,,,,1,,,,,,,,7,z," + std::string(512, 'x') + ",", 0, "GP - - - 1 - - - - - 7"},

    {"Gns", "$GNGNS,014035.00,4330.0,S,17230.0,E,RRN,13,0.9,25.63,11.24,1.5,7,U", 0,
     "GN 6035 -43.5 172.5 4/4/0/10/10/10 13 0.9 25.63 11.24 1.5 7 2"},
    {"GnsSixModes", "$GNGNS,,,,,,ADPRFE,,,,,,,V", 0, "GN - - - 1/2/3/4/5/6 - - - - - - 3"},
    {"GnsTwoModes", "$GNGNS,,,,,,AN,,,,,,,V", 0, "GN - - - 1/0/10/10/10/10 - - - - - - 3"},
    {"GnsUnknownMode", "$GNGNS,,,,,,MSx,,,,,,,V", 0, "GN - - - 7/8/0/10/10/10 - - - - - - 3"},
    {"GnsSevenModes", "$GNGNS,,,,,,AAAAAAA,13,,,,,,V", 8, "GN - - - 10/10/10/10/10/10 - - - - - - 5"},
    {"GnsWithoutNavStatus", "$GNGNS,,,,,,A,,,,,,7", 0, "GN - - - 1/10/10/10/10/10 - - - - - 7 5"},
    {"GnsEmptyNavStatus", "$GNGNS,,,,,,A,,,,,,7,", 0, "GN - - - 1/10/10/10/10/10 - - - - - 7 5"},
    {"GnsTooFewFields", "$GNGNS,,,,,,A,,,,,", 11, "none - - - 10/10/10/10/10/10 - - - - - - 5"},

    {"Zda", "$GPZDA,160012.71,11,03,2004,-1,30", 0, "GP 2004 3 11 57612.71 -1 30"},
    {"ZdaEmptyZone", "$GPZDA,160012.71,11,03,2004,,", 0, "GP 2004 3 11 57612.71 -64 -"},
    {"ZdaZoneOutOfRange", "$GPZDA,160012.71,11,03,2004,-129,00", 11, "GP 2004 3 11 57612.71 -64 -"},
    {"ZdaTooFewFields", "$GPZDA,160012.71,11,03,2004,0", 11, "none - - - - -64 -"},

    {"Gll", "$GPGLL,3730.0,N,12130.0,W,161229.48,A,D", 0, "GP 58349.48 37.5 -121.5 0 2"},
    {"GllUnknownLetters", "$GPGLL,3730.0,N,12130.0,W,161229.48,x,x", 0, "GP 58349.48 37.5 -121.5 2 0"},
    {"GllEmptyLetters", "$GPGLL,3730.0,N,12130.0,W,161229.48,,", 0, "GP 58349.48 37.5 -121.5 4 10"},
    {"GllTwoLetters", "$GPGLL,3730.0,N,12130.0,W,161229.48,AA,D", 11, "GP 58349.48 37.5 -121.5 4 10"},

    {"Gsv", "$GLGSV,3,1,11,03,04,111,00,14,15,270,,,,,,13,06,292,40,1", 0,
     "GL 3 1 11 3/14/-/13 4/15/-/6 111/270/-/292 0/-/-/40 1"},
    {"GsvChecksumReadAsSatellite", "$GPGSV,1,1,01,06,04,111,30", 0, "GP 1 1 1 6/48/-/- 4/-/-/- 111/-/-/- 30/-/-/- -"},
    {"GsvChecksumNotDecimal", "$GPGSV,1,1,03,03,04,111,30", 11, "GP 1 1 3 3/-/-/- 4/-/-/- 111/-/-/- 30/-/-/- -"},
    {"GsvSatelliteAbove255", "$GPGSV,1,1,01,401,04,111,30,,,,,,,,,,,,,", 11, "GP 1 1 1 -/-/-/- -/-/-/- -/-/-/- -/-/-/- -"},

    {"Gsa", "$GNGSA,A,3,80,71,73,79,69,,,,,,,,1.83,1.09,1.47,2", 0,
     "GN A 3 80/71/73/79/69/-/-/-/-/-/-/- 1.83 1.09 1.47 2"},
    {"GsaFixType4", "$GNGSA,A,4,,,,,,,,,,,,,1.83,1.09,1.47,2", 11, "GN A . -/-/-/-/-/-/-/-/-/-/-/- - - - -"},
    {"GsaNoOperationMode", "$GNGSA,,3,,,,,,,,,,,,,1.83,1.09,1.47,2", 11, "GN . . -/-/-/-/-/-/-/-/-/-/-/- - - - -"},
    {"GsaChecksumReadAsSystem", "$GPGSA,M,1,,,,,,,,,,,,,1.8,1.0,1.5", 0, "GP M 1 -/-/-/-/-/-/-/-/-/-/-/- 1.8 1 1.5 30"},

    {"Rmc", "$GPRMC,225446.33,A,4930.0,N,12330.0,W,000.5,054.7,191124,020.3,E,A,S", 0,
     "GP 2024 11 19 82486.33 49.5 -123.5 0.5 54.7 20.3 0 1 0 0"},
    {"RmcVariationWest", "$GPRMC,225446.33,V,4930.0,N,12330.0,W,000.5,054.7,191124,020.3,W,N,V", 0,
     "GP 2024 11 19 82486.33 49.5 -123.5 0.5 54.7 20.3 0 0 5 3"},
    {"RmcVariationOther", "$GPRMC,,D,4930.0,N,12330.0,W,,,,,EE,,", 0, "GP - - - - 49.5 -123.5 - - - 1 10 1 5"},
    {"RmcVariationEmptyTakesLongitude", "$GPRMC,,R,4930.0,N,12330.0,W,,,,,,D,C", 0, "GP - - - - 49.5 - - - - 0 2 4 1"},
    {"RmcBadDateStoresNothing", "$GPRMC,,R,,,,,1.0,2.0,19x124,,E,D,C", 11, "GP - - - - - - 1 2 - 0 10 4 5"},
    {"RmcTooFewFields", "$GPRMC,225446.33,A,4930.0,N,12330.0,W,000.5,054.7,191124,020.3,E,A", 11,
     "none - - - - - - - - - 0 10 7 5"},

    {"Vtg", "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,P", 0, "GP 54.7 34.4 5.5 10.2 3"},
    {"VtgTooFewFields", "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K", 11, "none - - - - 10"},
};
// clang-format on

TEST_ROWS(Decoding, GivesResultAndRecord, kDecodeCases, c) {
  const std::string sentence = NmeaSentence(c.text);
  GuardedPage page(2048);
  for (const int fill : {0x00, 0xAA, 0xFF}) {
    t_Nmea nmea;
    U_EcdDcdData data;
    std::memset(&data, fill, sizeof data);
    EXPECT_EQ(nmea.Decode(page.AtEnd(sentence), static_cast<unsigned short>(sentence.size()), NmeaType(sentence), data),
              c.result);
    EXPECT_EQ(nmea.GetLastResult(), c.result);
    EXPECT_EQ(NmeaLine(NmeaType(sentence), data), c.record);
  }
}

// --- Damaged sentences: nothing outside is read, and the result is one of those stated ---

const std::string kFullSentences[] = {
    "$GPGGA,123456.78,0130.0,N,01130.0,E,4,08,0.9,545.4,M,46.9,M,2.5,0031",
    "$GNGNS,014035.00,4330.0,S,17230.0,E,RRN,13,0.9,25.63,11.24,1.5,7,U",
    "$GPZDA,160012.71,11,03,2004,-1,30",
    "$GPGLL,3730.0,N,12130.0,W,161229.48,A,D",
    "$GLGSV,3,1,11,03,04,111,00,14,15,270,12,21,02,001,50,13,06,292,40,1",
    "$GNGSA,A,3,80,71,73,79,69,10,11,12,13,14,15,16,1.83,1.09,1.47,2",
    "$GPRMC,225446.33,A,4930.0,N,12330.0,W,000.5,054.7,191124,020.3,E,A,S",
    "$GPVTG,054.7,T,034.4,M,005.5,N,010.2,K,P",
};

class Damaged : public testing::TestWithParam<std::string> {};

TEST_P(Damaged, CutAnywhereOrEndedByANul) {
  const std::string sentence = NmeaSentence(GetParam());
  GuardedPage page(2048);
  for (std::size_t cut = 0; cut <= sentence.size(); ++cut) {
    U_EcdDcdData atCut;
    U_EcdDcdData atNul;
    std::string withNul = sentence + "*,*,";
    withNul[cut] = '\0';
    std::memset(&atCut, 0, sizeof atCut);
    std::memset(&atNul, 0, sizeof atNul);
    const auto decode = KindOf(NmeaType(sentence)).decode;
    const unsigned int result = decode(page.AtEnd(sentence.substr(0, cut)), cut, atCut);
    EXPECT_TRUE(result == 0 || result == 11) << cut;
    EXPECT_EQ(decode(page.AtEnd(withNul), withNul.size(), atNul), result) << cut;
    EXPECT_EQ(std::memcmp(&atCut, &atNul, sizeof atCut), 0) << cut;
  }
}

INSTANTIATE_TEST_SUITE_P(Sentences, Damaged, testing::ValuesIn(kFullSentences));

// --- Door ---

struct S_DoorCase {
  const char* name;
  std::string sentence;
  C_RawDataMessage::eNMEA0183Messages type;
  unsigned int checked;    // result of Decode
  unsigned int unchecked;  // of the type's own decoder, for the eight types
};

const std::string kZda = NmeaSentence(kFullSentences[2]);
const std::string kZdaOf1023 = NmeaSentence("$GPZDA,160012.71,11,03,2004,-1,30," + std::string(1023 - 34 - 3, ','));
constexpr unsigned int kNone = 99;

// clang-format off
const S_DoorCase kDoorCases[] = {
    {"Good",             kZda,                              C_RawDataMessage::eNmeaZDA, 0,  0},
    {"WithLineEnd",      kZda + "\r\n",                     C_RawDataMessage::eNmeaZDA, 0,  0},
    {"WrongChecksum",    kZda.substr(0, kZda.size() - 2) + "00", C_RawDataMessage::eNmeaZDA, 4, 0},
    {"OtherType",        kZda,                              C_RawDataMessage::eNmeaRMC, 11, 11},
    {"OtherTypeOfFewFields", NmeaSentence("$GPZDA,,,,,,,,,,,,,,,,,,,"), C_RawDataMessage::eNmeaRMC, 2, 2},
    {"UnknownId",        NmeaSentence("$GPABC,,,,,,,"),     C_RawDataMessage::eNmeaZDA, 2,  2},
    {"NoDollar",         "#" + kZda.substr(1),              C_RawDataMessage::eNmeaZDA, 2,  2},
    {"NotDecoded",       NmeaSentence("$GPHDT,1.0,T"),      C_RawDataMessage::eNmeaHDT, 5,  kNone},
    {"Unknown",          kZda,                              C_RawDataMessage::eNmeaUnknown, 5, kNone},
    {"SevenBytes",       ",,,,,,,",                         C_RawDataMessage::eNmeaZDA, 20, 11},
    {"EightBytes",       ",,,,,,,,",                        C_RawDataMessage::eNmeaZDA, 4,  2},
    {"Nothing",          "",                                C_RawDataMessage::eNmeaZDA, 20, 11},
    {"1023Bytes",        kZdaOf1023,                        C_RawDataMessage::eNmeaZDA, 0,  0},
    {"1024Bytes",        kZdaOf1023 + "x",                  C_RawDataMessage::eNmeaZDA, 11, 11},
    {"1025Bytes",        kZdaOf1023 + "xx",                 C_RawDataMessage::eNmeaZDA, 20, 20},
};
// clang-format on

TEST_ROWS(Door, GivesTheStatedCode, kDoorCases, c) {
  GuardedPage page(2048);
  t_Nmea nmea;
  U_EcdDcdData data;
  EXPECT_EQ(nmea.Decode(page.AtEnd(c.sentence), static_cast<unsigned short>(c.sentence.size()), c.type, data),
            c.checked);
  if (c.unchecked != kNone) {
    EXPECT_EQ(KindOf(c.type).decode(page.AtEnd(c.sentence), c.sentence.size(), data), c.unchecked);
  }
}

TEST(NmeaDecode, Null) {
  t_Nmea nmea;
  U_EcdDcdData data;
  EXPECT_EQ(nmea.Decode(nullptr, 0, C_RawDataMessage::eNmeaUnknown, data), 1U);
  EXPECT_EQ(nmea.GetLastResult(), 1U);
  EXPECT_EQ(nmea.Decode_GGA(nullptr, 2000, data.gga), 1U);
  EXPECT_EQ(NmeaLine(data.gga), "none - - - 10 - - - - - -");
  EXPECT_EQ(nmea.Reset(), 0U);
  EXPECT_EQ(nmea.GetLastResult(), 0U);
}

// --- Frame ---

struct S_ChecksumCase {
  const char* name;
  std::string sentence;
  bool isValid;
};

// clang-format off
const S_ChecksumCase kChecksumCases[] = {
    {"Published",        "$GPGLL,3723.2475,N,12158.3416,W,161229.487,A,A*41", true},
    {"LineEnd",          "$GPGGA,1*4B\r\n", true},
    {"LowerCase",        "$GPGGA,1*4b",   true},
    {"FirstStarCounts",  "$GPGG*A*0B",    false},
    {"LastStarCounts",   "$GPGGA*1*4D",   true},
    {"StarAt6",          "$GPGGA*56",     true},
    {"StarAt5",          "$GPGG*3B",      false},
    {"StarAt5Longer",    "$GPGG*3B\r\n",  false},
    {"OneDigit",         "$GPAAM*0",      false},
    {"DigitAndLineEnd",  "$GPAAB*6\r\n",  false},
    {"DigitAndLetter",   "$GPFFA*1G",     false},
    {"BlankAndDigit",    "$ABCFIJ* 5",    true},
    {"NotHexadecimal",   "$GPGGA*G5",     false},
    {"NoStar",           "$GPGGA,1,4B",   false},
    {"SevenBytes",       "$GPGGA*",       false},
    {"HighBytes",        "$\xC3\xA4GGA*26", true},
};
// clang-format on

TEST_ROWS(Checksum, Validate, kChecksumCases, c) {
  ExactCopy copy(c.sentence);
  EXPECT_EQ(t_Nmea::ValidateNmeaCheckSum(copy.Data(), copy.Size()), c.isValid);
}

// Texts that hold every hexadecimal digit, so that a digit compared with the wrong character would match somewhere.
TEST(Checksum, OneOfAllPairsOfDigits) {
  for (const char* text : {"$0123456789ABCDEF", "$FEDCBA9876543210X", "$GPGGA,0123456789", "$3333333"}) {
    const std::string right = NmeaSentence(text);
    int valid = 0;
    for (const char high : "0123456789ABCDEF"s)
      for (const char low : "0123456789ABCDEF"s) {
        ExactCopy copy(std::string(text) + '*' + high + low);
        const bool isRight = right.ends_with("*"s + high + low);
        EXPECT_EQ(t_Nmea::ValidateNmeaCheckSum(copy.Data(), copy.Size()), isRight) << text << high << low;
        valid += isRight ? 1 : 0;
      }
    EXPECT_EQ(valid, 1) << text;
  }
}

TEST(NmeaFrame, ChecksumOfARange) {
  const unsigned char bytes[] = {0x11, 0x22, 0x44, 0x88};
  EXPECT_EQ(t_Nmea::GetNmeaCheckSum(bytes, 1, 3), 0xEE);
  EXPECT_EQ(t_Nmea::GetNmeaCheckSum(bytes, 2, 1), 0x44);
  EXPECT_EQ(t_Nmea::GetNmeaCheckSum(bytes, 2, 0), 0x44) << "one byte is read always";
  EXPECT_EQ(t_Nmea::GetNmeaCheckSum(nullptr, 2, 1), 0);
  EXPECT_FALSE(t_Nmea::ValidateNmeaCheckSum(nullptr, 20));
}

TEST(NmeaFrame, PreambleTellsTypeAndTalker) {
  for (unsigned int type = 0; type < 23; ++type) {
    const std::string sentence = "$XY"s + t_Nmea::mppz_NmeaMsgIDs[type];
    char talker[2] = {};
    EXPECT_EQ(t_Nmea::GetNmeaPreamble(sentence.data(), 6, talker), type) << sentence;
    EXPECT_EQ(std::string(talker, 2), "XY");
    EXPECT_EQ(t_Nmea::GetNmeaPreamble(sentence.data(), 5, talker), 24U);
  }
  char talker[2] = {'?', '?'};
  EXPECT_EQ(t_Nmea::GetNmeaPreamble("$GPgga", 6, talker), 24U);
  EXPECT_EQ(std::string(talker, 2), "GP");
  EXPECT_EQ(t_Nmea::GetNmeaPreamble("#XXGGA", 6, talker), 24U);
  EXPECT_EQ(t_Nmea::GetNmeaPreamble(nullptr, 6, talker), 24U);
  EXPECT_EQ(std::string(talker, 2), "GP");
  EXPECT_EQ(t_Nmea::GetNmeaPreamble("$GPGGA", 6, nullptr), 8U);
}

struct S_LatLonCase {
  const char* name;
  const char* field;
  bool isSuccess;
  double value;
};

// clang-format off
constexpr S_LatLonCase kLatLonCases[] = {
    {"Latitude",     "4807.038",   true,  48 + 7.038 / 60},
    {"Longitude",    "01131.000",  true,  11 + 31.0 / 60},
    {"OneDegreeDigit", "130.00",   true,  1.5},
    {"NoFraction",   "01130.",     true,  11.5},
    {"ManyDecimals", "01130.00000000000000000", true, 11.5},
    {"PointAt2",     "30.0000",    false, 0.0},
    {"NoPoint",      "480703",     false, 0.0},
    {"FirstPointCounts", "4807.0.3", true, 48 + 7.0 / 60},
    {"Five",         "130.0",      false, 0.0},
    {"Empty",        "",           true,  NA_DOUBLE},
    {"Null",         nullptr,      false, 0.0},
    {"BadDegrees",   "4x07.038",   false, 0.0},
    {"BadMinutes",   "48x7.038",   false, 0.0},
    {"Negative",     "-130.00",    false, 0.0},
    {"NegativeMinutes", "48-7.038", true, 48 - 7.038 / 60},
};
// clang-format on

TEST_ROWS(LatLon, IsRead, kLatLonCases, c) {
  double value = 7;
  EXPECT_EQ(t_Nmea::GetNmeaLatLonFromString(reinterpret_cast<const unsigned char*>(c.field), value), c.isSuccess);
  EXPECT_DOUBLE_EQ(value, c.value);
}

// --- One-character fields ---

// Letters written for the values 0, 1, … (NUL: an empty field), and the values of the letters in `read`.
template <class Enum>
void ExpectLetters(char (*write)(Enum), Enum (*read)(char), const std::string& letters, char beyond,
                   const std::string& readable, Enum other) {
  for (unsigned int value = 0; value < letters.size(); ++value)
    EXPECT_EQ(write(static_cast<Enum>(value)), letters[value]) << value;
  for (const unsigned int value : {unsigned(letters.size()), 255U, 0xFFFFFFFFU})
    EXPECT_EQ(write(static_cast<Enum>(value)), beyond) << value;
  for (int letter = 0; letter < 256; ++letter) {
    const std::size_t found = readable.find(static_cast<char>(letter));
    EXPECT_EQ(read(static_cast<char>(letter)), found == std::string::npos ? other : static_cast<Enum>(found)) << letter;
  }
}

TEST(NmeaLetters, AreWrittenAndRead) {
  ExpectLetters(t_Nmea::GetModIndicatorChar, t_Nmea::GetModIndicatorEnum, "NADPRFEMSN\0"s, 'N',
                "NADPRFEMS?\0"s.replace(9, 1, "N"), eNmeaModeNotValid);
  ExpectLetters(t_Nmea::GetNavStatusChar, t_Nmea::GetNavStatusEnum, "SCUVV\0"s, 'V', "SCUVV\0"s, eNmeaNavNotValid);
  ExpectLetters(t_Nmea::GetSysStatusChar_GLL, t_Nmea::GetSysStatusEnum_GLL, "ADVV\0"s, 'V', "ADVV\0"s,
                eNmeaGllNotValid);
  ExpectLetters(t_Nmea::GetSysStatusChar_RMC, t_Nmea::GetSysStatusEnum_RMC, "ADFPRVV\0"s, 'V', "ADFPRVV\0"s,
                eNmeaRmcNotValid);
}

TEST(NmeaLetters, FixTypes) {
  const unsigned int kExpected[] = {15, 0, 3, 3, 5, 6, 15, 8, 15, 15, 15, 15};
  for (unsigned int mode = 0; mode < std::size(kExpected); ++mode)
    EXPECT_EQ(t_Nmea::MapNmeaFixIndicatorToHalcyon(static_cast<eNmeaModeIndicator>(mode)), kExpected[mode]) << mode;
}

// --- Systems and signals ---

TEST(NmeaMaps, Systems) {
  const unsigned int kAlgo[] = {7, 0, 1, 3, 7, 2, 7};
  for (unsigned int id = 0; id < 256; ++id) {
    eGNSSSystem system = GNSS_QZSS;
    const unsigned int expected = id < std::size(kAlgo) ? kAlgo[id] : 7;
    EXPECT_EQ(t_Nmea::MapNmeaSystemId2Algo(static_cast<unsigned char>(id), system), expected != 7) << id;
    EXPECT_EQ(system, expected) << id;
  }
  const int kNmea[] = {1, 2, 5, 3, -1, 5, -1, 255, -1};
  for (unsigned int system = 0; system < std::size(kNmea); ++system) {
    unsigned char id = 0;
    EXPECT_EQ(t_Nmea::MapAlgoSystemId2Nmea(static_cast<eGNSSSystem>(system), id), kNmea[system] != -1) << system;
    EXPECT_EQ(id, kNmea[system] == -1 ? 255 : kNmea[system]) << system;
  }
}

// By block of the map: the ids that the row carries, signal, system, band and component.
struct S_SignalRow {
  unsigned int block, nmeaSystem, nmeaSignal, system, frequency, trackType;
  bool operator==(const S_SignalRow&) const = default;
};

// clang-format off
constexpr S_SignalRow kSignals[] = {
    {0, 1, 0, 0, 14, 20}, {0, 1, 1, 0, 0, 0}, {0, 1, 2, 0, 0, 13}, {0, 1, 3, 0, 0, 5},  {0, 1, 4, 0, 1, 13},
    {0, 1, 5, 0, 1, 5},   {0, 1, 6, 0, 1, 6}, {0, 1, 7, 0, 2, 8},  {0, 1, 8, 0, 2, 9},
    {1, 2, 0, 1, 14, 20}, {1, 2, 1, 1, 3, 0}, {1, 2, 2, 1, 3, 1},  {1, 2, 3, 1, 4, 0},  {1, 2, 4, 1, 4, 1},
    {2, 3, 0, 3, 14, 20}, {2, 3, 1, 3, 2, 2}, {2, 3, 2, 3, 6, 2},  {2, 3, 3, 3, 8, 3},  {2, 3, 4, 3, 9, 15},
    {2, 3, 5, 3, 9, 18},  {2, 3, 6, 3, 0, 15}, {2, 3, 7, 3, 2, 18},
    {4, 5, 0, 2, 14, 20}, {4, 5, 1, 2, 5, 8}, {4, 5, 2, 2, 5, 9},  {4, 5, 3, 2, 6, 8},  {4, 5, 4, 2, 6, 9},
    {4, 6, 5, 2, 7, 8},   {4, 1, 6, 2, 7, 9},
    {5, 5, 0, 5, 14, 20}, {5, 5, 1, 5, 0, 0}, {5, 5, 2, 5, 0, 7},  {5, 5, 3, 5, 1, 7},  {5, 5, 4, 5, 2, 9},
};
// clang-format on

// First row that fits, of those in the blocks whose first row fits; the row of unused places if none does.
template <class FitsBlock, class FitsRow>
S_SignalRow ExpectedRow(FitsBlock fitsBlock, FitsRow fitsRow) {
  bool isFitting = false;
  for (const S_SignalRow& row : kSignals) {
    if (row.nmeaSignal == 0) isFitting = fitsBlock(row);
    if (isFitting && fitsRow(row)) return row;
  }
  return {0, 255, 255, 7, 15, 21};
}

TEST(NmeaMaps, SignalsAreTheStatedRowsOnly) {
  for (unsigned int block = 0; block < 6; ++block)
    for (unsigned int place = 0; place < 16; ++place) {
      const S_NmeaSS2Algo& row = t_Nmea::mpps_NmeaSS2AlgoMap[block][place];
      const S_SignalRow expected = ExpectedRow([&](const S_SignalRow& first) { return first.block == block; },
                                               [&](const S_SignalRow& r) { return r.nmeaSignal == place; });
      EXPECT_EQ((S_SignalRow{expected.block, row.nmeaSystem, row.nmeaSignal, row.system, row.frequency, row.trackType}),
                expected)
          << block << ' ' << place;
    }
}

TEST(NmeaMaps, SignalsBothWays) {
  for (unsigned int system = 0; system < 256; ++system)
    for (unsigned int signal = 0; signal < 256; ++signal) {
      eGNSSFrequency frequency = FREQ_B1;
      eGNSSTrackType trackType = TRACK_A;
      const S_SignalRow expected = ExpectedRow([&](const S_SignalRow& first) { return first.nmeaSystem == system; },
                                               [&](const S_SignalRow& r) { return r.nmeaSignal == signal; });
      EXPECT_EQ(t_Nmea::MapNmeaSignalId2Algo(static_cast<unsigned char>(system), static_cast<unsigned char>(signal),
                                             frequency, trackType),
                expected.frequency != 15);
      EXPECT_EQ(frequency, expected.frequency) << system << ' ' << signal;
      EXPECT_EQ(trackType, expected.trackType) << system << ' ' << signal;
    }
  for (unsigned int system = 0; system < 9; ++system)
    for (unsigned int frequency = 0; frequency < 17; ++frequency)
      for (unsigned int trackType = 0; trackType < 23; ++trackType) {
        const S_SignalRow expected =
            ExpectedRow([&](const S_SignalRow& first) { return first.system == system; },
                        [&](const S_SignalRow& r) {
                          return r.nmeaSignal != 0 && r.frequency == frequency && r.trackType == trackType;
                        });
        unsigned char signal = 77;
        EXPECT_EQ(t_Nmea::MapAlgoSigInfo2Nmea(eGNSSSystem{system}, eGNSSFrequency{frequency}, eGNSSTrackType{trackType},
                                              signal),
                  expected.nmeaSignal != 255);
        EXPECT_EQ(signal, expected.nmeaSignal) << system << ' ' << frequency << ' ' << trackType;
      }
}

}  // namespace
